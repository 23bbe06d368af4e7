// Instances, open and close, device settings, unplugging, buffer bounds and
// the call log.
#include <array>
#include <cstring>
#include <functional>
#include <vector>

#include "fixture.h"

namespace {

using usbioDevice = UsbioTest;

constexpr std::uint16_t k2045_32 = 0x466;
constexpr std::uint16_t k2055 = 0x437;

TEST_F(usbioDevice, OpenAndCloseResultCodes) {
    ASSERT_TRUE(usbsim::add_module("USB2045_32", 1));
    int stranger = 0;
    auto unknown = reinterpret_cast<USBIO_HANDLE>(&stranger);
    USBIO_HANDLE a = CreateInstance(), b = CreateInstance(), gone = CreateInstance();
    DisposeInstance(gone);
    std::uint8_t total = 0;
    EXPECT_EQ(OpenDevice(nullptr, k2045_32, 1), USBIO_ERR_HANDLE_INVALID);
    EXPECT_EQ(OpenDevice(unknown, k2045_32, 1), USBIO_ERR_HANDLE_INVALID);
    EXPECT_EQ(GetDOTotal(gone, &total), USBIO_ERR_HANDLE_INVALID);
    EXPECT_EQ(GetDOTotal(a, &total), USBIO_ERR_NOT_OPEN);
    EXPECT_EQ(OpenDevice(a, k2045_32, 2), USBIO_ERR_DEVICE_NOT_FOUND);
    EXPECT_EQ(OpenDevice(a, k2045_32, 1), USBIO_OK);
    EXPECT_EQ(OpenDevice(a, k2045_32, 1), USBIO_ERR_ALREADY_OPEN);
    EXPECT_EQ(OpenDevice(b, k2045_32, 1), USBIO_ERR_DEVICE_BUSY);
    EXPECT_EQ(CloseDevice(a), USBIO_OK);
    EXPECT_EQ(OpenDevice(b, k2045_32, 1), USBIO_OK);
    DisposeInstance(b);  // disposing releases the module
    EXPECT_EQ(OpenDevice(a, k2045_32, 1), USBIO_OK);
    DisposeInstance(nullptr);
    DisposeInstance(unknown);
    // Null buffers and a nickname without a terminator within 32 bytes.
    char full[32];
    std::memset(full, 'x', sizeof full);
    EXPECT_EQ(SetDeviceNickName(a, full), USBIO_ERR_PARAMETER);
    EXPECT_EQ(SetDeviceNickName(a, nullptr), USBIO_ERR_PARAMETER);
    EXPECT_EQ(DO_WriteValue(a, nullptr), USBIO_ERR_PARAMETER);
    EXPECT_EQ(DO_ReadValue(a, nullptr), USBIO_ERR_PARAMETER);
}

// A module on board 0 is opened by its user-defined board ID (16 to 127),
// a module setting kept across close and open; the comm timeout is not.
TEST_F(usbioDevice, UserBoardIdAndOpenDefaults) {
    ASSERT_TRUE(usbsim::add_module("USB2055", 0));
    USBIO_HANDLE h = open(k2055, 16);
    for (int id : {15, 128}) EXPECT_EQ(SetUserDefinedBoardID(h, static_cast<std::uint8_t>(id)), USBIO_ERR_PARAMETER) << id;
    ASSERT_EQ(SetUserDefinedBoardID(h, 20), USBIO_OK);
    ASSERT_EQ(SetSoftWDTTimeout(h, 100), USBIO_OK);
    EXPECT_EQ(SetSoftWDTTimeout(h, 1800001), USBIO_ERR_PARAMETER);
    ASSERT_EQ(SetCommTimeout(h, 250), USBIO_OK);
    ASSERT_EQ(SetAutoResetWDT(h, 0), USBIO_OK);
    ASSERT_EQ(CloseDevice(h), USBIO_OK);
    EXPECT_EQ(OpenDevice(h, k2055, 16), USBIO_ERR_DEVICE_NOT_FOUND);
    ASSERT_EQ(OpenDevice(h, k2055, 20), USBIO_OK);
    std::uint32_t v = 0;
    EXPECT_EQ(GetCommTimeout(h, &v), USBIO_OK);
    EXPECT_EQ(v, 100u);
    EXPECT_TRUE(usbsim::module_state(k2055, 20)->auto_reset_wdt);
    EXPECT_EQ(GetSoftWDTTimeout(h, &v), USBIO_OK);
    EXPECT_EQ(v, 100u);
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

// What the plug-in's tests do not show of the log's form: escaped text,
// signed arguments, arrays cut at the group's total, disposed, null and
// unknown instances.
TEST_F(usbioDevice, CallLogLines) {
    ASSERT_TRUE(usbsim::add_module("USB2026", 1));
    USBIO_HANDLE h = CreateInstance();
    std::uint8_t total = 0;
    OpenDevice(h, 0x41A, 1);
    SetDeviceNickName(h, "be\"nch");
    SetAutoResetWDT(h, -1);
    const std::uint8_t codes[16] = {7, 8, 9, 10, 11, 12, 13, 26, 99, 99, 99, 99, 99, 99, 99, 99};
    AI_SetTypeCodes(h, codes);
    DisposeInstance(h);
    GetDOTotal(h, &total);
    GetDOTotal(nullptr, &total);
    int stranger = 0;
    GetDOTotal(reinterpret_cast<USBIO_HANDLE>(&stranger), &total);
    EXPECT_EQ(usbsim::calls(), (std::vector<std::string>{
                                   "CreateInstance() -> #1",
                                   "OpenDevice(#1, 1050, 1) -> 0",
                                   "SetDeviceNickName(#1, \"be\\\"nch\") -> 0",
                                   "SetAutoResetWDT(#1, -1) -> 0",
                                   "AI_SetTypeCodes(#1, [7, 8, 9, 10, 11]) -> 0",
                                   "DisposeInstance(#1)",
                                   "GetDOTotal(#1) -> 65536",
                                   "GetDOTotal(null) -> 65536",
                                   "GetDOTotal(#?) -> 65536",
                               }));
    usbsim::clear_calls();
    EXPECT_TRUE(usbsim::calls().empty());
}

}  // namespace
