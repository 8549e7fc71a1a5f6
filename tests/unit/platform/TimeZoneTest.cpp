// SPDX-License-Identifier: MIT
#include "platform/calendar/TimeZone.hpp"

#include "platform/calendar/Calendar.hpp"
#include "support/Dates.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace estatebook::platform {
namespace {

using testkit::utcDate;

constexpr double Infinity = std::numeric_limits<double>::infinity();

/// Puts the variable TZ and the default zone back.
class TimeZoneTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (const char* variable = std::getenv("TZ")) saved_ = variable;
    }
    void TearDown() override {
        if (saved_)
            setenv("TZ", saved_->c_str(), 1);
        else
            unsetenv("TZ");
        TimeZone::setDefaultTimeZone(nullptr);
    }
    static std::string localWith(const char* variable) {
        setenv("TZ", variable, 1);
        return std::string(TimeZone::local()->name());
    }

private:
    std::optional<std::string> saved_;
};

TEST_F(TimeZoneTest, OneObjectStandsForOneName) {
    const Ref<TimeZone> berlin = TimeZone::named("Europe/Berlin");
    ASSERT_TRUE(berlin);
    EXPECT_EQ(berlin, TimeZone::named("Europe/Berlin"));
    EXPECT_NE(berlin, TimeZone::named("Europe/Paris"));
    EXPECT_EQ(berlin->name(), "Europe/Berlin");
    EXPECT_EQ(TimeZone::named("UTC"), TimeZone::utc());
}

TEST_F(TimeZoneTest, AnUnknownNameGivesNull) {
    for (const char* name : {"", "Europe/Atlantis", "europe/berlin", "Europe", "Europe/", "/Europe/Berlin",
                             "Europe//Berlin", "Berlin", "CEST+", "zone.tab", "leapseconds"}) {
        EXPECT_FALSE(TimeZone::named(name)) << name;
    }
}

TEST_F(TimeZoneTest, APathIsNoName) {
    for (const char* name :
         {"../zoneinfo/Europe/Berlin", "Europe/../Europe/Berlin", "./Europe/Berlin",
          "/usr/share/zoneinfo/Europe/Berlin", "file:Europe/Berlin", "libc:localtime", "Europe\\Berlin",
          "Europe/Berlin ", "Europe/Berlin\n", "/etc/passwd", "/dev/stdin", "Fixed/UTC+01:00:00"}) {
        EXPECT_FALSE(TimeZone::named(name)) << name;
    }
    EXPECT_FALSE(TimeZone::named(std::string_view("Europe/Berlin\0x", 15)));
    EXPECT_FALSE(TimeZone::named(std::string(5000, 'A')));
}

TEST_F(TimeZoneTest, UtcHasNoOffsetAndNoChanges) {
    const Ref<TimeZone> utc = TimeZone::utc();
    EXPECT_EQ(utc->name(), "UTC");
    for (const double second : {-1e15, -1e10, 0.0, 1e9, 1e12}) EXPECT_EQ(utc->offsetAt(Date{second}), 0);
    EXPECT_FALSE(utc->nextTransition(utcDate(1583, 1, 1)));
}

TEST_F(TimeZoneTest, AnOffsetChangesAtTheSecondOfTheTransition) {
    const Ref<TimeZone> berlin = TimeZone::named("Europe/Berlin");
    EXPECT_EQ(berlin->offsetAt(utcDate(2025, 3, 30, 0, 59, 59)), 3600);
    EXPECT_EQ(berlin->offsetAt(utcDate(2025, 3, 30, 1)), 7200);
    EXPECT_EQ(berlin->offsetAt(utcDate(2025, 10, 26, 0, 59, 59)), 7200);
    EXPECT_EQ(berlin->offsetAt(utcDate(2025, 10, 26, 1)), 3600);
    const Date between{utcDate(2025, 3, 30, 1).secondsSinceReferenceDate - 0.25};
    EXPECT_EQ(berlin->offsetAt(between), 3600);
}

