// SPDX-License-Identifier: MIT
#include "estatebook/document/DateText.hpp"

#include "platform/calendar/TimeZone.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace estatebook::document {
namespace {

using platform::Calendar;
using platform::Date;
using platform::TimeZone;

Calendar calendarOf(std::string_view zone) {
    return Calendar(TimeZone::named(zone));
}

/// Unix seconds of a text, or not-a-number.
double unixSeconds(std::string_view text, std::string_view zone = "Europe/London") {
    const DateReading reading = readDate(text, calendarOf(zone));
    EXPECT_EQ(reading.date.has_value(), reading.fault == DateFault::None) << text;
    return reading.date ? reading.date->unixSeconds() : std::numeric_limits<double>::quiet_NaN();
}

DateFault faultOf(std::string_view text, std::string_view zone = "Europe/London") {
    return readDate(text, calendarOf(zone)).fault;
}

std::string textOf(double unixSeconds, std::string_view zone) {
    return dateText(Date::fromUnixSeconds(unixSeconds), calendarOf(zone)).value_or("none");
}

TEST(DateTextTest, aPlainDayIsTheFirstInstantOfThatDayInTheZone) {
    EXPECT_EQ(unixSeconds("2025-02-16"), 1739664000);
    EXPECT_EQ(unixSeconds("2025-06-01"), 1748732400);
    EXPECT_EQ(unixSeconds("2025-06-01", "America/New_York"), 1748750400);
}

TEST(DateTextTest, aPlainDayWithoutMidnightBeginsWhenTheGapEnds) {
    // Clocks in Santiago went from 24:00 to 01:00.
    EXPECT_EQ(unixSeconds("2024-09-08", "America/Santiago"), 1725768000);
    EXPECT_EQ(textOf(1725768000, "America/Santiago"), "2024-09-08");
}

TEST(DateTextTest, aPlainDayWithTwoMidnightsBeginsAtTheEarlierOne) {
    // Clocks in Havana went from 01:00 back to 00:00.
    EXPECT_EQ(unixSeconds("2024-11-03", "America/Havana"), 1730606400);
    EXPECT_EQ(textOf(1730606400, "America/Havana"), "2024-11-03");
    EXPECT_EQ(textOf(1730610000, "America/Havana"), "2024-11-03T00:00:00-05:00");
}

TEST(DateTextTest, wallTimeMayLeaveOutSecondsAndFraction) {
    EXPECT_EQ(unixSeconds("2025-02-16T10:30"), 1739701800);
    EXPECT_EQ(unixSeconds("2025-02-16T10:30:15"), 1739701815);
    EXPECT_EQ(unixSeconds("2025-02-16T10:30:15.25"), 1739701815.25);
    EXPECT_EQ(unixSeconds("2025-02-16T00:00"), unixSeconds("2025-02-16"));
    EXPECT_EQ(unixSeconds("2025-02-16T23:59:59"), 1739750399);
}

TEST(DateTextTest, anOffsetMakesItThatInstantWhateverTheZone) {
    for (const char* zone : {"Europe/London", "Asia/Tokyo", "UTC"}) {
        EXPECT_EQ(unixSeconds("2025-02-16T10:30:00Z", zone), 1739701800);
        EXPECT_EQ(unixSeconds("2025-02-16T10:30Z", zone), 1739701800);
        EXPECT_EQ(unixSeconds("2025-02-16T10:30:00+00:00", zone), 1739701800);
        EXPECT_EQ(unixSeconds("2025-02-16T10:30:00-00:00", zone), 1739701800);
        EXPECT_EQ(unixSeconds("2025-02-16T12:30:00+02:00", zone), 1739701800);
        EXPECT_EQ(unixSeconds("2025-02-16T05:45:00.5-04:45", zone), 1739701800.5);
    }
}

TEST(DateTextTest, ofAWallTimeThatOccursTwiceTheEarlierIsRead) {
    EXPECT_EQ(unixSeconds("2025-10-26T01:30"), 1761438600);
    EXPECT_EQ(unixSeconds("2025-10-26T01:30+00:00"), 1761442200);
}

TEST(DateTextTest, aWallTimeThatDoesNotOccurIsRefused) {
    EXPECT_EQ(faultOf("2025-03-30T01:00"), DateFault::NoSuchTime);
    EXPECT_EQ(faultOf("2025-03-30T01:59:59.999"), DateFault::NoSuchTime);
    EXPECT_EQ(faultOf("2025-03-30T00:59:59"), DateFault::None);
    EXPECT_EQ(faultOf("2025-03-30T02:00"), DateFault::None);
    EXPECT_EQ(faultOf("2025-03-30T01:30", "UTC"), DateFault::None);
}

TEST(DateTextTest, aDayThatTheZoneLeftOutIsRefused) {
    EXPECT_EQ(faultOf("2011-12-30", "Pacific/Apia"), DateFault::NoSuchDay);
    EXPECT_EQ(faultOf("2011-12-30T10:00", "Pacific/Apia"), DateFault::NoSuchTime);
    EXPECT_EQ(faultOf("2011-12-31", "Pacific/Apia"), DateFault::None);
}

TEST(DateTextTest, leapDaysExistInLeapYearsOnly) {
    EXPECT_EQ(faultOf("2024-02-29"), DateFault::None);
    EXPECT_EQ(faultOf("2000-02-29"), DateFault::None);
    EXPECT_EQ(faultOf("2025-02-29"), DateFault::NoSuchDay);
    EXPECT_EQ(faultOf("1900-02-29"), DateFault::NoSuchDay);
    EXPECT_EQ(faultOf("2025-02-29T10:00:00Z"), DateFault::NoSuchDay);
}

TEST(DateTextTest, daysAndTimesThatDoNotExistAreRefused) {
    for (const char* text : {"2025-00-10", "2025-13-10", "2025-01-00", "2025-01-32", "2025-04-31"})
        EXPECT_EQ(faultOf(text), DateFault::NoSuchDay) << text;
    for (const char* text :
         {"2025-01-10T24:00", "2025-01-10T23:60", "2025-01-10T23:59:60", "2025-01-10T99:99Z"})
        EXPECT_EQ(faultOf(text), DateFault::NoSuchTime) << text;
}

TEST(DateTextTest, yearsRunFrom1583To9999) {
    EXPECT_EQ(faultOf("1583-01-01"), DateFault::None);
    EXPECT_EQ(faultOf("9999-12-31"), DateFault::None);
    EXPECT_EQ(faultOf("9999-12-31T23:59:59.5"), DateFault::None);
    for (const char* text : {"1582-12-31", "1582-12-31T23:59:59", "1582-10-10", "0001-01-01", "0000-01-01",
                             "10000-01-01", "999999-01-01", "99999999999999999999-01-01"})
        EXPECT_EQ(faultOf(text), DateFault::OutsideYears) << text;
}

TEST(DateTextTest, theYearIsThatOfTheZoneNotThatOfTheOffset) {
    EXPECT_EQ(faultOf("9999-12-31T23:00:00-05:00", "UTC"), DateFault::OutsideYears);
    EXPECT_EQ(faultOf("9999-12-31T23:00:00-05:00", "America/New_York"), DateFault::None);
    EXPECT_EQ(faultOf("1583-01-01T01:00:00+05:00", "UTC"), DateFault::OutsideYears);
    EXPECT_EQ(faultOf("1582-12-31T23:00:00-05:00", "UTC"), DateFault::None);
}

TEST(DateTextTest, aFractionThatRoundsIntoTheYear10000IsOutside) {
    EXPECT_EQ(faultOf("9999-12-31T23:59:59.999999999999", "UTC"), DateFault::OutsideYears);
}

TEST(DateTextTest, otherFormsAreNoDates) {
    for (const char* text : {"",
                             " ",
                             "2025",
                             "2025-02",
                             "2025-2-16",
                             "25-02-16",
                             "2025-02-16 ",
                             " 2025-02-16",
                             "2025/02/16",
                             "16.02.2025",
                             "2025-02-16T",
                             "2025-02-16T10",
                             "2025-02-16T1030",
                             "2025-02-16 10:30",
                             "2025-02-16t10:30",
                             "2025-02-16T10:30z",
                             "2025-02-16T10:30:",
                             "2025-02-16T10:30:00.",
                             "2025-02-16T10:30.5",
                             "2025-02-16T10:30:00,5",
                             "2025-02-16T10:30:00+1",
                             "2025-02-16T10:30:00+01",
                             "2025-02-16T10:30:00+0100",
                             "2025-02-16T10:30:00+24:00",
                             "2025-02-16T10:30:00+01:60",
                             "2025-02-16T10:30:00 Z",
                             "2025-02-16T10:30:00ZZ",
                             "2025-02-16Z",
                             "+2025-02-16",
                             "-2025-02-16",
                             "2025-02-16T10:30:00+01:00:00",
                             "2025-02-16T10:30:000",
                             "today",
                             "20250216"})
        EXPECT_EQ(faultOf(text), DateFault::NotADate) << text;
    EXPECT_EQ(faultOf(std::string_view("2025-02-16\0", 11)), DateFault::NotADate);
}

TEST(DateTextTest, aFractionOfAnyLengthGivesTheNearestInstant) {
    const Date tenth = Date{761394600.1};
    EXPECT_EQ(readDate("2025-02-16T10:30:00.1", calendarOf("UTC")).date, tenth);
    EXPECT_EQ(readDate("2025-02-16T10:30:00.1" + std::string(1000, '0'), calendarOf("UTC")).date, tenth);
    // Halfway between two instants, and just above.
    const double ulp = std::ldexp(1, -23);
    const std::string half = "2025-02-16T10:30:00.000000059604644775390625";
    EXPECT_EQ(readDate(half, calendarOf("UTC")).date, Date{761394600});
    EXPECT_EQ(readDate(half + "0000000000000000000000001", calendarOf("UTC")).date, Date{761394600 + ulp});
}

TEST(DateTextTest, fractionsBeforeTheReferenceDateAreReadTowardsTheFuture) {
    EXPECT_EQ(readDate("2000-12-31T23:59:59.75Z", calendarOf("UTC")).date, Date{-0.25});
    EXPECT_EQ(readDate("2000-12-31T23:59:58.9Z", calendarOf("UTC")).date, Date{-1.1});
    EXPECT_EQ(readDate("2000-12-31T23:59:59." + std::string(500, '9') + "Z", calendarOf("UTC")).date,
              Date{0});
    EXPECT_EQ(readDate("2001-01-01T00:00:00." + std::string(500, '0') + "1Z", calendarOf("UTC")).date,
              Date{0});
}

TEST(DateTextTest, theFirstInstantOfADayIsWrittenAsThePlainDay) {
    EXPECT_EQ(textOf(1739664000, "Europe/London"), "2025-02-16");
    EXPECT_EQ(textOf(1748732400, "Europe/London"), "2025-06-01");
    EXPECT_EQ(textOf(1748732400, "UTC"), "2025-05-31T23:00:00+00:00");
}

TEST(DateTextTest, otherInstantsAreWrittenAsWallTimeWithTheOffset) {
    EXPECT_EQ(textOf(1748734200, "Europe/London"), "2025-06-01T00:30:00+01:00");
    EXPECT_EQ(textOf(1748734200, "America/New_York"), "2025-05-31T19:30:00-04:00");
    EXPECT_EQ(textOf(1748734200, "Asia/Kathmandu"), "2025-06-01T05:15:00+05:45");
    EXPECT_EQ(textOf(1748734200, "America/St_Johns"), "2025-05-31T21:00:00-02:30");
}

TEST(DateTextTest, bothOfAWallTimeThatOccursTwiceAreToldApart) {
    EXPECT_EQ(textOf(1761438600, "Europe/London"), "2025-10-26T01:30:00+01:00");
    EXPECT_EQ(textOf(1761442200, "Europe/London"), "2025-10-26T01:30:00+00:00");
}

TEST(DateTextTest, aFractionHasJustAsManyDigitsAsAreNeeded) {
    const Calendar utc = calendarOf("UTC");
    EXPECT_EQ(dateText(Date{761394600.5}, utc), "2025-02-16T10:30:00.5+00:00");
    EXPECT_EQ(dateText(Date{761394600.1}, utc), "2025-02-16T10:30:00.1+00:00");
    EXPECT_EQ(dateText(Date{std::nextafter(761394600.0, 1e12)}, utc), "2025-02-16T10:30:00.0000001+00:00");
    EXPECT_EQ(dateText(Date{-0.25}, utc), "2000-12-31T23:59:59.75+00:00");
    EXPECT_EQ(dateText(Date{-1.1}, utc), "2000-12-31T23:59:58.9+00:00");
}

TEST(DateTextTest, evenTheSmallestFractionComesBack) {
    const Calendar utc = calendarOf("UTC");
    const double smallest = std::numeric_limits<double>::denorm_min();
    for (const double seconds : {smallest, -smallest, 1e-300, -1e-300, -1e-17}) {
        const std::string text = dateText(Date{seconds}, utc).value_or("none");
        EXPECT_EQ(readDate(text, utc).date, Date{seconds}) << text;
    }
}

TEST(DateTextTest, anOffsetWithSecondsIsWrittenAsTheNextOneTowardsUtc) {
    // London's mean time was 75 seconds behind Greenwich, Amsterdam's 1172 seconds ahead.
    const std::string london = textOf(-4000000000.0, "Europe/London");
    EXPECT_EQ(london, "1843-03-31T16:52:20-00:01");
    EXPECT_EQ(unixSeconds(london), -4000000000.0);
    const std::string amsterdam = textOf(-2000000000.0, "Europe/Amsterdam");
    EXPECT_EQ(unixSeconds(amsterdam, "Europe/Amsterdam"), -2000000000.0) << amsterdam;
}

TEST(DateTextTest, theFirstAndTheLastInstantOfTheYearsComeBackInEveryKindOfZone) {
    for (const char* zone : {"UTC", "Europe/London", "America/New_York", "Asia/Kathmandu", "Pacific/Apia"}) {
        const Calendar calendar = calendarOf(zone);
        const Date first = calendar.startOfCivilDay(Calendar::FirstBookDay);
        const Date last{calendar.startOfCivilDay(Calendar::LastBookDay + 1).secondsSinceReferenceDate - 0.5};
        for (const Date date : {first, Date{first.secondsSinceReferenceDate + 1}, last}) {
            const std::string text = dateText(date, calendar).value_or("none");
            EXPECT_EQ(readDate(text, calendar).date, date) << zone << ' ' << text;
        }
        EXPECT_FALSE(dateText(Date{first.secondsSinceReferenceDate - 1}, calendar)) << zone;
        EXPECT_FALSE(dateText(Date{last.secondsSinceReferenceDate + 1}, calendar)) << zone;
    }
}

TEST(DateTextTest, whatIsNoCalendarDateHasNoText) {
    const Calendar utc = calendarOf("UTC");
    EXPECT_FALSE(dateText(Date{std::numeric_limits<double>::quiet_NaN()}, utc));
    EXPECT_FALSE(dateText(Date{std::numeric_limits<double>::infinity()}, utc));
    EXPECT_FALSE(dateText(Date{-1e300}, utc));
}

} // namespace
} // namespace estatebook::document
