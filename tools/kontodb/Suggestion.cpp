#include "tools/kontodb/Suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace kontodb {
namespace {

/// Letters to be put in, left out or replaced; two that changed places count twice.
std::size_t distance(base::TextView a, base::TextView b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (base::asciiLower(a[i]) == base::asciiLower(b[j]) ? 0U : 1U);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

base::Text suggestion(base::TextView word, std::span<const base::TextView> known) {
    constexpr std::size_t kLongest = 40;  // of a word worth the comparing
    base::TextView nearest;
    std::size_t least = 3;  // what differs more was not mistyped
    for (const base::TextView each : known) {
        const std::size_t differing = word.size() > kLongest ? least : distance(word, each);
        if (differing >= least || 2 * differing >= each.size()) continue;
        least = differing;
        nearest = each;
    }
    return nearest.empty() ? base::Text() : u" Meinten Sie '" + base::Text(nearest) + u"'?";
}

}  // namespace kontodb
