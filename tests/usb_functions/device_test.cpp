// The device functions: listing, opening and closing, the error texts, the
// module information and settings, and the model table against the
// simulator's.
#include "tests/usb_functions/fixture.h"
#include "usb/info.h"
#include "usb/models.h"

namespace usbtest {
namespace {

using icp::usb::device_id_from_type_code;
using icp::usb::device_type_code_from_id;

TEST(UsbDevice, ListDeviceShowsModulesInListOrder) {
    usbsim::reset();
    usbsim::add_module("USB2019", 1);
    usbsim::add_module("USB2084", 200);   // a byte above 127 stays positive
    usbsim::add_module("USB2045_32", 0);  // user-defined board ID 16
    icp::usb_last_error = 7;
    EXPECT_EQ(icpusb_listdevice().repr(),
              R"({"Device ID", "Board ID"} [["USB2019", 1], ["USB2084", 200], ["USB2045_32", 16]])");
    EXPECT_EQ(icp::usb_last_error, 0);
    EXPECT_EQ(usbsim::calls(), (Strings{"ScanDevice() -> 3", "ListDevice() -> 3"}));
}

// The scan's result is ignored, the list's count is read as a byte and
// usb_last_error stays 0 in every case. Injected counts fill nothing, so
// the rows show the cleared arrays: type code 0 is "Unknown device".
TEST(UsbDevice, ListDeviceCountIsAByte) {
    const struct {
        const char* function;
        std::int32_t code;
        unsigned rows;
    } cases[] = {
        {"ScanDevice", 0x10003, 1}, {"ListDevice", 0x100, 0}, {"ListDevice", 0x10002, 2},
        {"ListDevice", 0, 1},     // a code of 0 disarms: the call lists the rig
        {"ListDevice", -1, 128},  // 255 listed: no more than the arrays hold
    };
    for (const auto& c : cases) {
        fresh("USB2019");
        usbsim::fail_next(c.function, c.code);
        const nvValue table = icpusb_listdevice();
        const std::string what = std::string(c.function) + ' ' + std::to_string(c.code);
        EXPECT_EQ(icp::usb_last_error, 0) << what;
        EXPECT_EQ(table.isNull(), c.rows == 0) << what;
        EXPECT_EQ(table.rows(), c.rows) << what;
        if (c.function == std::string("ListDevice") && c.code != 0 && c.rows > 0) {
            EXPECT_EQ(table.value(0).repr() + table.value(1).repr(), "\"Unknown device\"0") << what;
        }
    }
}

TEST(UsbDevice, OpenDeviceTurnsTheIdIntoATypeCode) {
    const struct {
        nvValue id, board;
        const char* open_line;
    } cases[] = {
        {text("USB2019"), integer(1), "OpenDevice(#1, 1043, 1) -> 0"},
        {text("usb2045_32"), integer(2), "OpenDevice(#1, 1126, 2) -> 0"},
        {integer(1043), integer(1), "OpenDevice(#1, 1043, 1) -> 0"},
        {integer(0x10413), integer(1), "OpenDevice(#1, 1043, 1) -> 0"},
        {text("USB2019"), integer(257), "OpenDevice(#1, 1043, 1) -> 0"},
        {text("USB2019"), integer(300), "OpenDevice(#1, 1043, 44) -> 65538"},
        {text("USB2099"), integer(1), "OpenDevice(#1, 0, 1) -> 65538"},
        {text(" USB2019"), integer(1), "OpenDevice(#1, 0, 1) -> 65538"},
    };
    for (const auto& c : cases) {
        usbsim::reset();
        usbsim::add_module("USB2019", 1);
        usbsim::add_module("USB2045_32", 2);
        icpusb_opendevice(c.id, c.board);
        const bool opened = std::string(c.open_line).ends_with("-> 0");
        Strings expected{"CreateInstance() -> #1", c.open_line};
        if (!opened) expected.push_back("DisposeInstance(#1)");
        EXPECT_EQ(usbsim::calls(), expected);
        EXPECT_EQ(icp::usb_last_error, opened ? 0 : 0x10002) << c.open_line;
    }
}

// Closing keeps the instance: a second close reaches the SDK with it.
TEST(UsbDevice, CloseDeviceNeverDisposes) {
    const nvValue handle = fresh("USB2019");
    EXPECT_TRUE(icpusb_closedevice(handle).toBool());
    icpusb_closedevice(handle);
    EXPECT_EQ(usbsim::calls(), (Strings{"CloseDevice(#1) -> 0", "CloseDevice(#1) -> 65794"}));
}

// "i" and "s" exactly; the code is read, never changed.
TEST(UsbDevice, LastErrorForms) {
    const std::pair<std::int32_t, const char*> cases[] = {
        {-1, "Invalid device handle"},
        {0x10100, "The communication between computer and device has been timeout"},
        {0x10107, "An error occurs while getting device information while device opening procedure"},
        {0x10006, "Unknown error"},
        {-2, "Unknown error"},
    };
    for (const auto& [code, message] : cases) {
        icp::usb_last_error = code;
        expect_same(icpusb_last_error(text("s")), text(message), message);
        expect_same(icpusb_last_error(text("i")), integer(code), message);
        for (const char* form : {"I", "S", "int", "", "s "}) EXPECT_TRUE(icpusb_last_error(text(form)).isNull()) << form;
        EXPECT_EQ(icp::usb_last_error, code);
    }
}

// The plug-in's model table and the simulator's are kept apart; each must
// name the fifteen models with the same type codes. IDs are folded to upper
// case but not trimmed; codes are compared whole.
TEST(UsbDevice, ModelTableAgreesWithTheSimulator) {
    ASSERT_EQ(usbsim::models().size(), 15u);
    for (const usbsim::Model& m : usbsim::models()) {
        EXPECT_EQ(device_type_code_from_id(m.id), m.type_code) << m.id;
        EXPECT_EQ(std::string(device_id_from_type_code(m.type_code)), m.id) << m.type_code;
    }
    for (const char* id : {" USB2019", "USB2019 ", "USB2099", "USB20", "", "USB2019_32"})
        EXPECT_EQ(device_type_code_from_id(id), 0) << '"' << id << '"';
    for (std::int32_t code : {0, 1044, 1131, -1, 0x10413})
        EXPECT_STREQ(device_id_from_type_code(code), "Unknown device") << code;
}

// Each information function on a USB2026, its result as printed. A 16-bit
// firmware version with its top bit set stays positive.
TEST(UsbDevice, InformationReadsTheModule) {
    usbsim::reset();
    ASSERT_TRUE(usbsim::load_rig(R"({"usb": [{"model": "USB2026", "board": 1, "firmware": 32769}]})", nullptr));
    const nvValue h = icpusb_opendevice(text("USB2026"), integer(1));
    icp::usb_last_error = 7;
    const usbsim::ModuleState m = *usbsim::module_state(0x41A, 1);
    const struct {
        nvValue result;
        std::string printed;
    } cases[] = {
        {icpusb_getcommtimeout(h), std::to_string(m.comm_timeout_ms)},
        {icpusb_getsoftwdttimeout(h), std::to_string(m.soft_wdt_timeout_ms)},
        {icpusb_getdeviceid(h), std::to_string(0x41A | 1 << 16)},
        {icpusb_getfwver(h), "32769"},
        {icpusb_getdevicenickname(h), '"' + m.nickname + '"'},
        {icpusb_getdevicesn(h), '"' + m.serial + '"'},
        {icpusb_getsupportiomask(h), std::to_string(m.model->support_mask)},
        {icpusb_getditotal(h), "2"}, {icpusb_getdototal(h), "3"}, {icpusb_getaitotal(h), "5"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.result.repr(), c.printed);
    EXPECT_EQ(icp::usb_last_error, 0);
}

// 32-bit integers unchanged, board IDs as a byte, a Boolean as an integer;
// the SDK's limits are its own. A nickname of 31 bytes round-trips, one of
// 32 has no room for its zero byte and never reaches the SDK.
TEST(UsbDevice, SettingsAsTheSdkReceivesThem) {
    const std::string longest(31, 'n');
    expect_sent("USB2026", {
        {body(icpusb_setcommtimeout), {integer(-1)}, "SetCommTimeout(#1, 4294967295) -> 0"},
        {body(icpusb_setautoresetwdt), {boolean(true)}, "SetAutoResetWDT(#1, 1) -> 0"},
        {body(icpusb_setsoftwdttimeout), {integer(50)}, "SetSoftWDTTimeout(#1, 50) -> 65797"},
        {body(icpusb_setuserdefinedboardid), {integer(272)}, "SetUserDefinedBoardID(#1, 16) -> 0"},
        {body(icpusb_setuserdefinedboardid), {integer(5)}, "SetUserDefinedBoardID(#1, 5) -> 65797"},
    });
    const nvValue h = fresh("USB2026");
    EXPECT_TRUE(icpusb_setdevicenickname(h, text(std::string(32, 'n'))).isNull());
    EXPECT_EQ(icp::usb_last_error, 0);
    EXPECT_TRUE(usbsim::calls().empty());
    expect_read_back("USB2026", {
        {body(icpusb_setdevicenickname), text(longest), body(icpusb_getdevicenickname), text(longest)},
        {body(icpusb_setdevicenickname), text(""), body(icpusb_getdevicenickname), text("")},
        {body(icpusb_setcommtimeout), integer(250), body(icpusb_getcommtimeout), integer(250)},
        {body(icpusb_setsoftwdttimeout), integer(5000), body(icpusb_getsoftwdttimeout), integer(5000)},
    });
}

}  // namespace
}  // namespace usbtest
