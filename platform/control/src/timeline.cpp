// A rig's timeline: its events, checked when the rig loads and fired as the
// rig's clock runs on.
#include <algorithm>
#include <mutex>

#include <icp_platform/format.h>
#include <icp_platform/rig_json.h>
#include <nlohmann/json.hpp>

#include "icp_control/directives.h"
#include "standins.h"

namespace icp_control {

namespace {

struct Timeline {
    std::mutex mutex;
    std::vector<Event> events;
    std::size_t next = 0;  // the first not fired
    std::uint64_t now = 0;  // ms since the rig loaded
};

// Never destroyed: the simulated library's clock thread may still fire
// events while the process exits.
Timeline& timeline() {
    static Timeline& instance = *new Timeline;
    return instance;
}

using nlohmann::json;

RigIndex index_of(const json& doc) {
    RigIndex index;
    const auto list = [&](const char* key) {
        const auto it = doc.find(key);
        return it != doc.end() && it->is_array() ? *it : json::array();
    };
    for (const json& e : list("usb")) {
        if (!e.is_object() || !e.value("model", json()).is_string()) continue;
        const usbsim::Model* model = usbsim::find_model(e["model"].get<std::string>());
        const json board = e.value("board", json());
        if (model == nullptr || !board.is_number_unsigned()) continue;
        unsigned id = board.get<unsigned>();
        // At 0 (and 16-127) the user-defined board ID is the module's.
        if (id == 0) id = e.value("user_board", json(16)).is_number_unsigned() ? e.value("user_board", 16u) : 16u;
        index.usb.emplace(model->type_code, id);
    }
    for (const json& p : list("serial")) {
        if (!p.is_object() || !p.value("port", json()).is_string()) continue;
        const std::string port = upper(p["port"].get<std::string>());
        const json modules = p.value("modules", json());
        if (!modules.is_array()) continue;
        for (const json& m : modules)
            if (m.is_object() && m.value("address", json()).is_number_integer())
                index.serial.emplace(port, m["address"].get<int>());
    }
    return index;
}

}  // namespace

bool checked(const Control& control, const UsbModule& m) {
    const RigIndex* rig = control.checking();
    if (rig == nullptr) return false;
    found(rig->usb.count({m.type_code, m.board}) > 0, m.name);
    return true;
}

bool checked(const Control& control, const SerialModule& m) {
    const RigIndex* rig = control.checking();
    if (rig == nullptr) return false;
    found(rig->serial.count({m.port, m.address}) > 0, m.name);
    return true;
}

bool read_events(const std::string& text, std::vector<Event>* events, std::string* error) {
    const auto doc = icp_platform::parse_rig_json(text, error);
    if (!doc) return false;
    events->clear();
    const auto list = doc->is_object() ? doc->find("events") : doc->end();
    if (list == doc->end() || list->is_null()) return true;
    const auto fail = [&](const std::string& path, const std::string& what) {
        *error = "line " + std::to_string(icp_platform::rig_line_of(text, path)) + ": " + what;
        return false;
    };
    const char* form = "an event is {\"at\": \"2s\", \"do\": \":unplug USB2019 1\"}";
    if (!list->is_array()) return fail("/events", "\"events\" must be a list: " + std::string(form));
    const RigIndex index = index_of(*doc);
    Control checker(nullptr, nullptr);
    checker.set_checking(&index);
    for (std::size_t i = 0; i < list->size(); ++i) {
        const json& e = (*list)[i];
        const std::string path = "/events/" + std::to_string(i);
        if (!e.is_object() || !e.value("at", json()).is_string() || !e.value("do", json()).is_string())
            return fail(path, form);
        Event event{};
        try {
            event.at_ms = duration_ms(e["at"].get<std::string>(), "\"at\": a time such as \"2s\" or \"2500ms\"");
        } catch (const Refused& r) {
            return fail(path + "/at", r.what());
        }
        const std::string line = e["do"].get<std::string>();
        const std::size_t colon = line.find_first_not_of(" \t");
        if (colon == std::string::npos || line[colon] != ':')
            return fail(path + "/do", "\"do\": a directive starting with ':' is wanted, not " + icp_platform::quoted(line));
        event.directive = line.substr(colon + 1);
        try {
            checker.perform(event.directive);
        } catch (const Refused& r) {
            return fail(path + "/do", r.what());
        }
        events->push_back(std::move(event));
    }
    // Events at one time keep the file's order.
    std::stable_sort(events->begin(), events->end(),
                     [](const Event& a, const Event& b) { return a.at_ms < b.at_ms; });
    return true;
}

void set_timeline(std::vector<Event> events) {
    Timeline& t = timeline();
    std::lock_guard held(t.mutex);
    t.events = std::move(events);
    t.next = 0;
    t.now = 0;
}

std::vector<Event> pending_events() {
    Timeline& t = timeline();
    std::lock_guard held(t.mutex);
    return {t.events.begin() + static_cast<std::ptrdiff_t>(t.next), t.events.end()};
}

std::uint64_t rig_time_ms() {
    Timeline& t = timeline();
    std::lock_guard held(t.mutex);
    return t.now;
}

void Control::advance(std::uint64_t ms) {
    Timeline& t = timeline();
    std::lock_guard held(t.mutex);
    const std::uint64_t target = t.now + ms;
    std::string failed;
    while (t.next < t.events.size() && t.events[t.next].at_ms <= target) {
        const Event& e = t.events[t.next++];
        if (e.at_ms > t.now) advance_clocks(e.at_ms - t.now), t.now = e.at_ms;
        const std::string when = "event at " + std::to_string(e.at_ms) + " ms";
        try {
            const std::string done = perform(e.directive);
            if (trace_) say("sim: " + when + ": " + done);
        } catch (const Refused& r) {
            failed += (failed.empty() ? "" : "; ") + when + " (:" + e.directive + "): " + r.what();
        }
    }
    advance_clocks(target - t.now);
    t.now = target;
    if (!failed.empty()) throw Refused(failed);
}

}  // namespace icp_control
