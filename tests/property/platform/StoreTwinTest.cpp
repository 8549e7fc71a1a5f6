// SPDX-License-Identifier: MIT

// Random change sets, sound and unsound, given to a book file and to its plain twin in memory. Both must take or refuse them
// alike, and hold the same afterwards, also when the file was closed in between.

#include "support/StoreDescription.hpp"
#include "support/StoreScript.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

struct Tally {
    int landed = 0;
    int conflicts = 0;
    int refused = 0;
};

void drive(std::uint64_t seed, int steps, Tally& tally) {
    test::StoreScript script(seed);
    test::SQLitePlace place;
    const auto twin = InMemoryStore::make(test::bookModel());
    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
        const StoreChanges changes = script.changes(*twin);
        const auto expected = twin->save(changes);
        const auto outcome = place.store().save(changes);
        ASSERT_EQ(static_cast<bool>(expected), static_cast<bool>(outcome))
            << (expected ? outcome.error().message : expected.error().message);
        if (!expected) {
            ++tally.refused;
            ASSERT_EQ(expected.error().code, outcome.error().code) << outcome.error().message;
        } else {
            ++(expected->landed() ? tally.landed : tally.conflicts);
            ASSERT_EQ(expected->conflicts.size(), outcome->conflicts.size());
            for (std::size_t index = 0; index < expected->conflicts.size(); ++index) {
                ASSERT_EQ(expected->conflicts[index].key, outcome->conflicts[index].key);
                std::ostringstream mine;
                std::ostringstream theirs;
                test::describe(mine, expected->conflicts[index].stored.value());
                test::describe(theirs, outcome->conflicts[index].stored.value());
                ASSERT_EQ(mine.str(), theirs.str());
            }
        }
        if (script.below(6) == 0) place.reopen();
        if (step % 4 == 3) {
            ASSERT_EQ(test::description(*twin), test::description(place.store()));
        }
    }
    place.reopen();
    ASSERT_EQ(test::description(*twin), test::description(place.store()));
}

TEST(StoreTwinTest, ABookFileHoldsWhatItsTwinInMemoryHolds) {
    Tally tally;
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        ASSERT_NO_FATAL_FAILURE(drive(seed, 60, tally));
        ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
    }
    EXPECT_GT(tally.landed, 100);
    EXPECT_GT(tally.conflicts, 5);
    EXPECT_GT(tally.refused, 5);
}

} // namespace
} // namespace estatebook::platform
