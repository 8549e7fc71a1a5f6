// SPDX-License-Identifier: MIT
#include "platform/text/DateDescription.hpp"

#include "support/Dates.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace estatebook::platform {
namespace {

using testkit::calendarOf;
using testkit::wallDate;

/// With every kind of blank as a plain one.
std::string described(Date date, const char* locale, const char* zone) {
    std::string text = descriptionWithLocale(date, Locale::named(locale), TimeZone::named(zone));
    for (const std::string_view blank : {"\u202f", "\u00a0"})
        for (std::size_t at; (at = text.find(blank)) != text.npos;) text.replace(at, blank.size(), " ");
    return text;
}

TEST(DateDescriptionTest, TheDateAndTheTimeAreWrittenInFullWithTheZone) {
    const Date date = wallDate(calendarOf("America/New_York"), 2025, 3, 1);
    EXPECT_EQ(described(date, "en_US", "America/New_York"),
              "Saturday, March 1, 2025 at 12:00:00 AM Eastern Standard Time");
    EXPECT_EQ(described(date, "en_GB", "Europe/Berlin"),
              "Saturday, 1 March 2025 at 06:00:00 Central European Standard Time");
    EXPECT_EQ(described(date, "de_DE", "Europe/Berlin"),
              "Samstag, 1. März 2025 um 06:00:00 Mitteleuropäische Normalzeit");
}

TEST(DateDescriptionTest, SummerHasItsOwnNameForTheZone) {
    const Date date = wallDate(calendarOf("Europe/Berlin"), 2025, 7, 1, 13, 5, 9);
    EXPECT_EQ(described(date, "en_US", "Europe/Berlin"),
              "Tuesday, July 1, 2025 at 1:05:09 PM Central European Summer Time");
}

TEST(DateDescriptionTest, OfTwoEqualWallTimesEachIsNamed) {
    const Date first = wallDate(calendarOf("Europe/Berlin"), 2025, 10, 26, 2, 30);
    const Date second{first.secondsSinceReferenceDate + 3600};
    EXPECT_EQ(described(first, "en_GB", "Europe/Berlin"),
              "Sunday, 26 October 2025 at 02:30:00 Central European Summer Time");
    EXPECT_EQ(described(second, "en_GB", "Europe/Berlin"),
              "Sunday, 26 October 2025 at 02:30:00 Central European Standard Time");
}

TEST(DateDescriptionTest, FractionsOfASecondAreLeftOut) {
    const Date date{wallDate(calendarOf("UTC"), 2025, 3, 1, 23, 59, 59).secondsSinceReferenceDate + 0.999};
    EXPECT_EQ(described(date, "en_GB", "UTC"),
              "Saturday, 1 March 2025 at 23:59:59 Coordinated Universal Time");
}

TEST(DateDescriptionTest, WithoutAZoneTheDefaultOneHolds) {
    const Date date{800000000};
    EXPECT_EQ(descriptionWithLocale(date, Locale::named("en_GB")),
              descriptionWithLocale(date, Locale::named("en_GB"), TimeZone::defaultTimeZone()));
}

TEST(DateDescriptionTest, WhatHasNoDayReadsAsItDoesWithoutALocale) {
    for (const double seconds :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), -1e300})
        EXPECT_EQ(descriptionWithLocale(Date{seconds}, Locale::named("en_GB")), Date{seconds}.description());
}

} // namespace
} // namespace estatebook::platform
