#include "icphost/listing.h"
#include "icphost/text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <tuple>
#include <utility>

#include <icp_platform/names.h>

namespace icphost {

namespace {

// "  Parameter 5: ", the widest label.
constexpr std::size_t label_width = 15;

// `text` after a label padded to `width`; its further lines are indented as
// far.
void labelled(std::ostream& out, std::string_view label, std::string_view text,
              std::size_t width = label_width) {
    const std::string pad(width, ' ');
    std::string head(label);
    head.resize(width, ' ');
    bool first = true;
    for (;;) {
        const std::size_t end = text.find('\n');
        out << (first ? head : pad) << text.substr(0, end) << '\n';
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
        first = false;
    }
}

// The length of the UTF-8 sequence at the start of `s`, or 0 when it is
// not a valid one (overlong forms and surrogates included).
std::size_t utf8_sequence(std::string_view s) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
    const unsigned char b0 = byte(0);
    if (b0 < 0x80) return 1;
    std::size_t n = 0;
    unsigned char low = 0x80, high = 0xBF;  // range of the second byte
    if (b0 >= 0xC2 && b0 <= 0xDF) n = 2;
    else if (b0 == 0xE0) n = 3, low = 0xA0;
    else if (b0 == 0xED) n = 3, high = 0x9F;
    else if (b0 >= 0xE1 && b0 <= 0xEF) n = 3;
    else if (b0 == 0xF0) n = 4, low = 0x90;
    else if (b0 == 0xF4) n = 4, high = 0x8F;
    else if (b0 >= 0xF1 && b0 <= 0xF3) n = 4;
    else return 0;
    if (s.size() < n || byte(1) < low || byte(1) > high) return 0;
    for (std::size_t i = 2; i < n; ++i)
        if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
    return n;
}

// The groups in the order they are listed, each with the export-name
// patterns that claim a function. A function belongs to the group of the
// longest pattern it matches, so "icpusb_ai_*" wins over "icpusb_*".
struct Group {
    std::string_view title;
    std::array<std::string_view, 4> patterns;
};
constexpr Group groups[] = {
    {"Plug-in", {"plugin_*"}},
    {"USB device", {"icpusb_*"}},
    {"USB digital input and output", {"icpusb_di_*", "icpusb_do_*"}},
    {"USB analog input", {"icpusb_ai_*"}},
    {"USB analog output", {"icpusb_ao_*"}},
    {"USB pulse input", {"icpusb_pi_*"}},
    {"Serial port", {"icpcom_*"}},
    {"Serial commands", {"icpcom_sendcmd", "icpcom_rec_*"}},
    {"Serial module input and output", {"icpcom_ai_*", "icpcom_ao_*", "icpcom_di_*", "icpcom_do_*"}},
    {"Serial module watchdog", {"icpcom_*wdt*"}},
    {"Serial PWM", {"icpcom_*pwm*"}},
    {"Other", {"*"}},
};
constexpr auto titles = [] {
    std::array<std::string_view, std::size(groups)> t{};
    for (std::size_t i = 0; i < t.size(); ++i) t[i] = groups[i].title;
    return t;
}();

// '*' any run, '?' any one character; letter case is ignored.
bool wildcard(std::string_view pattern, std::string_view text) {
    std::size_t p = 0, t = 0, star = std::string_view::npos, resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || lower(pattern[p]) == lower(text[t]))) {
            ++p, ++t;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++, resume = t;
        } else if (star != std::string_view::npos) {
            p = star + 1, t = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

bool contains(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char a, char b) { return lower(a) == lower(b); }) != text.end();
}

using icp_platform::loose_key;

std::string first_line(std::string_view text) { return std::string(text.substr(0, text.find('\n'))); }

void heading(std::ostream& out, std::string_view title, bool first) {
    if (!first) out << '\n';
    out << title << '\n' << std::string(title.size(), '=') << "\n\n";
}

