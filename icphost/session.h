// The interactive session: one statement, directive or command a line, with
// line editing, history and Tab completion on a terminal (where the host is
// built with libedit), plain line input elsewhere.
//
//   help [NAME]          the session's help, or a function's
//   functions [PATTERN]  the functions by group, one line each
//   anything else        a statement or a directive, run as a script line
#pragma once

#include <cstddef>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "icphost/function.h"
#include "icphost/script.h"

namespace icphost {

struct SessionSettings {
    bool terminal = false;         // prompt, banner, line editing
    std::string history;           // history file; none when empty
    std::string directives_help;   // one line per directive
    std::vector<std::string> directives;  // their names, for completion
};

// Reads lines until the end of the input; always returns 0.
int run_session(std::span<const ScriptFunction> functions, Interpreter& interpreter,
                const SessionSettings& settings, std::ostream& out, std::ostream& err);

// What Tab offers for the text before the cursor: the candidates, and how
// many characters before the cursor they replace.
struct Completion {
    std::size_t replaces = 0;
    std::vector<std::string> candidates;
    // The text to put in place: the candidates' common start, with "(" after
    // a single function name.
    std::string text;
};
Completion complete(std::string_view before_cursor, std::span<const ScriptFunction> functions,
                    const std::vector<std::string>& variables, const std::vector<std::string>& directives);

// A value as the session prints it: a matrix with column names as an
// aligned table, anything else as a script run prints it.
void print_value(std::ostream& out, const nvValue& value);

// The history file unless ICPHOST_HISTORY names another ("" for none).
std::string default_history_path();

}  // namespace icphost
