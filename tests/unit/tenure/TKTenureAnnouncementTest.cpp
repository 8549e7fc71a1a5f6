// SPDX-License-Identifier: MIT

// What a change of a tenure's terms announces, on the tenure and on its property.

#include "model/Keys.hpp"
#include "platform/values/Exception.hpp"
#include "support/Book.hpp"
#include "tenure/TKTenure.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::Listener;
using bookkit::onDay;
using bookkit::text;

using Keys = std::set<std::string>;

/// Every key a tenure derives from others.
const Keys Derived{"rentalPeriodicBilling",
                   "advancePeriodicBilling",
                   "endDate",
                   "name",
                   "maximumChargableDays",
                   "chargableDays",
                   "chargablePeriods",
                   "numberOfDays",
                   "numberOfPeriods",
                   "totalCost",
                   "totalIncome",
                   "totalAdjustment",
                   "balance",
                   "periods"};

class TKTenureAnnouncementTest : public testing::Test {
protected:
    TKTenureAnnouncementTest() {
        tenure->setCurrentDate(onDay(2025, 2, 16));
        tenure->setProperty(house.get());
        for (const std::string& key : Derived) ofTenure->listenTo(*tenure, key);
        for (const char* key :
             {"tenureBalance", "tenureIncome", "balance", "totalIncome", "aggregateTransactions"})
            ofHouse->listenTo(*house, key);
    }

    /// The derived keys that are announced by a change, each of them once; "periods" also when the schedule is stored.
    Keys announcedBy(const std::function<void()>& change) {
        ofTenure->forget();
        ofHouse->forget();
        change();
        Keys announced;
        for (const auto& heard : ofTenure->heard()) {
            const bool isFirst = announced.insert(heard.keyPath).second;
            EXPECT_TRUE(isFirst || heard.keyPath == "periods") << heard.keyPath << " was announced twice";
            EXPECT_EQ(heard.object, tenure.get());
        }
        return announced;
    }
    Keys heardOfHouse() const {
        Keys heard;
        for (const auto& each : ofHouse->heard()) heard.insert(each.keyPath);
        return heard;
    }
    static Keys plus(Keys keys, const Keys& more) {
        keys.insert(more.begin(), more.end());
        return keys;
    }

    const DefaultZone zone{"Europe/Berlin"};
    const Book book;
    const Ref<TKProperty> house = book.property("Elm Street");
    const Ref<TKTenure> tenure = book.tenure(onDay(2025, 1, 1), 30, 1, 1000);
    const Ref<Listener> ofTenure = makeRef<Listener>();
    const Ref<Listener> ofHouse = makeRef<Listener>();

    const Keys fromPeriods{"chargablePeriods", "totalCost", "balance", "periods"};
    const Keys fromDays = plus(fromPeriods, {"chargableDays"});
    const Keys fromMaximum = plus(fromDays, {"maximumChargableDays"});
};

TEST_F(TKTenureAnnouncementTest, ADatesChangeReachesEverythingCounted) {
    const Keys expected = plus(fromMaximum, {"numberOfDays", "numberOfPeriods"});
    EXPECT_EQ(announcedBy([&] { tenure->setStartDate(onDay(2025, 1, 2)); }), expected);
    EXPECT_EQ(announcedBy([&] { tenure->setEndDate(onDay(2025, 12, 31)); }), plus(expected, {"endDate"}));
}

TEST_F(TKTenureAnnouncementTest, ANewDayReachesEverythingChargedThroughTheEndDate) {
    EXPECT_EQ(announcedBy([&] { tenure->setCurrentDate(onDay(2025, 2, 17)); }),
              plus(fromMaximum, {"endDate", "numberOfDays", "numberOfPeriods"}));
    EXPECT_EQ(heardOfHouse(), Keys{"tenureBalance"});
}

