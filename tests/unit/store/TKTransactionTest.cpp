// SPDX-License-Identifier: MIT
#include "store/TKTransaction.hpp"

#include "model/Keys.hpp"
#include "platform/values/Exception.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

#include <compare>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::Listener;
using bookkit::shownText;
using bookkit::text;

class TKTransactionTest : public testing::Test {
protected:
    Ref<TKTenureTransaction> dated(std::optional<double> seconds) const {
        auto transaction = book.insert<TKTenureTransaction>("TenureTransaction");
        if (seconds) transaction->setWhen(Date{*seconds});
        return transaction;
    }
    const Book book;
};

// Order

TEST_F(TKTransactionTest, AnUndatedTransactionComparesAsAscendingWithADatedOne) {
    EXPECT_EQ(dated({})->compare(*dated(5)), std::weak_ordering::less);
}

TEST_F(TKTransactionTest, ADatedTransactionComparesAsSameWithAnUndatedOne) {
    EXPECT_EQ(dated(5)->compare(*dated({})), std::weak_ordering::equivalent);
}

TEST_F(TKTransactionTest, TwoUndatedTransactionsCompareAsSame) {
    EXPECT_EQ(dated({})->compare(*dated({})), std::weak_ordering::equivalent);
}

TEST_F(TKTransactionTest, TheEarlierOfTwoDatedTransactionsIsAscending) {
    EXPECT_EQ(dated(4)->compare(*dated(5)), std::weak_ordering::less);
    EXPECT_EQ(dated(5)->compare(*dated(4)), std::weak_ordering::greater);
    EXPECT_EQ(dated(4.5)->compare(*dated(4.25)), std::weak_ordering::greater) << "full instants";
}

TEST_F(TKTransactionTest, EqualInstantsCompareAsSameWhateverElseDiffers) {
    const auto rent = dated(5);
    const auto repair = dated(5);
    rent->setAmount(Decimal(1));
    rent->setWhat(text("Rent"));
    repair->setAmount(Decimal(-2));
    repair->setWhat(text("Repair"));
    EXPECT_EQ(rent->compare(*repair), std::weak_ordering::equivalent);
}

TEST_F(TKTransactionTest, TransactionsOfBothKindsCompareWithOneAnother) {
    const auto cost = book.insert<TKPropertyTransaction>("PropertyTransaction");
    cost->setWhen(Date{9});
    EXPECT_EQ(dated(5)->compare(*cost), std::weak_ordering::less);
}

// Terms

TEST_F(TKTransactionTest, AnAbsentAdjustmentFlagCountsAsNone) {
    const auto transaction = dated({});
    EXPECT_FALSE(transaction->adjustment());
    EXPECT_FALSE(transaction->isAdjustment());
    transaction->setAdjustment(Number(false));
    EXPECT_FALSE(transaction->isAdjustment());
    transaction->setAdjustment(Number(2));
    EXPECT_TRUE(transaction->isAdjustment());
}

TEST_F(TKTransactionTest, WhatAStatementReadsAreTheAttributesThemselves) {
    const auto transaction = dated(5);
    const auto what = text("Rent March");
    const auto names = TKTagNames::initWithEditableString("Rent");
    transaction->setWhat(what);
    transaction->setAmount(Decimal(1000));
    transaction->setTagNames(names);
    const Ref<TKLedgerTransaction> line(transaction);
    EXPECT_EQ(line->amount(), Decimal(1000));
    EXPECT_EQ(line->what(), what);
    EXPECT_EQ(line->when(), Date{5});
    EXPECT_EQ(line->tagNames(), names);
}

TEST_F(TKTransactionTest, OnAStatementEverythingMayBeAbsent) {
    const Ref<TKLedgerTransaction> line(dated({}));
    EXPECT_FALSE(line->amount());
    EXPECT_FALSE(line->what());
    EXPECT_FALSE(line->when());
    EXPECT_FALSE(line->tagNames());
}

