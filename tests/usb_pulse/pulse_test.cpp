// The USB pulse input group against the simulated SDK: what reaches the
// SDK, what comes back, and what is refused before the SDK is reached.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "plugin/state.h"
#include "plugin/values/values.h"
#include "usb/device.h"
#include "usb/pulse.h"
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

constexpr std::uint16_t k2084 = 0x454;
constexpr unsigned kTotal = 8;  // the USB2084's pulse inputs

// An Integer beyond the signed 32-bit range: a full 32-bit word.
nvValue word(std::uint32_t w) { return nvValue(NuvarelMath::ValueTypes::nvInteger(static_cast<long long>(w))); }
nvValue integers(unsigned n, int x) { return icp::make::vector(n, [&](unsigned) { return integer(x); }); }
nvValue matrix(const std::vector<std::pair<nvValue, nvValue>>& rows) {
    return icp::make::matrix2(static_cast<unsigned>(rows.size()),
                              [&](unsigned r, unsigned c) { return c == 0 ? rows[r].first : rows[r].second; });
}

// Every body called the same way: the handle, then its further arguments.
using Body = std::function<nvValue(const nvValue&, const Args&)>;
Body body(nvValue (*f)(const nvValue&)) { return [f](const nvValue& h, const Args&) { return f(h); }; }
Body body(nvValue (*f)(const nvValue&, const nvValue&)) {
    return [f](const nvValue& h, const Args& a) { return f(h, a.at(0)); };
}
Body body(nvValue (*f)(const nvValue&, const nvValue&, const nvValue&)) {
    return [f](const nvValue& h, const Args& a) { return f(h, a.at(0), a.at(1)); };
}

// Integer: any Integer (low 8 or 16 bits); Unsigned: a mask; Channel: a
// channel that is read, 0 <= channel < total; Vector: one number per channel.
enum class Kind { Integer, Unsigned, Boolean, Channel, Vector };

struct Param {
    Kind kind;
    nvValue accepted;  // on a USB2084
};

struct Function {
    const char* script;
    Body call;
    std::string sdk;  // the function's own SDK call
    std::vector<Param> params;
};

const Param channel_1{Kind::Integer, integer(1)};
const Param mask_3{Kind::Unsigned, integer(3)};
const Param read_channel{Kind::Channel, integer(7)};

