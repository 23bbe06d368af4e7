// The help records of the script functions, as text and as JSON.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "icphost/function.h"

namespace icphost {

// One function's record:
//
//     ICPUSB_OpenDevice  (icpusb_opendevice, 2 parameters)
//       help text, line by line
//       Result:      result description
//       Parameter 1: ...
void print_help(std::ostream& out, const ScriptFunction& function);

// Every record, a blank line between two.
void print_functions(std::ostream& out, std::span<const ScriptFunction> functions);

// A JSON array with one object per line:
// {"export": ..., "name": ..., "help": [item, ...]}.
void print_functions_json(std::ostream& out, std::span<const ScriptFunction> functions);

// The function of that script name, else of that export name; null if none.
const ScriptFunction* find_function(std::span<const ScriptFunction> functions,
                                    std::string_view name);

// Help texts are 8-bit strings: valid UTF-8 is kept, any other byte is
// taken as Latin-1 and encoded.
std::string to_utf8(std::string_view text);

}  // namespace icphost
