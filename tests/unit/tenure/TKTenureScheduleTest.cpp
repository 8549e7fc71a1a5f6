// SPDX-License-Identifier: MIT
#include "tenure/TKTenure.hpp"

#include "model/Keys.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/text/Locale.hpp"
#include "platform/values/Exception.hpp"
#include "statement/TKStatement.hpp"
#include "support/Book.hpp"
#include "tags/TKTag.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::DefaultZone;
using bookkit::onDay;
using bookkit::shownText;
using bookkit::text;

Decimal decimal(std::string_view digits) {
    return Decimal::parse(digits);
}

/// Puts a locale in the place of the current one for as long as it lives.
class CurrentLocale {
public:
    explicit CurrentLocale(const char* identifier) : before_(Locale::current()) {
        Locale::setCurrent(Locale::named(identifier));
    }
    ~CurrentLocale() { Locale::setCurrent(before_); }

private:
    Locale before_;
};

/// One line as people read it: "2025-02-01 -1000 Rent (…)".
std::string shown(const TKLedgerTransaction& line) {
    std::string day = "undated";
    if (const auto when = line.when()) {
        const auto ymd = Calendar::current().civilDay(*when).yearMonthDay();
        char written[32];
        std::snprintf(written, sizeof written, "%04d-%02d-%02d", static_cast<int>(ymd.year), ymd.month,
                      ymd.day);
        day = written;
    }
    const auto amount = line.amount();
    return day + " " + (amount ? amount->toString() : "none") + " " + shownText(line.what());
}

std::vector<std::string> linesOf(const Ref<TKStatement>& statement) {
    std::vector<std::string> lines;
    for (const TKStatementItem& item : *statement->items()) lines.push_back(shown(*item.transaction()));
    return lines;
}

std::vector<Decimal> balancesOf(const Ref<TKStatement>& statement) {
    std::vector<Decimal> balances;
    for (const TKStatementItem& item : *statement->items()) balances.push_back(item.balance());
    return balances;
}

using Lines = std::vector<std::string>;

/// Monthly rent of 1000 from 1 January 2025, in arrears, on 16 February 2025.
class TKTenureScheduleTest : public testing::Test {
protected:
    TKTenureScheduleTest() { tenure->setCurrentDate(onDay(2025, 2, 16)); }

    Ref<TKStatement> rebuilt() const {
        tenure->updatePeriods();
        return tenure->statement();
    }
    void expectPeriod(const TKPeriod& period, Date start, Date end, Date billing) const {
        EXPECT_EQ(period.startDate(), start);
        EXPECT_EQ(period.endDate(), end);
        EXPECT_EQ(period.billingDate(), billing);
    }

    const DefaultZone zone{"Europe/Berlin"};
    const CurrentLocale locale{"en_US"};
    const Book book;
    const Ref<TKTenure> tenure = book.tenure(onDay(2025, 1, 1), 30, 1, 1000);
};

// The schedule

TEST_F(TKTenureScheduleTest, ABegunPeriodOfAPartialTenureGetsAPeriodOfItsOwn) {
    tenure->setChargeBehaviour(Number(1));
    const auto rows = tenure->updatePeriods();
    ASSERT_EQ(rows->count(), 2u);
    expectPeriod((*rows)[0], onDay(2025, 1, 1), onDay(2025, 2, 1), onDay(2025, 2, 1));
    expectPeriod((*rows)[1], onDay(2025, 2, 1), onDay(2025, 3, 1), onDay(2025, 3, 1));
    EXPECT_EQ(tenure->periods(), rows) << "the row that is returned is the one that is stored";
}

TEST_F(TKTenureScheduleTest, RentInAdvanceIsBilledAtTheStartOfEachPeriod) {
    tenure->setChargeBehaviour(Number(1));
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(1u));
    const auto rows = tenure->updatePeriods();
    ASSERT_EQ(rows->count(), 2u);
    expectPeriod((*rows)[0], onDay(2025, 1, 1), onDay(2025, 2, 1), onDay(2025, 1, 1));
    expectPeriod((*rows)[1], onDay(2025, 2, 1), onDay(2025, 3, 1), onDay(2025, 2, 1));
}

TEST_F(TKTenureScheduleTest, StartHasOnePeriodAndEndTwo) {
    EXPECT_EQ(tenure->updatePeriods()->count(), 1u);
    tenure->setChargeBehaviour(Number(2));
    EXPECT_EQ(tenure->updatePeriods()->count(), 2u);
}

