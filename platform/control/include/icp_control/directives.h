// The directives: the one vocabulary with which a script (a line starting
// with ':'), a session or a rig's timeline changes the simulated rig as
// hardware would change.
//
// They are one table, directives(), a row per directive: its name, its
// arguments, a help line and its action. A new directive is a row there
// (platform/control/src/directives.cpp) and an action; the argument readers
// below are what actions are written with. The code drives the two
// stand-ins through their control APIs only, so that it runs wherever they
// are linked: beside icphost, or inside a plug-in library that carries them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace icp_control {

// A directive refused; the message names what is wrong, in one line.
struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using Words = std::vector<std::string>;
class Control;

struct Directive {
    std::string_view name;       // without the ':'
    std::string_view arguments;  // as the usage shows them
    std::string_view help;       // one line: what it does
    std::size_t least, most;     // words after the name
    // Whether it changes the stand-ins: such a directive cannot reach a
    // simulator that lives inside another plug-in library.
    bool drives_standins;
    // Does it, with the words after the name (their number checked), and
    // returns what it did for the trace; throws Refused.
    std::string (*action)(Control& control, const Words& words);
};

// Every directive, in the order the help lists them.
std::span<const Directive> directives();
// The directive of that name (letter case does not count); null if none.
const Directive* find_directive(std::string_view name);
// ":NAME ARGUMENTS", one line per directive, each indented by two blanks and
// followed by its help line.
std::string usage();

// ---- Argument readers: each throws Refused naming what it wanted --------

// The blank-separated words of a line, up to a '#' that starts a word.
Words split_words(std::string_view text);
// 'TEXT', cut to a message's length.
std::string quoted(std::string_view text);
std::string upper(std::string_view text);
std::string lower(std::string_view text);
// A decimal or 0x hexadecimal integer, optionally negative, in [low, high];
// `what` names it in the message ("a board ID").
std::int64_t integer(const std::string& word, const char* what, std::int64_t low, std::int64_t high);
// A finite number.
double real(const std::string& word, const char* what);
bool on_off(const std::string& word);
// A span of time, "1500ms", "2s", "0.6s", with an optional leading '+', in
// whole milliseconds up to a year.
std::uint64_t milliseconds(const std::string& word, const char* wanted);

// ---- Running directives -------------------------------------------------

// Where a directive's lines go: the trace of the SDK calls, and the "sim:"
// line with which a directive says what it did while tracing.
using Sink = void (*)(const char* line, void* context);

class Control {
public:
    Control(Sink sink, void* context);
    ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    // The stand-ins' SDK trace to the sink, on or off.
    void set_trace(bool on);
    bool tracing() const { return trace_; }

    // The stand-ins this code drives are not the loaded plug-in's: the
    // directives that change them are refused, saying so with `why`.
    void set_unreachable(std::string why) { unreachable_ = std::move(why); }

    // Runs a directive, the text after its ':'. Prints nothing unless
    // tracing; throws Refused.
    void run(std::string_view text);

    // One line to the sink.
    void say(std::string_view line) const;

private:
    Sink sink_;
    void* context_;
    bool trace_ = false;
    std::string unreachable_;
};

// ---- Rigs ---------------------------------------------------------------

// The whole of a file, byte for byte; false when it cannot be read.
bool read_file(const std::string& path, std::string* text);

// Loads both stand-ins from a JSON rig file, or the built-in rig for an
// empty path. Both check the whole text before either loads anything, so a
// faulty rig leaves the rig as it was. On a fault: false and *error.
bool load_rig(const std::string& path, std::string* error);

}  // namespace icp_control
