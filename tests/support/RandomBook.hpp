// SPDX-License-Identifier: MIT
#pragma once

/// Random books as documents hold them, and the numbers and texts that they are made of. The seed is printed.

#include "estatebook/document/BookDocument.hpp"

#include "platform/calendar/TimeZone.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <variant>
#include <vector>

namespace estatebook::bookkit {

using namespace document;
using platform::Date;
using platform::Decimal;
using platform::TimeZone;

inline constexpr std::array Zones{"UTC",
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

} // namespace estatebook::bookkit
