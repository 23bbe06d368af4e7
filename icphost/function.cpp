#include "icphost/function.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

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

const std::vector<std::string>& ScriptFunction::help() const {
    if (describe == nullptr) return record;
    std::vector<std::string> items;
    std::string problem;
    try {
        const nvValue r = describe();
        const unsigned n = r.isVector() ? r.size() : 0;
        if (n < 2 || n - 2 > max_arity) {
            problem = export_name + "Description returned " + r.repr() + ", not a help record of 2 to " +
                      std::to_string(max_arity + 2) + " items";
        } else {
            items.reserve(n);
            for (unsigned i = 0; i < n; ++i) items.push_back(r.value(i).toString());
        }
    } catch (const std::exception& e) {
        problem = export_name + ": a companion failed: " + e.what();
    }
    if (!problem.empty()) throw std::runtime_error(problem);
    record = std::move(items);
    describe = nullptr;
    return record;
}

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

std::vector<Triple> find_triples(std::span<const std::string_view> exports) {
    constexpr std::string_view name_suffix = "Name", description_suffix = "Description";
    std::unordered_map<std::string_view, std::size_t> position;
    position.reserve(exports.size());
    for (std::size_t i = 0; i < exports.size(); ++i) position.emplace(exports[i], i);
    std::vector<Triple> out;
    std::string name;
    // Every triple has its X + "Description": only those names are looked at.
    for (std::size_t d = 0; d < exports.size(); ++d) {
        std::string_view x = exports[d];
        if (!x.ends_with(description_suffix)) continue;
        x.remove_suffix(description_suffix.size());
        const auto body = position.find(x);
        if (body == position.end()) continue;
        const auto companion = position.find(name.assign(x).append(name_suffix));
        if (companion != position.end()) out.push_back({body->second, companion->second, d});
    }
    std::ranges::sort(out, {}, &Triple::body);
    return out;
}

}  // namespace icphost
