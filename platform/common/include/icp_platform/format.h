// Number and text formatting shared by the stand-ins and the command-line host.
#pragma once

#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

namespace icp_platform {

// The shortest text that reads back as the same double, always with a '.'
// or an exponent so that it reads as a real: 4294967295.0,
// 0.10000000149011612, 1e+300, nan, inf, -inf.
inline std::string shortest_real(double x) {
    if (std::isnan(x)) return "nan";
    if (std::isinf(x)) return x < 0 ? "-inf" : "inf";
    char buf[64];
    auto res = std::to_chars(buf, buf + sizeof buf, x);
    std::string s(buf, res.ptr);
    if (s.find_first_of(".e") == std::string::npos) s += ".0";
    return s;
}

// ASCII case folding, the same in every locale: names of functions,
// directives and signals compare without letter case.
constexpr char lower(char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; }
constexpr char upper(char c) { return (c >= 'a' && c <= 'z') ? char(c - 'a' + 'A') : c; }

// User text quoted in messages (names, tokens) is cut to this many bytes.
inline constexpr std::size_t max_quoted = 64;

// `text` cut to max_quoted bytes, at a UTF-8 character boundary, with "..."
// when it is longer, and control characters shown as '?': a message stays
// one readable line whatever it quotes.
inline std::string clip(std::string_view text) {
    std::size_t cut = text.size();
    if (cut > max_quoted) {
        cut = max_quoted;
        while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
    }
    std::string out(text.substr(0, cut));
    for (char& c : out)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    return cut < text.size() ? out + "..." : out;
}

// `text` clipped and in single quotes, as messages quote a name or a token.
inline std::string quoted(std::string_view text) { return "'" + clip(text) + "'"; }

}  // namespace icp_platform
