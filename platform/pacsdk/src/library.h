// The library's one shared state: the rig, the open ports, the simulated
// clock and the call log, behind one lock.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <span>
#include <vector>

#include <icp_platform/sdk_core.h>

#include "PACSDK.h"
#include "pacsdk_sim.h"
#include "port.h"
#include "rig.h"

namespace pacsdk {

// \\ for a backslash, \r, \n, \xHH for other control characters; with
// quote, \" for a double quote.
std::string escaped(std::string_view text, bool quote = false);

// The SDK's function names, those faults are armed for.
std::span<const std::string_view> sdk_functions();

// Armed faults, the call log and the trace (the stand-ins' shared core),
// with the lines of the wire. Control characters and backslashes in a DCON
// text come out escaped, so that a line always stays one line.
class CallLog : public icp_platform::SdkCore {
public:
    CallLog() : SdkCore(sdk_functions()) {}
    void sent(std::string_view text) { line("dcon> " + escaped(text)); }
    void received(std::string_view text) { line("dcon< " + escaped(text)); }
};

// A port opened by uart_Open. Kept after it closes so that its handle is
// still told apart from one never issued.
struct Session {
    int number = 0;  // port#N
    std::string name;
    LineSettings line;
    std::unique_ptr<Port> port;  // null once closed
    bool checksum = false;
    Timeouts timeouts;
};

class Library {
public:
    Library();

    std::recursive_mutex mutex;
    CallLog log;
    // Whether the next call of `name` is to fail; its code in *code.
    bool take_fault(std::string_view name, uint32_t* code) { return log.take_fault(name, code); }

    Rig& rig() { return *rig_; }
    // The simulated clock, kept in microseconds so that short exchanges add
    // up; now() in whole milliseconds.
    uint64_t now() const { return now_us_ / 1000; }
    void advance_us(uint64_t us);

    // On a real-time clock (pacsim::set_real_time) time on an emulated line
    // is the clock's own: characters take no extra time, and a command
    // nobody answers really waits for the port's timeout.
    bool real_time = false;
    // Time taken on an emulated line.
    void line_time_us(uint64_t us) {
        if (!real_time) advance_us(us);
    }
    void unanswered_ms(uint32_t ms);

    // Closes every port, forgets every handle, puts in the given rig and
    // sets the clock to 0.
    void reset(std::unique_ptr<Rig> rig);

    // The handle of a newly opened port.
    PAC_HANDLE add_session(const LineSettings& line, std::unique_ptr<Port> port);
    // The open port behind a handle; nullptr for NULL, the invalid handle,
    // a value never issued, or a closed port. Never dereferences the value.
    Session* open_session(PAC_HANDLE handle);
    bool is_open(const std::string& name) const;
    // port#N for an issued handle, -1 for the invalid one, else hex.
    std::string handle_text(PAC_HANDLE handle) const;

private:
    std::unique_ptr<Rig> rig_;
    std::map<uintptr_t, Session> sessions_;
    int next_number_ = 1;
    uint64_t now_us_ = 0;
};

// Created on first use, with the default rig.
Library& library();

// Quoted and escaped; NULL for a null pointer.
std::string quoted(const char* text);

}  // namespace pacsdk