TEST_F(TKTenureAnnouncementTest, RentTermsReachTheCalendarAndThePeriods) {
    const Keys ofCalendar = plus(fromMaximum, {"rentalPeriodicBilling", "numberOfPeriods"});
    EXPECT_EQ(announcedBy([&] { tenure->setRentalBillingCycle(Number(7u)); }), ofCalendar);
    EXPECT_EQ(announcedBy([&] { tenure->setRentalPeriod(Number(2u)); }), ofCalendar);
    EXPECT_EQ(announcedBy([&] { tenure->setRentalAmount(Decimal(900)); }), fromPeriods);
    EXPECT_EQ(announcedBy([&] { tenure->setChargeBehaviour(Number(2)); }), fromPeriods);
}

TEST_F(TKTenureAnnouncementTest, TheAdvanceReachesBothCalendars) {
    EXPECT_EQ(announcedBy([&] { tenure->setAdvanceBillingCycle(Number(7u)); }),
              plus(fromDays, {"advancePeriodicBilling"}));
    EXPECT_EQ(announcedBy([&] { tenure->setAdvancePeriod(Number(2u)); }),
              plus(fromMaximum, {"advancePeriodicBilling", "rentalPeriodicBilling", "numberOfPeriods"}));
}

TEST_F(TKTenureAnnouncementTest, FullDurationReachesTheDays) {
    EXPECT_EQ(announcedBy([&] { tenure->setChargeFullDuration(Number(true)); }), fromDays);
}

TEST_F(TKTenureAnnouncementTest, TheBondReachesTheAdjustmentAndTheBalance) {
    EXPECT_EQ(announcedBy([&] { tenure->setBondAmount(Decimal(5)); }), (Keys{"totalAdjustment", "balance"}));
    EXPECT_EQ(heardOfHouse(), Keys{"tenureBalance"});
}

TEST_F(TKTenureAnnouncementTest, TheCurrencyReachesTheBalance) {
    EXPECT_EQ(announcedBy([&] { tenure->setCurrencyCode(text("JPY")); }), Keys{"balance"});
    EXPECT_EQ(heardOfHouse(), Keys{"tenureBalance"});
}

TEST_F(TKTenureAnnouncementTest, WhatNothingDependsOnAnnouncesNothingElse) {
    const auto state = book.insert<TKState>("State");
    EXPECT_EQ(announcedBy([&] {
                  tenure->setBillingMode(1);
                  tenure->setBillingModeState(state);
                  tenure->setCurrencyCodeState(state);
                  tenure->setLastBalancedDate(onDay(2025, 1, 1));
                  tenure->createNote();
              }),
              Keys{});
}

TEST_F(TKTenureAnnouncementTest, ATenantOrAPropertyReachesTheName) {
    EXPECT_EQ(announcedBy([&] { tenure->setTenant(book.tenant("A. Smith").get()); }), Keys{"name"});
    EXPECT_EQ(announcedBy([&] { tenure->setProperty(nullptr); }), Keys{"name"});
}

TEST_F(TKTenureAnnouncementTest, ANewTransactionReachesTheTotals) {
    ofTenure->forget();
    tenure->createTransaction();
    for (const char* key : {"totalIncome", "totalAdjustment", "balance"})
        EXPECT_GE(ofTenure->times(key), 1u) << key;
    EXPECT_EQ(ofTenure->times("totalCost"), 0u);
    EXPECT_EQ(ofTenure->times("periods"), 0u);
}

TEST_F(TKTenureAnnouncementTest, ABalanceThatChangesAnnouncesThePropertysTenureBalance) {
    announcedBy([&] { tenure->setRentalAmount(Decimal(900)); });
    EXPECT_EQ(heardOfHouse(), Keys{"tenureBalance"});
}

TEST_F(TKTenureAnnouncementTest, AnIncomeThatChangesAnnouncesThePropertysTenureIncomeAndBalance) {
    auto* payment = tenure->createTransaction();
    ofHouse->forget();
    payment->setAmount(Decimal(1));
    EXPECT_EQ(heardOfHouse(), (Keys{"tenureBalance", "tenureIncome", "balance"}));
}

