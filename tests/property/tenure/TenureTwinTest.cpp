// SPDX-License-Identifier: MIT

// Random lettings against a twin that walks the days, in zones whose midnights are odd.

#include "property/tenure/TenureTwin.hpp"

#include "billing/TKDuePeriods.hpp"
#include "platform/text/DateFormatter.hpp"
#include "statement/TKStatement.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::TenureTwin;
using bookkit::TwinTerms;
using testkit::SlowCalendar;
using testkit::ZoneFile;

constexpr const char* Zones[] = {"America/Sao_Paulo", "Asia/Beirut", "Pacific/Apia", "America/Havana",
                                 "Europe/Berlin"};
constexpr int LettingsInAZone = 120;

Date dateOf(std::int64_t second) {
    return Date::fromUnixSeconds(static_cast<double>(second));
}
std::optional<Date> dateOf(const std::optional<std::int64_t>& second) {
    return second ? std::optional(dateOf(*second)) : std::nullopt;
}

class TenureTwinTest : public testing::TestWithParam<const char*> {
protected:
    int below(int bound) { return static_cast<int>(random_() % static_cast<std::uint32_t>(bound)); }
    bool oneIn(int bound) { return below(bound) == 0; }

    /// An instant of the years 1995 to 2030; as often as not within weeks of a change of the clocks, or at the first
    /// instant of a day.
    std::int64_t instant() {
        constexpr std::int64_t First = 788918400;
        constexpr int Seconds = 36 * 31557600;
        std::int64_t second = First + below(Seconds);
        if (oneIn(2)) {
            const auto changes = slow_.zone().changes(second - 40000000, second + 40000000);
            if (!changes.empty())
                second = changes[static_cast<std::size_t>(below(static_cast<int>(changes.size())))] +
                         (below(80) - 40) * std::int64_t{86400} + below(7200) - 3600;
        }
        return oneIn(2) ? slow_.startOfDay(second) : second;
    }

    TwinTerms terms() {
        constexpr int Cycles[] = {1, 7, 30, 365};
        TwinTerms made;
        made.start = instant();
        made.today = made.start + (below(900) - 30) * std::int64_t{86400} + below(86400);
        if (oneIn(2)) made.end = made.start + (below(900) - 20) * std::int64_t{86400} + below(86400);
        made.cycle = Cycles[below(4)];
        made.period = 1 + below(made.cycle == 1 ? 20 : 4);
        made.behaviour = below(4);
        made.isFullDuration = oneIn(3);
        if (oneIn(2)) made.advancePeriod = below(4);
        made.advanceCycle = Cycles[below(4)];
        // Not so small that what was paid would reach beyond the years of books.
        made.rent = Decimal(2000 + below(200000)) / 100;
        if (oneIn(2)) made.bond = Decimal(below(300000) - 50000) / 100;
        for (int count = below(8); count > 0; --count) {
            bookkit::TwinTransaction each;
            if (!oneIn(6)) each.when = oneIn(3) ? made.start : made.start + below(900) * std::int64_t{86400};
            if (!oneIn(6)) each.amount = Decimal(below(400000) - 100000) / 100;
            each.isAdjustment = oneIn(3);
            made.transactions.push_back(each);
        }
        return made;
    }

    Ref<TKTenure> tenureOf(const TwinTerms& terms) const {
        auto tenure = book_.tenure(dateOf(terms.start), static_cast<std::uint64_t>(terms.cycle),
                                   static_cast<std::uint64_t>(terms.period), terms.rent);
        tenure->setEndDate(dateOf(terms.end));
        tenure->setCurrentDate(dateOf(terms.today));
        tenure->setChargeBehaviour(Number(terms.behaviour));
        tenure->setChargeFullDuration(Number(terms.isFullDuration));
        if (terms.advancePeriod) tenure->setAdvancePeriod(Number(*terms.advancePeriod));
        tenure->setAdvanceBillingCycle(Number(terms.advanceCycle));
        tenure->setBondAmount(terms.bond);
        for (const auto& each : terms.transactions)
            book_.record(*tenure, each.amount, dateOf(each.when), each.isAdjustment);
        return tenure;
    }

    static void expectSamePeriod(const TKPeriod& ours, const TenureTwin::Period& theirs) {
        EXPECT_EQ(ours.startDate(), dateOf(theirs.start));
        EXPECT_EQ(ours.endDate(), dateOf(theirs.end));
        EXPECT_EQ(ours.billingDate(), dateOf(theirs.billing));
    }

    static void expectSameSchedule(const TKTenure& tenure, const TenureTwin& twin) {
        const auto ours = refCast<ArrayOf<TKPeriod>>(tenure.periods());
        const auto theirs = twin.schedule();
        ASSERT_EQ(ours->count(), theirs.size());
        for (std::size_t place = 0; place < theirs.size(); ++place)
            expectSamePeriod((*ours)[place], theirs[place]);
    }

    static void expectSameStatement(const TKTenure& tenure, const TenureTwin& twin) {
        const auto statement = tenure.statement();
        const auto theirs = twin.statement();
        ASSERT_EQ(statement->items()->count(), theirs.size());
        const auto formatter = DateFormatter::medium();
        Decimal balance;
        for (std::size_t place = 0; place < theirs.size(); ++place) {
            const auto& item = (*statement->items())[place];
            EXPECT_EQ(item.transaction()->when(), dateOf(theirs[place].when)) << "line " << place;
            EXPECT_EQ(item.transaction()->amount(), theirs[place].amount) << "line " << place;
            if (theirs[place].amount) balance = balance + *theirs[place].amount;
            EXPECT_EQ(item.balance(), balance) << "line " << place;
            std::string text = theirs[place].opening;
            if (const auto& period = theirs[place].period)
                text += formatter->stringFromDate(dateOf(period->start)) + " \u2192 " +
                        formatter->stringFromDate(dateOf(period->end)) + ")";
            EXPECT_EQ(item.transaction()->what() ? item.transaction()->what()->string() : "", text)
                << "line " << place;
        }
    }

