// SPDX-License-Identifier: MIT
#include "tenure/TKTenure.hpp"

#include "billing/TKDuePeriods.hpp"
#include "model/Keys.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/values/Exception.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

#include <string>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::onDay;
using bookkit::shownText;
using bookkit::text;

class TKTenureTermsTest : public testing::Test {
protected:
    const DefaultZone zone{"Europe/Berlin"};
    const Book book;
    const Ref<TKTenure> tenure = book.tenure();
};

// Calendars

TEST_F(TKTenureTermsTest, WithoutAnAdvanceOrWithOneOfZeroRentIsBilledAtTheEndOfEachPeriod) {
    EXPECT_EQ(tenure->rentalPeriodicBilling()->periodBillingMode(), TKPeriodBillingModeEnd);
    EXPECT_EQ(tenure->rentalPeriodicBilling()->periodBillingMode(), 1u);
    tenure->setAdvancePeriod(Number(0u));
    EXPECT_EQ(tenure->rentalPeriodicBilling()->periodBillingMode(), 1u);
}

TEST_F(TKTenureTermsTest, WithAnAdvanceRentIsBilledAtTheStartOfEachPeriod) {
    tenure->setAdvancePeriod(Number(1u));
    EXPECT_EQ(tenure->rentalPeriodicBilling()->periodBillingMode(), TKPeriodBillingModeStart);
    EXPECT_EQ(tenure->rentalPeriodicBilling()->periodBillingMode(), 0u);
}

TEST_F(TKTenureTermsTest, TheRentalCalendarHasTheRentalCycleAndPeriod) {
    tenure->setRentalBillingCycle(Number(7u));
    tenure->setRentalPeriod(Number(2u));
    tenure->setAdvanceBillingCycle(Number(30u));
    tenure->setAdvancePeriod(Number(3u));
    const auto billing = tenure->rentalPeriodicBilling();
    EXPECT_EQ(billing->cycle(), 7u);
    EXPECT_EQ(billing->period(), 2u);
}

TEST_F(TKTenureTermsTest, TheAdvanceCalendarHasTheAdvanceCycleAndPeriodAndBillsAtTheStart) {
    tenure->setAdvanceBillingCycle(Number(30u));
    tenure->setAdvancePeriod(Number(3u));
    const auto billing = tenure->advancePeriodicBilling();
    EXPECT_EQ(billing->cycle(), 30u);
    EXPECT_EQ(billing->period(), 3u);
    EXPECT_EQ(billing->periodBillingMode(), 0u);
    tenure->setAdvancePeriod({});
    EXPECT_EQ(tenure->advancePeriodicBilling()->period(), 0u);
    EXPECT_EQ(tenure->advancePeriodicBilling()->periodBillingMode(), 0u);
}

TEST_F(TKTenureTermsTest, AbsentTermsMakeACalendarOfZeros) {
    EXPECT_EQ(tenure->rentalPeriodicBilling()->cycle(), 0u);
    EXPECT_EQ(tenure->rentalPeriodicBilling()->period(), 0u);
    EXPECT_EQ(tenure->advancePeriodicBilling()->cycle(), 0u);
}

TEST_F(TKTenureTermsTest, EachCallMakesNewObjects) {
    EXPECT_NE(tenure->rentalPeriodicBilling(), tenure->rentalPeriodicBilling());
    EXPECT_NE(tenure->advancePeriodicBilling(), tenure->advancePeriodicBilling());
    EXPECT_TRUE(tenure->valueForKey("rentalPeriodicBilling").as<TKPeriodicBilling>());
    EXPECT_TRUE(tenure->valueForKey("advancePeriodicBilling").as<TKPeriodicBilling>());
}

TEST_F(TKTenureTermsTest, AChangeOfTermsTakesEffectOnTheNextCall) {
    tenure->setRentalPeriod(Number(1u));
    const auto before = tenure->rentalPeriodicBilling();
    tenure->setRentalPeriod(Number(2u));
    EXPECT_EQ(before->period(), 1u);
    EXPECT_EQ(tenure->rentalPeriodicBilling()->period(), 2u);
}

TEST_F(TKTenureTermsTest, EachReadingOfTheDuePeriodsMakesANewSnapshot) {
    tenure->setRentalAmount(Decimal(0));
    const auto due = tenure->duePeriods();
    ASSERT_TRUE(due);
    EXPECT_NE(due, tenure->duePeriods());
    EXPECT_TRUE(tenure->valueForKey("duePeriods").as<TKDuePeriods>());
}

// Names

