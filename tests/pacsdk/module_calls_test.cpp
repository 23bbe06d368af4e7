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

}  // namespace
