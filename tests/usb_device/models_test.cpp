#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "usb/models.h"
#include "usbio_sim.h"

using namespace icp::usb;

namespace {

// The plug-in's model table and the simulator's are kept apart; each must
// name the fifteen models with the same type codes.
TEST(ModelTable, AgreesWithTheSimulatorBothWays) {
    ASSERT_EQ(usbsim::models().size(), 15u);
    for (const usbsim::Model& m : usbsim::models()) {
        EXPECT_EQ(device_type_code_from_id(m.id), m.type_code) << m.id;
        EXPECT_EQ(std::string(device_id_from_type_code(m.type_code)), m.id) << m.type_code;
    }
}

TEST(ModelTable, IdsAreFoldedToUpperCaseButNotTrimmed) {
    const struct {
        const char* id;
        std::uint16_t type_code;
    } cases[] = {
        {"usb2045_32", 1126}, {"uSb2019", 1043}, {" USB2019", 0}, {"USB2019 ", 0},
        {"USB2099", 0},       {"USB20", 0},      {"", 0},         {"USB2019_32", 0},
    };
    for (const auto& c : cases) EXPECT_EQ(device_type_code_from_id(c.id), c.type_code) << '"' << c.id << '"';
}

TEST(ModelTable, CodesOutsideTheTableAreUnknown) {
    // 0x10413 has the low 16 bits of USB2019: codes are compared whole.
    for (std::int32_t code : {0, 1044, 1131, -1, 0x10413})
        EXPECT_STREQ(device_id_from_type_code(code), "Unknown device") << code;
}

TEST(MessageTable, EveryCodeHasItsText) {
    const struct {
        std::int32_t code;
        const char* text;
    } cases[] = {
        {-1, "Invalid device handle"},
        {0, "The operation completed successfully"},
        {0x10000, "The handle of device is invalid"},
        {0x10001, "The device has been opened by class library"},
        {0x10002, "The class library cannot find the device"},
        {0x10003, "An error was made to scan device"},
        {0x10004, "The packet size is invalid"},
        {0x10005, "An error occurs while writing packet to module"},
        {0x10100, "The communication between computer and device has been timeout"},
        {0x10101, "The device has been opened by class library"},
        {0x10102, "The device has not opened for operating"},
        {0x10103, "The data returned by device is invalid"},
        {0x10104, "The method is not supported"},
        {0x10105, "The parameter of method is invalid"},
        {0x10106, "An error occurs while getting bulk value"},
        {0x10107, "An error occurs while getting device information while device opening procedure"},
        {0x10006, "Unknown error"},
        {0x100FF, "Unknown error"},
        {0x10108, "Unknown error"},
        {-2, "Unknown error"},
        {1, "Unknown error"},
    };
    for (const auto& c : cases) EXPECT_STREQ(usb_error_message(c.code), c.text) << std::hex << c.code;
}

}  // namespace
