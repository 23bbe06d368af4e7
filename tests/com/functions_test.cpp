// The module I/O and watchdog functions across the board: what each one
// says on the line, and how each one fails.
#include <map>

#include "tests/com/functions.h"

namespace com_test {
namespace {

using Lines = std::vector<std::string>;

class Functions : public Serial {
protected:
    void SetUp() override {
        Serial::SetUp();
        pacsim::set_di("COM1", 3, 0x81);
        port = open_com1();
    }
    nvValue port;
};

// Each call once, on a fresh default rig with inputs 0 and 7 of the digital
// module on: the result, and the SDK calls and DCON lines it caused, in
// order. Slot n reaches the SDK as 0x1000 + n.
TEST_F(Functions, SayOnTheLineWhatTheCommandSetSays) {
    const std::map<std::string, std::pair<nvValue, Lines>> expected = {
        {"AI_Read", {real(1.5), {"dcon> #012", "dcon< >+01.500", "pac_ReadAI(port#1, 4097, 2, 8) -> 1"}}},
        {"AO_Read", {real(0), {"dcon> $0260", "dcon< !02+00.000", "pac_ReadAO(port#1, 4098, 0, 4) -> 1"}}},
        {"AO_Write", {boolean(true), {"dcon> #020+02.500", "dcon< >", "pac_WriteAO(port#1, 4098, 0, 4, 2.5) -> 1"}}},
        {"DI_Read", {real(129), {"dcon> @03", "dcon< >0081", "pac_ReadDI_MF(port#1, 4099, 8) -> 1"}}},
        {"DO_Read", {real(0), {"dcon> @03", "dcon< >0081", "pac_ReadDO_MF(port#1, 4099, 7) -> 1"}}},
        {"DO_Write", {boolean(true), {"dcon> @0305", "dcon< >", "pac_WriteDO_MF(port#1, 4099, 7, 5) -> 1"}}},
        {"DO_ReadPowerOnValue",
         {real(0), {"dcon> ~034P", "dcon< !030000", "pac_ReadModulePowerOnValueDO_MF(port#1, 4099, 7) -> 1"}}},
        {"DO_WritePowerOnValue",
         {boolean(true),
          {"dcon> ~034", "dcon< !030000", "dcon> ~0350300", "dcon< !03",
           "pac_WriteModulePowerOnValueDO_MF(port#1, 4099, 7, 3) -> 1"}}},
        {"AO_ReadPowerOnValue",
         {real(0), {"dcon> $0271", "dcon< !02+00.000", "pac_ReadModulePowerOnValueAO_MF(port#1, 4098, 1, 4) -> 1"}}},
        // The module latches only what it drives: drive, latch, drive back.
        {"AO_WritePowerOnValue",
         {boolean(true),
          {"dcon> $0261", "dcon< !02+00.000", "dcon> #021+03.000", "dcon< >", "dcon> $0241", "dcon< !02",
           "dcon> #021+00.000", "dcon< >", "pac_WriteModulePowerOnValueAO_MF(port#1, 4098, 1, 4, 3.0) -> 1"}}},
        {"DO_ReadSafeValue",
         {real(0), {"dcon> ~034S", "dcon< !030000", "pac_ReadModuleSafeValueDO_MF(port#1, 4099, 7) -> 1"}}},
        {"DO_WriteSafeValue",
         {boolean(true),
          {"dcon> ~034", "dcon< !030000", "dcon> ~0350040", "dcon< !03",
           "pac_WriteModuleSafeValueDO_MF(port#1, 4099, 7, 64) -> 1"}}},
        {"AO_ReadSafeValue",
         {real(0), {"dcon> ~0241", "dcon< !02+00.000", "pac_ReadModuleSafeValueAO_MF(port#1, 4098, 1, 4) -> 1"}}},
        {"AO_WriteSafeValue",
         {boolean(true),
          {"dcon> $0261", "dcon< !02+00.000", "dcon> #021+01.000", "dcon< >", "dcon> ~0251", "dcon< !02",
           "dcon> #021+00.000", "dcon< >", "pac_WriteModuleSafeValueAO_MF(port#1, 4098, 1, 4, 1.0) -> 1"}}},
        // The channel functions run the group bodies, which clear the last
        // error again.
        {"DI_ReadChannel",
         {integer(1),
          {"pac_SetLastError(0)", "dcon> @03", "dcon< >0081", "pac_ReadDI_MF(port#1, 4099, 8) -> 1"}}},
        // Built on the inputs (7 channels of 0x81: 0x01), channel 1 set.
        {"DO_WriteChannel",
         {boolean(true),
          {"pac_SetLastError(0)", "dcon> @03", "dcon< >0081", "pac_ReadDI_MF(port#1, 4099, 7) -> 1",
           "pac_SetLastError(0)", "dcon> @0303", "dcon< >", "pac_WriteDO_MF(port#1, 4099, 7, 3) -> 1"}}},
        {"GetWDTStatus", {boolean(false), {"dcon> ~030", "dcon< !0300", "pac_GetModuleWDTStatus(port#1, 4099) -> 0"}}},
        {"GetWDTConfig",
         {boolean(false), {"dcon> ~032", "dcon< !03000", "pac_GetModuleWDTConfig(port#1, 4099) -> 1"}}},
        {"SetWDTConfig",
         {boolean(true), {"dcon> ~033105", "dcon< !03", "pac_SetModuleWDTConfig(port#1, 4099, 1, 5, 0) -> 1"}}},
        {"ResetWDT", {boolean(true), {"dcon> ~031", "dcon< !03", "pac_ResetModuleWDT(port#1, 4099) -> 1"}}},
        {"RefreshWDT", {boolean(true), {"dcon> ~**", "pac_RefreshModuleWDT(port#1, 4099) -> 1"}}},
    };
    ASSERT_EQ(expected.size(), functions().size());
    for (const auto& f : functions()) {
        SCOPED_TRACE(f.name);
        SetUp();
        const auto& [result, lines] = expected.at(f.name);
        expect_same(f.body(port, f.args), result);
        Lines log = {"pac_SetLastError(0)"};
        log.insert(log.end(), lines.begin(), lines.end());
        EXPECT_EQ(pacsim::calls(), log);
    }
}

// A handle without an address, or any argument of the wrong kind, is refused
// with the last error 0 and no SDK call beyond clearing it.
TEST_F(Functions, WrongKindsNeverReachTheSdk) {
    auto refused = [&](const Function& f, const nvValue& handle, const Args& args, const std::string& what) {
        SCOPED_TRACE(std::string(f.name) + " " + what);
        pac_SetLastError(99);
        pacsim::clear_calls();
        EXPECT_TRUE(f.body(handle, args).isNull());
        EXPECT_EQ(pacsim::calls(), Lines{"pac_SetLastError(0)"});
        EXPECT_EQ(pac_GetLastError(), 0u);
    };
    for (const auto& f : functions()) {
        refused(f, integer(1), f.args, "handle an Integer");
        refused(f, nvValue(), f.args, "handle null");
        for (std::size_t i = 0; i < f.args.size(); ++i) {
            const bool real_value = f.args[i].isDouble();
            const bool word_value = std::string(f.name) == "DO_Write" && i == 2;  // a whole Real is a word
            Args wrong_kinds = {str("3"), nvValue(), vec({integer(3)})};
            if (!real_value && !word_value) wrong_kinds.push_back(real(3.0));
            if (real_value) wrong_kinds.push_back(integer(2));
            for (const nvValue& wrong : wrong_kinds) {
                Args args = f.args;
                args[i] = wrong;
                refused(f, port, args, "argument " + std::to_string(i + 1) + " " + wrong.repr());
            }
        }
    }
}

// A module that does not answer, or whose reply arrives damaged: the SDK's
// code and the null result (the watchdog status: false), within one read
// timeout of the port. The refresh is a broadcast and waits for no reply.
TEST_F(Functions, SilentOrDamagedRepliesGiveTheSdkCode) {
    struct Fault {
        const char* what;
        bool (*apply)(int address);
        PAC_DWORD error;
    };
    const Fault faults[] = {
        {"silent", [](int a) { return pacsim::silence("COM1", a, true); }, PAC_ERR_UART_READ_TIMEOUT},
        {"corrupt", [](int a) { return pacsim::corrupt_next_reply("COM1", a); }, PAC_ERR_UART_RESPONSE},
        {"cut", [](int a) { return pacsim::cut_next_reply("COM1", a, 0); }, PAC_ERR_UART_RESPONSE},
    };
    for (const auto& f : functions()) {
        for (const auto& fault : faults) {
            SCOPED_TRACE(std::string(f.name) + " " + fault.what);
            SetUp();
            ASSERT_TRUE(fault.apply(f.args[0].toInt()));
            const auto before = pacsim::now_ms();
            const nvValue result = f.body(port, f.args);
            const std::string name = f.name;
            if (name == "RefreshWDT") {
                expect_same(result, boolean(true));
                continue;
            }
            expect_same(result, name == "GetWDTStatus" ? boolean(false) : nvValue());
            EXPECT_EQ(pac_GetLastError(), fault.error);
            EXPECT_LE(pacsim::now_ms() - before, 301u);
        }
    }
}

}  // namespace
}  // namespace com_test
