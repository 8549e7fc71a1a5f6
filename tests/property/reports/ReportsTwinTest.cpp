// SPDX-License-Identifier: MIT

// Random statements against a twin that pays off charges a penny at a time, and random books whose ageing must add up.

#include "reports/Ageing.hpp"

#include "reports/MonthlyIncome.hpp"
#include "statement/TKStatement.hpp"
#include "support/Book.hpp"
#include "support/PlainTransaction.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using test::PlainTransaction;

constexpr int SecondsPerHour = 3600;
constexpr int HoursPerDay = 24;

/// A line as the twin knows it: a whole number of pence on an hour.
struct Line {
    int pence;
    std::optional<int> hour;
};

struct TwinAgeing {
    std::vector<std::int64_t> buckets;
    std::int64_t notYetDue = 0;
    std::int64_t credit = 0;

    TwinAgeing(const std::vector<Line>& lines, int today, const std::vector<std::uint64_t>& bounds)
        : buckets(bounds.size() + 1) {
        std::vector<Line> charges;
        for (const Line& line : lines)
            if (line.hour && *line.hour > today)
                notYetDue -= line.pence;
            else if (line.pence < 0)
                charges.push_back(line);
        for (const Line& line : lines)
            if (line.pence > 0 && !(line.hour && *line.hour > today))
                for (int penny = 0; penny < line.pence; ++penny) pay(charges);
        for (const Line& charge : charges) {
            std::size_t bucket = 0;
            const int age = charge.hour ? today / HoursPerDay - *charge.hour / HoursPerDay : 1 << 30;
            while (bucket < bounds.size() && age > static_cast<int>(bounds[bucket])) ++bucket;
            buckets[bucket] -= charge.pence;
        }
    }

private:
    /// A penny for the oldest charge that is still open.
    void pay(std::vector<Line>& charges) {
        Line* oldest = nullptr;
        for (Line& charge : charges)
            if (charge.pence < 0 && (!oldest || charge.hour < oldest->hour)) oldest = &charge;
        if (oldest)
            ++oldest->pence;
        else
            ++credit;
    }
};

class ReportsTwinTest : public testing::Test {
protected:
    ReportsTwinTest() {
        const std::uint32_t seed = std::random_device{}();
        RecordProperty("seed", static_cast<int>(seed));
        trace_.emplace(__FILE__, __LINE__, "seed " + std::to_string(seed));
        random_.seed(seed);
    }
    int below(int bound) { return static_cast<int>(random_() % static_cast<std::uint32_t>(bound)); }
    bool oneIn(int chances) { return below(chances) == 0; }

    Date someDay() {
        return bookkit::onDay(2020 + below(5), 1 + below(12), 1 + below(28), oneIn(2) ? below(24) : 0);
    }
    Decimal someAmount() { return Decimal(below(400000) - 100000) / 100; }

    Ref<TKTenure> someTenure(const bookkit::Book& book) {
        constexpr std::uint64_t Cycles[] = {1, 7, 30, 365};
        const std::size_t cycle = static_cast<std::size_t>(below(4));
        const auto tenure = book.tenure(someDay(), Cycles[cycle], static_cast<std::uint64_t>(1 + below(4)),
                                        Decimal(1 + below(200000)) / 100);
        if (oneIn(3)) tenure->setEndDate(bookkit::onDay(2025, 1 + below(12), 1));
        if (oneIn(2)) tenure->setAdvancePeriod(Number(below(3)));
        tenure->setAdvanceBillingCycle(Number(Cycles[below(4)]));
        tenure->setChargeBehaviour(Number(below(3)));
        tenure->setChargeFullDuration(Number(oneIn(3)));
        if (oneIn(2)) tenure->setBondAmount(Decimal(below(300000) - 50000) / 100);
        tenure->setCurrencyCode(String::make(oneIn(2) ? "GBP" : "JPY"));
        for (int count = below(20); count > 0; --count)
            book.record(*tenure, oneIn(8) ? std::nullopt : std::optional(someAmount()),
                        oneIn(8) ? std::nullopt : std::optional(someDay()), oneIn(3));
        return tenure;
    }

    const bookkit::DefaultZone zone_{"UTC"};
    std::mt19937 random_;
    std::optional<testing::ScopedTrace> trace_;
};

