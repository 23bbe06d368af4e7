// The USB analog input group against the simulated SDK: the common body,
// what reaches the SDK at which width, and what comes back, on USB2019
// (8 universal inputs) and USB2026 (5 inputs).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "plugin/state.h"
#include "plugin/values/values.h"
#include "usb/analog_input.h"
#include "usb/device.h"
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

constexpr std::uint16_t k2019 = 0x413;

nvValue word(std::uint32_t w) { return nvValue(NuvarelMath::ValueTypes::nvInteger(static_cast<long long>(w))); }
template <class T>
nvValue vec(std::vector<T> xs) {
    return icp::make::vector(static_cast<unsigned>(xs.size()), [&](unsigned i) {
        if constexpr (std::is_same_v<T, double>) return real(xs[i]);
        else return integer(xs[i]);
    });
}
nvValue eights(unsigned n) { return vec(std::vector<int>(n, 8)); }

using Body = std::function<nvValue(const nvValue&, const Args&)>;
Body body(nvValue (*f)(const nvValue&)) { return [f](const nvValue& h, const Args&) { return f(h); }; }
Body body(nvValue (*f)(const nvValue&, const nvValue&)) {
    return [f](const nvValue& h, const Args& a) { return f(h, a.at(0)); };
}
Body body(nvValue (*f)(const nvValue&, const nvValue&, const nvValue&)) {
    return [f](const nvValue& h, const Args& a) { return f(h, a.at(0), a.at(1)); };
}

