// Ports, raw commands, the last error and the call log.
#include <cstring>
#include <thread>

#include "sim_fixture.h"

namespace {

struct ConnectionCase {
    const char* text;
    uint32_t error;  // 0: opens
};

void PrintTo(const ConnectionCase& c, std::ostream* os) { *os << (c.text ? c.text : "NULL") << " -> " << c.error; }

class ConnectionString : public SimTest, public ::testing::WithParamInterface<ConnectionCase> {};

TEST_P(ConnectionString, OpensOrFailsWithItsCode) {
    const ConnectionCase& c = GetParam();
    pac_SetLastError(0);
    PAC_HANDLE h = uart_Open(c.text);
    if (c.error == 0) {
        EXPECT_NE(h, PAC_INVALID_HANDLE);
        EXPECT_NE(h, nullptr);
        EXPECT_EQ(pac_GetLastError(), 0u);
        EXPECT_EQ(uart_Close(h), 1);
    } else {
        EXPECT_EQ(h, PAC_INVALID_HANDLE);
        EXPECT_EQ(pac_GetLastError(), c.error);
    }
}

constexpr uint32_t malformed = PAC_ERR_INVALID_COMPORT_NUMBER;
constexpr uint32_t refused = PAC_ERR_UART_OPEN_FAILED;

INSTANTIATE_TEST_SUITE_P(
    pacsdk, ConnectionString,
    ::testing::Values(ConnectionCase{"COM1", 0}, ConnectionCase{"COM1,9600", 0}, ConnectionCase{"COM1,115200,N", 0},
                      ConnectionCase{"COM1,115200,N,8", 0}, ConnectionCase{"COM1,115200,N,8,1", 0},
                      ConnectionCase{"COM1,19200,E,7,2", 0}, ConnectionCase{"COM1,1200,S,5,1", 0},
                      ConnectionCase{nullptr, malformed}, ConnectionCase{"", malformed},
                      ConnectionCase{"COM", malformed}, ConnectionCase{"COM0", malformed},
                      ConnectionCase{"COM256", malformed}, ConnectionCase{"COM01", malformed},
                      ConnectionCase{"com1", malformed}, ConnectionCase{" COM1", malformed},
                      ConnectionCase{"COM1 ", malformed}, ConnectionCase{"COM1,", malformed},
                      ConnectionCase{"COM1,,N", malformed}, ConnectionCase{"COM1,fast", malformed},
                      ConnectionCase{"COM1,09600", malformed}, ConnectionCase{"COM1,115200,X", malformed},
                      ConnectionCase{"COM1,115200,n", malformed}, ConnectionCase{"COM1,115200,N,9", malformed},
                      ConnectionCase{"COM1,115200,N,8,3", malformed},
                      ConnectionCase{"COM1,115200,N,8,1,", malformed},
                      ConnectionCase{"COM1,115200,N,8,1,X", malformed}, ConnectionCase{"COM1;9600", malformed},
                      ConnectionCase{"COM2", refused}, ConnectionCase{"COM255,9600", refused},
                      ConnectionCase{"COM1,1000", refused}, ConnectionCase{"COM1,0", refused}));

using pacsdkHandles = SimTest;

TEST_F(pacsdkHandles, APortOpensOnceAtATime) {
    PAC_HANDLE first = open();
    EXPECT_EQ(uart_Open("COM1,9600"), PAC_INVALID_HANDLE);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_OPEN_FAILED);
    EXPECT_TRUE(pacsim::port_open("COM1"));
    EXPECT_EQ(uart_Close(first), 1);
    EXPECT_FALSE(pacsim::port_open("COM1"));
    PAC_HANDLE second = open();
    EXPECT_NE(second, first);
    EXPECT_TRUE(logged("uart_Open(\"COM1\") -> port#2"));
}

TEST_F(pacsdkHandles, BadHandlesFailWithoutTouchingAnything) {
    PAC_HANDLE closed = open();
    uart_Close(closed);
    PAC_HANDLE before_reset = open();
    pacsim::use_default_rig();
    PAC_HANDLE bad[] = {nullptr, PAC_INVALID_HANDLE, reinterpret_cast<PAC_HANDLE>(uintptr_t{0x1234}), closed,
                        before_reset};
    for (PAC_HANDLE h : bad) {
        char result[20] = "untouched";
        float v = 0;
        pac_SetLastError(0);
        EXPECT_EQ(uart_Close(h), 0);
        EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
        pac_SetLastError(0);
        EXPECT_EQ(uart_SendCmd(h, "$01M", result), 0);
        EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
        pac_SetLastError(0);
        EXPECT_EQ(pac_ReadAI(h, ai_slot, 0, 8, &v), 0);
        EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
    }
    EXPECT_TRUE(dcon_lines().empty());
}

