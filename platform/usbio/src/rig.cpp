// Rigs from JSON text: {"usb": [{"model": "USB2019", "board": 1, ...}, ...]}.
//
// Keys of a module entry besides "model" and "board" (0-255), all optional:
//   "user_board"    16-127, the user-defined board ID (with board 0)
//   "nickname", "serial"   text of at most 31 characters
//   "firmware"      0-65535
//   "plugged"       false: attached but unplugged
//   "di"            the DI signal word
//   "ai"            AI signals per channel, in the default type's unit
//   "ai_open_wire"  channel numbers with an open wire
//   "cjc"           cold-junction temperature in degrees Celsius
//   "pi_count"      initial PI counts per channel
//   "pi_frequency"  PI signal frequencies per channel, Hz
// Other keys, and the "serial" list of the rig, are left to others.
#include <cmath>
#include <optional>

#include <icp_platform/rig_json.h>
#include <nlohmann/json.hpp>

#include "sim.h"

namespace usbsim {
namespace {

using nlohmann::json;

// A value's place in the rig text, as a pointer: "/usb/1/board".
using Path = std::string;

struct RigError {
    Path path;
    std::string message;
};

// One module of the rig, as checked.
struct Entry {
    const Model* model = nullptr;
    std::uint8_t board = 0;
    json source;  // the entry as written
};

bool is_uint(const json& v, std::uint64_t max) {
    return v.is_number_unsigned() && v.get<std::uint64_t>() <= max;
}

std::optional<RigError> check_entry(const json& e, const Path& at, Entry& out) {
    auto here = [&](const std::string& key) { return at + "/" + key; };
    if (!e.is_object()) return RigError{at, "a module is an object with \"model\" and \"board\""};
    if (!e.contains("model")) return RigError{at, "a module needs a \"model\""};
    const json& model = e["model"];
    if (!model.is_string()) return RigError{here("model"), "\"model\" must be a model ID text"};
    out.model = find_model(model.get<std::string>());
    if (!out.model) return RigError{here("model"), "unknown model \"" + icp_platform::clip(model.get<std::string>()) + "\""};
    if (!e.contains("board")) return RigError{at, "a module needs a \"board\""};
    if (!is_uint(e["board"], 255)) return RigError{here("board"), "\"board\" must be an integer 0-255"};
    out.board = e["board"].get<std::uint8_t>();
    if (e.contains("user_board")) {
        const json& v = e["user_board"];
        if (!v.is_number_integer() || v.get<std::int64_t>() < 16 || v.get<std::int64_t>() > 127)
            return RigError{here("user_board"), "\"user_board\" must be an integer 16-127"};
        if (out.board != 0) return RigError{here("user_board"), "\"user_board\" needs \"board\" 0"};
        out.board = v.get<std::uint8_t>();
    }
    for (const char* key : {"nickname", "serial"}) {
        if (!e.contains(key)) continue;
        const json& v = e[key];
        if (!v.is_string() || v.get<std::string>().size() > USBIO_TEXT_SIZE - 1 ||
            v.get<std::string>().find('\0') != std::string::npos)
            return RigError{here(key), std::string("\"") + key + "\" must be a text of at most 31 characters"};
    }
    if (e.contains("firmware") && !is_uint(e["firmware"], 0xFFFF))
        return RigError{here("firmware"), "\"firmware\" must be an integer 0-65535"};
    if (e.contains("plugged") && !e["plugged"].is_boolean())
        return RigError{here("plugged"), "\"plugged\" must be true or false"};
    if (e.contains("di") && !is_uint(e["di"], 0xFFFFFFFF))
        return RigError{here("di"), "\"di\" must be an integer 0-4294967295"};
    if (e.contains("cjc") && !e["cjc"].is_number()) return RigError{here("cjc"), "\"cjc\" must be a number"};

    // Per-channel lists: at most the group's channel total.
    struct ListKey {
        const char* key;
        unsigned total;
        bool (*ok)(const json&, unsigned total);
        const char* what;
    };
    const ListKey lists[] = {
        {"ai", out.model->ai, [](const json& v, unsigned) { return v.is_number(); }, "numbers"},
        {"ai_open_wire", out.model->ai, [](const json& v, unsigned n) { return is_uint(v, n ? n - 1 : 0) && n; },
         "channel numbers"},
        {"pi_count", out.model->pi, [](const json& v, unsigned) { return is_uint(v, 0xFFFFFFFF); },
         "integers 0-4294967295"},
        {"pi_frequency", out.model->pi,
         [](const json& v, unsigned) { return v.is_number() && v.get<double>() >= 0.0; }, "frequencies (Hz)"},
    };
    for (const ListKey& l : lists) {
        if (!e.contains(l.key)) continue;
        const json& v = e[l.key];
        std::string need = std::string("\"") + l.key + "\" must be a list of at most " +
                           std::to_string(l.total) + " " + l.what + " for " + out.model->id;
        if (!v.is_array() || v.size() > l.total) return RigError{here(l.key), need};
        for (std::size_t i = 0; i < v.size(); ++i) {
            if (!l.ok(v[i], l.total)) {
                return RigError{here(l.key) + "/" + std::to_string(i), need};
            }
        }
    }
    out.source = e;
    return std::nullopt;
}

std::uint8_t effective_board(std::uint8_t board) { return board == 0 ? 16 : board; }

// Checks the whole text; on success fills entries.
bool check(const std::string& text, std::vector<Entry>& entries, std::string* error) {
    auto fail = [&](std::size_t line, const std::string& message) {
        if (error) *error = "line " + std::to_string(line) + ": " + message;
        return false;
    };
    const auto parsed = icp_platform::parse_rig_json(text, error);
    if (!parsed) return false;
    const json& root = *parsed;
    auto line_of = [&](const Path& path) { return icp_platform::rig_line_of(text, path); };
    if (!root.is_object()) return fail(1, "a rig is a JSON object");
    if (!root.contains("usb") || root["usb"].is_null()) return true;
    const json& usb = root["usb"];
    if (!usb.is_array()) return fail(line_of("/usb"), "\"usb\" must be a list of modules");
    for (std::size_t i = 0; i < usb.size(); ++i) {
        const Path at = "/usb/" + std::to_string(i);
        Entry entry;
        if (auto err = check_entry(usb[i], at, entry)) return fail(line_of(err->path), err->message);
        for (const Entry& other : entries) {
            if (other.model == entry.model && effective_board(other.board) == effective_board(entry.board)) {
                return fail(line_of(at + "/board"), std::string("a second ") + entry.model->id + " with board ID " +
                                                   std::to_string(effective_board(entry.board)));
            }
        }
        entries.push_back(std::move(entry));
    }
    return true;
}

void build(detail::Sim& s, const std::vector<Entry>& entries) {
    for (const Entry& e : entries) {
        detail::Module* m = s.add(*e.model, e.board);
        if (!m) continue;  // cannot happen after check()
        const json& j = e.source;
        if (j.contains("nickname")) m->nickname = j["nickname"].get<std::string>();
        if (j.contains("serial")) m->serial = j["serial"].get<std::string>();
        if (j.contains("firmware")) m->firmware = j["firmware"].get<std::uint16_t>();
        if (j.contains("plugged")) m->plugged = j["plugged"].get<bool>();
        if (j.contains("di")) m->di_signal = j["di"].get<std::uint32_t>();
        if (j.contains("cjc")) m->cjc_celsius = j["cjc"].get<double>();
        if (j.contains("ai"))
            for (std::size_t ch = 0; ch < j["ai"].size(); ++ch) m->ai[ch].signal = j["ai"][ch].get<double>();
        if (j.contains("ai_open_wire"))
            for (const auto& ch : j["ai_open_wire"]) m->ai[ch.get<std::size_t>()].open_wire = true;
        if (j.contains("pi_count"))
            for (std::size_t ch = 0; ch < j["pi_count"].size(); ++ch)
                m->pi[ch].count = j["pi_count"][ch].get<std::uint32_t>();
        if (j.contains("pi_frequency"))
            for (std::size_t ch = 0; ch < j["pi_frequency"].size(); ++ch)
                m->pi[ch].frequency_hz = j["pi_frequency"][ch].get<double>();
    }
}

}  // namespace

bool check_rig(const std::string& json_text, std::string* error) {
    std::vector<Entry> entries;
    return check(json_text, entries, error);
}

bool load_rig(const std::string& json_text, std::string* error) {
    std::vector<Entry> entries;
    if (!check(json_text, entries, error)) return false;
    auto held = detail::lock();
    detail::Sim& s = detail::sim();
    s.clear();
    build(s, entries);
    return true;
}

}  // namespace usbsim
