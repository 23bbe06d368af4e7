// Reading a rig file's JSON text, shared by both simulators: the text is
// checked and parsed in bounded time and memory, and every fault, found
// while parsing or later, is told as "line N: message".
//
// Include only where nlohmann_json is linked.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "icp_platform/format.h"

namespace icp_platform {

// Arrays and objects nest at most this deep in a rig file.
inline constexpr int max_rig_depth = 256;

namespace rig_detail {

inline bool is_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

inline std::size_t skip_bom(std::string_view t) { return t.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0; }

inline std::size_t skip_space(std::string_view t, std::size_t i) {
    while (i < t.size() && is_space(t[i])) ++i;
    return i;
}

// Just past the string whose opening quote is at i.
inline std::size_t skip_string(std::string_view t, std::size_t i) {
    for (++i; i < t.size() && t[i] != '"'; ++i)
        if (t[i] == '\\') ++i;
    return std::min(i + 1, t.size());
}

// Just past the value starting at i; no recursion, whatever the nesting.
inline std::size_t skip_value(std::string_view t, std::size_t i) {
    if (i >= t.size()) return i;
    if (t[i] == '"') return skip_string(t, i);
    if (t[i] != '{' && t[i] != '[') {
        while (i < t.size() && std::string_view(",]} \t\r\n").find(t[i]) == std::string_view::npos) ++i;
        return i;
    }
    std::size_t depth = 0;
    while (i < t.size()) {
        const char c = t[i];
        if (c == '"') {
            i = skip_string(t, i);
            continue;
        }
        ++i;
        if (c == '{' || c == '[') ++depth;
        if ((c == '}' || c == ']') && --depth == 0) break;
    }
    return i;
}

inline std::size_t line_at(std::string_view t, std::size_t pos) {
    return 1 + static_cast<std::size_t>(std::count(t.begin(), t.begin() + static_cast<std::ptrdiff_t>(std::min(pos, t.size())), '\n'));
}

// A key as the parser reads it: escapes decoded.
inline std::string key_text(std::string_view quoted_key) {
    if (quoted_key.find('\\') == std::string_view::npos)
        return std::string(quoted_key.substr(1, quoted_key.size() - 2));
    try {
        return nlohmann::json::parse(quoted_key).get<std::string>();
    } catch (const nlohmann::json::exception&) {
        return {};
    }
}

// The part of a parser message after its position (or its exception name),
// with the text it quotes ("last read: '...'") clipped.
inline std::string parse_message(const std::string& what) {
    std::size_t at = what.find("column ");
    if (at != std::string::npos) at = what.find(": ", at);
    std::size_t cut = at == std::string::npos ? what.find("] ") : at;
    std::string message = cut == std::string::npos ? what : what.substr(cut + 2);
    const std::string lead = "last read: '";
    const std::size_t first = message.find(lead);
    if (first == std::string::npos) return message;
    const std::size_t start = first + lead.size();
    std::size_t end = message.rfind("'; expected ");
    if (end == std::string::npos || end < start) end = message.rfind('\'');
    if (end == std::string::npos || end < start) return message;
    return message.substr(0, start) + clip(std::string_view(message).substr(start, end - start)) +
           message.substr(end);
}

}  // namespace rig_detail

// "line N: message" for what the JSON parser would mishandle: a NUL byte
// (the parser would take it for the end of the text), arrays and objects
// nested deeper than max_rig_depth (the parser and the readers would spend
// memory and stack on every level), a number beyond a double's range.
inline std::optional<std::string> rig_text_fault(std::string_view t) {
    std::size_t line = 1;
    auto fault = [&](const std::string& message) { return "line " + std::to_string(line) + ": " + message; };
    const std::string nul = "a NUL byte in the text";
    int depth = 0;
    for (std::size_t i = 0; i < t.size(); ++i) {
        const char c = t[i];
        if (c == '\0') return fault(nul);
        if (c == '\n') {
            ++line;
        } else if (c == '"') {
            for (++i; i < t.size() && t[i] != '"'; ++i) {
                if (t[i] == '\\' && i + 1 < t.size()) ++i;
                if (t[i] == '\0') return fault(nul);
                if (t[i] == '\n') ++line;
            }
        } else if (c == '[' || c == '{') {
            if (++depth > max_rig_depth)
                return fault("arrays and objects nested deeper than " + std::to_string(max_rig_depth));
        } else if (c == ']' || c == '}') {
            --depth;
        } else if (c == '-' || (c >= '0' && c <= '9')) {
            std::size_t end = i;
            while (end < t.size() && std::string_view("0123456789+-.eE").find(t[end]) != std::string_view::npos)
                ++end;
            const std::string number(t.substr(i, end - i));
            // Underflow reads as zero, as the parser reads it.
            if (std::isinf(std::strtod(number.c_str(), nullptr)))
                return fault("number out of range: " + clip(number));
            i = end - 1;
        }
    }
    return std::nullopt;
}

// The rig text as JSON; nothing, with *error set, when it is not.
inline std::optional<nlohmann::json> parse_rig_json(const std::string& text, std::string* error) {
    auto fail = [&](std::size_t line, const std::string& message) {
        if (error) *error = "line " + std::to_string(line) + ": " + message;
        return std::nullopt;
    };
    if (auto fault = rig_text_fault(text)) {
        if (error) *error = *fault;
        return std::nullopt;
    }
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& e) {
        return fail(rig_detail::line_at(text, e.byte > 0 ? e.byte - 1 : 0), rig_detail::parse_message(e.what()));
    } catch (const nlohmann::json::exception& e) {
        return fail(1, rig_detail::parse_message(e.what()));
    }
}

// The line on which the value at `pointer` ("/serial/0/port") starts in a
// text that parsed as JSON, or that of the nearest enclosing value when a
// step is not there. Walks only along the path, so a fault costs one pass
// over the text.
inline std::size_t rig_line_of(std::string_view t, std::string_view pointer) {
    using namespace rig_detail;
    std::size_t pos = skip_space(t, skip_bom(t));
    while (!pointer.empty() && pointer.front() == '/' && pos < t.size()) {
        pointer.remove_prefix(1);
        const std::size_t slash = pointer.find('/');
        const std::string_view step = pointer.substr(0, slash);
        pointer.remove_prefix(slash == std::string_view::npos ? pointer.size() : slash);
        const std::size_t here = pos;
        std::optional<std::size_t> found;
        if (t[pos] == '{') {
            for (pos = skip_space(t, pos + 1); pos < t.size() && t[pos] == '"';) {
                const std::size_t end = skip_string(t, pos);
                const bool match = key_text(t.substr(pos, end - pos)) == step;
                pos = skip_space(t, skip_space(t, end) + 1);  // past ':'
                if (match) found = pos;  // the last one counts, as in the parser
                pos = skip_space(t, skip_value(t, pos));
                if (pos < t.size() && t[pos] == ',') pos = skip_space(t, pos + 1);
            }
        } else if (t[pos] == '[') {
            std::size_t index = 0;
            for (char d : step) index = index * 10 + std::size_t(d - '0');  // the readers' own paths
            pos = skip_space(t, pos + 1);
            for (std::size_t k = 0; pos < t.size() && t[pos] != ']'; ++k) {
                if (k == index) {
                    found = pos;
                    break;
                }
                pos = skip_space(t, skip_value(t, pos));
                if (pos < t.size() && t[pos] == ',') pos = skip_space(t, pos + 1);
            }
        }
        if (!found) {
            pos = here;
            break;
        }
        pos = *found;
    }
    return line_at(t, pos);
}

}  // namespace icp_platform
