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

// The port field: a port name, or a device path on a host that has them.
bool valid_port_field(std::string_view field) {
    if (valid_port_name(field)) return true;
    return field.size() > 1 && field.size() < 256 && field[0] == '/' &&
           std::none_of(field.begin(), field.end(), [](char c) { return static_cast<unsigned char>(c) <= ' '; });
}

// "PORT[,baud[,parity[,data[,stop]]]]"; nullopt with *why when malformed.
std::optional<LineSettings> parse_connection(const char* text, std::string* why) {
    if (!text || !*text) {
        *why = "No port given";
        return std::nullopt;
    }
    auto fields = split(text, ',');
    auto fail = [&](const char* problem) -> std::optional<LineSettings> {
        *why = problem;
        return std::nullopt;
    };
    if (fields.size() > 5) return fail("Too many fields");
    if (!valid_port_field(fields[0])) return fail("Port is COM1..COM255 or a path");
    LineSettings s;
    s.name = std::string(fields[0]);
    if (fields.size() > 1) {
        auto baud = parse_decimal(fields[1]);
        if (!baud || (fields[1].size() > 1 && fields[1][0] == '0')) return fail("Baud rate is not a number");
        s.baud = *baud;
    }
    if (fields.size() > 2) {
        if (fields[2].size() != 1 || std::string_view("NOEMS").find(fields[2][0]) == std::string_view::npos)
            return fail("Parity is one of N, O, E, M, S");
        s.parity = fields[2][0];
    }
    if (fields.size() > 3) {
        if (fields[3].size() != 1 || fields[3][0] < '5' || fields[3][0] > '8') return fail("Data bits are 5 to 8");
        s.data_bits = fields[3][0] - '0';
    }
    if (fields.size() > 4) {
        if (fields[4] != "1" && fields[4] != "2") return fail("Stop bits are 1 or 2");
        s.stop_bits = fields[4][0] - '0';
    }
    return s;
}

// "PROBLEM: NAME" when it fits an error message, else PROBLEM.
std::string naming(const std::string& problem, const std::string& name) {
    std::string text = problem + ": " + name;
    return text.size() <= message_chars ? text : problem;
}

// A port of the rig, or the real device a port name or path stands for.
std::unique_ptr<Port> open_port(Rig& rig, const LineSettings& settings, std::string* why) {
    if (rig.line(settings.name)) {
        if (auto port = rig.open(settings)) return port;
        *why = "Baud rate not supported";
        return nullptr;
    }
    const std::string* device = rig.device(settings.name);
    if (!device && settings.name[0] != '/') {
        *why = naming("Not in the rig", settings.name);
        return nullptr;
    }
    return open_device(device ? *device : settings.name, settings, why);
}

}  // namespace

extern "C" {

PACSDK_API PAC_HANDLE uart_Open(const char* connection) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    PAC_HANDLE handle = PAC_INVALID_HANDLE;
    uint32_t error = 0;
    std::string why;
    auto settings = parse_connection(connection, &why);
    if (lib.take_fault("uart_Open", &error)) {
        // armed by pacsim::fail_next
    } else if (!settings) {
        error = PAC_ERR_INVALID_COMPORT_NUMBER;
    } else if (lib.is_open(settings->name)) {
        error = PAC_ERR_UART_OPEN_FAILED;
        why = naming("Already open", settings->name);
    } else if (auto port = open_port(lib.rig(), *settings, &why)) {
        handle = lib.add_session(*settings, std::move(port));
    } else {
        error = PAC_ERR_UART_OPEN_FAILED;
    }
    if (error != 0) set_last_error(error, why);
    lib.log.call("uart_Open", call_args(connection), lib.handle_text(handle));
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
    const std::string call = call_args(port, enable);
    if (Session* s = lib.open_session(port))
        s->checksum = enable != 0;
    else
        set_last_error(PAC_OS_ERR_INVALID_HANDLE);
    lib.log.call("uart_EnableCheckSum", call, "");
}

PACSDK_API void uart_SetTimeOut(PAC_HANDLE port, PAC_DWORD msec, int cto_type) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    const std::string call = call_args(port, msec, cto_type);
    if (Session* s = lib.open_session(port)) {
        Timeouts& t = s->timeouts;
        if (cto_type == CTO_TIMEOUT_ALL) t.read_total = t.read_gap = t.write_total = msec;
        if (cto_type == CTO_READ_RETRY_TIMEOUT) t.read_gap = msec;
        if (cto_type == CTO_READ_TOTAL_TIMEOUT) t.read_total = msec;
        if (cto_type == CTO_WRITE_TOTAL_TIMEOUT) t.write_total = msec;
    } else {
        set_last_error(PAC_OS_ERR_INVALID_HANDLE);
    }
    lib.log.call("uart_SetTimeOut", call, "");
}

PACSDK_API void pac_SetLastError(PAC_DWORD code) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    set_last_error(code);
    lib.log.call("pac_SetLastError", call_args(code), "");
}

PACSDK_API PAC_DWORD pac_GetLastError(void) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    uint32_t code = last_error();
    lib.log.call("pac_GetLastError", "", std::to_string(code));
    return code;
}

PACSDK_API void pac_GetErrorMessage(PAC_DWORD code, char* message) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    if (message) {
        const char* text = code == last_error() && !last_error_detail().empty() ? last_error_detail().c_str()
                                                                                : error_text(code);
        std::size_t n = std::min(std::strlen(text), message_chars);
        std::memcpy(message, text, n);
        message[n] = '\0';
    }
    lib.log.call("pac_GetErrorMessage", call_args(code), "");
}

}  // extern "C"