// Runs each(function, first in its group) group by group, heading each.
template <class Each>
void by_group(std::ostream& out, std::span<const ScriptFunction* const> functions, Each each) {
    std::size_t group = std::size(groups);
    bool first = true;
    for (const auto* f : functions) {
        const std::size_t g = group_of(*f);
        const bool starts = g != group;
        if (starts) heading(out, groups[g].title, first);
        each(*f, starts);
        group = g;
        first = false;
    }
}

// Markdown text: characters that would format are escaped, a new line of the
// help text is a line break.
std::string markdown(std::string_view text) {
    std::string out;
    bool line_start = true;
    for (char c : to_utf8(text)) {
        if (c == '\n') {
            while (!out.empty() && out.back() == ' ') out.pop_back();
            out += "<br>\n";
            line_start = true;
            continue;
        }
        if (std::string_view("\\`*_[]<>|#").find(c) != std::string_view::npos ||
            (line_start && (c == '-' || c == '+')))
            out += '\\';
        out += c;
        if (c != ' ') line_start = false;
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

std::string anchor(std::string_view title) {
    std::string a;
    for (char c : title) a += c == ' ' ? '-' : lower(c);
    return a;
}

}  // namespace

std::span<const std::string_view> group_titles() { return titles; }

std::size_t group_of(const ScriptFunction& f) {
    std::size_t best = std::size(groups) - 1, longest = 0;
    for (std::size_t g = 0; g < std::size(groups); ++g) {
        for (const auto pattern : groups[g].patterns) {
            if (pattern.empty() || pattern.size() <= longest) continue;
            if (wildcard(pattern, f.export_name)) best = g, longest = pattern.size();
        }
    }
    return best;
}

std::vector<const ScriptFunction*> catalogue_order(std::span<const ScriptFunction> functions) {
    struct Keyed {
        std::size_t group;
        std::string key;
        const ScriptFunction* f;
    };
    std::vector<Keyed> keyed;
    for (const auto& f : functions) {
        std::string key;
        for (char c : f.name) key += lower(c);
        keyed.push_back({group_of(f), std::move(key), &f});
    }
    std::sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) {
        return std::tie(a.group, a.key, a.f->name, a.f->export_name) <
               std::tie(b.group, b.key, b.f->name, b.f->export_name);
    });
    std::vector<const ScriptFunction*> out;
    for (const auto& k : keyed) out.push_back(k.f);
    return out;
}

bool matches(const ScriptFunction& f, std::string_view pattern) {
    if (pattern.find_first_of("*?") == std::string_view::npos)
        return contains(f.name, pattern) || contains(f.export_name, pattern);
    return wildcard(pattern, f.name) || wildcard(pattern, f.export_name);
}

std::vector<std::string> nearest_names(std::span<const std::string> names, std::string_view name) {
    return icp_platform::nearest_names(names, name);
}

std::vector<std::string> nearest_names(std::span<const ScriptFunction> functions, std::string_view name) {
    std::vector<std::string> names;
    for (const auto& f : functions) names.push_back(f.name);
    auto by_name = nearest_names(names, name);
    // A mistyped export name leads to the script name too.
    if (by_name.empty()) {
        for (const auto& f : functions)
            if (loose_key(f.export_name) == loose_key(name)) by_name.push_back(f.name);
    }
    return by_name;
}

std::string did_you_mean(const std::vector<std::string>& names) { return icp_platform::did_you_mean(names); }

std::vector<std::string> parameter_lines(const ScriptFunction& f) {
    std::vector<std::string> lines;
    for (std::size_t i = 2; i < f.help().size(); ++i)
        lines.push_back(std::to_string(i - 1) + ". " + first_line(f.help()[i]));
    if (lines.empty()) lines.emplace_back("no parameters");
    return lines;
}

std::string to_utf8(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        std::size_t n = utf8_sequence(text);
        if (n > 0) {
            out += text.substr(0, n);
        } else {
            const auto b = static_cast<unsigned char>(text[0]);
            out += static_cast<char>(0xC0 | (b >> 6));
            out += static_cast<char>(0x80 | (b & 0x3F));
            n = 1;
        }
        text.remove_prefix(n);
    }
    return out;
}

