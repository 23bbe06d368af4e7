// The USB digital group against the simulated SDK: what reaches the SDK,
// what comes back, and what is refused before the SDK is reached.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "plugin/state.h"
#include "plugin/values/values.h"
#include "usb/device.h"
#include "usb/digital.h"
#include "usbio_sim.h"

namespace {

using icp::nvValue;
using icp::make::boolean;
using icp::make::integer;
using icp::make::null;
using icp::make::real;
using icp::make::text;
using Args = std::vector<nvValue>;
using Strings = std::vector<std::string>;

// An Integer beyond the signed 32-bit range: a full 32-bit word.
nvValue word(std::uint32_t w) { return nvValue(NuvarelMath::ValueTypes::nvInteger(static_cast<long long>(w))); }
nvValue vector_of(int x) { return icp::make::vector(1, [&](unsigned) { return integer(x); }); }

// Every body called the same way: the handle, then its further arguments.
using Body = std::function<nvValue(const nvValue&, const Args&)>;
Body body(nvValue (*f)(const nvValue&)) { return [f](const nvValue& h, const Args&) { return f(h); }; }
Body body(nvValue (*f)(const nvValue&, const nvValue&)) {
    return [f](const nvValue& h, const Args& a) { return f(h, a.at(0)); };
}
Body body(nvValue (*f)(const nvValue&, const nvValue&, const nvValue&)) {
    return [f](const nvValue& h, const Args& a) { return f(h, a.at(0), a.at(1)); };
}

enum class Kind { Integer, Unsigned, Boolean };

struct Function {
    const char* script;
    Body call;
    std::string total;  // the group total read first
    std::string sdk;    // the function's own SDK call
    std::vector<Kind> params;
};

const Function functions[] = {
    {"ICPUSB_DO_SetPowerOnEnable", body(icpusb_do_setpoweronenable), "GetDOTotal", "DO_SetPowerOnEnable", {Kind::Integer, Kind::Boolean}},
    {"ICPUSB_DO_SetPowerOnEnables", body(icpusb_do_setpoweronenables), "GetDOTotal", "DO_SetPowerOnEnable", {Kind::Unsigned}},
    {"ICPUSB_DO_SetSafetyEnable", body(icpusb_do_setsafetyenable), "GetDOTotal", "DO_SetSafetyEnable", {Kind::Unsigned}},
    {"ICPUSB_DO_SetSafetyValue", body(icpusb_do_setsafetyvalue), "GetDOTotal", "DO_SetSafetyValue", {Kind::Unsigned}},
    {"ICPUSB_DO_SetDigitalOutputInverse", body(icpusb_do_setdigitaloutputinverse), "GetDOTotal", "DO_SetDigitalOutputInverse", {Kind::Unsigned}},
    {"ICPUSB_DO_WriteValue", body(icpusb_do_writevalue), "GetDOTotal", "DO_WriteValue", {Kind::Unsigned}},
    {"ICPUSB_DO_WriteChannelValue", body(icpusb_do_writechannelvalue), "GetDOTotal", "DO_WriteChannelValue", {Kind::Integer, Kind::Integer}},
    {"ICPUSB_DI_SetDigitalFilterWidth", body(icpusb_di_setdigitalfilterwidth), "GetDITotal", "DI_SetDigitalFilterWidth", {Kind::Integer}},
    {"ICPUSB_DI_SetDigitalValueInverse", body(icpusb_di_setdigitalvalueinverse), "GetDITotal", "DI_SetDigitalValueInverse", {Kind::Unsigned}},
    {"ICPUSB_DI_SetCntEdgeTrigger", body(icpusb_di_setcntedgetrigger), "GetDITotal", "DI_SetCntEdgeTrigger", {Kind::Unsigned}},
    {"ICPUSB_DI_WriteClearCounter", body(icpusb_di_writeclearcounter), "GetDITotal", "DI_WriteClearCounter", {Kind::Integer}},
    {"ICPUSB_DI_WriteClearCounters", body(icpusb_di_writeclearcounters), "GetDITotal", "DI_WriteClearCounters", {Kind::Unsigned}},
    {"ICPUSB_DO_GetDigitalOutputInverse", body(icpusb_do_getdigitaloutputinverse), "GetDOTotal", "DO_GetDigitalOutputInverse", {}},
    {"ICPUSB_DI_GetDigitalFilterWidth", body(icpusb_di_getdigitalfilterwidth), "GetDITotal", "DI_GetDigitalFilterWidth", {}},
    {"ICPUSB_DI_GetDigitalValueInverse", body(icpusb_di_getdigitalvalueinverse), "GetDITotal", "DI_GetDigitalValueInverse", {}},
    {"ICPUSB_DI_GetCntEdgeTrigger", body(icpusb_di_getcntedgetrigger), "GetDITotal", "DI_GetCntEdgeTrigger", {}},
    {"ICPUSB_DO_GetPowerOnEnable", body(icpusb_do_getpoweronenable), "GetDOTotal", "DO_GetPowerOnEnable", {}},
    {"ICPUSB_DO_GetSafetyEnable", body(icpusb_do_getsafetyenable), "GetDOTotal", "DO_GetSafetyEnable", {}},
    {"ICPUSB_DO_GetSafetyValue", body(icpusb_do_getsafetyvalue), "GetDOTotal", "DO_GetSafetyValue", {}},
    {"ICPUSB_DO_ReadValue", body(icpusb_do_readvalue), "GetDOTotal", "DO_ReadValue", {}},
    {"ICPUSB_DI_ReadValue", body(icpusb_di_readvalue), "GetDITotal", "DI_ReadValue", {}},
    {"ICPUSB_DI_ReadCounterValue", body(icpusb_di_readcountervalue), "GetDITotal", "DI_ReadCounterValue", {}},
    {"ICPUSB_DI_ReadChannelValue", body(icpusb_di_readchannelvalue), "GetDITotal", "DI_ReadValue", {Kind::Integer}},
};

// Arguments that every body accepts on a USB2055 (8 DI, 8 DO).
Args accepted(const Function& f) {
    Args args;
    for (Kind k : f.params) args.push_back(k == Kind::Boolean ? boolean(true) : integer(1));
    return args;
}

std::vector<nvValue> refused(Kind k) {
    switch (k) {
        case Kind::Integer: return {boolean(true), real(1.0), text("1"), vector_of(1), null()};
        case Kind::Unsigned: return {integer(-1), real(1.5), boolean(true), text("1"), vector_of(1), null()};
        case Kind::Boolean: return {integer(1), real(1.0), text("true"), null()};
    }
    return {};
}

// A fresh rig of one opened module, instance #1, with an empty call log.
nvValue fresh(const char* model, std::uint8_t board = 1) {
    usbsim::reset();
    EXPECT_TRUE(usbsim::add_module(model, board));
    nvValue handle = icpusb_opendevice(text(model), integer(board));
    EXPECT_NE(handle.pointer(), nullptr);
    usbsim::clear_calls();
    icp::usb_last_error = 7;
    return handle;
}

void expect_same(const nvValue& got, const nvValue& want, const std::string& what) {
    EXPECT_EQ(got.kind(), want.kind()) << what << ": " << got.repr();
    EXPECT_EQ(got.repr(), want.repr()) << what;
}

void expect_null(const Function& f, const nvValue& h, const Args& args, std::int32_t error, const Strings& log,
                 const std::string& what) {
    EXPECT_TRUE(f.call(h, args).isNull()) << f.script << ": " << what;
    EXPECT_EQ(icp::usb_last_error, error) << f.script << ": " << what;
    EXPECT_EQ(usbsim::calls(), log) << f.script << ": " << what;
}

// Wrong kinds, a module without the group, a failing total call and a
// missing handle all stop before the function's own SDK call; that call's
// code is kept.
TEST(UsbDigital, EveryFunctionFollowsTheCommonBody) {
    for (const auto& f : functions) {
        const Strings total_only{f.total + "(#1) -> 0"};
        for (std::size_t p = 0; p < f.params.size(); ++p) {
            for (const auto& bad : refused(f.params[p])) {
                Args args = accepted(f);
                args[p] = bad;
                expect_null(f, fresh("USB2055", 3), args, 0, total_only, "argument " + bad.repr());
            }
        }
        expect_null(f, fresh(f.total == "GetDOTotal" ? "USB2051" : "USB2045"), accepted(f), 0, total_only, "no group");

        nvValue h = fresh("USB2055", 3);
        usbsim::fail_next(f.total, 0x10100);
        // The channel reader keeps what the "ICPUSB_GetDITotal" body left.
        const bool composed = f.script == std::string("ICPUSB_DI_ReadChannelValue");
        expect_null(f, h, accepted(f), composed ? 0x10100 : 0, {f.total + "(#1) -> 65792"}, "total fails");

        fresh("USB2055", 3);
        expect_null(f, integer(1), accepted(f), -1, {}, "no handle");

        h = fresh("USB2055", 3);
        usbsim::fail_next(f.sdk, 0x10105);
        EXPECT_TRUE(f.call(h, accepted(f)).isNull()) << f.script;
        EXPECT_EQ(icp::usb_last_error, 0x10105) << f.script;

        h = fresh("USB2055", 3);
        EXPECT_FALSE(f.call(h, accepted(f)).isNull()) << f.script;
        EXPECT_EQ(icp::usb_last_error, 0) << f.script;
        EXPECT_EQ(usbsim::calls().back().rfind(f.sdk + "(#1", 0), 0u) << f.script;
    }
}

TEST(UsbDigital, ArgumentsReachTheSdkAtTheirWidth) {
    const struct {
        Body call;
        Args args;
        const char* line;
    } cases[] = {
        {body(icpusb_do_setpoweronenable), {integer(257), boolean(true)}, "DO_SetPowerOnEnable(#1, 1, 1) -> 0"},
        // No comparison with the total: the SDK's code decides.
        {body(icpusb_do_setpoweronenable), {integer(-1), boolean(false)}, "DO_SetPowerOnEnable(#1, 255, 0) -> 65797"},
        {body(icpusb_do_writechannelvalue), {integer(258), integer(256)}, "DO_WriteChannelValue(#1, 2, 0) -> 0"},
        {body(icpusb_di_setdigitalfilterwidth), {integer(65537)}, "DI_SetDigitalFilterWidth(#1, 1) -> 0"},
        {body(icpusb_di_writeclearcounter), {integer(259)}, "DI_WriteClearCounter(#1, 3) -> 0"},
        {body(icpusb_do_writevalue), {word(0xFFFFFFFF)}, "DO_WriteValue(#1, [4294967295]) -> 0"},
        {body(icpusb_do_setsafetyenable), {real(6.0)}, "DO_SetSafetyEnable(#1, [6]) -> 0"},
        {body(icpusb_do_setdigitaloutputinverse), {word(0xF0000001)}, "DO_SetDigitalOutputInverse(#1, 4026531841) -> 0"},
        {body(icpusb_di_setcntedgetrigger), {word(0x80000000)}, "DI_SetCntEdgeTrigger(#1, 2147483648) -> 0"},
    };
    for (const auto& c : cases) {
        c.call(fresh("USB2055", 3), c.args);
        EXPECT_EQ(usbsim::calls().back(), c.line);
    }
}

// Words with the top bit set come back as positive reals; integer getters
// pass a 32-bit word unchanged and zero-extend the 16-bit filter width.
TEST(UsbDigital, WordsReadBack) {
    const struct {
        const char* model;
        Body set;
        nvValue value;
        Body get;
        nvValue want;
    } cases[] = {
        {"USB2045_32", body(icpusb_do_writevalue), word(0xFFFFFFFF), body(icpusb_do_readvalue), real(4294967295.0)},
        {"USB2045_32", body(icpusb_do_setsafetyenable), word(0x80000001), body(icpusb_do_getsafetyenable), real(2147483649.0)},
        {"USB2045_32", body(icpusb_do_setsafetyvalue), word(0xFFFFFFFF), body(icpusb_do_getsafetyvalue), real(4294967295.0)},
        {"USB2045_32", body(icpusb_do_setdigitaloutputinverse), word(0xFFFFFFFF), body(icpusb_do_getdigitaloutputinverse), integer(-1)},
        {"USB2051_32", body(icpusb_di_setdigitalvalueinverse), word(0xFFFFFFFF), body(icpusb_di_readvalue), real(4294967295.0)},
        {"USB2051_32", body(icpusb_di_setcntedgetrigger), word(0xFFFFFFFE), body(icpusb_di_getcntedgetrigger), integer(-2)},
        {"USB2051_32", body(icpusb_di_setdigitalfilterwidth), integer(65535), body(icpusb_di_getdigitalfilterwidth), integer(65535)},
    };
    for (const auto& c : cases) {
        const nvValue h = fresh(c.model);
        ASSERT_FALSE(c.set(h, {c.value}).isNull()) << usbsim::calls().back();
        expect_same(c.get(h, {}), c.want, usbsim::calls().back());
    }
    const nvValue h = fresh("USB2051");
    usbsim::pulse_di(0x433, 1, 0, 3);
    expect_same(icpusb_di_readcountervalue(h), real(3.0), "counter of channel 0");
}

// Mask 5: 32 calls whatever the output count, channels 0 and 2 enabled;
// the enables come back as one Boolean per output.
TEST(UsbDigital, PowerOnEnables) {
    const struct {
        const char* model;
        unsigned total;
    } cases[] = {{"USB2055", 8}, {"USB2045", 16}, {"USB2045_32", 32}};
    for (const auto& c : cases) {
        const nvValue h = fresh(c.model);
        expect_same(icpusb_do_setpoweronenables(h, integer(5)), boolean(true), c.model);
        Strings want{"GetDOTotal(#1) -> 0"};
        for (int ch = 0; ch < 32; ++ch)
            want.push_back("DO_SetPowerOnEnable(#1, " + std::to_string(ch) + (ch == 0 || ch == 2 ? ", 1" : ", 0") + ") -> 0");
        EXPECT_EQ(usbsim::calls(), want) << c.model;

        icpusb_do_setpoweronenable(h, integer(static_cast<int>(c.total) - 1), boolean(true));
        const nvValue enables = icp::make::vector(c.total, [&](unsigned i) { return boolean(i == 0 || i == 2 || i == c.total - 1); });
        expect_same(icpusb_do_getpoweronenable(h), enables, c.model);
    }
}

// The fourth channel fails: the loop stops there, channels 0 to 2 stay set.
TEST(UsbDigital, PowerOnMaskStopsAtTheFirstFailure) {
    const nvValue h = fresh("USB2055", 3);
    int seen = 0;
    usbsim::set_trace(
        [](const char* line, void* context) {
            int& n = *static_cast<int*>(context);
            if (std::string(line).find("DO_SetPowerOnEnable") != std::string::npos && ++n == 3)
                usbsim::fail_next("DO_SetPowerOnEnable", 0x10100);
        },
        &seen);
    EXPECT_TRUE(icpusb_do_setpoweronenables(h, word(0xFFFFFFFF)).isNull());
    usbsim::set_trace(nullptr, nullptr);
    EXPECT_EQ(icp::usb_last_error, 0x10100);
    EXPECT_EQ(usbsim::calls().size(), 5u);
    const std::array<std::uint8_t, 32> enables = usbsim::module_state(0x437, 3)->do_power_on;
    EXPECT_EQ((std::vector<int>(enables.begin(), enables.begin() + 5)), (std::vector<int>{1, 1, 1, 0, 0}));
}

TEST(UsbDigital, ChannelReader) {
    const Strings read{"GetDITotal(#1) -> 0", "GetDITotal(#1) -> 0", "DI_ReadValue(#1) -> 0"};
    const struct {
        const char* model;
        std::uint32_t signal;
        nvValue channel;
        nvValue want;
    } cases[] = {
        {"USB2051", 0x8001, integer(0), integer(1)},
        {"USB2051", 0x8001, integer(1), integer(0)},
        {"USB2051", 0x8001, integer(15), integer(1)},  // total - 1
        {"USB2051", 0x8001, integer(16), null()},      // total
        {"USB2051", 0x8001, integer(-1), null()},
        {"USB2051", 0x8001, integer(256), null()},     // no wrap to channel 0
        {"USB2051_32", 0x80000000, integer(31), integer(1)},
        {"USB2051_32", 0x80000000, integer(32), null()},
    };
    for (const auto& c : cases) {
        const nvValue h = fresh(c.model);
        usbsim::set_di(usbsim::find_model(c.model)->type_code, 1, c.signal);
        const std::string what = std::string(c.model) + " channel " + c.channel.repr();
        expect_same(icpusb_di_readchannelvalue(h, c.channel), c.want, what);
        EXPECT_EQ(icp::usb_last_error, 0) << what;
        EXPECT_EQ(usbsim::calls(), c.want.isNull() ? Strings{read[0]} : read) << what;
    }
}

}  // namespace