TEST_F(TKTenureScheduleTest, AnotherBehaviourHasTheWholePeriodsOnly) {
    tenure->setChargeBehaviour(Number(3));
    EXPECT_EQ(tenure->updatePeriods()->count(), 1u);
}

TEST_F(TKTenureScheduleTest, TheFirstPeriodBeginsAtTheFirstInstantOfTheStartDate) {
    tenure->setStartDate(onDay(2025, 1, 1, 10));
    const auto rows = tenure->updatePeriods();
    EXPECT_EQ((*rows)[0].startDate(), onDay(2025, 1, 1));
}

TEST_F(TKTenureScheduleTest, BoundariesAreCountedFromTheStartAndNeverFromTheBoundaryBefore) {
    tenure->setStartDate(onDay(2025, 1, 31));
    tenure->setCurrentDate(onDay(2025, 5, 31));
    const auto rows = tenure->updatePeriods();
    ASSERT_EQ(rows->count(), 4u);
    const Date ends[] = {onDay(2025, 2, 28), onDay(2025, 3, 31), onDay(2025, 4, 30), onDay(2025, 5, 31)};
    for (std::size_t place = 0; place < 4; ++place) EXPECT_EQ((*rows)[place].endDate(), ends[place]);
}

TEST_F(TKTenureScheduleTest, TheLastPeriodTakesTheEndDateAndKeepsItsBillingDate) {
    tenure->setChargeBehaviour(Number(1));
    tenure->setEndDate(onDay(2025, 3, 15, 10));
    tenure->setCurrentDate(onDay(2025, 2, 16));
    const auto rows = tenure->updatePeriods();
    ASSERT_EQ(rows->count(), 2u);
    expectPeriod((*rows)[0], onDay(2025, 1, 1), onDay(2025, 2, 1), onDay(2025, 2, 1));
    expectPeriod((*rows)[1], onDay(2025, 2, 1), onDay(2025, 3, 15, 10), onDay(2025, 3, 1));
}

TEST_F(TKTenureScheduleTest, TheLastPeriodIsStretchedToTheEndEvenWhereChargingStopsBefore) {
    tenure->setEndDate(onDay(2025, 12, 31));
    const auto rows = tenure->updatePeriods();
    ASSERT_EQ(rows->count(), 1u);
    expectPeriod((*rows)[0], onDay(2025, 1, 1), onDay(2025, 12, 31), onDay(2025, 2, 1));
}

TEST_F(TKTenureScheduleTest, WithNothingChargedTheScheduleIsEmptyEvenWithAnEndDate) {
    tenure->setCurrentDate(onDay(2025, 1, 1));
    tenure->setEndDate(onDay(2025, 12, 31));
    EXPECT_TRUE(tenure->updatePeriods()->empty());
    ASSERT_TRUE(tenure->periods());
    EXPECT_TRUE(tenure->periods()->empty());
}

TEST_F(TKTenureScheduleTest, WithoutAStartTheScheduleIsEmpty) {
    tenure->setStartDate({});
    EXPECT_TRUE(tenure->updatePeriods()->empty());
}

TEST_F(TKTenureScheduleTest, EachUpdateReplacesTheScheduleAsAWhole) {
    const auto before = tenure->updatePeriods();
    tenure->setCurrentDate(onDay(2025, 4, 1));
    EXPECT_EQ(before->count(), 1u);
    const auto after = tenure->updatePeriods();
    EXPECT_NE(before, after);
    EXPECT_EQ(before->count(), 1u) << "the old row is not edited";
    EXPECT_EQ(after->count(), 3u);
}

TEST_F(TKTenureScheduleTest, AnUpdateAnnouncesThePeriodsAndIsNoEdit) {
    ASSERT_TRUE(book->save());
    const auto listener = makeRef<bookkit::Listener>();
    listener->listenTo(*tenure, "periods");
    tenure->updatePeriods();
    EXPECT_EQ(listener->times("periods"), 1u);
    EXPECT_FALSE(book->hasChanges());
}

TEST_F(TKTenureScheduleTest, AnUpdateThatRaisesLeavesTheOldSchedule) {
    const auto before = tenure->updatePeriods();
    EXPECT_THROW(tenure->setRentalPeriod(Number(0u)), DivideByZeroException);
    EXPECT_THROW((void)tenure->updatePeriods(), DivideByZeroException);
    EXPECT_EQ(tenure->periods(), before);
}

