// The USB analog output group against the simulated SDK: what reaches the
// SDK, what comes back, and what is refused before the SDK is reached.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "plugin/state.h"
#include "plugin/values/values.h"
#include "usb/analog_output.h"
#include "usb/body.h"
#include "usb/device.h"
#include "usb/info.h"
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

constexpr std::uint16_t k2026 = 0x41A;
constexpr unsigned total = 2;  // USB2026's outputs

nvValue word(std::uint32_t w) { return nvValue(NuvarelMath::ValueTypes::nvInteger(static_cast<long long>(w))); }
nvValue ints(std::initializer_list<long long> xs) {
    const std::vector<long long> v(xs);
    return icp::make::vector(static_cast<unsigned>(v.size()), [&](unsigned i) {
        return nvValue(NuvarelMath::ValueTypes::nvInteger(v[i]));
    });
}
nvValue reals(std::initializer_list<double> xs) {
    const std::vector<double> v(xs);
    return icp::make::vector(static_cast<unsigned>(v.size()), [&](unsigned i) { return real(v[i]); });
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

// Parameter kinds, each with a value that a USB2026 accepts.
enum class Kind { Channel, Reader, TypeCode, Word, Real, Codes, Enables, Words, Reals };

nvValue accepted(Kind k) {
    switch (k) {
        case Kind::Channel:
        case Kind::Reader: return integer(1);
        case Kind::TypeCode: return integer(0x33);
        case Kind::Word: return integer(100);
        case Kind::Real: return real(2.5);
        case Kind::Codes: return ints({0x33, 0x35});
        case Kind::Enables: return ints({1, 0});
        case Kind::Words: return ints({100, 4095});
        case Kind::Reals: return reals({2.5, 7.5});
    }
    return null();
}

std::vector<nvValue> refused(Kind k) {
    const std::vector<nvValue> not_integer{boolean(true), real(1.0), text("1"), ints({1, 1}), null()};
    // Exactly one number per output, all numbers.
    const auto vec = icp::make::vector(total, [](unsigned i) { return i == 0 ? integer(1) : text("1"); });
    const std::vector<nvValue> not_vector{ints({1}), ints({1, 1, 1}), vec, integer(1), null()};
    switch (k) {
        case Kind::Channel:
        case Kind::TypeCode: return not_integer;
        case Kind::Reader: {
            auto out = not_integer;
            for (int ch : {-1, static_cast<int>(total), 256}) out.push_back(integer(ch));
            return out;
        }
        case Kind::Word: return {integer(-1), real(1.5), boolean(true), text("1"), ints({1, 1}), null()};
        case Kind::Real: return {integer(5), boolean(true), text("5.0"), reals({1.0, 1.0}), null()};
        case Kind::Codes:
        case Kind::Enables:
        case Kind::Words:
        case Kind::Reals: return not_vector;
    }
    return {};
}

struct Function {
    const char* script;
    Body call;
    std::string sdk;  // the function's own SDK call
    std::vector<Kind> params;
};

const Function functions[] = {
    {"ICPUSB_AO_SetTypeCode", body(icpusb_ao_settypecode), "AO_SetTypeCode", {Kind::Channel, Kind::TypeCode}},
    {"ICPUSB_AO_SetTypeCodes", body(icpusb_ao_settypecodes), "AO_SetTypeCodes", {Kind::Codes}},
    {"ICPUSB_AO_SetChEnable", body(icpusb_ao_setchenable), "AO_SetChEnable", {Kind::Word}},
    {"ICPUSB_AO_WriteChannelValueDigital", body(icpusb_ao_writechannelvaluedigital), "AO_WriteChannelValueDigital", {Kind::Channel, Kind::Word}},
    {"ICPUSB_AO_WriteValueDigital", body(icpusb_ao_writevaluedigital), "AO_WriteValueDigital", {Kind::Words}},
    {"ICPUSB_AO_WriteChannelValueAnalog", body(icpusb_ao_writechannelvalueanalog), "AO_WriteChannelValueAnalog", {Kind::Channel, Kind::Real}},
    {"ICPUSB_AO_WriteValueAnalog", body(icpusb_ao_writevalueanalog), "AO_WriteValueAnalog", {Kind::Reals}},
    {"ICPUSB_AO_SetPowerOnEnable", body(icpusb_ao_setpoweronenable), "AO_SetPowerOnEnable", {Kind::Enables}},
    {"ICPUSB_AO_SetPowerOnValueDigital", body(icpusb_ao_setpoweronvaluedigital), "AO_SetPowerOnValueDigital", {Kind::Words}},
    {"ICPUSB_AO_SetPowerOnChannelValueDigital", body(icpusb_ao_setpoweronchannelvaluedigital), "AO_SetPowerOnChannelValueDigital", {Kind::Channel, Kind::Word}},
    {"ICPUSB_AO_SetPowerOnValueAnalog", body(icpusb_ao_setpoweronvalueanalog), "AO_SetPowerOnValueAnalog", {Kind::Reals}},
    {"ICPUSB_AO_SetPowerOnChannelValueAnalog", body(icpusb_ao_setpoweronchannelvalueanalog), "AO_SetPowerOnChannelValueAnalog", {Kind::Channel, Kind::Real}},
    {"ICPUSB_AO_SetSafetyEnable", body(icpusb_ao_setsafetyenable), "AO_SetSafetyEnable", {Kind::Word}},
    {"ICPUSB_AO_SetSafetyValueDigital", body(icpusb_ao_setsafetyvaluedigital), "AO_SetSafetyValueDigital", {Kind::Words}},
    {"ICPUSB_AO_SetSafetyChannelValueDigital", body(icpusb_ao_setsafetychannelvaluedigital), "AO_SetSafetyChannelValueDigital", {Kind::Channel, Kind::Word}},
    {"ICPUSB_AO_SetSafetyValueAnalog", body(icpusb_ao_setsafetyvalueanalog), "AO_SetSafetyValueAnalog", {Kind::Reals}},
    {"ICPUSB_AO_SetSafetyChannelValueAnalog", body(icpusb_ao_setsafetychannelvalueanalog), "AO_SetSafetyChannelValueAnalog", {Kind::Channel, Kind::Real}},
    {"ICPUSB_AO_GetTotalSupportType", body(icpusb_ao_gettotalsupporttype), "AO_GetTotalSupportType", {}},
    {"ICPUSB_AO_GetSupportTypeCode", body(icpusb_ao_getsupporttypecode), "AO_GetSupportTypeCode", {}},
    {"ICPUSB_AO_GetTypeCode", body(icpusb_ao_gettypecode), "AO_GetTypeCode", {}},
    {"ICPUSB_AO_GetResolution", body(icpusb_ao_getresolution), "AO_GetResolution", {}},
    {"ICPUSB_AO_GetPowerOnEnable", body(icpusb_ao_getpoweronenable), "AO_GetPowerOnEnable", {}},
    {"ICPUSB_AO_GetChEnable", body(icpusb_ao_getchenable), "AO_GetChEnable", {}},
    {"ICPUSB_AO_GetSafetyEnable", body(icpusb_ao_getsafetyenable), "AO_GetSafetyEnable", {}},
    {"ICPUSB_AO_ReadExpValueDigital", body(icpusb_ao_readexpvaluedigital), "AO_ReadExpValueDigital", {}},
    {"ICPUSB_AO_ReadChExpValueDigital", body(icpusb_ao_readchexpvaluedigital), "AO_ReadExpValueDigital", {Kind::Reader}},
    {"ICPUSB_AO_ReadExpValueAnalog", body(icpusb_ao_readexpvalueanalog), "AO_ReadExpValueAnalog", {}},
    {"ICPUSB_AO_ReadChExpValueAnalog", body(icpusb_ao_readchexpvalueanalog), "AO_ReadExpValueAnalog", {Kind::Reader}},
    {"ICPUSB_AO_ReadCurValueDigital", body(icpusb_ao_readcurvaluedigital), "AO_ReadCurValueDigital", {}},
    {"ICPUSB_AO_ReadChCurValueDigital", body(icpusb_ao_readchcurvaluedigital), "AO_ReadCurValueDigital", {Kind::Reader}},
    {"ICPUSB_AO_ReadCurValueAnalog", body(icpusb_ao_readcurvalueanalog), "AO_ReadCurValueAnalog", {}},
    {"ICPUSB_AO_ReadChCurValueAnalog", body(icpusb_ao_readchcurvalueanalog), "AO_ReadCurValueAnalog", {Kind::Reader}},
    {"ICPUSB_AO_GetPowerOnValueDigital", body(icpusb_ao_getpoweronvaluedigital), "AO_GetPowerOnValueDigital", {}},
    {"ICPUSB_AO_GetPowerOnValueAnalog", body(icpusb_ao_getpoweronvalueanalog), "AO_GetPowerOnValueAnalog", {}},
    {"ICPUSB_AO_GetSafetyValueDigital", body(icpusb_ao_getsafetyvaluedigital), "AO_GetSafetyValueDigital", {}},
    {"ICPUSB_AO_GetSafetyValueAnalog", body(icpusb_ao_getsafetyvalueanalog), "AO_GetSafetyValueAnalog", {}},
};

Args accepted(const Function& f) {
    Args args;
    for (Kind k : f.params) args.push_back(accepted(k));
    return args;
}

// A fresh rig of one opened module, instance #1, with an empty call log.
nvValue fresh(const char* model = "USB2026") {
    usbsim::reset();
    EXPECT_TRUE(usbsim::add_module(model, 1));
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

// Wrong kinds, vectors of the wrong length, readers' channels outside the
// outputs, a module without outputs, a failing total call and a missing
// handle all stop before the function's own SDK call; that call's code is
// kept.
TEST(UsbAnalogOutput, EveryFunctionFollowsTheCommonBody) {
    const Strings total_only{"GetAOTotal(#1) -> 0"};
    for (const auto& f : functions) {
        for (std::size_t p = 0; p < f.params.size(); ++p) {
            for (const auto& bad : refused(f.params[p])) {
                Args args = accepted(f);
                args[p] = bad;
                expect_null(f, fresh(), args, 0, total_only, "argument " + bad.repr());
            }
        }
        expect_null(f, fresh("USB2019"), accepted(f), 0, total_only, "no outputs");

        nvValue h = fresh();
        usbsim::fail_next("GetAOTotal", 0x10100);
        expect_null(f, h, accepted(f), 0, {"GetAOTotal(#1) -> 65792"}, "total fails");

        fresh();
        expect_null(f, integer(1), accepted(f), -1, {}, "no handle");

        for (const std::int32_t code : {0x10100, 0}) {
            h = fresh();
            if (code != 0) usbsim::fail_next(f.sdk, code);
            EXPECT_EQ(f.call(h, accepted(f)).isNull(), code != 0) << f.script << ": " << usbsim::calls().back();
            EXPECT_EQ(icp::usb_last_error, code) << f.script;
            const Strings log = usbsim::calls();
            ASSERT_EQ(log.size(), 2u) << f.script;
            EXPECT_EQ(log[1].rfind(f.sdk + "(#1", 0), 0u) << f.script;
            EXPECT_TRUE(log[1].ends_with(" -> " + std::to_string(code))) << log[1];
        }
    }
}

// Channels of writers pass as their low 8 bits, unchecked (the module
// refuses what it lacks: 65797); reals as the nearest float; masks as two
// bytes without bit 16.
TEST(UsbAnalogOutput, ArgumentsReachTheSdkAtTheirWidth) {
    const struct {
        Body call;
        Args args;
        const char* line;
    } cases[] = {
        {body(icpusb_ao_writechannelvalueanalog), {integer(258), real(5.0)}, "AO_WriteChannelValueAnalog(#1, 2, 5.0) -> 65797"},
        {body(icpusb_ao_writechannelvalueanalog), {integer(-1), real(5.0)}, "AO_WriteChannelValueAnalog(#1, 255, 5.0) -> 65797"},
        {body(icpusb_ao_writechannelvalueanalog), {integer(257), real(0.1)}, "AO_WriteChannelValueAnalog(#1, 1, 0.10000000149011612) -> 0"},
        {body(icpusb_ao_settypecode), {integer(256), integer(0x133)}, "AO_SetTypeCode(#1, 0, 51) -> 0"},
        {body(icpusb_ao_writechannelvaluedigital), {integer(1), word(0xFFFFFFFF)}, "AO_WriteChannelValueDigital(#1, 1, 4294967295) -> 65797"},
        {body(icpusb_ao_setsafetychannelvaluedigital), {integer(1), real(4095.0)}, "AO_SetSafetyChannelValueDigital(#1, 1, 4095) -> 0"},
        {body(icpusb_ao_setchenable), {integer(0x1FFFF)}, "AO_SetChEnable(#1, [255, 255]) -> 0"},
        {body(icpusb_ao_setsafetyenable), {integer(0x10002)}, "AO_SetSafetyEnable(#1, [2, 0]) -> 0"},
        {body(icpusb_ao_writevalueanalog), {reals({0.1, 2.5})}, "AO_WriteValueAnalog(#1, [0.10000000149011612, 2.5]) -> 0"},
        {body(icpusb_ao_setsafetyvalueanalog), {ints({1, 10})}, "AO_SetSafetyValueAnalog(#1, [1.0, 10.0]) -> 0"},
        // One word for every output: the whole vector's unsigned conversion.
        {body(icpusb_ao_writevaluedigital), {ints({100, 4095})}, "AO_WriteValueDigital(#1, [100, 100]) -> 0"},
        {body(icpusb_ao_setpoweronvaluedigital), {reals({100.0, 4095.9})}, "AO_SetPowerOnValueDigital(#1, [100, 4095]) -> 0"},
        {body(icpusb_ao_settypecodes), {ints({0x132, 0x33})}, "AO_SetTypeCodes(#1, [50, 51]) -> 0"},
        {body(icpusb_ao_setpoweronenable), {ints({257, -256})}, "AO_SetPowerOnEnable(#1, [1, 0]) -> 0"},
    };
    for (const auto& c : cases) {
        c.call(fresh(), c.args);
        EXPECT_EQ(usbsim::calls().back(), c.line);
    }
}

// What a setter stores comes back through its getter, with the result kinds
// of the getter.
TEST(UsbAnalogOutput, SettingsReadBack) {
    const std::uint32_t code_of_2_5 = usbsim::ao_raw_from_value(0x32, 2.5);
    const struct {
        Body set;
        nvValue value;
        Body get;
        nvValue want;
    } cases[] = {
        {body(icpusb_ao_settypecodes), ints({0x33, 0x35}), body(icpusb_ao_gettypecode), ints({0x33, 0x35})},
        {body(icpusb_ao_setpoweronenable), ints({0, 1}), body(icpusb_ao_getpoweronenable), ints({0, 1})},
        // A new range puts the output and its power-on and safety values at
        // the range's zero level.
        {body(icpusb_ao_settypecodes), ints({0x31, 0x33}), body(icpusb_ao_readexpvalueanalog), reals({4.0, 0.0})},
        {body(icpusb_ao_settypecodes), ints({0x31, 0x33}), body(icpusb_ao_getsafetyvalueanalog), reals({4.0, 0.0})},
        {body(icpusb_ao_settypecodes), ints({0x31, 0x35}), body(icpusb_ao_getpoweronvaluedigital), reals({0.0, 2048.0})},
        // Only the module's outputs are kept.
        {body(icpusb_ao_setchenable), word(0xFFFF), body(icpusb_ao_getchenable), real(3.0)},
        {body(icpusb_ao_setsafetyenable), integer(2), body(icpusb_ao_getsafetyenable), real(2.0)},
        {body(icpusb_ao_setpoweronvalueanalog), reals({2.5, 7.5}), body(icpusb_ao_getpoweronvalueanalog), reals({2.5, 7.5})},
        {body(icpusb_ao_setpoweronvalueanalog), reals({2.5, 0.0}), body(icpusb_ao_getpoweronvaluedigital), reals({static_cast<double>(code_of_2_5), 0.0})},
        {body(icpusb_ao_setsafetyvaluedigital), ints({0, 4095}), body(icpusb_ao_getsafetyvalueanalog), reals({0.0, 10.0})},
        {body(icpusb_ao_setsafetyvaluedigital), ints({0, 4095}), body(icpusb_ao_getsafetyvaluedigital), reals({0.0, 4095.0})},
        {body(icpusb_ao_writevalueanalog), reals({0.1, 10.0}), body(icpusb_ao_readexpvalueanalog), reals({static_cast<double>(0.1f), 10.0})},
    };
    for (const auto& c : cases) {
        const nvValue h = fresh();
        ASSERT_FALSE(c.set(h, {c.value}).isNull()) << usbsim::calls().back();
        expect_same(c.get(h, {}), c.want, usbsim::calls().back());
    }

    const nvValue h = fresh();
    const auto md = usbsim::find_model("USB2026");
    expect_same(icpusb_ao_getresolution(h), ints({12, 12}), "resolution");
    const auto n = static_cast<long long>(md->ao_types.size());
    expect_same(icpusb_ao_gettotalsupporttype(h), ints({n, n}), "support type total");
    expect_same(icpusb_ao_getsupporttypecode(h), ints({md->ao_types[0], md->ao_types[1]}), "support type codes");
}

// The simulator cannot hold these words, so a stand-in SDK call gives them:
// a 16-bit mask and a 32-bit code with every bit set come back as positive
// reals.
std::int32_t all_ones_mask(USBIO_HANDLE, std::uint8_t* bytes) {
    bytes[0] = bytes[1] = 0xFF;
    return 0;
}
std::int32_t all_ones_words(USBIO_HANDLE, std::uint32_t* words) {
    for (int i = 0; i < 16; ++i) words[i] = 0xFFFFFFFF;
    return 0;
}

TEST(UsbAnalogOutput, WidestWordsAreUnsignedReals) {
    const nvValue h = fresh();
    expect_same(icp::usb::mask_getter(h, icp::usb::Group::AO, all_ones_mask), real(65535.0), "mask");
    expect_same(icp::usb::channel_reader(h, icp::usb::Group::AO, integer(1), all_ones_words, icp::make::real_unsigned),
                real(4294967295.0), "code");
}

// The per-channel readers accept 0 to total - 1 and read the whole group.
TEST(UsbAnalogOutput, ChannelReaders) {
    const std::uint32_t code = usbsim::ao_raw_from_value(0x32, 7.5);
    const struct {
        Body read;
        const char* sdk;
        nvValue want;
    } readers[] = {
        {body(icpusb_ao_readchexpvalueanalog), "AO_ReadExpValueAnalog", real(7.5)},
        {body(icpusb_ao_readchcurvalueanalog), "AO_ReadCurValueAnalog", real(7.5)},
        {body(icpusb_ao_readchexpvaluedigital), "AO_ReadExpValueDigital", real(code)},
        {body(icpusb_ao_readchcurvaluedigital), "AO_ReadCurValueDigital", real(code)},
    };
    for (const auto& r : readers) {
        const nvValue h = fresh();
        ASSERT_FALSE(icpusb_ao_writechannelvalueanalog(h, integer(total - 1), real(7.5)).isNull());
        usbsim::clear_calls();
        expect_same(r.read(h, {integer(total - 1)}), r.want, r.sdk);
        expect_same(r.read(h, {integer(0)}), real(0.0), r.sdk);
        EXPECT_EQ(usbsim::calls().at(1), std::string(r.sdk) + "(#1) -> 0");
    }
}

// Each type code's range bounds what a channel takes; the module refuses
// the rest with 65797 and keeps its output.
TEST(UsbAnalogOutput, TypeCodeRanges) {
    const struct {
        int type;
        double value;
        bool taken;
    } cases[] = {
        {0x32, 10.0, true}, {0x32, 10.5, false}, {0x32, -0.1, false}, {0x33, -10.0, true},
        {0x31, 3.9, false}, {0x31, 20.0, true},  {0x34, 5.0, true},   {0x35, -5.5, false},
        {0x30, 0.0, true},
    };
    for (const auto& c : cases) {
        const nvValue h = fresh();
        ASSERT_FALSE(icpusb_ao_settypecode(h, integer(0), integer(c.type)).isNull()) << c.type;
        const nvValue before = icpusb_ao_readexpvalueanalog(h);
        const nvValue done = icpusb_ao_writechannelvalueanalog(h, integer(0), real(c.value));
        const std::string what = std::to_string(c.type) + " " + std::to_string(c.value);
        EXPECT_EQ(done.isNull(), !c.taken) << what;
        EXPECT_EQ(icp::usb_last_error, c.taken ? 0 : 0x10105) << what;
        const nvValue after = icpusb_ao_readexpvalueanalog(h);
        EXPECT_EQ(after.value(0).toDouble(), c.taken ? c.value : before.value(0).toDouble()) << what;
        EXPECT_EQ(icpusb_ao_readchexpvaluedigital(h, integer(0)).toDouble(),
                  static_cast<double>(usbsim::ao_raw_from_value(static_cast<std::uint8_t>(c.type), after.value(0).toDouble())))
            << what;
    }
    const nvValue h = fresh();
    EXPECT_TRUE(icpusb_ao_settypecode(h, integer(0), integer(0x08)).isNull()) << "an AI type code";
    EXPECT_TRUE(icpusb_ao_writechannelvaluedigital(h, integer(0), integer(4096)).isNull()) << "beyond 12 bits";
    EXPECT_EQ(icp::usb_last_error, 0x10105);
}

// A disabled output sits at its range's zero level; when the watchdog
// expires, outputs with the safety enable drive their safety value while the
// expected value stays what was commanded, until the next command; after a
// power cycle, outputs with the power-on enable start at their power-on
// value.
TEST(UsbAnalogOutput, EnableSafetyAndPowerOn) {
    const nvValue h = fresh();
    const auto code = [](double v) { return static_cast<double>(usbsim::ao_raw_from_value(0x32, v)); };
    ASSERT_FALSE(icpusb_ao_writevalueanalog(h, reals({5.0, 2.0})).isNull());
    expect_same(icpusb_ao_readcurvalueanalog(h), reals({5.0, 2.0}), "commanded");
    expect_same(icpusb_ao_readcurvaluedigital(h), reals({code(5.0), code(2.0)}), "commanded codes");

    ASSERT_FALSE(icpusb_ao_setchenable(h, integer(2)).isNull());
    expect_same(icpusb_ao_readcurvalueanalog(h), reals({0.0, 2.0}), "output 0 disabled");
    expect_same(icpusb_ao_readexpvalueanalog(h), reals({5.0, 2.0}), "output 0 disabled");
    ASSERT_FALSE(icpusb_ao_setchenable(h, integer(3)).isNull());

    ASSERT_FALSE(icpusb_ao_setsafetyvalueanalog(h, reals({1.0, 9.0})).isNull());
    ASSERT_FALSE(icpusb_ao_setsafetyenable(h, integer(2)).isNull());
    ASSERT_FALSE(icpusb_setautoresetwdt(h, boolean(false)).isNull());
    usbsim::advance_ms(usbsim::module_state(k2026, 1)->soft_wdt_timeout_ms + 1);
    expect_same(icpusb_ao_readcurvalueanalog(h), reals({5.0, 9.0}), "safe");
    expect_same(icpusb_ao_readcurvaluedigital(h), reals({code(5.0), code(9.0)}), "safe codes");
    expect_same(icpusb_ao_readexpvalueanalog(h), reals({5.0, 2.0}), "safe");
    ASSERT_FALSE(icpusb_ao_writechannelvalueanalog(h, integer(1), real(3.0)).isNull());
    expect_same(icpusb_ao_readcurvalueanalog(h), reals({5.0, 3.0}), "commanded again");

    ASSERT_FALSE(icpusb_ao_setpoweronvalueanalog(h, reals({2.5, 7.5})).isNull());
    ASSERT_FALSE(icpusb_ao_setpoweronenable(h, ints({1, 0})).isNull());
    ASSERT_TRUE(usbsim::unplug(k2026, 1));
    ASSERT_TRUE(usbsim::replug(k2026, 1));
    expect_same(icpusb_ao_readexpvalueanalog(h), reals({2.5, 0.0}), "powered up");
    expect_same(icpusb_ao_readcurvalueanalog(h), reals({2.5, 0.0}), "powered up");
}

}  // namespace
