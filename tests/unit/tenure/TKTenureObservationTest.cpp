// SPDX-License-Identifier: MIT

// What an awake tenure follows, from its awakening until it turns into a fault.

#include "model/Keys.hpp"
#include "platform/system/NotificationCentre.hpp"
#include "platform/system/RunLoop.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKCurrentDateController.hpp"
#include "support/Book.hpp"
#include "support/HeldClock.hpp"
#include "tenure/TKTenure.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::Listener;
using bookkit::LogLines;
using bookkit::onDay;
using bookkit::shownText;
using bookkit::text;

class TKTenureObservationTest : public testing::Test {
protected:
    TKTenureObservationTest() { moveTo(onDay(2025, 2, 16)); }

    void moveTo(Date now) {
        clock.set(now);
        TKCurrentDateController::sharedInstance().dailyUpdate();
    }
    void set(String* name, const Value& value) const {
        TKState::updateStateWithNameValueInManagedObjectContext(Ref<String>(name), value, book.context());
    }
    /// A monthly rent of 1000 from 1 January 2025, in arrears.
    Ref<TKTenure> let() const { return book.tenure(onDay(2025, 1, 1), 30, 1, 1000); }

    const DefaultZone zone{"Europe/Berlin"};
    testkit::HeldClock clock{onDay(2025, 2, 16)};
    const Book book;
};

// Awakening

TEST_F(TKTenureObservationTest, AfterItsInsertionATenureHasAScheduleAndTheControllersDate) {
    clock.pass(3600);
    const auto tenure = book.tenure();
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 2, 16)) << "of the last update";
    ASSERT_TRUE(tenure->periods());
    EXPECT_EQ(tenure->periods()->count(), 0u);
}

TEST_F(TKTenureObservationTest, ItsSettingsAreMadeWhenThereAreNone) {
    const auto tenure = book.tenure();
    ASSERT_TRUE(tenure->currencyCodeState());
    ASSERT_TRUE(tenure->billingModeState());
    EXPECT_EQ(shownText(tenure->currencyCodeState()->name()), "CurrencyCode");
    EXPECT_EQ(shownText(tenure->billingModeState()->name()), "BillingMode");
    EXPECT_TRUE(tenure->currencyCodeState()->value().isAbsent());
    EXPECT_FALSE(tenure->currencyCode());
    EXPECT_EQ(tenure->billingMode(), 0u);
    const auto other = book.tenure();
    EXPECT_EQ(other->currencyCodeState(), tenure->currencyCodeState()) << "all tenures share them";
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 2u);
}

TEST_F(TKTenureObservationTest, TheSettingsThatAreThereAreTakenOver) {
    const auto code = text("EUR");
    set(TKCurrencyCodeStateName, Value(code));
    set(TKBillingModeStateName, Value(1));
    const auto tenure = book.tenure();
    EXPECT_EQ(tenure->currencyCode(), code);
    EXPECT_EQ(tenure->billingMode(), 1u);
}

TEST_F(TKTenureObservationTest, ASettingOfAnotherKindReadsAsNone) {
    set(TKCurrencyCodeStateName, Value(5));
    set(TKBillingModeStateName, Value(text("many")));
    const auto tenure = book.tenure();
    EXPECT_FALSE(tenure->currencyCode());
    EXPECT_EQ(tenure->billingMode(), 0u);
}

TEST_F(TKTenureObservationTest, OfTwoSettingsTheFirstIsFollowed) {
    const auto first = book.insert<TKState>("State");
    const auto second = book.insert<TKState>("State");
    for (const auto& state : {first, second}) state->setName(text("CurrencyCode"));
    first->setValue(Value(text("EUR")));
    second->setValue(Value(text("JPY")));
    const LogLines log;
    const auto tenure = book.tenure();
    EXPECT_EQ(shownText(tenure->currencyCode()), "EUR");
    EXPECT_EQ(log.lines().size(), 1u);
    second->setValue(Value(text("USD")));
    EXPECT_EQ(shownText(tenure->currencyCode()), "EUR");
}

