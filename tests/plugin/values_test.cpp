// Edges of the value vocabulary that no body's result shows: the narrowing
// of reals at the float range's edge, vectors that do not fit, buffers
// without a terminating zero, and the flags the host's constructors receive.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "plugin/values/values.h"

namespace {

using icp::nvValue;

// Every real reaches an SDK as the nearest single-precision value, and no
// double, however large, makes the narrowing undefined.
TEST(Values, RealsNarrowToTheNearestFloat) {
    constexpr float float_max = std::numeric_limits<float>::max();
    constexpr float float_inf = std::numeric_limits<float>::infinity();
    struct Case {
        const char* what;
        double x;
        float expected;
    };
    const Case cases[] = {
        {"largest float", static_cast<double>(float_max), float_max},
        {"just above the largest float", static_cast<double>(float_max) * (1.0 + 0x1p-30), float_max},
        {"just below the halfway point to 2^128", std::nextafter(0x1.ffffffp127, 0.0), float_max},
        {"halfway to 2^128", 0x1.ffffffp127, float_inf},
        {"-1e300", -1e300, -float_inf},
        {"1e-50 underflows to zero", 1e-50, 0.0f},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(icp::to_float(c.x), c.expected);
        EXPECT_EQ(icp::arg::real32(icp::make::real(c.x)), c.expected);
        EXPECT_EQ(icp::arg::element::real32(icp::make::real(c.x)), c.expected);
    }
    EXPECT_TRUE(std::isnan(icp::to_float(std::numeric_limits<double>::quiet_NaN())));
}

// Exactly `total` numbers in a Vector (not a Matrix) that fit the fixed
// array; entries past the total stay zero.
TEST(Values, PerChannelVectorsFitTheirArray) {
    using Array = std::array<std::uint8_t, 4>;
    const auto numbers = [](unsigned n, bool as_matrix) {
        if (as_matrix) return icp::make::matrix2(1, [](unsigned, unsigned c) { return icp::make::integer(int(c)); });
        return icp::make::vector(n, [](unsigned i) { return icp::make::integer(int(i) + 255); });
    };
    struct Case {
        nvValue v;
        unsigned total;
        std::optional<Array> accepted;
    };
    const Case cases[] = {
        {numbers(3, false), 3, Array{255, 0, 1, 0}},
        {numbers(5, false), 5, std::nullopt},  // beyond the array
        {numbers(2, true), 2, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.v.repr());
        EXPECT_EQ((icp::arg::per_channel<std::uint8_t, 4>(c.v, c.total, icp::arg::element::uint8)), c.accepted);
    }
}

// Texts, matrices and tables are made with their first flag set, vectors
// with their second, as the host's constructors expect.
TEST(Values, TextsOfBuffersAndTheFlagsOfResults) {
    namespace make = icp::make;
    const char full[4] = {'A', 'B', 'C', 'D'};  // no terminating zero
    const char nickname[8] = {'d', 'e', 'v', '\0', 'x', 'y', 'z', '\0'};
    struct Case {
        nvValue v;
        const char* printed;
        std::array<bool, 3> flags;
    };
    const Case cases[] = {
        {make::text_of(full, sizeof full), "\"ABCD\"", {true, false, false}},
        {make::text_of(nickname, sizeof nickname), "\"dev\"", {true, false, false}},
        {make::vector(1, [](unsigned) { return make::null(); }), "[null]", {false, true, false}},
        {make::matrix2(1, [](unsigned, unsigned c) { return make::integer(int(c)); }), "[[0, 1]]",
         {true, false, false}},
        {make::table2(0, [](unsigned, unsigned) { return make::null(); }, "Device ID", "Board ID"),
         "{\"Device ID\", \"Board ID\"} []", {true, false, false}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.printed);
        EXPECT_EQ(c.v.repr(), c.printed);
        for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(c.v.flag(i), c.flags[i]) << "flag " << i;
    }
}

}  // namespace
