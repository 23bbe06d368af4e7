// The module calls end to end: SDK call, DCON lines, emulated module state.
#include <cmath>
#include <cstring>
#include <functional>

#include "sim_fixture.h"

namespace {

class pacsdkModuleCalls : public SimTest {
protected:
    void SetUp() override {
        SimTest::SetUp();
        h = open();
        pacsim::clear_calls();
        pac_SetLastError(0);
    }

    // The call failed with code, having sent nothing.
    static void expect_refused_before_sending(PAC_BOOL status, uint32_t code) {
        EXPECT_EQ(status, 0);
        EXPECT_EQ(pac_GetLastError(), code);
        EXPECT_TRUE(dcon_lines().empty());
    }

    PAC_HANDLE h = nullptr;
};

TEST_F(pacsdkModuleCalls, ChannelOutsideTheTotalIsRefusedBeforeSending) {
    struct {
        int channel, total;
    } cases[] = {{-1, 8}, {8, 8}, {0, 0}, {16, 20}};
    float v;
    for (const auto& c : cases) {
        pacsim::clear_calls();
        expect_refused_before_sending(pac_ReadAI(h, ai_slot, c.channel, c.total, &v), PAC_ERR_IO_CHANNEL_OUT_OF_RANGE);
        expect_refused_before_sending(pac_WriteAO(h, ao_slot, c.channel, c.total, 1.0f),
                                      PAC_ERR_IO_CHANNEL_OUT_OF_RANGE);
    }
    uint32_t word;
    expect_refused_before_sending(pac_ReadDI_MF(h, dio_slot, 0, &word), PAC_ERR_IO_CHANNEL_OUT_OF_RANGE);
}

TEST_F(pacsdkModuleCalls, OnlyRemoteSlotsReachAModule) {
    const int bad_slots[] = {1, 0x0FFF, 0x2001, 0x11001, 0x1101, -1, static_cast<int>(0x80001001u)};
    for (int slot : bad_slots) {
        float v;
        uint32_t word;
        pacsim::clear_calls();
        expect_refused_before_sending(pac_ReadAI(h, slot, 0, 8, &v), PAC_ERR_INVALID_SLOT_NUMBER);
        expect_refused_before_sending(pac_WriteDO_MF(h, slot, 7, 1), PAC_ERR_INVALID_SLOT_NUMBER);
        expect_refused_before_sending(pac_ReadModuleSafeValueDO_MF(h, slot, 7, &word), PAC_ERR_INVALID_SLOT_NUMBER);
        expect_refused_before_sending(pac_RefreshModuleWDT(h, slot), PAC_ERR_INVALID_SLOT_NUMBER);
        expect_refused_before_sending(pac_SetPWMDuty(h, slot, 0, 50.0f), PAC_ERR_INVALID_SLOT_NUMBER);
        expect_refused_before_sending(pac_GetModuleWDTStatus(h, slot), PAC_ERR_INVALID_SLOT_NUMBER);
    }
    float v;
    EXPECT_EQ(pac_ReadAI(h, PAC_REMOTE_IO(0x25), 0, 8, &v), 0);  // nobody at 25
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_READ_TIMEOUT);
    EXPECT_TRUE(logged("dcon> #250"));
}

TEST_F(pacsdkModuleCalls, WritesAndReadsDigitalWords) {
    ASSERT_EQ(pac_WriteDO_MF(h, dio_slot, 7, 0xFFFFFF55u), 1);  // bits from the 8th on are dropped
    EXPECT_TRUE(logged("dcon> @0355"));
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x55u);
    pacsim::set_di("COM1", 3, 0xA5);
    struct {
        int total;
        bool inputs;
        uint32_t expected;
    } reads[] = {{7, false, 0x55}, {4, false, 0x5}, {8, true, 0xA5}, {4, true, 0x5},
                 // Beyond 8 channels the four digits are one word.
                 {16, false, 0x55A5}, {16, true, 0x55A5}};
    for (const auto& r : reads) {
        uint32_t word = 0xDEAD;
        PAC_BOOL ok = r.inputs ? pac_ReadDI_MF(h, dio_slot, r.total, &word) : pac_ReadDO_MF(h, dio_slot, r.total, &word);
        ASSERT_EQ(ok, 1);
        EXPECT_EQ(word, r.expected) << r.total << (r.inputs ? " DI" : " DO");
    }
}

