#include <string>
#include <vector>

#include "fixture.h"
#include "usb/info.h"

using namespace usbtest;
using icp::make::boolean;
using icp::make::null;
using icp::make::real;
using usbsim::ModuleState;

namespace {

using Strings = std::vector<std::string>;
using Body = nvValue (*)(const nvValue& handle);

std::string quoted(const std::string& s) { return '"' + s + '"'; }

// Each function with a valid argument where it takes one, and its result on
// the module's state as printed; totals of a group the module lacks are the
// Integer 0, not null.
struct Function {
    const char* sdk;
    Body call;
    std::string (*expected)(const ModuleState& m);
};

std::string ok(const ModuleState&) { return "true"; }

const Function functions[] = {
    {"SYNCDevice", icpusb_syncdevice, ok},
    {"SetCommTimeout", [](const nvValue& h) { return icpusb_setcommtimeout(h, integer(250)); }, ok},
    {"GetCommTimeout", icpusb_getcommtimeout, [](const ModuleState& m) { return std::to_string(m.comm_timeout_ms); }},
    {"SetAutoResetWDT", [](const nvValue& h) { return icpusb_setautoresetwdt(h, boolean(false)); }, ok},
    {"RefreshDeviceInfo", icpusb_refreshdeviceinfo, ok},
    {"SetSoftWDTTimeout", [](const nvValue& h) { return icpusb_setsoftwdttimeout(h, integer(5000)); }, ok},
    {"GetSoftWDTTimeout", icpusb_getsoftwdttimeout, [](const ModuleState& m) { return std::to_string(m.soft_wdt_timeout_ms); }},
    {"GetDeviceID", icpusb_getdeviceid, [](const ModuleState& m) { return std::to_string(m.model->type_code | m.board() << 16); }},
    {"GetFwVer", icpusb_getfwver, [](const ModuleState& m) { return std::to_string(m.firmware); }},
    {"SetDeviceNickName", [](const nvValue& h) { return icpusb_setdevicenickname(h, text("bench 3")); }, ok},
    {"GetDeviceNickName", icpusb_getdevicenickname, [](const ModuleState& m) { return quoted(m.nickname); }},
    {"GetDeviceSN", icpusb_getdevicesn, [](const ModuleState& m) { return quoted(m.serial); }},
    {"GetSupportIOMask", icpusb_getsupportiomask, [](const ModuleState& m) { return std::to_string(m.model->support_mask); }},
    {"GetDITotal", icpusb_getditotal, [](const ModuleState& m) { return std::to_string(m.model->di); }},
    {"GetDOTotal", icpusb_getdototal, [](const ModuleState& m) { return std::to_string(m.model->do_); }},
    {"GetAITotal", icpusb_getaitotal, [](const ModuleState& m) { return std::to_string(m.model->ai); }},
    {"GetAOTotal", icpusb_getaototal, [](const ModuleState& m) { return std::to_string(m.model->ao); }},
    {"GetPITotal", icpusb_getpitotal, [](const ModuleState& m) { return std::to_string(m.model->pi); }},
    {"GetPOTotal", icpusb_getpototal, [](const ModuleState& m) { return std::to_string(m.model->po); }},
    {"SetUserDefinedBoardID", [](const nvValue& h) { return icpusb_setuserdefinedboardid(h, integer(20)); }, ok},
    {"LoadDefault", icpusb_loaddefault, ok},
};

class Info : public UsbTest {
protected:
    void SetUp() override {
        UsbTest::SetUp();
        handle = attach_and_open("USB2026", 1);  // no PI, no PO
    }
    static ModuleState state() { return *usbsim::module_state(1050, 1); }
    nvValue handle;
};

TEST_F(Info, EachFunctionIsOneSdkCall) {
    for (const auto& f : functions) {
        usbsim::clear_calls();
        icp::usb_last_error = 7;
        nvValue r = f.call(handle);
        EXPECT_EQ(icp::usb_last_error, 0) << f.sdk;
        EXPECT_EQ(r.isNull() ? "null" : r.repr(), f.expected(state())) << f.sdk;
        const auto calls = log();
        ASSERT_EQ(calls.size(), 1u) << f.sdk;
        EXPECT_EQ(calls[0].rfind(std::string(f.sdk) + "(#1", 0), 0u) << calls[0];
    }
}

// What reaches the SDK: 32-bit integers unchanged, board IDs as a byte, a
// Boolean as an integer; the SDK's limits are its own.
TEST_F(Info, ArgumentsAsTheSdkReceivesThem) {
    const struct {
        nvValue result;
        const char* line;
    } cases[] = {
        {icpusb_setcommtimeout(handle, integer(-1)), "SetCommTimeout(#1, 4294967295) -> 0"},
        {icpusb_setautoresetwdt(handle, boolean(true)), "SetAutoResetWDT(#1, 1) -> 0"},
        {icpusb_setsoftwdttimeout(handle, integer(50)), "SetSoftWDTTimeout(#1, 50) -> 65797"},
        {icpusb_setuserdefinedboardid(handle, integer(272)), "SetUserDefinedBoardID(#1, 16) -> 0"},
        {icpusb_setuserdefinedboardid(handle, integer(5)), "SetUserDefinedBoardID(#1, 5) -> 65797"},
    };
    const auto calls = log();
    ASSERT_EQ(calls.size(), std::size(cases));
    for (std::size_t i = 0; i < calls.size(); ++i) {
        EXPECT_EQ(calls[i], cases[i].line);
        EXPECT_EQ(cases[i].result.isNull(), calls[i].ends_with("65797")) << calls[i];
    }
}

// Wrong kinds and missing handles are the reliability matrix's; a nickname
// without room for its zero byte is refused here, before the SDK.
TEST_F(Info, NicknameOf32BytesNeverReachesTheSdk) {
    EXPECT_TRUE(icpusb_setdevicenickname(handle, text(std::string(32, 'n'))).isNull());
    EXPECT_EQ(icp::usb_last_error, 0);
    EXPECT_TRUE(log().empty());
}

// A 16-bit version with its top bit set stays positive.
TEST_F(Info, FirmwareVersionIsZeroExtended) {
    std::string error;
    ASSERT_TRUE(usbsim::load_rig(R"({"usb": [{"model": "USB2019", "board": 2, "firmware": 32769}]})", &error))
        << error;
    nvValue device = icpusb_opendevice(text("USB2019"), integer(2));
    EXPECT_EQ(icpusb_getfwver(device).repr(), "32769");
}

TEST_F(Info, NicknameOf31BytesRoundTrips) {
    const std::string longest(31, 'n');
    EXPECT_TRUE(icpusb_setdevicenickname(handle, text(longest)).toBool());
    EXPECT_EQ(log(), Strings{"SetDeviceNickName(#1, " + quoted(longest) + ") -> 0"});
    EXPECT_EQ(icpusb_getdevicenickname(handle).toString(), longest);
    EXPECT_TRUE(icpusb_setdevicenickname(handle, text("")).toBool());
    nvValue empty = icpusb_getdevicenickname(handle);
    EXPECT_TRUE(empty.isString());
    EXPECT_EQ(empty.toString(), "");
}

}  // namespace
