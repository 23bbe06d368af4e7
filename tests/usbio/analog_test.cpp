// Analog inputs: readings, statuses, settings.
#include <array>
#include <cmath>

#include "fixture.h"

namespace {

using usbioAnalog = UsbioTest;

constexpr std::uint16_t k2019 = 0x413;

struct AiReadings {
    std::array<std::uint32_t, 16> raw{};
    std::array<float, 16> value{};
    std::array<std::uint8_t, 16> status{};
};

AiReadings read_ai(USBIO_HANDLE h) {
    AiReadings r;
    std::array<std::uint8_t, 16> status2{};
    EXPECT_EQ(AI_ReadValueDigitalWithChSta(h, r.raw.data(), r.status.data()), USBIO_OK);
    EXPECT_EQ(AI_ReadValueAnalogWithChSta(h, r.value.data(), status2.data()), USBIO_OK);
    EXPECT_EQ(r.status, status2);
    return r;
}

TEST_F(usbioAnalog, ReadingsFollowTheTypeCodeRange) {
    USBIO_HANDLE h = attach_and_open("USB2019");
    struct Case {
        std::uint8_t type;
        double signal;
        std::uint8_t status;
        double reads;
    };
    const Case cases[] = {
        {0x08, 2.5, usbsim::kAiNormal, 2.5},      {0x08, 12.0, usbsim::kAiOverRange, 10.0},
        {0x08, -10.5, usbsim::kAiUnderRange, -10.0}, {0x07, 12.0, usbsim::kAiNormal, 12.0},
        {0x07, 3.0, usbsim::kAiUnderRange, 4.0},  {0x00, -7.5, usbsim::kAiNormal, -7.5},
        {0x1A, 20.0, usbsim::kAiNormal, 20.0},    {0x05, NAN, usbsim::kAiOverRange, 2.5},
    };
    std::array<std::uint8_t, 16> types{};
    for (unsigned ch = 0; ch < 8; ++ch) {
        types[ch] = cases[ch].type;
        ASSERT_TRUE(usbsim::set_ai(k2019, 1, ch, cases[ch].signal));
    }
    ASSERT_EQ(AI_SetTypeCodes(h, types.data()), USBIO_OK);
    AiReadings r = read_ai(h);
    for (unsigned ch = 0; ch < 8; ++ch) {
        const Case& c = cases[ch];
        auto range = usbsim::ai_range(c.type).value();
        double step = std::max(std::fabs(range.low), std::fabs(range.high)) / 32767.0;
        EXPECT_EQ(r.status[ch], c.status) << ch;
        EXPECT_NEAR(r.value[ch], c.reads, step) << ch;
        EXPECT_LE(r.raw[ch], 0xFFFFu);
        EXPECT_FLOAT_EQ(r.value[ch], static_cast<float>(usbsim::ai_value_from_raw(c.type, r.raw[ch]))) << ch;
    }
}

TEST_F(usbioAnalog, OpenWireDisabledChannelsAndThermocouples) {
    USBIO_HANDLE h = attach_and_open("USB2019");
    ASSERT_TRUE(usbsim::set_ai_open_wire(k2019, 1, 0, true));
    ASSERT_TRUE(usbsim::set_ai(k2019, 1, 1, 5.0));
    ASSERT_TRUE(usbsim::set_ai(k2019, 1, 2, 100.0));
    ASSERT_TRUE(usbsim::set_cjc_temperature(k2019, 1, 30.0));
    ASSERT_EQ(AI_SetTypeCode(h, 2, 0x0F), USBIO_OK);  // K thermocouple
    ASSERT_EQ(AI_SetChCJCOffset(h, 2, 1.5f), USBIO_OK);
    ASSERT_EQ(AI_SetCJCOffset(h, 0.5f), USBIO_OK);
    const std::uint16_t enabled = 0x00FD;  // channel 1 off
    ASSERT_EQ(AI_SetChEnable(h, &enabled), USBIO_OK);

    AiReadings r = read_ai(h);
    EXPECT_EQ(r.status[0], usbsim::kAiOverRange);  // detection off
    EXPECT_EQ(r.raw[1], 0u);
    EXPECT_EQ(r.status[1], usbsim::kAiNormal);
    EXPECT_NEAR(r.value[2], 102.0, 0.05);

    ASSERT_EQ(AI_SetWireDetectEnable(h, 1), USBIO_OK);
    ASSERT_EQ(AI_SetCJCEnable(h, 0), USBIO_OK);
    r = read_ai(h);
    EXPECT_EQ(r.status[0], usbsim::kAiOpenWire);
    EXPECT_NEAR(r.value[2], 70.0, 0.05);  // uncompensated: relative to the cold junction
    float cjc = 0;
    ASSERT_EQ(AI_ReadCJCValue(h, &cjc), USBIO_OK);
    EXPECT_FLOAT_EQ(cjc, 30.5f);
}

TEST_F(usbioAnalog, AiSettingsAreRangeChecked) {
    USBIO_HANDLE h = attach_and_open("USB2026");
    struct {
        std::int32_t code;
        const char* what;
    } const checks[] = {
        {AI_SetTypeCode(h, 0, 0x00), "type outside the module's list"},
        {AI_SetTypeCode(h, 5, 0x08), "channel 5 of 5"},
        {AI_SetCJCOffset(h, 40.96f), "offset above 40.95"},
        {AI_SetCJCOffset(h, -40.97f), "offset below -40.96"},
        {AI_SetCJCOffset(h, NAN), "NaN offset"},
        {AI_SetFilterRejection(h, 2), "rejection 2"},
    };
    for (const auto& c : checks) EXPECT_EQ(c.code, USBIO_ERR_PARAMETER) << c.what;
    EXPECT_EQ(AI_SetCJCOffset(h, -40.96f), USBIO_OK);
    EXPECT_EQ(AI_SetFilterRejection(h, 1), USBIO_OK);

    std::array<std::uint8_t, 16> types{0x07, 0x08, 0x09, 0x00, 0x1A};
    EXPECT_EQ(AI_SetTypeCodes(h, types.data()), USBIO_ERR_PARAMETER);
    EXPECT_EQ(state("USB2026").ai[0].type_code, model("USB2026").ai_default_type);  // nothing half-set

    std::array<std::uint8_t, 64> list{};
    std::uint8_t count = 0;
    ASSERT_EQ(AI_GetTotalSupportType(h, &count), USBIO_OK);
    ASSERT_EQ(AI_GetSupportTypeCode(h, list.data()), USBIO_OK);
    auto expected = model("USB2026").ai_types;
    ASSERT_EQ(count, expected.size());
    for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(list[i], expected[i]);
}

}  // namespace