TEST(pacsdkLastError, BelongsToTheCallingThreadAndSurvivesSuccess) {
    pacsim::use_default_rig();
    pac_SetLastError(1234);
    PAC_HANDLE h = uart_Open("COM1");
    char result[20];
    EXPECT_EQ(uart_SendCmd(h, "$01M", result), 1);
    EXPECT_EQ(pac_GetLastError(), 1234u);

    uint32_t seen_by_other = 99;
    std::thread other([&] {
        seen_by_other = pac_GetLastError();
        pac_SetLastError(77);
    });
    other.join();
    EXPECT_EQ(seen_by_other, 0u);
    EXPECT_EQ(pac_GetLastError(), 1234u);
    uart_Close(h);
}

TEST(pacsdkErrorMessage, TextsFitTheBufferAndUnknownCodesHaveOne) {
    pac_SetLastError(0);  // a failure's own message would stand for its code
    struct {
        uint32_t code;
        const char* text;
    } cases[] = {{PAC_ERR_SUCCESS, "No error"},
                 {PAC_OS_ERR_INVALID_HANDLE, "Invalid handle"},
                 {PAC_ERR_INVALID_COMPORT_NUMBER, "Invalid COM port number"},
                 {PAC_ERR_INVALID_SLOT_NUMBER, "Invalid slot number"},
                 {PAC_ERR_UART_READ_TIMEOUT, "Module response timeout"},
                 {PAC_ERR_UART_OPEN_FAILED, "Failed to open COM port"},
                 {PAC_ERR_IO_NOT_SUPPORT, "Not supported by the module"},
                 {PAC_ERR_IO_CHANNEL_OUT_OF_RANGE, "Channel out of range"},
                 {2, "Unknown error"},
                 {0x50000, "Unknown error"},
                 {0xFFFFFFFF, "Unknown error"}};
    for (const auto& c : cases) {
        char buffer[64];
        std::memset(buffer, 0x7E, sizeof buffer);
        pac_GetErrorMessage(c.code, buffer);
        EXPECT_STREQ(buffer, c.text) << c.code;
        for (std::size_t i = 32; i < sizeof buffer; ++i) ASSERT_EQ(buffer[i], 0x7E) << c.code;
    }
#define PACSDK_TEXT_FITS(name, value, text) EXPECT_LE(std::strlen(text), 31u) << #name;
    PACSDK_ERROR_TABLE(PACSDK_TEXT_FITS)
#undef PACSDK_TEXT_FITS
}

using pacsdkSendCmd = SimTest;

TEST_F(pacsdkSendCmd, RepliesWithoutTerminatorAndCutToNineteenCharacters) {
    PAC_HANDLE h = open();
    char result[40];
    std::memset(result, 0x7E, sizeof result);
    ASSERT_EQ(uart_SendCmd(h, "$01M", result), 1);
    EXPECT_STREQ(result, "!017017");

    std::memset(result, 0x7E, sizeof result);
    ASSERT_EQ(uart_SendCmd(h, "#01", result), 1);  // 57 characters on the line
    EXPECT_STREQ(result, ">+00.500+01.000+01.");
    for (std::size_t i = 20; i < sizeof result; ++i) ASSERT_EQ(result[i], 0x7E);

    ASSERT_EQ(uart_SendCmd(h, "#019", result), 1);  // a refusal is still a reply
    EXPECT_STREQ(result, "?01");
}

// A trace line stays one line whatever the command or reply holds.
TEST_F(pacsdkSendCmd, ControlCharactersAreEscapedInTheLog) {
    PAC_HANDLE h = open();
    char result[20];
    uart_SendCmd(h, "$01M\n", result);
    uart_SendCmd(h, "\x01\\q\r$01M", result);  // the CR ends a line: the module answers "$01M" after it
    EXPECT_EQ(dcon_lines(), (std::vector<std::string>{"dcon> $01M\\n", "dcon> \\x01\\\\q\\r$01M",
                                                       "dcon< !017017"}));
}

