// The help records of the script functions: grouped and sorted, as text,
// JSON and Markdown; finding a function by name, by pattern, or the names
// nearest to a mistyped one.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "icphost/function.h"

namespace icphost {

// One function's record:
//
//     ICPUSB_OpenDevice  (icpusb_opendevice, 2 parameters)
//       help text, line by line
//       Result:      result description
//       Parameter 1: ...
void print_help(std::ostream& out, const ScriptFunction& function);

// The group a function belongs to, told by its export name: the index of
// its title in group_titles(). Functions no group claims come last.
std::size_t group_of(const ScriptFunction& function);
std::span<const std::string_view> group_titles();

// The functions grouped, and by script name within a group (case-blind,
// then byte by byte): the same order whatever the export table's.
std::vector<const ScriptFunction*> catalogue_order(std::span<const ScriptFunction> functions);

// Whether the script or export name matches: with '*' or '?' as a whole
// wildcard pattern, else as a part; letter case is ignored.
bool matches(const ScriptFunction& function, std::string_view pattern);

// Every record under its group's title, a blank line between two.
void print_functions(std::ostream& out, std::span<const ScriptFunction* const> functions);

// One line per function under its group's title: name and the first line of
// its help text.
void print_summary(std::ostream& out, std::span<const ScriptFunction* const> functions);

// A Markdown reference: one section per group, each function's script name,
// parameters and result.
void print_functions_markdown(std::ostream& out, std::span<const ScriptFunction* const> functions);

// A JSON array with one object per line:
// {"export": ..., "name": ..., "help": [item, ...]}.
void print_functions_json(std::ostream& out, std::span<const ScriptFunction* const> functions);

// The function of that script name, else of that export name; null if none.
const ScriptFunction* find_function(std::span<const ScriptFunction> functions,
                                    std::string_view name);

// The script names nearest to a mistyped one, best first (at most three):
// letter case, blanks and underscores do not count, then the fewest edits.
// None when no name is near enough.
std::vector<std::string> nearest_names(std::span<const std::string> names, std::string_view name);
std::vector<std::string> nearest_names(std::span<const ScriptFunction> functions, std::string_view name);
// " (did you mean 'A'?)", " (did you mean 'A' or 'B'?)", or "" for none.
std::string did_you_mean(const std::vector<std::string>& names);

// The parameters of a function, one line each: "1. description" (its first
// line), or "no parameters".
std::vector<std::string> parameter_lines(const ScriptFunction& function);

// Help texts are 8-bit strings: valid UTF-8 is kept, any other byte is
// taken as Latin-1 and encoded.
std::string to_utf8(std::string_view text);

}  // namespace icphost
