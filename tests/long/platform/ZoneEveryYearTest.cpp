// SPDX-License-Identifier: MIT
// Each transition of every zone to the end of the year 9999 against the plain reader of zone files.

#include "support/ZonePair.hpp"

#include <gtest/gtest.h>

#include <cstdio>

namespace estatebook::platform {
namespace {

using namespace estatebook::testkit;

TEST(ZoneEveryYearTest, AllTransitionsAgreeInEveryZone) {
    std::size_t checked = 0, ruled = 0;
    for (const ZonePair& pair : ZonePair::distinct()) {
        for (const std::int64_t change : pair.file.changes(LongAgo, Year10000)) {
            ASSERT_NO_FATAL_FAILURE(pair.expectSameAround(change));
            ++checked;
        }
        ruled += pair.file.hasYearlyRule() ? 1 : 0;
        if (!pair.file.hasYearlyRule()) {
            ASSERT_FALSE(pair.zone->nextTransition(Date::fromUnixSeconds(static_cast<double>(Year2500))));
        }
    }
    std::printf("%zu transitions, %zu zones with a rule\n", checked, ruled);
    EXPECT_GT(ruled, 90u);
}

} // namespace
} // namespace estatebook::platform