    static void expectSameDuePeriods(const TKTenure& tenure, const TenureTwin& twin) {
        const Decimal& rent = twin.terms().rent;
        const Decimal received = twin.income(false) + twin.income(true);
        std::uint64_t paid = 0;
        for (Decimal left = received - rent; left >= Decimal(0); left = left - rent) ++paid;
        const TenureTwin::Count count = twin.countOf(twin.chargeableDays());
        std::uint64_t charged = static_cast<std::uint64_t>(count.whole);
        if (twin.terms().behaviour != 0 && count.part > 0) ++charged;
        const std::uint64_t place = std::max(paid, charged);

        const auto due = tenure.duePeriods();
        EXPECT_EQ(due->outstanding(), (Range{paid, place - paid}));
        EXPECT_EQ(due->balance(), Decimal(0) - twin.balance());
        EXPECT_EQ(due->hasOutstandingBalance(), twin.balance() < Decimal(0));
        // Only the last period of the schedule differs from a row of the calendar, and next lies behind it.
        const auto next = twin.periodAt(static_cast<std::int64_t>(place));
        const bool hasEnded = twin.terms().end && next.start >= *twin.terms().end;
        ASSERT_EQ(static_cast<bool>(due->next()), !hasEnded);
        const auto schedule = twin.schedule();
        if (!hasEnded) expectSamePeriod(*due->next(), place < schedule.size() ? schedule[place] : next);
    }

    const DefaultZone zone_{GetParam()};
    const SlowCalendar slow_{*ZoneFile::read(GetParam())};
    const Book book_;
    std::mt19937 random_;
};

TEST_P(TenureTwinTest, EveryValueOfARandomLettingIsTheTwins) {
    const std::uint32_t seed = std::random_device{}();
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_.seed(seed);
    for (int letting = 0; letting < LettingsInAZone && !HasFailure(); ++letting) {
        const TenureTwin twin(slow_, terms());
        SCOPED_TRACE(twin.terms().description());
        const auto tenure = tenureOf(twin.terms());
        tenure->updatePeriods();
        EXPECT_EQ(tenure->chargableDays().unsignedIntegerValue(), twin.chargeableDays());
        EXPECT_EQ(tenure->chargablePeriods(), twin.chargeablePeriods());
        EXPECT_EQ(tenure->numberOfDays()->unsignedIntegerValue(), twin.numberOfDays());
        EXPECT_EQ(tenure->numberOfPeriods(), twin.exact(twin.countOf(twin.numberOfDays())));
        EXPECT_EQ(tenure->totalCost(), twin.cost());
        EXPECT_EQ(tenure->totalIncome(), twin.income(false));
        EXPECT_EQ(tenure->totalAdjustment(), twin.income(true));
        EXPECT_EQ(tenure->balance(), twin.balance());
        EXPECT_EQ(tenure->isBalanced(), twin.balance() >= Decimal(0));
        expectSameSchedule(*tenure, twin);
        expectSameStatement(*tenure, twin);
        expectSameDuePeriods(*tenure, twin);
    }
}

TEST_P(TenureTwinTest, AStatementIsInItsOrderAndItsLastBalanceIsTheSumOfItsAmounts) {
    const std::uint32_t seed = std::random_device{}();
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_.seed(seed);
    for (int letting = 0; letting < LettingsInAZone && !HasFailure(); ++letting) {
        const TwinTerms given = terms();
        SCOPED_TRACE(given.description());
        const auto tenure = tenureOf(given);
        tenure->updatePeriods();
        const auto statement = tenure->statement();

        // Whether it is dated, when, of what kind (recorded, bond, rent), and in what order it was made.
        using Place = std::tuple<bool, double, int, std::uint64_t>;
        std::vector<Place> places;
        Decimal sum;
        std::uint64_t rents = 0;
        for (const TKStatementItem& item : *statement->items()) {
            const auto line = refCast<TKTenureTransaction>(item.transaction());
            const auto when = line->when();
            const bool isRecorded = line->managedObjectContext() != nullptr;
            const bool isBond = !isRecorded && *line->what() == "Bond Debit";
            places.emplace_back(when.has_value(), when ? when->secondsSinceReferenceDate : 0,
                                isRecorded ? 0
                                : isBond   ? 1
                                           : 2,
                                isRecorded ? line->creationNumber() : ++rents);
            if (line->amount()) sum = sum + *line->amount();
        }
        EXPECT_TRUE(std::ranges::is_sorted(places));
        EXPECT_EQ(statement->amount().value_or(Decimal(0)), sum);
        EXPECT_EQ(statement->items()->count(), given.transactions.size() + tenure->periods()->count() +
                                                   (given.bond && *given.bond > Decimal(0) ? 1 : 0));
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, TenureTwinTest, testing::ValuesIn(Zones), [](const auto& info) {
    std::string name = info.param;
    std::ranges::replace_if(
        name, [](char each) { return !std::isalnum(static_cast<unsigned char>(each)); }, '_');
    return name;
});

} // namespace
} // namespace estatebook
