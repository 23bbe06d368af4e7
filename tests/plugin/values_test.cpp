// The argument checks and result builders every body is written in: which
// kinds each check accepts, the widths and truncations of the conversions,
// the vector and channel rules, and the exact shape of the results.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>

#include "plugin/values/values.h"
#include "tests/nvmath/samples.h"

namespace {

using namespace sample;
namespace arg = icp::arg;

constexpr float float_max = std::numeric_limits<float>::max();
constexpr float float_inf = std::numeric_limits<float>::infinity();

// What a check made of a value: "refused" or the converted number.
template <class T>
std::string seen(const std::optional<T>& converted) {
    if (!converted) return "refused";
    if constexpr (std::is_floating_point_v<T>) return std::to_string(*converted);
    return std::to_string(static_cast<long long>(*converted));
}

// Every scalar check against every kind of value. A check takes its own kind
// only (the unsigned check also a whole Double in range), never converts
// another kind, and cuts integers to its width without a range check.
TEST(ArgumentChecks, KindsAndWidths) {
    int device = 0;
    struct Case {
        const char* what;
        nvValue v;
        const char* int32;
        const char* uint16;
        const char* int16;
        const char* uint8;
        const char* uint32;
        const char* real32;
        const char* flag;
    };
    const Case cases[] = {
        {"integer 1", integer(1), "1", "1", "1", "1", "1", "refused", "refused"},
        {"integer 256", integer(256), "256", "256", "256", "0", "256", "refused", "refused"},
        {"integer -1", integer(-1), "-1", "65535", "-1", "255", "refused", "refused", "refused"},
        {"integer 65535", integer(65535), "65535", "65535", "-1", "255", "65535", "refused", "refused"},
        {"integer 65537", integer(65537), "65537", "1", "1", "1", "65537", "refused", "refused"},
        {"integer 32768", integer(32768), "32768", "32768", "-32768", "0", "32768", "refused", "refused"},
        {"integer 2^31", integer(2147483648LL), "-2147483648", "0", "0", "0", "2147483648", "refused", "refused"},
        {"integer 4294967295", integer(4294967295LL), "-1", "65535", "-1", "255", "4294967295", "refused",
         "refused"},
        {"integer 2^32 + 3", integer(4294967299LL), "3", "3", "3", "3", "refused", "refused", "refused"},
        {"handle", handle(&device), "0", "0", "0", "0", "0", "refused", "refused"},
        {"double 1.0", real(1.0), "refused", "refused", "refused", "refused", "1", "1.000000", "refused"},
        {"double 4294967295.0", real(4294967295.0), "refused", "refused", "refused", "refused", "4294967295",
         "4294967296.000000", "refused"},
        {"double 1.5", real(1.5), "refused", "refused", "refused", "refused", "refused", "1.500000", "refused"},
        {"double -1.0", real(-1.0), "refused", "refused", "refused", "refused", "refused", "-1.000000",
         "refused"},
        {"true", boolean(true), "refused", "refused", "refused", "refused", "refused", "refused", "1"},
        {"false", boolean(false), "refused", "refused", "refused", "refused", "refused", "refused", "0"},
        {"string \"1\"", text("1"), "refused", "refused", "refused", "refused", "refused", "refused", "refused"},
        {"null", null(), "refused", "refused", "refused", "refused", "refused", "refused", "refused"},
        {"vector [1]", vector({integer(1)}), "refused", "refused", "refused", "refused", "refused", "refused",
         "refused"},
        {"vector [true]", vector({boolean(true)}), "refused", "refused", "refused", "refused", "refused",
         "refused", "refused"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(seen(arg::int32(c.v)), c.int32);
        EXPECT_EQ(seen(arg::uint16(c.v)), c.uint16);
        EXPECT_EQ(seen(arg::int16(c.v)), c.int16);
        EXPECT_EQ(seen(arg::uint8(c.v)), c.uint8);
        EXPECT_EQ(seen(arg::uint32(c.v)), c.uint32);
        EXPECT_EQ(seen(arg::real32(c.v)), c.real32);
        EXPECT_EQ(seen(arg::flag(c.v)), c.flag);
        EXPECT_EQ(seen(arg::flag_as_int32(c.v)), c.flag);
    }
}

TEST(ArgumentChecks, TextTakesStringsOnly) {
    struct Case {
        nvValue v;
        std::optional<std::string> text;
    };
    const Case cases[] = {
        {text("USB2019"), "USB2019"},
        {text(""), ""},
        {text("a\nb"), "a\nb"},
        {integer(2019), std::nullopt},
        {real(1.0), std::nullopt},
        {boolean(true), std::nullopt},
        {vector({text("USB2019")}), std::nullopt},
        {null(), std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.v.repr());
        EXPECT_EQ(arg::text(c.v), c.text);
    }
}

// Every real reaches an SDK as the nearest single-precision value, and no
// double, however large, makes the narrowing undefined.
TEST(ArgumentChecks, RealsNarrowToTheNearestFloat) {
    struct Case {
        const char* what;
        double x;
        float expected;
    };
    const Case cases[] = {
        {"0.1", 0.1, 0.1f},
        {"-2.5", -2.5, -2.5f},
        {"1/3", 1.0 / 3.0, 1.0f / 3.0f},
        {"largest float", static_cast<double>(float_max), float_max},
        {"just above the largest float", static_cast<double>(float_max) * (1.0 + 0x1p-30), float_max},
        {"just below the halfway point to 2^128", std::nextafter(0x1.ffffffp127, 0.0), float_max},
        {"halfway to 2^128", 0x1.ffffffp127, float_inf},
        {"1e39", 1e39, float_inf},
        {"1e300", 1e300, float_inf},
        {"-1e300", -1e300, -float_inf},
        {"largest double", std::numeric_limits<double>::max(), float_inf},
        {"lowest double", std::numeric_limits<double>::lowest(), -float_inf},
        {"infinity", std::numeric_limits<double>::infinity(), float_inf},
        {"1e-50 underflows to zero", 1e-50, 0.0f},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(icp::to_float(c.x), c.expected);
        EXPECT_EQ(arg::real32(real(c.x)), c.expected);
        EXPECT_EQ(arg::element::real32(real(c.x)), c.expected);
    }
    EXPECT_TRUE(std::isnan(icp::to_float(std::numeric_limits<double>::quiet_NaN())));
}

// Readers take 0 <= channel < total: no truncation to the SDK's width first.
TEST(ArgumentChecks, ChannelBounds) {
    struct Case {
        nvValue channel;
        unsigned total;
        std::optional<unsigned> accepted;
    };
    const Case cases[] = {
        {integer(0), 8, 0u},
        {integer(7), 8, 7u},
        {integer(8), 8, std::nullopt},
        {integer(-1), 8, std::nullopt},
        {integer(256), 8, std::nullopt},
        {integer(264), 8, std::nullopt},
        {integer(-2147483648LL), 8, std::nullopt},
        {integer(2147483647), 8, std::nullopt},
        {integer(0), 0, std::nullopt},
        {integer(31), 32, 31u},
        {real(1.0), 8, std::nullopt},
        {boolean(true), 8, std::nullopt},
        {text("1"), 8, std::nullopt},
        {null(), 8, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.channel.repr() + " of " + std::to_string(c.total));
        EXPECT_EQ(arg::channel(c.channel, c.total), c.accepted);
    }
}

// A per-channel vector must be a Vector (not a Matrix) of exactly `total`
// numbers that fit the fixed array; each element is converted like the
// scalar of its width, and the entries past the total stay zero.
TEST(ArgumentChecks, PerChannelVectors) {
    using Array = std::array<std::uint8_t, 4>;
    const auto run = [](const nvValue& v, unsigned total) {
        return arg::per_channel<std::uint8_t, 4>(v, total, arg::element::uint8);
    };
    struct Case {
        const char* what;
        nvValue v;
        unsigned total;
        std::optional<Array> accepted;
    };
    const Case cases[] = {
        {"exactly the total", vector({integer(1), integer(2), integer(3)}), 3, Array{1, 2, 3, 0}},
        {"widths: 256 -> 0, -1 -> 255, doubles truncated",
         vector({integer(256), integer(-1), real(2.9), real(-1.0)}), 4, Array{0, 255, 2, 255}},
        {"one shorter", vector({integer(1), integer(2)}), 3, std::nullopt},
        {"one longer", vector({integer(1), integer(2), integer(3), integer(4)}), 3, std::nullopt},
        {"a Boolean element", vector({integer(1), boolean(true), integer(3)}), 3, std::nullopt},
        {"a string element", vector({integer(1), text("2"), integer(3)}), 3, std::nullopt},
        {"an unset element", vt::nvVector(3, false, true, false), 3, std::nullopt},
        {"a matrix of the right size", matrix(1, 3, {integer(1), integer(2), integer(3)}), 3, std::nullopt},
        {"a scalar", integer(1), 1, std::nullopt},
        {"a string", text("abc"), 3, std::nullopt},
        {"total beyond the array",
         vector({integer(1), integer(2), integer(3), integer(4), integer(5)}), 5, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(run(c.v, c.total), c.accepted);
    }
}

TEST(ArgumentChecks, PerChannelElementWidths) {
    const nvValue v = vector({integer(65537), integer(-1), real(4294967295.0), real(0.1)});
    EXPECT_EQ((arg::per_channel<std::uint16_t, 16>(v, 4, arg::element::uint16)->at(0)), 1);
    EXPECT_EQ((arg::per_channel<std::uint16_t, 16>(v, 4, arg::element::uint16)->at(1)), 65535);
    EXPECT_EQ((arg::per_channel<std::uint32_t, 16>(v, 4, arg::element::uint32)->at(1)), 4294967295u);
    EXPECT_EQ((arg::per_channel<std::uint32_t, 16>(v, 4, arg::element::uint32)->at(2)), 4294967295u);
    EXPECT_EQ((arg::per_channel<float, 16>(v, 4, arg::element::real32)->at(0)), 65537.0f);
    EXPECT_EQ((arg::per_channel<float, 16>(v, 4, arg::element::real32)->at(3)), 0.1f);
}

// The results as the host sees them: kind and value in the printed form,
// and the flags each builder hands to the host's constructors.
TEST(ResultBuilders, ShapesAndFlags) {
    namespace make = icp::make;
    const char buffer[4] = {'A', 'B', 'C', 'D'};  // no terminating zero
    const char nickname[8] = {'d', 'e', 'v', '\0', 'x', 'y', 'z', '\0'};
    struct Case {
        const char* what;
        nvValue v;
        const char* printed;
        std::array<bool, 3> flags;
    };
    const Case cases[] = {
        {"null", make::null(), "null", {}},
        {"true", make::boolean(true), "true", {}},
        {"integer -1", make::integer(-1), "-1", {}},
        {"integer, lowest", make::integer(std::numeric_limits<std::int32_t>::min()), "-2147483648", {}},
        {"real widened from a float", make::real(0.1f), "0.10000000149011612", {}},
        {"unsigned word as a real", make::real_unsigned(0xFFFFFFFFu), "4294967295.0", {}},
        {"text", make::text("Is ICP plugin loaded"), "\"Is ICP plugin loaded\"", {true, false, false}},
        {"text with blanks kept", make::text("ICPCOM Rec Cmd Exec "), "\"ICPCOM Rec Cmd Exec \"",
         {true, false, false}},
        {"buffer cut at its capacity", make::text_of(buffer, sizeof buffer), "\"ABCD\"", {true, false, false}},
        {"buffer cut at its first zero", make::text_of(nickname, sizeof nickname), "\"dev\"", {true, false, false}},
        {"vector", make::vector(3, [](unsigned i) { return make::boolean(i == 1); }), "[false, true, false]",
         {false, true, false}},
        {"empty vector", make::vector(0, [](unsigned) { return make::null(); }), "[]", {false, true, false}},
        {"matrix row by row", make::matrix2(2, [](unsigned r, unsigned c) { return make::integer(int(r * 10 + c)); }),
         "[[0, 1], [10, 11]]", {true, false, false}},
        {"table", make::table2(1, [](unsigned, unsigned c) { return c ? make::integer(1) : make::text("USB2019"); },
                               "Device ID", "Board ID"),
         "{\"Device ID\", \"Board ID\"} [[\"USB2019\", 1]]", {true, false, false}},
        {"empty table", make::table2(0, [](unsigned, unsigned) { return make::null(); }, "Device ID", "Board ID"),
         "{\"Device ID\", \"Board ID\"} []", {true, false, false}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.v.repr(), c.printed);
        for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(c.v.flag(i), c.flags[i]) << "flag " << i;
        EXPECT_EQ(c.v.pointer(), nullptr);
    }
}

TEST(ResultBuilders, HandlesCarryTheAddressUnchanged) {
    int device = 0;
    EXPECT_EQ(icp::address_of(icp::make::handle(&device)), &device);
    EXPECT_EQ(icp::address_of(icp::make::handle(nullptr)), nullptr);
    EXPECT_EQ(icp::address_of(icp::make::integer(1)), nullptr);
    EXPECT_TRUE(icp::make::handle(&device).isInteger());
}

}  // namespace