TEST_F(TimeZoneTest, BeforeTheFirstTransitionLocalMeanTimeIsKept) {
    const Ref<TimeZone> berlin = TimeZone::named("Europe/Berlin");
    EXPECT_EQ(berlin->offsetAt(utcDate(1893, 3, 31, 23, 6, 31)), 3208);
    EXPECT_EQ(berlin->offsetAt(utcDate(1893, 3, 31, 23, 6, 32)), 3600);
    EXPECT_EQ(berlin->offsetAt(utcDate(1583, 1, 1)), 3208);
    EXPECT_EQ(berlin->offsetAt(utcDate(-20000, 1, 1)), 3208);
    EXPECT_EQ(TimeZone::named("America/New_York")->offsetAt(utcDate(1700, 1, 1)), -17762);
}

TEST_F(TimeZoneTest, TheLastRuleGoesOnForEver) {
    const Ref<TimeZone> berlin = TimeZone::named("Europe/Berlin");
    for (const int year : {2037, 2038, 2100, 2437, 2438, 2439, 2440, 2837, 2838, 9999, 30000}) {
        EXPECT_EQ(berlin->offsetAt(utcDate(year, 1, 15)), 3600) << year;
        EXPECT_EQ(berlin->offsetAt(utcDate(year, 7, 15)), 7200) << year;
    }
    // The last Sundays of March and October 9999.
    EXPECT_EQ(berlin->nextTransition(utcDate(9999, 1, 1)), utcDate(9999, 3, 28, 1));
    EXPECT_EQ(berlin->nextTransition(utcDate(9999, 3, 28, 1)), utcDate(9999, 10, 31, 1));
}

TEST_F(TimeZoneTest, TheNextTransitionIsTheFirstOneAfterTheDate) {
    const Ref<TimeZone> berlin = TimeZone::named("Europe/Berlin");
    EXPECT_EQ(berlin->nextTransition(utcDate(2025, 1, 1)), utcDate(2025, 3, 30, 1));
    EXPECT_EQ(berlin->nextTransition(utcDate(2025, 3, 30, 0, 59, 59)), utcDate(2025, 3, 30, 1));
    EXPECT_EQ(berlin->nextTransition(utcDate(2025, 3, 30, 1)), utcDate(2025, 10, 26, 1));
    EXPECT_EQ(berlin->nextTransition(utcDate(1583, 1, 1)), utcDate(1893, 3, 31, 23, 6, 32));
}

TEST_F(TimeZoneTest, AZoneWithoutARuleHasNoTransitionAfterItsLast) {
    const Ref<TimeZone> tokyo = TimeZone::named("Asia/Tokyo");
    EXPECT_FALSE(tokyo->nextTransition(utcDate(2000, 1, 1)));
    EXPECT_EQ(tokyo->offsetAt(utcDate(9999, 7, 1)), 32400);
}

TEST_F(TimeZoneTest, AWallTimeIsUniqueMissingOrThereTwice) {
    const Ref<TimeZone> berlin = TimeZone::named("Europe/Berlin");
    const auto unix = [](Date date) { return static_cast<std::int64_t>(date.unixSeconds()); };
    const WallTime unique = berlin->wallSecond(unix(utcDate(2025, 7, 1, 12)));
    EXPECT_EQ(unique.kind, WallTime::Kind::Unique);
    EXPECT_EQ(unique.first, unix(utcDate(2025, 7, 1, 10)));
    EXPECT_EQ(unique.second, unique.first);

    const WallTime missing = berlin->wallSecond(unix(utcDate(2025, 3, 30, 2, 30)));
    EXPECT_EQ(missing.kind, WallTime::Kind::Missing);
    EXPECT_EQ(missing.first, unix(utcDate(2025, 3, 30, 1, 30)));
    EXPECT_EQ(missing.second, unix(utcDate(2025, 3, 30, 1)));

    const WallTime twice = berlin->wallSecond(unix(utcDate(2025, 10, 26, 2, 30)));
    EXPECT_EQ(twice.kind, WallTime::Kind::Twice);
    EXPECT_EQ(twice.first, unix(utcDate(2025, 10, 26, 0, 30)));
    EXPECT_EQ(twice.second, unix(utcDate(2025, 10, 26, 1, 30)));
}