const Function functions[] = {
    {"ICPUSB_PI_SetTypeCode", body(icpusb_pi_settypecode), "PI_SetTypeCode", {channel_1, {Kind::Integer, integer(0x51)}}},
    {"ICPUSB_PI_SetTypeCodes", body(icpusb_pi_settypecodes), "PI_SetTypeCodes", {{Kind::Vector, integers(kTotal, 0x50)}}},
    {"ICPUSB_PI_SetTriggerMode", body(icpusb_pi_settriggermode), "PI_SetTriggerMode", {channel_1, {Kind::Integer, integer(2)}}},
    {"ICPUSB_PI_SetTriggerModes", body(icpusb_pi_settriggermodes), "PI_SetTriggerModes", {{Kind::Vector, integers(kTotal, 1)}}},
    {"ICPUSB_PI_SetChIsolatedFlag", body(icpusb_pi_setchisolatedflag), "PI_SetChIsolatedFlag", {channel_1, {Kind::Boolean, boolean(true)}}},
    {"ICPUSB_PI_SetChIsolatedFlags", body(icpusb_pi_setchisolatedflags), "PI_SetChIsolatedFlags", {mask_3}},
    {"ICPUSB_PI_SetLPFilterEnable", body(icpusb_pi_setlpfilterenable), "PI_SetLPFilterEnable", {channel_1, {Kind::Boolean, boolean(true)}}},
    {"ICPUSB_PI_SetLPFilterEnables", body(icpusb_pi_setlpfilterenables), "PI_SetLPFilterEnables", {mask_3}},
    {"ICPUSB_PI_SetLPFilterWidth", body(icpusb_pi_setlpfilterwidth), "PI_SetLPFilterWidth", {channel_1, {Kind::Integer, integer(100)}}},
    {"ICPUSB_PI_SetLPFilterWidths", body(icpusb_pi_setlpfilterwidths), "PI_SetLPFilterWidths", {{Kind::Vector, integers(kTotal, 100)}}},
    {"ICPUSB_PI_ClearSingleChCount", body(icpusb_pi_clearsinglechcount), "PI_ClearSingleChCount", {channel_1}},
    {"ICPUSB_PI_ClearChCount", body(icpusb_pi_clearchcount), "PI_ClearChCount", {mask_3}},
    {"ICPUSB_PI_ClearSingleChStatus", body(icpusb_pi_clearsinglechstatus), "PI_ClearSingleChStatus", {channel_1}},
    {"ICPUSB_PI_ClearChStatus", body(icpusb_pi_clearchstatus), "PI_ClearChStatus", {mask_3}},
    {"ICPUSB_PI_GetTotalSupportType", body(icpusb_pi_gettotalsupporttype), "PI_GetTotalSupportType", {}},
    {"ICPUSB_PI_GetSupportTypeCode", body(icpusb_pi_getsupporttypecode), "PI_GetSupportTypeCode", {}},
    {"ICPUSB_PI_GetTypeCode", body(icpusb_pi_gettypecode), "PI_GetTypeCode", {}},
    {"ICPUSB_PI_GetTriggerMode", body(icpusb_pi_gettriggermode), "PI_GetTriggerMode", {}},
    {"ICPUSB_PI_GetLPFilterWidth", body(icpusb_pi_getlpfilterwidth), "PI_GetLPFilterWidth", {}},
    {"ICPUSB_PI_GetChIsolatedFlag", body(icpusb_pi_getchisolatedflag), "PI_GetChIsolatedFlag", {}},
    {"ICPUSB_PI_GetLPFilterEnable", body(icpusb_pi_getlpfilterenable), "PI_GetLPFilterEnable", {}},
    {"ICPUSB_PI_ReadValue", body(icpusb_pi_readvalue), "PI_ReadValue", {}},
    {"ICPUSB_PI_ReadChValue", body(icpusb_pi_readchvalue), "PI_ReadValue", {read_channel}},
    {"ICPUSB_PI_ReadCntValue", body(icpusb_pi_readcntvalue), "PI_ReadCntValue", {}},
    {"ICPUSB_PI_ReadChCntValue", body(icpusb_pi_readchcntvalue), "PI_ReadCntValue", {read_channel}},
    {"ICPUSB_PI_ReadFreqValue", body(icpusb_pi_readfreqvalue), "PI_ReadFreqValue", {}},
    {"ICPUSB_PI_ReadChFreqValue", body(icpusb_pi_readchfreqvalue), "PI_ReadFreqValue", {read_channel}},
};

Args accepted(const Function& f) {
    Args args;
    for (const Param& p : f.params) args.push_back(p.accepted);
    return args;
}

std::vector<nvValue> refused(Kind k) {
    switch (k) {
        case Kind::Integer: return {boolean(true), real(1.0), text("1"), integers(1, 1), null()};
        case Kind::Unsigned: return {integer(-1), real(1.5), boolean(true), text("1"), integers(1, 1), null()};
        case Kind::Boolean: return {integer(1), real(1.0), text("true"), null()};
        // 256 would be channel 0 if the channel were cut to 8 bits.
        case Kind::Channel: return {integer(kTotal), integer(256), integer(-1), real(0.0), boolean(false), null()};
        case Kind::Vector:
            return {integers(kTotal - 1, 1), integers(kTotal + 1, 1),
                    icp::make::vector(kTotal, [](unsigned i) { return i == 3 ? text("1") : integer(1); }),
                    integer(1), null()};
    }
    return {};
}