TEST_F(TKTenureObservationTest, ATenureOutsideEveryContextFollowsNothing) {
    const auto loose = refCast<TKTenure>(
        ManagedObject::initWithEntityInsertIntoManagedObjectContext(book.tenure()->entity(), nullptr));
    EXPECT_FALSE(loose->currentDate());
    EXPECT_FALSE(loose->periods());
    loose->setStartDate(onDay(2025, 1, 1));
    loose->setRentalPeriod(Number(1u));
    EXPECT_NO_THROW(loose->setRentalAmount(Decimal(5))) << "nobody reckons with it yet";
    EXPECT_FALSE(loose->periods());
}

// The day

TEST_F(TKTenureObservationTest, ANewDayTellsObserversOfEverythingThatIsCharged) {
    const auto tenure = let();
    const auto listener = makeRef<Listener>();
    const std::vector<std::string> charged{"chargableDays", "chargablePeriods", "totalCost", "balance",
                                           "periods"};
    for (const std::string& key : charged) listener->listenTo(*tenure, key);
    moveTo(onDay(2025, 2, 17));
    for (const std::string& key : charged) EXPECT_GE(listener->times(key), 1u) << key;
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 2, 17));
}

TEST_F(TKTenureObservationTest, ANewDayRebuildsTheScheduleOnce) {
    class Counted final : public TKTenure {
    public:
        using TKTenure::TKTenure;
        void observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath, ObservableObject& object,
                                                         const KeyValueChange& change,
                                                         const void* context) override {
            if (context == TKChargablePeriodsChanged) ++rebuilt;
            TKTenure::observeValueForKeyPathOfObjectChangeContext(keyPath, object, change, context);
        }
        int rebuilt = 0;
    };
    const auto birth = ManagedObjectBirth::withoutContext(book.tenure()->entity());
    const auto counted = makeRef<Counted>(birth);
    counted->setStartDate(onDay(2025, 1, 1));
    counted->setRentalBillingCycle(Number(30u));
    counted->setRentalPeriod(Number(1u));
    counted->setRentalAmount(Decimal(1000));
    TKCurrentDateController::startTrackingChangesToDate(*counted);
    counted->addObserverForKeyPathOptionsContext(*counted, "chargablePeriods", ObservingNew,
                                                 TKChargablePeriodsChanged);
    moveTo(onDay(2025, 4, 2));
    EXPECT_EQ(counted->rebuilt, 1);
    EXPECT_EQ(counted->periods()->count(), 3u);
    TKCurrentDateController::stopTrackingChangesToDate(*counted);
}

TEST_F(TKTenureObservationTest, TheScheduleFollowsTheDay) {
    const auto tenure = let();
    EXPECT_EQ(tenure->periods()->count(), 1u);
    const auto before = tenure->periods();
    moveTo(onDay(2025, 4, 1));
    EXPECT_EQ(tenure->periods()->count(), 3u);
    EXPECT_NE(tenure->periods(), before);
    EXPECT_EQ(before->count(), 1u);
}

TEST_F(TKTenureObservationTest, FollowingTheDayIsNoEdit) {
    const auto tenure = let();
    ASSERT_TRUE(book->save());
    moveTo(onDay(2025, 4, 1));
    EXPECT_FALSE(book->hasChanges());
    EXPECT_FALSE(tenure->hasChanges());
}

TEST_F(TKTenureObservationTest, FromMidnightToThePropertysBalance) {
    const auto house = book.property("Elm Street");
    const auto tenure = let();
    tenure->setProperty(house.get());
    moveTo(onDay(2025, 2, 28, 23, 59));
    ASSERT_EQ(house->tenureBalance(), Decimal(-1000));

    class Reader final : public ObservableObject {
    public:
        void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject&,
                                                         const KeyValueChange& change, const void*) override {
            balances.push_back(change.newValue.decimal().value());
        }
        std::vector<Decimal> balances;
    };
    const auto reader = makeRef<Reader>();
    house->addObserverForKeyPathOptionsContext(*reader, "tenureBalance", ObservingNew, nullptr);
    RunLoop loop;
    loop.addTimer(TKCurrentDateController::sharedInstance().timer());
    clock.pass(59);
    EXPECT_FALSE(loop.turn());
    EXPECT_TRUE(reader->balances.empty());
    clock.pass(1);
    EXPECT_TRUE(loop.turn());
    EXPECT_EQ(reader->balances, std::vector{Decimal(-2000)});
    house->removeObserverForKeyPath(*reader, "tenureBalance");
}

