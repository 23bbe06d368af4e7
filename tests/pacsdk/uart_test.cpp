// Ports, raw commands and the last error.
#include <cstring>
#include <thread>

#include "sim_fixture.h"

namespace {

using pacsdkUart = SimTest;

TEST_F(pacsdkUart, ConnectionStringsOpenOrFailWithTheirCode) {
    constexpr uint32_t malformed = PAC_ERR_INVALID_COMPORT_NUMBER;
    constexpr uint32_t refused = PAC_ERR_UART_OPEN_FAILED;
    struct Case {
        const char* text;
        uint32_t error;  // 0: opens
    };
    const Case cases[] = {
        {"COM1", 0},          {"COM1,9600", 0},           {"COM1,115200,N", 0},       {"COM1,115200,N,8,1", 0},
        {"COM1,19200,E,7,2", 0}, {"COM1,1200,S,5,1", 0},  {nullptr, malformed},       {"", malformed},
        {"COM", malformed},   {"COM0", malformed},        {"COM256", malformed},      {"COM01", malformed},
        {"com1", malformed},  {" COM1", malformed},       {"COM1 ", malformed},       {"COM1,", malformed},
        {"COM1,,N", malformed}, {"COM1,fast", malformed}, {"COM1,09600", malformed},  {"COM1,115200,X", malformed},
        {"COM1,115200,n", malformed}, {"COM1,115200,N,9", malformed}, {"COM1,115200,N,8,3", malformed},
        {"COM1,115200,N,8,1,", malformed}, {"COM1;9600", malformed}, {"COM2", refused}, {"COM255,9600", refused},
        {"COM1,1000", refused}, {"COM1,0", refused},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text ? c.text : "NULL");
        pac_SetLastError(0);
        PAC_HANDLE h = uart_Open(c.text);
        EXPECT_EQ(h == PAC_INVALID_HANDLE, c.error != 0);
        EXPECT_EQ(pac_GetLastError(), c.error);
        if (c.error == 0) {
            EXPECT_EQ(uart_Close(h), 1);
        }
    }
}

// A port opens once at a time, and a handle is never given out again.
TEST_F(pacsdkUart, BadHandlesFailWithoutTouchingAnything) {
    PAC_HANDLE closed = open();
    EXPECT_EQ(uart_Open("COM1,9600"), PAC_INVALID_HANDLE);
    EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_OPEN_FAILED);
    uart_Close(closed);
    PAC_HANDLE before_reset = open();
    EXPECT_NE(before_reset, closed);
    pacsim::use_default_rig();
    for (PAC_HANDLE h : {PAC_HANDLE{nullptr}, PAC_INVALID_HANDLE, reinterpret_cast<PAC_HANDLE>(uintptr_t{0x1234}),
                         closed, before_reset}) {
        char result[20] = "untouched";
        float v = 0;
        for (PAC_BOOL (*call)(PAC_HANDLE, char*, float*) :
             {+[](PAC_HANDLE p, char*, float*) { return uart_Close(p); },
              +[](PAC_HANDLE p, char* r, float*) { return uart_SendCmd(p, "$01M", r); },
              +[](PAC_HANDLE p, char*, float* x) { return pac_ReadAI(p, ai_slot, 0, 8, x); }}) {
            pac_SetLastError(0);
            EXPECT_EQ(call(h, result, &v), 0);
            EXPECT_EQ(pac_GetLastError(), PAC_OS_ERR_INVALID_HANDLE);
        }
        EXPECT_STREQ(result, "untouched");
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

// A trace line stays one line whatever the command or reply holds.
TEST_F(pacsdkUart, ControlCharactersAreEscapedInTheLog) {
    PAC_HANDLE h = open();
    char result[20];
    uart_SendCmd(h, "$01M\n", result);
    uart_SendCmd(h, "\x01\\q\r$01M", result);  // the CR ends a line: the module answers "$01M" after it
    EXPECT_EQ(dcon_lines(), (std::vector<std::string>{"dcon> $01M\\n", "dcon> \\x01\\\\q\\r$01M",
                                                       "dcon< !017017"}));
}

// Port and module must agree on checksums; a reply whose checksum is broken
// fails the call once.
TEST_F(pacsdkUart, ChecksumsOnBothSides) {
    struct {
        bool port, module;
        const char* sent;    // on the line
        const char* result;  // nullptr: timeout
    } cases[] = {{false, false, "$012", "!01400A00"},
                 {true, true, "$012B7", "!01400A40"},
                 {true, false, "$012B7", nullptr},
                 {false, true, "$012", nullptr}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.port) + std::to_string(c.module));
        pacsim::reset();
        pacsim::add_port("COM1");
        pacsim::add_module("COM1", 1, "dio", c.module);
        PAC_HANDLE h = open();
        uart_EnableCheckSum(h, c.port ? 1 : 0);
        pacsim::clear_calls();
        char result[20];
        PAC_BOOL ok = uart_SendCmd(h, "$012", result);
        EXPECT_EQ(dcon_lines().at(0), std::string("dcon> ") + c.sent);
        EXPECT_EQ(ok, c.result ? 1 : 0);
        EXPECT_STREQ(c.result ? result : "", c.result ? c.result : "");
        EXPECT_EQ(pac_GetLastError(), c.result ? 0u : PAC_ERR_UART_READ_TIMEOUT);
        if (!c.port || !c.module) continue;
        pacsim::corrupt_next_reply("COM1", 1);
        EXPECT_EQ(uart_SendCmd(h, "$012", result), 0);
        EXPECT_EQ(pac_GetLastError(), PAC_ERR_UART_CHECKSUM);
        EXPECT_EQ(uart_SendCmd(h, "$012", result), 1);
    }
}

}  // namespace