TEST_F(pacsdkModuleCalls, DigitalPowerOnAndSafeValuesLeaveTheOutputsAlone) {
    for (bool combined : {true, false}) {
        std::string rig = R"({"serial": [{"port": "COM1", "modules": [{"address": 3, "kind": "dio",
                              "combined_values": )" +
                          std::string(combined ? "true" : "false") + "}]}]}";
        std::string error;
        ASSERT_TRUE(pacsim::load_rig(rig, &error)) << error;
        h = open();
        ASSERT_EQ(pac_WriteDO_MF(h, dio_slot, 7, 0x11), 1);
        ASSERT_EQ(pac_WriteModulePowerOnValueDO_MF(h, dio_slot, 7, 0x0F), 1) << combined;
        ASSERT_EQ(pac_WriteModuleSafeValueDO_MF(h, dio_slot, 7, 0x60), 1) << combined;
        EXPECT_EQ(pacsim::do_power_on("COM1", 3), 0x0Fu);
        EXPECT_EQ(pacsim::do_safe("COM1", 3), 0x60u);
        EXPECT_EQ(pacsim::do_word("COM1", 3), 0x11u);
        uint32_t power_on = 0, safe = 0;
        ASSERT_EQ(pac_ReadModulePowerOnValueDO_MF(h, dio_slot, 7, &power_on), 1);
        ASSERT_EQ(pac_ReadModuleSafeValueDO_MF(h, dio_slot, 7, &safe), 1);
        EXPECT_EQ(power_on, 0x0Fu);
        EXPECT_EQ(safe, 0x60u);
        pacsim::power_cycle("COM1", 3);
        EXPECT_EQ(pacsim::do_word("COM1", 3), 0x0Fu);
    }
}

TEST_F(pacsdkModuleCalls, AnalogPowerOnAndSafeValuesLeaveTheOutputsAlone) {
    ASSERT_EQ(pac_WriteAO(h, ao_slot, 1, 4, -4.0f), 1);
    ASSERT_EQ(pac_WriteModulePowerOnValueAO_MF(h, ao_slot, 1, 4, 3.0f), 1);
    ASSERT_EQ(pac_WriteModuleSafeValueAO_MF(h, ao_slot, 1, 4, -1.5f), 1);
    EXPECT_DOUBLE_EQ(pacsim::ao_power_on("COM1", 2, 1), 3.0);
    EXPECT_DOUBLE_EQ(pacsim::ao_safe("COM1", 2, 1), -1.5);
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 1), -4.0);
    float v = 0;
    ASSERT_EQ(pac_ReadModulePowerOnValueAO_MF(h, ao_slot, 1, 4, &v), 1);
    EXPECT_FLOAT_EQ(v, 3.0f);
    ASSERT_EQ(pac_ReadModuleSafeValueAO_MF(h, ao_slot, 1, 4, &v), 1);
    EXPECT_FLOAT_EQ(v, -1.5f);

    // A value the module refuses is not stored, and the output is put back.
    EXPECT_EQ(pac_WriteModulePowerOnValueAO_MF(h, ao_slot, 1, 4, 4294967295.0f), 0);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_IO_VALUE_OUT_OF_RANGE);
    EXPECT_DOUBLE_EQ(pacsim::ao_power_on("COM1", 2, 1), 3.0);
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 1), -4.0);

    pacsim::power_cycle("COM1", 2);
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 1), 3.0);
}

TEST_F(pacsdkModuleCalls, WatchdogSettingsOutsideTheFieldAreRefused) {
    struct {
        short enabled;
        uint32_t timeout;
    } cases[] = {{1, 0}, {1, 256}, {0, 300}};
    for (const auto& c : cases) {
        pacsim::clear_calls();
        expect_refused_before_sending(pac_SetModuleWDTConfig(h, dio_slot, c.enabled, c.timeout, 0),
                                      PAC_ERR_IO_VALUE_OUT_OF_RANGE);
    }
    ASSERT_EQ(pac_SetModuleWDTConfig(h, dio_slot, 0, 0, 0), 1);  // disabling needs no timeout
}

