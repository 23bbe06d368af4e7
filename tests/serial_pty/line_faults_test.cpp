// The DCON client on a real device: a pseudo-terminal whose other end this
// test scripts. Faults on the line end in an error code within the port's
// timeout; settings reach the device; opening failures say why.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "PACSDK.h"
#include "pacsdk_sim.h"
#include "pty_peers.h"

namespace {

using namespace std::chrono_literals;
using clock_type = std::chrono::steady_clock;

TEST(SerialDevice, LineFaultsEndInTheirCodeWithinTheTimeout) {
    constexpr uint32_t timeout_ms = 80;
    struct {
        const char* name;
        std::string reply;
        bool hang_up;
        bool module_call;  // pac_ReadAI, else uart_SendCmd
        uint32_t code;
    } const faults[] = {
        {"silent", "", false, false, PAC_ERR_UART_READ_TIMEOUT},
        {"cut", "!01+0", false, true, PAC_ERR_UART_READ_TIMEOUT},
        {"garbage", std::string("\x01\xFFzz\n\r", 6), false, true, PAC_ERR_UART_RESPONSE},
        {"overlong", std::string(300, '7') + "\r", false, false, PAC_ERR_UART_INTERNAL_BUFFER_OVERFLOW},
        {"hang-up", "", true, false, PAC_ERR_UART_GET_WRONG_LINE_STATUS},
        {"hang-up mid-reply", "!01", true, false, PAC_ERR_UART_GET_WRONG_LINE_STATUS},
    };
    pacsim::use_default_rig();
    for (const auto& f : faults) {
        SCOPED_TRACE(f.name);
        pty_test::Peer peer;
        PAC_HANDLE h = uart_Open((peer.device() + ",115200,N,8,1").c_str());
        ASSERT_NE(h, PAC_INVALID_HANDLE);
        uart_SetTimeOut(h, timeout_ms, CTO_READ_TOTAL_TIMEOUT);
        peer.answer(f.reply, f.hang_up);

        pac_SetLastError(0);
        auto start = clock_type::now();
        char result[20] = "stale";
        float value = 0;
        PAC_BOOL ok = f.module_call ? pac_ReadAI(h, PAC_REMOTE_IO(1), 0, 8, &value) : uart_SendCmd(h, "$01M", result);
        auto spent = clock_type::now() - start;

        EXPECT_EQ(ok, 0);
        EXPECT_EQ(pac_GetLastError(), f.code);
        EXPECT_LT(spent, std::chrono::milliseconds(timeout_ms) + 150ms);
        if (f.code == PAC_ERR_UART_READ_TIMEOUT) {
            EXPECT_GE(spent, std::chrono::milliseconds(timeout_ms));
        }
        uart_Close(h);
    }
}

// A pseudo-terminal keeps the speed, the stop bits and the kind of parity
// (PARODD, CMSPAR) that were set; its driver always makes it 8 data bits
// without parity, so CSIZE and PARENB cannot be seen here.
TEST(SerialDevice, SettingsReachTheDevice) {
    struct {
        const char* fields;
        speed_t speed;
        tcflag_t parity_kind;
        bool two_stop_bits;
    } const settings[] = {{"", B115200, 0, false},
                          {",9600,E,7,2", B9600, 0, true},
                          {",1200,O,8,1", B1200, PARODD, false},
                          {",57600,M,6", B57600, PARODD | CMSPAR, false},
                          {",19200,S,5,2", B19200, CMSPAR, true}};
    pacsim::use_default_rig();
    for (const auto& s : settings) {
        SCOPED_TRACE(s.fields);
        pty_test::Peer peer;
        PAC_HANDLE h = uart_Open((peer.device() + s.fields).c_str());
        ASSERT_NE(h, PAC_INVALID_HANDLE);
        termios t{};
        ASSERT_EQ(tcgetattr(peer.device_fd(), &t), 0);
        EXPECT_EQ(cfgetospeed(&t), s.speed);
        EXPECT_EQ(cfgetispeed(&t), s.speed);
        EXPECT_EQ(t.c_cflag & (PARODD | CMSPAR), s.parity_kind);
        EXPECT_EQ((t.c_cflag & CSTOPB) != 0, s.two_stop_bits);
        EXPECT_EQ(t.c_lflag & (ICANON | ECHO), 0u);  // raw: CR stays CR, nothing echoes
        uart_Close(h);
    }
}

// Devices that are not there or cannot be serial ports (malformed
// connection texts are the stand-in's own tests).
TEST(SerialDevice, OpenRefusedGivesTheInvalidHandleAndSaysWhy) {
    const std::pair<const char*, const char*> cases[] = {
        {"/dev/icp-none,9600", "No such device: /dev/icp-none"}, {"COM3,9600", "No such device: /dev/icp-none"},
        {"/dev/null", "Not a serial port: /dev/null"},          {"PTY,1000", "Baud rate not supported"}};
    ASSERT_TRUE(pacsim::load_rig(R"({"serial": [{"port": "COM3", "device": "/dev/icp-none"}]})", nullptr));
    pty_test::Peer peer;
    for (const auto& [connection, message] : cases) {
        SCOPED_TRACE(connection);
        std::string text = connection;
        if (text.starts_with("PTY")) text.replace(0, 3, peer.device());
        EXPECT_EQ(uart_Open(text.c_str()), PAC_INVALID_HANDLE);
        EXPECT_EQ(pac_GetLastError(), static_cast<uint32_t>(PAC_ERR_UART_OPEN_FAILED));
        char got[32];
        pac_GetErrorMessage(pac_GetLastError(), got);
        EXPECT_STREQ(got, message);
    }
}

}  // namespace
