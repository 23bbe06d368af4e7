// Shared by the PAC SDK stand-in tests: a fresh default rig per test, and
// ways to look at the call log.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PACSDK.h"
#include "pacsdk_sim.h"

constexpr int ai_slot = PAC_REMOTE_IO(1);
constexpr int ao_slot = PAC_REMOTE_IO(2);
constexpr int dio_slot = PAC_REMOTE_IO(3);

class SimTest : public ::testing::Test {
protected:
    void SetUp() override { pacsim::use_default_rig(); }

    static PAC_HANDLE open(const char* connection = "COM1") {
        PAC_HANDLE h = uart_Open(connection);
        EXPECT_NE(h, PAC_INVALID_HANDLE) << connection;
        return h;
    }

    static std::vector<std::string> dcon_lines() {
        std::vector<std::string> out;
        for (const auto& line : pacsim::calls())
            if (line.rfind("dcon", 0) == 0) out.push_back(line);
        return out;
    }

    // Sends a raw command and returns the reply as it came over the line
    // (not cut to the caller's buffer), or "(none)".
    static std::string wire_reply(PAC_HANDLE h, const std::string& command) {
        pacsim::clear_calls();
        char result[20];
        uart_SendCmd(h, command.c_str(), result);
        for (const auto& line : pacsim::calls())
            if (line.rfind("dcon< ", 0) == 0) return line.substr(6);
        return "(none)";
    }
};
