// SPDX-License-Identifier: MIT
#include "reports/Ageing.hpp"

#include "statement/TKStatement.hpp"
#include "support/HarbourStreet.hpp"
#include "support/PlainTransaction.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::onDay;
using test::PlainTransaction;
using testing::ElementsAre;

Decimal decimal(std::string_view digits) {
    return Decimal::parse(digits);
}

class AgeingTest : public testing::Test {
protected:
    void line(const std::optional<Decimal>& amount, const std::optional<Date>& when = std::nullopt) {
        lines_.emplace_back(makeRef<PlainTransaction>(amount, when));
    }
    [[nodiscard]] Ageing aged(std::span<const std::uint64_t> bounds = Ageing::UsualBounds) const {
        return Ageing::ofStatement(*TKStatement::initWithTransactionsMetadata(lines_), day, bounds);
    }

    const bookkit::DefaultZone zone{"Europe/London"};
    const Date day = onDay(2026, 6, 30);

private:
    std::vector<Ref<TKLedgerTransaction>> lines_;
};

TEST_F(AgeingTest, AStatementWithoutLinesOwesNothing) {
    const Ageing ageing = aged();
    EXPECT_THAT(ageing.buckets, ElementsAre(0, 0, 0, 0, 0));
    EXPECT_EQ(ageing.owed(), Decimal(0));
    EXPECT_EQ(ageing.credit, Decimal(0));
    EXPECT_EQ(ageing.notYetDue, Decimal(0));
    EXPECT_EQ(ageing.oldest, std::nullopt);
}

TEST_F(AgeingTest, ADayPastDueLeavesTheFirstBucketAndAThirtyFirstTheSecond) {
    line(-1, onDay(2026, 3, 31));  // 91 days
    line(-2, onDay(2026, 4, 1));   // 90
    line(-4, onDay(2026, 4, 30));  // 61
    line(-8, onDay(2026, 5, 1));   // 60
    line(-16, onDay(2026, 5, 30)); // 31
    line(-32, onDay(2026, 5, 31)); // 30
    line(-64, onDay(2026, 6, 29)); // 1
    line(-128, day);
    EXPECT_THAT(aged().buckets, ElementsAre(128, 64 + 32, 16 + 8, 4 + 2, 1));
}

TEST_F(AgeingTest, PaymentsSettleTheOldestChargeFirstWheneverTheyCame) {
    line(30, onDay(2026, 1, 1));
    line(-20, onDay(2026, 2, 1));
    line(-20, onDay(2026, 5, 25));
    line(-20, onDay(2026, 6, 20));
    line(15, onDay(2026, 6, 25));
    const Ageing ageing = aged();
    EXPECT_THAT(ageing.buckets, ElementsAre(0, 15, 0, 0, 0)) << "45 settle two charges and 5 of the third";
    EXPECT_EQ(ageing.oldest, onDay(2026, 6, 20));
}

TEST_F(AgeingTest, WhatIsPaidBeyondAllChargesIsCredit) {
    line(-20, onDay(2026, 2, 1));
    line(50, onDay(2026, 3, 1));
    const Ageing ageing = aged();
    EXPECT_EQ(ageing.credit, Decimal(30));
    EXPECT_EQ(ageing.owed(), Decimal(0));
    EXPECT_EQ(ageing.oldest, std::nullopt);
}

TEST_F(AgeingTest, WhatIsDatedAfterTheDayStandsApartAndSettlesNothing) {
    line(-20, onDay(2026, 6, 1));
    line(-30, onDay(2026, 7, 1));
    line(45, onDay(2026, 7, 2));
    const Ageing ageing = aged();
    EXPECT_EQ(ageing.owed(), Decimal(20));
    EXPECT_EQ(ageing.notYetDue, Decimal(-15)) << "30 are due and 45 will have been paid";
    EXPECT_EQ(ageing.credit, Decimal(0));
}

TEST_F(AgeingTest, LaterOnTheDayItselfIsNotYetDue) {
    line(-20, onDay(2026, 6, 30, 10, 30));
    EXPECT_EQ(aged().notYetDue, Decimal(20));
    EXPECT_EQ(aged().owed(), Decimal(0));
}

