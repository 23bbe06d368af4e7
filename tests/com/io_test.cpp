// The channel functions' rules, and a tripped host watchdog end to end.
#include <cstdint>

#include "tests/com/serial_fixture.h"

namespace com_test {
namespace {

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
    pacsim::set_di("COM1", 3, 0x81);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.channel) + " of " + std::to_string(c.total));
        pacsim::clear_calls();
        expect_same(icpcom_di_readchannel(port, integer(3), integer(c.channel), integer(c.total)), c.result);
        EXPECT_EQ(logged("pac_ReadDI_MF(").size(), c.read ? 1u : 0u);
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
        Lines write;  // pac_WriteDO_MF's line
    };
    const Case cases[] = {
        {1, 7, 2, 0x81, boolean(true), {"port#1, 4099, 7, 3) -> 1"}},
        {0, 7, -1, 0x81, boolean(true), {"port#1, 4099, 7, 0) -> 1"}},
        {2, 8, 0, 0x0C, boolean(true), {"port#1, 4099, 8, 8) -> 1"}},
        {7, 7, 1, 0x00, boolean(true), {"port#1, 4099, 7, 128) -> 1"}},
        {8, 7, 1, 0x00, nvValue(), {}},
        // Bit 31 makes the word negative as an Integer: no unsigned word.
        {31, 40, 1, 0x00, nvValue(), {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.channel) + " on " + std::to_string(c.on));
        pacsim::set_di("COM1", 3, c.inputs);
        icpcom_do_write(port, integer(3), integer(7), integer(0x70));
        pacsim::clear_calls();
        expect_same(icpcom_do_writechannelvalue(port, integer(3), integer(c.channel), integer(c.total), integer(c.on)),
                    c.result);
        EXPECT_EQ(logged("pac_WriteDO_MF("), c.write);
    }
}

// Armed and left without refresh, the watchdog trips: the analog output
// falls back to its safe value while the module reports the last command,
// and output commands are refused. (Refresh, the digital safe value and the
// reset are the emulator's host_watchdog and watchdog_refresh scenarios.)
TEST_F(Serial, TrippedWatchdogRefusesOutputCommands) {
    const nvValue dio = integer(3), ao = integer(2);
    ASSERT_TRUE(icpcom_ao_writesafevalue(port, ao, integer(0), integer(4), integer(1)).toBool());
    ASSERT_TRUE(icpcom_ao_write(port, ao, integer(0), integer(4), real(5)).toBool());
    for (const nvValue& slot : {dio, ao})
        expect_same(icpcom_setwdtconfig(port, slot, integer(1), integer(10), integer(0)), boolean(true));
    expect_same(icpcom_getwdtconfig(port, dio), boolean(true));

    pacsim::advance_ms(1100);
    expect_same(icpcom_getwdtstatus(port, ao), boolean(true));
    expect_same(icpcom_ao_read(port, ao, integer(0), integer(4)), real(5));  // the last command...
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 0), 1.0);                  // ...the output is safe
    EXPECT_TRUE(icpcom_do_write(port, dio, integer(7), integer(1)).isNull());
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_RESPONSE);
    EXPECT_TRUE(icpcom_ao_write(port, ao, integer(0), integer(4), real(2)).isNull());
}

}  // namespace
}  // namespace com_test