TEST_F(TKTenureScheduleTest, AScheduleThatLeavesTheYearsOfBooksRaisesInsteadOfGrowing) {
    tenure->setCurrentDate(onDay(9999, 11, 30));
    EXPECT_THROW(tenure->setRentalPeriod(Number(1200000u)), OverflowException);
    EXPECT_THROW((void)tenure->updatePeriods(), OverflowException);
}

// The statement

TEST_F(TKTenureScheduleTest, AnEmptyTenureHasAnEmptyStatement) {
    const auto statement = book.tenure()->statement();
    EXPECT_TRUE(statement->isEmpty());
    EXPECT_FALSE(statement->amount());
    EXPECT_FALSE(statement->metadata());
}

TEST_F(TKTenureScheduleTest, APartialTenureHasARentLineAndAPartialOne) {
    tenure->setChargeBehaviour(Number(1));
    const auto statement = rebuilt();
    ASSERT_EQ(statement->items()->count(), 2u);
    EXPECT_EQ(linesOf(statement)[0], "2025-02-01 -1000 Rent (Jan 1, 2025 \u2192 Feb 1, 2025)");
    const auto& partial = *(*statement->items())[1].transaction();
    EXPECT_EQ(shownText(partial.what()), "Partial Rent (Feb 1, 2025 \u2192 Mar 1, 2025)");
    EXPECT_EQ(partial.when(), onDay(2025, 3, 1));
    EXPECT_EQ(partial.amount(), Decimal(-1000) * (Decimal(15) / 28 + 1 - 1));
    EXPECT_TRUE(partial.amount()->toString().starts_with("-535.714285714285"));
}

TEST_F(TKTenureScheduleTest, AStartTenureHasOneRentLine) {
    EXPECT_EQ(linesOf(rebuilt()), (Lines{"2025-02-01 -1000 Rent (Jan 1, 2025 \u2192 Feb 1, 2025)"}));
}

TEST_F(TKTenureScheduleTest, AnEndTenureHasTwoRentLines) {
    tenure->setChargeBehaviour(Number(2));
    EXPECT_EQ(linesOf(rebuilt()), (Lines{"2025-02-01 -1000 Rent (Jan 1, 2025 \u2192 Feb 1, 2025)",
                                         "2025-03-01 -1000 Rent (Feb 1, 2025 \u2192 Mar 1, 2025)"}));
}

TEST_F(TKTenureScheduleTest, UnderAnotherBehaviourThePartialLineReplacesTheLastWholePeriod) {
    tenure->setChargeBehaviour(Number(3));
    const auto statement = rebuilt();
    ASSERT_EQ(statement->items()->count(), 1u);
    EXPECT_EQ(shownText((*statement->items())[0].transaction()->what()),
              "Partial Rent (Jan 1, 2025 \u2192 Feb 1, 2025)");
}

TEST_F(TKTenureScheduleTest, ABondIsALineOnTheStartDateAsStored) {
    tenure->setStartDate(onDay(2025, 1, 1, 10));
    tenure->setBondAmount(Decimal(500));
    const auto statement = rebuilt();
    const auto& bond = *(*statement->items())[0].transaction();
    EXPECT_EQ(bond.amount(), Decimal(-500));
    EXPECT_EQ(shownText(bond.what()), "Bond Debit");
    EXPECT_EQ(bond.when(), onDay(2025, 1, 1, 10));
}

TEST_F(TKTenureScheduleTest, RentInAdvanceOfTheFirstDayStandsAheadOfABondOfThatMorning) {
    tenure->setStartDate(onDay(2025, 1, 1, 10));
    tenure->setBondAmount(Decimal(500));
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(1u));
    const auto lines = linesOf(rebuilt());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "2025-01-01 -1000 Rent (Jan 1, 2025 \u2192 Feb 1, 2025)");
    EXPECT_EQ(lines[1], "2025-01-01 -500 Bond Debit");
}

TEST_F(TKTenureScheduleTest, ABondOfZeroOrLessHasNoLineButCountsInTheBalance) {
    for (const Decimal& bond : {Decimal(0), Decimal(-500)}) {
        tenure->setBondAmount(bond);
        EXPECT_EQ(linesOf(rebuilt()).size(), 1u);
        EXPECT_EQ(tenure->balance(), Decimal(-1000) - bond);
    }
}

