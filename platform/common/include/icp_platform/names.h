// Names a user mistyped: the nearest known ones, for "did you mean" hints.
// Shared by the command-line host and the directives.
#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "icp_platform/format.h"

namespace icp_platform {

// Lower case without blanks and underscores.
inline std::string loose_key(std::string_view name) {
    std::string key;
    for (char c : name)
        if (c != ' ' && c != '_') key += lower(c);
    return key;
}

// Edits (insert, delete, replace, swap two neighbours) from a to b, or
// limit + 1 when there are more than limit.
inline std::size_t edit_distance(std::string_view a, std::string_view b, std::size_t limit) {
    const std::size_t gap = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
    if (gap > limit) return limit + 1;
    std::vector<std::size_t> before(b.size() + 1), row(b.size() + 1), next(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        next[0] = i;
        std::size_t best = next[0];
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t cost = a[i - 1] == b[j - 1] ? 0 : 1;
            next[j] = std::min({row[j] + 1, next[j - 1] + 1, row[j - 1] + cost});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                next[j] = std::min(next[j], before[j - 2] + 1);
            best = std::min(best, next[j]);
        }
        if (best > limit) return limit + 1;
        before.swap(row);
        row.swap(next);
    }
    return std::min(row[b.size()], limit + 1);
}

// The names nearest to a mistyped one, best first (at most three): letter
// case, blanks and underscores do not count, then the fewest edits. None
// when no name is near enough.
inline std::vector<std::string> nearest_names(std::span<const std::string> names, std::string_view name) {
    const std::string key = loose_key(name);
    const std::size_t limit = key.size() <= 2 ? 0 : key.size() <= 4 ? 1 : key.size() <= 8 ? 2 : 3;
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const auto& candidate : names) {
        const std::size_t d = edit_distance(key, loose_key(candidate), limit);
        if (d <= limit) near.emplace_back(d, candidate);
    }
    std::sort(near.begin(), near.end());
    std::vector<std::string> out;
    for (const auto& [d, candidate] : near) {
        if (d != near.front().first || out.size() == 3) break;
        if (std::find(out.begin(), out.end(), candidate) == out.end()) out.push_back(candidate);
    }
    return out;
}

// " (did you mean 'A'?)", " (did you mean 'A' or 'B'?)", or "" for none.
inline std::string did_you_mean(const std::vector<std::string>& names) {
    if (names.empty()) return "";
    std::string out = " (did you mean ";
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) out += i + 1 == names.size() ? " or " : ", ";
        out += "'" + names[i] + "'";
    }
    return out + "?)";
}

}  // namespace icp_platform
