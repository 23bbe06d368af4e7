#include "com/commands.h"
#include "com/port.h"
#include "tests/com/serial_fixture.h"

namespace com_test {
namespace {

using Lines = std::vector<std::string>;

const std::string nineteen = "$01M" + std::string(15, '0');

TEST_F(Serial, SendCmdTakesOneToNineteenCharactersAndCutsAtAZeroByte) {
    struct Case {
        nvValue command;
        Lines on_the_wire;
    };
    const Case cases[] = {
        {str("$01M"), {"$01M"}},
        {str("~"), {"~"}},
        {str(nineteen), {nineteen}},
        {str(std::string("$01M\0$02M", 9)), {"$01M"}},
        {str(""), {}},
        {str(nineteen + "0"), {}},
        {integer(1), {}},
    };
    const nvValue port = open_com1();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command.repr());
        pacsim::clear_calls();
        pac_SetLastError(99);
        const nvValue reply = icpcom_sendcmd(port, c.command);
        EXPECT_EQ(sent(), c.on_the_wire);
        if (c.on_the_wire.empty()) {
            EXPECT_TRUE(reply.isNull());
            EXPECT_EQ(pac_GetLastError(), 0u);
        }
    }
}

TEST_F(Serial, SendCmdAnswersTheReplyOrNullWithTheSdkError) {
    struct Case {
        const char* command;
        nvValue reply;
        PAC_DWORD error;
    };
    const Case cases[] = {
        {"$01M", str("!017017"), 0},
        {"$02M", nvValue(), PAC_ERR_UART_READ_TIMEOUT},  // silenced below
        {"$09M", nvValue(), PAC_ERR_UART_READ_TIMEOUT},  // nobody at 9
    };
    const nvValue port = open_com1();
    pacsim::silence("COM1", 2, true);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        pac_SetLastError(99);
        expect_same(icpcom_sendcmd(port, str(c.command)), c.reply);
        EXPECT_EQ(pac_GetLastError(), c.error);
    }
    // Eight readings do not fit: the reply comes back cut to 19 characters.
    EXPECT_EQ(icpcom_sendcmd(port, str("#01")).toString().size(), 19u);
}

TEST_F(Serial, RecorderKeepsWholeCommandsThatWentOutInOrder) {
    const nvValue port = open_com1();
    pacsim::silence("COM1", 2, true);
    const std::string with_zero("$04M\0tail", 9);
    expect_same(icpcom_rec_cmd_start(), icp::make::boolean(true));
    for (const auto& command : {std::string("$01M"), std::string("$02M"), nineteen + "0", with_zero})
        icpcom_sendcmd(port, str(command));
    EXPECT_EQ(icp::recorded_commands, (Lines{"$01M", with_zero}));

    const nvValue first = icpcom_rec_cmd_stop();
    ASSERT_EQ(first.size(), 2u);
    EXPECT_EQ(first.value(0).toString(), "$01M");
    EXPECT_EQ(first.value(1).toString(), with_zero);
    icpcom_sendcmd(port, str("$03M"));  // not recording any more
    expect_same(icpcom_rec_cmd_stop(), first);

    // Replaying while recording records the replay again.
    icpcom_rec_cmd_start();
    icpcom_sendcmd(port, str("$01M"));
    icpcom_rec_cmd_exec(port, first);
    EXPECT_EQ(icp::recorded_commands, (Lines{"$01M", "$01M", with_zero}));

    icpcom_rec_cmd_start();
    EXPECT_TRUE(icpcom_rec_cmd_stop().isNull());
}

TEST_F(Serial, ExecSendsEachElementThroughSendCmd) {
    struct Case {
        nvValue commands;
        nvValue result;
        Lines on_the_wire;
        PAC_DWORD error;  // of the last element; 99 when nothing was tried
    };
    const Case cases[] = {
        {vec({integer(1), integer(2)}), icp::make::boolean(true), {}, 0},
        {vec({}), icp::make::boolean(true), {}, 99},
        {vec({str("$01M"), integer(5), str(""), str("$09M")}), icp::make::boolean(true), {"$01M", "$09M"},
         PAC_ERR_UART_READ_TIMEOUT},
        {vec({str("$09M"), str("$01M")}), icp::make::boolean(true), {"$09M", "$01M"}, 0},
        {vec({str("$09M"), integer(7)}), icp::make::boolean(true), {"$09M"}, 0},
        {str("$01M"), nvValue(), {}, 99},
    };
    const nvValue port = open_com1();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.commands.repr());
        pacsim::clear_calls();
        pac_SetLastError(99);
        expect_same(icpcom_rec_cmd_exec(port, c.commands), c.result);
        EXPECT_EQ(sent(), c.on_the_wire);
        EXPECT_EQ(pac_GetLastError(), c.error);
    }
}

TEST_F(Serial, ARecordingReplaysOnAnotherOpeningOfThePort) {
    nvValue port = open_com1();
    icpcom_rec_cmd_start();
    for (const char* bit_on : {"#031001", "#031201", "#031601"}) icpcom_sendcmd(port, str(bit_on));
    const nvValue recording = icpcom_rec_cmd_stop();
    ASSERT_EQ(recording.size(), 3u);
    icpcom_closedevice(port);

    port = open_com1();
    icpcom_sendcmd(port, str("@0300"));
    ASSERT_EQ(pacsim::do_word("COM1", 3), 0u);
    expect_same(icpcom_rec_cmd_exec(port, recording), icp::make::boolean(true));
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x45u);
}

}  // namespace
}  // namespace com_test