TEST_F(TKTenureTermsTest, ChargeBehavioursHaveTheseValuesAndNames) {
    static_assert(TKChargeBehaviourStart == 0 && TKChargeBehaviourPartial == 1 && TKChargeBehaviourEnd == 2);
    const auto nameOf = [&](std::optional<Number> behaviour) {
        tenure->setChargeBehaviour(behaviour);
        return shownText(tenure->functionalNameForChargeBehaviour());
    };
    EXPECT_EQ(nameOf(Number(0)), "start");
    EXPECT_EQ(nameOf(Number(1)), "partial");
    EXPECT_EQ(nameOf(Number(2)), "end");
    EXPECT_EQ(nameOf(Number(3)), "(null)");
    EXPECT_EQ(nameOf(Number(-1)), "(null)");
    EXPECT_EQ(nameOf({}), "start") << "absent reads as 0";
}

TEST_F(TKTenureTermsTest, CyclesHaveTheNamesOfTheBillingCalendar) {
    EXPECT_FALSE(tenure->periodicNameForRentalBillingCycle());
    EXPECT_FALSE(tenure->periodicNameForAdvanceBillingCycle());
    for (const std::uint64_t cycle : {1u, 7u, 30u, 365u}) {
        const auto expected = TKPeriodicBilling::periodicNameForBillingCycle(cycle);
        tenure->setRentalBillingCycle(Number(cycle));
        tenure->setAdvanceBillingCycle({});
        EXPECT_EQ(tenure->periodicNameForRentalBillingCycle(), expected);
        EXPECT_FALSE(tenure->periodicNameForAdvanceBillingCycle());
        tenure->setAdvanceBillingCycle(Number(cycle));
        EXPECT_EQ(tenure->periodicNameForAdvanceBillingCycle(), expected);
    }
    tenure->setRentalBillingCycle(Number(31u));
    EXPECT_FALSE(tenure->periodicNameForRentalBillingCycle());
}

TEST_F(TKTenureTermsTest, AllTenuresShareOneDateFormatter) {
    const auto& formatter = TKTenure::sharedDateFormatter();
    ASSERT_TRUE(formatter);
    {
        const DefaultZone elsewhere("Asia/Tokyo");
        EXPECT_EQ(TKTenure::sharedDateFormatter(), formatter) << "kept for the life of the process";
    }
}

class TKTenureNameTest : public TKTenureTermsTest {
protected:
    std::string shown(Date date) const { return TKTenure::sharedDateFormatter()->stringFromDate(date); }
    const Ref<TKProperty> flat = book.property("Flat 2");
    const Ref<TKTenant> smith = book.tenant("A. Smith");
};

TEST_F(TKTenureNameTest, ATenureIsNamedByItsPropertyItsTenantAndItsDates) {
    const Date start = onDay(2024, 3, 1);
    const Date end = onDay(2024, 8, 31);
    tenure->setProperty(flat.get());
    tenure->setTenant(smith.get());
    tenure->setStartDate(start);
    tenure->setEndDate(end);
    const std::string expected = "Flat 2 - A. Smith (" + shown(start) + " \u2192 " + shown(end) + ")";
    EXPECT_EQ(shownText(tenure->name()), expected);
    EXPECT_EQ(shownText(tenure->valueForKey("name").string()), expected);
}

TEST_F(TKTenureNameTest, AnOpenEndIsShownAsThreeFullStops) {
    tenure->setProperty(flat.get());
    tenure->setTenant(smith.get());
    tenure->setStartDate(onDay(2024, 3, 1));
    EXPECT_EQ(shownText(tenure->name()), "Flat 2 - A. Smith (" + shown(onDay(2024, 3, 1)) + " \u2192 ...)");
}

TEST_F(TKTenureNameTest, WhatIsAbsentIsShownAsSuch) {
    EXPECT_EQ(shownText(tenure->name()), "(null) - (null) ((null) \u2192 ...)");
    tenure->setEndDate(onDay(2024, 8, 31));
    tenure->setTenant(book.insert<TKTenant>("Tenant").get());
    tenure->setProperty(flat.get());
    EXPECT_EQ(shownText(tenure->name()), "Flat 2 - (null) ((null) \u2192 " + shown(onDay(2024, 8, 31)) + ")");
}

TEST_F(TKTenureNameTest, ThePlainNameOfThePropertyIsUsed) {
    flat->setSublease(text("Unit 7"));
    tenure->setProperty(flat.get());
    EXPECT_TRUE(shownText(tenure->name()).starts_with("Flat 2 - (null) ("));
}

// Validation

class TKTenureValidationTest : public TKTenureTermsTest {
protected:
    static void expectDurationError(const Ref<Error>& error) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), "Validation");
        EXPECT_EQ(error->code(), -1);
        EXPECT_EQ(error->userInfo()->count(), 1u);
        EXPECT_EQ(shownText(error->userInfo()->find(LocalizedDescriptionKey).string()),
                  "Tenure end date must be greater or equal to the tenure start date");
    }
};

