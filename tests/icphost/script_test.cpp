// The script language against a table of fake functions: literals, names
// with blanks, calls, variables, and faults reported by line.
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "icphost/function.h"
#include "icphost/script.h"

namespace {

using namespace NuvarelMath::ValueTypes;
using V = const nvValue&;

int calls = 0;

nvValue answer() { return nvInteger(42); }
nvValue count() { return nvInteger(++calls); }
nvValue echo(V a) { return a; }
nvValue fail() { throw std::runtime_error("device on fire"); }
nvValue stop() { return nvBoolean(true); }
nvValue rec() { return nvSymbolicValue("rec", true, {}); }
nvValue pair(V a, V b) {
    nvVector v(2, false, true, false);
    v.setValue(a, 0);
    v.setValue(b, 1);
    return v;
}

template <class F>
icphost::ScriptFunction fake(std::string name, F* body, std::size_t arity) {
    icphost::ScriptFunction f;
    f.name = std::move(name);
    f.export_name = "fake_" + std::to_string(arity);
    f.record.assign(arity + 2, "help");
    f.entry = reinterpret_cast<icphost::ScriptFunction::Entry>(body);
    return f;
}

const std::vector<icphost::ScriptFunction> functions = {
    fake("Answer", &answer, 0),
    fake("Count", &count, 0),
    fake("Echo", &echo, 1),
    fake("Pair", &pair, 2),
    fake("Fail", &fail, 0),
    fake("ICPCOM Rec Cmd", &rec, 0),
    fake("ICPCOM Rec Cmd Stop", &stop, 0),
};

struct Run {
    std::string out;
    std::string err;
    std::size_t failures;
};

Run run(const std::string& script) {
    calls = 0;
    std::ostringstream out, err;
    icphost::Interpreter interpreter(functions, out, err);
    const std::size_t failures = interpreter.run("t.icp", script);
    EXPECT_EQ(interpreter.failed(), failures > 0);
    return {out.str(), err.str(), failures};
}

struct Case {
    const char* script;
    const char* out;
    const char* err;
};

// The first line of every fault: the indented lines under it show where and
// what would fit; ErrorsShowWhereAndWhatFits checks those.
std::string headlines(const std::string& err) {
    std::istringstream in(err);
    std::string out;
    for (std::string line; std::getline(in, line);)
        if (!line.starts_with("    ")) out += line + "\n";
    return out;
}

void check(const std::vector<Case>& cases) {
    for (const auto& c : cases) {
        SCOPED_TRACE(c.script);
        const Run r = run(c.script);
        EXPECT_EQ(r.out, c.out);
        EXPECT_EQ(headlines(r.err), c.err);
        std::size_t lines = 0;
        for (const char* p = c.err; *p; ++p) lines += *p == '\n';
        EXPECT_EQ(r.failures, lines);
    }
}

TEST(Script, Literals) {
    check({
        {"null\ntrue\nfalse", "null\ntrue\nfalse\n", ""},
        {"42\n-7\n0\n0x1F\n-0x10\n0XfF", "42\n-7\n0\n31\n-16\n255\n", ""},
        {"9223372036854775807\n-9223372036854775808\n0x7FFFFFFFFFFFFFFF",
         "9223372036854775807\n-9223372036854775808\n9223372036854775807\n", ""},
        {"1.5\n2.\n.25\n-.5\n1e3\n-2.5E-3\n4294967295.0",
         "1.5\n2.0\n0.25\n-0.5\n1000.0\n-0.0025\n4294967295.0\n", ""},
        {"\"plain\"\n\"a\\\"b\"\n\"one\\ntwo\"\n\"back\\\\slash\"\n\"# kept\"\n\"\"",
         "\"plain\"\n\"a\\\"b\"\n\"one\\ntwo\"\n\"back\\\\slash\"\n\"# kept\"\n\"\"\n", ""},
        {"[1, 2.5, \"x\", null, [true, []]]\n[ ]", "[1, 2.5, \"x\", null, [true, []]]\n[]\n", ""},
        {"# a comment\n\n   \t\n42 # after code\n\"#\" # two", "42\n\"#\"\n", ""},
        {"1\r\n2\r\n", "1\n2\n", ""},
        {"\xEF\xBB\xBFtrue", "true\n", ""},
        {"9223372036854775808", "", "t.icp:1: integer out of the 64-bit range: 9223372036854775808\n"},
        {"0x8000000000000000", "", "t.icp:1: integer out of the 64-bit range: 0x8000000000000000\n"},
        {"12ab", "", "t.icp:1: malformed number '12ab'\n"},
        {"0x", "", "t.icp:1: malformed number '0x'\n"},
        {"1e", "", "t.icp:1: malformed number '1e'\n"},
        {"-", "", "t.icp:1: expected a number after '-'\n"},
        {"- 1", "", "t.icp:1: expected a number after '-'\n"},
        {"\"open\\", "", "t.icp:1: unterminated string\n"},
        {"[1,]", "", "t.icp:1: expected an expression, found ']'\n"},
        {"x = ", "", "t.icp:1: expected an expression, found end of line\n"},
        {"true = 1", "", "t.icp:1: cannot assign to 'true'\n"},
    });
}

TEST(Script, Calls) {
    check({
        {"Answer()\nAnswer ( )\n  Answer()  # spaced", "42\n42\n42\n", ""},
        {"Echo(\"x\")\nEcho([1, Echo(2)])", "\"x\"\n[1, 2]\n", ""},
        // Arguments are evaluated from left to right.
        {"Pair(Count(), Count())", "[1, 2]\n", ""},
        {"ICPCOM Rec Cmd Stop()\nICPCOM Rec Cmd()\nICPCOM Rec Cmd Stop ()", "true\n\"rec\"\ntrue\n", ""},
        {"ICPCOM Rec Cmd Go(1)", "", "t.icp:1: unknown function 'ICPCOM Rec Cmd Go' (did you mean 'ICPCOM Rec Cmd'?)\n"},
        {"ICPCOM  Rec Cmd Stop()", "",
         "t.icp:1: unknown function 'ICPCOM  Rec Cmd Stop' (did you mean 'ICPCOM Rec Cmd Stop'?)\n"},
        {"icpcom rec cmd stop()", "",
         "t.icp:1: unknown function 'icpcom rec cmd stop' (did you mean 'ICPCOM Rec Cmd Stop'?)\n"},
        {"Answer(1)", "", "t.icp:1: 'Answer' takes no arguments, 1 given\n"},
        {"Echo()", "", "t.icp:1: 'Echo' takes 1 argument, 0 given:\n"},
        {"Echo(1 # comment", "", "t.icp:1: expected ',' or ')' in the arguments of 'Echo', found end of line\n"},
        {"Answer", "", "t.icp:1: unknown variable 'Answer' (a function: call it as Answer())\n"},
        {"Fail()", "", "t.icp:1: 'Fail' failed: device on fire\n"},
        // A faulty line is parsed to its end before anything runs: it calls nothing.
        {"Count() )\nCount()", "1\n", "t.icp:1: unexpected ')' after the expression\n"},
        {"Pair(Count(), Foo())\nCount()", "1\n", "t.icp:1: unknown function 'Foo'\n"},
        {"Pair(Count(), Echo())\nCount()", "1\n", "t.icp:1: 'Echo' takes 1 argument, 0 given:\n"},
    });
}

TEST(Script, Variables) {
    check({
        {"x = 5\nx\nx = \"five\"\nx", "5\n\"five\"\n", ""},
        {"h=Echo(7)\nv = [h, Pair(h, h)]\nv", "[7, [7, 7]]\n", ""},
        // A name is a variable unless a call follows it.
        {"Answer = 1\nAnswer\nAnswer()", "1\n42\n", ""},
        {"nullity = 3\nnullity", "3\n", ""},
        // A failed assignment leaves the variable as it was.
        {"x = 1\nx = Fail()\nx\ny = Fail()\ny", "1\n",
         "t.icp:2: 'Fail' failed: device on fire\nt.icp:4: 'Fail' failed: device on fire\n"
         "t.icp:5: unknown variable 'y'\n"},
        // Blank and comment lines count; a call does not go on to the next line.
        {"Answer()\nFoo()\n\n# comment\nAnswer()\nEcho(\n1", "42\n42\n1\n",
         "t.icp:2: unknown function 'Foo'\nt.icp:6: expected an expression, found end of line\n"},
    });
}

std::string repeat(const std::string& s, std::size_t n) {
    std::string out;
    for (std::size_t i = 0; i < n; ++i) out += s;
    return out;
}

// Lines of any length and nesting fail alone, with a one-line message of
// bounded length, and the next line still runs.
TEST(Script, HostileLinesFailAloneWithAShortMessage) {
    const std::string name(100000, 'A');
    const std::string clipped = std::string(64, 'A') + "...";
    std::string growing = "x = []\n";
    for (int i = 0; i < 256; ++i) growing += "x = [x]\n";
    struct {
        std::string line;
        std::string err;
    } const cases[] = {
        {repeat("[", 257) + repeat("]", 257), "t.icp:1: brackets and calls nested deeper than 256\n"},
        {repeat("[Echo(", 100000), "t.icp:1: brackets and calls nested deeper than 256\n"},
        {name + "()", "t.icp:1: unknown function '" + clipped + "'\n"},
        {name, "t.icp:1: unknown variable '" + clipped + "'\n"},
        {"1" + name, "t.icp:1: malformed number '1" + clipped.substr(1) + "'\n"},
        {"1" + std::string(100000, '0'), "t.icp:1: integer out of the 64-bit range: 1" + std::string(63, '0') + "...\n"},
        {"1" + std::string(400, '0') + ".0", "t.icp:1: real out of range: 1" + std::string(63, '0') + "...\n"},
        {"Echo(\"" + name + "\", 1)", "t.icp:1: 'Echo' takes 1 argument, 2 given:\n"},
        // A value grows a level a line through a variable.
        {growing + "x = 0", "t.icp:257: a value with vectors nested deeper than 256\n"},
        {growing.substr(0, growing.rfind("x = ")) + "[Echo(x)]",
         "t.icp:257: a value with vectors nested deeper than 256\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.err);
        const auto r = run(c.line + "\nAnswer()");
        EXPECT_EQ(headlines(r.err), c.err);
        EXPECT_LT(r.err.size(), 400u);
        EXPECT_EQ(r.out, "42\n");
        EXPECT_EQ(calls, 0);
    }
    // The deepest nesting allowed still runs.
    const auto r = run(repeat("[", 255) + "Echo(1)" + repeat("]", 255));
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out, repeat("[", 255) + "1" + repeat("]", 255) + "\n");
}

// Under a fault's first line: a syntax error's line (a window of it when it
// is long) with a caret under the column; the parameters of a function
// given a wrong argument count; the nearest names of an unknown one.
TEST(Script, ErrorsShowWhereAndWhatFits) {
    const std::string long_line = "Echo(" + std::string(100, '1') + " 2)";
    const std::pair<std::string, std::string> cases[] = {
        {"[1 2]", "t.icp:1: expected ',' or ']' in a vector, found '2]'\n    [1 2]\n       ^\n"},
        {"x = \"open", "t.icp:1: unterminated string\n    x = \"open\n        ^\n"},
        {"\t42 43", "t.icp:1: unexpected '43' after the expression\n     42 43\n        ^\n"},
        {"\"\xC3\xA9t\xC3\xA9\" 1", "t.icp:1: unexpected '1' after the expression\n    \"\xC3\xA9t\xC3\xA9\" 1\n          ^\n"},
        {"Echo(\"\\q\")",
         "t.icp:1: unknown escape '\\q' in a string (\\n, \\\" and \\\\ are known)\n    Echo(\"\\q\")\n          ^\n"},
        {long_line,
         "t.icp:1: integer out of the 64-bit range: " + std::string(64, '1') + "...\n"
         "    Echo(" + std::string(55, '1') + "...\n"
         "         ^\n"},
        {std::string(70, ' ') + "1 2" + std::string(70, ' ') + "3",
         "t.icp:1: unexpected '2" + std::string(20, ' ') + "...' after the expression\n    ..." +
             std::string(28, ' ') + "1 2" + std::string(29, ' ') + "...\n" + std::string(37, ' ') + "^\n"},
        {"Pair(1)", "t.icp:1: 'Pair' takes 2 arguments, 1 given:\n    1. help\n    2. help\n"},
        {"count = 1\ncuont", "t.icp:2: unknown variable 'cuont' (did you mean 'count'?)\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        EXPECT_EQ(run(c.first).err, c.second);
    }
}

}  // namespace
