// Analog outputs: expected and current values, power-on and safety values.
#include <array>
#include <cmath>

#include "fixture.h"

namespace {

using usbioAnalog = UsbioTest;

constexpr std::uint16_t k2026 = 0x41A;

TEST_F(usbioAnalog, OutputsExpectedAndCurrentValues) {
    USBIO_HANDLE h = attach_and_open("USB2026");
    struct {
        std::uint8_t type;
        float value;
        std::int32_t code;
    } const writes[] = {
        {0x32, 5.0f, USBIO_OK},        {0x32, 10.5f, USBIO_ERR_PARAMETER}, {0x33, -10.0f, USBIO_OK},
        {0x31, 3.9f, USBIO_ERR_PARAMETER}, {0x31, 0.1f, USBIO_ERR_PARAMETER}, {0x35, NAN, USBIO_ERR_PARAMETER},
    };
    for (const auto& w : writes) {
        ASSERT_EQ(AO_SetTypeCode(h, 0, w.type), USBIO_OK);
        EXPECT_EQ(AO_WriteChannelValueAnalog(h, 0, w.value), w.code) << int{w.type} << " " << w.value;
        if (w.code != USBIO_OK) continue;
        std::array<std::uint32_t, 16> raw{};
        std::array<float, 16> cur{}, exp{};
        ASSERT_EQ(AO_ReadExpValueDigital(h, raw.data()), USBIO_OK);
        ASSERT_EQ(AO_ReadExpValueAnalog(h, exp.data()), USBIO_OK);
        ASSERT_EQ(AO_ReadCurValueAnalog(h, cur.data()), USBIO_OK);
        EXPECT_EQ(raw[0], usbsim::ao_raw_from_value(w.type, w.value));
        EXPECT_EQ(exp[0], w.value);
        EXPECT_NEAR(cur[0], w.value, 20.0 / 4095);
    }
    EXPECT_EQ(AO_WriteChannelValueDigital(h, 1, 4096), USBIO_ERR_PARAMETER);
    EXPECT_EQ(AO_WriteChannelValueDigital(h, 2, 0), USBIO_ERR_PARAMETER);
    ASSERT_EQ(AO_WriteChannelValueDigital(h, 1, 4095), USBIO_OK);
    const std::uint8_t only0[2] = {0x01, 0x00};
    ASSERT_EQ(AO_SetChEnable(h, only0), USBIO_OK);
    std::array<std::uint32_t, 16> cur{}, exp{};
    ASSERT_EQ(AO_ReadCurValueDigital(h, cur.data()), USBIO_OK);
    ASSERT_EQ(AO_ReadExpValueDigital(h, exp.data()), USBIO_OK);
    EXPECT_EQ(exp[1], 4095u);
    EXPECT_EQ(cur[1], 0u);  // a disabled 0-10 V output sits at 0 V
}

TEST_F(usbioAnalog, OutputPowerOnAndSafetyValues) {
    USBIO_HANDLE h = attach_and_open("USB2026");
    const std::uint8_t on[16] = {1, 0};
    const std::uint32_t power_on[16] = {1000, 2000};
    ASSERT_EQ(AO_SetPowerOnEnable(h, on), USBIO_OK);
    ASSERT_EQ(AO_SetPowerOnValueDigital(h, power_on), USBIO_OK);
    ASSERT_EQ(AO_SetSafetyChannelValueAnalog(h, 1, 7.5f), USBIO_OK);
    const std::uint8_t safety[2] = {0x02, 0x00};
    ASSERT_EQ(AO_SetSafetyEnable(h, safety), USBIO_OK);
    ASSERT_EQ(AO_WriteChannelValueDigital(h, 1, 100), USBIO_OK);

    ASSERT_EQ(SetAutoResetWDT(h, 0), USBIO_OK);
    usbsim::advance_ms(state("USB2026").soft_wdt_timeout_ms + 1);
    auto st = state("USB2026");
    EXPECT_EQ(st.ao[1].raw, usbsim::ao_raw_from_value(0x32, 7.5));

    ASSERT_TRUE(usbsim::unplug(k2026, 1));
    ASSERT_TRUE(usbsim::replug(k2026, 1));
    st = state("USB2026");
    EXPECT_EQ(st.ao[0].raw, 1000u);  // power-on enabled
    EXPECT_EQ(st.ao[1].raw, 0u);     // not enabled: 0 V
    float values[16] = {};
    ASSERT_EQ(AO_GetPowerOnValueAnalog(h, values), USBIO_OK);
    EXPECT_FLOAT_EQ(values[1], static_cast<float>(usbsim::ao_value_from_raw(0x32, 2000)));
}

}  // namespace
