#include <gtest/gtest.h>
#include <map>
#include <random>

#include "forms/KeyIndex.h"

namespace {

using forms::KeyIndex;

// Few different hashes, all near the end of the table, so collisions displace rows and wrap around to its start.
TEST(KeyIndex, findsEveryRowEvenIfManyShareASlot) {
    constexpr std::uint32_t kRows = 60;
    const auto hashOf = [](std::uint32_t row) { return 0xFFFFFFF0U + row % 23; };
    KeyIndex index;
    std::map<KeyIndex::Row, bool> isIn;
    std::mt19937 random(7);
    for (int step = 0; step < 5000; ++step) {
        const auto row = static_cast<KeyIndex::Row>(random() % kRows);
        if (isIn[row])
            index.erase(hashOf(row), row);
        else
            index.insert(hashOf(row), row);
        isIn[row] = !isIn[row];
        for (KeyIndex::Row wanted = 0; wanted < kRows; ++wanted) {
            const auto found = index.find(hashOf(wanted), [wanted](KeyIndex::Row r) { return r == wanted; });
            ASSERT_EQ(found.has_value(), isIn[wanted]) << "row " << wanted << " in step " << step;
        }
    }
}

}  // namespace
