// The analog output group on USB2026 (2 outputs).
#include "tests/usb_functions/fixture.h"
#include "usb/analog_output.h"
#include "usb/body.h"
#include "usb/info.h"

namespace usbtest {
namespace {

constexpr std::uint16_t k2026 = 0x41A;

// The code of a value in the 0 .. 10 V range, the outputs' default.
double code(double v) { return static_cast<double>(usbsim::ao_raw_from_value(0x32, v)); }

// Channels of writers pass as their low 8 bits, unchecked (the module
// refuses what it lacks: 65797); reals as the nearest float; masks as two
// bytes without bit 16.
TEST(UsbAnalogOutput, ArgumentsReachTheSdkAtTheirWidth) {
    expect_sent("USB2026", {
        {body(icpusb_ao_writechannelvalueanalog), {integer(258), real(5.0)}, "AO_WriteChannelValueAnalog(#1, 2, 5.0) -> 65797"},
        {body(icpusb_ao_writechannelvalueanalog), {integer(-1), real(5.0)}, "AO_WriteChannelValueAnalog(#1, 255, 5.0) -> 65797"},
        {body(icpusb_ao_writechannelvalueanalog), {integer(257), real(0.1)}, "AO_WriteChannelValueAnalog(#1, 1, 0.10000000149011612) -> 0"},
        {body(icpusb_ao_setsafetychannelvaluedigital), {integer(1), real(4095.0)}, "AO_SetSafetyChannelValueDigital(#1, 1, 4095) -> 0"},
        {body(icpusb_ao_setchenable), {integer(0x1FFFF)}, "AO_SetChEnable(#1, [255, 255]) -> 0"},
        {body(icpusb_ao_setsafetyvalueanalog), {ints({1, 10})}, "AO_SetSafetyValueAnalog(#1, [1.0, 10.0]) -> 0"},
        // One word for every output: the whole vector's unsigned conversion.
        {body(icpusb_ao_writevaluedigital), {ints({100, 4095})}, "AO_WriteValueDigital(#1, [100, 100]) -> 0"},
        {body(icpusb_ao_setpoweronvaluedigital), {reals({100.0, 4095.9})}, "AO_SetPowerOnValueDigital(#1, [100, 4095]) -> 0"},
        {body(icpusb_ao_setpoweronenable), {ints({257, -256})}, "AO_SetPowerOnEnable(#1, [1, 0]) -> 0"},
    });
}

// What a setter stores comes back through its getter, in the getter's kind.
TEST(UsbAnalogOutput, SettingsReadBack) {
    expect_read_back("USB2026", {
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
        {body(icpusb_ao_setpoweronvalueanalog), reals({2.5, 0.0}), body(icpusb_ao_getpoweronvaluedigital), reals({code(2.5), 0.0})},
        {body(icpusb_ao_setsafetyvaluedigital), ints({0, 4095}), body(icpusb_ao_getsafetyvalueanalog), reals({0.0, 10.0})},
        {body(icpusb_ao_setsafetyvaluedigital), ints({0, 4095}), body(icpusb_ao_getsafetyvaluedigital), reals({0.0, 4095.0})},
        {body(icpusb_ao_writevalueanalog), reals({0.1, 10.0}), body(icpusb_ao_readexpvalueanalog), reals({static_cast<double>(0.1f), 10.0})},
        {body(icpusb_ao_writevalueanalog), reals({0.0, 7.5}), [](const nvValue& h, const Args&) { return icpusb_ao_readchexpvaluedigital(h, integer(1)); }, real(code(7.5))},
    });
    const nvValue h = fresh("USB2026");
    const auto& types = usbsim::find_model("USB2026")->ao_types;
    const auto n = static_cast<long long>(types.size());
    expect_same(icpusb_ao_getresolution(h), ints({12, 12}), "resolution");
    expect_same(icpusb_ao_gettotalsupporttype(h), ints({n, n}), "support type total");
    expect_same(icpusb_ao_getsupporttypecode(h), ints({types[0], types[1]}), "support type codes");
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
    const nvValue h = fresh("USB2026");
    expect_same(icp::usb::mask_getter(h, icp::usb::Group::AO, all_ones_mask), real(65535.0), "mask");
    expect_same(icp::usb::channel_reader(h, icp::usb::Group::AO, integer(1), all_ones_words, icp::make::real_unsigned),
                real(4294967295.0), "code");
}

// Each type code's range bounds what a channel takes; the module refuses
// the rest and keeps its output.
TEST(UsbAnalogOutput, TypeCodeRanges) {
    const struct {
        int type;
        double value;
        bool taken;
    } cases[] = {
        {0x32, 10.0, true}, {0x32, 10.5, false}, {0x32, -0.1, false}, {0x33, -10.0, true}, {0x31, 3.9, false},
        {0x31, 20.0, true}, {0x34, 5.0, true},   {0x35, -5.5, false}, {0x30, 0.0, true},
    };
    for (const auto& c : cases) {
        const nvValue h = fresh("USB2026");
        ASSERT_FALSE(icpusb_ao_settypecode(h, integer(0), integer(c.type)).isNull()) << c.type;
        const double before = icpusb_ao_readchexpvalueanalog(h, integer(0)).toDouble();
        const std::string what = std::to_string(c.type) + " " + std::to_string(c.value);
        EXPECT_EQ(icpusb_ao_writechannelvalueanalog(h, integer(0), real(c.value)).isNull(), !c.taken) << what;
        const double after = icpusb_ao_readchexpvalueanalog(h, integer(0)).toDouble();
        EXPECT_EQ(after, c.taken ? c.value : before) << what;
        EXPECT_EQ(icpusb_ao_readchexpvaluedigital(h, integer(0)).toDouble(),
                  static_cast<double>(usbsim::ao_raw_from_value(static_cast<std::uint8_t>(c.type), after)))
            << what;
    }
    const nvValue h = fresh("USB2026");
    EXPECT_TRUE(icpusb_ao_settypecode(h, integer(0), integer(0x08)).isNull()) << "an AI type code";
    EXPECT_TRUE(icpusb_ao_writechannelvaluedigital(h, integer(0), integer(4096)).isNull()) << "beyond 12 bits";
}

// A disabled output sits at its range's zero level; when the watchdog
// expires, outputs with the safety enable drive their safety value while the
// expected value stays what was commanded, until the next command; after a
// power cycle, outputs with the power-on enable start at their power-on
// value.
TEST(UsbAnalogOutput, EnableSafetyAndPowerOn) {
    const nvValue h = fresh("USB2026");
    ASSERT_FALSE(icpusb_ao_writevalueanalog(h, reals({5.0, 2.0})).isNull());
    expect_same(icpusb_ao_readcurvaluedigital(h), reals({code(5.0), code(2.0)}), "commanded codes");

    ASSERT_FALSE(icpusb_ao_setchenable(h, integer(2)).isNull());
    expect_same(icpusb_ao_readcurvalueanalog(h), reals({0.0, 2.0}), "output 0 disabled");
    expect_same(icpusb_ao_readchcurvalueanalog(h, integer(0)), real(0.0), "output 0 disabled");
    expect_same(icpusb_ao_readexpvalueanalog(h), reals({5.0, 2.0}), "output 0 disabled");
    ASSERT_FALSE(icpusb_ao_setchenable(h, integer(3)).isNull());

    ASSERT_FALSE(icpusb_ao_setsafetyvalueanalog(h, reals({1.0, 9.0})).isNull());
    ASSERT_FALSE(icpusb_ao_setsafetyenable(h, integer(2)).isNull());
    ASSERT_FALSE(icpusb_setautoresetwdt(h, boolean(false)).isNull());
    usbsim::advance_ms(usbsim::module_state(k2026, 1)->soft_wdt_timeout_ms + 1);
    expect_same(icpusb_ao_readcurvalueanalog(h), reals({5.0, 9.0}), "safe");
    expect_same(icpusb_ao_readchcurvaluedigital(h, integer(1)), real(code(9.0)), "safe code");
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
}  // namespace usbtest
