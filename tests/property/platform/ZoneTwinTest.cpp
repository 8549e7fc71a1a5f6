// SPDX-License-Identifier: MIT
// Every zone of the system against a second, plain reader of the same files.

#include "support/ZonePair.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace estatebook::platform {
namespace {

using namespace estatebook::testkit;

TEST(ZoneTwinTest, TheSystemListsItsZones) {
    EXPECT_GT(ZonePair::all().size(), 500u);
    EXPECT_GT(ZonePair::distinct().size(), 300u);
}

TEST(ZoneTwinTest, TheTransitionsUpTo2500AgreeInEveryZone) {
    std::size_t checked = 0;
    for (const ZonePair& pair : ZonePair::distinct()) {
        const auto expected = pair.file.changes(LongAgo, Year2500);
        std::vector<std::int64_t> found;
        Date at = Date::fromUnixSeconds(static_cast<double>(LongAgo));
        while (const auto next = pair.zone->nextTransition(at)) {
            if (next->unixSeconds() >= static_cast<double>(Year2500)) break;
            found.push_back(static_cast<std::int64_t>(next->unixSeconds()));
            at = *next;
        }
        ASSERT_EQ(found, expected) << pair.name;
        // All around the changes on file, and around one in seven of those that a rule makes.
        for (std::size_t i = 0; i < expected.size(); i += expected[i] < Year2037 ? 1 : 7) {
            ASSERT_NO_FATAL_FAILURE(pair.expectSameAround(expected[i]));
            ++checked;
        }
    }
    std::printf("%zu transitions checked\n", checked);
}

TEST(ZoneTwinTest, TheTransitionsUpToTheYear9999AgreeForEveryRule) {
    // Zones that share a rule share these years; a rule is known by its transitions of 60 years.
    std::map<std::vector<std::int64_t>, const ZonePair*> rules;
    for (const ZonePair& pair : ZonePair::distinct()) {
        auto years = pair.file.changes(Year2500, Year2500 + std::int64_t{60} * 366 * 86400);
        if (!years.empty()) rules.emplace(std::move(years), &pair);
    }
    EXPECT_GE(rules.size(), 15u);
    for (const auto& [years, pair] : rules) {
        for (const std::int64_t change : pair->file.changes(Year2500, Year10000)) {
            ASSERT_EQ(pair->offsetAt(change - 1), pair->file.offsetAt(change - 1))
                << pair->name << ' ' << change;
            ASSERT_EQ(pair->offsetAt(change), pair->file.offsetAt(change)) << pair->name << ' ' << change;
        }
    }
}

TEST(ZoneTwinTest, RandomInstantsAndWallTimesAgreeInEveryZone) {
    const std::uint64_t seed = std::random_device{}();
    std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
    std::mt19937_64 random(seed);
    for (const ZonePair& pair : ZonePair::all()) {
        for (const auto& [from, until] :
             {std::pair(Year1583, Year2037), {Year2037, Year2500}, {Year2500, Year10000}}) {
            std::uniform_int_distribution<std::int64_t> second(from, until - 1);
            for (int i = 0; i < 40; ++i) {
                const std::int64_t at = second(random);
                ASSERT_EQ(pair.offsetAt(at), pair.file.offsetAt(at)) << pair.name << " at " << at;
                ASSERT_NO_FATAL_FAILURE(pair.expectSameWall(second(random)));
                // Midnights, which billing asks for.
                ASSERT_NO_FATAL_FAILURE(pair.expectSameWall(at - ((at % 86400) + 86400) % 86400));
            }
        }
    }
}

} // namespace
} // namespace estatebook::platform
