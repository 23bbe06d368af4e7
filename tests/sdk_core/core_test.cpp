#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <icp_platform/sdk_core.h>

#include "pacsdk_sim.h"
#include "usbio_sim.h"

namespace {

constexpr std::string_view kFunctions[] = {"OpenDevice", "ReadAI"};

// Arming and calling in turn: which calls fail, and with what.
TEST(SdkCore, FaultsFireAsArmed) {
    struct Arm {
        std::string_view function;
        std::uint32_t code;
        unsigned count, skip;
    };
    const struct {
        const char* what;
        std::vector<Arm> arms;
        std::string calls;     // O: OpenDevice, R: ReadAI
        std::string expected;  // per call: '.' goes through, else the code's digit
    } cases[] = {
        {"once", {{"OpenDevice", 7, 1, 0}}, "OOO", "7.."},
        {"twice after one", {{"OpenDevice", 7, 2, 1}}, "OOOO", ".77."},
        {"only that function", {{"ReadAI", 5, 1, 0}}, "ORR", ".5."},
        {"re-armed replaces", {{"OpenDevice", 7, 3, 0}, {"OpenDevice", 4, 1, 0}}, "OO", "4."},
        {"count 0 disarms", {{"OpenDevice", 7, 3, 0}, {"OpenDevice", 4, 0, 0}}, "OO", ".."},
        {"code 0 disarms", {{"OpenDevice", 7, 3, 0}, {"OpenDevice", 0, 2, 0}}, "OO", ".."},
        {"unknown name arms nothing", {{"Open", 7, 1, 0}}, "OR", ".."},
    };
    for (const auto& c : cases) {
        icp_platform::SdkCore core(kFunctions);
        for (const auto& a : c.arms) core.arm(a.function, a.code, a.count, a.skip);
        std::string got;
        for (char call : c.calls) {
            std::uint32_t code = 0;
            got += core.take_fault(call == 'O' ? "OpenDevice" : "ReadAI", &code) ? char('0' + code) : '.';
        }
        EXPECT_EQ(got, c.expected) << c.what;
    }
    icp_platform::SdkCore core(kFunctions);
    EXPECT_FALSE(core.arm("Open", 7, 1));
    EXPECT_TRUE(core.arm("ReadAI", 7, 1));
}

struct Heard {
    std::vector<std::string> trace;
    std::vector<std::string> calls;
    icp_platform::SdkCore* core = nullptr;
    std::size_t log_size_in_hook = 0;
};

TEST(SdkCore, LogTraceAndHookSeeEveryCall) {
    icp_platform::SdkCore core(kFunctions);
    Heard heard;
    heard.core = &core;
    core.set_trace([](const char* line, void* c) { static_cast<Heard*>(c)->trace.emplace_back(line); }, &heard);
    core.set_hook(
        [](const icp_platform::SdkCall& call, void* c) {
            auto* h = static_cast<Heard*>(c);
            h->calls.push_back(std::string(call.function) + "|" + std::string(call.arguments) + "|" +
                               std::string(call.result));
            h->log_size_in_hook = h->core->lines().size();  // no lock is held while the hook runs
        },
        &heard);
    core.call("OpenDevice", "#1, 2073, 1", "0");
    core.line("dcon> $01M");
    core.call("ReadAI", "", "");
    EXPECT_EQ(core.lines(), (std::vector<std::string>{"OpenDevice(#1, 2073, 1) -> 0", "dcon> $01M", "ReadAI()"}));
    EXPECT_EQ(heard.trace,
              (std::vector<std::string>{"sdk: OpenDevice(#1, 2073, 1) -> 0", "dcon> $01M", "sdk: ReadAI()"}));
    EXPECT_EQ(heard.calls, (std::vector<std::string>{"OpenDevice|#1, 2073, 1|0", "ReadAI||"}));
    EXPECT_EQ(heard.log_size_in_hook, 3u);

    // Nobody listening: the log alone goes on; clear() keeps the listeners.
    core.set_trace(nullptr, nullptr);
    core.arm("ReadAI", 9, 1);
    core.clear();
    std::uint32_t code = 0;
    EXPECT_FALSE(core.take_fault("ReadAI", &code));
    core.call("ReadAI", "1", "0");
    EXPECT_EQ(core.lines(), (std::vector<std::string>{"ReadAI(1) -> 0"}));
    EXPECT_EQ(heard.trace.size(), 3u);
    EXPECT_EQ(heard.calls.size(), 3u);
}

TEST(SdkCore, LogKeepsALatestWindow) {
    icp_platform::SdkCore core(kFunctions);
    const std::size_t n = 3 * icp_platform::SdkCore::window;
    for (std::size_t i = 0; i < n; ++i) core.line(std::to_string(i));
    const auto lines = core.lines();
    EXPECT_GE(lines.size(), icp_platform::SdkCore::window);
    EXPECT_LE(lines.size(), 2 * icp_platform::SdkCore::window);
    EXPECT_EQ(lines.back(), std::to_string(n - 1));
    EXPECT_EQ(lines.front(), std::to_string(n - lines.size()));
}

// Every function a stand-in's header declares is one faults can be armed
// for, and no other: a function added without its name in the table fails.
std::set<std::string> declared(const char* header, const char* api) {
    std::ifstream in(header);
    std::stringstream text;
    text << in.rdbuf();
    const std::string all = text.str();
    const std::regex declaration(std::string(api) + R"(\s+[A-Za-z_0-9]+[\s*]+([A-Za-z_0-9]+)\s*\()");
    std::set<std::string> names;
    for (auto it = std::sregex_iterator(all.begin(), all.end(), declaration); it != std::sregex_iterator(); ++it)
        names.insert((*it)[1]);
    return names;
}

TEST(SdkCore, EveryDeclaredFunctionCanFail) {
    const struct {
        const char* header;
        const char* api;
        bool (*has)(const std::string&);
        std::size_t at_least;
    } sdks[] = {
        {USBIO_HEADER, "USBIO_API", &usbsim::has_function, 100},
        {PACSDK_HEADER, "PACSDK_API", &pacsim::has_function, 40},
    };
    for (const auto& sdk : sdks) {
        const auto names = declared(sdk.header, sdk.api);
        EXPECT_GE(names.size(), sdk.at_least) << sdk.header;
        for (const auto& name : names) EXPECT_TRUE(sdk.has(name)) << name;
    }
    EXPECT_FALSE(usbsim::has_function("pac_ReadAI"));
    EXPECT_FALSE(pacsim::has_function("OpenDevice"));
    EXPECT_FALSE(usbsim::has_function("opendevice"));
}

}  // namespace