// A fresh rig of one opened module, instance #1, with an empty call log.
nvValue fresh(const char* model = "USB2084", const char* rig = nullptr) {
    usbsim::reset();
    if (rig) EXPECT_TRUE(usbsim::load_rig(rig, nullptr)) << rig;
    else EXPECT_TRUE(usbsim::add_module(model, 1));
    nvValue handle = icpusb_opendevice(text(model), integer(1));
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

const Strings total_only{"GetPITotal(#1) -> 0"};

// Wrong kinds, channels that cannot be read, vectors of the wrong length, a
// module without pulse inputs, a failing total call and a missing handle all
// stop before the function's own SDK call; that call's code is kept.
TEST(UsbPulse, EveryFunctionFollowsTheCommonBody) {
    for (const auto& f : functions) {
        for (std::size_t p = 0; p < f.params.size(); ++p) {
            for (const auto& bad : refused(f.params[p].kind)) {
                Args args = accepted(f);
                args[p] = bad;
                expect_null(f, fresh(), args, 0, total_only, "argument " + bad.repr());
            }
        }
        expect_null(f, fresh("USB2019"), accepted(f), 0, total_only, "no pulse inputs");

        nvValue h = fresh();
        usbsim::fail_next("GetPITotal", 0x10100);
        expect_null(f, h, accepted(f), 0, {"GetPITotal(#1) -> 65792"}, "total fails");

        fresh();
        expect_null(f, integer(1), accepted(f), -1, {}, "no handle");

        h = fresh();
        usbsim::fail_next(f.sdk, 0x10105);
        EXPECT_TRUE(f.call(h, accepted(f)).isNull()) << f.script;
        EXPECT_EQ(icp::usb_last_error, 0x10105) << f.script;
    }
}

// Success: the total, then the function's own call, and usb_last_error 0.
TEST(UsbPulse, EveryFunctionSucceedsOnAPulseModule) {
    for (const auto& f : functions) {
        const nvValue h = fresh();
        EXPECT_FALSE(f.call(h, accepted(f)).isNull()) << f.script << ": " << usbsim::calls().back();
        EXPECT_EQ(icp::usb_last_error, 0) << f.script;
        const Strings log = usbsim::calls();
        ASSERT_EQ(log.size(), 2u) << f.script;
        EXPECT_EQ(log[0], total_only[0]);
        EXPECT_EQ(log[1].rfind(f.sdk + "(#1", 0), 0u) << f.script << ": " << log[1];
    }
}

// Integers reach the SDK at their width with no range check of the plug-in's
// own (the module refuses widths outside 1..32767 and channels beyond 7);
// masks as two bytes, low byte first, bits 16 and up dropped. The log shows
// each call's own inputs only.
TEST(UsbPulse, ArgumentsReachTheSdkAtTheirWidth) {
    auto widths = [](std::uint32_t first) {
        return icp::make::vector(kTotal, [&](unsigned i) { return i == 0 ? word(first) : integer(5); });
    };
    const struct {
        Body call;
        Args args;
        const char* line;
    } cases[] = {
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(40000)}, "PI_SetLPFilterWidth(#1, 0, 40000) -> 65797"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(65536)}, "PI_SetLPFilterWidth(#1, 0, 0) -> 65797"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(-1)}, "PI_SetLPFilterWidth(#1, 0, 65535) -> 65797"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(70000)}, "PI_SetLPFilterWidth(#1, 0, 4464) -> 0"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(32767)}, "PI_SetLPFilterWidth(#1, 0, 32767) -> 0"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(32768)}, "PI_SetLPFilterWidth(#1, 0, 32768) -> 65797"},
        {body(icpusb_pi_setlpfilterwidth), {integer(263), integer(1)}, "PI_SetLPFilterWidth(#1, 7, 1) -> 0"},
        {body(icpusb_pi_setlpfilterwidths), {widths(65537)}, "PI_SetLPFilterWidths(#1, [1, 5, 5, 5, 5, 5, 5, 5]) -> 0"},
        {body(icpusb_pi_setlpfilterwidths), {widths(0)}, "PI_SetLPFilterWidths(#1, [0, 5, 5, 5, 5, 5, 5, 5]) -> 65797"},
        {body(icpusb_pi_settypecode), {integer(258), integer(0x151)}, "PI_SetTypeCode(#1, 2, 81) -> 0"},
        {body(icpusb_pi_settypecodes), {integers(kTotal, 0x150)}, "PI_SetTypeCodes(#1, [80, 80, 80, 80, 80, 80, 80, 80]) -> 0"},
        {body(icpusb_pi_settriggermode), {integer(8), integer(1)}, "PI_SetTriggerMode(#1, 8, 1) -> 65797"},
        {body(icpusb_pi_settriggermodes), {integers(kTotal, 258)}, "PI_SetTriggerModes(#1, [2, 2, 2, 2, 2, 2, 2, 2]) -> 0"},
        {body(icpusb_pi_setchisolatedflag), {integer(3), boolean(true)}, "PI_SetChIsolatedFlag(#1, 3, 1) -> 0"},
        {body(icpusb_pi_setlpfilterenable), {integer(-1), boolean(false)}, "PI_SetLPFilterEnable(#1, 255, 0) -> 65797"},
        {body(icpusb_pi_setchisolatedflags), {word(0xFFFF0181)}, "PI_SetChIsolatedFlags(#1, [129, 1]) -> 0"},
        {body(icpusb_pi_setlpfilterenables), {real(3.0)}, "PI_SetLPFilterEnables(#1, [3, 0]) -> 0"},
        {body(icpusb_pi_clearchstatus), {integer(0x10003)}, "PI_ClearChStatus(#1, [3, 0]) -> 0"},
        {body(icpusb_pi_clearchcount), {integer(0x8000)}, "PI_ClearChCount(#1, [0, 128]) -> 0"},
        {body(icpusb_pi_clearsinglechcount), {integer(257)}, "PI_ClearSingleChCount(#1, 1) -> 0"},
        {body(icpusb_pi_clearsinglechstatus), {integer(8)}, "PI_ClearSingleChStatus(#1, 8) -> 65797"},
    };
    for (const auto& c : cases) {
        const nvValue h = fresh();
        const bool ok = !c.call(h, c.args).isNull();
        const Strings log = usbsim::calls();
        ASSERT_EQ(log.size(), 2u) << c.line;
        EXPECT_EQ(log[1], c.line);
        EXPECT_EQ(ok, icp::usb_last_error == 0) << c.line;
    }
}

