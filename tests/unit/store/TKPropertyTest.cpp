// SPDX-License-Identifier: MIT
#include "store/TKProperty.hpp"

#include "billing/TKPeriodicBilling.hpp"
#include "model/Keys.hpp"
#include "platform/values/Exception.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::Listener;
using bookkit::onDay;
using bookkit::shownText;
using bookkit::text;

class TKPropertyTest : public testing::Test {
protected:
    /// A tenure of the house by its days; null stands for none.
    Ref<TKTenure> let(std::optional<Date> start, std::optional<Date> end,
                      const Ref<TKTenant>& tenant = nullptr) const {
        auto tenure = book.tenure();
        tenure->setStartDate(start);
        tenure->setEndDate(end);
        tenure->setTenant(tenant.get());
        tenure->setProperty(house.get());
        return tenure;
    }
    static std::vector<Value> membersOf(const Ref<Set>& set) {
        return {set->members().begin(), set->members().end()};
    }

    const DefaultZone zone{"Europe/Berlin"};
    const Book book;
    const Ref<TKProperty> house = book.property("Elm Street");
};

// Names

TEST_F(TKPropertyTest, TheFullNameIsTheNameAndTheSublease) {
    house->setSublease(text("Unit 2"));
    EXPECT_EQ(shownText(house->fullName()), "Elm Street - Unit 2");
    EXPECT_EQ(shownText(house->valueForKey("fullName").string()), "Elm Street - Unit 2");
}

TEST_F(TKPropertyTest, WithAnEmptyOrAbsentSubleaseTheFullNameIsTheName) {
    EXPECT_EQ(house->fullName(), house->name());
    house->setSublease(text(""));
    EXPECT_EQ(shownText(house->fullName()), "Elm Street");
}

TEST_F(TKPropertyTest, AFullNameWithoutANamePrintsTheAbsence) {
    const auto nameless = book.insert<TKProperty>("Property");
    EXPECT_FALSE(nameless->fullName());
    nameless->setSublease(text("Unit 2"));
    EXPECT_EQ(shownText(nameless->fullName()), "(null) - Unit 2");
}

TEST_F(TKPropertyTest, ThePeriodicNameIsThatOfTheRentalBillingCycle) {
    EXPECT_FALSE(house->periodicNameForRentalBillingCycle());
    for (const std::uint64_t cycle : {1u, 7u, 30u, 365u}) {
        house->setRentalBillingCycle(Number(cycle));
        EXPECT_EQ(house->periodicNameForRentalBillingCycle(),
                  TKPeriodicBilling::periodicNameForBillingCycle(cycle));
        EXPECT_TRUE(house->periodicNameForRentalBillingCycle());
    }
    house->setRentalBillingCycle(Number(2));
    EXPECT_FALSE(house->periodicNameForRentalBillingCycle());
}

TEST_F(TKPropertyTest, SettingTheAddressBookIdAnnouncesItAndKeepsTheVeryText) {
    const auto listener = makeRef<Listener>();
    listener->listenTo(*house, "addressBookID");
    const auto card = text("card-17");
    house->setAddressBookID(card);
    EXPECT_EQ(house->addressBookID(), card);
    EXPECT_EQ(house->primitiveValueForKey(keys::addressBookID).string(), card);
    EXPECT_EQ(listener->times("addressBookID"), 1u);
}

// Creating

TEST_F(TKPropertyTest, ACreatedTransactionIsInsertedAndLinked) {
    auto* cost = house->createTransaction();
    EXPECT_EQ(cost->entity().name(), "PropertyTransaction");
    EXPECT_EQ(cost->managedObjectContext(), &book.context());
    EXPECT_TRUE(cost->isInserted());
    EXPECT_EQ(cost->property(), house.get());
    EXPECT_FALSE(cost->amount());
    ASSERT_EQ(house->transactions().count(), 1u);
    EXPECT_EQ(&house->transactions()[0], cost);
}

TEST_F(TKPropertyTest, ACreatedNoteIsInsertedAndLinked) {
    auto* note = house->createNote();
    EXPECT_EQ(note->entity().name(), "PropertyNote");
    EXPECT_TRUE(note->isInserted());
    EXPECT_EQ(note->property(), house.get());
    EXPECT_EQ(house->notes().count(), 1u);
}

TEST_F(TKPropertyTest, WithoutAContextNothingCanBeCreated) {
    const auto loose = refCast<TKProperty>(
        ManagedObject::initWithEntityInsertIntoManagedObjectContext(house->entity(), nullptr));
    EXPECT_THROW((void)loose->createTransaction(), InvalidArgumentException);
    EXPECT_THROW((void)loose->createNote(), InvalidArgumentException);
    EXPECT_TRUE(loose->transactions().empty());
}

// Totals

