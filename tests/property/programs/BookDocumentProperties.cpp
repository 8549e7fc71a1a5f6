// SPDX-License-Identifier: MIT
// Random books and dates: what is written reads back as the same, and reading agrees with a search through
// all offsets that a zone has.
#include "estatebook/document/BookReader.hpp"
#include "estatebook/document/BookWriter.hpp"
#include "estatebook/document/DateText.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/calendar/TimeZone.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <set>
#include <string>

namespace estatebook::document {
namespace {

using platform::Calendar;
using platform::CivilDay;
using platform::Date;
using platform::Decimal;
using platform::TimeZone;

constexpr std::array Zones{"UTC",
                           "Europe/London",
                           "America/New_York",
                           "America/Havana",
                           "Asia/Kathmandu",
                           "Africa/Monrovia",
                           "Pacific/Apia",
                           "Australia/Lord_Howe",
                           "America/Santiago"};

class Random {
public:
    Random() : seed_(std::random_device()()), engine_(seed_) { std::printf("seed %u\n", seed_); }

    std::int64_t between(std::int64_t low, std::int64_t high) {
        return std::uniform_int_distribution<std::int64_t>(low, high)(engine_);
    }
    bool chance(int percent) { return between(1, 100) <= percent; }
    template <class Container>
    const auto& oneOf(const Container& container) {
        return container[static_cast<std::size_t>(
            between(0, static_cast<std::int64_t>(container.size()) - 1))];
    }

