#include "tests/com/serial_fixture.h"

namespace com_test {
namespace {

// The text goes to the SDK whole: the SDK parses it, not the plug-in.
TEST_F(Serial, OpenHandsTheConfigurationToTheSdkWhole) {
    pac_SetLastError(99);
    pacsim::clear_calls();
    EXPECT_TRUE(icpcom_opendevice(str("COM2, 115200")).isNull());
    EXPECT_EQ(pacsim::calls(), (Lines{"pac_SetLastError(0)", "uart_Open(\"COM2, 115200\") -> -1"}));
}

// Open ports are not tracked: a closed one still goes to the SDK.
TEST_F(Serial, AClosedPortStillGoesToTheSdkAndFailsThere) {
    expect_same(icpcom_closedevice(port), boolean(true));
    for (const Call& call : {Call(icpcom_closedevice), Call([](P p) { return icpcom_sendcmd(p, str("$01M")); })}) {
        EXPECT_TRUE(call(port).isNull());
        EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
    }
    EXPECT_EQ(logged("uart_Close(").size(), 2u);
    EXPECT_EQ(logged("uart_SendCmd(").size(), 1u);
}

TEST_F(Serial, LastErrorAsCodeOrMessageLeavesTheErrorAlone) {
    struct Case {
        PAC_DWORD code;
        const char* form;
        nvValue expected;
    };
    const Case cases[] = {
        {0xFFFFFFFFu, "i", integer(-1)},
        {0, "i", integer(0)},
        // The longest text the SDK has must fit the 32-byte buffer whole.
        {PAC_ERR_IO_NOT_SUPPORT, "s", str("Not supported by the module")},
        {0x12345, "s", str("Unknown error")},
        {0, "s", str("The operation completed successfully")},
        {5, "I", nvValue()},
        {5, "s ", nvValue()},
        {5, "", nvValue()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.form) + " after " + std::to_string(c.code));
        pac_SetLastError(c.code);
        pacsim::clear_calls();
        expect_same(icpcom_last_error(str(c.form)), c.expected);
        EXPECT_EQ(pac_GetLastError(), c.code);
        // The SDK's text is asked for only with "s" and a code other than 0.
        EXPECT_EQ(logged("pac_GetErrorMessage(").size(), c.code != 0 && c.expected.isString() ? 1u : 0u);
    }
}

}  // namespace
}  // namespace com_test