TEST_F(TKPropertyTest, WithoutTenuresAndTransactionsEverythingIsZeroOrEmpty) {
    EXPECT_EQ(house->tenureIncome(), Decimal::zero());
    EXPECT_EQ(house->tenureBalance(), Decimal::zero());
    EXPECT_EQ(house->totalIncome(), Decimal::zero());
    EXPECT_EQ(house->balance(), Decimal::zero());
    EXPECT_EQ(shownText(house->currentTenuresNames()), "");
    EXPECT_TRUE(house->currentTenures()->empty());
    EXPECT_TRUE(house->aggregateTransactions()->empty());
    for (const char* key : {"tenureIncome", "tenureBalance", "totalIncome", "balance"})
        EXPECT_EQ(house->valueForKey(key).decimal(), Decimal::zero()) << key;
}

TEST_F(TKPropertyTest, ItsBalanceIsTheTenuresIncomeAndItsOwn) {
    const auto first = let({}, {});
    const auto second = let({}, {});
    book.record(*first, 1000);
    book.record(*first, 500, {}, true);
    book.record(*second, Decimal::parse("250.50"));
    book.record(*house, -80);
    book.record(*house, std::nullopt);
    EXPECT_EQ(house->tenureIncome(), Decimal::parse("1250.5"));
    EXPECT_EQ(house->totalIncome(), Decimal(-80));
    EXPECT_EQ(house->balance(), Decimal::parse("1170.5"));
    EXPECT_EQ(house->tenureBalance(), Decimal::parse("1750.5"));
}

TEST_F(TKPropertyTest, ItsOwnAdjustmentsCountInItsIncomeAndAmongItsTransactions) {
    auto* cost = book.record(*house, -80, {}, true);
    EXPECT_EQ(house->totalIncome(), Decimal(-80));
    EXPECT_TRUE(house->aggregateTransactions()->contains(Value(Ref<TKTransaction>(cost))));
}

TEST_F(TKPropertyTest, ATenuresAdjustmentIsNotAmongItsTransactions) {
    const auto tenure = let({}, {});
    auto* payment = book.record(*tenure, 1000);
    auto* plain = book.record(*tenure, 10);
    plain->setAdjustment(Number(false));
    auto* adjustment = book.record(*tenure, 500, {}, true);
    auto* cost = book.record(*house, -80);
    const auto all = house->aggregateTransactions();
    EXPECT_EQ(all->count(), 3u);
    EXPECT_TRUE(all->contains(Value(Ref<TKTransaction>(payment))));
    EXPECT_TRUE(all->contains(Value(Ref<TKTransaction>(plain))));
    EXPECT_TRUE(all->contains(Value(Ref<TKTransaction>(cost))));
    EXPECT_FALSE(all->contains(Value(Ref<TKTransaction>(adjustment))));
}

TEST_F(TKPropertyTest, ItIsAlwaysBalancedAndActive) {
    book.record(*house, -5000);
    EXPECT_TRUE(house->isBalanced());
    EXPECT_TRUE(house->isActive());
    EXPECT_EQ(house->accountBalance(), 0.0F);
    EXPECT_TRUE(house->valueForKey("balanced").boolValue());
    EXPECT_TRUE(house->valueForKey("active").boolValue());
}

// Current tenures

TEST_F(TKPropertyTest, TheCurrentTenuresAreThoseActiveOnTheCurrentDate) {
    const auto past = let(onDay(2024, 1, 1), onDay(2024, 12, 31));
    const auto now = let(onDay(2025, 1, 1), {});
    const auto future = let(onDay(2026, 1, 1), {});
    house->setCurrentDate(onDay(2025, 6, 1));
    EXPECT_EQ(membersOf(house->currentTenures()), std::vector<Value>{Value(now)});
    EXPECT_EQ(house->activeTenuresAtDate(onDay(2024, 12, 31, 23)), std::vector{past});
    EXPECT_EQ(house->activeTenuresAtDate(onDay(2026, 1, 1)), (std::vector{now, future}));
}

TEST_F(TKPropertyTest, ADayPastATenuresEndAnnouncesTheCurrentTenuresWithoutIt) {
    let(onDay(2025, 1, 1), onDay(2025, 3, 31));
    house->setCurrentDate(onDay(2025, 3, 31));
    ASSERT_EQ(house->currentTenures()->count(), 1u);
    const auto listener = makeRef<Listener>();
    listener->listenTo(*house, "currentTenures");
    house->setCurrentDate(onDay(2025, 4, 1));
    EXPECT_EQ(listener->times("currentTenures"), 1u);
    EXPECT_TRUE(house->currentTenures()->empty());
}

