#include "icphost/function.h"

#include <stdexcept>
#include <string_view>
#include <unordered_set>

namespace icphost {

namespace {

using V = const nvValue&;

template <class Fn>
Fn as(ScriptFunction::Entry entry) {
    // void (*)() converts to and from every function pointer type; the body
    // really has the type named here, as its help record announces.
    return reinterpret_cast<Fn>(entry);
}

}  // namespace

nvValue invoke(const ScriptFunction& function, std::span<const nvValue> args) {
    if (args.size() != function.arity())
        throw std::invalid_argument("'" + function.name + "' takes " +
                                    std::to_string(function.arity()) + " arguments, " +
                                    std::to_string(args.size()) + " given");
    if (function.entry == nullptr)
        throw std::invalid_argument("'" + function.name + "' has no entry point");
    const auto e = function.entry;
    const auto& a = args;
    switch (args.size()) {
        case 0: return as<nvValue (*)()>(e)();
        case 1: return as<nvValue (*)(V)>(e)(a[0]);
        case 2: return as<nvValue (*)(V, V)>(e)(a[0], a[1]);
        case 3: return as<nvValue (*)(V, V, V)>(e)(a[0], a[1], a[2]);
        case 4: return as<nvValue (*)(V, V, V, V)>(e)(a[0], a[1], a[2], a[3]);
        case 5: return as<nvValue (*)(V, V, V, V, V)>(e)(a[0], a[1], a[2], a[3], a[4]);
        default:
            throw std::invalid_argument("'" + function.name + "' takes " +
                                        std::to_string(args.size()) +
                                        " arguments; a body takes at most " +
                                        std::to_string(max_arity));
    }
}

std::vector<std::string> find_triples(const std::vector<std::string>& exports) {
    const std::unordered_set<std::string_view> names(exports.begin(), exports.end());
    std::vector<std::string> out;
    for (const auto& x : exports) {
        if (names.contains(x + "Name") && names.contains(x + "Description")) out.push_back(x);
    }
    return out;
}

}  // namespace icphost
