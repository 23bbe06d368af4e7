#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "icp_control/directives.h"
#include "icp_control/standalone.h"
#include "pacsdk_sim.h"
#include "usbio_sim.h"

namespace {


// A rig with a DIO module, a pulse input module and a serial AI module, and
// the events given.
std::string rig(const std::string& events) {
    return R"({"usb": [{"model": "USB2055", "board": 9}, {"model": "USB2084", "board": 1}],
 "serial": [{"port": "COM1", "modules": [{"address": 5, "kind": "ai"}]}],
 "events": [)" + events + "]}";
}

struct Lines {
    std::vector<std::string> said;
};

void keep(const char* line, void* context) { static_cast<Lines*>(context)->said.emplace_back(line); }

std::uint16_t code_of(const char* model) { return usbsim::find_model(model)->type_code; }
const std::uint16_t kUsb2055 = code_of("USB2055");
const std::uint16_t kUsb2084 = code_of("USB2084");

bool plugged(std::uint16_t type_code, std::uint8_t board) {
    const auto s = usbsim::module_state(type_code, board);
    return s && s->plugged;
}

// Each step is a directive; after it, what the rig shows.
TEST(Timeline, EventsFireAsSimulatedTimePasses) {
    struct Step {
        const char* directive;
        bool usb_plugged;   // USB2055 board 9
        double serial_ai0;  // COM1 module 5, input 0
    };
    const struct {
        const char* what;
        std::string events;
        std::vector<Step> steps;
    } cases[] = {
        {"not before its time, then at it",
         R"({"at": "300ms", "do": ":unplug USB2055 9"})",
         {{"time +299ms", true, 0}, {"time +1ms", false, 0}, {"time +5s", false, 0}}},
        {"same time: the file's order",
         R"({"at": "300ms", "do": ":unplug USB2055 9"}, {"at": "0.3s", "do": ":plug USB2055 9"})",
         {{"time +300ms", true, 0}}},
        {"same time, the other order",
         R"({"at": "300ms", "do": ":plug USB2055 9"}, {"at": "300ms", "do": ":unplug usb2055 9"})",
         {{"time +300ms", false, 0}}},
        {"times out of order in the file",
         R"({"at": "2s", "do": ":signal COM1 5 ai 0 4.5"}, {"at": "1s", "do": ":signal COM1 5 ai 0 1.5"})",
         {{"time +1s", true, 1.5}, {"time +999ms", true, 1.5}, {"time +1ms", true, 4.5}}},
        {"an event at 0 fires with the first time step",
         R"({"at": "0ms", "do": ":silence COM1 5"}, {"at": "0s", "do": ":signal COM1 5 ai 0 2"})",
         {{"time +0ms", true, 2}}},
        {"one step past many events fires them all",
         R"({"at": "1s", "do": ":unplug USB2055 9"}, {"at": "2s", "do": ":plug USB2055 9"},
            {"at": "3s", "do": ":signal COM1 5 ai 0 -3"}, {"at": "4s", "do": ":unplug USB2055 9"})",
         {{"time +1h", true, 0}, {"time +3999ms", true, -3}, {"time +1ms", false, -3}}},
    };
    for (const auto& c : cases) {
        std::string error;
        ASSERT_TRUE(icp_control::load_rig_text("rig", rig(c.events), &error)) << c.what << ": " << error;
        icp_control::Control control(nullptr, nullptr);
        for (const auto& step : c.steps) {
            try {
                control.run(step.directive);
            } catch (const icp_control::Refused& r) {
                // ":time +1h" is refused (not a time): nothing moved.
                EXPECT_STREQ(step.directive, "time +1h") << c.what << ": " << r.what();
            }
            pacsim::ModuleState serial;
            ASSERT_TRUE(pacsim::module_state("COM1", 5, &serial));
            EXPECT_EQ(plugged(kUsb2055, 9), step.usb_plugged) << c.what << " after :" << step.directive;
            EXPECT_DOUBLE_EQ(serial.ai.at(0), step.serial_ai0) << c.what << " after :" << step.directive;
        }
    }
}

// The clocks stand at an event's time when it fires: a frequency set at 1 s
// counts pulses from then on only.
TEST(Timeline, ClocksReachAnEventsTimeBeforeItFires) {
    std::string error;
    ASSERT_TRUE(icp_control::load_rig_text(
        "rig", rig(R"({"at": "1s", "do": ":signal USB2084 1 frequency 0 1000"})"), &error))
        << error;
    icp_control::Control control(nullptr, nullptr);
    control.run("time +3s");
    EXPECT_EQ(usbsim::module_state(kUsb2084, 1)->pi[0].count, 2000u);
    EXPECT_EQ(usbsim::now_ms(), 3000u);
    EXPECT_EQ(pacsim::now_ms(), 3000u);
    EXPECT_EQ(icp_control::rig_time_ms(), 3000u);
}

