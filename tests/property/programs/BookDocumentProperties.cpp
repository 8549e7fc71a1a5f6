// SPDX-License-Identifier: MIT
// Random books and dates: what is written reads back as the same, and reading agrees with a search through
// all offsets that a zone has.
#include "estatebook/document/BookReader.hpp"
#include "estatebook/document/BookWriter.hpp"
#include "estatebook/document/DateText.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/TimeZone.hpp"

#include "support/RandomBook.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <set>
#include <string>

namespace estatebook::document {
namespace {

using platform::Calendar;
using platform::CivilDay;
using platform::Date;
using platform::TimeZone;

using bookkit::BookMaker;
using bookkit::Random;
using bookkit::Zones;

TEST(BookDocumentProperties, everyBookThatIsWrittenReadsBackAsTheSame) {
    Random random;
    for (int i = 0; i < 3000; ++i) {
        const BookDocument book = BookMaker(random).make();
        const WrittenBook written = BookWriter::write(book);
        ASSERT_TRUE(written.leftOut.empty()) << written.leftOut[0].path;
        const BookReading reading = BookReader::readText(written.text);
        ASSERT_TRUE(reading) << reading.error->text() << '\n' << written.text;
        ASSERT_EQ(*reading.document, book) << written.text;
        ASSERT_EQ(BookWriter::write(*reading.document).text, written.text);
    }
}

TEST(BookDocumentProperties, aDocumentThatIsCutShortOrDamagedIsRefusedOrReadsBackAsTheSame) {
    Random random;
    for (int i = 0; i < 300; ++i) {
        const std::string text = BookWriter::write(BookMaker(random).make()).text;
        const auto last = static_cast<std::int64_t>(text.size()) - 1;
        EXPECT_FALSE(
            BookReader::readText(text.substr(0, static_cast<std::size_t>(random.between(0, last - 1)))));
        for (int change = 0; change < 20; ++change) {
            std::string damaged = text;
            damaged[static_cast<std::size_t>(random.between(0, last))] =
                static_cast<char>(random.between(0, 255));
            const BookReading reading = BookReader::readText(damaged);
            ASSERT_NE(reading.document.has_value(), reading.error.has_value()) << damaged;
            if (reading) {
                const std::string again = BookWriter::write(*reading.document).text;
                ASSERT_EQ(BookReader::readText(again).document, reading.document) << damaged;
            } else {
                ASSERT_EQ(reading.error->text().find('\n'), std::string::npos) << damaged;
            }
        }
    }
}

TEST(BookDocumentProperties, everyDateReadsBackAsTheVerySame) {
    Random random;
    for (int i = 0; i < 100000; ++i) {
        const Calendar calendar(TimeZone::named(random.oneOf(Zones)));
        const Date date = random.date();
        const std::string text = dateText(date, calendar).value_or("none");
        ASSERT_EQ(readDate(text, calendar).date, date) << text << ' ' << calendar.timeZone()->name();
    }
}

TEST(BookDocumentProperties, noDateHasADigitTooMany) {
    Random random;
    const Calendar utc(TimeZone::utc());
    for (int i = 0; i < 20000; ++i) {
        const Date date = random.date();
        std::string text = dateText(date, utc).value_or("none");
        const std::size_t point = text.find('.');
        if (point == std::string::npos) continue;
        const std::size_t end = text.find('+');
        ASSERT_NE(text[end - 1], '0') << text;
        // Neither of the two shorter fractions around it will do.
        const std::string shorter = text.substr(0, end - 1 == point + 1 ? point : end - 1) + text.substr(end);
        ASSERT_NE(readDate(shorter, utc).date, date) << text;
        std::string above = shorter;
        std::size_t digit = end - 2;
        if (digit <= point || above[digit] == '9') continue;
        ++above[digit];
        ASSERT_NE(readDate(above, utc).date, date) << text;
    }
}

/// All instants at which a zone's wall shows a time, by trying each offset that it has around it.
std::set<std::int64_t> instantsOf(std::int64_t wall, const TimeZone& zone) {
    std::set<int> offsets;
    for (std::int64_t hour = -50; hour <= 50; ++hour)
        offsets.insert(zone.offsetAtUnixSecond(wall + hour * 1800));
    std::set<std::int64_t> instants;
    for (const int offset : offsets)
        if (zone.offsetAtUnixSecond(wall - offset) == offset) instants.insert(wall - offset);
    return instants;
}

TEST(BookDocumentProperties, wallTimesAreReadAsASearchFindsThem) {
    Random random;
    std::set<int> kinds;
    for (int i = 0; i < 20000; ++i) {
        const auto zone = TimeZone::named(random.oneOf(Zones));
        // Near a change of the clocks, where wall times are missing or twofold.
        const auto change = zone->nextTransition(random.date());
        if (!change) continue;
        const std::int64_t wall =
            TimeZone::wholeUnixSeconds(*change) + zone->offsetAt(*change) + random.between(-30, 30) * 360;
        const std::int64_t second = ((wall % 86400) + 86400) % 86400;
        const auto day = CivilDay{(wall - second) / 86400}.yearMonthDay();
        if (day.year < CivilDay::FirstYear || day.year > CivilDay::LastYear) continue;
        std::array<char, 64> text;
        std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d", static_cast<int>(day.year),
                      day.month, day.day, static_cast<int>(second / 3600), static_cast<int>(second / 60 % 60),
                      static_cast<int>(second % 60));
        const std::set<std::int64_t> expected = instantsOf(wall, *zone);
        const DateReading reading = readDate(text.data(), Calendar(zone));
        kinds.insert(static_cast<int>(expected.size()));
        if (expected.empty())
            ASSERT_EQ(reading.fault, DateFault::NoSuchTime) << text.data() << ' ' << zone->name();
        else
            ASSERT_EQ(reading.date, Date::fromUnixSeconds(static_cast<double>(*expected.begin())))
                << text.data() << ' ' << zone->name();
    }
    EXPECT_EQ(kinds.size(), 3u) << "the changes of the clocks were not met";
}

} // namespace
} // namespace estatebook::document
