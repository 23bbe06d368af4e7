// Character rules and quoting shared by icphost's parser, session, listings
// and command line, so that a name means the same everywhere.
#pragma once

#include <string>
#include <string_view>

#include <icp_platform/format.h>

namespace icphost {

// A variable or function name starts with a letter or '_' and goes on with
// letters, digits and '_' (ASCII only: no locale).
constexpr bool is_name_start(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
constexpr bool is_name_char(char c) { return is_name_start(c) || (c >= '0' && c <= '9'); }

// ASCII case folding: names compare without letter case, other bytes as they are.
constexpr char lower(char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; }

// A name, number or token quoted in an error: 'text', cut short when long.
inline std::string quoted(std::string_view text) { return "'" + icp_platform::clip(text) + "'"; }

}  // namespace icphost
