#include "tests/com/serial_fixture.h"

namespace com_test {
namespace {

const std::string nineteen = "$01M" + std::string(15, '0');

// A command of 1 to 19 characters goes out up to its first zero byte; the
// reply comes back cut to 19 characters.
TEST_F(Serial, SendCmdTakesOneToNineteenCharacters) {
    struct Case {
        std::string command;
        Lines on_the_wire;
        nvValue reply;
        PAC_DWORD error;
    };
    const Case cases[] = {
        {"~", {"~"}, nvValue(), PAC_ERR_UART_READ_TIMEOUT},
        {nineteen, {nineteen}, nvValue(), PAC_ERR_UART_READ_TIMEOUT},
        {std::string("$01M\0$02M", 9), {"$01M"}, str("!017017"), 0},
        {"#01", {"#01"}, str(">+00.500+01.000+01."), 0},
        {"#019", {"#019"}, str("?01"), 0},  // a refusal is still a reply
        {"", {}, nvValue(), 0},
        {nineteen + "0", {}, nvValue(), 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        pacsim::clear_calls();
        pac_SetLastError(99);
        expect_same(icpcom_sendcmd(port, str(c.command)), c.reply);
        EXPECT_EQ(logged("dcon> "), c.on_the_wire);
        EXPECT_EQ(pac_GetLastError(), c.error);
    }
}

TEST_F(Serial, RecorderKeepsWholeCommandsThatWentOutInOrder) {
    pacsim::silence("COM1", 2, true);
    const std::string with_zero("$04M\0tail", 9);
    expect_same(icpcom_rec_cmd_start(), boolean(true));
    for (const auto& command : {std::string("$01M"), std::string("$02M"), nineteen + "0", with_zero})
        icpcom_sendcmd(port, str(command));

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

// Each element goes through SendCmd; failures do not stop the replay.
TEST_F(Serial, ExecSendsEachElementThroughSendCmd) {
    struct Case {
        nvValue commands;
        Lines on_the_wire;
        PAC_DWORD error;  // of the last element; 99 when nothing was tried
    };
    const Case cases[] = {
        {vec({integer(1), integer(2)}), {}, 0},
        {vec({}), {}, 99},
        {vec({str("$01M"), integer(5), str(""), str("$09M")}), {"$01M", "$09M"}, PAC_ERR_UART_READ_TIMEOUT},
        {vec({str("$09M"), str("#031601")}), {"$09M", "#031601"}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.commands.repr());
        pacsim::clear_calls();
        pac_SetLastError(99);
        expect_same(icpcom_rec_cmd_exec(port, c.commands), boolean(true));
        EXPECT_EQ(logged("dcon> "), c.on_the_wire);
        EXPECT_EQ(pac_GetLastError(), c.error);
    }
    EXPECT_EQ(pacsim::do_word("COM1", 3), 0x40u);
}

}  // namespace
}  // namespace com_test
