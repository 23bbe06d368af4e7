// The catalogue of script functions.
//
// Each group of script functions declares its functions once, as a list
// macro of entries
//
//     F(export_name, "Script Name", "help text", "result", "parameter 1", ...)
//
// and ends its source file with ICP_CATALOGUE_GROUP(group, LIST). That one
// declaration yields, for every entry, the exported companions
// export_nameName (the script name) and export_nameDescription (the help
// record), a compile-time check that the body export_name takes exactly one
// `const nvValue&` per parameter description, and a row of the group's table.
// plugin/catalogue.cpp lists the groups.
#pragma once

#include <cstddef>
#include <iterator>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "plugin/export.h"

namespace icp {

struct Function {
    const char* export_name;
    const char* script_name;
    // Help text, result description, one description per parameter.
    std::span<const char* const> help;
    nvValue (*name)();
    nvValue (*description)();
    // The body, called with the first arity() values of `args`: what a
    // host does through the export, for hosts and tests that walk the
    // catalogue.
    nvValue (*invoke)(std::span<const nvValue> args);

    std::size_t arity() const { return help.size() - 2; }
};

// Every function of every group, group by group.
std::vector<const Function*> catalogue();

// The script name as a host string value.
nvValue script_name(const char* name);
// The help record, built on the plug-in's math object.
nvValue describe(std::span<const char* const> items);

// Help records have 2 to 7 items: bodies take at most five arguments.
inline constexpr std::size_t max_help_items = 7;

template <class... Args>
constexpr std::size_t arity(nvValue (*)(Args...)) {
    static_assert((std::is_same_v<Args, const nvValue&> && ...),
                  "a body takes its arguments as const nvValue&");
    return sizeof...(Args);
}

template <auto Body>
nvValue invoke(std::span<const nvValue> args) {
    constexpr std::size_t n = arity(Body);
    if (args.size() < n) return nvValue();
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        return Body(args[I]...);
    }(std::make_index_sequence<n>{});
}

}  // namespace icp

#define ICP_CATALOGUE_COMPANIONS_(exp, script, ...)                                        \
    namespace icp::help {                                                                  \
    inline constexpr const char* exp##_items[] = {__VA_ARGS__};                            \
    }                                                                                      \
    static_assert(::icp::arity(&exp) + 2 == std::size(::icp::help::exp##_items),           \
                  #exp ": help items must be the help text, the result and one per parameter"); \
    static_assert(std::size(::icp::help::exp##_items) <= ::icp::max_help_items);           \
    ICP_EXPORT ::icp::nvValue exp##Name() { return ::icp::script_name(script); }           \
    ICP_EXPORT ::icp::nvValue exp##Description() { return ::icp::describe(::icp::help::exp##_items); }

#define ICP_CATALOGUE_ROW_(exp, script, ...) \
    ::icp::Function{#exp, script, ::icp::help::exp##_items, &exp##Name, &exp##Description, &::icp::invoke<&exp>},

#define ICP_CATALOGUE_GROUP(group, LIST)                                      \
    LIST(ICP_CATALOGUE_COMPANIONS_)                                           \
    namespace icp::groups {                                                   \
    inline constexpr ::icp::Function group##_table[] = {LIST(ICP_CATALOGUE_ROW_)}; \
    extern const std::span<const ::icp::Function> group;                      \
    const std::span<const ::icp::Function> group = group##_table;             \
    }