TEST_F(ReportsTwinTest, AgeingAgreesWithATwinThatPaysPennyByPenny) {
    for (int round = 0; round < 2000; ++round) {
        constexpr int Today = 500 * HoursPerDay + 12;
        std::vector<std::uint64_t> bounds(static_cast<std::size_t>(below(6)));
        for (auto& bound : bounds) bound = static_cast<std::uint64_t>(below(120));
        std::ranges::sort(bounds);
        std::vector<Line> lines;
        std::vector<Ref<TKLedgerTransaction>> objects;
        for (int count = below(24); count > 0; --count) {
            Line line{below(120) - 70, below(520) * HoursPerDay + below(HoursPerDay)};
            if (oneIn(10)) line.hour.reset();
            if (oneIn(6)) line.hour = Today + below(3) - 1;
            lines.push_back(line);
        }
        if (oneIn(2)) std::ranges::stable_sort(lines, {}, &Line::hour);
        for (const Line& line : lines) {
            std::optional<Date> when;
            if (line.hour) when = Date{static_cast<double>(*line.hour) * SecondsPerHour};
            objects.emplace_back(makeRef<PlainTransaction>(Decimal(line.pence) / 100, when));
        }
        const auto statement = TKStatement::initWithTransactionsMetadata(objects);
        const Ageing ageing = Ageing::ofStatement(*statement, Date{double{Today} * SecondsPerHour}, bounds);

        const TwinAgeing twin(lines, Today, bounds);
        ASSERT_EQ(ageing.buckets.size(), twin.buckets.size());
        for (std::size_t bucket = 0; bucket < twin.buckets.size(); ++bucket)
            ASSERT_EQ(ageing.buckets[bucket], Decimal(twin.buckets[bucket]) / 100) << "bucket " << bucket;
        ASSERT_EQ(ageing.notYetDue, Decimal(twin.notYetDue) / 100);
        ASSERT_EQ(ageing.credit, Decimal(twin.credit) / 100);
        ASSERT_EQ(ageing.credit - (ageing.owed() + ageing.notYetDue),
                  statement->amount().value_or(Decimal::zero()));
    }
}

TEST_F(ReportsTwinTest, TheAgeingOfABookAddsUpToItsStatementsAndBalances) {
    // As far as sums of 38 digits reach, when rent is charged pro rata; exactly else.
    constexpr DecimalBehavior FarDigits{.scale = 25};
    for (int round = 0; round < 1000; ++round) {
        const bookkit::Book book;
        const auto tenure = someTenure(book);
        const Date day = someDay();
        tenure->setCurrentDate(day);
        tenure->updatePeriods();
        const auto statement = tenure->statement();
        const Ageing ageing = Ageing::ofStatement(*statement, day);
        Decimal sum = ageing.credit - (ageing.owed() + ageing.notYetDue);
        Decimal amount = statement->amount().value_or(Decimal::zero());
        const bool isProRata = tenure->chargeBehaviour()->unsignedIntegerValue() == TKChargeBehaviourPartial;
        if (isProRata) {
            sum = sum.decimalNumberByRoundingAccordingToBehavior(FarDigits);
            amount = amount.decimalNumberByRoundingAccordingToBehavior(FarDigits);
        }
        ASSERT_EQ(sum, amount);

        // The one thing that counts in a balance and has no line.
        const Decimal bond = tenure->bondAmount().value_or(Decimal::zero());
        if (bond.isNegative()) amount -= bond;
        // A balance charged pro rata is rounded to the currency, where its last digit may tip the scale.
        Decimal unrounded = tenure->totalIncome() + tenure->totalCost() + tenure->totalAdjustment();
        if (isProRata) unrounded = unrounded.decimalNumberByRoundingAccordingToBehavior(FarDigits);
        ASSERT_EQ(amount, unrounded);
        if (!isProRata) {
            ASSERT_EQ(amount, tenure->balance());
        }
        ASSERT_TRUE(ageing.credit.isZero() || ageing.owed().isZero());
    }
}

TEST_F(ReportsTwinTest, TheMonthsOfABookAddUpToItsPropertiesBalances) {
    for (int round = 0; round < 300; ++round) {
        const bookkit::Book book;
        std::vector<Ref<TKProperty>> properties;
        std::vector<Ref<TKTenure>> tenures;
        Decimal balances;
        for (int count = below(3); count > 0; --count) {
            properties.push_back(book.property("House"));
            for (int own = below(10); own > 0; --own)
                book.record(*properties.back(), someAmount(),
                            oneIn(8) ? std::nullopt : std::optional(someDay()), oneIn(5));
            for (int let = below(3); let > 0; --let) {
                tenures.push_back(someTenure(book));
                tenures.back()->setProperty(properties.back().get());
            }
            balances += properties.back()->balance();
        }
        const auto months = MonthlyIncome::ofLedgers(properties, tenures, bookkit::onDay(2025, 1, 1));
        Decimal sum;
        std::optional<Date> before;
        for (const MonthlyIncome& month : months) {
            sum += month.net();
            if (before) {
                ASSERT_EQ(Calendar::current().dateByAdding(CalendarUnit::Month, 1, *before), month.month);
            }
            before = month.month;
        }
        ASSERT_EQ(sum, balances);
    }
}

} // namespace
} // namespace estatebook
