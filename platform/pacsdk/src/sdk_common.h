// What the exported SDK calls share: the per-thread last error, the call-log
// line of a call, the DCON exchange over a port, and reaching a module by
// handle and slot.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include <icp_platform/format.h>

#include "PACSDK.h"
#include "dcon_text.h"
#include "library.h"

namespace pacsdk {

// detail, when given, is the message of this error (at most 31 characters)
// until the next one: it tells what the code alone cannot.
void set_last_error(uint32_t code, std::string detail = {});
uint32_t last_error();
const std::string& last_error_detail();

// ---- Call-log text of arguments ---------------------------------------------

inline std::string arg_text(PAC_HANDLE h) { return library().handle_text(h); }
inline std::string arg_text(int v) { return std::to_string(v); }
inline std::string arg_text(uint32_t v) { return std::to_string(v); }
inline std::string arg_text(float v) { return icp_platform::shortest_real(v); }
inline std::string arg_text(const char* s) { return quoted(s); }

// "a, b, c" of a call's arguments.
template <class... Args>
std::string call_args(const Args&... args) {
    std::string out;
    [[maybe_unused]] const char* separator = "";
    ((out += separator, out += arg_text(args), separator = ", "), ...);
    return out;
}

// Runs body (which returns 0 or an error code) under the library lock, sets
// the last error when it fails, logs "NAME(ARGS) -> 1|0" and returns the
// status. A failure armed by pacsim::fail_next replaces the body.
template <class Body, class... Args>
PAC_BOOL status_call(const char* name, Body&& body, const Args&... args) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    const std::string call = call_args(args...);
    uint32_t error = 0;
    if (!lib.take_fault(name, &error)) error = body();
    if (error != 0) set_last_error(error);
    lib.log.call(name, call, error != 0 ? "0" : "1");
    return error != 0 ? 0 : 1;
}

// ---- DCON exchange ----------------------------------------------------------

// One command on a port: checksum (when the port's checksum mode is on) and
// CR added, the reply line read within the port's timeouts, its checksum
// checked and removed. 0 with the reply, or PAC_ERR_UART_READ_TIMEOUT,
// PAC_ERR_UART_CHECKSUM, PAC_ERR_UART_INTERNAL_BUFFER_OVERFLOW (a line too
// long for a reply), PAC_ERR_UART_GET_WRONG_LINE_STATUS (the device failed).
uint32_t exchange(Session& session, std::string_view command, std::string* reply);
// A command that no module answers (broadcast).
void broadcast(Session& session, std::string_view command);

// ---- Modules ------------------------------------------------------------------

// A module reached by port handle and slot.
struct Target {
    Session* session = nullptr;
    std::string aa;  // address field
};

// Handle first (PAC_OS_ERR_INVALID_HANDLE), then slot: bit 12 set and
// nothing above 0x10FF, else PAC_ERR_INVALID_SLOT_NUMBER.
uint32_t resolve(PAC_HANDLE handle, int slot, Target* target);

// What a '?' reply means: a refused value when the call sends one, else a
// response the call cannot use.
constexpr uint32_t refused_read = PAC_ERR_UART_RESPONSE;
constexpr uint32_t refused_value = PAC_ERR_IO_VALUE_OUT_OF_RANGE;

// Sends command and expects "!AA<data>" (the target's address): 0 and the
// data. A reply starting with '?' gives refusal; any other reply (a bare
// "!", another address) PAC_ERR_UART_RESPONSE.
uint32_t ask_bang(const Target& target, const std::string& command, uint32_t refusal, std::string* data);
// The same for ">data".
uint32_t ask_gt(const Target& target, const std::string& command, uint32_t refusal, std::string* data);

}  // namespace pacsdk
