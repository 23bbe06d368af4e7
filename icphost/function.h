// A script function as the host knows it: the body's entry point and what
// its name and description companions said about it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "NvMathLib.h"

namespace icphost {

using NuvarelMath::ValueTypes::nvValue;

// The most arguments a body takes: help records have at most seven items.
inline constexpr std::size_t max_arity = 5;

struct ScriptFunction {
    // An entry point of unknown signature; invoke() gives it its real one.
    using Entry = void (*)();
    using Companion = nvValue (*)();

    std::string export_name;  // "plugin_icp_loaded"
    std::string name;         // "ICP_Loaded"; may hold single blanks
    Entry entry = nullptr;
    // XDescription, asked on the first need of the help record: a script
    // pays only for the functions it calls.
    mutable Companion describe = nullptr;
    // Help text, result description, one description per parameter.
    mutable std::vector<std::string> record;

    // The help record, read once. Throws std::runtime_error, naming the
    // export, when the companion fails or returns something that is not a
    // record of 2 to max_arity + 2 texts.
    const std::vector<std::string>& help() const;
    // A record of fewer than two items announces no arguments.
    std::size_t arity() const { return help().size() < 2 ? 0 : help().size() - 2; }
};

// Calls the body with exactly args.size() `const nvValue&` parameters.
// Throws std::invalid_argument when args.size() is not the function's arity
// or exceeds max_arity. Whatever the body throws passes through.
nvValue invoke(const ScriptFunction& function, std::span<const nvValue> args);

// Positions in an export list of a body X and its companions.
struct Triple {
    std::size_t body, name, description;
};

// The names X of `exports` that come with both X + "Name" and
// X + "Description", in the order of their bodies in `exports`.
std::vector<Triple> find_triples(std::span<const std::string_view> exports);

}  // namespace icphost
