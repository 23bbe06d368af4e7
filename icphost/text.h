// Character rules and quoting shared by icphost's parser, session, listings
// and command line, so that a name means the same everywhere.
#pragma once

#include <icp_platform/format.h>

namespace icphost {

// A variable or function name starts with a letter or '_' and goes on with
// letters, digits and '_' (ASCII only: no locale).
constexpr bool is_name_start(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
constexpr bool is_name_char(char c) { return is_name_start(c) || (c >= '0' && c <= '9'); }

// ASCII case folding, and a name, number or token quoted in an error ('text',
// cut short when long): the same as the directives'.
using icp_platform::lower;
using icp_platform::quoted;

}  // namespace icphost