TEST_F(pacsdkModuleCalls, SetsAndGetsPwmChannels) {
    ASSERT_EQ(pac_SetPWMFrequency(h, pwm_slot, 2, 3000), 1);
    ASSERT_EQ(pac_SetPWMDuty(h, pwm_slot, 2, 25.0f), 1);
    EXPECT_TRUE(logged("dcon> $04C2F003000"));
    EXPECT_TRUE(logged("dcon> $04C2D25.0"));
    uint32_t hertz = 0;
    float duty = 0;
    ASSERT_EQ(pac_GetPWMFrequency(h, pwm_slot, 2, &hertz), 1);
    ASSERT_EQ(pac_GetPWMDuty(h, pwm_slot, 2, &duty), 1);
    EXPECT_EQ(hertz, 2994u);  // what the module's timer can make
    EXPECT_FLOAT_EQ(duty, 25.1f);
    EXPECT_EQ(pacsim::pwm_frequency("COM1", 4, 2), 2994u);

    uint32_t mode = 9, count = 0;
    ASSERT_EQ(pac_SetPWMPulseCount(h, pwm_slot, 2, 500), 1);
    ASSERT_EQ(pac_GetPWMMode(h, pwm_slot, 2, &mode), 1);
    ASSERT_EQ(pac_GetPWMPulseCount(h, pwm_slot, 2, &count), 1);
    EXPECT_EQ(mode, 0u);  // a burst of more than one pulse ends continuous mode
    EXPECT_EQ(count, 500u);
    ASSERT_EQ(pac_SetPWMMode(h, pwm_slot, 2, 1), 1);
    ASSERT_EQ(pac_GetPWMPulseCount(h, pwm_slot, 2, &count), 1);
    EXPECT_EQ(count, 1u);

    short trigger = -1;
    ASSERT_EQ(pac_SetPWMDITriggerConfig(h, pwm_slot, 2, 2), 1);
    ASSERT_EQ(pac_GetPWMDITriggerConfig(h, pwm_slot, 2, &trigger), 1);
    EXPECT_EQ(trigger, 2);
}

