// The analog input group on USB2019 (8 universal inputs) and USB2026 (5
// inputs).
#include <cmath>

#include "tests/usb_functions/fixture.h"
#include "usb/analog_input.h"

namespace usbtest {
namespace {

constexpr std::uint16_t k2019 = 0x413;

// Channels and codes at 8 bits, masks at 16, reals as single precision, no
// range check of the plug-in's own: the SDK's code decides. The module
// refuses codes outside its list, channels beyond its inputs and offsets
// outside -40.96 .. 40.95; a vector with one bad code sets nothing.
TEST(UsbAnalogInput, ArgumentsReachTheSdkAtTheirWidth) {
    expect_sent("USB2019", {
        {body(icpusb_ai_settypecode), {integer(300), integer(260)}, "AI_SetTypeCode(#1, 44, 4) -> 65797"},
        {body(icpusb_ai_setchenable), {word(0x1FFFF)}, "AI_SetChEnable(#1, [65535]) -> 0"},
        {body(icpusb_ai_settypecodes), {ints({8, 8, 8, 8, 8, 8, 8, 260})}, "AI_SetTypeCodes(#1, [8, 8, 8, 8, 8, 8, 8, 4]) -> 0"},
        {body(icpusb_ai_setcjcoffset), {real(40.96)}, "AI_SetCJCOffset(#1, 40.959999084472656) -> 65797"},
        {body(icpusb_ai_setcjcoffset), {real(-40.97)}, "AI_SetCJCOffset(#1, -40.970001220703125) -> 65797"},
        {body(icpusb_ai_setcjcoffset), {real(NAN)}, "AI_SetCJCOffset(#1, nan) -> 65797"},
    });
    expect_sent("USB2026", {
        {body(icpusb_ai_settypecode), {integer(0), integer(0x00)}, "AI_SetTypeCode(#1, 0, 0) -> 65797"},
        {body(icpusb_ai_settypecode), {integer(5), integer(0x08)}, "AI_SetTypeCode(#1, 5, 8) -> 65797"},
    });
    const nvValue h = fresh("USB2026");
    const nvValue before = icpusb_ai_gettypecode(h);
    EXPECT_TRUE(icpusb_ai_settypecodes(h, ints({7, 8, 9, 0, 26})).isNull());
    expect_same(icpusb_ai_gettypecode(h), before, "nothing half-set");
}

TEST(UsbAnalogInput, SettingsReadBack) {
    expect_read_back("USB2019", {
        {body(icpusb_ai_setfilterrejection), boolean(true), body(icpusb_ai_getfilterrejection), boolean(true)},
        {body(icpusb_ai_setcjcenable), boolean(false), body(icpusb_ai_getcjcenable), boolean(false)},
        {body(icpusb_ai_setwiredetectenable), boolean(true), body(icpusb_ai_getwiredetectenable), boolean(true)},
        {body(icpusb_ai_setcjcoffset), real(-40.96), body(icpusb_ai_getcjcoffset), real(static_cast<float>(-40.96))},
        // The mask keeps the module's 8 inputs and reads back as a real.
        {body(icpusb_ai_setchenable), word(0xFFFF), body(icpusb_ai_getchenable), real(255.0)},
        {body(icpusb_ai_settypecodes), ints({0x0F, 8, 8, 8, 8, 8, 8, 0x1A}), body(icpusb_ai_gettypecode),
         ints({15, 8, 8, 8, 8, 8, 8, 26})},
        {body(icpusb_ai_setchsamplerate), reals({4294967295.0, 1, 2, 3, 4, 5, 6, 7}), body(icpusb_ai_getchsamplerate),
         reals({4294967295.0, 1, 2, 3, 4, 5, 6, 7})},
        {body(icpusb_ai_setchcjcoffsets), reals({0.1, 0, 0, 0, 0, 0, 0, -1.25}), body(icpusb_ai_getchcjcoffset),
         reals({static_cast<float>(0.1), 0, 0, 0, 0, 0, 0, -1.25})},
    });
    // The supported codes are cut at the input total, not at the supported
    // count; resolutions are one Integer per input.
    for (const auto& [model, inputs] : {std::pair{"USB2019", 8u}, {"USB2026", 5u}}) {
        const nvValue h = fresh(model);
        const auto& types = usbsim::find_model(model)->ai_types;
        expect_same(icpusb_ai_gettotalsupporttype(h), integer(static_cast<int>(types.size())), model);
        expect_same(icpusb_ai_getsupporttypecode(h), ints(std::vector<long long>(types.begin(), types.begin() + inputs)), model);
        expect_same(icpusb_ai_getresolution(h), ints(std::vector<long long>(inputs, 16)), model);
    }
}

// Readings follow the rig's signals within each type code's range: raw code
// and real value agree, the status says over or under range, and every
// reader shows the same channel the same way.
TEST(UsbAnalogInput, ReadingsWithStatus) {
    const nvValue h = fresh("USB2019");
    const struct {
        int type;
        double signal;
        int status;
        double reads;
    } cases[] = {
        {0x08, 2.5, 0, 2.5}, {0x08, 12.0, 1, 10.0}, {0x08, -10.5, 2, -10.0}, {0x07, 12.0, 0, 12.0},
        {0x07, 3.0, 2, 4.0}, {0x00, -7.5, 0, -7.5}, {0x1A, 20.0, 0, 20.0},   {0x0F, 100.0, 0, 100.0},
    };
    std::vector<long long> types;
    for (unsigned ch = 0; ch < 8; ++ch) {
        types.push_back(cases[ch].type);
        ASSERT_TRUE(usbsim::set_ai(k2019, 1, ch, cases[ch].signal));
    }
    ASSERT_FALSE(icpusb_ai_settypecodes(h, ints(types)).isNull());
    const nvValue analog = icpusb_ai_readvalueanalogwithchsta(h), digital = icpusb_ai_readvaluedigitalwithchsta(h);
    const nvValue values = icpusb_ai_readvalueanalog(h), raws = icpusb_ai_readvaluedigital(h);
    ASSERT_EQ(analog.rows(), 8u);
    for (unsigned ch = 0; ch < 8; ++ch) {
        SCOPED_TRACE(ch);
        const nvValue c = integer(static_cast<int>(ch));
        const nvValue v = analog.value(2 * ch), status = analog.value(2 * ch + 1), raw = digital.value(2 * ch);
        EXPECT_NEAR(v.toDouble(), cases[ch].reads, 0.05);
        expect_same(status, integer(cases[ch].status), "status");
        expect_same(values.value(ch), v, "vector reader");
        expect_same(icpusb_ai_readchvalueanalog(h, c), v, "channel reader");
        expect_same(icpusb_ai_readchvalueanalogwithchsta(h, c), rows({{v, status}}), "analog row");
        EXPECT_FLOAT_EQ(static_cast<float>(v.toDouble()),
                        static_cast<float>(usbsim::ai_value_from_raw(static_cast<std::uint8_t>(cases[ch].type),
                                                                     static_cast<std::uint32_t>(raw.toDouble()))));
        expect_same(raws.value(ch), raw, "raw vector");
        expect_same(icpusb_ai_readchvaluedigital(h, c), raw, "raw channel");
        expect_same(icpusb_ai_readchvaluedigitalwithchsta(h, c), rows({{raw, status}}), "raw row");
    }
}

// A thermocouple with CJC, an open wire with and without detection, a
// disabled channel and the CJC value.
TEST(UsbAnalogInput, ThermocoupleOpenWireAndDisabledChannels) {
    const nvValue h = fresh("USB2019");
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
    expect_same(row(1), rows({{real(0.0), integer(0)}}), "disabled");
    EXPECT_NEAR(row(2).value(0).toDouble(), 102.0, 0.05);

    ASSERT_FALSE(icpusb_ai_setwiredetectenable(h, boolean(true)).isNull());
    ASSERT_FALSE(icpusb_ai_setcjcenable(h, boolean(false)).isNull());
    EXPECT_EQ(row(0).value(1).toInt(), 3) << "open wire";
    EXPECT_NEAR(row(2).value(0).toDouble(), 70.0, 0.05) << "relative to the cold junction";
    expect_same(icpusb_ai_readcjcvalue(h), real(30.5), "CJC value");
}

}  // namespace
}  // namespace usbtest