// An event that fails when it fires (an input the module lacks) is named;
// the time passes and the events after it fire.
TEST(Timeline, AFailingEventIsNamedAndTheRestFire) {
    std::string error;
    ASSERT_TRUE(icp_control::load_rig_text("rig", rig(R"({"at": "1s", "do": ":signal USB2055 9 ai 0 1"},
        {"at": "2s", "do": ":unplug USB2055 9"})"), &error))
        << error;
    Lines lines;
    icp_control::Control control(&keep, &lines);
    control.set_trace(true);
    try {
        control.run("time +5s");
        ADD_FAILURE() << "the failed event is not reported";
    } catch (const icp_control::Refused& r) {
        EXPECT_STREQ(r.what(), "event at 1000 ms (:signal USB2055 9 ai 0 1): the rig has no USB2055 board 9 with that input");
    }
    EXPECT_FALSE(plugged(kUsb2055, 9));
    EXPECT_EQ(usbsim::now_ms(), 5000u);
    EXPECT_EQ(lines.said.back(), "sim: event at 2000 ms: unplugged USB2055 board 9");
    EXPECT_TRUE(icp_control::pending_events().empty());
}

// A rig whose events are wrong is refused whole, with the line at fault:
// the rig loaded before stays, with its timeline.
TEST(Timeline, BadEventsRefuseTheRig) {
    const struct {
        std::string events;
        const char* error;  // after "rig: "
    } cases[] = {
        {R"({"at": "1s", "do": ":unplg USB2055 9"})",
         "line 3: unknown directive ':unplg' (did you mean ':unplug'?)"},
        {R"({"at": "soon", "do": ":unplug USB2055 9"})",
         "line 3: \"at\": a time such as \"2s\" or \"2500ms\" is wanted, not 'soon'"},
        {R"({"at": "-1s", "do": ":unplug USB2055 9"})", nullptr},
        {R"({"at": "1s", "do": ":unplug USB2055 1"})", "line 3: the rig has no USB2055 board 1"},
        {R"({"at": "1s", "do": ":unplug USB2019 9"})", "line 3: the rig has no USB2019 board 9"},
        {R"({"at": "1s", "do": ":silence COM2 5"})", "line 3: the rig has no module 5 on COM2"},
        {R"({"at": "1s", "do": ":signal COM1 4 ai 0 1"})", "line 3: the rig has no module 4 on COM1"},
        {R"({"at": "1s", "do": ":signal COM1 5 ai 0 volts"})", "line 3: volts is wanted as a number, not 'volts'"},
        {R"({"at": "1s", "do": ":unplug USB2055"})", "line 3: usage: :unplug MODEL BOARD"},
        {R"({"at": "1s", "do": ":fault NoSuchCall 1"})", nullptr},
        {R"({"at": "1s", "do": ":time +1s"})", nullptr},
        {R"({"at": "1s", "do": ":rig other.json"})", nullptr},
        {R"({"at": "1s", "do": "unplug USB2055 9"})", nullptr},
        {R"({"at": "1s"})", nullptr},
        {R"({"at": 1000, "do": ":unplug USB2055 9"})", nullptr},
        {R"("1s :unplug USB2055 9")", nullptr},
    };
    const std::string before = rig(R"({"at": "10s", "do": ":unplug USB2084 1"})");
    for (const auto& c : cases) {
        std::string error;
        ASSERT_TRUE(icp_control::load_rig_text("rig", before, &error)) << error;
        icp_control::Control control(nullptr, nullptr);
        control.run("unplug USB2055 9");
        EXPECT_FALSE(icp_control::load_rig_text("rig", rig(c.events), &error)) << c.events;
        if (c.error) {
            EXPECT_EQ(error, std::string("rig: ") + c.error);
        }
        EXPECT_TRUE(error.starts_with("rig: line 3: ")) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos) << error;
        // Nothing of the refused rig: the module unplugged before still is,
        // and the old timeline is still pending.
        EXPECT_FALSE(plugged(kUsb2055, 9)) << c.events;
        ASSERT_EQ(icp_control::pending_events().size(), 1u) << c.events;
        EXPECT_EQ(icp_control::pending_events()[0].directive, "unplug USB2084 1");
    }
    std::string error;
    EXPECT_FALSE(icp_control::load_rig_text("rig", R"({"events": {"at": "1s"}})", &error));
    EXPECT_EQ(error, "rig: line 1: \"events\" must be a list: an event is {\"at\": \"2s\", \"do\": \":unplug USB2019 1\"}");
}

// A user-defined board ID (rotary switch at 0) is the board events name.
TEST(Timeline, EventsNameAModuleByItsBoardId) {
    std::string error;
    EXPECT_TRUE(icp_control::load_rig_text("rig", R"({"usb": [{"model": "USB2055", "board": 0, "user_board": 40}],
        "events": [{"at": "1s", "do": ":unplug USB2055 40"}]})", &error)) << error;
    EXPECT_FALSE(icp_control::load_rig_text("rig", R"({"usb": [{"model": "USB2055", "board": 0}],
        "events": [{"at": "1s", "do": ":unplug USB2055 0"}]})", &error));
    EXPECT_EQ(error, "rig: line 2: the rig has no USB2055 board 0");
}

// Directives that cannot reach the stand-ins (another plug-in carries its
// own) say so; those of the host still work.
TEST(Directives, UnreachableStandinsAreNamed) {
    icp_control::Control control(nullptr, nullptr);
    control.set_unreachable("cannot reach the simulator inside sim.so");
    for (const char* directive : {"unplug USB2055 9", "time +1s", "rig x.json", "trace on", "fault OpenDevice 1"}) {
        try {
            control.run(directive);
            ADD_FAILURE() << directive;
        } catch (const icp_control::Refused& r) {
            const std::string name = std::string(":") + std::string(directive).substr(0, std::string(directive).find(' '));
            EXPECT_EQ(r.what(), name + " cannot reach the simulator inside sim.so");
        }
    }
    EXPECT_NO_THROW(control.run("wait 1ms"));
}

}  // namespace

