#include <string>
#include <vector>

#include "fixture.h"

using namespace usbtest;
using icp::make::boolean;
using icp::make::null;
using icp::make::real;

namespace {

using Device = UsbTest;
using Strings = std::vector<std::string>;

// The cells of a table, row by row, in printed form.
Strings cells(const nvValue& table) {
    Strings out;
    for (unsigned i = 0; i < table.size(); ++i) out.push_back(table.value(i).repr());
    return out;
}

TEST_F(Device, ListDeviceShowsModulesInListOrder) {
    usbsim::add_module("USB2019", 1);
    usbsim::add_module("USB2084", 200);   // a byte above 127 stays positive
    usbsim::add_module("USB2045_32", 0);  // user-defined board ID 16
    icp::usb_last_error = 7;
    nvValue table = icpusb_listdevice();
    EXPECT_EQ(icp::usb_last_error, 0);
    ASSERT_EQ(table.rows(), 3u);
    ASSERT_EQ(table.columns(), 2u);
    const auto names = table.columnNames();
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0].toString(), "Device ID");
    EXPECT_EQ(names[1].toString(), "Board ID");
    EXPECT_EQ(cells(table), (Strings{"\"USB2019\"", "1", "\"USB2084\"", "200", "\"USB2045_32\"", "16"}));
    EXPECT_EQ(log(), (Strings{"ScanDevice() -> 3", "ListDevice() -> 3"}));
}

// The scan's result is ignored, the list's count is read as a byte and
// usb_last_error stays 0 in every case. Injected counts fill nothing, so
// the rows show the cleared arrays: type code 0 is "Unknown device".
TEST_F(Device, ListDeviceCountIsAByte) {
    usbsim::add_module("USB2019", 1);
    const struct {
        const char* function;
        std::int32_t code;
        unsigned rows;
    } cases[] = {
        {"ScanDevice", 0x10003, 1},
        {"ListDevice", 0, 0},
        {"ListDevice", 0x100, 0},
        {"ListDevice", 0x10002, 2},
        {"ListDevice", -1, 128},  // 255 listed: no more than the arrays hold
    };
    for (const auto& c : cases) {
        usbsim::fail_next(c.function, c.code);
        icp::usb_last_error = 7;
        nvValue table = icpusb_listdevice();
        EXPECT_EQ(icp::usb_last_error, 0) << c.function << ' ' << c.code;
        EXPECT_EQ(table.isNull(), c.rows == 0) << c.function << ' ' << c.code;
        EXPECT_EQ(table.rows(), c.rows) << c.function << ' ' << c.code;
        if (c.function == std::string("ListDevice") && c.rows > 0) {
            EXPECT_EQ(table.value(0).toString(), "Unknown device");
            EXPECT_EQ(table.value(1).repr(), "0");
        }
    }
}

TEST_F(Device, OpenDeviceTurnsTheIdIntoATypeCode) {
    const struct {
        nvValue id;
        nvValue board;
        const char* open_line;
        bool opened;
    } cases[] = {
        {text("USB2019"), integer(1), "OpenDevice(#1, 1043, 1) -> 0", true},
        {text("usb2045_32"), integer(2), "OpenDevice(#1, 1126, 2) -> 0", true},
        {integer(1043), integer(1), "OpenDevice(#1, 1043, 1) -> 0", true},
        {integer(0x10413), integer(1), "OpenDevice(#1, 1043, 1) -> 0", true},
        {text("USB2019"), integer(257), "OpenDevice(#1, 1043, 1) -> 0", true},
        {text("USB2019"), integer(300), "OpenDevice(#1, 1043, 44) -> 65538", false},
        {text("USB2099"), integer(1), "OpenDevice(#1, 0, 1) -> 65538", false},
        {text(" USB2019"), integer(1), "OpenDevice(#1, 0, 1) -> 65538", false},
    };
    for (const auto& c : cases) {
        SetUp();
        usbsim::add_module("USB2019", 1);
        usbsim::add_module("USB2045_32", 2);
        nvValue handle = icpusb_opendevice(c.id, c.board);
        Strings expected{"CreateInstance() -> #1", c.open_line};
        if (!c.opened) expected.push_back("DisposeInstance(#1)");
        EXPECT_EQ(log(), expected);
        EXPECT_EQ(handle.pointer() != nullptr, c.opened) << c.open_line;
        EXPECT_EQ(icp::usb_last_error, c.opened ? 0 : 0x10002) << c.open_line;
    }
}

