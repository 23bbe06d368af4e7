// The digital group.
#include "tests/usb_functions/fixture.h"
#include "usb/digital.h"

namespace usbtest {
namespace {

TEST(UsbDigital, ArgumentsReachTheSdkAtTheirWidth) {
    expect_sent("USB2055", {
        // No comparison with the total: the SDK's code decides.
        {body(icpusb_do_setpoweronenable), {integer(-1), boolean(false)}, "DO_SetPowerOnEnable(#1, 255, 0) -> 65797"},
    });
}

// Words with the top bit set come back as positive reals; integer getters
// pass a 32-bit word unchanged and zero-extend the 16-bit filter width.
TEST(UsbDigital, WordsReadBack) {
    expect_read_back("USB2045_32", {
        {body(icpusb_do_writevalue), word(0xFFFFFFFF), body(icpusb_do_readvalue), real(4294967295.0)},
        {[](const nvValue& h, const Args& a) { return icpusb_do_writechannelvalue(h, integer(31), a[0]); }, integer(1),
         body(icpusb_do_readvalue), real(2147483648.0)},
        {body(icpusb_do_setsafetyenable), word(0x80000001), body(icpusb_do_getsafetyenable), real(2147483649.0)},
        {body(icpusb_do_setsafetyvalue), word(0xFFFFFFFF), body(icpusb_do_getsafetyvalue), real(4294967295.0)},
        {body(icpusb_do_setdigitaloutputinverse), word(0xFFFFFFFF), body(icpusb_do_getdigitaloutputinverse), integer(-1)},
    });
    expect_read_back("USB2051_32", {
        {body(icpusb_di_setdigitalvalueinverse), word(0xFFFFFFFF), body(icpusb_di_readvalue), real(4294967295.0)},
        {body(icpusb_di_setcntedgetrigger), word(0xFFFFFFFE), body(icpusb_di_getcntedgetrigger), integer(-2)},
        {body(icpusb_di_setdigitalfilterwidth), integer(65535), body(icpusb_di_getdigitalfilterwidth), integer(65535)},
    });
    const nvValue h = fresh("USB2051");
    usbsim::pulse_di(0x433, 1, 0, 3);
    expect_same(icpusb_di_readcountervalue(h), real(3.0), "counter of channel 0");
}

// The channel reader picks one bit of the input word as an Integer.
TEST(UsbDigital, ChannelReader) {
    const struct {
        const char* model;
        std::uint32_t signal;
        int channel, want;
    } cases[] = {
        {"USB2051", 0x8001, 0, 1}, {"USB2051", 0x8001, 1, 0}, {"USB2051", 0x8001, 15, 1},
        {"USB2051_32", 0x80000000, 31, 1}, {"USB2051_32", 0x80000000, 30, 0},
    };
    for (const auto& c : cases) {
        const nvValue h = fresh(c.model);
        usbsim::set_di(usbsim::find_model(c.model)->type_code, 1, c.signal);
        expect_same(icpusb_di_readchannelvalue(h, integer(c.channel)), integer(c.want), c.model);
    }
}

// Mask 5: 32 calls whatever the output count, channels 0 and 2 enabled;
// the enables come back as one Boolean per output.
TEST(UsbDigital, PowerOnEnables) {
    for (const auto& [model, total] : {std::pair{"USB2055", 8u}, {"USB2045", 16u}, {"USB2045_32", 32u}}) {
        const nvValue h = fresh(model);
        expect_same(icpusb_do_setpoweronenables(h, integer(5)), boolean(true), model);
        Strings want{"GetDOTotal(#1) -> 0"};
        for (int ch = 0; ch < 32; ++ch)
            want.push_back("DO_SetPowerOnEnable(#1, " + std::to_string(ch) + (ch == 0 || ch == 2 ? ", 1" : ", 0") + ") -> 0");
        EXPECT_EQ(usbsim::calls(), want) << model;

        icpusb_do_setpoweronenable(h, integer(static_cast<int>(total) - 1), boolean(true));
        const nvValue enables = icp::make::vector(total, [&](unsigned i) { return boolean(i == 0 || i == 2 || i == total - 1); });
        expect_same(icpusb_do_getpoweronenable(h), enables, model);
    }
}

}  // namespace
}  // namespace usbtest