TEST_F(TKTenureObservationTest, TermsThatCannotBeReckonedKeepNobodyElseFromTheNewDay) {
    const auto first = let();
    const auto strange = let();
    const auto last = let();
    EXPECT_THROW(strange->setRentalPeriod(Number(0u)), DivideByZeroException);
    clock.set(onDay(2025, 4, 1));
    EXPECT_THROW(TKCurrentDateController::sharedInstance().dailyUpdate(), DivideByZeroException);
    for (const auto& tenure : {first, strange, last}) EXPECT_EQ(tenure->currentDate(), onDay(2025, 4, 1));
    EXPECT_EQ(first->periods()->count(), 3u);
    EXPECT_EQ(last->periods()->count(), 3u);
    EXPECT_EQ(TKCurrentDateController::sharedInstance().timer()->fireDate(), onDay(2025, 4, 2));
}

// Terms

TEST_F(TKTenureObservationTest, AnotherRentRebuildsTheScheduleThoughItsCountStays) {
    const auto tenure = let();
    const auto before = tenure->periods();
    const auto listener = makeRef<Listener>();
    listener->listenTo(*tenure, "chargablePeriods");
    tenure->setRentalAmount(Decimal(900));
    EXPECT_EQ(listener->times("chargablePeriods"), 1u);
    EXPECT_NE(tenure->periods(), before);
    EXPECT_EQ(tenure->periods()->count(), before->count());
}

TEST_F(TKTenureObservationTest, EachTermThatIsSetRebuildsTheSchedule) {
    const auto tenure = let();
    const std::vector<std::function<void()>> changes{
        [&] { tenure->setStartDate(onDay(2024, 12, 1)); },
        [&] { tenure->setEndDate(onDay(2025, 12, 31)); },
        [&] { tenure->setChargeFullDuration(Number(true)); },
        [&] { tenure->setChargeBehaviour(Number(2)); },
        [&] { tenure->setRentalBillingCycle(Number(7u)); },
        [&] { tenure->setRentalPeriod(Number(2u)); },
        [&] { tenure->setAdvanceBillingCycle(Number(7u)); },
        [&] { tenure->setAdvancePeriod(Number(1u)); },
        [&] { tenure->setNumberOfDays(Number(50)); },
    };
    for (std::size_t index = 0; index < changes.size(); ++index) {
        const auto before = tenure->periods();
        changes[index]();
        EXPECT_NE(tenure->periods(), before) << index;
    }
}

TEST_F(TKTenureObservationTest, ALettingThatIsUndoneLeavesNothingOpenOnItsProperty) {
    const auto property = book.property("Flat 2");
    book.context().processPendingChanges();
    book.context().undoManager()->endEvent();
    const auto undone = let();
    book.context().processPendingChanges();
    undone->setProperty(property.get());
    undone->setRentalAmount(Decimal(900));
    book.context().undo();
    ASSERT_EQ(property->tenures().count(), 0U);

    const auto tenure = let();
    tenure->setProperty(property.get());
    int told = 0;
    const auto token = property->observe("tenureBalance", [&] { ++told; });
    tenure->setBondAmount(Decimal(500));
    EXPECT_EQ(told, 1);
    const auto raising = property->observe("tenureBalance", [] { throw RangeException("no"); });
    EXPECT_THROW(tenure->setBondAmount(Decimal(600)), RangeException);
}

TEST_F(TKTenureObservationTest, WhatIsPaidLeavesTheScheduleAlone) {
    const auto tenure = let();
    const auto before = tenure->periods();
    book.record(*tenure, 500);
    tenure->setBondAmount(Decimal(5));
    set(TKCurrencyCodeStateName, Value(text("JPY")));
    EXPECT_EQ(tenure->periods(), before);
}

