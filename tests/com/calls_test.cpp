// Every module call once (the channel functions built on them aside, see
// io_test.cpp; the analog output's read and write are icphost's
// serial_trace test), on a fresh default rig with inputs 0 and 7 of the digital
// module on: the result, the last error, and the DCON lines and SDK
// call it caused, in order. The arguments also show the widths at which
// values reach the SDK: slots with bit 12 set (0x1000 + n), channels,
// triggers, sync flags, masks and the watchdog enable as their low 16 bits
// read as signed, frequencies, counts, timeouts and power-on or safe words
// as 32 bits, reals as the nearest float. Nothing is range-checked here: the
// SDK or the module refuses what it cannot do.
#include "plugin/catalogue.h"
#include "tests/com/serial_fixture.h"

namespace com_test {
namespace {

// An Integer or, written with a point, a Real.
struct Arg {
    nvValue value;
    Arg(int i) : value(integer(i)) {}
    Arg(double x) : value(real(x)) {}
};

struct Row {
    const char* function;
    std::vector<Arg> args;  // after the port
    nvValue result;
    PAC_DWORD error;
    Lines log;  // after pac_SetLastError(0)
    void (*before)(P port) = nullptr;
};

nvValue call(const char* script_name, const nvValue& port, const std::vector<Arg>& args) {
    std::vector<nvValue> values = {port};
    for (const Arg& a : args) values.push_back(a.value);
    for (const icp::Function* f : icp::catalogue())
        if (script_name == std::string(f->script_name)) return f->invoke(values);
    ADD_FAILURE() << "no function " << script_name;
    return {};
}

const nvValue no = nvValue();
const nvValue yes = boolean(true);
constexpr PAC_DWORD out_of_range = PAC_ERR_IO_VALUE_OUT_OF_RANGE;

TEST_F(Serial, EachCallSaysOnTheLineWhatTheCommandSetSays) {
    const Row rows[] = {
        {"ICPCOM_AI_Read", {1, 2, 8}, real(1.5), 0,
         {"dcon> #012", "dcon< >+01.500", "pac_ReadAI(port#1, 4097, 2, 8) -> 1"}},
        {"ICPCOM_AI_Read", {1, 8, 8}, no, PAC_ERR_IO_CHANNEL_OUT_OF_RANGE, {"pac_ReadAI(port#1, 4097, 8, 8) -> 0"}},
        {"ICPCOM_DI_Read", {0x1003, 8}, real(129), 0,
         {"dcon> @03", "dcon< >0081", "pac_ReadDI_MF(port#1, 4099, 8) -> 1"}},
        {"ICPCOM_DI_Read", {0x2003, 8}, no, PAC_ERR_INVALID_SLOT_NUMBER, {"pac_ReadDI_MF(port#1, 12291, 8) -> 0"}},
        {"ICPCOM_DO_Read", {3, 7}, real(0), 0, {"dcon> @03", "dcon< >0081", "pac_ReadDO_MF(port#1, 4099, 7) -> 1"}},
        // The word is an unsigned whole number: a whole Real does.
        {"ICPCOM_DO_Write", {3, 7, 6.0}, yes, 0, {"dcon> @0306", "dcon< >", "pac_WriteDO_MF(port#1, 4099, 7, 6) -> 1"}},
        {"ICPCOM_DO_ReadPowerOnValue", {3, 7}, real(0), 0,
         {"dcon> ~034P", "dcon< !030000", "pac_ReadModulePowerOnValueDO_MF(port#1, 4099, 7) -> 1"}},
        {"ICPCOM_DO_WritePowerOnValue", {3, 7, -1}, yes, 0,
         {"dcon> ~034", "dcon< !030000", "dcon> ~0357F00", "dcon< !03",
          "pac_WriteModulePowerOnValueDO_MF(port#1, 4099, 7, 4294967295) -> 1"}},
        {"ICPCOM_AO_ReadPowerOnValue", {2, 1, 4}, real(0), 0,
         {"dcon> $0271", "dcon< !02+00.000", "pac_ReadModulePowerOnValueAO_MF(port#1, 4098, 1, 4) -> 1"}},
        // The module latches only what it drives: drive, latch, drive back.
        {"ICPCOM_AO_WritePowerOnValue", {2, 1, 4, 3}, yes, 0,
         {"dcon> $0261", "dcon< !02+00.000", "dcon> #021+03.000", "dcon< >", "dcon> $0241", "dcon< !02",
          "dcon> #021+00.000", "dcon< >", "pac_WriteModulePowerOnValueAO_MF(port#1, 4098, 1, 4, 3.0) -> 1"}},
        // -1 as unsigned is 4294967295, whose nearest float is 2^32: the
        // module refuses it, and its output is driven back.
        {"ICPCOM_AO_WritePowerOnValue", {2, 1, 4, -1}, no, out_of_range,
         {"dcon> $0261", "dcon< !02+00.000", "dcon> #021+4294967296.000", "dcon< ?02", "dcon> #021+00.000", "dcon< >",
          "pac_WriteModulePowerOnValueAO_MF(port#1, 4098, 1, 4, 4294967296.0) -> 0"}},
        {"ICPCOM_DO_ReadSafeValue", {3, 7}, real(0), 0,
         {"dcon> ~034S", "dcon< !030000", "pac_ReadModuleSafeValueDO_MF(port#1, 4099, 7) -> 1"}},
        {"ICPCOM_DO_WriteSafeValue", {3, 7, 64}, yes, 0,
         {"dcon> ~034", "dcon< !030000", "dcon> ~0350040", "dcon< !03",
          "pac_WriteModuleSafeValueDO_MF(port#1, 4099, 7, 64) -> 1"}},
        {"ICPCOM_AO_ReadSafeValue", {2, 1, 4}, real(0), 0,
         {"dcon> ~0241", "dcon< !02+00.000", "pac_ReadModuleSafeValueAO_MF(port#1, 4098, 1, 4) -> 1"}},
        {"ICPCOM_AO_WriteSafeValue", {2, 1, 4, 1}, yes, 0,
         {"dcon> $0261", "dcon< !02+00.000", "dcon> #021+01.000", "dcon< >", "dcon> ~0251", "dcon< !02",
          "dcon> #021+00.000", "dcon< >", "pac_WriteModuleSafeValueAO_MF(port#1, 4098, 1, 4, 1.0) -> 1"}},
        {"ICPCOM_AO_WriteSafeValue", {2, 1, 4, -1}, no, out_of_range,
         {"dcon> $0261", "dcon< !02+00.000", "dcon> #021+4294967296.000", "dcon< ?02", "dcon> #021+00.000", "dcon< >",
          "pac_WriteModuleSafeValueAO_MF(port#1, 4098, 1, 4, 4294967296.0) -> 0"}},
        // The host watchdog. The configuration comes back as the Boolean of
        // its first element (here disabled, with a timeout).
        {"ICPCOM_GetWDTStatus", {3}, boolean(false), 0,
         {"dcon> ~030", "dcon< !0300", "pac_GetModuleWDTStatus(port#1, 4099) -> 0"}},
        {"ICPCOM_GetWDTConfig", {3}, boolean(false), 0,
         {"dcon> ~032", "dcon< !03009", "pac_GetModuleWDTConfig(port#1, 4099) -> 1"},
         [](P p) { icpcom_setwdtconfig(p, integer(3), integer(0), integer(9), integer(0)); }},
        {"ICPCOM_SetWDTConfig", {3, -65535, 5, 0}, yes, 0,
         {"dcon> ~033105", "dcon< !03", "pac_SetModuleWDTConfig(port#1, 4099, 1, 5, 0) -> 1"}},
        {"ICPCOM_SetWDTConfig", {3, 65536, 5, 0}, yes, 0,
         {"dcon> ~033005", "dcon< !03", "pac_SetModuleWDTConfig(port#1, 4099, 0, 5, 0) -> 1"}},
        {"ICPCOM_SetWDTConfig", {3, 1, -1, 0}, no, out_of_range,
         {"pac_SetModuleWDTConfig(port#1, 4099, 1, 4294967295, 0) -> 0"}},
        {"ICPCOM_ResetWDT", {3}, yes, 0, {"dcon> ~031", "dcon< !03", "pac_ResetModuleWDT(port#1, 4099) -> 1"}},
        {"ICPCOM_RefreshWDT", {3}, yes, 0, {"dcon> ~**", "pac_RefreshModuleWDT(port#1, 4099) -> 1"}},
        {"ICPCOM_SetPWMDuty", {0x1004, 65537, 0.1}, yes, 0,
         {"dcon> $04C1D00.1", "dcon< !0400.1", "pac_SetPWMDuty(port#1, 4100, 1, 0.10000000149011612) -> 1"}},
        {"ICPCOM_SetPWMDuty", {4, 0, 100.0}, no, out_of_range, {"pac_SetPWMDuty(port#1, 4100, 0, 100.0) -> 0"}},
        {"ICPCOM_GetPWMDuty", {4, 0}, real(50.0), 0,
         {"dcon> $04C0D", "dcon< !0450.0", "pac_GetPWMDuty(port#1, 4100, 0) -> 1"}},
        {"ICPCOM_GetPWMDuty", {4, 65535}, no, PAC_ERR_IO_CHANNEL_OUT_OF_RANGE,
         {"pac_GetPWMDuty(port#1, 4100, -1) -> 0"}},
        {"ICPCOM_SetPWMFrequency", {4, 2, 3000}, yes, 0,
         {"dcon> $04C2F003000", "dcon< !04002994", "pac_SetPWMFrequency(port#1, 4100, 2, 3000) -> 1"}},
        {"ICPCOM_SetPWMFrequency", {4, 2, -1}, no, out_of_range,
         {"pac_SetPWMFrequency(port#1, 4100, 2, 4294967295) -> 0"}},
        {"ICPCOM_GetPWMFrequency", {4, 0}, integer(1000), 0,
         {"dcon> $04C0F", "dcon< !04001000", "pac_GetPWMFrequency(port#1, 4100, 0) -> 1"}},
        {"ICPCOM_SetPWMMode", {4, 0x10005, 0}, yes, 0,
         {"dcon> $04C5M0", "dcon< !04", "pac_SetPWMMode(port#1, 4100, 5, 0) -> 1"}},
        {"ICPCOM_SetPWMMode", {4, 0, 2}, no, out_of_range,
         {"dcon> $04C0M2", "dcon< ?04", "pac_SetPWMMode(port#1, 4100, 0, 2) -> 0"}},
        {"ICPCOM_GetPWMMode", {4, 0}, integer(1), 0,
         {"dcon> $04C0M", "dcon< !041", "pac_GetPWMMode(port#1, 4100, 0) -> 1"}},
        {"ICPCOM_SetPWMTrigger", {4, 6, 0x20002}, yes, 0,
         {"dcon> $04C6T2", "dcon< !04", "pac_SetPWMDITriggerConfig(port#1, 4100, 6, 2) -> 1"}},
        {"ICPCOM_GetPWMTrigger", {4, 0}, integer(0), 0,
         {"dcon> $04C0T", "dcon< !040", "pac_GetPWMDITriggerConfig(port#1, 4100, 0) -> 1"}},
        {"ICPCOM_SetPWMStart", {4, 0x10001}, yes, 0,
         {"dcon> @04DO01", "dcon< !04", "pac_SetPWMStart(port#1, 4100, 1) -> 1"}},
        {"ICPCOM_SetPWMStart", {4, 0xFFFF}, yes, 0,
         {"dcon> @04DOFF", "dcon< !04", "pac_SetPWMStart(port#1, 4100, -1) -> 1"}},
        {"ICPCOM_SetPWMSynChannel", {4, 7, 0x10001}, yes, 0,
         {"dcon> $04C7N1", "dcon< !04", "pac_SetPWMSynChannel(port#1, 4100, 7, 1) -> 1"}},
        // The sync getter is the trigger getter (see pwm.cpp).
        {"ICPCOM_GetPWMSynChannel", {4, 0}, integer(0), 0,
         {"dcon> $04C0T", "dcon< !040", "pac_GetPWMDITriggerConfig(port#1, 4100, 0) -> 1"}},
        {"ICPCOM_SyncPWMStart", {4, 0x10000}, yes, 0,
         {"dcon> $04Y0", "dcon< !04", "pac_SyncPWMStart(port#1, 4100, 0) -> 1"}},
        {"ICPCOM_SavePWMConfig", {0x1004}, yes, 0, {"dcon> $04W", "dcon< !04", "pac_SavePWMConfig(port#1, 4100) -> 1"}},
        {"ICPCOM_GetPWMDIOStatus", {4}, vec({real(0), real(0)}), 0,
         {"dcon> @04DI", "dcon< !040000", "pac_GetPWMDIOStatus(port#1, 4100) -> 1"}},
        {"ICPCOM_SetPWMPulseCount", {4, 3, 500}, yes, 0,
         {"dcon> $04C3P01F4", "dcon< !04", "pac_SetPWMPulseCount(port#1, 4100, 3, 500) -> 1"}},
        {"ICPCOM_SetPWMPulseCount", {4, 3, 0x10000}, no, out_of_range,
         {"pac_SetPWMPulseCount(port#1, 4100, 3, 65536) -> 0"}},
        {"ICPCOM_GetPWMPulseCount", {4, 0}, integer(1), 0,
         {"dcon> $04C0P", "dcon< !040001", "pac_GetPWMPulseCount(port#1, 4100, 0) -> 1"}},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        SCOPED_TRACE("row " + std::to_string(i) + ": " + row.function);
        SetUp();
        pacsim::set_di("COM1", 3, 0x81);
        if (row.before) row.before(port);
        pacsim::clear_calls();
        expect_same(call(row.function, port, row.args), row.result);
        Lines log = {"pac_SetLastError(0)"};
        log.insert(log.end(), row.log.begin(), row.log.end());
        EXPECT_EQ(pacsim::calls(), log);
        EXPECT_EQ(pac_GetLastError(), row.error);
    }
}

}  // namespace
}  // namespace com_test