TEST_F(TKTransactionTest, CategoryNameAndDetailsAreObservableThoughTheyHaveNoValue) {
    const auto transaction = dated({});
    const auto listener = makeRef<Listener>();
    listener->listenTo(*transaction, "categoryName");
    listener->listenTo(*transaction, "details");
    transaction->setWhat(text("Plumber"));
    EXPECT_EQ(listener->times("categoryName"), 1u);
    EXPECT_EQ(listener->times("details"), 1u);
    transaction->setReceipt(text("R-1"));
    EXPECT_EQ(listener->heard().size(), 2u);
    EXPECT_THROW((void)transaction->valueForKey("categoryName"), UndefinedKeyException);
}

// Names

TEST_F(TKTransactionTest, APropertyTransactionHasThePlainNameOfItsProperty) {
    const auto house = book.property("Elm Street");
    house->setSublease(text("Unit 2"));
    const auto* cost = house->createTransaction();
    EXPECT_EQ(shownText(cost->name()), "Elm Street");
    EXPECT_EQ(shownText(cost->valueForKey("name").string()), "Elm Street");
}

TEST_F(TKTransactionTest, APropertyTransactionWithoutAPropertyHasNoName) {
    const auto cost = book.insert<TKPropertyTransaction>("PropertyTransaction");
    EXPECT_FALSE(cost->name());
    EXPECT_TRUE(cost->valueForKey("name").isAbsent());
}

TEST_F(TKTransactionTest, ATenureTransactionHasTheNameOfTheTenant) {
    const auto tenure = book.tenure();
    const auto smith = book.tenant("A. Smith");
    tenure->setTenant(smith.get());
    const auto* payment = tenure->createTransaction();
    EXPECT_EQ(shownText(payment->name()), "A. Smith");
    EXPECT_EQ(shownText(payment->valueForKey("name").string()), "A. Smith");
}

TEST_F(TKTransactionTest, ATenureTransactionWhoseTenureHasNoTenantHasNoName) {
    EXPECT_FALSE(book.tenure()->createTransaction()->name());
    EXPECT_FALSE(dated({})->name());
}

TEST_F(TKTransactionTest, ATenureTransactionHasThePropertyOfItsTenure) {
    const auto tenure = book.tenure();
    const auto house = book.property("Elm Street");
    auto* payment = tenure->createTransaction();
    EXPECT_FALSE(payment->property());
    EXPECT_TRUE(payment->valueForKey("property").isAbsent());
    tenure->setProperty(house.get());
    EXPECT_EQ(payment->property(), house.get());
    EXPECT_EQ(payment->valueForKey("property").object(), house.get());
    EXPECT_FALSE(dated({})->property());
}

TEST_F(TKTransactionTest, MovingATransactionToAnotherTenureAnnouncesItsProperty) {
    const auto payment = dated({});
    const auto listener = makeRef<Listener>();
    listener->listenTo(*payment, "property");
    payment->setTenure(book.tenure().get());
    EXPECT_EQ(listener->times("property"), 1u);
}

// What a change announces on the owner

class TransactionAnnouncementTest : public TKTransactionTest {
protected:
    void listen(ObservableObject& owner) {
        for (const char* key : {"totalIncome", "totalAdjustment", "balance"})
            if (&owner != house.get() || std::string(key) != "totalAdjustment")
                listener->listenTo(owner, key);
        listener->forget();
    }
    const Ref<TKProperty> house = book.property("Elm Street");
    const Ref<Listener> listener = makeRef<Listener>();
};

TEST_F(TransactionAnnouncementTest, AnAmountOfAPropertyTransactionAnnouncesTheIncomeAndThroughItTheBalance) {
    auto* cost = house->createTransaction();
    listen(*house);
    cost->setAmount(Decimal(-80));
    EXPECT_EQ(listener->times("totalIncome"), 1u);
    EXPECT_EQ(listener->times("balance"), 1u);
    EXPECT_EQ(listener->heard().size(), 2u);
}

TEST_F(TransactionAnnouncementTest, AnAdjustmentFlagOfAPropertyTransactionAnnouncesTheIncome) {
    auto* cost = house->createTransaction();
    listen(*house);
    cost->setAdjustment(Number(true));
    EXPECT_EQ(listener->times("totalIncome"), 1u);
}

