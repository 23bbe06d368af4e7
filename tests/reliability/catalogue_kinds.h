// What every function of the catalogue accepts and answers, read off its
// help record: the kind each parameter must have and the kind of a
// successful result. Help texts name the wrong kind in a few places; a short
// table of exceptions corrects those, so that a function added later is
// covered by its help record alone.
#pragma once

#include <cstddef>
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

}  // namespace reliability