TEST_F(TKTenureValidationTest, WithoutAnEndAnyRangeIsValid) {
    EXPECT_TRUE(tenure->validateDuration(nullptr));
    tenure->setStartDate(onDay(2025, 1, 1));
    Ref<Error> error;
    EXPECT_TRUE(tenure->validateDuration(&error));
    EXPECT_FALSE(error);
}

TEST_F(TKTenureValidationTest, AnEndWithoutAStartIsNotValid) {
    tenure->setEndDate(onDay(2025, 1, 1));
    Ref<Error> error;
    EXPECT_FALSE(tenure->validateDuration(&error));
    expectDurationError(error);
    EXPECT_FALSE(tenure->validateDuration(nullptr));
}

TEST_F(TKTenureValidationTest, SavingFailsWhenTheEndIsOneSecondBeforeTheStart) {
    tenure->setStartDate(onDay(2025, 1, 1, 10));
    tenure->setEndDate(onDay(2025, 1, 1, 9, 59, 59));
    Ref<Error> error;
    EXPECT_FALSE(book->save(&error));
    expectDurationError(error);
    EXPECT_TRUE(tenure->isInserted()) << "nothing was committed";
    EXPECT_FALSE(book->save()) << "nor without asking for the reason";
}

TEST_F(TKTenureValidationTest, SavingPassesWhenTheEndIsTheStart) {
    tenure->setStartDate(onDay(2025, 1, 1, 10));
    tenure->setEndDate(onDay(2025, 1, 1, 10));
    Ref<Error> error;
    EXPECT_TRUE(book->save(&error));
    EXPECT_FALSE(error);
    EXPECT_FALSE(tenure->isInserted());
}

TEST_F(TKTenureValidationTest, AnUpdateIsValidatedLikeAnInsertion) {
    tenure->setStartDate(onDay(2025, 1, 1));
    ASSERT_TRUE(book->save());
    tenure->setEndDate(onDay(2024, 12, 31));
    Ref<Error> error;
    EXPECT_FALSE(book->save(&error));
    expectDurationError(error);
    EXPECT_TRUE(tenure->isUpdated());
    EXPECT_EQ(tenure->endDate(), onDay(2024, 12, 31)) << "the value stays for the user to mend";
    error = nullptr;
    EXPECT_FALSE(tenure->validateForUpdate(&error));
    expectDurationError(error);
    error = nullptr;
    EXPECT_FALSE(tenure->validateForInsert(&error));
    expectDurationError(error);
    tenure->setEndDate(onDay(2025, 12, 31));
    EXPECT_TRUE(book->save());
}

TEST_F(TKTenureValidationTest, TwoTenuresThatAreNotValidAreReportedTogether) {
    const auto second = book.tenure();
    tenure->setEndDate(onDay(2025, 1, 1));
    second->setEndDate(onDay(2025, 1, 1));
    Ref<Error> error;
    EXPECT_FALSE(book->save(&error));
    ASSERT_TRUE(error);
    const auto details = error->userInfo()->find(DetailedErrorsKey).as<Array>();
    ASSERT_TRUE(details);
    ASSERT_EQ(details->count(), 2u);
    expectDurationError(details->at(0).as<Error>());
    expectDurationError(details->at(1).as<Error>());
}

// Activity

TEST_F(TKTenureTermsTest, ATenureIsActiveOnItsLastDayAtAnyHourAndNotOnTheNext) {
    tenure->setStartDate(onDay(2024, 3, 1, 10));
    tenure->setEndDate(onDay(2024, 8, 31, 10));
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(2024, 8, 31)));
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(2024, 8, 31, 23, 59, 59)));
    EXPECT_FALSE(tenure->isActiveAtDate(onDay(2024, 9, 1)));
}

TEST_F(TKTenureTermsTest, ATenureIsActiveFromTheFirstInstantOfItsFirstDay) {
    tenure->setStartDate(onDay(2024, 3, 1, 10));
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(2024, 3, 1)));
    EXPECT_FALSE(tenure->isActiveAtDate(onDay(2024, 2, 29)));
    EXPECT_FALSE(tenure->isActiveAtDate(onDay(2024, 2, 29, 23, 59, 59)));
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(2054, 1, 1)));
}

TEST_F(TKTenureTermsTest, WithoutDatesATenureIsActiveOnEveryDay) {
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(1900, 1, 1)));
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(2100, 1, 1)));
    EXPECT_TRUE(tenure->isActive());
}

TEST_F(TKTenureTermsTest, WithoutAStartOnlyTheEndBounds) {
    tenure->setEndDate(onDay(2024, 8, 31));
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(1900, 1, 1)));
    EXPECT_FALSE(tenure->isActiveAtDate(onDay(2024, 9, 1)));
}