// Settings

TEST_F(TKTenureObservationTest, AnotherCurrencyReachesEveryAwakeTenureAndItsBalance) {
    const auto one = let();
    const auto other = let();
    const auto listener = makeRef<Listener>();
    for (const auto& tenure : {one, other}) listener->listenTo(*tenure, "balance");
    const auto code = text("JPY");
    set(TKCurrencyCodeStateName, Value(code));
    EXPECT_EQ(one->currencyCode(), code);
    EXPECT_EQ(other->currencyCode(), code);
    EXPECT_EQ(listener->times("balance"), 2u);
    set(TKCurrencyCodeStateName, Value());
    EXPECT_FALSE(one->currencyCode());
}

TEST_F(TKTenureObservationTest, AnotherBillingModeReachesEveryAwakeTenure) {
    const auto one = let();
    const auto other = let();
    set(TKBillingModeStateName, Value(1));
    EXPECT_EQ(one->billingMode(), 1u);
    EXPECT_EQ(other->billingMode(), 1u);
    set(TKBillingModeStateName, Value());
    EXPECT_EQ(one->billingMode(), 0u);
}

TEST_F(TKTenureObservationTest, ThePropertyHearsOfAnotherCurrency) {
    const auto house = book.property("Elm Street");
    const auto tenure = let();
    tenure->setProperty(house.get());
    const auto listener = makeRef<Listener>();
    listener->listenTo(*house, "tenureBalance");
    set(TKCurrencyCodeStateName, Value(text("JPY")));
    EXPECT_EQ(listener->times("tenureBalance"), 1u);
}

// Contexts of observations

TEST_F(TKTenureObservationTest, TheTokensAreComparedByIdentityAlone) {
    EXPECT_EQ(TKChargablePeriodsChanged->view(), "TKChargablePeriodsChanged");
    const auto tenure = let();
    for (const char* token :
         {"TKCurrentDateChanged", "CurrencyCode", "BillingMode", "TKChargablePeriodsChanged"}) {
        const auto same = text(token);
        EXPECT_THROW(
            tenure->observeValueForKeyPathOfObjectChangeContext("currentDate", *tenure, {}, same.get()),
            InternalInconsistencyException)
            << token;
    }
    const auto before = tenure->periods();
    tenure->observeValueForKeyPathOfObjectChangeContext("anything", *tenure, {}, TKChargablePeriodsChanged);
    EXPECT_NE(tenure->periods(), before) << "the token alone decides";
}

TEST_F(TKTenureObservationTest, TheTokenOfThePeriodsIsNeverPosted) {
    const auto tenure = let();
    std::vector<std::string> posted;
    NotificationCentre::defaultCentre().addObserverSelectorNameObject(
        this, [&](const Notification& news) { posted.push_back(news.name->string()); });
    tenure->setRentalAmount(Decimal(900));
    moveTo(onDay(2025, 4, 1));
    NotificationCentre::defaultCentre().removeObserver(this);
    EXPECT_EQ(posted, std::vector<std::string>{"TKCurrentDateChanged"});
}

// Lives that end

TEST_F(TKTenureObservationTest, TurningIntoAFaultEndsAllFollowingAndKeepsTheSettings) {
    const auto tenure = let();
    const auto currency = tenure->currencyCodeState();
    const auto mode = tenure->billingModeState();
    const auto before = tenure->periods();
    tenure->willTurnIntoFault();
    moveTo(onDay(2025, 4, 1));
    set(TKCurrencyCodeStateName, Value(text("EUR")));
    set(TKBillingModeStateName, Value(1));
    tenure->setRentalAmount(Decimal(900));
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 2, 16));
    EXPECT_FALSE(tenure->currencyCode());
    EXPECT_EQ(tenure->billingMode(), 0u);
    EXPECT_EQ(tenure->periods(), before);
    EXPECT_EQ(tenure->currencyCodeState(), currency);
    EXPECT_EQ(tenure->billingModeState(), mode);
    EXPECT_THROW(tenure->willTurnIntoFault(), RangeException) << "nothing is left to be removed";

    tenure->awakeFromFetch();
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 4, 1));
    EXPECT_EQ(shownText(tenure->currencyCode()), "EUR");
    EXPECT_EQ(tenure->billingMode(), 1u);
    EXPECT_EQ(tenure->periods()->count(), 3u);
}

