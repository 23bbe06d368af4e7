// A fresh default rig for one function: handles to a USB module that has
// the function's I/O group (and, for a group function, to one without it)
// and to the serial port, one of each already closed, and arguments of the
// right kind for every parameter.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/reliability/catalogue_kinds.h"

namespace reliability {

struct Bench {
    nvValue usb, usb_closed, com, com_closed;
    nvValue usb_without;  // a module without the group: null when no group
    std::string model;  // the USB module's model ID
    int board = 0;
    unsigned total = 0;  // its channel total of the function's group
};

// Resets both stand-ins to their default rig and the plug-in's state, opens
// the handles and clears the call logs.
Bench set_up(const Signature& s);

// A value of the right kind for parameter `position` of f, one that takes
// the call as far as the SDK.
nvValue valid(const icp::Function& f, const Signature& s, std::size_t position, const Bench& bench);
std::vector<nvValue> valid_args(const icp::Function& f, const Signature& s, const Bench& bench);

// The SDK calls of both call logs since set_up (the DCON traffic left out).
std::vector<std::string> sdk_calls();
void clear_calls();
// The function name of a call-log line.
std::string call_name(const std::string& line);
// Calls that happen before any argument is looked at: the serial error
// reset and the total of the group that gates a USB group function.
bool before_arguments(const std::string& line, const Signature& s);

std::string describe(const nvValue& v);
// usb_last_error for a USB function, the PAC SDK's last error for a serial one.
std::int32_t error_state(const Signature& s);
nvValue wide(long long i);  // an Integer of any width

}  // namespace reliability