TEST_F(TKTenureScheduleTest, ABondWithoutAStartDateIsUndatedAndFirst) {
    tenure->setStartDate({});
    tenure->setBondAmount(Decimal(500));
    book.record(*tenure, 20, onDay(2020, 1, 1));
    const auto lines = linesOf(rebuilt());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "undated -500 Bond Debit");
}

TEST_F(TKTenureScheduleTest, TheLastRentLineShowsTheEndDate) {
    tenure->setChargeBehaviour(Number(2));
    tenure->setEndDate(onDay(2025, 3, 15));
    EXPECT_EQ(linesOf(rebuilt())[1], "2025-03-01 -1000 Rent (Feb 1, 2025 \u2192 Mar 15, 2025)");
}

TEST_F(TKTenureScheduleTest, RecordedTransactionsStandBetweenTheGeneratedLinesByDate) {
    tenure->setChargeBehaviour(Number(2));
    tenure->setBondAmount(Decimal(500));
    book.record(*tenure, 1000, onDay(2025, 2, 10))->setWhat(text("March"));
    book.record(*tenure, 500, onDay(2025, 1, 5))->setWhat(text("Bond paid"));
    book.record(*tenure, 1, onDay(2025, 4, 1))->setWhat(text("Late"));
    book.record(*tenure, 2, onDay(2024, 12, 1))->setWhat(text("Early"));
    const auto statement = rebuilt();
    EXPECT_EQ(linesOf(statement),
              (Lines{"2024-12-01 2 Early", "2025-01-01 -500 Bond Debit", "2025-01-05 500 Bond paid",
                     "2025-02-01 -1000 Rent (Jan 1, 2025 \u2192 Feb 1, 2025)", "2025-02-10 1000 March",
                     "2025-03-01 -1000 Rent (Feb 1, 2025 \u2192 Mar 1, 2025)", "2025-04-01 1 Late"}));
    EXPECT_EQ(balancesOf(statement), (std::vector<Decimal>{2, -498, 2, -998, 2, -998, -997}));
    EXPECT_EQ(statement->amount(), tenure->balance());
}

TEST_F(TKTenureScheduleTest, OnOneInstantRecordedLinesStandFirstInOrderOfCreationThenTheBondThenTheRent) {
    tenure->setAdvancePeriod(Number(1u));
    tenure->setAdvanceBillingCycle(Number(1u));
    tenure->setBondAmount(Decimal(500));
    for (const char* what : {"first", "second", "third"})
        book.record(*tenure, 1, onDay(2025, 1, 1))->setWhat(text(what));
    book.record(*tenure, 1)->setWhat(text("undated"));
    const auto lines = linesOf(rebuilt());
    EXPECT_EQ(lines, (Lines{"undated 1 undated", "2025-01-01 1 first", "2025-01-01 1 second",
                            "2025-01-01 1 third", "2025-01-01 -500 Bond Debit",
                            "2025-01-01 -1000 Rent (Jan 1, 2025 \u2192 Feb 1, 2025)"}));
}

TEST_F(TKTenureScheduleTest, RecordedTransactionsAreTheVeryObjects) {
    auto* payment = book.record(*tenure, 1000, onDay(2025, 1, 5));
    payment->setTagNames(TKTagNames::initWithEditableString("Rent, Bank"));
    const auto statement = rebuilt();
    EXPECT_EQ(&(*statement->items())[0].transaction()->adopter(), payment);
    EXPECT_FALSE(TKTenure::isGenerated(*(*statement->items())[0].transaction()));
    EXPECT_EQ(statement->tagNames()->editableString(), "Rent, Bank");
}

TEST_F(TKTenureScheduleTest, AGeneratedLineIsATransactionOfNoContextWithFourValues) {
    tenure->setBondAmount(Decimal(500));
    const auto objects = book->objectCount();
    const auto statement = rebuilt();
    EXPECT_EQ(book->objectCount(), objects);
    ASSERT_EQ(statement->items()->count(), 2u);
    for (const TKStatementItem& item : *statement->items()) {
        const auto line = refCast<TKTenureTransaction>(item.transaction());
        ASSERT_TRUE(line);
        EXPECT_TRUE(TKTenure::isGenerated(*line));
        EXPECT_EQ(line->entity().name(), "TenureTransaction");
        EXPECT_EQ(line->runtimeClassName(), "TKTenureTransaction");
        EXPECT_FALSE(line->managedObjectContext());
        EXPECT_TRUE(line->amount());
        EXPECT_TRUE(line->what());
        EXPECT_TRUE(line->when());
        EXPECT_EQ(line->processedOn(), line->when());
        EXPECT_FALSE(line->tenure());
        EXPECT_FALSE(line->tagNames());
        EXPECT_TRUE(line->tags().empty());
        EXPECT_FALSE(line->adjustment());
        EXPECT_FALSE(line->receipt());
        EXPECT_EQ(line->valueForKey("what").string(), line->what());
        EXPECT_EQ(line->valueForKey("amount").decimal(), line->amount());
        EXPECT_EQ(line->valueForKey("processedOn").date(), line->when());
    }
    EXPECT_TRUE(tenure->transactions().empty());
}