TEST_F(TKTenureAnnouncementTest, ATenureWithoutAPropertyPassesNothingOn) {
    tenure->setProperty(nullptr);
    ofHouse->forget();
    EXPECT_NO_THROW(tenure->setRentalAmount(Decimal(900)));
    tenure->createTransaction();
    EXPECT_TRUE(ofHouse->heard().empty());
}

TEST_F(TKTenureAnnouncementTest, WhoeverDeclaresBalanceChangedByHandIsPassedOn) {
    ofHouse->forget();
    tenure->willChangeValueForKey(keys::balance);
    EXPECT_TRUE(ofHouse->heard().empty());
    tenure->didChangeValueForKey(keys::balance);
    EXPECT_EQ(heardOfHouse(), Keys{"tenureBalance"});
    ofHouse->forget();
    tenure->willChangeValueForKey(keys::totalIncome);
    tenure->didChangeValueForKey(keys::totalIncome);
    EXPECT_EQ(heardOfHouse(), (Keys{"tenureBalance", "tenureIncome", "balance"}));
    ofHouse->forget();
    tenure->willChangeValueForKey(keys::totalCost);
    tenure->didChangeValueForKey(keys::totalCost);
    EXPECT_EQ(heardOfHouse(), Keys{"tenureBalance"}) << "through the balance";
}

TEST_F(TKTenureAnnouncementTest, WithoutObserversOfTheTenureItsPropertyStillHears) {
    const auto other = book.tenure(onDay(2025, 1, 1), 30, 1, 1000);
    other->setProperty(house.get());
    ofHouse->forget();
    other->setRentalAmount(Decimal(900));
    EXPECT_EQ(heardOfHouse(), Keys{"tenureBalance"});
}

TEST_F(TKTenureAnnouncementTest, AnObserverThatAsksForNewValuesReadsThemDuringTheChange) {
    class Reader final : public ObservableObject {
    public:
        void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject&,
                                                         const KeyValueChange& change, const void*) override {
            values.push_back(change.newValue.description());
        }
        std::vector<std::string> values;
    };
    const auto reader = makeRef<Reader>();
    tenure->addObserverForKeyPathOptionsContext(*reader, "totalCost", ObservingNew, nullptr);
    tenure->setRentalAmount(Decimal(900));
    tenure->setCurrentDate(onDay(2025, 4, 1));
    EXPECT_EQ(reader->values, (std::vector<std::string>{"-900", "-2700"}));
}

TEST_F(TKTenureAnnouncementTest, APeriodBeforeItsCycleRaisesOutOfTheSetterAndStays) {
    const auto fresh = book.tenure();
    fresh->setStartDate(onDay(2025, 1, 1));
    fresh->setCurrentDate(onDay(2025, 2, 16));
    fresh->setRentalPeriod(Number(1u));
    EXPECT_THROW(fresh->setRentalAmount(Decimal(1000)), DivideByZeroException);
    EXPECT_EQ(fresh->rentalAmount(), Decimal(1000));
    fresh->setRentalBillingCycle(Number(30u));
    EXPECT_EQ(fresh->chargablePeriods(), Decimal(1));
}

TEST_F(TKTenureAnnouncementTest, WithStartAndCycleFirstNothingRaises) {
    const auto fresh = book.tenure();
    fresh->setCurrentDate(onDay(2025, 2, 16));
    EXPECT_NO_THROW({
        fresh->setStartDate(onDay(2025, 1, 1));
        fresh->setRentalBillingCycle(Number(30u));
        fresh->setRentalPeriod(Number(1u));
        fresh->setRentalAmount(Decimal(1000));
    });
    EXPECT_EQ(fresh->totalCost(), Decimal(-1000));
}

TEST_F(TKTenureAnnouncementTest, AnnouncingDerivedKeysIsNoEditOfTheProperty) {
    ASSERT_TRUE(book->save());
    tenure->setRentalAmount(Decimal(900));
    EXPECT_TRUE(tenure->hasChanges());
    EXPECT_FALSE(house->hasChanges());
}

} // namespace
} // namespace estatebook
