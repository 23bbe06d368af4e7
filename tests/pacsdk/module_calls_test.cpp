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

TEST_F(pacsdkModuleCalls, ReadsAnalogInputs) {
    float v = 0;
    for (int ch = 0; ch < 8; ++ch) {
        ASSERT_EQ(pac_ReadAI(h, ai_slot, ch, 8, &v), 1);
        EXPECT_FLOAT_EQ(v, 0.5f * static_cast<float>(ch + 1));
    }
    pacsim::set_ai("COM1", 1, 3, -7.25);
    ASSERT_EQ(pac_ReadAI(h, ai_slot, 3, 8, &v), 1);
    EXPECT_FLOAT_EQ(v, -7.25f);
    EXPECT_TRUE(logged("dcon> #013"));
    pacsim::set_ai("COM1", 1, 0, 11.0);  // over range reads as the saturated value
    ASSERT_EQ(pac_ReadAI(h, ai_slot, 0, 8, &v), 1);
    EXPECT_FLOAT_EQ(v, 9999.9f);
}

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

TEST_F(pacsdkModuleCalls, WritesAndReadsAnalogOutputs) {
    ASSERT_EQ(pac_WriteAO(h, ao_slot, 1, 4, 2.5f), 1);
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 1), 2.5);
    float v = 0;
    ASSERT_EQ(pac_ReadAO(h, ao_slot, 1, 4, &v), 1);
    EXPECT_FLOAT_EQ(v, 2.5f);

    EXPECT_EQ(pac_WriteAO(h, ao_slot, 1, 4, 12.0f), 0);  // the module clamps and says so
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_IO_VALUE_OUT_OF_RANGE);
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 1), 10.0);

    pacsim::clear_calls();
    expect_refused_before_sending(pac_WriteAO(h, ao_slot, 0, 4, NAN), PAC_ERR_IO_VALUE_OUT_OF_RANGE);
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

TEST_F(pacsdkModuleCalls, WatchdogTimeoutDrivesSafeValuesUntilReset) {
    ASSERT_EQ(pac_WriteDO_MF(h, dio_slot, 7, 0x02), 1);
    ASSERT_EQ(pac_WriteModuleSafeValueDO_MF(h, dio_slot, 7, 0x40), 1);
    ASSERT_EQ(pac_WriteAO(h, ao_slot, 0, 4, 5.0f), 1);
    ASSERT_EQ(pac_WriteModuleSafeValueAO_MF(h, ao_slot, 0, 4, -1.0f), 1);
    ASSERT_EQ(pac_WriteDO_MF(h, dio_slot, 7, 0x11), 1);
    ASSERT_EQ(pac_SetPWMStart(h, pwm_slot, 0x03), 1);
    for (int slot : {ao_slot, dio_slot, pwm_slot}) ASSERT_EQ(pac_SetModuleWDTConfig(h, slot, 1, 10, 0), 1);

    short enabled = 0;
    uint32_t timeout = 0;
    int overwrite = 5;
    ASSERT_EQ(pac_GetModuleWDTConfig(h, dio_slot, &enabled, &timeout, &overwrite), 1);
    EXPECT_EQ(enabled, 1);
    EXPECT_EQ(timeout, 10u);
    EXPECT_EQ(overwrite, 0);

    pacsim::advance_ms(999);
    ASSERT_EQ(pac_RefreshModuleWDT(h, ai_slot), 1);  // a broadcast: any module's slot will do
    EXPECT_EQ(dcon_lines().back(), "dcon> ~**");
    pacsim::advance_ms(999);
    EXPECT_EQ(pac_GetModuleWDTStatus(h, dio_slot), 0);
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x11u);
    pacsim::advance_ms(1);

    EXPECT_EQ(pac_GetModuleWDTStatus(h, dio_slot), 1);
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x40u);
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 0), -1.0);
    EXPECT_EQ(pacsim::pwm_running("COM1", 4), 0u);
    EXPECT_EQ(pac_WriteDO_MF(h, dio_slot, 7, 0x01), 0);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_RESPONSE);
    EXPECT_EQ(pac_WriteAO(h, ao_slot, 0, 4, 1.0f), 0);
    EXPECT_EQ(pac_SetPWMStart(h, pwm_slot, 0x01), 0);

    ASSERT_EQ(pac_ResetModuleWDT(h, dio_slot), 1);
    EXPECT_EQ(pac_GetModuleWDTStatus(h, dio_slot), 0);
    EXPECT_EQ(pac_WriteDO_MF(h, dio_slot, 7, 0x01), 1);
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x01u);
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

TEST_F(pacsdkModuleCalls, StatusOfAnUnreachableModuleIsZeroWithTheCause) {
    pacsim::silence("COM1", 3, true);
    EXPECT_EQ(pac_GetModuleWDTStatus(h, dio_slot), 0);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_READ_TIMEOUT);
    EXPECT_TRUE(logged("pac_GetModuleWDTStatus(port#1, 4099) -> 0"));
}

TEST_F(pacsdkModuleCalls, DamagedRepliesFailTheCall) {
    float v;
    pacsim::cut_next_reply("COM1", 1, 4);
    EXPECT_EQ(pac_ReadAI(h, ai_slot, 0, 8, &v), 0);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_RESPONSE);
    EXPECT_EQ(dcon_lines().back(), "dcon< >+00");

    pacsim::corrupt_next_reply("COM1", 1);
    EXPECT_EQ(pac_ReadAI(h, ai_slot, 0, 8, &v), 0);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_RESPONSE);

    // A call the module kind does not know goes unanswered.
    EXPECT_EQ(pac_SetPWMDuty(h, ai_slot, 0, 50.0f), 0);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_READ_TIMEOUT);

    ASSERT_EQ(pac_ReadAI(h, ai_slot, 0, 8, &v), 1);
    EXPECT_FLOAT_EQ(v, 0.5f);
}

}  // namespace
