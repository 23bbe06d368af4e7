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
#include <utility>
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
struct RigIndex;

// What a directive reaches.
enum class Reach {
    host,     // the program running it (:wait): works whatever plug-in is loaded
    rig,      // a part of the rig (:unplug): also a rig's event
    standins, // the stand-ins as a whole (:time, :rig, :trace): not an event
};

struct Directive {
    std::string_view name;       // without the ':'
    std::string_view arguments;  // as the usage shows them
    std::string_view help;       // one line: what it does
    std::size_t least, most;     // words after the name
    // Directives that reach the stand-ins cannot reach a simulator that
    // lives inside another plug-in library.
    Reach reach;
    // Does it, with the words after the name (their number checked), and
    // returns what it did for the trace; throws Refused. While a rig's
    // events are checked (control.checking()), a rig directive reads its
    // words and checks them against the rig being loaded, changing nothing.
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
std::uint64_t duration_ms(const std::string& word, const char* wanted);

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

    // Runs a directive and returns what it did (for the trace), printing
    // nothing; throws Refused.
    std::string perform(std::string_view text);

    // One line to the sink.
    void say(std::string_view line) const;

    // The rig's clock runs on by `ms`: both stand-ins' clocks, and the rig's
    // events fire at their times, in order. An event that fails does not
    // stop the others: Refused names each that failed, once time has passed.
    void advance(std::uint64_t ms);

    // Checking a rig's events against the rig being loaded (null: not).
    const RigIndex* checking() const { return checking_; }
    void set_checking(const RigIndex* rig) { checking_ = rig; }

private:
    Sink sink_;
    void* context_;
    bool trace_ = false;
    std::string unreachable_;
    const RigIndex* checking_ = nullptr;
};

// ---- Rigs ---------------------------------------------------------------

// The whole of a file, byte for byte; false when it cannot be read.
bool read_file(const std::string& path, std::string* text);

// Loads both stand-ins from a JSON rig file, or the built-in rig for an
// empty path, and the rig's timeline (its "events"). Everything is checked
// before anything loads, so a faulty rig leaves the rig as it was. On a
// fault: false and *error ("PATH: line N: ...").
bool load_rig(const std::string& path, std::string* error);
// The same from a rig's text; `name` leads its error.
bool load_rig_text(const std::string& name, const std::string& text, std::string* error);

// A rig's timeline: "events": [{"at": "2s", "do": ":unplug USB2019 1"}, ...],
// a time from the rig's loading and a rig directive. Events at one time
// fire in the order of the file.
struct Event {
    std::uint64_t at_ms;
    std::string directive;  // after the ':'
};
// The events of a rig text, checked against the rig it describes (every
// module named is in it); on a fault false and *error ("line N: ...").
bool read_events(const std::string& text, std::vector<Event>* events, std::string* error);
// The loaded rig's timeline: the events not fired yet, and the time since
// the rig was loaded.
std::vector<Event> pending_events();
std::uint64_t rig_time_ms();

}  // namespace icp_control