TEST_F(TKPropertyTest, TheTenantsOfTheCurrentTenuresAreJoined) {
    let(onDay(2025, 1, 1), {}, book.tenant("A. Smith"));
    let(onDay(2025, 1, 1), {}, book.tenant("B. Jones"));
    let(onDay(2020, 1, 1), onDay(2021, 1, 1), book.tenant("C. Brown"));
    house->setCurrentDate(onDay(2025, 6, 1));
    EXPECT_EQ(shownText(house->currentTenuresNames()), "A. Smith, B. Jones");
}

TEST_F(TKPropertyTest, AnEmptyTenantNameStillTakesItsPlaceAmongTheNames) {
    let({}, {}, book.tenant(""));
    let({}, {}, book.tenant("B. Jones"));
    let({}, {}, book.tenant(""));
    EXPECT_EQ(shownText(house->currentTenuresNames()), ", B. Jones, ");
}

TEST_F(TKPropertyTest, ACurrentTenureWithoutATenantCannotBeListed) {
    const auto tenure = let({}, {});
    EXPECT_THROW((void)house->currentTenuresNames(), InvalidArgumentException);
    const auto nameless = book.insert<TKTenant>("Tenant");
    tenure->setTenant(nameless.get());
    EXPECT_THROW((void)house->currentTenuresNames(), InvalidArgumentException);
    EXPECT_EQ(house->currentTenures()->count(), 1u) << "the tenures themselves can be had";
    nameless->setName(text("A. Smith"));
    EXPECT_EQ(shownText(house->currentTenuresNames()), "A. Smith");
}

TEST_F(TKPropertyTest, ATenureThatIsNotCurrentNeedsNoTenantToBeLeftOut) {
    let(onDay(2020, 1, 1), onDay(2021, 1, 1));
    house->setCurrentDate(onDay(2025, 6, 1));
    EXPECT_EQ(shownText(house->currentTenuresNames()), "");
}

// Announcements

TEST_F(TKPropertyTest, AnAmountOfItsTransactionAnnouncesTheIncomeAndTheBalance) {
    auto* cost = house->createTransaction();
    const auto listener = makeRef<Listener>();
    listener->listenTo(*house, "totalIncome");
    listener->listenTo(*house, "balance");
    cost->setAmount(Decimal(-80));
    EXPECT_EQ(listener->times("totalIncome"), 1u);
    EXPECT_EQ(listener->times("balance"), 1u);
}

TEST_F(TKPropertyTest, ANewTransactionAnnouncesTheIncomeAndWhatIsAggregated) {
    const auto listener = makeRef<Listener>();
    for (const char* key :
         {"transactions", "totalIncome", "balance", "aggregateTransactions", "tenureIncome"})
        listener->listenTo(*house, key);
    house->createTransaction();
    for (const char* key : {"transactions", "totalIncome", "balance", "aggregateTransactions"})
        EXPECT_EQ(listener->times(key), 1u) << key;
    EXPECT_EQ(listener->times("tenureIncome"), 0u);
}

TEST_F(TKPropertyTest, ANewTenureAnnouncesWhatIsSummedOverTenures) {
    const auto listener = makeRef<Listener>();
    for (const char* key : {"tenureIncome", "tenureBalance", "balance", "aggregateTransactions"})
        listener->listenTo(*house, key);
    let({}, {});
    for (const char* key : {"tenureIncome", "tenureBalance", "balance", "aggregateTransactions"})
        EXPECT_EQ(listener->times(key), 1u) << key;
}

TEST_F(TKPropertyTest, AnAmountOfATenuresTransactionAnnouncesTheTenuresTotalsAndThroughThemItsOwn) {
    const auto tenure = let({}, {});
    auto* payment = tenure->createTransaction();
    const auto ofTenure = makeRef<Listener>();
    const auto ofHouse = makeRef<Listener>();
    for (const char* key : {"totalIncome", "totalAdjustment", "balance"}) ofTenure->listenTo(*tenure, key);
    for (const char* key : {"tenureIncome", "tenureBalance", "balance"}) ofHouse->listenTo(*house, key);
    payment->setAmount(Decimal(1000));
    EXPECT_EQ(ofTenure->times("totalIncome"), 1u);
    for (const char* key : {"totalAdjustment", "balance"}) EXPECT_GE(ofTenure->times(key), 1u) << key;
    for (const char* key : {"tenureIncome", "tenureBalance", "balance"})
        EXPECT_GE(ofHouse->times(key), 1u) << key;
    EXPECT_EQ(house->balance(), Decimal(1000));
}

TEST_F(TKPropertyTest, TheFullNameAndTheTenantsNamesAreNotAnnounced) {
    const auto listener = makeRef<Listener>();
    listener->listenTo(*house, "fullName");
    listener->listenTo(*house, "currentTenuresNames");
    house->setName(text("Oak Street"));
    house->setSublease(text("Unit 3"));
    house->setCurrentDate(Date{5});
    EXPECT_TRUE(listener->heard().empty());
}

} // namespace
} // namespace estatebook
