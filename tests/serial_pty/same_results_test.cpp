// Scripts print the same values through a pseudo-terminal that `icphost
// serve` answers as on the in-process emulated line.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "pty_peers.h"

namespace {

// icphost's output for options (paths only, nothing the shell would change).
std::string run_host(const std::string& options) {
    std::string out;
    if (FILE* p = ::popen((ICPHOST_FILE " " + options + " 2>&1").c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, p)) > 0;) out.append(buffer, n);
        ::pclose(p);
    }
    return out;
}

// The examples' commands, module calls, timeouts and a tripped watchdog.
TEST(SameResults, OnThePseudoTerminalAsInProcess) {
    for (const char* script : {"serial", "serial_io"}) {
        const std::string expected = run_host(std::string("run " ICP_EXAMPLES_DIR "/") + script);
        pty_test::ServedPort served;
        const std::string rig = ::testing::TempDir() + "pty_rig.json";
        std::ofstream(rig) << R"({"serial": [{"port": "COM1", "device": ")" << served.device() << R"("}]})";
        EXPECT_EQ(run_host("--rig " + rig + " run " ICP_EXAMPLES_DIR "/" + script), expected);
        EXPECT_NE(expected.find("true"), std::string::npos) << expected;  // the script did something
    }
}

}  // namespace
