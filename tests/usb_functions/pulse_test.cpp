// The pulse input group on USB2084 (8 inputs).
#include "tests/usb_functions/fixture.h"
#include "usb/pulse.h"

namespace usbtest {
namespace {

constexpr std::uint16_t k2084 = 0x454;

nvValue eight(long long first, long long rest) { return ints({first, rest, rest, rest, rest, rest, rest, rest}); }

// Integers reach the SDK at their width with no range check of the plug-in's
// own (the module refuses widths outside 1..32767 and channels beyond 7);
// masks as two bytes, low byte first.
TEST(UsbPulse, ArgumentsReachTheSdkAtTheirWidth) {
    expect_sent("USB2084", {
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(65536)}, "PI_SetLPFilterWidth(#1, 0, 0) -> 65797"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(-1)}, "PI_SetLPFilterWidth(#1, 0, 65535) -> 65797"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(70000)}, "PI_SetLPFilterWidth(#1, 0, 4464) -> 0"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(32767)}, "PI_SetLPFilterWidth(#1, 0, 32767) -> 0"},
        {body(icpusb_pi_setlpfilterwidth), {integer(0), integer(32768)}, "PI_SetLPFilterWidth(#1, 0, 32768) -> 65797"},
        {body(icpusb_pi_setlpfilterwidth), {integer(263), integer(1)}, "PI_SetLPFilterWidth(#1, 7, 1) -> 0"},
        {body(icpusb_pi_setlpfilterwidths), {eight(65537, 5)}, "PI_SetLPFilterWidths(#1, [1, 5, 5, 5, 5, 5, 5, 5]) -> 0"},
        {body(icpusb_pi_setlpfilterwidths), {eight(0, 5)}, "PI_SetLPFilterWidths(#1, [0, 5, 5, 5, 5, 5, 5, 5]) -> 65797"},
        {body(icpusb_pi_settriggermode), {integer(8), integer(1)}, "PI_SetTriggerMode(#1, 8, 1) -> 65797"},
        {body(icpusb_pi_setlpfilterenable), {integer(-1), boolean(false)}, "PI_SetLPFilterEnable(#1, 255, 0) -> 65797"},
        {body(icpusb_pi_setlpfilterenables), {real(3.0)}, "PI_SetLPFilterEnables(#1, [3, 0]) -> 0"},
        {body(icpusb_pi_clearchcount), {integer(0x8000)}, "PI_ClearChCount(#1, [0, 128]) -> 0"},
        {body(icpusb_pi_clearsinglechstatus), {integer(8)}, "PI_ClearSingleChStatus(#1, 8) -> 65797"},
    });
}

// Counts are unsigned reals, row n channel n, with the status as an
// Integer; an overflow sets the status bit, which only the status clears
// reset, and a mask clears its own channels only.
TEST(UsbPulse, CountsStatusesAndClears) {
    usbsim::reset();
    ASSERT_TRUE(usbsim::load_rig(R"({"usb": [{"model": "USB2084", "board": 1,
        "pi_count": [4294967295, 4294967295, 4294967295, 4294967295, 10, 20, 30, 40]}]})", nullptr));
    const nvValue h = icpusb_opendevice(text("USB2084"), integer(1));
    const auto row = [](double count, int status) { return std::pair{real(count), integer(status)}; };
    const double full = 4294967295.0;
    const nvValue counts = rows({row(full, 0), row(full, 0), row(full, 0), row(full, 0), row(10, 0), row(20, 0), row(30, 0), row(40, 0)});
    for (const auto& read : {icpusb_pi_readvalue, icpusb_pi_readcntvalue}) expect_same(read(h), counts, "full counts");
    expect_same(icpusb_pi_readchcntvalue(h, integer(0)), rows({row(full, 0)}), "channel 0");
    expect_same(icpusb_pi_readchvalue(h, integer(7)), rows({row(40, 0)}), "channel 7");
    for (unsigned ch = 0; ch < 4; ++ch) usbsim::pulse(k2084, 1, ch, ch + 1);  // counts wrap to 0, 1, 2, 3
    const int o = usbsim::kPiOverflow;
    const nvValue wrapped = rows({row(0, o), row(1, o), row(2, o), row(3, o), row(10, 0), row(20, 0), row(30, 0), row(40, 0)});
    expect_same(icpusb_pi_readcntvalue(h), wrapped, "wrapped");

    expect_same(icpusb_pi_clearchstatus(h, integer(0x10003)), boolean(true), "status mask");
    expect_same(icpusb_pi_clearsinglechcount(h, integer(257)), boolean(true), "count of channel 1");
    expect_same(icpusb_pi_clearsinglechstatus(h, integer(3)), boolean(true), "status of channel 3");
    expect_same(icpusb_pi_clearsinglechcount(h, integer(2)), boolean(true), "count of channel 2");
    expect_same(icpusb_pi_clearchcount(h, integer(0x30)), boolean(true), "count mask");
    const nvValue cleared = rows({row(0, 0), row(0, 0), row(0, o), row(3, 0), row(0, 0), row(0, 0), row(30, 0), row(40, 0)});
    expect_same(icpusb_pi_readvalue(h), cleared, "after the clears");
}

