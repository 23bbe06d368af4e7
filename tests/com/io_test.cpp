// Module I/O: what values reach the SDK as, and the channel functions'
// rules.
#include <cstdint>

#include "tests/com/functions.h"

namespace com_test {
namespace {

using Lines = std::vector<std::string>;

// The SDK call's log line, or "" when the function made none.
std::string sdk_line(const std::string& name) {
    for (const auto& line : pacsim::calls())
        if (line.rfind(name + "(", 0) == 0) return line;
    return "";
}

TEST_F(Serial, AnAnalogOutputReadsBackWhatWasWritten) {
    const nvValue port = open_com1();
    expect_same(icpcom_ao_write(port, integer(2), integer(0), integer(4), real(2.5)), boolean(true));
    expect_same(icpcom_ao_read(port, integer(2), integer(0), integer(4)), real(2.5));
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 0), 2.5);
}

// Values as the SDK receives them, and what the module makes of them.
TEST_F(Serial, ValuesReachTheSdkAtTheirWidths) {
    struct Case {
        const char* what;
        std::function<nvValue(const nvValue&)> call;
        std::string line;  // the SDK call as logged
        nvValue result;
        PAC_DWORD error;
    };
    const Case cases[] = {
        {"AO value 2.0", [](const nvValue& p) { return icpcom_ao_write(p, integer(2), integer(0), integer(4), real(2)); },
         "pac_WriteAO(port#1, 4098, 0, 4, 2.0) -> 1", boolean(true), 0},
        {"AO value in single precision",
         [](const nvValue& p) { return icpcom_ao_write(p, integer(2), integer(0), integer(4), real(0.1)); },
         "pac_WriteAO(port#1, 4098, 0, 4, 0.10000000149011612) -> 1", boolean(true), 0},
        // -1 as unsigned is 4294967295, whose nearest float is 2^32; the
        // module refuses it.
        {"AO power-on -1",
         [](const nvValue& p) { return icpcom_ao_writepoweronvalue(p, integer(2), integer(1), integer(4), integer(-1)); },
         "pac_WriteModulePowerOnValueAO_MF(port#1, 4098, 1, 4, 4294967296.0) -> 0", nvValue(),
         PAC_ERR_IO_VALUE_OUT_OF_RANGE},
        {"AO safe -1",
         [](const nvValue& p) { return icpcom_ao_writesafevalue(p, integer(2), integer(1), integer(4), integer(-1)); },
         "pac_WriteModuleSafeValueAO_MF(port#1, 4098, 1, 4, 4294967296.0) -> 0", nvValue(),
         PAC_ERR_IO_VALUE_OUT_OF_RANGE},
        {"DO power-on -1: its 32 bits",
         [](const nvValue& p) { return icpcom_do_writepoweronvalue(p, integer(3), integer(7), integer(-1)); },
         "pac_WriteModulePowerOnValueDO_MF(port#1, 4099, 7, 4294967295) -> 1", boolean(true), 0},
        {"DO word as a whole Real",
         [](const nvValue& p) { return icpcom_do_write(p, integer(3), integer(7), real(6)); },
         "pac_WriteDO_MF(port#1, 4099, 7, 6) -> 1", boolean(true), 0},
        {"DO word 2^32-1", [](const nvValue& p) { return icpcom_do_write(p, integer(3), integer(7), integer(-1)); }, "",
         nvValue(), 0},
        {"slot with bit 12 already set",
         [](const nvValue& p) { return icpcom_di_read(p, integer(0x1003), integer(8)); },
         "pac_ReadDI_MF(port#1, 4099, 8) -> 1", real(0), 0},
        {"slot beyond a remote address",
         [](const nvValue& p) { return icpcom_di_read(p, integer(0x2003), integer(8)); },
         "pac_ReadDI_MF(port#1, 12291, 8) -> 0", nvValue(), PAC_ERR_INVALID_SLOT_NUMBER},
        {"channel beyond the total",
         [](const nvValue& p) { return icpcom_ai_read(p, integer(1), integer(8), integer(8)); },
         "pac_ReadAI(port#1, 4097, 8, 8) -> 0", nvValue(), PAC_ERR_IO_CHANNEL_OUT_OF_RANGE},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        pacsim::use_default_rig();
        const nvValue port = open_com1();
        expect_same(c.call(port), c.result);
        EXPECT_EQ(pac_GetLastError(), c.error);
        const std::string line = c.line.empty() ? "" : sdk_line(c.line.substr(0, c.line.find('(')));
        EXPECT_EQ(line, c.line);
    }
    EXPECT_EQ(pacsim::do_power_on("COM1", 3), 0u);  // last rig: untouched
}

// A channel up to the total passes the first check; only channels 0..31 are
// read out of the word, after the group read.
TEST_F(Serial, DiChannelReadsOneBitOfTheInputWord) {
    struct Case {
        int channel, total;
        nvValue result;
        bool read;
    };
    const Case cases[] = {
        {0, 8, integer(1), true},  {1, 8, integer(0), true},   {7, 8, integer(1), true},
        {8, 8, integer(0), true},  {9, 8, nvValue(), false},   {31, 40, integer(0), true},
        {32, 40, nvValue(), true}, {-1, 8, nvValue(), true},
    };
    const nvValue port = open_com1();
    pacsim::set_di("COM1", 3, 0x81);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.channel) + " of " + std::to_string(c.total));
        pacsim::clear_calls();
        expect_same(icpcom_di_readchannel(port, integer(3), integer(c.channel), integer(c.total)), c.result);
        EXPECT_EQ(logged("pac_ReadDI_MF("), c.read ? 1 : 0);
        EXPECT_EQ(pac_GetLastError(), 0u);
    }
}

// The new output word is the input word with the channel's bit set or
// cleared: on above 0 sets, 0 and below clear.
TEST_F(Serial, DoChannelWriteStartsFromTheInputWord) {
    struct Case {
        int channel, total, on;
        std::uint32_t inputs;
        nvValue result;
        std::string write;  // pac_WriteDO_MF's line, "" when not called
    };
    const Case cases[] = {
        {1, 7, 2, 0x81, boolean(true), "pac_WriteDO_MF(port#1, 4099, 7, 3) -> 1"},
        {0, 7, -1, 0x81, boolean(true), "pac_WriteDO_MF(port#1, 4099, 7, 0) -> 1"},
        {2, 8, 0, 0x0C, boolean(true), "pac_WriteDO_MF(port#1, 4099, 8, 8) -> 1"},
        {7, 7, 1, 0x00, boolean(true), "pac_WriteDO_MF(port#1, 4099, 7, 128) -> 1"},
        {8, 7, 1, 0x00, nvValue(), ""},
        // Bit 31 makes the word negative as an Integer: no unsigned word.
        {31, 40, 1, 0x00, nvValue(), ""},
    };
    const nvValue port = open_com1();
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.channel) + " on " + std::to_string(c.on));
        pacsim::set_di("COM1", 3, c.inputs);
        icpcom_do_write(port, integer(3), integer(7), integer(0x70));
        pacsim::clear_calls();
        expect_same(icpcom_do_writechannelvalue(port, integer(3), integer(c.channel), integer(c.total), integer(c.on)),
                    c.result);
        EXPECT_EQ(sdk_line("pac_WriteDO_MF"), c.write);
    }
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x70u);
}

}  // namespace
}  // namespace com_test