TEST_F(TKTenureScheduleTest, MakingAStatementChangesNothingInTheBook) {
    book.record(*tenure, 1000, onDay(2025, 1, 5));
    tenure->setBondAmount(Decimal(500));
    tenure->updatePeriods();
    ASSERT_TRUE(book->save());
    const auto statement = tenure->statement();
    EXPECT_FALSE(book->hasChanges());
    EXPECT_TRUE(book->undoManager()->isUndoRegistrationEnabled());
}

TEST_F(TKTenureScheduleTest, EachReadingMakesNewLines) {
    const auto first = rebuilt();
    const auto second = tenure->statement();
    EXPECT_NE(first, second);
    EXPECT_NE((*first->items())[0].transaction(), (*second->items())[0].transaction());
    EXPECT_TRUE(tenure->valueForKey("statement").as<TKStatement>());
}

TEST_F(TKTenureScheduleTest, AStatementUsesTheScheduleAsItStands) {
    const auto stale = tenure->updatePeriods();
    tenure->setPeriods(nullptr);
    EXPECT_TRUE(linesOf(tenure->statement()).empty()) << "there is no schedule";
    tenure->setCurrentDate(onDay(2025, 4, 1));
    tenure->setPeriods(stale);
    EXPECT_EQ(linesOf(tenure->statement()).size(), 1u) << "a stale one is used as it is";
    EXPECT_EQ(linesOf(rebuilt()).size(), 3u);
}

TEST_F(TKTenureScheduleTest, WithoutARentTheLinesHaveNoAmount) {
    const auto row = tenure->updatePeriods();
    tenure->setRentalAmount({});
    EXPECT_TRUE(linesOf(tenure->statement()).empty()) << "no periods can be charged";
    tenure->setPeriods(row);
    EXPECT_EQ(linesOf(tenure->statement()), (Lines{"2025-02-01 none Rent (Jan 1, 2025 \u2192 Feb 1, 2025)"}));
    EXPECT_EQ(tenure->statement()->amount(), Decimal::zero());
}

TEST_F(TKTenureScheduleTest, AStatementThatRaisesLeavesUndoRegistrationDisabled) {
    EXPECT_THROW(tenure->setRentalPeriod(Number(0u)), DivideByZeroException);
    EXPECT_THROW((void)tenure->statement(), DivideByZeroException);
    EXPECT_FALSE(book->undoManager()->isUndoRegistrationEnabled());
    book->undoManager()->enableUndoRegistration();
    EXPECT_TRUE(book->undoManager()->isUndoRegistrationEnabled());
}

TEST_F(TKTenureScheduleTest, AStatementCountsItsPauseOfUndoRegistration) {
    book->undoManager()->disableUndoRegistration();
    (void)tenure->statement();
    EXPECT_FALSE(book->undoManager()->isUndoRegistrationEnabled());
    book->undoManager()->enableUndoRegistration();
    EXPECT_TRUE(book->undoManager()->isUndoRegistrationEnabled());
}

TEST_F(TKTenureScheduleTest, ATenureWithoutAnUndoManagerHasAStatementToo) {
    book->setUndoManager(nullptr);
    EXPECT_EQ(linesOf(rebuilt()).size(), 1u);
}

TEST_F(TKTenureScheduleTest, ATenureWithoutAContextHasAStatementToo) {
    const auto loose = refCast<TKTenure>(
        ManagedObject::initWithEntityInsertIntoManagedObjectContext(tenure->entity(), nullptr));
    loose->setBondAmount(Decimal(500));
    EXPECT_EQ(linesOf(loose->statement()), (Lines{"undated -500 Bond Debit"}));
}

