// The scalar conversions and the kind tests of the host's value library that
// the plug-in's argument checks are built on (the converting constructors
// the bodies use are seen through them), and handles.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "tests/nvmath/samples.h"

namespace {

using namespace sample;

constexpr double nan_ = std::numeric_limits<double>::quiet_NaN();
constexpr double inf_ = std::numeric_limits<double>::infinity();
constexpr std::int32_t int_min = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t int_max = std::numeric_limits<std::int32_t>::max();

int anything = 0;

// Each kind test holds only for its kind, with the unsigned test widened to
// whole reals; the conversions keep the low 32 bits and read a container by
// its first element.
TEST(NvValueConversions, KindTestsAndScalarConversions) {
    struct Case {
        const char* what;
        nvValue v;
        const char* kinds;
        std::int32_t to_int;
        std::uint32_t to_unsigned;
        double to_double;
        bool to_bool;
    };
    const Case cases[] = {
        {"null", null(), "null", 0, 0, 0.0, false},
        {"true", boolean(true), "boolean", 1, 1, 1.0, true},
        {"integer 0", integer(0), "integer unsigned", 0, 0, 0.0, false},
        {"integer -7", integer(-7), "integer", -7, 4294967289u, -7.0, true},
        {"integer 2^31", integer(2147483648LL), "integer unsigned", int_min, 2147483648u, 2147483648.0, true},
        {"integer 2^32: low bits zero, value not", integer(4294967296LL), "integer", 0, 0, 4294967296.0, true},
        {"integer 2^32 + 5", integer(4294967301LL), "integer", 5, 5, 4294967301.0, true},
        {"integer -2^63", integer(std::numeric_limits<long long>::min()), "integer", 0, 0, -9223372036854775808.0,
         true},
        {"handle: an Integer of value 0", handle(&anything), "integer unsigned", 0, 0, 0.0, false},
        {"double 3.9", real(3.9), "double", 3, 3, 3.9, true},
        {"double -3.9 truncates toward zero", real(-3.9), "double", -3, 4294967293u, -3.9, true},
        {"double 0.5: toInt 0 but non-zero", real(0.5), "double", 0, 0, 0.5, true},
        {"double -0.0", real(-0.0), "double unsigned", 0, 0, 0.0, false},
        {"double -1", real(-1.0), "double", -1, 4294967295u, -1.0, true},
        {"double 4294967294.5", real(4294967294.5), "double", -2, 4294967294u, 4294967294.5, true},
        {"double 4294967295", real(4294967295.0), "double unsigned", -1, 4294967295u, 4294967295.0, true},
        {"double 4294967296", real(4294967296.0), "double", 0, 0, 4294967296.0, true},
        {"double -2^31", real(-2147483648.0), "double", int_min, 2147483648u, -2147483648.0, true},
        {"double -2^31 - 1", real(-2147483649.0), "double", int_max, 2147483647u, -2147483649.0, true},
        {"double 2^53 + 2", real(9007199254740994.0), "double", 2, 2, 9007199254740994.0, true},
        {"double 2^63", real(9223372036854775808.0), "double", 0, 0, 9223372036854775808.0, true},
        {"double 1e300", real(1e300), "double", 0, 0, 1e300, true},
        {"NaN is non-zero", real(nan_), "double", 0, 0, nan_, true},
        {"infinity", real(inf_), "double", 0, 0, inf_, true},
        {"string \"1\"", text("1"), "string", 0, 0, 0.0, false},
        {"empty vector", vector({}), "vector numeric", 0, 0, 0.0, false},
        {"vector [0, 5]: only the first element counts", vector({integer(0), integer(5)}), "vector numeric", 0, 0,
         0.0, false},
        {"vector [1, 2.5]", vector({integer(1), real(2.5)}), "vector numeric", 1, 1, 1.0, true},
        {"vector [1, true]", vector({integer(1), boolean(true)}), "vector", 1, 1, 1.0, true},
        {"vector [1, \"2\"]", vector({integer(1), text("2")}), "vector", 1, 1, 1.0, true},
        {"vector [[1]]", vector({vector({integer(1)})}), "vector", 1, 1, 1.0, true},
        {"matrix [[1, 2.5]]", matrix(1, 2, {integer(1), real(2.5)}), "matrix numeric", 1, 1, 1.0, true},
        {"empty matrix", matrix(0, 2, {}), "matrix numeric", 0, 0, 0.0, false},
        {"matrix [[1, \"x\"]]", matrix(1, 2, {integer(1), text("x")}), "matrix", 1, 1, 1.0, true},
        {"numeric table: the names are not cells", table({"A", "B"}, 1, {integer(1), integer(2)}), "matrix numeric",
         1, 1, 1.0, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(kinds(c.v), c.kinds);
        EXPECT_EQ(c.v.toInt(), c.to_int);
        EXPECT_EQ(c.v.toUnsignedInt(), c.to_unsigned);
        if (std::isnan(c.to_double))
            EXPECT_TRUE(std::isnan(c.v.toDouble()));
        else
            EXPECT_EQ(c.v.toDouble(), c.to_double);
        EXPECT_EQ(c.v.toBool(), c.to_bool);
    }
}

// Only nvInteger(nvValue*) makes a value that carries an address; a handle
// must never be forged from an ordinary value, not even by converting a
// handle.
TEST(NvValueHandles, OnlyThePointerConstructorCarriesAnAddress) {
    int device = 0;
    const nvValue h = handle(&device);
    struct Case {
        const char* what;
        nvValue v;
        void* address;
    };
    const Case cases[] = {
        {"element of a vector of handles", vector({h}).value(0), &device},
        {"null address", handle(nullptr), nullptr},
        {"nvInteger converted from a handle", vt::nvInteger(h), nullptr},
        {"vector holding a handle", vector({h}), nullptr},
        {"integer that looks like the address",
         integer(static_cast<long long>(reinterpret_cast<std::uintptr_t>(&device))), nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(static_cast<void*>(c.v.pointer()), c.address);
    }
}

}  // namespace
