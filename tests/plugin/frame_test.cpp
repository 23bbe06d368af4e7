// The frame's own entry points: the type definition hook and "ICP_Loaded"
// (the math object is checked through the export table, loader_test.cpp).
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "plugin/export.h"
#include "plugin/state.h"

ICP_EXPORT NuvarelMath::nvMath* math();
ICP_EXPORT void definePluginTypes();
ICP_EXPORT icp::nvValue plugin_icp_loaded();

namespace {

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
    EXPECT_EQ(&icp::math_object(), before);
    icp::recording_enabled = false;
    icp::recorded_commands.clear();
    icp::usb_last_error = 0;
}

// "ICP_Loaded" is true whatever came before, and does not clear the USB
// error the way every USB body does on entry.
TEST(Frame, LoadedIsTrueAndLeavesTheUsbErrorAlone) {
    for (std::int32_t error : {0, 0x10100, -2147483647 - 1}) {
        icp::usb_last_error = error;
        EXPECT_EQ(plugin_icp_loaded().repr(), "true");
        EXPECT_EQ(icp::usb_last_error, error);
    }
    icp::usb_last_error = 0;
}

}  // namespace
