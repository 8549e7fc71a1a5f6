// SPDX-License-Identifier: MIT
#include "store/TKTenant.hpp"

#include "platform/values/Exception.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::Listener;
using bookkit::onDay;
using bookkit::text;

class TKTenantTest : public testing::Test {
protected:
    Ref<TKTenure> rent(std::optional<Date> start = {}, std::optional<Date> end = {}) const {
        auto tenure = book.tenure();
        tenure->setStartDate(start);
        tenure->setEndDate(end);
        tenure->setTenant(smith.get());
        return tenure;
    }

    const DefaultZone zone{"Europe/Berlin"};
    const Book book;
    const Ref<TKTenant> smith = book.tenant("A. Smith");
};

TEST_F(TKTenantTest, WithoutTenuresNothingIsOwedAndNobodyIsActive) {
    EXPECT_EQ(smith->balance(), Decimal::zero());
    EXPECT_EQ(smith->totalIncome(), Decimal::zero());
    EXPECT_EQ(smith->totalCost(), Decimal::zero());
    EXPECT_TRUE(smith->transactions()->empty());
    EXPECT_FALSE(smith->isActive());
    EXPECT_TRUE(smith->isBalanced());
    EXPECT_FALSE(smith->isActiveAtDate(onDay(2025, 1, 1)));
    EXPECT_FALSE(smith->valueForKey("isActive").boolValue());
    EXPECT_TRUE(smith->valueForKey("isBalanced").boolValue());
}

TEST_F(TKTenantTest, BetweenTwoTenuresATenantIsNotActiveAndBecomesSoWithTheSecond) {
    rent(onDay(2024, 1, 1), onDay(2025, 3, 9));
    rent(onDay(2025, 3, 11), onDay(2026, 3, 10));
    smith->setCurrentDate(onDay(2025, 3, 10));
    EXPECT_FALSE(smith->isActive());
    const auto listener = makeRef<Listener>();
    listener->listenTo(*smith, "isActive");
    smith->setCurrentDate(onDay(2025, 7, 1));
    EXPECT_TRUE(smith->isActive());
    EXPECT_TRUE(smith->valueForKey("active").boolValue());
    EXPECT_EQ(listener->times("isActive"), 1u);
}

TEST_F(TKTenantTest, ATenantIsActiveOnTheFirstAndTheLastDayOfATenure) {
    rent(onDay(2025, 3, 1), onDay(2025, 8, 31));
    EXPECT_FALSE(smith->isActiveAtDate(onDay(2025, 2, 28, 23, 59, 59)));
    EXPECT_TRUE(smith->isActiveAtDate(onDay(2025, 3, 1)));
    EXPECT_TRUE(smith->isActiveAtDate(onDay(2025, 8, 31, 23, 59, 59)));
    EXPECT_FALSE(smith->isActiveAtDate(onDay(2025, 9, 1)));
}

TEST_F(TKTenantTest, BalancesThatSumToExactlyZeroAreBalanced) {
    const auto first = rent();
    const auto second = rent();
    first->setBondAmount(Decimal(500));
    book.record(*second, Decimal::parse("499.99"));
    EXPECT_EQ(smith->balance(), Decimal::parse("-0.01"));
    EXPECT_FALSE(smith->isBalanced());
    EXPECT_FALSE(smith->valueForKey("balanced").boolValue());
    book.record(*second, Decimal::parse("0.01"));
    EXPECT_EQ(smith->balance(), Decimal::zero());
    EXPECT_TRUE(smith->isBalanced());
    book.record(*first, 1);
    EXPECT_TRUE(smith->isBalanced()) << "in credit";
}

TEST_F(TKTenantTest, TotalsAreSumsOverTheTenures) {
    for (const auto& tenure : {rent(onDay(2025, 1, 1)), rent(onDay(2025, 1, 1))}) {
        tenure->setRentalBillingCycle(Number(30));
        tenure->setRentalPeriod(Number(1));
        tenure->setRentalAmount(Decimal(1000));
        tenure->setCurrentDate(onDay(2025, 2, 16));
        book.record(*tenure, 700);
        book.record(*tenure, 50, {}, true);
    }
    EXPECT_EQ(smith->totalCost(), Decimal(-2000));
    EXPECT_EQ(smith->totalIncome(), Decimal(1400));
    EXPECT_EQ(smith->balance(), Decimal(-500));
    EXPECT_EQ(smith->valueForKey("balance").decimal(), Decimal(-500));
    EXPECT_FALSE(smith->isBalanced());
}

TEST_F(TKTenantTest, ItsTransactionsAreThoseOfAllItsTenuresEachOnce) {
    const auto first = rent();
    const auto second = rent();
    auto* payment = book.record(*first, 1);
    auto* adjustment = book.record(*first, 2, {}, true);
    auto* later = book.record(*second, 3);
    const auto all = smith->transactions();
    EXPECT_EQ(all->count(), 3u);
    for (TKTenureTransaction* each : {payment, adjustment, later})
        EXPECT_TRUE(all->contains(Value(Ref<TKTenureTransaction>(each))));
}

TEST_F(TKTenantTest, ItsTransactionsCannotBeSet) {
    EXPECT_THROW(smith->setValueForKey(Value(Set::make({})), "transactions"), UndefinedKeyException);
    EXPECT_EQ(dynamic_cast<TKLedger*>(smith.get()), nullptr);
}

TEST_F(TKTenantTest, ACreatedNoteIsInsertedAndLinked) {
    auto* note = smith->createNote();
    EXPECT_EQ(note->entity().name(), "TenantNote");
    EXPECT_TRUE(note->isInserted());
    EXPECT_EQ(note->tenant(), smith.get());
    ASSERT_EQ(smith->notes().count(), 1u);
}

TEST_F(TKTenantTest, AChangeInATenureDoesNotAnnounceTheTenantsSums) {
    const auto tenure = rent();
    const auto listener = makeRef<Listener>();
    for (const char* key : {"balance", "totalIncome", "totalCost", "isBalanced", "transactions"})
        listener->listenTo(*smith, key);
    book.record(*tenure, 1000);
    tenure->setBondAmount(Decimal(5));
    EXPECT_TRUE(listener->heard().empty());
    EXPECT_EQ(smith->balance(), Decimal(995)) << "yet they are right when they are read";
}

TEST_F(TKTenantTest, TheBalanceKeepsTheDefaultOfAccountsApart) {
    EXPECT_EQ(smith->accountBalance(), 0.0F);
}

} // namespace
} // namespace estatebook
