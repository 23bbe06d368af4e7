#include "sdk_common.h"

#include <chrono>

namespace pacsdk {

namespace {

thread_local uint32_t thread_last_error = 0;
thread_local std::string thread_error_detail;

// Longer than any DCON reply: a line that runs past it is not a reply.
constexpr std::size_t max_reply_chars = 255;

uint32_t judge(const std::string& reply, std::string_view lead, uint32_t refusal, std::string* data) {
    if (!reply.empty() && reply[0] == '?') return refusal;
    if (reply.size() < lead.size() || reply.compare(0, lead.size(), lead) != 0) return PAC_ERR_UART_RESPONSE;
    *data = reply.substr(lead.size());
    return 0;
}

// Simulated time of chars characters on the line: each takes a start bit,
// its data bits, the parity bit if there is one, and the stop bits.
uint64_t wire_us(const LineSettings& line, std::size_t chars) {
    const uint64_t bits = 1u + static_cast<uint64_t>(line.data_bits) + (line.parity != 'N' ? 1u : 0u) +
                          static_cast<uint64_t>(line.stop_bits);
    const uint64_t baud = line.baud == 0 ? 1 : line.baud;
    return (chars * bits * 1'000'000 + baud - 1) / baud;
}

}  // namespace

void set_last_error(uint32_t code, std::string detail) {
    thread_last_error = code;
    thread_error_detail = std::move(detail);
}
uint32_t last_error() { return thread_last_error; }
const std::string& last_error_detail() { return thread_error_detail; }

namespace {

// Reads up to the first CR, within the port's timeouts: 0 with the line
// (CR left out), or the code of what went wrong.
uint32_t read_line(Session& session, std::string* line) {
    using clock = std::chrono::steady_clock;
    const Timeouts& t = session.timeouts;
    const auto start = clock::now();
    std::string got;
    for (;;) {
        if (std::size_t cr = got.find('\r'); cr != std::string::npos) {
            got.resize(cr);
            *line = std::move(got);
            return 0;
        }
        if (got.size() > max_reply_chars) return PAC_ERR_UART_INTERNAL_BUFFER_OVERFLOW;
        uint32_t wait = 0;
        if (t.read_total != 0) {
            auto spent = std::chrono::duration_cast<std::chrono::milliseconds>(clock::now() - start).count();
            if (spent >= t.read_total) return PAC_ERR_UART_READ_TIMEOUT;
            wait = t.read_total - static_cast<uint32_t>(spent);
        }
        if (t.read_gap != 0 && !got.empty() && (wait == 0 || t.read_gap < wait)) wait = t.read_gap;
        switch (session.port->read(&got, wait)) {
        case Io::done: break;
        case Io::timeout: return PAC_ERR_UART_READ_TIMEOUT;
        case Io::failed: return PAC_ERR_UART_GET_WRONG_LINE_STATUS;
        }
    }
}

// Sends line with its CR; 0 or the code of a failed write.
uint32_t send_line(Session& session, const std::string& line) {
    Library& lib = library();
    lib.log.sent(line);
    // On an emulated line a module acts once the whole command has arrived.
    if (session.port->simulated()) lib.line_time_us(wire_us(session.line, line.size() + 1));
    session.port->discard_input();
    return session.port->write(line + "\r", session.timeouts.write_total) == Io::done
               ? 0
               : PAC_ERR_UART_GET_WRONG_LINE_STATUS;
}

}  // namespace

uint32_t exchange(Session& session, std::string_view command, std::string* reply) {
    std::string line(command);
    if (session.checksum) line += checksum(line);
    if (uint32_t e = send_line(session, line)) return e;
    std::string answer;
    uint32_t error = read_line(session, &answer);
    if (session.port->simulated()) {
        // A silent module costs the read timeout: in simulated time, or
        // really on a real-time clock.
        Library& lib = library();
        if (error == PAC_ERR_UART_READ_TIMEOUT)
            lib.unanswered_ms(session.timeouts.read_total);
        else if (error == 0)
            lib.line_time_us(wire_us(session.line, answer.size() + 1));
    }
    if (error != 0) return error;
    library().log.received(answer);
    if (session.checksum) {
        if (!checksum_matches(answer)) return PAC_ERR_UART_CHECKSUM;
        answer.resize(answer.size() - 2);
    }
    *reply = std::move(answer);
    return 0;
}

void broadcast(Session& session, std::string_view command) {
    std::string line(command);
    if (session.checksum) line += checksum(line);
    send_line(session, line);
}

uint32_t resolve(PAC_HANDLE handle, int slot, Target* target) {
    Session* session = library().open_session(handle);
    if (!session) return PAC_OS_ERR_INVALID_HANDLE;
    if ((slot & 0x1000) == 0 || (slot & ~0x10FF) != 0) return PAC_ERR_INVALID_SLOT_NUMBER;
    target->session = session;
    target->aa = address_field(slot & 0xFF);
    return 0;
}

uint32_t ask_bang(const Target& target, const std::string& command, uint32_t refusal, std::string* data) {
    std::string reply;
    if (uint32_t e = exchange(*target.session, command, &reply)) return e;
    return judge(reply, "!" + target.aa, refusal, data);
}

uint32_t ask_gt(const Target& target, const std::string& command, uint32_t refusal, std::string* data) {
    std::string reply;
    if (uint32_t e = exchange(*target.session, command, &reply)) return e;
    return judge(reply, ">", refusal, data);
}

}  // namespace pacsdk