// Settings written by channel, by vector or by mask read back as Integers
// per channel, or as a real mask.
TEST(UsbPulse, SettingsReadBack) {
    const nvValue h = fresh("USB2084");
    ASSERT_FALSE(icpusb_pi_setlpfilterenable(h, integer(0), boolean(true)).isNull());
    ASSERT_FALSE(icpusb_pi_setlpfilterenable(h, integer(1), boolean(true)).isNull());
    expect_same(icpusb_pi_getlpfilterenable(h), real(3.0), "filter enables");
    ASSERT_FALSE(icpusb_pi_setchisolatedflags(h, integer(0xFF81)).isNull());
    expect_same(icpusb_pi_getchisolatedflag(h), real(129.0), "isolated flags: channels 0 to 7 only");
    ASSERT_FALSE(icpusb_pi_setchisolatedflag(h, integer(0), boolean(false)).isNull());
    expect_same(icpusb_pi_getchisolatedflag(h), real(128.0), "isolated flag of channel 0 off");

    // A vector, then one channel.
    const struct {
        Body all, one, get;
        std::vector<long long> values;
        int channel, value;
    } cases[] = {
        {body(icpusb_pi_setlpfilterwidths), body(icpusb_pi_setlpfilterwidth), body(icpusb_pi_getlpfilterwidth),
         {1, 2, 3, 4, 5, 6, 7, 32767}, 1, 20000},
        {body(icpusb_pi_settriggermodes), body(icpusb_pi_settriggermode), body(icpusb_pi_gettriggermode),
         {0, 1, 2, 0, 1, 2, 0, 1}, 7, 2},
        {body(icpusb_pi_settypecodes), body(icpusb_pi_settypecode), body(icpusb_pi_gettypecode),
         {0x56, 0x56, 0x51, 0x50, 0x55, 0x55, 0x54, 0x54}, 3, 0x51},
    };
    for (auto c : cases) {
        ASSERT_FALSE(c.all(h, {ints(c.values)}).isNull()) << usbsim::calls().back();
        ASSERT_FALSE(c.one(h, {integer(c.channel), integer(c.value)}).isNull()) << usbsim::calls().back();
        c.values[static_cast<std::size_t>(c.channel)] = c.value;
        expect_same(c.get(h, {}), ints(c.values), usbsim::calls().back());
    }

    // One entry per channel, however many types the module supports.
    const auto& types = usbsim::find_model("USB2084")->pi_types;
    ASSERT_LT(types.size(), 8u);
    std::vector<long long> supported(types.begin(), types.end());
    supported.resize(8);
    expect_same(icpusb_pi_gettotalsupporttype(h), integer(static_cast<int>(types.size())), "total supported");
    expect_same(icpusb_pi_getsupporttypecode(h), ints(supported), "supported");
}

// A channel in frequency mode: ReadValue gives whole Hz, ReadFreqValue the
// single-precision frequency widened.
TEST(UsbPulse, Frequencies) {
    const nvValue h = fresh("USB2084");
    ASSERT_FALSE(icpusb_pi_settypecode(h, integer(1), integer(0x51)).isNull());
    ASSERT_TRUE(usbsim::set_frequency(k2084, 1, 1, 1234.4));
    expect_same(icpusb_pi_readchfreqvalue(h, integer(1)), rows({{real(1234.4f), integer(0)}}), "frequency");
    expect_same(icpusb_pi_readchvalue(h, integer(1)), rows({{real(1234.0), integer(0)}}), "value");
    expect_same(icpusb_pi_readfreqvalue(h).value(2), real(1234.4f), "row 1, column 0");
}

}  // namespace
}  // namespace usbtest
