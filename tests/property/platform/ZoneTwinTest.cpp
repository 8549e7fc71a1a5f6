// SPDX-License-Identifier: MIT
// Every zone of the system against a second, plain reader of the same files.

#include "platform/calendar/TimeZone.hpp"

#include "support/ZoneFile.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using estatebook::testing::ZoneFile;

constexpr std::int64_t Year1583 = -12212553600;
constexpr std::int64_t Year2037 = 2114380800;
constexpr std::int64_t Year2500 = 16725225600;
constexpr std::int64_t Year10000 = 253402300800;

struct Zone {
    std::string name;
    ZoneFile file;
    Ref<TimeZone> zone;
};

/// All zones; `distinct` leaves out those whose file has the bytes of an earlier one.
const std::vector<Zone>& zones(bool distinct) {
    static std::vector<Zone> all, different;
    if (all.empty()) {
        std::set<std::string> seen;
        for (const std::string& name : ZoneFile::names()) {
            auto file = ZoneFile::read(name);
            if (!file) {
                ADD_FAILURE() << name << " cannot be read";
                continue;
            }
            Zone zone{name, *file, TimeZone::named(name)};
            if (!zone.zone) {
                ADD_FAILURE() << name << " is unknown to the library";
                continue;
            }
            if (seen.insert(file->bytes()).second) different.push_back(zone);
            all.push_back(std::move(zone));
        }
    }
    return distinct ? different : all;
}

int offsetAt(const TimeZone& zone, std::int64_t second) {
    return zone.offsetAtUnixSecond(second);
}

/// The library's answer for a wall time, checked against all instants the file has for it.
void expectWall(const Zone& zone, std::int64_t wall) {
    const auto expected = zone.file.instantsOfWall(wall);
    const WallTime found = zone.zone->wallSecond(wall);
    if (expected.empty()) {
        ASSERT_EQ(found.kind, WallTime::Kind::Missing) << zone.name << " wall " << wall;
        // The change that jumped over this wall time, and as far behind it as the wall time lies in the gap.
        const int before = zone.file.offsetAt(found.second - 1), after = zone.file.offsetAt(found.second);
        ASSERT_LE(found.second + before, wall) << zone.name;
        ASSERT_GT(found.second + after, wall) << zone.name;
        ASSERT_EQ(found.first, wall - before) << zone.name;
        ASSERT_EQ(zone.zone->firstInstantFromWallSecond(wall), found.second) << zone.name << " wall " << wall;
    } else {
        ASSERT_EQ(found.kind, expected.size() == 1 ? WallTime::Kind::Unique : WallTime::Kind::Twice)
            << zone.name << " wall " << wall;
        ASSERT_EQ(found.first, expected.front()) << zone.name << " wall " << wall;
        ASSERT_EQ(found.second, expected.back()) << zone.name << " wall " << wall;
        ASSERT_EQ(zone.zone->firstInstantFromWallSecond(wall), found.first) << zone.name << " wall " << wall;
    }
    ASSERT_EQ(zone.zone->instantOfWallSecond(wall), found.first) << zone.name << " wall " << wall;
}

void expectAround(const Zone& zone, std::int64_t change) {
    for (const std::int64_t second : {change - 86400, change - 1, change, change + 1, change + 86400})
        ASSERT_EQ(offsetAt(*zone.zone, second), zone.file.offsetAt(second)) << zone.name << " at " << second;
    const int before = zone.file.offsetAt(change - 1), after = zone.file.offsetAt(change);
    for (const std::int64_t wall : {change + before, change + after}) {
        for (const std::int64_t off : {-1, 0, 1}) expectWall(zone, wall + off);
    }
    expectWall(zone, change + (before + after) / 2);
}

TEST(ZoneTwinTest, TheSystemListsItsZones) {
    EXPECT_GT(zones(false).size(), 500u);
    EXPECT_GT(zones(true).size(), 300u);
}

TEST(ZoneTwinTest, EveryTransitionUpTo2500AgreesInEveryZone) {
    std::size_t checked = 0;
    for (const Zone& zone : zones(true)) {
        for (const std::int64_t change : zone.file.changes(-(std::int64_t{1} << 40), Year2500)) {
            ASSERT_NO_FATAL_FAILURE(expectAround(zone, change));
            ++checked;
        }
    }
    std::printf("%zu transitions checked\n", checked);
}

TEST(ZoneTwinTest, TheListOfTransitionsAgrees) {
    for (const Zone& zone : zones(true)) {
        const auto expected = zone.file.changes(-(std::int64_t{1} << 40), Year2500);
        std::vector<std::int64_t> found;
        Date at = Date::fromUnixSeconds(-static_cast<double>(std::int64_t{1} << 40));
        while (const auto next = zone.zone->nextTransition(at)) {
            if (next->unixSeconds() >= static_cast<double>(Year2500)) break;
            found.push_back(static_cast<std::int64_t>(next->unixSeconds()));
            at = *next;
        }
        ASSERT_EQ(found, expected) << zone.name;
    }
}

TEST(ZoneTwinTest, EveryTransitionUpToTheYear9999AgreesInEveryZone) {
    std::size_t checked = 0, ruled = 0;
    for (const Zone& zone : zones(true)) {
        if (!zone.file.hasYearlyRule()) {
            ASSERT_FALSE(zone.zone->nextTransition(Date::fromUnixSeconds(static_cast<double>(Year2500))));
            continue;
        }
        ++ruled;
        for (const std::int64_t change : zone.file.changes(Year2500, Year10000)) {
            for (const std::int64_t second : {change - 1, change})
                ASSERT_EQ(offsetAt(*zone.zone, second), zone.file.offsetAt(second))
                    << zone.name << ' ' << second;
            if (checked++ % 16 == 0) {
                ASSERT_NO_FATAL_FAILURE(expectAround(zone, change));
            }
        }
    }
    std::printf("%zu zones with a rule, %zu transitions checked\n", ruled, checked);
    EXPECT_GT(ruled, 90u);
}

TEST(ZoneTwinTest, RandomInstantsAndWallTimesAgreeInEveryZone) {
    const std::uint64_t seed = std::random_device{}();
    std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
    std::mt19937_64 random(seed);
    for (const Zone& zone : zones(false)) {
        for (const auto& [from, until] :
             {std::pair(Year1583, Year2037), {Year2037, Year2500}, {Year2500, Year10000}}) {
            std::uniform_int_distribution<std::int64_t> second(from, until - 1);
            for (int i = 0; i < 40; ++i) {
                const std::int64_t at = second(random);
                ASSERT_EQ(offsetAt(*zone.zone, at), zone.file.offsetAt(at)) << zone.name << " at " << at;
                ASSERT_NO_FATAL_FAILURE(expectWall(zone, second(random)));
                // Midnights, which billing asks for.
                ASSERT_NO_FATAL_FAILURE(expectWall(zone, at - ((at % 86400) + 86400) % 86400));
            }
        }
    }
}

} // namespace
} // namespace estatebook::platform
