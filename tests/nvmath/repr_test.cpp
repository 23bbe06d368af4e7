// The printed form of host values (what the command-line host shows, and a
// non-string's toString()).
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/nvmath/samples.h"

namespace {

using namespace sample;

TEST(NvValueRepr, PrintedForms) {
    int device = 0;
    struct Case {
        nvValue v;
        const char* printed;
    };
    const Case cases[] = {
        {null(), "null"},
        {boolean(true), "true"},
        {boolean(false), "false"},
        {integer(42), "42"},
        {integer(-7), "-7"},
        {integer(4294967296LL), "4294967296"},
        {integer(std::numeric_limits<long long>::min()), "-9223372036854775808"},
        {real(4294967295.0), "4294967295.0"},
        {real(static_cast<double>(0.1f)), "0.10000000149011612"},
        {real(0.1), "0.1"},
        {real(1e300), "1e+300"},
        {real(-2.5), "-2.5"},
        {real(0.0), "0.0"},
        {real(std::numeric_limits<double>::quiet_NaN()), "nan"},
        {real(-std::numeric_limits<double>::infinity()), "-inf"},
        {text("USB2019"), "\"USB2019\""},
        {text(""), "\"\""},
        {text("line 1\nline 2"), "\"line 1\\nline 2\""},
        {text("say \"hi\""), "\"say \\\"hi\\\"\""},
        {text("C:\\dir"), "\"C:\\\\dir\""},
        {text("  two blanks "), "\"  two blanks \""},
        {vector({integer(1), real(2.5)}), "[1, 2.5]"},
        {vector({}), "[]"},
        {vector({null(), text("a"), vector({boolean(false)})}), "[null, \"a\", [false]]"},
        {matrix(2, 2, {integer(1), integer(2), integer(3), integer(4)}), "[[1, 2], [3, 4]]"},
        {matrix(0, 2, {}), "[]"},
        {table({"Device ID", "Board ID"}, 1, {text("USB2019"), integer(1)}),
         "{\"Device ID\", \"Board ID\"} [[\"USB2019\", 1]]"},
        {table({"Device ID", "Board ID"}, 2, {text("USB2019"), integer(1), text("USB2045_32"), integer(2)}),
         "{\"Device ID\", \"Board ID\"} [[\"USB2019\", 1], [\"USB2045_32\", 2]]"},
        {handle(&device), "<handle>"},
        {vector({handle(&device)}), "[<handle>]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.printed);
        EXPECT_EQ(c.v.repr(), c.printed);
    }
}

// A string's text comes back as it is; every other kind as its printed form.
TEST(NvValueRepr, ToString) {
    struct Case {
        nvValue v;
        const char* expected;
    };
    const Case cases[] = {
        {text("a\n\"b\"\\"), "a\n\"b\"\\"},
        {text(""), ""},
        {integer(42), "42"},
        {real(0.5), "0.5"},
        {null(), "null"},
        {vector({text("x")}), "[\"x\"]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(c.v.toString(), c.expected);
    }
}

}  // namespace
