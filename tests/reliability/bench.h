// What every function of the catalogue accepts and answers, read off its
// help record: the kind each parameter must have and the kind of a
// successful result. Help texts name the wrong kind in a few places; a short
// table of exceptions corrects those, so that a function added later is
// covered by its help record alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "NvMathLib.h"
#include "plugin/catalogue.h"

namespace reliability {

using icp::nvValue;

enum class Param {
    UsbHandle,
    ComHandle,
    Integer,
    Unsigned,   // isUnsignedInteger: masks and words
    Real,
    Boolean,
    String,
    IdOrCode,   // a model ID string or a type code Integer
    Channels,   // a numeric vector of exactly the group's total
    Commands,   // a vector of raw serial commands
};

enum class Result { Boolean, Integer, Real, Vector, Matrix, Table, String, StringOrInteger, Handle };

enum class Group { None, DO, DI, AI, AO, PI };

struct Signature {
    std::vector<Param> params;
    Result result;
    Group group;    // the I/O group whose total gates a USB body
    bool usb;       // icpusb_ (or the frame) rather than icpcom_
};

// Throws std::logic_error for a description that names no kind and has no
// entry in the exception table.
Signature signature(const icp::Function& f);

// Whether v passes the kind test of a parameter (total: the group's channel
// total, for Channels).
bool accepts(Param p, const nvValue& v, unsigned total);
// Whether v is a successful result of that kind.
bool is(Result r, const nvValue& v);

// A fresh default rig for one function: handles to a USB module that has
// the function's I/O group (and, for a group function, to one without it)
// and to the serial port, one of each already closed, and arguments of the
// right kind for every parameter.
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
std::string call_name(const std::string& line);
// Calls that happen before any argument is looked at: the serial error
// reset and the total of the group that gates a USB group function.
bool before_arguments(const std::string& line, const Signature& s);

std::string describe(const nvValue& v);
// usb_last_error for a USB function, the PAC SDK's last error for a serial one.
std::int32_t error_state(const Signature& s);
nvValue wide(long long i);  // an Integer of any width

}  // namespace reliability