TEST_F(TransactionAnnouncementTest, OtherKeysOfAPropertyTransactionForwardNothing) {
    auto* cost = house->createTransaction();
    listen(*house);
    cost->setWhat(text("Plumber"));
    cost->setWhen(Date{5});
    cost->setReceipt(text("R-1"));
    cost->setProcessedOn(Date{6});
    EXPECT_TRUE(listener->heard().empty());
}

TEST_F(TransactionAnnouncementTest, APropertyTransactionWithoutAPropertyForwardsNothingAndDoesNotFail) {
    const auto cost = book.insert<TKPropertyTransaction>("PropertyTransaction");
    listen(*house);
    EXPECT_NO_THROW(cost->setAmount(Decimal(-80)));
    EXPECT_NO_THROW(cost->setAdjustment(Number(true)));
    EXPECT_EQ(cost->amount(), Decimal(-80));
    EXPECT_TRUE(listener->heard().empty());
}

TEST_F(TransactionAnnouncementTest, AnAmountOfATenureTransactionAnnouncesIncomeAndAdjustment) {
    const auto tenure = book.tenure();
    auto* payment = tenure->createTransaction();
    listen(*tenure);
    payment->setAmount(Decimal(1000));
    EXPECT_EQ(listener->times("totalIncome"), 1u);
    EXPECT_EQ(listener->times("totalAdjustment"), 1u);
    EXPECT_GE(listener->times("balance"), 1u);
}

TEST_F(TransactionAnnouncementTest, AnAdjustmentFlagOfATenureTransactionForwardsBothTotalsIncomeFirst) {
    const auto tenure = book.tenure();
    auto* payment = tenure->createTransaction();
    listener->listenTo(*tenure, "totalAdjustment");
    listener->listenTo(*tenure, "totalIncome");
    payment->setAdjustment(Number(true));
    ASSERT_EQ(listener->heard().size(), 2u);
    EXPECT_EQ(listener->heard()[0].keyPath, "totalIncome");
    EXPECT_EQ(listener->heard()[1].keyPath, "totalAdjustment");
}

TEST_F(TransactionAnnouncementTest, WhatOfATenureTransactionForwardsNothing) {
    const auto tenure = book.tenure();
    auto* payment = tenure->createTransaction();
    listen(*tenure);
    payment->setWhat(text("Rent"));
    payment->setWhen(Date{5});
    EXPECT_TRUE(listener->heard().empty());
}

TEST_F(TransactionAnnouncementTest, ATenureTransactionWithoutATenureForwardsNothingAndDoesNotFail) {
    const auto payment = dated({});
    EXPECT_NO_THROW(payment->setAmount(Decimal(5)));
    EXPECT_EQ(payment->amount(), Decimal(5));
}

TEST_F(TransactionAnnouncementTest, APrimitiveWriteBetweenThePairAnnouncesLikeASetter) {
    const auto tenure = book.tenure();
    auto* payment = tenure->createTransaction();
    listen(*tenure);
    payment->willChangeValueForKey(keys::amount);
    payment->setPrimitiveValueForKey(Value(Decimal(7)), keys::amount);
    payment->didChangeValueForKey(keys::amount);
    EXPECT_EQ(payment->amount(), Decimal(7));
    EXPECT_EQ(listener->times("totalIncome"), 1u);
    EXPECT_EQ(listener->times("totalAdjustment"), 1u);
}

TEST_F(TransactionAnnouncementTest, TotalsAreRightWhenTheirObserversReadThem) {
    class Reader final : public ObservableObject {
    public:
        void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject& object,
                                                         const KeyValueChange& change, const void*) override {
            read.push_back(change.newValue.description());
            EXPECT_TRUE(object.valueForKey("totalIncome").isEqual(change.newValue));
        }
        std::vector<std::string> read;
    };
    auto* cost = house->createTransaction();
    const auto reader = makeRef<Reader>();
    house->addObserverForKeyPathOptionsContext(*reader, "totalIncome", ObservingNew, nullptr);
    cost->setAmount(Decimal(-80));
    cost->setAmount(Decimal(-90));
    cost->setAmount({});
    EXPECT_EQ(reader->read, (std::vector<std::string>{"-80", "-90", "0"}));
    house->removeObserverForKeyPathContext(*reader, "totalIncome", nullptr);
}

} // namespace
} // namespace estatebook