void print_help(std::ostream& out, const ScriptFunction& f) {
    const std::size_t n = f.arity();
    out << f.name << "  (" << f.export_name << ", "
        << (n == 0 ? std::string("no parameters")
                   : std::to_string(n) + (n == 1 ? " parameter" : " parameters"))
        << ")\n";
    if (!f.help().empty()) labelled(out, "", f.help()[0], 2);
    if (f.help().size() > 1) labelled(out, "  Result:", f.help()[1]);
    for (std::size_t i = 2; i < f.help().size(); ++i)
        labelled(out, "  Parameter " + std::to_string(i - 1) + ":", f.help()[i]);
}

void print_functions(std::ostream& out, std::span<const ScriptFunction* const> functions) {
    by_group(out, functions, [&](const ScriptFunction& f, bool starts) {
        if (!starts) out << '\n';
        print_help(out, f);
    });
}

void print_summary(std::ostream& out, std::span<const ScriptFunction* const> functions) {
    std::size_t width = 0;
    for (const auto* f : functions) width = std::max(width, f->name.size());
    by_group(out, functions, [&](const ScriptFunction& f, bool) {
        std::string name = f.name;
        name.resize(width + 2, ' ');
        out << "  " << name << to_utf8(f.help().empty() ? "" : first_line(f.help()[0])) << '\n';
    });
}

void print_functions_markdown(std::ostream& out, std::span<const ScriptFunction* const> functions) {
    out << "# Script functions\n\n"
           "Every script function of the plug-in, by group, as its own help records\n"
           "describe it. This file is generated by `icphost functions --markdown`; a test\n"
           "fails when it differs from what the built plug-in says.\n\n";
    std::vector<std::size_t> counts(std::size(groups));
    for (const auto* f : functions) ++counts[group_of(*f)];
    for (std::size_t g = 0; g < counts.size(); ++g) {
        if (counts[g] > 0)
            out << "- [" << groups[g].title << "](#" << anchor(groups[g].title) << "): " << counts[g]
                << (counts[g] == 1 ? " function\n" : " functions\n");
    }
    std::size_t group = std::size(groups);
    for (const auto* f : functions) {
        if (const std::size_t g = group_of(*f); g != group) {
            out << "\n## " << groups[g].title << '\n';
            group = g;
        }
        out << "\n### `" << to_utf8(f->name) << "`\n\n";
        if (!f->help().empty() && !f->help()[0].empty()) out << markdown(f->help()[0]) << "\n\n";
        for (std::size_t i = 2; i < f->help().size(); ++i)
            out << "- Parameter " << i - 1 << ": " << markdown(f->help()[i]) << '\n';
        if (f->help().size() > 1) out << "- Result: " << markdown(f->help()[1]) << '\n';
        out << "- Export: `" << to_utf8(f->export_name) << "`\n";
    }
}

void print_functions_json(std::ostream& out, std::span<const ScriptFunction* const> functions) {
    out << "[\n";
    for (std::size_t i = 0; i < functions.size(); ++i) {
        const auto& f = *functions[i];
        auto help = nlohmann::ordered_json::array();
        for (const auto& item : f.help()) help.push_back(to_utf8(item));
        const nlohmann::ordered_json record = {
            {"export", to_utf8(f.export_name)},
            {"name", to_utf8(f.name)},
            {"help", std::move(help)},
        };
        out << record.dump() << (i + 1 < functions.size() ? ",\n" : "\n");
    }
    out << "]\n";
}

const ScriptFunction* find_function(std::span<const ScriptFunction> functions,
                                    std::string_view name) {
    for (const auto& f : functions)
        if (f.name == name) return &f;
    for (const auto& f : functions)
        if (f.export_name == name) return &f;
    return nullptr;
}

}  // namespace icphost