namespace {

// A rig path that is no rig file is refused at once (a device is never
// read: it may never end), and the rig stays.
TEST(Rig, PathsThatAreNoRigFile) {
    const auto folder = std::filesystem::temp_directory_path();
    struct Case {
        std::string path;
        std::string error;
    };
    std::vector<Case> cases = {
        {(folder / "icp_no_such.rig.json").string(), "cannot read the rig " + (folder / "icp_no_such.rig.json").string()},
        {folder.string(), "cannot read the rig " + folder.string() + " (a directory)"},
    };
#if !defined(_WIN32)
    cases.push_back({"/dev/zero", "cannot read the rig /dev/zero (not a file)"});
#endif
    for (const auto& c : cases) {
        std::string error;
        ASSERT_TRUE(icp_control::load_rig("", &error));
        icp_control::Control(nullptr, nullptr).run("unplug USB2019 1");
        EXPECT_FALSE(icp_control::load_rig(c.path, &error)) << c.path;
        EXPECT_EQ(error, c.error);
        EXPECT_FALSE(plugged(code_of("USB2019"), 1)) << c.path;
    }
}

}  // namespace

namespace {

void set_env(const char* name, const char* value) {
#if defined(_WIN32)
    _putenv_s(name, value == nullptr ? "" : value);
#else
    if (value == nullptr) unsetenv(name);
    else setenv(name, value, 1);
#endif
}

// The simulated library's rig: ICPDAS_RIG, else the file beside the
// library, else none (the built-in rig); the trace only from ICPDAS_TRACE.
TEST(Standalone, SettingsFromTheEnvironment) {
    const auto folder = std::filesystem::temp_directory_path() / "icp_standalone_settings";
    std::filesystem::create_directories(folder);
    const auto beside = folder / "icpdas_rig.json";
    const struct {
        const char* rig_env;
        const char* trace_env;
        bool file_beside;
        std::string rig, trace;
    } cases[] = {
        {"mine.json", "t.log", true, "mine.json", "t.log"},
        {nullptr, nullptr, true, beside.string(), ""},
        {"", "", true, beside.string(), ""},
        {nullptr, nullptr, false, "", ""},
    };
    for (const auto& c : cases) {
        std::filesystem::remove(beside);
        if (c.file_beside) std::ofstream(beside) << "{}";
        set_env("ICPDAS_RIG", c.rig_env);
        set_env("ICPDAS_TRACE", c.trace_env);
        const auto s = icp_control::standalone_settings(folder);
        EXPECT_EQ(s.rig, c.rig);
        EXPECT_EQ(s.trace, c.trace);
    }
    set_env("ICPDAS_RIG", nullptr);
    set_env("ICPDAS_TRACE", nullptr);
    std::filesystem::remove_all(folder);
}

}  // namespace
