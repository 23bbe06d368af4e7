// The host watchdog end to end: armed, left without refresh, tripped, reset.
#include "tests/com/functions.h"

namespace com_test {
namespace {

TEST_F(Serial, UnrefreshedWatchdogDrivesTheSafeValuesUntilReset) {
    const nvValue port = open_com1();
    const nvValue dio = integer(3), ao = integer(2);
    ASSERT_TRUE(icpcom_do_write(port, dio, integer(7), integer(0x11)).toBool());
    ASSERT_TRUE(icpcom_do_writesafevalue(port, dio, integer(7), integer(0x40)).toBool());
    ASSERT_TRUE(icpcom_ao_writesafevalue(port, ao, integer(0), integer(4), integer(1)).toBool());
    ASSERT_TRUE(icpcom_ao_write(port, ao, integer(0), integer(4), real(5)).toBool());
    for (const nvValue& slot : {dio, ao})
        expect_same(icpcom_setwdtconfig(port, slot, integer(1), integer(10), integer(0)), boolean(true));
    expect_same(icpcom_getwdtconfig(port, dio), boolean(true));

    // Refreshed within its second, the watchdog keeps quiet.
    pacsim::advance_ms(900);
    expect_same(icpcom_refreshwdt(port, dio), boolean(true));
    pacsim::advance_ms(900);
    expect_same(icpcom_getwdtstatus(port, dio), boolean(false));
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x11u);

    pacsim::advance_ms(200);
    expect_same(icpcom_getwdtstatus(port, dio), boolean(true));
    expect_same(icpcom_getwdtstatus(port, ao), boolean(true));
    expect_same(icpcom_do_read(port, dio, integer(7)), real(0x40));
    expect_same(icpcom_ao_read(port, ao, integer(0), integer(4)), real(5));  // the last command...
    EXPECT_DOUBLE_EQ(pacsim::ao_output("COM1", 2, 0), 1.0);                  // ...the output is safe
    // Outputs take no commands until the status is reset.
    EXPECT_TRUE(icpcom_do_write(port, dio, integer(7), integer(1)).isNull());
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_RESPONSE);

    expect_same(icpcom_resetwdt(port, dio), boolean(true));
    expect_same(icpcom_getwdtstatus(port, dio), boolean(false));
    expect_same(icpcom_do_write(port, dio, integer(7), integer(1)), boolean(true));
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x01u);

    // A module that does not answer reads as false too; the code tells.
    pacsim::silence("COM1", 2, true);
    expect_same(icpcom_getwdtstatus(port, ao), boolean(false));
    expect_same(icpcom_last_error(str("i")), integer(PAC_ERR_UART_READ_TIMEOUT));
}

// The enable flag reaches the SDK as its low 16 bits; the configuration
// comes back as the Boolean of its first element, never as the vector.
TEST_F(Serial, WatchdogConfigurationAtItsWidths) {
    struct Case {
        int enabled, timeout;
        std::string line;  // "" when refused before sending
        nvValue config;    // read back afterwards
    };
    const Case cases[] = {
        {65537, 5, "pac_SetModuleWDTConfig(port#1, 4099, 1, 5, 0) -> 1", boolean(true)},
        {65536, 0, "pac_SetModuleWDTConfig(port#1, 4099, 0, 0, 0) -> 1", boolean(false)},
        {-65535, 255, "pac_SetModuleWDTConfig(port#1, 4099, 1, 255, 0) -> 1", boolean(true)},
        {0, 9, "pac_SetModuleWDTConfig(port#1, 4099, 0, 9, 0) -> 1", boolean(false)},
        {1, -1, "pac_SetModuleWDTConfig(port#1, 4099, 1, 4294967295, 0) -> 0", boolean(false)},
    };
    const nvValue port = open_com1();
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.enabled) + ", " + std::to_string(c.timeout));
        icpcom_setwdtconfig(port, integer(3), integer(0), integer(0), integer(0));
        pacsim::clear_calls();
        icpcom_setwdtconfig(port, integer(3), integer(c.enabled), integer(c.timeout), integer(0));
        EXPECT_EQ(pacsim::calls().back(), c.line);
        expect_same(icpcom_getwdtconfig(port, integer(3)), c.config);
    }
}

}  // namespace
}  // namespace com_test
