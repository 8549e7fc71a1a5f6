// SPDX-License-Identifier: MIT
#include "platform/text/DateFormatter.hpp"

#include <gtest/gtest.h>
#include <unicode/datefmt.h>
#include <unicode/uversion.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace estatebook::platform {
namespace {

constexpr CivilDay day(int year, int month, int dayOfMonth) {
    return CivilDay::fromYearMonthDay(year, month, dayOfMonth);
}

std::string text(std::string_view locale, CivilDay civilDay) {
    return DateFormatter::mediumFor(Locale::named(locale))->stringFromDay(civilDay);
}

/// What ICU itself writes for a day.
class Peer {
public:
    explicit Peer(std::string_view locale)
        : format_(icu::DateFormat::createDateInstance(icu::DateFormat::kMedium,
                                                      icu::Locale(std::string(locale).c_str()))) {
        format_->adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
    }
    [[nodiscard]] std::string text(CivilDay civilDay) const {
        icu::UnicodeString formatted;
        std::string bytes;
        format_->format(static_cast<double>(civilDay.number) * 86400e3, formatted).toUTF8String(bytes);
        return bytes;
    }

private:
    std::unique_ptr<icu::DateFormat> format_;
};

struct LocaleCase {
    const char* name;
    const char* locale;
    const char* firstOfJanuary2025;
    const char* firstOfMarch2024;
    const char* lastOfAugust2024;
};
class MediumDateTest : public testing::TestWithParam<LocaleCase> {};

TEST_P(MediumDateTest, ADayIsWrittenAsTheLocaleWritesIt) {
    const auto formatter = DateFormatter::mediumFor(Locale::named(GetParam().locale));
    EXPECT_EQ(formatter->stringFromDay(day(2025, 1, 1)), GetParam().firstOfJanuary2025);
    EXPECT_EQ(formatter->stringFromDay(day(2024, 3, 1)), GetParam().firstOfMarch2024);
    EXPECT_EQ(formatter->stringFromDay(day(2024, 8, 31)), GetParam().lastOfAugust2024);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, MediumDateTest,
    testing::Values(LocaleCase{"UnitedStates", "en_US", "Jan 1, 2025", "Mar 1, 2024", "Aug 31, 2024"},
                    LocaleCase{"Posix", "en_US_POSIX", "Jan 1, 2025", "Mar 1, 2024", "Aug 31, 2024"},
                    LocaleCase{"Britain", "en_GB", "1 Jan 2025", "1 Mar 2024", "31 Aug 2024"},
                    LocaleCase{"Australia", "en_AU", "1 Jan 2025", "1 Mar 2024", "31 Aug 2024"},
                    LocaleCase{"Germany", "de_DE", "01.01.2025", "01.03.2024", "31.08.2024"},
                    LocaleCase{"France", "fr_FR", "1 janv. 2025", "1 mars 2024", "31 août 2024"},
                    LocaleCase{"Japan", "ja_JP", "2025/01/01", "2024/03/01", "2024/08/31"},
                    LocaleCase{"Spain", "es_ES", "1 ene 2025", "1 mar 2024", "31 ago 2024"},
                    LocaleCase{"Italy", "it_IT", "1 gen 2025", "1 mar 2024", "31 ago 2024"},
                    LocaleCase{"Root", "", "2025 M01 1", "2024 M03 1", "2024 M08 31"},
                    LocaleCase{"Thailand", "th_TH", "1 ม.ค. 2568", "1 มี.ค. 2567", "31 ส.ค. 2567"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(DateFormatterTest, NewZealandAndSeptemberAreWrittenAsTheLocaleDataHasThem) {
    for (const char* locale : {"en_NZ", "en_AU", "en_GB", "es_ES", "fr_FR"})
        for (const CivilDay civilDay : {day(2025, 9, 5), day(2025, 1, 1), day(2024, 8, 31)})
            EXPECT_EQ(text(locale, civilDay), Peer(locale).text(civilDay));
}

TEST(DateFormatterTest, EveryLocaleWritesItsDaysAsIcuDoes) {
    for (const auto locale : Locale::availableIdentifiers()) {
        const Peer peer(locale);
        const auto formatter = DateFormatter::mediumFor(Locale::named(locale));
        for (CivilDay civilDay = day(1900, 1, 1); civilDay <= day(2200, 12, 31); civilDay = civilDay + 1201)
            ASSERT_EQ(formatter->stringFromDay(civilDay), peer.text(civilDay)) << locale;
        for (CivilDay civilDay = day(2023, 12, 1); civilDay <= day(2025, 2, 1); civilDay = civilDay + 7)
            ASSERT_EQ(formatter->stringFromDay(civilDay), peer.text(civilDay)) << locale;
    }
}

TEST(DateFormatterTest, TheFirstAndTheLastDayOfEachMonthAreWrittenAsIcuDoes) {
    for (const char* locale : {"en_US", "de_DE", "th_TH", "ja_JP", "ru_RU"}) {
        const Peer peer(locale);
        const auto formatter = DateFormatter::mediumFor(Locale::named(locale));
        for (CivilDay first = day(1899, 11, 1); first <= day(2156, 2, 1); first = first.byAddingMonths(1))
            for (const CivilDay civilDay : {first, first + -1})
                ASSERT_EQ(formatter->stringFromDay(civilDay), peer.text(civilDay)) << locale;
    }
}

TEST(DateFormatterTest, OtherCalendarsAndDigitsAreWrittenAsIcuDoes) {
    for (const char* locale :
         {"th_TH@numbers=thai", "fa_IR", "ar_SA", "ar_EG@numbers=arab", "he_IL@calendar=hebrew",
          "ja_JP@calendar=japanese", "zh_TW@calendar=roc", "zh_CN@calendar=chinese",
          "en_US@calendar=buddhist", "am_ET@calendar=ethiopic", "hi_IN@numbers=deva", "ff_Adlm_GN",
          "en_US@calendar=iso8601", "en_US@numbers=roman", "zh_CN@numbers=hanidec"}) {
        const Peer peer(locale);
        for (CivilDay civilDay = day(1900, 1, 1); civilDay <= day(2200, 12, 31); civilDay = civilDay + 401)
            ASSERT_EQ(text(locale, civilDay), peer.text(civilDay)) << locale;
    }
}

TEST(DateFormatterTest, YearsOfMoreOrFewerThanFourDigitsAreWrittenAsIcuDoes) {
    for (const char* locale : {"en_US", "de_DE", "th_TH", "ja_JP", "fa_IR", "bg_BG"}) {
        const Peer peer(locale);
        for (const CivilDay civilDay :
             {day(-44, 3, 15), day(0, 12, 31), day(1, 1, 1), day(456, 7, 8), day(457, 1, 1), day(999, 12, 31),
              day(1000, 1, 1), day(1582, 10, 4), day(1582, 10, 15), day(9456, 12, 31), day(9457, 1, 1),
              day(9999, 12, 31), day(10000, 1, 1), day(123456, 2, 29)})
            EXPECT_EQ(text(locale, civilDay), peer.text(civilDay)) << locale;
    }
}

TEST(DateFormatterTest, ALocaleThatNobodyKnowsWritesWhatIcuWrites) {
    for (const char* locale : {"xx_YY", "de_XX", "en_Latn_QQ_VARIANT"})
        EXPECT_EQ(text(locale, day(2024, 3, 1)), Peer(locale).text(day(2024, 3, 1))) << locale;
}

TEST(DateFormatterTest, TheDayIsThatOfTheZoneOfTheFormatter) {
    const Date date = Date::fromUnixSeconds(1709294400); // 2024-03-01 12:00 UTC
    const Locale locale = Locale::named("en_US");
    EXPECT_EQ(DateFormatter::mediumFor(locale, TimeZone::utc())->stringFromDate(date), "Mar 1, 2024");
    EXPECT_EQ(DateFormatter::mediumFor(locale, TimeZone::named("Pacific/Kiritimati"))->stringFromDate(date),
              "Mar 2, 2024");
    EXPECT_EQ(DateFormatter::mediumFor(locale, TimeZone::named("Pacific/Pago_Pago"))->stringFromDate(date),
              "Mar 1, 2024");
}

TEST(DateFormatterTest, TheLastMomentOfADayBelongsToIt) {
    const auto formatter = DateFormatter::mediumFor(Locale::named("en_US"), TimeZone::utc());
    EXPECT_EQ(formatter->stringFromDate(Date{-0.25}), "Dec 31, 2000");
    EXPECT_EQ(formatter->stringFromDate(Date{0}), "Jan 1, 2001");
}

TEST(DateFormatterTest, AFormatterKeepsTheLocaleAndTheZoneItWasMadeWith) {
    const Locale localeBefore = Locale::current();
    const Ref<TimeZone> zoneBefore = TimeZone::defaultTimeZone();
    Locale::setCurrent(Locale::named("de_DE"));
    TimeZone::setDefaultTimeZone(TimeZone::named("Asia/Tokyo"));
    const auto formatter = DateFormatter::medium();
    Locale::setCurrent(Locale::named("en_US"));
    TimeZone::setDefaultTimeZone(TimeZone::utc());
    EXPECT_EQ(formatter->locale(), Locale::named("de_DE"));
    EXPECT_EQ(formatter->timeZone()->name(), "Asia/Tokyo");
    EXPECT_EQ(formatter->stringFromDate(Date{-3600}), "01.01.2001");
    EXPECT_EQ(DateFormatter::medium()->stringFromDate(Date{-3600}), "Dec 31, 2000");
    Locale::setCurrent(localeBefore);
    TimeZone::setDefaultTimeZone(zoneBefore);
}

TEST(DateFormatterTest, TheTextIsWrittenIntoTheCallersBytes) {
    const auto formatter = DateFormatter::mediumFor(Locale::named("fr_FR"), TimeZone::utc());
    char bytes[DateFormatter::RoomNeeded];
    EXPECT_EQ(std::string(bytes, formatter->writeDay(bytes, day(2024, 8, 31))), "31 août 2024");
    EXPECT_EQ(std::string(bytes, formatter->writeDate(bytes, Date{0})), "1 janv. 2001");
}

TEST(DateFormatterTest, ATextThatWasFoundCanBeWrittenAgainAndAgain) {
    for (const char* locale : {"fr_FR", "fa_IR"}) {
        const auto formatter = DateFormatter::mediumFor(Locale::named(locale));
        const CivilDay days[] = {day(2024, 8, 31), day(2024, 9, 1), day(1456, 7, 8), day(-44, 3, 15)};
        for (const CivilDay civilDay : days) {
            const auto found = formatter->dayText(civilDay);
            for (const CivilDay between : days) {
                char bytes[DateFormatter::RoomNeeded];
                (void)formatter->writeDay(bytes, between);
                EXPECT_EQ(std::string(bytes, formatter->write(bytes, found)),
                          formatter->stringFromDay(civilDay));
            }
        }
    }
}

TEST(DateFormatterTest, NoTextIsLongerThanTheMaximalLength) {
    for (const auto locale : Locale::availableIdentifiers()) {
        const auto formatter = DateFormatter::mediumFor(Locale::named(locale));
        for (int month = 1; month <= 12; ++month)
            EXPECT_LT(formatter->stringFromDay(day(2088, month, 28)).size(), DateFormatter::MaximalLength)
                << locale;
    }
}

TEST(DateFormatterTest, DatesWithoutACalendarDayHaveATextAllTheSame) {
    for (const char* locale : {"en_US", "fa_IR", "th_TH"}) {
        const auto formatter = DateFormatter::mediumFor(Locale::named(locale), TimeZone::utc());
        for (const double seconds : {1e300, -1e300, std::numeric_limits<double>::infinity(),
                                     std::numeric_limits<double>::quiet_NaN()})
            EXPECT_FALSE(formatter->stringFromDate(Date{seconds}).empty());
    }
}

TEST(DateFormatterTest, OneFormatterServesManyThreads) {
    for (const char* locale : {"en_US", "fa_IR"}) {
        const auto formatter = DateFormatter::mediumFor(Locale::named(locale));
        const std::string expected = formatter->stringFromDay(day(2024, 3, 1));
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([formatter, &expected] {
                for (int count = 0; count < 500; ++count)
                    EXPECT_EQ(formatter->stringFromDay(day(2024, 3, 1)), expected);
            });
        for (std::thread& thread : threads) thread.join();
    }
}

} // namespace
} // namespace estatebook::platform
