#include <gtest/gtest.h>

#include "tests/fuzz/Mutator.h"
#include "tests/fuzz/ReadEverything.h"
#include "tests/fuzz/Seeds.h"
#include "tests/support/Environment.h"

namespace jet {
namespace {

/// The checker also compares the stored index keys with those that we would write, even in files of other programs.
TEST(DamagedFiles, UndamagedSeedsAreReadWithoutErrors) {
    for (const Seed& seed : seeds()) {
        if (seed.name.find("V1997") != std::string::npos || seed.name.find("UnicodeComp") != std::string::npos)
            continue;
        const ReadEverythingResult result = readEverything(seed.file, kSeedPassword);
        EXPECT_EQ(result.damageCount, 0U) << seed.name;
        EXPECT_EQ(result.faultCount, 0U) << seed.name;
        EXPECT_GT(result.valueCount, 100U) << seed.name;
    }
}

/// Reading any damaged file must give values or run-time errors: no crash, no endless loop, no excessive memory. A
/// fault of the engine ends this program through the sanitizers or the time limit. TOLV_MUTATIONS gives longer runs,
/// TOLV_RANDOM_SEED other ones.
TEST(DamagedFiles, GiveValuesOrRunTimeErrors) {
    const std::vector<Seed> all = seeds();
    const std::uint32_t count = test::environmentNumber("TOLV_MUTATIONS", 4000);
    const std::uint32_t randomSeed = test::environmentNumber("TOLV_RANDOM_SEED", 1);
    Mutator mutator(randomSeed);
    std::size_t damaged = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const Seed& seed = all[mutator.below(all.size())];
        const base::Bytes file = mutator.mutate(seed.file);
        SCOPED_TRACE(seed.name + ", random seed " + std::to_string(randomSeed) + ", mutation " + std::to_string(i));
        ASSERT_NO_THROW(damaged += readEverything(file, kSeedPassword).damageCount > 0 ? 1 : 0);
    }
    // Otherwise the mutations hit too little to test anything.
    EXPECT_GT(damaged, count / 4);
}

}  // namespace
}  // namespace jet
