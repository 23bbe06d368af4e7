// The frame's own entry points: the math object, the type definition hook
// and "ICP_Loaded".
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "plugin/export.h"
#include "plugin/state.h"
#include "usb/device.h"

ICP_EXPORT NuvarelMath::nvMath* math();
ICP_EXPORT void definePluginTypes();
ICP_EXPORT icp::nvValue plugin_icp_loaded();

namespace {

TEST(Frame, MathIsOneObjectMadeWithPrecision3AndAngleUnit1) {
    NuvarelMath::nvMath* first = math();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(math(), first);
    EXPECT_EQ(&icp::math_object(), first);
    EXPECT_EQ(first->precision(), 3u);
    EXPECT_EQ(static_cast<int>(first->angleUnit()), 1);
}

TEST(Frame, DefinePluginTypesChangesNothing) {
    icp::usb_last_error = 0x10100;
    icp::recording_enabled = true;
    icp::recorded_commands = {"$01M", "#01"};
    NuvarelMath::nvMath* before = math();
    for (int i = 0; i < 3; ++i) definePluginTypes();
    EXPECT_EQ(icp::usb_last_error, 0x10100);
    EXPECT_TRUE(icp::recording_enabled);
    EXPECT_EQ(icp::recorded_commands, (std::vector<std::string>{"$01M", "#01"}));
    EXPECT_EQ(math(), before);
    EXPECT_EQ(before->precision(), 3u);
    icp::recording_enabled = false;
    icp::recorded_commands.clear();
    icp::usb_last_error = 0;
}

// "ICP_Loaded" is true whatever came before, and does not clear the USB
// error the way every USB body does on entry.
TEST(Frame, LoadedIsTrueAndLeavesTheUsbErrorAlone) {
    struct Case {
        const char* what;
        void (*before)();
        std::int32_t error;
    };
    const Case cases[] = {
        {"fresh", [] { icp::usb_last_error = 0; }, 0},
        {"after a USB call without a handle", [] { icpusb_closedevice(icp::nvValue()); }, -1},
        {"after an SDK failure", [] { icp::usb_last_error = 0x10100; }, 0x10100},
        {"after a negative SDK code", [] { icp::usb_last_error = -2147483647 - 1; }, -2147483647 - 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        c.before();
        const icp::nvValue loaded = plugin_icp_loaded();
        EXPECT_TRUE(loaded.isBoolean());
        EXPECT_TRUE(loaded.toBool());
        EXPECT_EQ(icp::usb_last_error, c.error);
    }
    // What a script sees next.
    icpusb_closedevice(icp::nvValue());
    plugin_icp_loaded();
    NuvarelMath::ValueTypes::nvSymbolicValue i("i", true, {});
    EXPECT_EQ(icpusb_last_error(i).repr(), "-1");
    icp::usb_last_error = 0;
}

}  // namespace
