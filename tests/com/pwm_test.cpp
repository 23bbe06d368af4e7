// The PWM module's outputs and status through the plug-in.
#include "tests/com/serial_fixture.h"

namespace com_test {
namespace {

// One bit per status byte that is not 0, bit 31 included: the masks are
// unsigned, and Reals.
TEST(PwmStatus, EveryByteSetsItsBit) {
    struct Case {
        unsigned char pwm_byte, di_byte;
        std::size_t first, count;  // the bytes set, in both arrays
        nvValue expected;
    };
    const Case cases[] = {
        {1, 0, 0, 32, vec({real(4294967295.0), real(0.0)})},
        {0, 1, 0, 32, vec({real(0.0), real(4294967295.0)})},
        {0xEE, 0x80, 31, 1, vec({real(2147483648.0), real(2147483648.0)})},
        {1, 0, 8, 1, vec({real(256.0), real(0.0)})},
    };
    for (const auto& c : cases) {
        icp::com::StatusBytes pwm = {}, di = {};
        for (std::size_t i = c.first; i < c.first + c.count; ++i) {
            pwm[i] = c.pwm_byte;
            di[i] = c.di_byte;
        }
        expect_same(icp::com::pwm_status_masks(pwm, di), c.expected);
    }
}

// Outputs start by mask (channels 0 to 7 of the module's 8), and stop when
// a later mask leaves them out; bursts end when their pulses are out; a DI
// trigger starts and stops an output; the status shows which run and which
// inputs are active. (Starting in sync is the emulator's pwm_outputs.)
TEST_F(Serial, OutputsStartAndStopAsTheStatusShows) {
    const nvValue four = integer(4), yes = boolean(true);
    const auto status = [&] { return icpcom_getpwmdiostatus(port, four); };
    expect_same(icpcom_setpwmstart(port, four, integer(0x0105)), yes);
    pacsim::set_di("COM1", 4, 0x80);
    expect_same(status(), vec({real(5.0), real(128.0)}));

    // Ten pulses at 1 kHz last 10 ms; channels 0 and 2 stop.
    expect_same(icpcom_setpwmpulsecount(port, four, integer(1), integer(10)), yes);
    expect_same(icpcom_setpwmstart(port, four, integer(0x02)), yes);
    pacsim::advance_ms(9);
    expect_same(status(), vec({real(2.0), real(128.0)}));
    pacsim::advance_ms(1);
    expect_same(status(), vec({real(0.0), real(128.0)}));

    // A rising input 5 starts channel 5 (trigger start), then stops it
    // (trigger stop); the input's counter counts both rises.
    icpcom_setpwmtrigger(port, four, integer(5), integer(1));
    pacsim::set_di("COM1", 4, 0x20);
    expect_same(status(), vec({real(32.0), real(32.0)}));
    icpcom_setpwmtrigger(port, four, integer(5), integer(2));
    pacsim::set_di("COM1", 4, 0x00);
    pacsim::set_di("COM1", 4, 0x20);
    expect_same(status(), vec({real(0.0), real(32.0)}));
    pacsim::ModuleState state;
    ASSERT_TRUE(pacsim::module_state("COM1", 4, &state));
    EXPECT_EQ(state.counters[5], 2u);

    // A power cycle keeps only the saved configuration, outputs stopped.
    icpcom_setpwmfrequency(port, four, integer(0), integer(200));
    expect_same(icpcom_savepwmconfig(port, four), yes);
    icpcom_setpwmfrequency(port, four, integer(0), integer(500));
    icpcom_setpwmduty(port, four, integer(1), real(30.0));
    icpcom_setpwmstart(port, four, integer(0x03));
    pacsim::power_cycle("COM1", 4);
    expect_same(icpcom_getpwmfrequency(port, four, integer(0)), integer(200));
    expect_same(icpcom_getpwmduty(port, four, integer(1)), real(50.0));
    expect_same(status(), vec({real(0.0), real(32.0)}));
}

}  // namespace
}  // namespace com_test