// Texts made on first read

TEST_F(TKTenureScheduleTest, ATextKeepsTheLocaleAndTheZoneOfTheStatement) {
    tenure->updatePeriods();
    const auto statement = tenure->statement();
    {
        const CurrentLocale german("de_DE");
        const DefaultZone apia("Pacific/Apia");
        EXPECT_EQ(shownText((*statement->items())[0].transaction()->what()),
                  "Rent (Jan 1, 2025 \u2192 Feb 1, 2025)");
    }
    const CurrentLocale german("de_DE");
    EXPECT_EQ(shownText((*tenure->statement()->items())[0].transaction()->what()),
              "Rent (01.01.2025 \u2192 01.02.2025)");
}

TEST_F(TKTenureScheduleTest, ATextKeepsTheDatesOfThePeriodWhenTheStatementWasMade) {
    const auto rows = tenure->updatePeriods();
    const auto statement = tenure->statement();
    (*rows)[0].setEndDate(onDay(2026, 1, 1));
    EXPECT_EQ(shownText((*statement->items())[0].transaction()->what()),
              "Rent (Jan 1, 2025 \u2192 Feb 1, 2025)");
}

TEST_F(TKTenureScheduleTest, ATextIsOneObjectHoweverOftenItIsRead) {
    const auto statement = rebuilt();
    const auto& line = (*statement->items())[0].transaction();
    EXPECT_EQ(line->what(), line->what());
}

TEST_F(TKTenureScheduleTest, EveryThreadThatReadsATextSeesTheSameOne) {
    tenure->setCurrentDate(onDay(2030, 1, 1));
    const auto statement = rebuilt();
    const TKStatement& read = *statement;
    std::vector<std::vector<const String*>> seen(4);
    std::vector<std::thread> threads;
    for (auto& texts : seen)
        threads.emplace_back([&read, &texts] {
            for (const TKStatementItem& item : *read.items())
                texts.push_back(item.transaction()->what().get());
        });
    for (auto& thread : threads) thread.join();
    for (const auto& texts : seen) EXPECT_EQ(texts, seen[0]);
    EXPECT_EQ(seen[0].size(), 60u);
}

TEST_F(TKTenureScheduleTest, ALineOutlivesItsStatementAndItsBook) {
    Ref<TKLedgerTransaction> line;
    {
        const Book short_lived;
        const auto other = short_lived.tenure(onDay(2025, 1, 1), 30, 1, 1000);
        other->setCurrentDate(onDay(2025, 2, 16));
        other->updatePeriods();
        line = (*other->statement()->items())[0].transaction();
    }
    EXPECT_EQ(shown(*line), "2025-02-01 -1000 Rent (Jan 1, 2025 \u2192 Feb 1, 2025)");
}

TEST_F(TKTenureScheduleTest, EachLineOutlivesTheOthers) {
    tenure->setBondAmount(Decimal(500));
    tenure->setCurrentDate(onDay(2025, 4, 1));
    for (std::size_t kept = 0; kept < 4; ++kept) {
        Ref<TKLedgerTransaction> line;
        std::string before;
        {
            const auto statement = rebuilt();
            ASSERT_EQ(statement->items()->count(), 4u);
            line = (*statement->items())[kept].transaction();
            before = shown(*line);
        }
        EXPECT_EQ(shown(*line), before);
    }
}

TEST_F(TKTenureScheduleTest, ALineCanBeEditedAndObservedLikeAnyTransaction) {
    const auto statement = rebuilt();
    const auto line = refCast<TKTenureTransaction>((*statement->items())[0].transaction());
    const auto listener = makeRef<bookkit::Listener>();
    listener->listenTo(*line, "details");
    line->setWhat(text("Rent, forgiven"));
    line->setAmount(Decimal(0));
    line->setAdjustment(Number(true));
    line->setReceipt(text("17"));
    EXPECT_EQ(listener->times("details"), 1u);
    EXPECT_EQ(shown(*line), "2025-02-01 0 Rent, forgiven");
    line->setWhat(nullptr);
    EXPECT_EQ(shown(*line), "2025-02-01 0 Rent (Jan 1, 2025 \u2192 Feb 1, 2025)");
}

