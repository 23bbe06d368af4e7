// The module calls' own rules below what the plug-in's bodies show: what is
// refused before anything is sent, digital words of more than 8 channels,
// and power-on and safe values on both kinds of digital module.
#include <functional>

#include "sim_fixture.h"

namespace {

using pacsdkModuleCalls = SimTest;

TEST_F(pacsdkModuleCalls, RefusedBeforeSending) {
    PAC_HANDLE h = open();
    float v;
    uint32_t word;
    struct Case {
        const char* what;
        std::function<PAC_BOOL()> call;
        uint32_t code;
    };
    const Case cases[] = {
        {"channel -1", [&] { return pac_ReadAI(h, ai_slot, -1, 8, &v); }, PAC_ERR_IO_CHANNEL_OUT_OF_RANGE},
        {"channel 16 of 20", [&] { return pac_WriteAO(h, ao_slot, 16, 20, 1.0f); }, PAC_ERR_IO_CHANNEL_OUT_OF_RANGE},
        {"DI total 0", [&] { return pac_ReadDI_MF(h, dio_slot, 0, &word); }, PAC_ERR_IO_CHANNEL_OUT_OF_RANGE},
        {"slot without the remote bit", [&] { return pac_ReadAI(h, 1, 0, 8, &v); }, PAC_ERR_INVALID_SLOT_NUMBER},
        {"address 0x101", [&] { return pac_RefreshModuleWDT(h, 0x1101); }, PAC_ERR_INVALID_SLOT_NUMBER},
        {"slot -1", [&] { return pac_GetModuleWDTStatus(h, -1); }, PAC_ERR_INVALID_SLOT_NUMBER},
        {"watchdog timeout 0", [&] { return pac_SetModuleWDTConfig(h, dio_slot, 1, 0, 0); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE},
        {"watchdog timeout 256", [&] { return pac_SetModuleWDTConfig(h, dio_slot, 1, 256, 0); },
         PAC_ERR_IO_VALUE_OUT_OF_RANGE},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        pacsim::clear_calls();
        pac_SetLastError(0);
        EXPECT_EQ(c.call(), 0);
        EXPECT_EQ(pac_GetLastError(), c.code);
        EXPECT_TRUE(dcon_lines().empty());
    }
    EXPECT_EQ(pac_SetModuleWDTConfig(h, dio_slot, 0, 0, 0), 1);  // disabling needs no timeout
}

// Beyond 8 channels the four digits of a reply are one word.
TEST_F(pacsdkModuleCalls, DigitalWordsAtTheirTotals) {
    PAC_HANDLE h = open();
    ASSERT_EQ(pac_WriteDO_MF(h, dio_slot, 7, 0x55), 1);
    pacsim::set_di("COM1", 3, 0xA5);
    struct {
        int total;
        bool inputs;
        uint32_t expected;
    } reads[] = {{4, false, 0x5}, {4, true, 0x5}, {16, false, 0x55A5}, {16, true, 0x55A5}};
    for (const auto& r : reads) {
        uint32_t word = 0xDEAD;
        PAC_BOOL ok = r.inputs ? pac_ReadDI_MF(h, dio_slot, r.total, &word) : pac_ReadDO_MF(h, dio_slot, r.total, &word);
        ASSERT_EQ(ok, 1);
        EXPECT_EQ(word, r.expected) << r.total << (r.inputs ? " DI" : " DO");
    }
}

// With or without the combined power-on and safe command, the values are
// kept apart from the outputs until a power cycle.
TEST_F(pacsdkModuleCalls, DigitalPowerOnAndSafeValuesLeaveTheOutputsAlone) {
    for (bool combined : {true, false}) {
        SCOPED_TRACE(combined);
        const std::string rig = R"({"serial": [{"port": "COM1", "modules": [{"address": 3, "kind": "dio", )"
                                R"("combined_values": )" + std::string(combined ? "true}]}]}" : "false}]}]}");
        std::string error;
        ASSERT_TRUE(pacsim::load_rig(rig, &error)) << error;
        PAC_HANDLE h = open();
        ASSERT_EQ(pac_WriteDO_MF(h, dio_slot, 7, 0x11), 1);
        ASSERT_EQ(pac_WriteModulePowerOnValueDO_MF(h, dio_slot, 7, 0x0F), 1);
        ASSERT_EQ(pac_WriteModuleSafeValueDO_MF(h, dio_slot, 7, 0x60), 1);
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

}  // namespace
