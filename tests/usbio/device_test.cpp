// Buffer bounds, the DO watchdog, the input counters and
// paired pulse inputs.
#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <vector>

#include "fixture.h"

namespace {

using usbioDevice = UsbioTest;

constexpr std::uint16_t k2055 = 0x437;
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

// Safety values apply once the watchdog expires: automatic reset off and no
// call for longer than the timeout.
TEST_F(usbioDevice, WatchdogExpiryAppliesTheSafetyValues) {
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
    EXPECT_EQ(state("USB2055").do_word, 0xF0u);
    usbsim::advance_ms(1);
    EXPECT_EQ(state("USB2055").do_word, 0xF5u);

    // Closed, the module has no host to lose.
    ASSERT_EQ(DO_WriteValue(h, &word), USBIO_OK);
    ASSERT_EQ(CloseDevice(h), USBIO_OK);
    usbsim::advance_ms(10000);
    EXPECT_EQ(state("USB2055").do_word, 0xF0u);
}

// Channel 0 counts rising edges (edge bit 1), channel 1 falling edges.
TEST_F(usbioDevice, CountersCountTheChosenEdges) {
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

    ASSERT_EQ(DI_WriteClearCounter(h, 0), USBIO_OK);
    EXPECT_EQ(DI_WriteClearCounter(h, 8), USBIO_ERR_PARAMETER);
    ASSERT_EQ(DI_WriteClearCounters(h, 0xFFFFFF84), USBIO_OK);  // channels 2 and 7
    const auto c = state("USB2055").di_counters;
    EXPECT_EQ((std::vector<std::uint32_t>{c[0], c[1], c[2], c[7]}), (std::vector<std::uint32_t>{0, 2, 0, 0}));
}

TEST_F(usbioDevice, UpCountersCountByTrigger) {
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

// Paired pulse inputs count up minus down in the even channel.
TEST_F(usbioDevice, PairModesCountSignedInTheEvenChannel) {
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

TEST_F(usbioDevice, ListDeviceFillsAtMost128) {
    std::size_t added = 0;
    for (const auto& m : usbsim::models())
        for (unsigned board = 1; board <= 9; ++board) added += usbsim::add_module(m.id, static_cast<std::uint8_t>(board));
    ASSERT_EQ(added, 135u);
    std::array<std::uint16_t, 130> codes;
    std::array<std::uint8_t, 130> boards;
    codes.fill(0xBEEF);
    boards.fill(0xEE);
    EXPECT_EQ(ScanDevice(), 135);
    EXPECT_EQ(ListDevice(codes.data(), boards.data()), 128);
    EXPECT_EQ(codes[0], usbsim::models()[0].type_code);
    EXPECT_EQ(boards[0], 1);
    EXPECT_EQ(codes[128], 0xBEEF);
    EXPECT_EQ(boards[128], 0xEE);
}

// No output function writes past its fixed buffer, whatever the model.
TEST_F(usbioDevice, OutputsStayWithinTheirBuffers) {
    using Fill = std::function<std::int32_t(USBIO_HANDLE, std::uint8_t*)>;
    auto u32 = [](auto fn) { return Fill([fn](USBIO_HANDLE h, std::uint8_t* p) { return fn(h, reinterpret_cast<std::uint32_t*>(p)); }); };
    auto f32 = [](auto fn) { return Fill([fn](USBIO_HANDLE h, std::uint8_t* p) { return fn(h, reinterpret_cast<float*>(p)); }); };
    struct Out {
        const char* name;
        Fill fill;
        std::size_t bytes;
    };
    const std::vector<Out> outs = {
        {"DO_GetPowerOnEnable", DO_GetPowerOnEnable, 32},
        {"DI_ReadCounterValue", u32(DI_ReadCounterValue), 4},
        {"GetDeviceNickName", [](USBIO_HANDLE h, std::uint8_t* p) { return GetDeviceNickName(h, reinterpret_cast<char*>(p)); }, 32},
        {"GetDeviceSN", [](USBIO_HANDLE h, std::uint8_t* p) { return GetDeviceSN(h, reinterpret_cast<char*>(p)); }, 32},
        {"AI_GetSupportTypeCode", AI_GetSupportTypeCode, 64},
        {"AI_GetTypeCode", AI_GetTypeCode, 16},
        {"AI_ReadValueAnalog", f32(AI_ReadValueAnalog), 64},
        {"AI_GetChSampleRate", u32(AI_GetChSampleRate), 64},
        {"AO_GetTotalSupportType", AO_GetTotalSupportType, 64},
        {"AO_GetChEnable", AO_GetChEnable, 2},
        {"AO_ReadCurValueDigital", u32(AO_ReadCurValueDigital), 64},
        {"PI_GetSupportTypeCode", PI_GetSupportTypeCode, 64},
        {"PI_GetLPFilterEnable", PI_GetLPFilterEnable, 2},
        {"PI_GetLPFilterWidth", [](USBIO_HANDLE h, std::uint8_t* p) { return PI_GetLPFilterWidth(h, reinterpret_cast<std::uint16_t*>(p)); }, 32},
        {"PI_ReadFreqValue(status)", [](USBIO_HANDLE h, std::uint8_t* p) { float v[16]; return PI_ReadFreqValue(h, v, p); }, 16},
    };
    for (const auto& m : usbsim::models()) {
        usbsim::reset();
        USBIO_HANDLE h = attach_and_open(m.id);
        ASSERT_EQ(SetDeviceNickName(h, std::string(31, 'q').c_str()), USBIO_OK);
        for (const auto& out : outs) {
            alignas(8) std::array<std::uint8_t, 128> buf;
            buf.fill(0xA5);
            out.fill(h, buf.data());
            for (std::size_t i = out.bytes; i < buf.size(); ++i)
                ASSERT_EQ(buf[i], 0xA5) << m.id << " " << out.name << " byte " << i;
        }
    }
}

}  // namespace