TEST_F(TimeZoneTest, DatesWithoutADayAreTakenAsTheNearestOneThatHasOne) {
    const Ref<TimeZone> tokyo = TimeZone::named("Asia/Tokyo");
    EXPECT_EQ(tokyo->offsetAt(Date{Infinity}), 32400);
    EXPECT_EQ(tokyo->offsetAt(Date{1e300}), 32400);
    EXPECT_EQ(tokyo->offsetAt(Date{-Infinity}), 33539);
    EXPECT_EQ(tokyo->offsetAt(Date{std::numeric_limits<double>::quiet_NaN()}), 33539);
    EXPECT_FALSE(tokyo->nextTransition(Date{Infinity}));
    EXPECT_TRUE(TimeZone::named("Europe/Berlin")->nextTransition(Date{Infinity}));
}

TEST_F(TimeZoneTest, TheZoneOfTheProcessIsNamedByTheVariable) {
    EXPECT_EQ(localWith("America/New_York"), "America/New_York");
    EXPECT_EQ(localWith(":Asia/Tokyo"), "Asia/Tokyo");
    EXPECT_EQ(localWith("/usr/share/zoneinfo/Asia/Tokyo"), "Asia/Tokyo");
    EXPECT_EQ(localWith(":/usr/share/zoneinfo/Asia/Tokyo"), "Asia/Tokyo");
}

TEST_F(TimeZoneTest, AVariableThatNamesNoZoneGivesUtc) {
    for (const char* variable :
         {"", ":", "Europe/Atlantis", "../../../etc/passwd", "/etc/passwd", "/dev/zero", "/"})
        EXPECT_EQ(localWith(variable), "UTC") << variable;
}

TEST_F(TimeZoneTest, WithoutTheVariableTheZoneIsThatOfTheSystem) {
    unsetenv("TZ");
    EXPECT_TRUE(TimeZone::local());
}

TEST_F(TimeZoneTest, TheDefaultZoneIsThatOfTheProcessUntilAnotherIsSet) {
    setenv("TZ", "Asia/Tokyo", 1);
    TimeZone::setDefaultTimeZone(nullptr);
    EXPECT_EQ(TimeZone::defaultTimeZone()->name(), "Asia/Tokyo");
    setenv("TZ", "Europe/Berlin", 1);
    EXPECT_EQ(TimeZone::defaultTimeZone()->name(), "Asia/Tokyo") << "read once";
    TimeZone::setDefaultTimeZone(TimeZone::named("America/New_York"));
    EXPECT_EQ(TimeZone::defaultTimeZone()->name(), "America/New_York");
    TimeZone::setDefaultTimeZone(nullptr);
    EXPECT_EQ(TimeZone::defaultTimeZone()->name(), "Europe/Berlin");
}

TEST_F(TimeZoneTest, ThreadsThatAskAtOnceGetTheSameObject) {
    std::vector<Ref<TimeZone>> found(8);
    std::vector<std::jthread> threads;
    for (auto& each : found) {
        threads.emplace_back([&each] {
            for (const char* name : {"Pacific/Auckland", "Pacific/Chatham", "Asia/Kolkata", "Africa/Cairo"}) {
                each = TimeZone::named(name);
                if (each->offsetAt(utcDate(2025, 1, 1)) == 0) each = nullptr;
            }
        });
    }
    threads.clear();
    for (const auto& each : found) EXPECT_EQ(each, TimeZone::named("Africa/Cairo"));
}

} // namespace
} // namespace estatebook::platform
