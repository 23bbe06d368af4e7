// Bytes as a script for icphost's script reader: one line after another,
// against a few stand-in functions of every arity (names with blanks too),
// so that the reader is exercised without the plug-in.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string_view>
#include <vector>

#include "icphost/function.h"
#include "icphost/script.h"

namespace {

using icphost::nvValue;
using V = const nvValue&;

nvValue zero() { return nvValue(); }
nvValue one(V a) { return a; }
nvValue two(V, V b) { return b; }
nvValue three(V, V, V c) { return c; }
nvValue four(V a, V, V, V) { return a; }
nvValue five(V, V, V, V, V e) { return e; }

template <class Fn>
icphost::ScriptFunction function(const char* name, Fn fn, std::size_t arity) {
    icphost::ScriptFunction f;
    f.export_name = name;
    f.name = name;
    f.record = {"help", "result"};
    for (std::size_t i = 0; i < arity; ++i) f.record.push_back("parameter");
    f.entry = reinterpret_cast<icphost::ScriptFunction::Entry>(fn);
    return f;
}

const std::vector<icphost::ScriptFunction>& functions() {
    static const std::vector<icphost::ScriptFunction> all = {
        function("ICP_Loaded", zero, 0),
        function("ICPCOM Rec Cmd Stop", zero, 0),
        function("ICPCOM Rec Cmd", one, 1),
        function("ICPUSB_LastError", one, 1),
        function("ICPCOM Rec Cmd Exec", two, 2),
        function("ICPUSB_OpenDevice", two, 2),
        function("F3", three, 3),
        function("F4", four, 4),
        function("F5", five, 5),
    };
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::ostringstream out;
    std::ostringstream err;
    icphost::Interpreter interpreter(functions(), out, err);
    interpreter.run("fuzz", std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