TEST_F(pacsdkModuleCalls, PwmValuesOutsideTheirRangeAreRefused) {
    struct Case {
        const char* what;
        std::function<PAC_BOOL()> call;
        uint32_t error;
        bool sent;
    };
    PAC_HANDLE port = h;
    const Case cases[] = {
        {"duty 100", [&] { return pac_SetPWMDuty(port, pwm_slot, 0, 100.0f); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"duty -1", [&] { return pac_SetPWMDuty(port, pwm_slot, 0, -1.0f); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"duty 0", [&] { return pac_SetPWMDuty(port, pwm_slot, 0, 0.0f); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"frequency 1000000", [&] { return pac_SetPWMFrequency(port, pwm_slot, 0, 1000000); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"frequency 0", [&] { return pac_SetPWMFrequency(port, pwm_slot, 0, 0); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"pulses 0x10000", [&] { return pac_SetPWMPulseCount(port, pwm_slot, 0, 0x10000); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"pulses 0", [&] { return pac_SetPWMPulseCount(port, pwm_slot, 0, 0); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"mode 2", [&] { return pac_SetPWMMode(port, pwm_slot, 0, 2); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"mode 10", [&] { return pac_SetPWMMode(port, pwm_slot, 0, 10); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE, false},
        {"trigger -1", [&] { return pac_SetPWMDITriggerConfig(port, pwm_slot, 0, -1); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE,
         false},
        {"sync start 3", [&] { return pac_SyncPWMStart(port, pwm_slot, 3); }, PAC_ERR_IO_VALUE_OUT_OF_RANGE, true},
        {"channel 8", [&] { return pac_SetPWMDuty(port, pwm_slot, 8, 50.0f); }, PAC_ERR_IO_CHANNEL_OUT_OF_RANGE, false},
        {"channel -1", [&] { return pac_GetPWMPulseCount(port, pwm_slot, -1, nullptr); },
         PAC_ERR_IO_CHANNEL_OUT_OF_RANGE, false},
    };
    for (const Case& c : cases) {
        pacsim::clear_calls();
        pac_SetLastError(0);
        EXPECT_EQ(c.call(), 0) << c.what;
        EXPECT_EQ(pac_GetLastError(), c.error) << c.what;
        EXPECT_EQ(!dcon_lines().empty(), c.sent) << c.what;
    }
    EXPECT_DOUBLE_EQ(pacsim::pwm_duty("COM1", 4, 0), 50.0);
}

TEST_F(pacsdkModuleCalls, StartsPwmOutputsAndReportsStatus) {
    ASSERT_EQ(pac_SetPWMStart(h, pwm_slot, 0x0105), 1);  // the module has 8 channels
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0x05u);
    pacsim::set_di("COM1", 4, 0x80);

    unsigned char pwm[32], di[32];
    std::memset(pwm, 0xEE, sizeof pwm);
    std::memset(di, 0xEE, sizeof di);
    ASSERT_EQ(pac_GetPWMDIOStatus(h, pwm_slot, pwm, di), 1);
    const unsigned char pwm_expected[8] = {1, 0, 1, 0, 0, 0, 0, 0};
    const unsigned char di_expected[8] = {0, 0, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(std::memcmp(pwm, pwm_expected, 8), 0);
    EXPECT_EQ(std::memcmp(di, di_expected, 8), 0);
    for (std::size_t i = 8; i < 32; ++i) {
        EXPECT_EQ(pwm[i], 0xEE);
        EXPECT_EQ(di[i], 0xEE);
    }

    ASSERT_EQ(pac_SetPWMSynChannel(h, pwm_slot, 3, 1), 1);
    ASSERT_EQ(pac_SetPWMSynChannel(h, pwm_slot, 6, 1), 1);
    ASSERT_EQ(pac_SyncPWMStart(h, pwm_slot, 1), 1);
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0x4Du);
    ASSERT_EQ(pac_SyncPWMStart(h, pwm_slot, 0), 1);
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0x05u);
}

TEST_F(pacsdkModuleCalls, BurstsEndAndTriggersFire) {
    ASSERT_EQ(pac_SetPWMPulseCount(h, pwm_slot, 1, 10), 1);  // 10 pulses at 1 kHz
    ASSERT_EQ(pac_SetPWMStart(h, pwm_slot, 0x02), 1);
    pacsim::advance_ms(9);
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0x02u);
    pacsim::advance_ms(1);
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0x00u);

    ASSERT_EQ(pac_SetPWMDITriggerConfig(h, pwm_slot, 5, 1), 1);
    pacsim::set_di("COM1", 4, 0x20);
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0x20u);
    ASSERT_EQ(pac_SetPWMDITriggerConfig(h, pwm_slot, 5, 2), 1);
    pacsim::set_di("COM1", 4, 0x00);
    pacsim::set_di("COM1", 4, 0x20);
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0x00u);
    pacsim::ModuleState state;
    ASSERT_TRUE(pacsim::module_state("COM1", 4, &state));
    EXPECT_EQ(state.counters[5], 2u);
}

TEST_F(pacsdkModuleCalls, SavedPwmSettingsSurvivePowerCycle) {
    ASSERT_EQ(pac_SetPWMDuty(h, pwm_slot, 0, 20.0f), 1);
    ASSERT_EQ(pac_SavePWMConfig(h, pwm_slot), 1);
    ASSERT_EQ(pac_SetPWMDuty(h, pwm_slot, 0, 70.0f), 1);
    ASSERT_EQ(pac_SetPWMStart(h, pwm_slot, 0x01), 1);
    pacsim::power_cycle("COM1", 4);
    EXPECT_DOUBLE_EQ(pacsim::pwm_duty("COM1", 4, 0), 20.0);
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0u);
}

}  // namespace