TEST_F(pacsdkSendCmd, NoReplyIsATimeoutAtOnce) {
    PAC_HANDLE h = open();
    uart_SetTimeOut(h, 60000, CTO_READ_TOTAL_TIMEOUT);
    char result[20] = "stale";
    pac_SetLastError(0);
    EXPECT_EQ(uart_SendCmd(h, "$09M", result), 0);  // no module at 09
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_READ_TIMEOUT);
    EXPECT_STREQ(result, "");
    EXPECT_EQ(pacsim::now_ms(), 60000u);  // in simulated time only
}

struct ChecksumCase {
    bool port;
    bool module;
    const char* sent;    // on the line
    const char* result;  // nullptr: timeout
};

void PrintTo(const ChecksumCase& c, std::ostream* os) { *os << "port " << c.port << " module " << c.module; }

class Checksum : public SimTest, public ::testing::WithParamInterface<ChecksumCase> {};

TEST_P(Checksum, BothSidesMustAgree) {
    const ChecksumCase& c = GetParam();
    pacsim::reset();
    pacsim::add_port("COM1");
    pacsim::add_module("COM1", 1, "dio", c.module);
    PAC_HANDLE h = open();
    uart_EnableCheckSum(h, c.port ? 1 : 0);
    pacsim::clear_calls();
    char result[20];
    PAC_BOOL ok = uart_SendCmd(h, "$012", result);
    EXPECT_EQ(dcon_lines().at(0), std::string("dcon> ") + c.sent);
    if (c.result) {
        ASSERT_EQ(ok, 1);
        EXPECT_STREQ(result, c.result);
    } else {
        EXPECT_EQ(ok, 0);
        EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_READ_TIMEOUT);
    }
}

INSTANTIATE_TEST_SUITE_P(pacsdk, Checksum,
                         ::testing::Values(ChecksumCase{false, false, "$012", "!01400A00"},
                                           ChecksumCase{true, true, "$012B7", "!01400A40"},
                                           ChecksumCase{true, false, "$012B7", nullptr},
                                           ChecksumCase{false, true, "$012", nullptr}));

TEST_F(pacsdkSendCmd, ABrokenReplyChecksumFailsTheCall) {
    pacsim::reset();
    pacsim::add_port("COM1");
    pacsim::add_module("COM1", 1, "ai", true);
    PAC_HANDLE h = open();
    uart_EnableCheckSum(h, 1);
    pacsim::corrupt_next_reply("COM1", 1);
    char result[20];
    EXPECT_EQ(uart_SendCmd(h, "$01M", result), 0);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_CHECKSUM);
    EXPECT_EQ(uart_SendCmd(h, "$01M", result), 1);  // the fault was for one reply
    EXPECT_STREQ(result, "!017017");
}

using pacsdkCallLog = SimTest;

TEST_F(pacsdkCallLog, RecordsCallsAndLinesInOrder) {
    std::vector<std::string> traced;
    pacsim::set_trace([](const char* line, void* ctx) { static_cast<std::vector<std::string>*>(ctx)->push_back(line); },
                      &traced);
    PAC_HANDLE h = uart_Open("COM1,115200,N,8,1");
    pac_SetLastError(0);
    char result[20];
    uart_SendCmd(h, "$01M", result);
    pac_WriteAO(h, ao_slot, 0, 4, 0.1f);
    uart_Open("COM9");
    pac_GetLastError();
    char message[32];
    pac_GetErrorMessage(PAC_ERR_UART_OPEN_FAILED, message);
    uart_EnableCheckSum(h, 0);
    uart_Close(h);
    pacsim::set_trace(nullptr, nullptr);

    std::vector<std::string> expected = {
        "uart_Open(\"COM1,115200,N,8,1\") -> port#1",
        "pac_SetLastError(0)",
        "dcon> $01M",
        "dcon< !017017",
        "uart_SendCmd(port#1, \"$01M\") -> 1",
        "dcon> #020+00.100",
        "dcon< >",
        "pac_WriteAO(port#1, 4098, 0, 4, 0.10000000149011612) -> 1",
        "uart_Open(\"COM9\") -> -1",
        "pac_GetLastError() -> 327686",
        "pac_GetErrorMessage(327686)",
        "uart_EnableCheckSum(port#1, 0)",
        "uart_Close(port#1) -> 1",
    };
    EXPECT_EQ(pacsim::calls(), expected);
    ASSERT_EQ(traced.size(), expected.size());
    EXPECT_EQ(traced[0], "sdk: " + expected[0]);
    EXPECT_EQ(traced[2], expected[2]);
}

}  // namespace
