// Digital outputs and inputs: output mask, inverses, power-on table, the
// watchdog's safety values, input counters and their edges.
#include <array>

#include "fixture.h"

namespace {

using usbioDigital = UsbioTest;

constexpr std::uint16_t k2055 = 0x437;

std::uint32_t bits(unsigned n) { return n >= 32 ? 0xFFFFFFFFu : (1u << n) - 1u; }

TEST_F(usbioDigital, OutputWordKeepsOnlyTheModulesOutputs) {
    for (const auto& m : usbsim::models()) {
        if (m.do_ == 0) continue;
        usbsim::reset();
        USBIO_HANDLE h = attach_and_open(m.id);
        std::uint32_t all = 0xFFFFFFFF, back = 0;
        ASSERT_EQ(DO_WriteValue(h, &all), USBIO_OK);
        ASSERT_EQ(DO_ReadValue(h, &back), USBIO_OK);
        EXPECT_EQ(back, bits(m.do_)) << m.id;
        // Configuration masks are kept as written.
        ASSERT_EQ(DO_SetDigitalOutputInverse(h, 0xFFFFFFFF), USBIO_OK);
        ASSERT_EQ(DO_SetSafetyValue(h, &all), USBIO_OK);
        ASSERT_EQ(DO_GetDigitalOutputInverse(h, &back), USBIO_OK);
        EXPECT_EQ(back, 0xFFFFFFFFu);
        ASSERT_EQ(DO_GetSafetyValue(h, &back), USBIO_OK);
        EXPECT_EQ(back, 0xFFFFFFFFu);
    }
}

TEST_F(usbioDigital, ChannelWritesAndTheInverseAtTheTerminals) {
    USBIO_HANDLE h = attach_and_open("USB2055");
    struct {
        std::uint8_t channel, value;
        std::int32_t code;
        std::uint32_t word;
    } const steps[] = {
        {0, 1, USBIO_OK, 0x01}, {7, 2, USBIO_OK, 0x81}, {0, 0, USBIO_OK, 0x80}, {8, 1, USBIO_ERR_PARAMETER, 0x80},
    };
    for (const auto& s : steps) {
        EXPECT_EQ(DO_WriteChannelValue(h, s.channel, s.value), s.code);
        EXPECT_EQ(state("USB2055").do_word, s.word);
    }
    ASSERT_EQ(DO_SetDigitalOutputInverse(h, 0x1FF), USBIO_OK);
    std::uint32_t back = 0;
    ASSERT_EQ(DO_ReadValue(h, &back), USBIO_OK);
    EXPECT_EQ(back, 0x80u);                           // the word as written
    EXPECT_EQ(state("USB2055").do_outputs(), 0x7Fu);  // the terminals, inverted
}

TEST_F(usbioDigital, PowerOnTableHas32EntriesAndActsOnPowerUp) {
    USBIO_HANDLE h = attach_and_open("USB2055");
    for (std::uint8_t ch : std::array<std::uint8_t, 5>{0, 3, 7, 8, 31}) ASSERT_EQ(DO_SetPowerOnEnable(h, ch, 5), USBIO_OK);
    ASSERT_EQ(DO_SetPowerOnEnable(h, 3, 0), USBIO_OK);
    std::array<std::uint8_t, 32> table{};
    ASSERT_EQ(DO_GetPowerOnEnable(h, table.data()), USBIO_OK);
    for (unsigned ch = 0; ch < 32; ++ch) EXPECT_EQ(table[ch], (ch == 0 || ch == 7 || ch == 8 || ch == 31) ? 1 : 0) << ch;
    ASSERT_TRUE(usbsim::unplug(k2055, 1));
    ASSERT_TRUE(usbsim::replug(k2055, 1));
    EXPECT_EQ(state("USB2055").do_word, 0x81u);  // entries beyond the outputs have no effect
}

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

TEST_F(usbioDigital, InputWordIsTheSignalXorTheInverse) {
    USBIO_HANDLE h = attach_and_open("USB2055");
    ASSERT_TRUE(usbsim::set_di(k2055, 1, 0xFFFF0F0F));
    std::uint32_t v = 0;
    ASSERT_EQ(DI_ReadValue(h, &v), USBIO_OK);
    EXPECT_EQ(v, 0x0Fu);
    ASSERT_EQ(DI_SetDigitalValueInverse(h, 0xFFFFFFF0), USBIO_OK);
    ASSERT_EQ(DI_ReadValue(h, &v), USBIO_OK);
    EXPECT_EQ(v, 0xFFu);
    ASSERT_EQ(DI_GetDigitalValueInverse(h, &v), USBIO_OK);
    EXPECT_EQ(v, 0xFFFFFFF0u);
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
        auto st = state("USB2055");
        EXPECT_EQ(st.di_counters[0], s.ch0) << s.signal;
        EXPECT_EQ(st.di_counters[1], s.ch1) << s.signal;
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
    auto st = state("USB2055");
    EXPECT_EQ(st.di_counters[0], 0u);
    EXPECT_EQ(st.di_counters[1], 2u);
    EXPECT_EQ(st.di_counters[2], 0u);
    EXPECT_EQ(st.di_counters[7], 0u);
}

TEST_F(usbioDigital, DigitalSettersStoreWhatGettersReturn) {
    USBIO_HANDLE h = attach_and_open("USB2055");
    ASSERT_EQ(DI_SetDigitalFilterWidth(h, 65535), USBIO_OK);
    std::uint16_t width = 0;
    ASSERT_EQ(DI_GetDigitalFilterWidth(h, &width), USBIO_OK);
    EXPECT_EQ(width, 65535);
    ASSERT_EQ(DI_SetCntEdgeTrigger(h, 0xFFFFFFFF), USBIO_OK);
    std::uint32_t edges = 0;
    ASSERT_EQ(DI_GetCntEdgeTrigger(h, &edges), USBIO_OK);
    EXPECT_EQ(edges, 0xFFFFFFFFu);
    std::uint32_t mask = 0x80000001;
    ASSERT_EQ(DO_SetSafetyEnable(h, &mask), USBIO_OK);
    ASSERT_EQ(DO_GetSafetyEnable(h, &mask), USBIO_OK);
    EXPECT_EQ(mask, 0x80000001u);
    EXPECT_EQ(DO_WriteValue(h, nullptr), USBIO_ERR_PARAMETER);
    EXPECT_EQ(DI_ReadValue(h, nullptr), USBIO_ERR_PARAMETER);
}

}  // namespace
