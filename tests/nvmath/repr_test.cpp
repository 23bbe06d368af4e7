// The printed forms of host values (what the command-line host shows, and a
// non-string's toString()) that no script in the host's tests prints, and
// strings at every length.
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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
        {real(1e300), "1e+300"},
        {real(std::numeric_limits<double>::quiet_NaN()), "nan"},
        {real(-std::numeric_limits<double>::infinity()), "-inf"},
        {handle(&device), "<handle>"},
        {vector({handle(&device)}), "[<handle>]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.printed);
        EXPECT_EQ(c.v.repr(), c.printed);
    }
}

// A string keeps its text, its flag and its copies whatever its length:
// short ones are held in the value, long ones or ones with formats in a
// block of their own.
TEST(NvValueStrings, TextAndFlagAtEveryLength) {
    const std::string sixteen = "0123456789abcdef";
    struct Case {
        const char* what;
        std::string text;
        bool flag;
        std::vector<vt::CharFormat> formats;
    };
    const Case cases[] = {
        {"sixteen characters", sixteen, true, {}},
        {"seventeen, flag false", sixteen + "g", false, {}},
        {"short with a format run", "ab", true, {{0, 1, 2}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        auto original = std::make_unique<nvValue>(vt::nvSymbolicValue(c.text, c.flag, c.formats));
        nvValue copy = *original;
        nvValue other = *original;
        nvValue moved(std::move(other));
        original.reset();
        for (const nvValue* v : {&copy, &moved}) {
            EXPECT_TRUE(v->isString());
            EXPECT_EQ(v->toString(), c.text);
            EXPECT_EQ(v->flag(0), c.flag);
            EXPECT_FALSE(v->flag(1));
            EXPECT_FALSE(v->flag(2));
            EXPECT_EQ(v->size(), 0u);
        }
    }
}

}  // namespace