TEST_F(Device, OpenDeviceRefusesKindsBeforeCreatingAnInstance) {
    usbsim::add_module("USB2019", 1);
    const struct {
        nvValue id;
        nvValue board;
    } cases[] = {
        {real(1043.0), integer(1)}, {boolean(true), integer(1)}, {null(), integer(1)},
        {text("USB2019"), real(1.0)}, {text("USB2019"), text("1")}, {integer(1043), null()},
    };
    for (const auto& c : cases) {
        icp::usb_last_error = 7;
        EXPECT_TRUE(icpusb_opendevice(c.id, c.board).isNull());
        EXPECT_EQ(icp::usb_last_error, 0);
        EXPECT_TRUE(log().empty()) << c.id.repr() << ", " << c.board.repr();
    }
}

TEST_F(Device, OpenDeviceWithoutAnInstance) {
    usbsim::add_module("USB2019", 1);
    usbsim::fail_next("CreateInstance", 1);
    EXPECT_TRUE(icpusb_opendevice(text("USB2019"), integer(1)).isNull());
    EXPECT_EQ(icp::usb_last_error, 0);
    EXPECT_EQ(log(), Strings{"CreateInstance() -> null"});
}

// Closing keeps the instance: a second close reaches the SDK with it.
TEST_F(Device, CloseDeviceNeverDisposes) {
    nvValue handle = attach_and_open("USB2019", 1);
    EXPECT_TRUE(icpusb_closedevice(handle).toBool());
    EXPECT_EQ(icp::usb_last_error, 0);
    EXPECT_TRUE(icpusb_closedevice(handle).isNull());
    EXPECT_EQ(icp::usb_last_error, 0x10102);
    EXPECT_EQ(log(), (Strings{"CloseDevice(#1) -> 0", "CloseDevice(#1) -> 65794"}));
}

TEST_F(Device, CloseDeviceFailures) {
    nvValue handle = attach_and_open("USB2019", 1);
    for (const nvValue& h : {null(), integer(-1), text("#1")}) {
        EXPECT_TRUE(icpusb_closedevice(h).isNull());
        EXPECT_EQ(icp::usb_last_error, -1);
    }
    EXPECT_TRUE(log().empty());
    usbsim::fail_next("CloseDevice", 0x10100);
    EXPECT_TRUE(icpusb_closedevice(handle).isNull());
    EXPECT_EQ(icp::usb_last_error, 0x10100);
}

// "i" and "s" exactly; the code is read, never changed, so asking twice
// gives the same answer.
TEST_F(Device, LastErrorForms) {
    const struct {
        std::int32_t code;
        nvValue form;
        const char* printed;  // nullptr: the null result
    } cases[] = {
        {-1, text("s"), "\"Invalid device handle\""},
        {-1, text("i"), "-1"},
        {0x10100, text("s"), "\"The communication between computer and device has been timeout\""},
        {0x10100, text("i"), "65792"},
        {0x10006, text("s"), "\"Unknown error\""},
        {-1, text("I"), nullptr},
        {-1, text("S"), nullptr},
        {-1, text("int"), nullptr},
        {-1, text(""), nullptr},
        {-1, text("s "), nullptr},
        {-1, integer(1), nullptr},
    };
    for (const auto& c : cases) {
        icp::usb_last_error = c.code;
        for (int twice = 0; twice < 2; ++twice) {
            nvValue r = icpusb_last_error(c.form);
            EXPECT_EQ(r.isNull() ? "null" : r.repr(), c.printed ? c.printed : "null") << c.form.repr();
            EXPECT_EQ(icp::usb_last_error, c.code);
        }
    }
}

}  // namespace