TEST_F(TKTenureScheduleTest, NothingLeadsToALineThatIsGone) {
    const auto& model = tenure->entity().model();
    const auto loose = [&](const char* entity) {
        return ManagedObject::initWithEntityInsertIntoManagedObjectContext(*model.entityNamed(entity),
                                                                           nullptr);
    };
    const auto owner = refCast<TKTenure>(loose("Tenure"));
    const auto tag = refCast<TKTag>(loose("TransactionTag"));
    const auto primitive = refCast<TKTag>(loose("TransactionTag"));
    auto statement = rebuilt();
    auto line = refCast<TKTenureTransaction>((*statement->items())[0].transaction());
    line->setTenure(owner.get());
    tag->setValueForKey(Value(line), keys::owner);
    primitive->setPrimitiveValueForKey(Value(line), keys::owner);
    EXPECT_EQ(owner->transactions().count(), 1u);
    EXPECT_EQ(line->tags().count(), 1u);
    line = nullptr;
    statement = nullptr;
    EXPECT_TRUE(owner->transactions().empty());
    EXPECT_TRUE(tag->valueForKey(keys::owner).isAbsent());
    EXPECT_TRUE(primitive->valueForKey(keys::owner).isAbsent());
}

// Three statements checked by hand.

TEST_F(TKTenureScheduleTest, ByHandAMonthlyPartialTenureInArrears) {
    // Rent 840 a month from 15 November 2023, pro rata, today 24 February 2024.
    // 15 November to 15 December, to 15 January, to 15 February: 3 whole months, 2520.
    // 15 to 24 February are 9 days of the 29 to 15 March (a leap year): 840 × 9/29 = 260.689655…
    // Charged 2780.689655…, paid 840 + 840 + 900 = 2580: 200.69 is owed.
    tenure->setStartDate(onDay(2023, 11, 15));
    tenure->setRentalAmount(Decimal(840));
    tenure->setChargeBehaviour(Number(1));
    tenure->setCurrencyCode(text("EUR"));
    tenure->setCurrentDate(onDay(2024, 2, 24, 18));
    book.record(*tenure, 840, onDay(2023, 12, 15, 9))->setWhat(text("December"));
    book.record(*tenure, 840, onDay(2024, 1, 16))->setWhat(text("January"));
    book.record(*tenure, 900, onDay(2024, 2, 14))->setWhat(text("February"));
    const auto statement = rebuilt();
    const auto lines = linesOf(statement);
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[0], "2023-12-15 -840 Rent (Nov 15, 2023 \u2192 Dec 15, 2023)");
    EXPECT_EQ(lines[1], "2023-12-15 840 December");
    EXPECT_EQ(lines[2], "2024-01-15 -840 Rent (Dec 15, 2023 \u2192 Jan 15, 2024)");
    EXPECT_EQ(lines[3], "2024-01-16 840 January");
    EXPECT_EQ(lines[4], "2024-02-14 900 February");
    EXPECT_EQ(lines[5], "2024-02-15 -840 Rent (Jan 15, 2024 \u2192 Feb 15, 2024)");
    EXPECT_TRUE(lines[6].starts_with("2024-03-15 -260.6896551724137931034482758620")) << lines[6];
    EXPECT_TRUE(lines[6].ends_with("Partial Rent (Feb 15, 2024 \u2192 Mar 15, 2024)")) << lines[6];
    const auto balances = balancesOf(statement);
    const std::vector<Decimal> whole{-840, 0, -840, 0, 900, 60};
    EXPECT_TRUE(std::equal(whole.begin(), whole.end(), balances.begin()));
    EXPECT_TRUE(balances[6].toString().starts_with("-200.689655172413"));
    EXPECT_EQ(tenure->balance(), decimal("-200.69"));
}

