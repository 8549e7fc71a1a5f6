// SPDX-License-Identifier: MIT
#include "platform/text/MediumDateReader.hpp"

#include "platform/text/DateFormatter.hpp"

#include <gtest/gtest.h>

#include <string>

namespace estatebook::platform {
namespace {

using Manner = MediumDateReader::Manner;

/// "2025-1-31", or "none".
std::string read(std::string_view locale, std::string_view text, Manner manner) {
    const auto found = MediumDateReader::make(Locale::named(locale))->read(text, manner);
    if (!found) return "none";
    const YearMonthDay parts = found->day.yearMonthDay();
    return std::to_string(parts.year) + "-" + std::to_string(parts.month) + "-" + std::to_string(parts.day);
}

struct Row {
    const char* text;
    const char* locale;
    const char* strict;
    const char* lenient;
};
constexpr Row table[] = {
    {"", "en_US", "none", "none"},
    {"", "de_DE", "none", "none"},
    {"", "en_AU", "none", "none"},
    {"Jan 32, 2025", "en_US", "none", "2025-2-1"},
    {"Jan 32, 2025", "de_DE", "none", "none"},
    {"Jan 32, 2025", "en_AU", "none", "none"},
    {"January 1, 2025", "en_US", "2025-1-1", "2025-1-1"},
    {"January 1, 2025", "de_DE", "none", "none"},
    {"January 1, 2025", "en_AU", "none", "none"},
    {"Jan 1, 25", "en_US", "2025-1-1", "2025-1-1"},
    {"Jan 1, 25", "de_DE", "none", "none"},
    {"Jan 1, 25", "en_AU", "none", "none"},
    {"1/2/2025", "en_US", "none", "2025-1-2"},
    {"1/2/2025", "de_DE", "none", "2025-2-1"},
    {"1/2/2025", "en_AU", "none", "2025-2-1"},
    {"32.01.2025", "en_US", "none", "2027-8-1"},
    {"32.01.2025", "de_DE", "none", "2025-2-1"},
    {"32.01.2025", "en_AU", "none", "2025-2-1"},
    {"1 Jan 2025", "en_US", "none", "none"},
    {"1 Jan 2025", "de_DE", "none", "2025-1-1"},
    {"1 Jan 2025", "en_AU", "2025-1-1", "2025-1-1"},
    {"nonsense, 2025", "en_US", "none", "none"},
    {"nonsense, 2025", "de_DE", "none", "none"},
    {"nonsense, 2025", "en_AU", "none", "none"},
};

class MediumDateReaderTest : public testing::TestWithParam<Row> {};

TEST_P(MediumDateReaderTest, Reads) {
    EXPECT_EQ(read(GetParam().locale, GetParam().text, Manner::Strict), GetParam().strict);
    EXPECT_EQ(read(GetParam().locale, GetParam().text, Manner::Lenient), GetParam().lenient);
}

INSTANTIATE_TEST_SUITE_P(Table, MediumDateReaderTest, testing::ValuesIn(table),
                         [](const auto& info) { return "Row" + std::to_string(info.index); });

TEST(MediumDateReaderTextTest, TheEndOfTheDateIsToldInBytes) {
    const auto german = MediumDateReader::make(Locale::named("de_DE"));
    EXPECT_EQ(german->read("01.03.2024 und", Manner::Strict)->end, 10u);
    const auto french = MediumDateReader::make(Locale::named("fr_FR"));
    EXPECT_EQ(french->read("31 ao\u00fbt 2024!", Manner::Strict)->end, 13u);
    EXPECT_EQ(french->read("  31 ao\u00fbt 2024", Manner::Strict)->end, 15u);
}

TEST(MediumDateReaderTextTest, YearsOfTwoDigitsAreThoseFrom1950To2049) {
    EXPECT_EQ(read("en_US", "Jan 1, 50", Manner::Strict), "1950-1-1");
    EXPECT_EQ(read("en_US", "Dec 31, 49", Manner::Strict), "2049-12-31");
    EXPECT_EQ(read("en_US", "Jan 1, 00", Manner::Strict), "2000-1-1");
    EXPECT_EQ(read("en_US", "Dec 31, 99", Manner::Strict), "1999-12-31");
}

TEST(MediumDateReaderTextTest, WhatIsNotWellFormedIsNoDate) {
    for (const char* text : {"Jan 1, 2025\xff", "\xc3", "\xed\xa0\x80"})
        EXPECT_EQ(read("en_US", text, Manner::Lenient), "none");
    EXPECT_EQ(read("en_US", std::string_view("Jan\0 1, 2025", 12), Manner::Strict), "none");
}

TEST(MediumDateReaderTextTest, WhatIsWrittenIsReadBackInEveryLocale) {
    for (const std::string_view locale : Locale::availableIdentifiers()) {
        const auto writer = DateFormatter::mediumFor(Locale::named(locale));
        const auto reader = MediumDateReader::make(Locale::named(locale));
        for (const auto& [year, month, day] : {YearMonthDay{2024, 2, 29}, YearMonthDay{1999, 12, 31}}) {
            const CivilDay written = CivilDay::fromYearMonthDay(year, month, day);
            const std::string text = writer->stringFromDay(written);
            const auto found = reader->read(text, Manner::Lenient);
            ASSERT_TRUE(found) << locale << " " << text;
            EXPECT_EQ(found->end, text.size()) << locale << " " << text;
            EXPECT_EQ(found->day, written) << locale << " " << text;
        }
    }
}

} // namespace
} // namespace estatebook::platform
