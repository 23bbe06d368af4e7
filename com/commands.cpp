#include "com/commands.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "com/body.h"
#include "plugin/catalogue.h"
#include "plugin/state.h"

#define ICP_COM_COMMAND_FUNCTIONS(F)                                                              \
    F(icpcom_sendcmd, "ICPCOM_SendCmd", "Sends commands through the COM port", "String response", \
      "Device handle opened by icpcom_opendevice()", "String command")                           \
    F(icpcom_rec_cmd_start, "ICPCOM Rec Cmd Start",                                               \
      "Starts recording commands send by icpcom_sendcmd() function", "Boolean")                   \
    F(icpcom_rec_cmd_stop, "ICPCOM Rec Cmd Stop",                                                 \
      "Stops recording commands send by icpcom_sendcmd() function and return commands as string " \
      "vector",                                                                                   \
      "Vector")                                                                                   \
    F(icpcom_rec_cmd_exec, "ICPCOM Rec Cmd Exec",                                                 \
      "Executes commands recorded by icpcom_rec_cmd_stop() function", "Boolean",                  \
      "Device handle opened by icpcom_opendevice()", "Vector commands")

using namespace icp;

namespace {

// Commands and responses travel in fixed 20-byte buffers: at most 19
// characters and the terminating zero.
constexpr std::size_t line_buffer = 20;

}  // namespace

ICP_EXPORT nvValue icpcom_sendcmd(const nvValue& handle, const nvValue& command) {
    return com::body(handle, [&](PAC_HANDLE port) {
        auto text = arg::text(command);
        if (!text) return com::refused();
        // The length, as a signed 32-bit count, must be 1..19; anything else
        // never reaches the port.
        const auto length = static_cast<std::int32_t>(text->size());
        if (length < 1 || length >= static_cast<std::int32_t>(line_buffer)) return com::refused();

        // An embedded zero byte ends the command as the SDK sees it.
        char sent[line_buffer] = {};
        char reply[line_buffer] = {};
        const auto first = text->begin();
        std::copy(first, std::find(first, first + length, '\0'), sent);
        if (!uart_SendCmd(port, sent, reply)) return make::null();

        // Only commands that went out are kept, and kept whole.
        if (recording_enabled) recorded_commands.push_back(*text);
        return make::text_of(reply, sizeof reply);
    });
}

// Restarts the capture from an empty list, also while recording.
ICP_EXPORT nvValue icpcom_rec_cmd_start() {
    recorded_commands.clear();
    recording_enabled = true;
    return make::boolean(true);
}

// The list is kept: stopping again returns it again, until the next start.
ICP_EXPORT nvValue icpcom_rec_cmd_stop() {
    recording_enabled = false;
    const auto n = static_cast<std::uint32_t>(recorded_commands.size());
    if (n == 0) return make::null();
    return make::vector(n, [](unsigned i) { return make::text(recorded_commands[i]); });
}

// Every element goes through "ICPCOM_SendCmd", which refuses what is not a
// command of 1..19 characters; failed sends do not stop the replay. While
// recording, the replayed commands are captured again.
ICP_EXPORT nvValue icpcom_rec_cmd_exec(const nvValue& handle, const nvValue& commands) {
    if (!address_of(handle) || !commands.isVector()) return make::null();
    const auto n = static_cast<std::int32_t>(commands.size());
    for (std::int32_t i = 0; i < n; ++i) icpcom_sendcmd(handle, commands.value(static_cast<unsigned>(i)));
    return make::boolean(true);
}

ICP_CATALOGUE_GROUP(com_commands, ICP_COM_COMMAND_FUNCTIONS)
