// Pulse inputs: counting by mode, trigger and clock, and the paired modes
// (clears, statuses, settings and frequencies are tested through the plug-in).
#include <array>

#include "fixture.h"

namespace {

using usbioPulse = UsbioTest;

constexpr std::uint16_t k2084 = 0x454;

struct PiRead {
    std::array<std::uint32_t, 16> value{};
    std::array<std::uint8_t, 16> status{};
};

PiRead counts(USBIO_HANDLE h) {
    PiRead r;
    EXPECT_EQ(PI_ReadCntValue(h, r.value.data(), r.status.data()), USBIO_OK);
    return r;
}

TEST_F(usbioPulse, UpCountersCountByTrigger) {
    USBIO_HANDLE h = attach_and_open("USB2084");
    const std::uint8_t modes[16] = {0, 1, 2, 0, 0, 0, 0, 0};
    ASSERT_EQ(PI_SetTriggerModes(h, modes), USBIO_OK);
    for (unsigned ch = 0; ch < 3; ++ch) ASSERT_TRUE(usbsim::pulse(k2084, 1, ch, 10));
    EXPECT_FALSE(usbsim::pulse(k2084, 1, 8, 1));
    PiRead r = counts(h);
    EXPECT_EQ(r.value[0], 10u);
    EXPECT_EQ(r.value[1], 10u);
    EXPECT_EQ(r.value[2], 20u);  // both edges
    const std::uint8_t bad[16] = {0, 3};
    EXPECT_EQ(PI_SetTriggerModes(h, bad), USBIO_ERR_PARAMETER);
}

TEST_F(usbioPulse, PairModesCountSignedInTheEvenChannel) {
    USBIO_HANDLE h = attach_and_open("USB2084");
    EXPECT_EQ(PI_SetTypeCode(h, 1, 0x54), USBIO_ERR_PARAMETER);  // pairs start on even channels
    ASSERT_EQ(PI_SetTypeCode(h, 0, 0x54), USBIO_OK);
    EXPECT_EQ(PI_SetTypeCode(h, 1, 0x50), USBIO_ERR_PARAMETER);  // the odd channel follows
    std::array<std::uint8_t, 16> types{};
    ASSERT_EQ(PI_GetTypeCode(h, types.data()), USBIO_OK);
    EXPECT_EQ(types[1], 0x54);

    ASSERT_TRUE(usbsim::pulse(k2084, 1, 0, 3));
    ASSERT_TRUE(usbsim::pulse(k2084, 1, 1, 5));  // the down input
    PiRead r = counts(h);
    EXPECT_EQ(static_cast<std::int32_t>(r.value[0]), -2);
    EXPECT_EQ(r.value[1], 0u);

    const std::uint8_t mixed[16] = {0x56, 0x56, 0x51, 0x50, 0x55, 0x50, 0x50, 0x50};
    EXPECT_EQ(PI_SetTypeCodes(h, mixed), USBIO_ERR_PARAMETER);  // 0x55 without its partner
    const std::uint8_t pairs[16] = {0x56, 0x56, 0x51, 0x50, 0x55, 0x55, 0x50, 0x50};
    ASSERT_EQ(PI_SetTypeCodes(h, pairs), USBIO_OK);
    EXPECT_EQ(counts(h).value[0], 0u);  // a new mode starts from 0
    ASSERT_EQ(PI_SetTypeCode(h, 4, 0x50), USBIO_OK);  // leaving a pair frees both
    ASSERT_EQ(PI_GetTypeCode(h, types.data()), USBIO_OK);
    EXPECT_EQ(types[5], 0x50);
}

// The clock drives pulse trains: an up counter has counted them, a
// frequency-mode channel counts nothing.
TEST_F(usbioPulse, CountsFromTheClock) {
    USBIO_HANDLE h = attach_and_open("USB2084");
    ASSERT_EQ(PI_SetTypeCode(h, 1, 0x51), USBIO_OK);
    ASSERT_TRUE(usbsim::set_frequency(k2084, 1, 0, 250.0));
    ASSERT_TRUE(usbsim::set_frequency(k2084, 1, 1, 1234.4));
    usbsim::advance_ms(1002);
    EXPECT_EQ(counts(h).value[0], 250u);  // 250.5 pulses so far
    EXPECT_EQ(counts(h).value[1], 0u);
}

}  // namespace