// A fresh rig of one opened module, instance #1, with an empty call log.
nvValue fresh(const char* model = "USB2019") {
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

struct Function {
    const char* sdk;  // the function's own SDK call
    Body call;
    Args good;        // accepted on USB2019
    std::vector<Args> refused;  // each refused before the SDK is reached
};

const std::vector<Function> functions = {
    {"AI_SetTypeCode", body(icpusb_ai_settypecode), {integer(1), integer(8)},
     {{real(1.0), integer(8)}, {integer(1), boolean(true)}, {null(), integer(8)}}},
    // Only a real offset passes: the Integer 1 is refused.
    {"AI_SetChCJCOffset", body(icpusb_ai_setchcjcoffset), {integer(1), real(1.0)},
     {{integer(1), integer(1)}, {boolean(true), real(1.0)}, {integer(1), text("1.0")}}},
    {"AI_SetChEnable", body(icpusb_ai_setchenable), {integer(3)}, {{integer(-1)}, {real(1.5)}, {boolean(true)}}},
    {"AI_SetFilterRejection", body(icpusb_ai_setfilterrejection), {boolean(true)}, {{integer(1)}, {real(1.0)}}},
    {"AI_SetCJCOffset", body(icpusb_ai_setcjcoffset), {real(1.0)}, {{integer(1)}, {boolean(true)}, {null()}}},
    {"AI_SetCJCEnable", body(icpusb_ai_setcjcenable), {boolean(false)}, {{integer(0)}, {text("false")}}},
    {"AI_SetWireDetectEnable", body(icpusb_ai_setwiredetectenable), {boolean(true)}, {{integer(1)}}},
    // Vectors: exactly one number per input.
    {"AI_SetTypeCodes", body(icpusb_ai_settypecodes), {eights(8)},
     {{eights(7)}, {eights(9)}, {integer(8)}, {vec(std::vector<int>{})},
      {icp::make::vector(8, [](unsigned) { return text("8"); })}}},
    {"AI_SetChCJCOffsets", body(icpusb_ai_setchcjcoffsets), {vec(std::vector<double>(8, 0.5))},
     {{vec(std::vector<double>(7, 0.5))}, {real(0.5)}}},
    {"AI_SetChSampleRate", body(icpusb_ai_setchsamplerate), {eights(8)}, {{eights(16)}, {integer(8)}}},
    {"AI_GetFilterRejection", body(icpusb_ai_getfilterrejection), {}, {}},
    {"AI_GetCJCEnable", body(icpusb_ai_getcjcenable), {}, {}},
    {"AI_GetWireDetectEnable", body(icpusb_ai_getwiredetectenable), {}, {}},
    {"AI_GetTotalSupportType", body(icpusb_ai_gettotalsupporttype), {}, {}},
    {"AI_GetSupportTypeCode", body(icpusb_ai_getsupporttypecode), {}, {}},
    {"AI_GetTypeCode", body(icpusb_ai_gettypecode), {}, {}},
    {"AI_GetResolution", body(icpusb_ai_getresolution), {}, {}},
    {"AI_GetChCJCOffset", body(icpusb_ai_getchcjcoffset), {}, {}},
    {"AI_GetChEnable", body(icpusb_ai_getchenable), {}, {}},
    {"AI_GetCJCOffset", body(icpusb_ai_getcjcoffset), {}, {}},
    {"AI_ReadCJCValue", body(icpusb_ai_readcjcvalue), {}, {}},
    {"AI_GetChSampleRate", body(icpusb_ai_getchsamplerate), {}, {}},
    {"AI_ReadValueDigital", body(icpusb_ai_readvaluedigital), {}, {}},
    {"AI_ReadValueAnalog", body(icpusb_ai_readvalueanalog), {}, {}},
    {"AI_ReadValueDigitalWithChSta", body(icpusb_ai_readvaluedigitalwithchsta), {}, {}},
    {"AI_ReadValueAnalogWithChSta", body(icpusb_ai_readvalueanalogwithchsta), {}, {}},
    // The per-channel readers take 0 <= channel < total.
    {"AI_ReadValueDigital", body(icpusb_ai_readchvaluedigital), {integer(7)},
     {{integer(8)}, {integer(-1)}, {integer(256)}, {real(1.0)}}},
    {"AI_ReadValueAnalog", body(icpusb_ai_readchvalueanalog), {integer(0)}, {{integer(8)}, {integer(-1)}}},
    {"AI_ReadValueDigitalWithChSta", body(icpusb_ai_readchvaluedigitalwithchsta), {integer(3)},
     {{integer(8)}, {boolean(true)}}},
    {"AI_ReadValueAnalogWithChSta", body(icpusb_ai_readchvalueanalogwithchsta), {integer(3)},
     {{integer(8)}, {integer(-1)}}},
};

// Wrong kinds, vectors of the wrong length, channels outside the inputs, a
// module without inputs, a failing total and a missing handle all stop
// before the function's own SDK call; that call's code is kept.
TEST(UsbAnalogInput, EveryFunctionFollowsTheCommonBody) {
    ASSERT_EQ(functions.size(), 30u);
    const Strings total_only{"GetAITotal(#1) -> 0"};
    for (const auto& f : functions) {
        for (const auto& args : f.refused) {
            const nvValue h = fresh();
            EXPECT_TRUE(f.call(h, args).isNull()) << f.sdk << " " << args.at(0).repr();
            EXPECT_EQ(icp::usb_last_error, 0) << f.sdk;
            EXPECT_EQ(usbsim::calls(), total_only) << f.sdk << " " << args.at(0).repr();
        }
        nvValue h = fresh("USB2055");
        EXPECT_TRUE(f.call(h, f.good).isNull()) << f.sdk << ": no inputs";
        EXPECT_EQ(icp::usb_last_error, 0) << f.sdk;
        EXPECT_EQ(usbsim::calls(), total_only) << f.sdk;

        h = fresh();
        usbsim::fail_next("GetAITotal", 0x10100);
        EXPECT_TRUE(f.call(h, f.good).isNull()) << f.sdk;
        EXPECT_EQ(icp::usb_last_error, 0) << f.sdk << ": the total's code is not kept";

        fresh();
        EXPECT_TRUE(f.call(integer(1), f.good).isNull()) << f.sdk;
        EXPECT_EQ(icp::usb_last_error, -1) << f.sdk;
        EXPECT_TRUE(usbsim::calls().empty()) << f.sdk;

        h = fresh();
        usbsim::fail_next(f.sdk, 0x10100);
        EXPECT_TRUE(f.call(h, f.good).isNull()) << f.sdk;
        EXPECT_EQ(icp::usb_last_error, 0x10100) << f.sdk;

        h = fresh();
        EXPECT_FALSE(f.call(h, f.good).isNull()) << f.sdk << ": " << usbsim::calls().back();
        EXPECT_EQ(icp::usb_last_error, 0) << f.sdk;
        EXPECT_EQ(usbsim::calls().size(), 2u) << f.sdk;
        EXPECT_EQ(usbsim::calls().back().rfind(std::string(f.sdk) + "(#1", 0), 0u) << f.sdk;
    }
}

// Channels and codes at 8 bits, masks at 16, reals as single precision, no
// range check of the plug-in's own: the SDK's code decides.
TEST(UsbAnalogInput, ArgumentsReachTheSdkAtTheirWidth) {
    const struct {
        Body call;
        Args args;
        const char* line;
    } cases[] = {
        {body(icpusb_ai_settypecode), {integer(300), integer(260)}, "AI_SetTypeCode(#1, 44, 4) -> 65797"},
        {body(icpusb_ai_settypecode), {integer(257), integer(0x10F)}, "AI_SetTypeCode(#1, 1, 15) -> 0"},
        {body(icpusb_ai_setchcjcoffset), {integer(2), real(0.1)}, "AI_SetChCJCOffset(#1, 2, 0.10000000149011612) -> 0"},
        {body(icpusb_ai_setcjcoffset), {real(100.0)}, "AI_SetCJCOffset(#1, 100.0) -> 65797"},
        {body(icpusb_ai_setchenable), {word(0x1FFFF)}, "AI_SetChEnable(#1, [65535]) -> 0"},
        {body(icpusb_ai_setfilterrejection), {boolean(true)}, "AI_SetFilterRejection(#1, 1) -> 0"},
        {body(icpusb_ai_setcjcenable), {boolean(true)}, "AI_SetCJCEnable(#1, 1) -> 0"},
        {body(icpusb_ai_settypecodes), {vec(std::vector<int>{8, 8, 8, 8, 8, 8, 8, 260})},
         "AI_SetTypeCodes(#1, [8, 8, 8, 8, 8, 8, 8, 4]) -> 0"},
        {body(icpusb_ai_setchcjcoffsets), {vec(std::vector<double>{0.1, 0, 0, 0, 0, 0, 0, -1})},
         "AI_SetChCJCOffsets(#1, [0.10000000149011612, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -1.0]) -> 0"},
        {body(icpusb_ai_setchsamplerate), {vec(std::vector<double>{1, 2, 3, 4, 5, 6, 7, 4294967295.0})},
         "AI_SetChSampleRate(#1, [1, 2, 3, 4, 5, 6, 7, 4294967295]) -> 0"},
    };
    for (const auto& c : cases) {
        c.call(fresh(), c.args);
        EXPECT_EQ(usbsim::calls().back(), c.line);
    }
}

// What comes back: settings written through the plug-in read back in the
// result kinds of each getter.
TEST(UsbAnalogInput, SettingsReadBack) {
    const struct {
        Body set;
        nvValue value;
        Body get;
        nvValue want;
    } cases[] = {
        {body(icpusb_ai_setfilterrejection), boolean(true), body(icpusb_ai_getfilterrejection), boolean(true)},
        {body(icpusb_ai_setcjcenable), boolean(false), body(icpusb_ai_getcjcenable), boolean(false)},
        {body(icpusb_ai_setwiredetectenable), boolean(true), body(icpusb_ai_getwiredetectenable), boolean(true)},
        {body(icpusb_ai_setcjcoffset), real(-40.96), body(icpusb_ai_getcjcoffset), real(static_cast<float>(-40.96))},
        // The mask keeps the module's 8 inputs and reads back as a real.
        {body(icpusb_ai_setchenable), word(0xFFFF), body(icpusb_ai_getchenable), real(255.0)},
        {body(icpusb_ai_settypecodes), vec(std::vector<int>{0x0F, 8, 8, 8, 8, 8, 8, 0x1A}), body(icpusb_ai_gettypecode),
         vec(std::vector<int>{15, 8, 8, 8, 8, 8, 8, 26})},
        {body(icpusb_ai_setchsamplerate), vec(std::vector<double>{4294967295.0, 1, 2, 3, 4, 5, 6, 7}),
         body(icpusb_ai_getchsamplerate), vec(std::vector<double>{4294967295.0, 1, 2, 3, 4, 5, 6, 7})},
        {body(icpusb_ai_setchcjcoffsets), vec(std::vector<double>{0.5, 0, 0, 0, 0, 0, 0, -1.25}),
         body(icpusb_ai_getchcjcoffset), vec(std::vector<double>{0.5, 0, 0, 0, 0, 0, 0, -1.25})},
    };
    for (const auto& c : cases) {
        const nvValue h = fresh();
        ASSERT_FALSE(c.set(h, {c.value}).isNull()) << usbsim::calls().back();
        expect_same(c.get(h, {}), c.want, usbsim::calls().back());
    }
}

// The supported codes are cut at the input total, not at the supported
// count; resolutions are one Integer per input.
TEST(UsbAnalogInput, SupportTypesAndResolution) {
    const struct {
        const char* model;
        unsigned inputs;
    } cases[] = {{"USB2019", 8}, {"USB2026", 5}};
    for (const auto& c : cases) {
        const nvValue h = fresh(c.model);
        const auto& model = *usbsim::find_model(c.model);
        expect_same(icpusb_ai_gettotalsupporttype(h), integer(static_cast<int>(model.ai_types.size())), c.model);
        const nvValue codes = icpusb_ai_getsupporttypecode(h);
        ASSERT_EQ(codes.size(), c.inputs) << c.model;
        for (unsigned i = 0; i < c.inputs; ++i) expect_same(codes.value(i), integer(model.ai_types[i]), c.model);
        expect_same(icpusb_ai_getresolution(h), vec(std::vector<int>(c.inputs, 16)), c.model);
    }
}

// Readings follow the rig's signals within each type code's range: raw code
// and real value agree, the status says over range, under range or open
// wire, and every reader shows the same channel the same way.
TEST(UsbAnalogInput, ReadingsWithStatus) {
    const nvValue h = fresh();
    const struct {
        int type;
        double signal;
        int status;
        double reads;
    } cases[] = {
        {0x08, 2.5, 0, 2.5}, {0x08, 12.0, 1, 10.0}, {0x08, -10.5, 2, -10.0}, {0x07, 12.0, 0, 12.0},
        {0x07, 3.0, 2, 4.0}, {0x00, -7.5, 0, -7.5}, {0x1A, 20.0, 0, 20.0},   {0x0F, 100.0, 0, 100.0},
    };
    std::vector<int> types;
    for (unsigned ch = 0; ch < 8; ++ch) {
        types.push_back(cases[ch].type);
        ASSERT_TRUE(usbsim::set_ai(k2019, 1, ch, cases[ch].signal));
    }
    ASSERT_FALSE(icpusb_ai_settypecodes(h, vec(types)).isNull());

    const nvValue analog = icpusb_ai_readvalueanalogwithchsta(h);
    const nvValue digital = icpusb_ai_readvaluedigitalwithchsta(h);
    const nvValue values = icpusb_ai_readvalueanalog(h);
    const nvValue raws = icpusb_ai_readvaluedigital(h);
    ASSERT_TRUE(analog.isMatrix());
    ASSERT_EQ(analog.rows(), 8u);
    ASSERT_EQ(analog.columns(), 2u);
    for (unsigned ch = 0; ch < 8; ++ch) {
        const auto& c = cases[ch];
        SCOPED_TRACE(ch);
        const nvValue v = analog.value(2 * ch), status = analog.value(2 * ch + 1);
        EXPECT_TRUE(v.isDouble());
        EXPECT_NEAR(v.toDouble(), c.reads, 0.05);
        expect_same(status, integer(c.status), "status");
        expect_same(values.value(ch), v, "vector reader");
        expect_same(icpusb_ai_readchvalueanalog(h, integer(static_cast<int>(ch))), v, "channel reader");

        const nvValue raw = digital.value(2 * ch);
        EXPECT_TRUE(raw.isDouble());
        EXPECT_LE(raw.toDouble(), 65535.0);
        EXPECT_FLOAT_EQ(static_cast<float>(v.toDouble()),
                        static_cast<float>(usbsim::ai_value_from_raw(static_cast<std::uint8_t>(c.type),
                                                                     static_cast<std::uint32_t>(raw.toDouble()))));
        expect_same(raws.value(ch), raw, "raw vector");
        expect_same(icpusb_ai_readchvaluedigital(h, integer(static_cast<int>(ch))), raw, "raw channel");
        const nvValue row = icpusb_ai_readchvaluedigitalwithchsta(h, integer(static_cast<int>(ch)));
        EXPECT_EQ(row.rows(), 1u);
        EXPECT_EQ(row.columns(), 2u);
        expect_same(row.value(0), raw, "raw row");
        expect_same(row.value(1), status, "status row");
    }
}

// A thermocouple with CJC, an open wire with and without detection, a
// disabled channel and the CJC value.
TEST(UsbAnalogInput, ThermocoupleOpenWireAndDisabledChannels) {
    const nvValue h = fresh();
    ASSERT_TRUE(usbsim::set_ai_open_wire(k2019, 1, 0, true));
    ASSERT_TRUE(usbsim::set_ai(k2019, 1, 1, 5.0));
    ASSERT_TRUE(usbsim::set_ai(k2019, 1, 2, 100.0));
    ASSERT_TRUE(usbsim::set_cjc_temperature(k2019, 1, 30.0));
    ASSERT_FALSE(icpusb_ai_settypecode(h, integer(2), integer(0x0F)).isNull());
    ASSERT_FALSE(icpusb_ai_setchcjcoffset(h, integer(2), real(1.5)).isNull());
    ASSERT_FALSE(icpusb_ai_setcjcoffset(h, real(0.5)).isNull());
    ASSERT_FALSE(icpusb_ai_setchenable(h, integer(0xFD)).isNull());  // channel 1 off

    auto row = [&](int ch) { return icpusb_ai_readchvalueanalogwithchsta(h, integer(ch)); };
    EXPECT_EQ(row(0).value(1).toInt(), 1) << "open wire without detection reads over range";
    expect_same(row(1), icp::make::matrix2(1, [](unsigned, unsigned c) { return c ? integer(0) : real(0.0); }),
                "disabled");
    EXPECT_NEAR(row(2).value(0).toDouble(), 102.0, 0.05);

    ASSERT_FALSE(icpusb_ai_setwiredetectenable(h, boolean(true)).isNull());
    ASSERT_FALSE(icpusb_ai_setcjcenable(h, boolean(false)).isNull());
    EXPECT_EQ(row(0).value(1).toInt(), 3) << "open wire";
    EXPECT_NEAR(row(2).value(0).toDouble(), 70.0, 0.05) << "relative to the cold junction";
    expect_same(icpusb_ai_readcjcvalue(h), real(30.5), "CJC value");
}

// The simulator refuses what the module would: codes outside the model's
// list, channels beyond its inputs, offsets outside -40.96 .. 40.95, and a
// vector with one bad code sets nothing.
TEST(UsbAnalogInput, ModuleRefusesOutOfRangeSettings) {
    const nvValue h = fresh("USB2026");
    const struct {
        Body call;
        Args args;
    } cases[] = {
        {body(icpusb_ai_settypecode), {integer(0), integer(0x00)}},
        {body(icpusb_ai_settypecode), {integer(5), integer(0x08)}},
        {body(icpusb_ai_setcjcoffset), {real(40.96)}},
        {body(icpusb_ai_setcjcoffset), {real(-40.97)}},
        {body(icpusb_ai_setcjcoffset), {real(NAN)}},
        {body(icpusb_ai_settypecodes), {vec(std::vector<int>{7, 8, 9, 0, 26})}},
    };
    const nvValue before = icpusb_ai_gettypecode(h);
    for (const auto& c : cases) {
        EXPECT_TRUE(c.call(h, c.args).isNull()) << usbsim::calls().back();
        EXPECT_EQ(icp::usb_last_error, 0x10105) << usbsim::calls().back();
    }
    expect_same(icpusb_ai_gettypecode(h), before, "nothing half-set");
    EXPECT_FALSE(icpusb_ai_setcjcoffset(h, real(-40.96)).isNull());
}

}  // namespace
