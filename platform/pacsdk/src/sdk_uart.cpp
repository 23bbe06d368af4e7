// Ports, raw commands and the last error.
#include <algorithm>
#include <cstring>
#include <vector>

#include "sdk_common.h"

using namespace pacsdk;

namespace {

// A raw reply goes to a caller's buffer of 20 bytes.
constexpr std::size_t reply_chars = 19;
// Error texts fit a 32-byte buffer.
constexpr std::size_t message_chars = 31;

struct ErrorText {
    uint32_t code;
    const char* text;
};
#define PACSDK_ERROR_TEXT(name, value, text) {value, text},
constexpr ErrorText error_texts[] = {PACSDK_ERROR_TABLE(PACSDK_ERROR_TEXT)};
#undef PACSDK_ERROR_TEXT

const char* error_text(uint32_t code) {
    for (const auto& e : error_texts)
        if (e.code == code) return e.text;
    return PACSDK_UNKNOWN_ERROR_TEXT;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> fields;
    for (;;) {
        std::size_t at = text.find(separator);
        fields.push_back(text.substr(0, at));
        if (at == std::string_view::npos) return fields;
        text.remove_prefix(at + 1);
    }
}

// "COMn[,baud[,parity[,data[,stop]]]]"; nullopt when malformed.
std::optional<LineSettings> parse_connection(const char* text) {
    if (!text) return std::nullopt;
    auto fields = split(text, ',');
    if (fields.size() > 5 || !valid_port_name(fields[0])) return std::nullopt;
    LineSettings s;
    s.name = std::string(fields[0]);
    if (fields.size() > 1) {
        auto baud = parse_decimal(fields[1]);
        if (!baud || (fields[1].size() > 1 && fields[1][0] == '0')) return std::nullopt;
        s.baud = *baud;
    }
    if (fields.size() > 2) {
        if (fields[2].size() != 1 || std::string_view("NOEMS").find(fields[2][0]) == std::string_view::npos)
            return std::nullopt;
        s.parity = fields[2][0];
    }
    if (fields.size() > 3) {
        if (fields[3].size() != 1 || fields[3][0] < '5' || fields[3][0] > '8') return std::nullopt;
        s.data_bits = fields[3][0] - '0';
    }
    if (fields.size() > 4) {
        if (fields[4] != "1" && fields[4] != "2") return std::nullopt;
        s.stop_bits = fields[4][0] - '0';
    }
    return s;
}

}  // namespace

extern "C" {

PACSDK_API PAC_HANDLE uart_Open(const char* connection) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    PAC_HANDLE handle = PAC_INVALID_HANDLE;
    uint32_t error = 0;
    auto settings = parse_connection(connection);
    if (lib.take_fault("uart_Open", &error)) {
        // fails as armed
    } else if (!settings) {
        error = PAC_ERR_INVALID_COMPORT_NUMBER;
    } else if (lib.is_open(settings->name)) {
        error = PAC_ERR_UART_OPEN_FAILED;
    } else if (auto port = lib.rig().open(*settings)) {
        // A real serial device would be asked for here when the rig has no
        // port of that name.
        handle = lib.add_session(*settings, std::move(port));
    } else {
        error = PAC_ERR_UART_OPEN_FAILED;
    }
    if (error != 0) set_last_error(error);
    lib.log.sdk(call_text("uart_Open", connection) + " -> " + lib.handle_text(handle));
    return handle;
}

PACSDK_API PAC_BOOL uart_Close(PAC_HANDLE port) {
    return status_call(
        "uart_Close",
        [&]() -> uint32_t {
            Session* s = library().open_session(port);
            if (!s) return PAC_OS_ERR_INVALID_HANDLE;
            s->port.reset();
            return 0;
        },
        port);
}

PACSDK_API PAC_BOOL uart_SendCmd(PAC_HANDLE port, const char* cmd, char* result) {
    return status_call(
        "uart_SendCmd",
        [&]() -> uint32_t {
            Session* s = library().open_session(port);
            if (!s) return PAC_OS_ERR_INVALID_HANDLE;
            if (!cmd || !result) return PAC_ERR_UNKNOWN;
            std::string reply;
            uint32_t error = exchange(*s, cmd, &reply);
            if (error != 0) reply.clear();
            std::size_t n = std::min(reply.size(), reply_chars);
            std::memcpy(result, reply.data(), n);
            result[n] = '\0';
            return error;
        },
        port, cmd);
}

PACSDK_API void uart_EnableCheckSum(PAC_HANDLE port, PAC_BOOL enable) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    std::string call = call_text("uart_EnableCheckSum", port, enable);
    if (Session* s = lib.open_session(port))
        s->checksum = enable != 0;
    else
        set_last_error(PAC_OS_ERR_INVALID_HANDLE);
    lib.log.sdk(call);
}

PACSDK_API void uart_SetTimeOut(PAC_HANDLE port, PAC_DWORD msec, int cto_type) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    std::string call = call_text("uart_SetTimeOut", port, msec, cto_type);
    if (Session* s = lib.open_session(port)) {
        Timeouts& t = s->timeouts;
        if (cto_type == CTO_TIMEOUT_ALL) t.read_total = t.read_gap = t.write_total = msec;
        if (cto_type == CTO_READ_RETRY_TIMEOUT) t.read_gap = msec;
        if (cto_type == CTO_READ_TOTAL_TIMEOUT) t.read_total = msec;
        if (cto_type == CTO_WRITE_TOTAL_TIMEOUT) t.write_total = msec;
    } else {
        set_last_error(PAC_OS_ERR_INVALID_HANDLE);
    }
    lib.log.sdk(call);
}

PACSDK_API void pac_SetLastError(PAC_DWORD code) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    set_last_error(code);
    lib.log.sdk(call_text("pac_SetLastError", code));
}

PACSDK_API PAC_DWORD pac_GetLastError(void) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    uint32_t code = last_error();
    lib.log.sdk(call_text("pac_GetLastError") + " -> " + std::to_string(code));
    return code;
}

PACSDK_API void pac_GetErrorMessage(PAC_DWORD code, char* message) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    if (message) {
        const char* text = error_text(code);
        std::size_t n = std::min(std::strlen(text), message_chars);
        std::memcpy(message, text, n);
        message[n] = '\0';
    }
    lib.log.sdk(call_text("pac_GetErrorMessage", code));
}

}  // extern "C"
