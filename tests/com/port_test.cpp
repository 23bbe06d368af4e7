#include "com/commands.h"
#include "com/port.h"
#include "tests/com/serial_fixture.h"

namespace com_test {
namespace {

// The text goes to the SDK whole; anything else is refused before it.
TEST_F(Serial, OpenHandsTheConfigurationToTheSdkWhole) {
    struct Case {
        nvValue configuration;
        bool opens;
        PAC_DWORD error;
    };
    const Case cases[] = {
        {str("COM1,115200,N,8,1"), true, 0},
        {str("COM1,9600"), true, 0},
        {str("COM1,115200,X,8,1"), false, PAC_ERR_INVALID_COMPORT_NUMBER},
        {str("COM1, 115200"), false, PAC_ERR_INVALID_COMPORT_NUMBER},
        {str(""), false, PAC_ERR_INVALID_COMPORT_NUMBER},
        {str("COM7,115200,N,8,1"), false, PAC_ERR_UART_OPEN_FAILED},
        {integer(5), false, 0},
        {vec({str("COM1")}), false, 0},
        {nvValue(), false, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.configuration.repr());
        pacsim::use_default_rig();
        pac_SetLastError(99);
        const nvValue port = icpcom_opendevice(c.configuration);
        EXPECT_EQ(port.pointer() != nullptr, c.opens);
        EXPECT_EQ(port.isNull(), !c.opens);
        EXPECT_EQ(pac_GetLastError(), c.error);
        const int calls = c.configuration.isString() ? 1 : 0;
        EXPECT_EQ(logged("uart_Open("), calls);
        EXPECT_EQ(logged("uart_Open(\"" + c.configuration.toString() + "\")"), calls);
    }
}

// A value carries a port only through its address: no ordinary Integer, no
// string, no wrapped zero handle reaches the port.
TEST_F(Serial, HandlesWithoutAnAddressAreRefused) {
    for (const nvValue& handle : {nvValue(), integer(1), str("COM1"), icp::make::handle(nullptr)}) {
        pac_SetLastError(99);
        EXPECT_TRUE(icpcom_closedevice(handle).isNull());
        EXPECT_EQ(pac_GetLastError(), 0u);
        pac_SetLastError(99);
        EXPECT_TRUE(icpcom_sendcmd(handle, str("$01M")).isNull());
        EXPECT_EQ(pac_GetLastError(), 0u);
        pac_SetLastError(99);
        EXPECT_TRUE(icpcom_rec_cmd_exec(handle, vec({str("$01M")})).isNull());
        EXPECT_EQ(pac_GetLastError(), 99u);
    }
    EXPECT_EQ(logged("uart_"), 0);
}

TEST_F(Serial, AClosedPortStillGoesToTheSdkAndFailsThere) {
    const nvValue port = open_com1();
    expect_same(icpcom_closedevice(port), icp::make::boolean(true));
    EXPECT_FALSE(pacsim::port_open("COM1"));
    EXPECT_TRUE(icpcom_closedevice(port).isNull());
    EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
    EXPECT_TRUE(icpcom_sendcmd(port, str("$01M")).isNull());
    EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
    EXPECT_EQ(logged("uart_Close("), 2);
    EXPECT_EQ(logged("uart_SendCmd("), 1);
}

TEST_F(Serial, LastErrorAsCodeOrMessageLeavesTheErrorAlone) {
    struct Case {
        PAC_DWORD code;
        nvValue form;
        nvValue expected;
    };
    const Case cases[] = {
        {PAC_ERR_UART_READ_TIMEOUT, str("i"), integer(0x50002)},
        {0xFFFFFFFFu, str("i"), integer(-1)},
        {0, str("i"), integer(0)},
        {PAC_ERR_UART_READ_TIMEOUT, str("s"), str("Module response timeout")},
        // The longest text the SDK has must fit the 32-byte buffer whole.
        {PAC_ERR_IO_NOT_SUPPORT, str("s"), str("Not supported by the module")},
        {0x12345, str("s"), str("Unknown error")},
        {0, str("s"), str("The operation completed successfully")},
        {5, str("I"), nvValue()},
        {5, str("S"), nvValue()},
        {5, str("s "), nvValue()},
        {5, str(""), nvValue()},
        {5, integer(1), nvValue()},
        {5, nvValue(), nvValue()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.form.repr() + " after " + std::to_string(c.code));
        pac_SetLastError(c.code);
        pacsim::clear_calls();
        expect_same(icpcom_last_error(c.form), c.expected);
        EXPECT_EQ(pac_GetLastError(), c.code);
        // The SDK's text is asked for only with "s" and a code other than 0.
        EXPECT_EQ(logged("pac_GetErrorMessage("), c.code != 0 && c.expected.isString() ? 1 : 0);
    }
}

}  // namespace
}  // namespace com_test
