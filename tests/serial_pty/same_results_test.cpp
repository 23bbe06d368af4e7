// Scripts print the same values through a pseudo-terminal that `icphost
// serve` answers as on the in-process emulated line.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "pty_peers.h"

namespace {

std::string shell_quoted(const std::string& s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// icphost's standard output for args.
std::string run_host(const std::vector<std::string>& args) {
    std::string command = shell_quoted(ICPHOST_FILE);
    for (const auto& a : args) command += " " + shell_quoted(a);
    std::string out;
    if (FILE* p = ::popen((command + " 2>&1").c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, p)) > 0;) out.append(buffer, n);
        ::pclose(p);
    }
    return out;
}

TEST(SameResults, OnThePseudoTerminalAsInProcess) {
    std::vector<std::string> statements{"-e", "p = ICPCOM_OpenDevice(\"COM1,115200,N,8,1\")"};
    for (const char* line :
         {"ICPCOM_AI_Read(p, 1, 3, 8)", "ICPCOM_AO_Write(p, 2, 1, 4, -3.25)", "ICPCOM_AO_Read(p, 2, 1, 4)",
          "ICPCOM_AI_Read(p, 1, 9, 8)", "ICPCOM_DO_Write(p, 3, 7, 5)", "ICPCOM_DO_Read(p, 3, 7)",
          "ICPCOM_DI_Read(p, 3, 8)", "ICPCOM_SetWDTConfig(p, 3, 1, 50, 0)", "ICPCOM_GetWDTConfig(p, 3)",
          "ICPCOM_GetWDTStatus(p, 3)", "ICPCOM_SetPWMFrequency(p, 4, 0, 1000)", "ICPCOM_SetPWMDuty(p, 4, 0, 25.0)",
          "ICPCOM_GetPWMDuty(p, 4, 0)", "ICPCOM_GetPWMFrequency(p, 4, 0)", "ICPCOM_LastError(\"i\")",
          "ICPCOM_CloseDevice(p)"})
        statements.insert(statements.end(), {"-e", line});
    for (const auto& script : {std::vector<std::string>{"run", ICP_EXAMPLES_DIR "/serial"}, statements}) {
        std::string expected = run_host(script);
        pty_test::ServedPort served;
        std::string rig = ::testing::TempDir() + "pty_rig.json";
        std::ofstream(rig) << R"({"serial": [{"port": "COM1", "device": ")" << served.device() << R"("}]})";
        std::vector<std::string> args{"--rig", rig};
        args.insert(args.end(), script.begin(), script.end());
        EXPECT_EQ(run_host(args), expected);
        EXPECT_NE(expected.find("true"), std::string::npos) << expected;  // the script did something
    }
}

}  // namespace