TEST_F(AgeingTest, AnHourLateOnTheNextDayIsADayLate) {
    line(-20, onDay(2026, 6, 29, 23, 30));
    EXPECT_EQ(aged().buckets[1], Decimal(20));
}

TEST_F(AgeingTest, AChargeWithoutADateIsOlderThanAllOthers) {
    line(-20, onDay(2020, 1, 1));
    line(-5);
    line(-3, Date{std::numeric_limits<double>::quiet_NaN()});
    line(20, onDay(2026, 1, 1));
    EXPECT_EQ(aged().buckets.back(), Decimal(8));
    EXPECT_EQ(aged().oldest, onDay(2020, 1, 1)) << "the undated ones were settled first";
    line(11, onDay(2026, 1, 1));
    EXPECT_EQ(aged().credit, Decimal(3));
}

TEST_F(AgeingTest, WhatIsOpenWithoutADateIsOpenSinceAnUnknownDay) {
    line(-5);
    EXPECT_EQ(aged().buckets.back(), Decimal(5));
    EXPECT_EQ(aged().oldest, std::nullopt);
}

TEST_F(AgeingTest, LinesThatDoNotStandByDateAreAgedByTheirDates) {
    line(-20, onDay(2026, 6, 20));
    line(-20, onDay(2026, 2, 1));
    line(25, onDay(2026, 1, 1));
    EXPECT_EQ(aged().buckets[1], Decimal(15));
    EXPECT_EQ(aged().owed(), Decimal(15));
}

TEST_F(AgeingTest, ALineWithoutAnAmountIsPassedOver) {
    line(std::nullopt, onDay(2026, 6, 1));
    line(-20, onDay(2026, 6, 2));
    EXPECT_EQ(aged().owed(), Decimal(20));
    EXPECT_EQ(aged().oldest, onDay(2026, 6, 2));
}

TEST_F(AgeingTest, BoundsMayBeOthers) {
    line(-1, onDay(2026, 6, 30));
    line(-2, onDay(2026, 6, 24));
    line(-4, onDay(2026, 6, 15));
    EXPECT_THAT(aged({}).buckets, ElementsAre(7));
    constexpr std::array<std::uint64_t, 2> Weeks{6, 13};
    EXPECT_THAT(aged(Weeks).buckets, ElementsAre(3, 0, 4));
}

TEST_F(AgeingTest, HarbourStreetOwesFourMonthsAndAPart) {
    const bookkit::Book book;
    const auto jones = bookkit::jonesOfHarbourStreet(book);
    const auto statement = jones->statement();
    const Ageing ageing = Ageing::ofStatement(*statement, day);
    // 16 months of 1050 and the bond less all that was paid: 5099.50. Newest first these are June, May, April and March whole,
    // and 899.50 of February.
    EXPECT_THAT(ageing.buckets, ElementsAre(0, 1050, 1050, 1050, decimal("1949.5")));
    EXPECT_EQ(ageing.oldest, onDay(2026, 2, 15));
    EXPECT_EQ(ageing.notYetDue, Decimal(525)) << "15 of 30 days of a month that ends on 15 July";
    EXPECT_EQ(ageing.credit, Decimal(0));
    EXPECT_EQ(ageing.credit - (ageing.owed() + ageing.notYetDue), statement->amount());
}

TEST_F(AgeingTest, ANegativeBondIsInTheBalanceAndNotInTheAgeing) {
    const bookkit::Book book;
    const auto tenure = book.tenure(onDay(2026, 1, 1), 30, 1, 100);
    tenure->setCurrentDate(day);
    tenure->setBondAmount(Decimal(-40));
    tenure->updatePeriods();
    const Ageing ageing = Ageing::ofStatement(*tenure->statement(), day);
    EXPECT_EQ(ageing.owed(), Decimal(500));
    EXPECT_EQ(tenure->balance(), Decimal(-460));
    EXPECT_EQ(ageing.credit - (ageing.owed() + ageing.notYetDue) - *tenure->bondAmount(), tenure->balance());
}

} // namespace
} // namespace estatebook
