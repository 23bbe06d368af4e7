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
#include <variant>

#include <nlohmann/json.hpp>

#include "sim.h"

namespace usbsim {
namespace {

using nlohmann::json;
using Step = std::variant<std::string, std::size_t>;
using Path = std::vector<Step>;

// Finds where a value starts in a text that parsed as JSON.
class Locator {
public:
    explicit Locator(const std::string& text) : t_(text) {}

    std::size_t line_of(const Path& path) {
        std::size_t pos = find(path).value_or(0);
        std::size_t line = 1;
        for (std::size_t i = 0; i < pos && i < t_.size(); ++i)
            if (t_[i] == '\n') ++line;
        return line;
    }

private:
    std::optional<std::size_t> find(const Path& path) {
        std::size_t pos = skip_ws(0);
        for (const Step& step : path) {
            std::optional<std::size_t> next;
            if (pos >= t_.size()) return std::nullopt;
            if (t_[pos] == '{' && std::holds_alternative<std::string>(step)) {
                pos = skip_ws(pos + 1);
                while (pos < t_.size() && t_[pos] == '"') {
                    std::size_t end = skip_value(pos);
                    std::string key = json::parse(t_.substr(pos, end - pos)).get<std::string>();
                    pos = skip_ws(skip_ws(end) + 1);  // past ':'
                    if (key == std::get<std::string>(step)) next = pos;  // the last one counts
                    pos = skip_ws(skip_value(pos));
                    if (pos < t_.size() && t_[pos] == ',') pos = skip_ws(pos + 1);
                }
            } else if (t_[pos] == '[' && std::holds_alternative<std::size_t>(step)) {
                pos = skip_ws(pos + 1);
                for (std::size_t k = 0; pos < t_.size() && t_[pos] != ']'; ++k) {
                    if (k == std::get<std::size_t>(step)) {
                        next = pos;
                        break;
                    }
                    pos = skip_ws(skip_value(pos));
                    if (pos < t_.size() && t_[pos] == ',') pos = skip_ws(pos + 1);
                }
            }
            if (!next) return std::nullopt;
            pos = *next;
        }
        return pos;
    }

    std::size_t skip_ws(std::size_t i) const {
        while (i < t_.size() && (t_[i] == ' ' || t_[i] == '\t' || t_[i] == '\n' || t_[i] == '\r')) ++i;
        return i;
    }

    // The position just after the value starting at i.
    std::size_t skip_value(std::size_t i) const {
        if (i >= t_.size()) return i;
        if (t_[i] == '"') {
            for (++i; i < t_.size() && t_[i] != '"'; ++i)
                if (t_[i] == '\\') ++i;
            return i + 1;
        }
        if (t_[i] == '{' || t_[i] == '[') {
            int depth = 0;
            for (; i < t_.size(); ++i) {
                char c = t_[i];
                if (c == '"') {
                    i = skip_value(i) - 1;
                } else if (c == '{' || c == '[') {
                    ++depth;
                } else if (c == '}' || c == ']') {
                    if (--depth == 0) return i + 1;
                }
            }
            return i;
        }
        while (i < t_.size() && std::string_view(",]} \t\r\n").find(t_[i]) == std::string_view::npos) ++i;
        return i;
    }

    const std::string& t_;
};

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
    auto here = [&](const std::string& key) {
        Path p = at;
        p.push_back(key);
        return p;
    };
    if (!e.is_object()) return RigError{at, "a module is an object with \"model\" and \"board\""};
    if (!e.contains("model")) return RigError{at, "a module needs a \"model\""};
    const json& model = e["model"];
    if (!model.is_string()) return RigError{here("model"), "\"model\" must be a model ID text"};
    out.model = find_model(model.get<std::string>());
    if (!out.model) return RigError{here("model"), "unknown model \"" + model.get<std::string>() + "\""};
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
                Path p = here(l.key);
                p.push_back(i);
                return RigError{p, need};
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
    json root;
    try {
        root = json::parse(text);
    } catch (const json::parse_error& e) {
        std::size_t line = 1;
        for (std::size_t i = 0; i + 1 < e.byte && i < text.size(); ++i)
            if (text[i] == '\n') ++line;
        std::string what = e.what();
        if (auto p = what.find("column "); p != std::string::npos) {
            if (auto c = what.find(": ", p); c != std::string::npos) what = what.substr(c + 2);
        } else if (auto c = what.find("] "); c != std::string::npos) {
            what = what.substr(c + 2);
        }
        return fail(line, what);
    }
    Locator where(text);
    if (!root.is_object()) return fail(1, "a rig is a JSON object");
    if (!root.contains("usb") || root["usb"].is_null()) return true;
    const json& usb = root["usb"];
    if (!usb.is_array()) return fail(where.line_of({std::string("usb")}), "\"usb\" must be a list of modules");
    for (std::size_t i = 0; i < usb.size(); ++i) {
        Path at{std::string("usb"), i};
        Entry entry;
        if (auto err = check_entry(usb[i], at, entry)) return fail(where.line_of(err->path), err->message);
        for (const Entry& other : entries) {
            if (other.model == entry.model && effective_board(other.board) == effective_board(entry.board)) {
                at.push_back(std::string("board"));
                return fail(where.line_of(at), std::string("a second ") + entry.model->id + " with board ID " +
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
