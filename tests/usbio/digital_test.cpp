// Digital outputs and inputs: the watchdog's safety values, input counters
// and their edges.
#include <array>

#include "fixture.h"

namespace {

using usbioDigital = UsbioTest;

constexpr std::uint16_t k2055 = 0x437;

// Safety values apply once the watchdog expires: automatic reset off and no
// call for longer than the timeout.
TEST_F(usbioDigital, WatchdogExpiryAppliesTheSafetyValues) {
    USBIO_HANDLE h = attach_and_open("USB2055");
    std::uint32_t enable = 0x0F, value = 0x05, word = 0xF0;
    ASSERT_EQ(DO_SetSafetyEnable(h, &enable), USBIO_OK);
    ASSERT_EQ(DO_SetSafetyValue(h, &value), USBIO_OK);
    ASSERT_EQ(SetSoftWDTTimeout(h, 500), USBIO_OK);
    ASSERT_EQ(DO_WriteValue(h, &word), USBIO_OK);

    usbsim::advance_ms(5000);  // automatic reset still on
    EXPECT_EQ(state("USB2055").do_word, 0xF0u);

    ASSERT_EQ(SetAutoResetWDT(h, 0), USBIO_OK);
    usbsim::advance_ms(400);
    ASSERT_EQ(SYNCDevice(h), USBIO_OK);  // a call restarts the timeout
    usbsim::advance_ms(500);
    EXPECT_FALSE(state("USB2055").wdt_expired);
    EXPECT_EQ(state("USB2055").do_word, 0xF0u);
    usbsim::advance_ms(1);
    EXPECT_TRUE(state("USB2055").wdt_expired);
    EXPECT_EQ(state("USB2055").do_word, 0xF5u);

    // Closed, the module has no host to lose.
    ASSERT_EQ(DO_WriteValue(h, &word), USBIO_OK);
    ASSERT_EQ(CloseDevice(h), USBIO_OK);
    usbsim::advance_ms(10000);
    EXPECT_EQ(state("USB2055").do_word, 0xF0u);
}

// Channel 0 counts rising edges (edge bit 1), channel 1 falling edges.
TEST_F(usbioDigital, CountersCountTheChosenEdges) {
    USBIO_HANDLE h = attach_and_open("USB2055");
    ASSERT_EQ(DI_SetCntEdgeTrigger(h, 0x1), USBIO_OK);
    struct {
        std::uint32_t signal;
        std::uint32_t ch0, ch1;
    } const steps[] = {
        {0x3, 1, 0}, {0x0, 1, 1}, {0x1, 2, 1}, {0x1, 2, 1}, {0x2, 2, 1}, {0x0, 2, 2},
    };
    for (const auto& s : steps) {
        ASSERT_TRUE(usbsim::set_di(k2055, 1, s.signal));
        EXPECT_EQ(state("USB2055").di_counters[0], s.ch0) << s.signal;
        EXPECT_EQ(state("USB2055").di_counters[1], s.ch1) << s.signal;
    }
    ASSERT_TRUE(usbsim::pulse_di(k2055, 1, 2, 10));
    ASSERT_TRUE(usbsim::pulse_di(k2055, 1, 7, 4));
    EXPECT_FALSE(usbsim::pulse_di(k2055, 1, 8, 1));

    std::array<std::uint32_t, 2> word{0, 0xCAFEF00D};
    ASSERT_EQ(DI_ReadCounterValue(h, word.data()), USBIO_OK);
    EXPECT_EQ(word[0], 2u);
    EXPECT_EQ(word[1], 0xCAFEF00Du);  // one word only

    ASSERT_EQ(DI_WriteClearCounter(h, 0), USBIO_OK);
    EXPECT_EQ(DI_WriteClearCounter(h, 8), USBIO_ERR_PARAMETER);
    ASSERT_EQ(DI_WriteClearCounters(h, 0xFFFFFF84), USBIO_OK);  // channels 2 and 7
    const auto c = state("USB2055").di_counters;
    EXPECT_EQ((std::vector<std::uint32_t>{c[0], c[1], c[2], c[7]}), (std::vector<std::uint32_t>{0, 2, 0, 0}));
}

}  // namespace