TEST_F(TKTenureObservationTest, AnAwakeningReplacesTheSettingsThatAreFollowed) {
    const auto tenure = let();
    const auto former = tenure->currencyCodeState();
    tenure->willTurnIntoFault();
    book->deleteObject(*former);
    ASSERT_TRUE(book->save());
    tenure->awakeFromFetch();
    EXPECT_NE(tenure->currencyCodeState(), former);
    set(TKCurrencyCodeStateName, Value(text("EUR")));
    EXPECT_EQ(shownText(tenure->currencyCode()), "EUR");
}

TEST_F(TKTenureObservationTest, ATenureThatReturnsFromItsDeletionFollowsTheDayAgain) {
    set(TKCurrencyCodeStateName, Value(text("EUR")));
    const auto tenure = let();
    book->undoManager()->endEvent();
    book->deleteObject(*tenure);
    book->processPendingChanges();
    moveTo(onDay(2025, 3, 2));
    book->undo();
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 3, 2));
    EXPECT_EQ(tenure->periods()->count(), 2u);
    EXPECT_EQ(shownText(tenure->currencyCode()), "EUR");
    moveTo(onDay(2025, 4, 1));
    EXPECT_EQ(tenure->periods()->count(), 3u);
    book->redo();
    moveTo(onDay(2025, 4, 2));
    EXPECT_NE(tenure->currentDate(), onDay(2025, 4, 2));
}

TEST_F(TKTenureObservationTest, ATenureWhoseInsertionIsTakenBackAndDoneAgainFollowsTheDayAgain) {
    const auto tenure = let();
    book->undo();
    moveTo(onDay(2025, 3, 2));
    EXPECT_FALSE(tenure->currentDate());
    book->redo();
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 3, 2));
    moveTo(onDay(2025, 4, 1));
    EXPECT_EQ(tenure->periods()->count(), 3u);
}

TEST_F(TKTenureObservationTest, WhatAnUndoBringsBackRebuildsTheSchedule) {
    const auto house = book.property("Elm Street");
    const auto tenure = let();
    tenure->setProperty(house.get());
    book->undoManager()->endEvent();
    tenure->setStartDate(onDay(2024, 1, 1));
    ASSERT_EQ(tenure->periods()->count(), 13u);
    const auto listener = makeRef<Listener>();
    listener->listenTo(*house, "tenureBalance");
    book->undo();
    EXPECT_EQ(tenure->periods()->count(), 1u);
    EXPECT_EQ(house->tenureBalance(), Decimal(-1000));
    EXPECT_GE(listener->times("tenureBalance"), 1u);
}

TEST_F(TKTenureObservationTest, AFaultAwakesWithTheNewDayWhenItIsRead) {
    const auto tenure = let();
    ASSERT_TRUE(book->save());
    book->refreshObjectMergeChanges(*tenure, false);
    moveTo(onDay(2025, 4, 1));
    EXPECT_EQ(tenure->periods()->count(), 3u);
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 4, 1));
    EXPECT_FALSE(book->hasChanges());
    moveTo(onDay(2025, 5, 1));
    EXPECT_EQ(tenure->periods()->count(), 4u);
}

TEST_F(TKTenureObservationTest, TheNewDayIsNothingToTakeBack) {
    const auto tenure = let();
    book->undoManager()->endEvent();
    tenure->setRentalAmount(Decimal(900));
    book->undoManager()->endEvent();
    moveTo(onDay(2025, 4, 1));
    book->undo();
    EXPECT_EQ(tenure->rentalAmount(), Decimal(1000));
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 4, 1));
    EXPECT_EQ(tenure->periods()->count(), 3u);
}

