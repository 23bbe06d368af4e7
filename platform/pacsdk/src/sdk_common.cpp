#include "sdk_common.h"

namespace pacsdk {

namespace {

thread_local uint32_t thread_last_error = 0;

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

void set_last_error(uint32_t code) { thread_last_error = code; }
uint32_t last_error() { return thread_last_error; }

uint32_t exchange(Session& session, std::string_view command, std::string* reply) {
    std::string line(command);
    if (session.checksum) line += checksum(line);
    Library& lib = library();
    lib.log.sent(line);
    // The module acts once the whole command has arrived; a silent one costs
    // the read timeout.
    lib.advance_us(wire_us(session.line, line.size() + 1));
    auto answer = session.port->transact(line + "\r", session.timeouts);
    if (!answer) {
        lib.advance_us(uint64_t{session.timeouts.read_total} * 1000);
        return PAC_ERR_UART_READ_TIMEOUT;
    }
    lib.advance_us(wire_us(session.line, answer->size() + 1));
    lib.log.received(*answer);
    if (session.checksum) {
        if (!checksum_matches(*answer)) return PAC_ERR_UART_CHECKSUM;
        answer->resize(answer->size() - 2);
    }
    *reply = std::move(*answer);
    return 0;
}

void broadcast(Session& session, std::string_view command) {
    std::string line(command);
    if (session.checksum) line += checksum(line);
    library().log.sent(line);
    library().advance_us(wire_us(session.line, line.size() + 1));
    session.port->send(line + "\r", session.timeouts);
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
