// The host's script language: one statement per line.
//
//     # a comment, up to the end of the line (outside strings)
//     h = ICPUSB_OpenDevice("USB2019", 1)     assigns a variable
//     ICPUSB_LastError("s")                   prints the value
//
// An expression is a literal, a variable or a call "Script Name(arg, ...)".
// Literals: null, true, false; integers (decimal or 0x hex, optional leading
// '-', 64-bit); reals (with a '.' or an exponent); strings in double quotes
// with the escapes \n, \" and \\; vectors [a, b, ...] of expressions.
// Script names may hold single blanks ("ICPCOM Rec Cmd Stop"); a call is a
// known script name, the longest that fits, then optional blanks and '('.
//
// A line is parsed whole before anything of it runs, so a faulty line calls
// nothing. A fault is reported as "SOURCE:LINE: message" and the next line
// runs; a syntax error adds the line (cut to a short window) and a caret
// under its column, a wrong argument count the function's parameters.
//
// A line whose first character other than blanks is ':' is a directive: it
// goes, without the ':', to the directive handler, which throws
// std::exception with the message of a fault.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "icphost/function.h"

namespace icphost {

class Interpreter {
public:
    // `functions` must outlive the interpreter. Printed values go to `out`,
    // faults to `err`; both are flushed after every line so that the two
    // keep their order on one terminal.
    Interpreter(std::span<const ScriptFunction> functions, std::ostream& out, std::ostream& err);

    // Runs every line of `text`; `source` names it in messages ("-e", a file
    // name; when empty, a fault reads "error: message"). Variables live on from one run to the next. Returns the number
    // of lines that failed.
    std::size_t run(std::string_view source, std::string_view text);

    // Whether a line of any run failed.
    bool failed() const { return failures_ > 0; }

    using DirectiveHandler = std::function<void(std::string_view directive)>;
    void set_directive_handler(DirectiveHandler handler) { directive_ = std::move(handler); }
    // How a statement's value is printed; repr() and a new line unless set.
    using Printer = std::function<void(std::ostream& out, const nvValue& value)>;
    void set_printer(Printer printer) { printer_ = std::move(printer); }

    // The names of the variables, sorted.
    std::vector<std::string> variable_names() const;

    // A variable's value and how deep vectors nest in it.
    struct Variable {
        nvValue value;
        int depth = 0;
    };

private:
    std::vector<const ScriptFunction*> by_length_;  // longest name first
    std::map<std::string, Variable, std::less<>> variables_;
    std::ostream& out_;
    std::ostream& err_;
    std::size_t failures_ = 0;
    DirectiveHandler directive_;
    Printer printer_;
};

}  // namespace icphost