TEST_F(TKTenureObservationTest, ADeletedTenureFollowsNothing) {
    const auto tenure = let();
    book->deleteObject(*tenure);
    moveTo(onDay(2025, 4, 1));
    EXPECT_EQ(tenure->currentDate(), onDay(2025, 2, 16));
    ASSERT_TRUE(book->save());
    moveTo(onDay(2025, 4, 2));
    EXPECT_FALSE(tenure->currentDate());
}

TEST_F(TKTenureObservationTest, ATenureThatOutlivesItsContextFollowsNothing) {
    Ref<TKTenure> tenure;
    Ref<TKState> currency;
    {
        const Book shortLived;
        tenure = shortLived.tenure(onDay(2025, 1, 1), 30, 1, 1000);
        currency = tenure->currencyCodeState();
    }
    moveTo(onDay(2025, 4, 1));
    EXPECT_FALSE(tenure->currentDate());
    EXPECT_FALSE(tenure->periods());
    EXPECT_THROW(tenure->removeObservers(), RangeException);
    EXPECT_NO_THROW(currency->setValue(Value(text("EUR"))));
    EXPECT_FALSE(tenure->currencyCode());
}

TEST_F(TKTenureObservationTest, ASettingThatIsDeletedIsFollowedByNobodyAnyMore) {
    const auto tenure = let();
    book->deleteObject(*tenure->currencyCodeState());
    ASSERT_TRUE(book->save());
    set(TKCurrencyCodeStateName, Value(text("EUR")));
    EXPECT_FALSE(tenure->currencyCode()) << "the new one is found at the next awakening";
    EXPECT_NO_THROW(tenure->willTurnIntoFault());
    tenure->awakeFromFetch();
    EXPECT_EQ(shownText(tenure->currencyCode()), "EUR");
}

TEST_F(TKTenureObservationTest, ObserversAndTenuresMayDieInEitherOrder) {
    const auto survivor = makeRef<Listener>();
    {
        const Book shortLived;
        const auto tenure = shortLived.tenure(onDay(2025, 1, 1), 30, 1, 1000);
        makeRef<Listener>()->listenTo(*tenure, "balance", ObservingNew);
        survivor->listenTo(*tenure, "balance", ObservingNew);
        moveTo(onDay(2025, 4, 1));
        EXPECT_EQ(survivor->times("balance"), 1u);
    }
    moveTo(onDay(2025, 4, 2));
    EXPECT_EQ(survivor->times("balance"), 1u);
}

TEST_F(TKTenureObservationTest, TheControllerOutlivesManyBooks) {
    for (int number = 0; number < 20; ++number) {
        const Book shortLived;
        const auto house = shortLived.property("Elm Street");
        const auto tenure = shortLived.tenure(onDay(2025, 1, 1), 30, 1, 1000);
        tenure->setProperty(house.get());
        tenure->setTenant(shortLived.tenant("A. Smith").get());
        moveTo(onDay(2025, 3, 1 + number));
        EXPECT_EQ(house->tenureBalance(), Decimal(-2000));
    }
    const auto* observer = &TKCurrentDateController::sharedInstance();
    EXPECT_NO_THROW(moveTo(onDay(2025, 4, 1)));
    EXPECT_EQ(observer, &TKCurrentDateController::sharedInstance());
}

TEST_F(TKTenureObservationTest, ABookMayEndWhileTheDayMovesOn) {
    auto shortLived = std::make_unique<Book>();
    const auto doomed = shortLived->tenure(onDay(2025, 1, 1), 30, 1, 1000);
    class Ender final : public ObservableObject {
    public:
        explicit Ender(std::unique_ptr<Book>& book) : book_(book) {}
        void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject&,
                                                         const KeyValueChange&, const void*) override {
            book_.reset();
        }

    private:
        std::unique_ptr<Book>& book_;
    };
    const auto ender = makeRef<Ender>(shortLived);
    doomed->addObserverForKeyPathOptionsContext(*ender, "periods", ObservingNothing, nullptr);
    const auto after = let();
    moveTo(onDay(2025, 4, 1));
    EXPECT_FALSE(shortLived);
    EXPECT_FALSE(doomed->currentDate());
    EXPECT_EQ(after->currentDate(), onDay(2025, 4, 1));
}

} // namespace
} // namespace estatebook