// Pulses on the built-in rig's USB2084 show in the matrix, row n channel n:
// the count as a real, the status as an Integer.
TEST(UsbPulse, CountsFollowThePulsesGiven) {
    usbsim::use_default_rig();
    const nvValue h = icpusb_opendevice(text("USB2084"), integer(1));
    ASSERT_NE(h.pointer(), nullptr);
    const int pulses[kTotal] = {3, 0, 120, 0, 0, 7, 0, 1};
    for (unsigned ch = 0; ch < kTotal; ++ch) ASSERT_TRUE(usbsim::pulse(k2084, 1, ch, pulses[ch]));
    usbsim::clear_calls();

    std::vector<std::pair<nvValue, nvValue>> rows;
    for (int n : pulses) rows.emplace_back(real(n), integer(0));
    expect_same(icpusb_pi_readvalue(h), matrix(rows), "ReadValue");
    expect_same(icpusb_pi_readcntvalue(h), matrix(rows), "ReadCntValue");
    expect_same(icpusb_pi_readchvalue(h, integer(2)), matrix({{real(120), integer(0)}}), "ReadChValue 2");
    expect_same(icpusb_pi_readchcntvalue(h, integer(7)), matrix({{real(1), integer(0)}}), "ReadChCntValue 7");
    EXPECT_EQ(usbsim::calls(), (Strings{"GetPITotal(#1) -> 0", "PI_ReadValue(#1) -> 0", "GetPITotal(#1) -> 0",
                                        "PI_ReadCntValue(#1) -> 0", "GetPITotal(#1) -> 0", "PI_ReadValue(#1) -> 0",
                                        "GetPITotal(#1) -> 0", "PI_ReadCntValue(#1) -> 0"}));
    icpusb_closedevice(h);
}

// Full counters read without sign; an overflow sets the status bit, which
// only the status clears reset, and a mask clears its own channels only.
TEST(UsbPulse, CountsAndStatusesClear) {
    const nvValue h = fresh("USB2084", R"({"usb": [{"model": "USB2084", "board": 1,
        "pi_count": [4294967295, 4294967295, 4294967295, 4294967295, 10, 20, 30, 40]}]})");
    expect_same(icpusb_pi_readchcntvalue(h, integer(0)), matrix({{real(4294967295.0), integer(0)}}), "full count");
    for (unsigned ch = 0; ch < 4; ++ch) usbsim::pulse(k2084, 1, ch, ch + 1);  // counts wrap to 0, 1, 2, 3

    const auto row = [](double count, int status) { return std::pair{real(count), integer(status)}; };
    expect_same(icpusb_pi_clearchstatus(h, integer(0x10003)), boolean(true), "status mask");
    expect_same(icpusb_pi_clearsinglechcount(h, integer(257)), boolean(true), "count of channel 1");
    expect_same(icpusb_pi_clearsinglechstatus(h, integer(3)), boolean(true), "status of channel 3");
    expect_same(icpusb_pi_clearsinglechcount(h, integer(2)), boolean(true), "count of channel 2");
    expect_same(icpusb_pi_clearchcount(h, integer(0x30)), boolean(true), "count mask");
    expect_same(icpusb_pi_readvalue(h),
                matrix({row(0, 0), row(0, 0), row(0, usbsim::kPiOverflow), row(3, 0), row(0, 0), row(0, 0),
                        row(30, 0), row(40, 0)}),
                "after the clears");
}

