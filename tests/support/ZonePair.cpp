// SPDX-License-Identifier: MIT
#include "support/ZonePair.hpp"

#include <gtest/gtest.h>

#include <set>

namespace estatebook::testkit {

using platform::TimeZone;
using platform::WallTime;

const std::vector<ZonePair>& ZonePair::all() {
    static const std::vector<ZonePair> pairs = [] {
        std::vector<ZonePair> made;
        for (const std::string& each : ZoneFile::names()) {
            const auto plain = ZoneFile::read(each);
            const auto ours = TimeZone::named(each);
            EXPECT_TRUE(plain) << each << " cannot be read";
            EXPECT_TRUE(ours) << each << " is unknown to the library";
            if (plain && ours) made.push_back({each, *plain, ours});
        }
        return made;
    }();
    return pairs;
}

const std::vector<ZonePair>& ZonePair::distinct() {
    static const std::vector<ZonePair> pairs = [] {
        std::vector<ZonePair> made;
        std::set<std::string> seen;
        for (const ZonePair& pair : all()) {
            if (seen.insert(pair.file.bytes()).second) made.push_back(pair);
        }
        return made;
    }();
    return pairs;
}

void ZonePair::expectSameWall(std::int64_t wall) const {
    const auto expected = file.instantsOfWall(wall);
    const WallTime found = zone->wallSecond(wall);
    if (expected.empty()) {
        ASSERT_EQ(found.kind, WallTime::Kind::Missing) << name << " wall " << wall;
        // The change that jumped over this wall time, and as far behind it as the wall time lies in the gap.
        const int before = file.offsetAt(found.second - 1), after = file.offsetAt(found.second);
        ASSERT_LE(found.second + before, wall) << name;
        ASSERT_GT(found.second + after, wall) << name;
        ASSERT_EQ(found.first, wall - before) << name;
        ASSERT_EQ(zone->firstInstantFromWallSecond(wall), found.second) << name << " wall " << wall;
    } else {
        ASSERT_EQ(found.kind, expected.size() == 1 ? WallTime::Kind::Unique : WallTime::Kind::Twice)
            << name << " wall " << wall;
        ASSERT_EQ(found.first, expected.front()) << name << " wall " << wall;
        ASSERT_EQ(found.second, expected.back()) << name << " wall " << wall;
        ASSERT_EQ(zone->firstInstantFromWallSecond(wall), found.first) << name << " wall " << wall;
    }
    ASSERT_EQ(zone->instantOfWallSecond(wall), found.first) << name << " wall " << wall;
}

void ZonePair::expectSameAround(std::int64_t change) const {
    for (const std::int64_t second : {change - 86400, change - 1, change, change + 1, change + 86400})
        ASSERT_EQ(offsetAt(second), file.offsetAt(second)) << name << " at " << second;
    const int before = file.offsetAt(change - 1), after = file.offsetAt(change);
    for (const std::int64_t wall : {change + before, change + after}) {
        for (const std::int64_t off : {-1, 0, 1}) expectSameWall(wall + off);
    }
    expectSameWall(change + (before + after) / 2);
}

} // namespace estatebook::testkit