    /// An instant of the book years, mostly near our time, often on a round second.
    Date date() {
        const std::int64_t second =
            chance(80) ? between(0, 2'000'000'000) : between(-12'000'000'000, 250'000'000'000);
        double seconds = static_cast<double>(second) - TimeZone::ReferenceSecond;
        if (chance(20)) seconds = std::round(seconds / 3600) * 3600;
        if (chance(30)) seconds += static_cast<double>(between(0, 999'999)) / 1e6;
        if (chance(5)) seconds = static_cast<double>(between(-999, 999)) / 1e9;
        return Date{seconds};
    }
    std::string text() {
        static const std::array<std::string, 14> pieces{
            "a",    "B", " ", "\"",         "\\",   "/",   "\n", std::string(1, '\0'),
            "\x1b", "½", "€", "\U0001F600", "\x7f", "rent"};
        std::string result;
        for (std::int64_t i = between(0, 6); i > 0; --i) result += oneOf(pieces);
        return result;
    }
    Decimal decimal() {
        return Decimal::withMantissaExponentIsNegative(static_cast<std::uint64_t>(between(0, 1'000'000)),
                                                       static_cast<short>(between(-8, 20)), chance(50));
    }
    template <class Value, class Make>
    std::optional<Value> maybe(Make make) {
        if (chance(30)) return {};
        return make();
    }
    std::vector<std::string> tags() {
        std::vector<std::string> result;
        for (std::int64_t i = between(0, 3); i > 0; --i) {
            const std::string tag = text();
            if (std::find(result.begin(), result.end(), tag) == result.end()) result.push_back(tag);
        }
        return result;
    }

private:
    unsigned seed_;
    std::mt19937_64 engine_;
};

/// Makes sound books: unique identifiers, references that point somewhere, end dates behind start dates.
class BookMaker {
public:
    explicit BookMaker(Random& random) : random_(random) {}

    BookDocument make() {
        BookDocument book;
        if (random_.chance(80)) book.timeZone = random_.oneOf(Zones);
        for (std::int64_t i = random_.between(0, 3); i > 0; --i) book.settings.push_back(setting(i));
        for (std::int64_t i = random_.between(0, 3); i > 0; --i) book.properties.push_back(property());
        for (std::int64_t i = random_.between(0, 3); i > 0; --i) book.tenants.push_back(tenant());
        for (std::int64_t i = random_.between(0, 3); i > 0; --i) book.tenures.push_back(tenure(book));
        return book;
    }

private:
    std::optional<std::string> identifier() {
        return random_.maybe<std::string>([&] { return random_.text() + std::to_string(++identifiers_); });
    }
    std::optional<std::string> text() {
        return random_.maybe<std::string>([&] { return random_.text(); });
    }
    std::optional<Date> date() {
        return random_.maybe<Date>([&] { return random_.date(); });
    }
    std::optional<Decimal> decimal() {
        return random_.maybe<Decimal>([&] { return random_.decimal(); });
    }
    std::optional<bool> flag() {
        return random_.maybe<bool>([&] { return random_.chance(50); });
    }
    template <class Number>
    std::optional<Number> number() {
        return random_.maybe<Number>([&] {
            return random_.chance(10) ? Number{~std::uint64_t{0}}
                                      : Number{static_cast<std::uint64_t>(random_.between(0, 31))};
        });
    }
    Setting setting(std::int64_t place) {
        const std::array<SettingValue, 5> values{std::monostate(), random_.chance(50),
                                                 random_.between(std::numeric_limits<std::int64_t>::min(),
                                                                 std::numeric_limits<std::int64_t>::max()),
                                                 random_.decimal() + Decimal::parse("0.5"), random_.text()};
        Setting result{random_.text() + std::to_string(place), random_.oneOf(values)};
        if (const auto* decimal = std::get_if<Decimal>(&result.value); decimal && decimal->exponent() >= 0)
            result.value = std::monostate(); // whole numbers are integers
        return result;
    }
    Transaction transaction() {
        return {identifier(), decimal(), text(), date(), date(), text(), flag(), random_.tags()};
    }
    std::optional<RichText> content() {
        if (random_.chance(50)) return text();
        RichText result;
        for (std::int64_t i = random_.between(0, 4); i > 0; --i) {
            TextPiece& piece = result.pieces.emplace_back();
            piece.text = random_.text();
            for (std::int64_t place = random_.between(0, 2); place > 0; --place)
                piece.attributes.push_back(setting(place));
            std::erase_if(piece.attributes, [](const Setting& each) {
                return std::holds_alternative<std::monostate>(each.value);
            });
        }
        result.settle();
        return result;
    }
    Note note() { return {identifier(), text(), content(), date(), text(), random_.tags()}; }
    template <class Made, class Make>
    std::vector<Made> some(Make make) {
        std::vector<Made> result;
        for (std::int64_t i = random_.between(0, 3); i > 0; --i) result.push_back(make());
        return result;
    }
    std::vector<Transaction> transactions() {
        return some<Transaction>([&] { return transaction(); });
    }
    std::vector<Note> notes() {
        return some<Note>([&] { return note(); });
    }
    Property property() {
        return {identifier(),
                text(),
                text(),
                text(),
                decimal(),
                decimal(),
                number<std::uint64_t>(),
                number<BillingCycle>(),
                flag(),
                random_.tags(),
                transactions(),
                notes()};
    }
    Tenant tenant() { return {identifier(), text(), text(), random_.tags(), notes()}; }
    Tenure tenure(const BookDocument& book) {
        Tenure result;
        result.id = identifier();
        if (!book.properties.empty()) result.property = random_.oneOf(book.properties).id;
        if (!book.tenants.empty()) result.tenant = random_.oneOf(book.tenants).id;
        result.startDate = date();
        if (result.startDate) result.endDate = date();
        if (result.endDate < result.startDate) result.endDate.reset();
        result.rentalAmount = decimal();
        result.rentalPeriod = number<std::uint64_t>();
        result.rentalBillingCycle = number<BillingCycle>();
        result.advancePeriod = number<std::uint64_t>();
        result.advanceBillingCycle = number<BillingCycle>();
        result.chargeBehaviour = number<ChargeBehaviour>();
        result.chargeFullDuration = flag();
        result.bondAmount = decimal();
        result.lastBalancedDate = date();
        result.transactions = transactions();
        result.notes = notes();
        return result;
    }

    Random& random_;
    int identifiers_ = 0;
};

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
