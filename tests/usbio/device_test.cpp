// Instances, open and close, device settings, unplugging, fault injection,
// buffer bounds and the call log.
#include <array>
#include <cstring>
#include <functional>
#include <vector>

#include "fixture.h"

namespace {

using usbioDevice = UsbioTest;

constexpr std::uint16_t k2019 = 0x413;
constexpr std::uint16_t k2045_32 = 0x466;
constexpr std::uint16_t k2055 = 0x437;

TEST_F(usbioDevice, OpenAndCloseResultCodes) {
    ASSERT_TRUE(usbsim::add_module("USB2045_32", 1));
    int stranger = 0;
    auto unknown = reinterpret_cast<USBIO_HANDLE>(&stranger);
    USBIO_HANDLE a = CreateInstance();
    USBIO_HANDLE b = CreateInstance();
    USBIO_HANDLE gone = CreateInstance();
    DisposeInstance(gone);
    std::uint8_t total = 0;

    EXPECT_EQ(OpenDevice(nullptr, k2045_32, 1), USBIO_ERR_HANDLE_INVALID);
    EXPECT_EQ(OpenDevice(unknown, k2045_32, 1), USBIO_ERR_HANDLE_INVALID);
    EXPECT_EQ(GetDOTotal(unknown, &total), USBIO_ERR_HANDLE_INVALID);
    EXPECT_EQ(GetDOTotal(gone, &total), USBIO_ERR_HANDLE_INVALID);
    EXPECT_EQ(GetDOTotal(a, &total), USBIO_ERR_NOT_OPEN);
    EXPECT_EQ(CloseDevice(a), USBIO_ERR_NOT_OPEN);
    EXPECT_EQ(OpenDevice(a, k2045_32, 2), USBIO_ERR_DEVICE_NOT_FOUND);
    EXPECT_EQ(OpenDevice(a, 0, 1), USBIO_ERR_DEVICE_NOT_FOUND);
    EXPECT_EQ(OpenDevice(a, k2045_32, 1), USBIO_OK);
    EXPECT_EQ(OpenDevice(a, k2045_32, 1), USBIO_ERR_ALREADY_OPEN);
    EXPECT_EQ(OpenDevice(b, k2045_32, 1), USBIO_ERR_DEVICE_BUSY);
    EXPECT_EQ(CloseDevice(a), USBIO_OK);
    EXPECT_EQ(GetDOTotal(a, &total), USBIO_ERR_NOT_OPEN);
    EXPECT_EQ(OpenDevice(b, k2045_32, 1), USBIO_OK);
    DisposeInstance(b);  // disposing releases the module
    EXPECT_EQ(OpenDevice(a, k2045_32, 1), USBIO_OK);
    DisposeInstance(nullptr);
    DisposeInstance(unknown);
}

TEST_F(usbioDevice, BoardZeroAnswersToTheUserDefinedBoardId) {
    ASSERT_TRUE(usbsim::add_module("USB2055", 0));
    USBIO_HANDLE h = open(k2055, 16);
    struct {
        std::uint8_t id;
        std::int32_t code;
    } const ids[] = {{15, USBIO_ERR_PARAMETER}, {128, USBIO_ERR_PARAMETER}, {127, USBIO_OK}, {20, USBIO_OK}};
    for (const auto& c : ids) EXPECT_EQ(SetUserDefinedBoardID(h, c.id), c.code) << int{c.id};
    std::uint32_t id = 0;
    ASSERT_EQ(GetDeviceID(h, &id), USBIO_OK);
    EXPECT_EQ(id, k2055 | (20u << 16));
    ASSERT_EQ(CloseDevice(h), USBIO_OK);
    EXPECT_EQ(OpenDevice(h, k2055, 16), USBIO_ERR_DEVICE_NOT_FOUND);
    EXPECT_EQ(OpenDevice(h, k2055, 20), USBIO_OK);
}

TEST_F(usbioDevice, SettingRangesAndOpenDefaults) {
    USBIO_HANDLE h = attach_and_open("USB2055");
    struct {
        std::uint32_t ms;
        std::int32_t code;
    } const wdt[] = {{99, USBIO_ERR_PARAMETER}, {100, USBIO_OK}, {1800000, USBIO_OK}, {1800001, USBIO_ERR_PARAMETER}};
    for (const auto& c : wdt) EXPECT_EQ(SetSoftWDTTimeout(h, c.ms), c.code) << c.ms;
    std::uint32_t v = 0;
    EXPECT_EQ(GetSoftWDTTimeout(h, &v), USBIO_OK);
    EXPECT_EQ(v, 1800000u);

    EXPECT_EQ(GetCommTimeout(h, &v), USBIO_OK);
    EXPECT_EQ(v, 100u);
    EXPECT_EQ(SetCommTimeout(h, 250), USBIO_OK);
    EXPECT_EQ(SetAutoResetWDT(h, 0), USBIO_OK);
    EXPECT_FALSE(state("USB2055").auto_reset_wdt);
    ASSERT_EQ(CloseDevice(h), USBIO_OK);
    ASSERT_EQ(OpenDevice(h, k2055, 1), USBIO_OK);
    EXPECT_EQ(GetCommTimeout(h, &v), USBIO_OK);
    EXPECT_EQ(v, 100u);
    EXPECT_TRUE(state("USB2055").auto_reset_wdt);
    EXPECT_EQ(GetSoftWDTTimeout(h, &v), USBIO_OK);
    EXPECT_EQ(v, 1800000u);  // a module setting, kept across close and open
}

TEST_F(usbioDevice, NicknameFitsIn31Characters) {
    USBIO_HANDLE h = attach_and_open("USB2019");
    char name[32];
    std::string longest(31, 'n');
    EXPECT_EQ(SetDeviceNickName(h, longest.c_str()), USBIO_OK);
    ASSERT_EQ(GetDeviceNickName(h, name), USBIO_OK);
    EXPECT_EQ(std::string(name), longest);
    char full[32];
    std::memset(full, 'x', sizeof full);  // no terminator within 32 bytes
    EXPECT_EQ(SetDeviceNickName(h, full), USBIO_ERR_PARAMETER);
    EXPECT_EQ(SetDeviceNickName(h, nullptr), USBIO_ERR_PARAMETER);
    EXPECT_EQ(state("USB2019").nickname, longest);
    ASSERT_EQ(GetDeviceSN(h, name), USBIO_OK);
    EXPECT_EQ(std::string(name), state("USB2019").serial);
    EXPECT_FALSE(std::string(name).empty());
}

TEST_F(usbioDevice, SettingsPersistAndLoadDefaultRestoresThem) {
    USBIO_HANDLE h = attach_and_open("USB2055");
    std::uint32_t word = 0xF0;
    ASSERT_EQ(DO_SetDigitalOutputInverse(h, 0x3), USBIO_OK);
    ASSERT_EQ(DI_SetDigitalFilterWidth(h, 7), USBIO_OK);
    ASSERT_EQ(DO_SetSafetyEnable(h, &word), USBIO_OK);
    ASSERT_EQ(DO_SetPowerOnEnable(h, 2, 1), USBIO_OK);
    ASSERT_EQ(SetDeviceNickName(h, "bench"), USBIO_OK);
    ASSERT_EQ(CloseDevice(h), USBIO_OK);
    ASSERT_EQ(OpenDevice(h, k2055, 1), USBIO_OK);
    auto kept = state("USB2055");
    EXPECT_EQ(kept.do_inverse, 0x3u);
    EXPECT_EQ(kept.di_filter_width, 7);
    EXPECT_EQ(kept.do_safety_enable, 0xF0u);
    EXPECT_EQ(kept.do_power_on[2], 1);

    ASSERT_EQ(LoadDefault(h), USBIO_OK);
    auto factory = state("USB2055");
    EXPECT_EQ(factory.do_inverse, 0u);
    EXPECT_EQ(factory.di_filter_width, 0);
    EXPECT_EQ(factory.do_safety_enable, 0u);
    EXPECT_EQ(factory.do_power_on[2], 0);
    EXPECT_EQ(factory.nickname, "bench");  // identity is not a setting
}

TEST_F(usbioDevice, UnpluggedModuleTimesOutAndIsHidden) {
    ASSERT_TRUE(usbsim::add_module("USB2019", 1));
    USBIO_HANDLE h = attach_and_open("USB2055");
    ASSERT_EQ(DO_SetPowerOnEnable(h, 1, 1), USBIO_OK);
    std::uint32_t word = 0xFF;
    ASSERT_EQ(DO_WriteValue(h, &word), USBIO_OK);
    ASSERT_TRUE(usbsim::unplug(k2055, 1));
    EXPECT_EQ(DO_ReadValue(h, &word), USBIO_ERR_TIMEOUT);
    EXPECT_EQ(SYNCDevice(h), USBIO_ERR_TIMEOUT);
    EXPECT_EQ(ScanDevice(), 1);
    USBIO_HANDLE other = CreateInstance();
    EXPECT_EQ(OpenDevice(other, k2055, 1), USBIO_ERR_DEVICE_NOT_FOUND);
    ASSERT_TRUE(usbsim::replug(k2055, 1));
    EXPECT_EQ(DO_ReadValue(h, &word), USBIO_OK);
    EXPECT_EQ(word, 0x2u);  // a power cycle: the power-on outputs
    EXPECT_EQ(ScanDevice(), 2);
}

TEST_F(usbioDevice, InjectedFaultsHaveNoEffect) {
    USBIO_HANDLE h = attach_and_open("USB2045_32");
    usbsim::fail_next("DO_WriteValue", USBIO_ERR_TIMEOUT, 2);
    std::uint32_t word = 0x55;
    EXPECT_EQ(DO_WriteValue(h, &word), USBIO_ERR_TIMEOUT);
    EXPECT_EQ(DO_WriteValue(h, &word), USBIO_ERR_TIMEOUT);
    EXPECT_EQ(state("USB2045_32").do_word, 0u);
    EXPECT_EQ(DO_WriteValue(h, &word), USBIO_OK);
    EXPECT_EQ(state("USB2045_32").do_word, 0x55u);

    usbsim::fail_next("CreateInstance", 0);
    EXPECT_EQ(CreateInstance(), nullptr);
    usbsim::fail_next("OpenDevice", USBIO_ERR_DEVICE_INFO);
    USBIO_HANDLE again = CreateInstance();
    ASSERT_EQ(CloseDevice(h), USBIO_OK);
    EXPECT_EQ(OpenDevice(again, k2045_32, 1), USBIO_ERR_DEVICE_INFO);
    EXPECT_FALSE(state("USB2045_32").open);
    usbsim::fail_next("ListDevice", 0);
    std::uint16_t codes[128];
    std::uint8_t boards[128];
    EXPECT_EQ(ListDevice(codes, boards), 0);
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

TEST_F(usbioDevice, CallLogLinesAndTrace) {
    ASSERT_TRUE(usbsim::add_module("USB2045_32", 1));
    ASSERT_TRUE(usbsim::add_module("USB2026", 1));
    std::vector<std::string> traced;
    usbsim::set_trace([](const char* line, void* ctx) { static_cast<std::vector<std::string>*>(ctx)->push_back(line); },
                      &traced);
    USBIO_HANDLE h = CreateInstance();
    std::uint8_t total = 0;
    std::uint32_t word = 255;
    OpenDevice(h, k2045_32, 1);
    GetDOTotal(h, &total);
    DO_WriteValue(h, &word);
    SetDeviceNickName(h, "be\"nch");
    SetAutoResetWDT(h, -1);
    AI_SetCJCOffset(h, 0.1f);
    CloseDevice(h);
    OpenDevice(h, 0x41A, 1);
    const std::uint8_t codes[16] = {7, 8, 9, 10, 11, 12, 13, 26, 99, 99, 99, 99, 99, 99, 99, 99};
    const std::uint8_t mask[2] = {255, 0};
    AI_SetTypeCodes(h, codes);
    AO_SetChEnable(h, mask);
    AO_WriteChannelValueAnalog(h, 1, 2.5f);
    DisposeInstance(h);
    GetDOTotal(h, &total);
    GetDOTotal(nullptr, &total);
    int stranger = 0;
    GetDOTotal(reinterpret_cast<USBIO_HANDLE>(&stranger), &total);
    ScanDevice();
    const std::vector<std::string> expected = {
        "CreateInstance() -> #1",
        "OpenDevice(#1, 1126, 1) -> 0",
        "GetDOTotal(#1) -> 0",
        "DO_WriteValue(#1, [255]) -> 0",
        "SetDeviceNickName(#1, \"be\\\"nch\") -> 0",
        "SetAutoResetWDT(#1, -1) -> 0",
        "AI_SetCJCOffset(#1, 0.10000000149011612) -> 65796",
        "CloseDevice(#1) -> 0",
        "OpenDevice(#1, 1050, 1) -> 0",
        "AI_SetTypeCodes(#1, [7, 8, 9, 10, 11]) -> 0",
        "AO_SetChEnable(#1, [255, 0]) -> 0",
        "AO_WriteChannelValueAnalog(#1, 1, 2.5) -> 0",
        "DisposeInstance(#1)",
        "GetDOTotal(#1) -> 65536",
        "GetDOTotal(null) -> 65536",
        "GetDOTotal(#?) -> 65536",
        "ScanDevice() -> 2",
    };
    EXPECT_EQ(usbsim::calls(), expected);
    ASSERT_EQ(traced.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(traced[i], "sdk: " + expected[i]);
    usbsim::clear_calls();
    EXPECT_TRUE(usbsim::calls().empty());
}

}  // namespace