TEST_F(TKTenureTermsTest, ActivityIsAskedAtTheCurrentDate) {
    tenure->setStartDate(onDay(2024, 3, 1));
    tenure->setCurrentDate(onDay(2024, 2, 29));
    EXPECT_FALSE(tenure->isActive());
    EXPECT_FALSE(tenure->valueForKey("active").boolValue());
    EXPECT_FALSE(tenure->valueForKey("isActive").boolValue());
    tenure->setCurrentDate(onDay(2024, 3, 1));
    EXPECT_TRUE(tenure->isActive());
    EXPECT_TRUE(tenure->valueForKey("active").boolValue());
}

TEST_F(TKTenureTermsTest, ADayWithoutMidnightBeginsAtItsFirstInstant) {
    const DefaultZone beirut("Asia/Beirut"); // 31 March 2024 began at 01:00
    tenure->setStartDate(onDay(2024, 3, 31));
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(2024, 3, 31)));
    EXPECT_FALSE(tenure->isActiveAtDate(onDay(2024, 3, 30, 23, 59, 59)));
    tenure->setEndDate(onDay(2024, 3, 31));
    EXPECT_TRUE(tenure->isActiveAtDate(onDay(2024, 3, 31, 23)));
    EXPECT_FALSE(tenure->isActiveAtDate(onDay(2024, 4, 1)));
}

// Ledger and notes

TEST_F(TKTenureTermsTest, ACreatedTransactionIsOfOneRentAndLinked) {
    tenure->setRentalAmount(Decimal::parse("1000.50"));
    auto* payment = tenure->createTransaction();
    EXPECT_EQ(payment->entity().name(), "TenureTransaction");
    EXPECT_TRUE(payment->isInserted());
    EXPECT_EQ(payment->managedObjectContext(), &book.context());
    EXPECT_EQ(payment->tenure(), tenure.get());
    EXPECT_EQ(payment->amount(), Decimal::parse("1000.5"));
    ASSERT_EQ(tenure->transactions().count(), 1u);
    EXPECT_FALSE(payment->when());
    EXPECT_FALSE(payment->what());
}

TEST_F(TKTenureTermsTest, WithoutARentACreatedTransactionHasNoAmount) {
    EXPECT_FALSE(tenure->createTransaction()->amount());
}

TEST_F(TKTenureTermsTest, ACreatedNoteIsInsertedAndLinked) {
    auto* note = tenure->createNote();
    EXPECT_EQ(note->entity().name(), "TenureNote");
    EXPECT_TRUE(note->isInserted());
    EXPECT_EQ(note->tenure(), tenure.get());
    EXPECT_EQ(tenure->notes().count(), 1u);
}

TEST_F(TKTenureTermsTest, WithoutAContextNothingCanBeCreated) {
    const auto loose = refCast<TKTenure>(
        ManagedObject::initWithEntityInsertIntoManagedObjectContext(tenure->entity(), nullptr));
    EXPECT_THROW((void)loose->createTransaction(), InvalidArgumentException);
    EXPECT_THROW((void)loose->createNote(), InvalidArgumentException);
}

// Values that are not stored

TEST_F(TKTenureTermsTest, TheSettingsATenureKnowsAreReadAndWrittenByKey) {
    const auto loose = refCast<TKTenure>(
        ManagedObject::initWithEntityInsertIntoManagedObjectContext(tenure->entity(), nullptr));
    EXPECT_FALSE(loose->currencyCodeState());
    EXPECT_FALSE(loose->currencyCode());
    EXPECT_FALSE(loose->billingModeState());
    EXPECT_EQ(loose->billingMode(), 0u);
    const auto state = book.insert<TKState>("State");
    const auto code = text("EUR");
    loose->setValueForKey(Value(state), "currencyCodeState");
    loose->setValueForKey(Value(code), "currencyCode");
    loose->setValueForKey(Value(state), "billingModeState");
    loose->setValueForKey(Value(1u), "billingMode");
    EXPECT_EQ(loose->currencyCodeState(), state);
    EXPECT_EQ(loose->currencyCode(), code);
    EXPECT_EQ(loose->billingModeState(), state);
    EXPECT_EQ(loose->billingMode(), 1u);
    EXPECT_EQ(loose->valueForKey("currencyCode").string(), code);
    EXPECT_EQ(loose->valueForKey("billingMode").unsignedIntegerValue(), 1u);
}

TEST_F(TKTenureTermsTest, TheyAreNoPartOfTheBookAndChangeNothingInIt) {
    ASSERT_TRUE(book->save());
    tenure->setCurrencyCode(text("EUR"));
    tenure->setBillingMode(1);
    tenure->setCurrentDate(onDay(2025, 1, 1));
    EXPECT_FALSE(book->hasChanges());
    tenure->setStartDate(onDay(2025, 1, 1));
    EXPECT_TRUE(book->hasChanges());
}

} // namespace
} // namespace estatebook
