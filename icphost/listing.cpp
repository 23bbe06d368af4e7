#include "icphost/listing.h"

#include <cstddef>
#include <nlohmann/json.hpp>

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

}  // namespace

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
    if (!f.help.empty()) labelled(out, "", f.help[0], 2);
    if (f.help.size() > 1) labelled(out, "  Result:", f.help[1]);
    for (std::size_t i = 2; i < f.help.size(); ++i)
        labelled(out, "  Parameter " + std::to_string(i - 1) + ":", f.help[i]);
}

void print_functions(std::ostream& out, std::span<const ScriptFunction> functions) {
    bool first = true;
    for (const auto& f : functions) {
        if (!first) out << '\n';
        print_help(out, f);
        first = false;
    }
}

void print_functions_json(std::ostream& out, std::span<const ScriptFunction> functions) {
    out << "[\n";
    for (std::size_t i = 0; i < functions.size(); ++i) {
        const auto& f = functions[i];
        auto help = nlohmann::ordered_json::array();
        for (const auto& item : f.help) help.push_back(to_utf8(item));
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