TEST_F(TKTenureScheduleTest, ByHandAWeeklyTenureAheadByAFortnight) {
    // Rent 175.50 a week from Monday 3 March 2025, whole begun weeks, a fortnight ahead, today Thursday 20 March.
    // 3 to 20 March are 17 days, and 14 more ahead make 31: four whole weeks and 3 days, so 5 weeks are charged.
    // 5 × 175.50 = 877.50 on 3, 10, 17, 24 and 31 March. Paid 3 × 175.50 = 526.50: 351 are owed.
    tenure->setStartDate(onDay(2025, 3, 3));
    tenure->setRentalBillingCycle(Number(7u));
    tenure->setRentalAmount(decimal("175.50"));
    tenure->setChargeBehaviour(Number(2));
    tenure->setAdvanceBillingCycle(Number(7u));
    tenure->setAdvancePeriod(Number(2u));
    tenure->setCurrentDate(onDay(2025, 3, 20));
    for (const int day : {3, 11, 18})
        book.record(*tenure, decimal("175.50"), onDay(2025, 3, day, 12))->setWhat(text("Cash"));
    const auto statement = rebuilt();
    EXPECT_EQ(tenure->chargableDays().unsignedIntegerValue(), 31u);
    EXPECT_EQ(linesOf(statement),
              (Lines{"2025-03-03 -175.5 Rent (Mar 3, 2025 \u2192 Mar 10, 2025)", //
                     "2025-03-03 175.5 Cash",
                     "2025-03-10 -175.5 Rent (Mar 10, 2025 \u2192 Mar 17, 2025)", //
                     "2025-03-11 175.5 Cash",
                     "2025-03-17 -175.5 Rent (Mar 17, 2025 \u2192 Mar 24, 2025)", //
                     "2025-03-18 175.5 Cash", "2025-03-24 -175.5 Rent (Mar 24, 2025 \u2192 Mar 31, 2025)",
                     "2025-03-31 -175.5 Rent (Mar 31, 2025 \u2192 Apr 7, 2025)"}));
    EXPECT_EQ(balancesOf(statement), (std::vector<Decimal>{decimal("-175.5"), 0, decimal("-175.5"), 0,
                                                           decimal("-175.5"), 0, decimal("-175.5"), -351}));
    EXPECT_EQ(tenure->balance(), Decimal(-351));
}

TEST_F(TKTenureScheduleTest, ByHandABondAnAdjustmentAndAnAnchorAtTheMonthsEnd) {
    // Rent 1200 a month from 31 August 2024 to 28 February 2025, whole months, fully charged, bond 1800.
    // Months end on 30 September, 31 October, 30 November, 31 December and 31 January: 5 whole months. The sixth
    // would end on 28 February, the last day of the letting, which is reached: 31 August to 28 February are 181 days
    // (30 + 31 + 30 + 31 + 31 + 28), the sixth boundary. So 6 × 1200 = 7200 are charged, 9000 with the bond.
    // Paid: 1800 for the bond, as an adjustment, 7000 rent, and 150 credited for a broken heater: 8950. 50 are owed.
    tenure->setStartDate(onDay(2024, 8, 31));
    tenure->setEndDate(onDay(2025, 2, 28));
    tenure->setChargeFullDuration(Number(true));
    tenure->setRentalAmount(Decimal(1200));
    tenure->setBondAmount(Decimal(1800));
    tenure->setCurrentDate(onDay(2024, 10, 1));
    book.record(*tenure, 1800, onDay(2024, 8, 30), true)->setWhat(text("Bond"));
    book.record(*tenure, 7000, onDay(2024, 9, 30))->setWhat(text("Rent in one"));
    book.record(*tenure, 150, onDay(2024, 12, 31), true)->setWhat(text("Heater"));
    const auto statement = rebuilt();
    EXPECT_EQ(tenure->chargableDays().unsignedIntegerValue(), 181u);
    EXPECT_EQ(linesOf(statement),
              (Lines{"2024-08-30 1800 Bond", //
                     "2024-08-31 -1800 Bond Debit", "2024-09-30 7000 Rent in one",
                     "2024-09-30 -1200 Rent (Aug 31, 2024 \u2192 Sep 30, 2024)",
                     "2024-10-31 -1200 Rent (Sep 30, 2024 \u2192 Oct 31, 2024)",
                     "2024-11-30 -1200 Rent (Oct 31, 2024 \u2192 Nov 30, 2024)", "2024-12-31 150 Heater",
                     "2024-12-31 -1200 Rent (Nov 30, 2024 \u2192 Dec 31, 2024)",
                     "2025-01-31 -1200 Rent (Dec 31, 2024 \u2192 Jan 31, 2025)",
                     "2025-02-28 -1200 Rent (Jan 31, 2025 \u2192 Feb 28, 2025)"}));
    EXPECT_EQ(balancesOf(statement),
              (std::vector<Decimal>{1800, 0, 7000, 5800, 4600, 3400, 3550, 2350, 1150, -50}));
    EXPECT_EQ(tenure->totalIncome(), Decimal(7000));
    EXPECT_EQ(tenure->totalAdjustment(), Decimal(150));
    EXPECT_EQ(tenure->balance(), Decimal(-50));
}

} // namespace
} // namespace estatebook