// Settings written by channel, by vector or by mask read back as Integers
// per channel, or as a real mask.
TEST(UsbPulse, SettingsReadBack) {
    const nvValue h = fresh();
    ASSERT_FALSE(icpusb_pi_setlpfilterenable(h, integer(0), boolean(true)).isNull());
    ASSERT_FALSE(icpusb_pi_setlpfilterenable(h, integer(1), boolean(true)).isNull());
    expect_same(icpusb_pi_getlpfilterenable(h), real(3.0), "filter enables");
    ASSERT_FALSE(icpusb_pi_setchisolatedflags(h, integer(0xFF81)).isNull());
    expect_same(icpusb_pi_getchisolatedflag(h), real(129.0), "isolated flags: channels 0 to 7 only");
    ASSERT_FALSE(icpusb_pi_setchisolatedflag(h, integer(0), boolean(false)).isNull());
    expect_same(icpusb_pi_getchisolatedflag(h), real(128.0), "isolated flag of channel 0 off");

    const auto per_channel = [](std::vector<int> v) {
        return icp::make::vector(static_cast<unsigned>(v.size()), [&](unsigned i) { return integer(v[i]); });
    };
    ASSERT_FALSE(icpusb_pi_setlpfilterwidths(h, per_channel({1, 2, 3, 4, 5, 6, 7, 32767})).isNull());
    ASSERT_FALSE(icpusb_pi_setlpfilterwidth(h, integer(1), integer(20000)).isNull());
    expect_same(icpusb_pi_getlpfilterwidth(h), per_channel({1, 20000, 3, 4, 5, 6, 7, 32767}), "widths");
    ASSERT_FALSE(icpusb_pi_settriggermodes(h, per_channel({0, 1, 2, 0, 1, 2, 0, 1})).isNull());
    ASSERT_FALSE(icpusb_pi_settriggermode(h, integer(7), integer(2)).isNull());
    expect_same(icpusb_pi_gettriggermode(h), per_channel({0, 1, 2, 0, 1, 2, 0, 2}), "trigger modes");
    ASSERT_FALSE(icpusb_pi_settypecodes(h, per_channel({0x56, 0x56, 0x51, 0x50, 0x55, 0x55, 0x54, 0x54})).isNull());
    ASSERT_FALSE(icpusb_pi_settypecode(h, integer(3), integer(0x51)).isNull());
    expect_same(icpusb_pi_gettypecode(h), per_channel({0x56, 0x56, 0x51, 0x51, 0x55, 0x55, 0x54, 0x54}), "types");

    // One entry per channel, however many types the module supports.
    const auto types = usbsim::find_model("USB2084")->pi_types;
    ASSERT_LT(types.size(), kTotal);
    std::vector<int> supported(types.begin(), types.end());
    supported.resize(kTotal);
    expect_same(icpusb_pi_gettotalsupporttype(h), integer(static_cast<int>(types.size())), "total supported");
    expect_same(icpusb_pi_getsupporttypecode(h), per_channel(supported), "supported");
}

// A channel in frequency mode: ReadValue gives whole Hz, ReadFreqValue the
// single-precision frequency widened.
TEST(UsbPulse, Frequencies) {
    const nvValue h = fresh();
    ASSERT_FALSE(icpusb_pi_settypecode(h, integer(1), integer(0x51)).isNull());
    ASSERT_TRUE(usbsim::set_frequency(k2084, 1, 1, 1234.4));
    expect_same(icpusb_pi_readchfreqvalue(h, integer(1)), matrix({{real(1234.4f), integer(0)}}), "frequency");
    expect_same(icpusb_pi_readchvalue(h, integer(1)), matrix({{real(1234.0), integer(0)}}), "value");
    const nvValue all = icpusb_pi_readfreqvalue(h);
    EXPECT_EQ(all.size(), kTotal * 2);
    expect_same(all.value(2), real(1234.4f), "row 1, column 0");
}

}  // namespace
