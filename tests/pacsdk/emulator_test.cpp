// The emulated modules' answers to raw DCON commands, in scenarios built on
// the DCON command set's own command/response examples. A step "wait N"
// moves the simulated clock on by N ms.
#include "sim_fixture.h"

namespace {

// COM1: analog inputs at 01..04 (04 holds the classic 8-channel example
// reading); COM3: digital I/O at 01; COM4: PWM at 01 and 03. The analog
// output and digital I/O commands the plug-in sends are shown line by line
// in tests/com.
const char* const rig = R"({"serial": [
  {"port": "COM1", "modules": [
    {"address": 1, "kind": "ai"},
    {"address": 2, "kind": "ai", "inputs": [10, -10, 0, 0, 0, 0, 0, 12.5]},
    {"address": 3, "kind": "ai", "inputs": [0, 0, 2.513]},
    {"address": 4, "kind": "ai", "inputs": [5.123, 4.153, 7.234, -2.356, 10, -5.133, 2.345, 8.234]}]},
  {"port": "COM3", "modules": [{"address": 1, "kind": "dio"}]},
  {"port": "COM4", "modules": [{"address": 1, "kind": "pwm"}, {"address": 3, "kind": "pwm"}]}]})";

struct Step {
    const char* command;
    const char* reply;  // "(none)": no reply
};

struct Scenario {
    const char* name;
    const char* port;
    std::vector<Step> steps;
};

const char* const none = "(none)";

using pacsdkEmulator = SimTest;

TEST_F(pacsdkEmulator, AnswersAsTheProtocolSays) {
    const Scenario scenarios[] = {
        {"identity", "COM1",
         {{"$04M", "!047017"}, {"$04F", "!04A2.0"}, {"$042", "!04080A00"}, {"$045", "!041"}, {"$045", "!040"},
          {"~04OAI-8", "!04"}, {"$04M", "!04AI-8"}, {"%0405080600", "?04"}}},
        {"analog_inputs", "COM1",
         {{"#04", ">+05.123+04.153+07.234-02.356+10.000-05.133+02.345+08.234"}, {"#032", ">+02.513"},
          {"#029", "?02"}, {"#027", ">+9999.9"}, {"$02A", ">7FFF8000000000000000000000007FFF"},
          {"$015A5", "!01"}, {"$016", "!01A5"}}},
        {"synchronised_sampling", "COM1",
         {{"#**", none}, {"$034", ">031+00.000+00.000+02.513+00.000+00.000+00.000+00.000+00.000"},
          {"$034", ">030+00.000+00.000+02.513+00.000+00.000+00.000+00.000+00.000"}}},
        {"malformed_or_unaddressed", "COM1",
         {{"$09M", none}, {"$01m", none}, {"$01X", none}, {"&01M", none}, {"$1M", none}, {"#0412", none},
          {"#04X", none}, {"$01C0D", none}}},
        {"host_watchdog", "COM3",  // the exchanges take about 3 ms of the 10 s
         {{"@0103", ">"}, {"~015S", "!01"}, {"@0101", ">"}, {"~013164", "!01"}, {"~012", "!01164"},
          {"~010", "!0180"}, {"wait 9990", ""}, {"~010", "!0180"}, {"wait 10", ""}, {"~010", "!0184"},
          {"@01", ">0300"}, {"@0101", "!"}, {"#011001", "!"}, {"~011", "!01"}, {"~010", "!0180"},
          {"@0101", ">"}, {"~013100", "?01"}, {"~013000", "!01"}, {"~012", "!01000"}, {"~0130", none}}},
        // Sent raw, "~**" waits the port's read timeout (300 ms) for a reply
        // that never comes.
        {"watchdog_refresh", "COM3",
         {{"~013105", "!01"}, {"wait 399", ""}, {"~**", none}, {"~010", "!0180"}, {"wait 200", ""},
          {"~010", "!0184"}}},
        {"pwm_settings", "COM4",
         {{"$01C0D25.5", "!0125.5"}, {"$01C0D99.9", "!0199.9"}, {"$01C0D00.0", "?01"}, {"$01C0D5.0", none},
          {"$01C1F003000", "!01002994"}, {"$01C1D33.3", "!0133.2"}, {"$01C1D99.5", "?01"},
          {"$01C1F000000", "?01"}, {"$01C8D", "?01"}, {"$01C0M", "!011"}, {"$01C0P0005", "!01"},
          {"$01C0M", "!010"}, {"$01C0P", "!010005"}, {"$01C0M1", "!01"}, {"$01C0P", "!010001"},
          {"$01C0P0000", "?01"}, {"$01C0T2", "!01"}, {"$01C0T", "!012"}, {"$01C0T3", "?01"},
          {"$01C0N1", "!01"}, {"$01C0N", "!011"}}},
        {"pwm_outputs", "COM4",
         {{"@01DO03", "!01"}, {"@01DI", "!010300"}, {"$01C0N1", "!01"}, {"$01Y0", "!01"},
          {"@01DI", "!010200"}, {"#011201", ">"}, {"@01DI", "!010600"}, {"#011801", "?01"}, {"$01Y1", "!01"},
          {"@01DI", "!010700"}, {"$01Y2", "?01"}, {"~013101", "!01"}, {"wait 100", ""}, {"@01DI", "!010000"},
          {"@01DO01", "?01"}, {"#011001", "?01"}, {"~011", "!01"}, {"@01DO01", "!01"}, {"#032", ">00000000"},
          {"@03P200000010", "!03"}, {"@03G2", "!0300000010"}, {"~03D01", "!03"}, {"~03D", "!0301"}}},
    };
    for (const Scenario& scenario : scenarios) {
        SCOPED_TRACE(scenario.name);
        std::string error;
        ASSERT_TRUE(pacsim::load_rig(rig, &error)) << error;
        PAC_HANDLE h = open(scenario.port);
        for (const Step& s : scenario.steps) {
            std::string command = s.command;
            if (command.rfind("wait ", 0) == 0) {
                pacsim::advance_ms(static_cast<uint32_t>(std::stoul(command.substr(5))));
                continue;
            }
            EXPECT_EQ(wire_reply(h, command), s.reply) << command;
        }
    }
}

}  // namespace
