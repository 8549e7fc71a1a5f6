// SPDX-License-Identifier: MIT
#include "statement/TKStatement.hpp"

#include "platform/values/Exception.hpp"
#include "support/PlainTransaction.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace estatebook {
namespace {

using platform::Date;
using platform::Decimal;
using platform::Dictionary;
using platform::makeRef;
using platform::Ref;
using platform::String;
using test::PlainTransaction;
using test::tagged;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_default_constructible_v<TKStatement>);
static_assert(!std::is_copy_constructible_v<TKStatement>);

using Lines = std::vector<Ref<TKLedgerTransaction>>;

Ref<TKStatement> statementOf(const Lines& lines, const Ref<Dictionary>& metadata = nullptr) {
    return TKStatement::initWithTransactionsMetadata(lines, metadata);
}

Lines amounts(const std::vector<Decimal>& given) {
    Lines lines;
    for (const Decimal& amount : given) lines.push_back(makeRef<PlainTransaction>(amount));
    return lines;
}

template <class Items>
std::vector<Decimal> balancesOf(const Items& items) {
    std::vector<Decimal> balances;
    for (const TKStatementItem& item : *items) balances.push_back(item.balance());
    return balances;
}

Ref<PlainTransaction> dated(double seconds, const Decimal& amount = 1) {
    return makeRef<PlainTransaction>(amount, Date{seconds});
}

// Construction

TEST(TKStatementTest, WithoutTransactionsAStatementIsEmpty) {
    const auto statement = statementOf({});
    EXPECT_EQ(statement->items()->count(), 0u);
    EXPECT_TRUE(statement->isEmpty());
    EXPECT_FALSE(statement->amount());
    EXPECT_FALSE(statement->when());
    EXPECT_TRUE(statement->tagNames()->isEmpty());
    EXPECT_FALSE(statement->primaryTag());
    EXPECT_FALSE(statement->what());
    EXPECT_FALSE(statement->metadata());
}

TEST(TKStatementTest, EachLineHasTheBalanceAfterItsOwnAmount) {
    const auto statement = statementOf(amounts({100, -30, -80}));
    EXPECT_THAT(balancesOf(statement->items()), ElementsAre(100, 70, -10));
    EXPECT_EQ(statement->amount(), Decimal(-10));
    EXPECT_FALSE(statement->isEmpty());
}

TEST(TKStatementTest, AnotherOrderHasOtherBalancesAndTheSameAmount) {
    const auto statement = statementOf(amounts({-80, 100, -30}));
    EXPECT_THAT(balancesOf(statement->items()), ElementsAre(-80, 20, -10));
    EXPECT_EQ(statement->amount(), Decimal(-10));
}

TEST(TKStatementTest, ATransactionWithoutAnAmountHasALineWithThePreviousBalance) {
    const auto statement = statementOf(
        {makeRef<PlainTransaction>(10), makeRef<PlainTransaction>(), makeRef<PlainTransaction>(5)});
    EXPECT_THAT(balancesOf(statement->items()), ElementsAre(10, 10, 15));
}

TEST(TKStatementTest, BalancesAreExact) {
    const auto statement = statementOf(amounts(std::vector<Decimal>(1000, Decimal::parse("0.1"))));
    EXPECT_EQ(statement->amount(), Decimal(100));
}

TEST(TKStatementTest, LinesKeepTheOrderAndTheIdentityOfTheTransactions) {
    const Lines lines{dated(20), dated(10)};
    const auto statement = statementOf(lines);
    EXPECT_EQ((*statement->items())[0].transaction(), lines[0]);
    EXPECT_EQ((*statement->items())[1].transaction(), lines[1]);
    EXPECT_EQ(statement->when(), Date{20});
}

TEST(TKStatementTest, OneTransactionMayStandOnSeveralLines) {
    const auto transaction = makeRef<PlainTransaction>(3);
    const auto statement = statementOf({transaction, transaction});
    EXPECT_THAT(balancesOf(statement->items()), ElementsAre(3, 6));
    EXPECT_EQ(transaction->referenceCount(), 3u);
}

TEST(TKStatementTest, TheDateIsThatOfTheFirstLineEvenWhenItHasNone) {
    EXPECT_FALSE(statementOf({makeRef<PlainTransaction>(1), dated(5)})->when());
}

// Range

Ref<Dictionary> range(platform::Value start, platform::Value end) {
    std::vector<Dictionary::Entry> entries;
    if (!start.isAbsent()) entries.emplace_back("startDate", start);
    if (!end.isAbsent()) entries.emplace_back("endDate", end);
    return Dictionary::make(entries);
}

TEST(TKStatementTest, TransactionsAtTheBoundsOfTheRangeAreKept) {
    const auto statement = statementOf({dated(10), dated(15), dated(20)}, range(Date{10}, Date{20}));
    EXPECT_THAT(balancesOf(statement->items()), ElementsAre(1, 2, 3));
}

TEST(TKStatementTest, TransactionsAMomentOutsideTheRangeAreLeftOutOfTheBalance) {
    const double before = std::nextafter(10.0, 0.0);
    const double after = std::nextafter(20.0, 30.0);
    const auto statement = statementOf({dated(before, 100), dated(10, 1), dated(after, 1000), dated(20, 2)},
                                       range(Date{10}, Date{20}));
    EXPECT_THAT(balancesOf(statement->items()), ElementsAre(1, 3));
    EXPECT_EQ(statement->when(), Date{10});
}

TEST(TKStatementTest, OneBoundLeavesTheOtherSideOpen) {
    const Lines lines{dated(-1e9), dated(15), dated(1e9)};
    EXPECT_EQ(statementOf(lines, range(Date{15}, {}))->items()->count(), 2u);
    EXPECT_EQ(statementOf(lines, range({}, Date{15}))->items()->count(), 2u);
}

TEST(TKStatementTest, AReversedRangeKeepsUndatedTransactionsOnly) {
    const auto statement = statementOf({dated(15), makeRef<PlainTransaction>(7)}, range(Date{20}, Date{10}));
    EXPECT_THAT(balancesOf(statement->items()), ElementsAre(7));
}

TEST(TKStatementTest, AnUndatedTransactionIsKeptInARange) {
    const auto statement = statementOf({makeRef<PlainTransaction>(4)}, range(Date{10}, Date{20}));
    EXPECT_THAT(balancesOf(statement->items()), ElementsAre(4));
}

TEST(TKStatementTest, ABoundThatIsNoDateLeavesItsSideOpen) {
    const auto metadata = range(String::make("2025-01-01"), Date{20});
    EXPECT_EQ(statementOf({dated(-100), dated(20), dated(30)}, metadata)->items()->count(), 2u);
    EXPECT_EQ(statementOf({dated(-100), dated(30)}, range({}, 20))->items()->count(), 2u);
}

TEST(TKStatementTest, WhenEverythingIsLeftOutTheStatementIsEmpty) {
    const auto statement = statementOf({dated(1)}, range(Date{2}, {}));
    EXPECT_TRUE(statement->isEmpty());
    EXPECT_FALSE(statement->amount());
}

// Metadata

TEST(TKStatementTest, MetadataIsKeptAsGiven) {
    const auto metadata = Dictionary::make({{"what", String::make("Flat 2")}, {"other", 7}});
    const auto statement = statementOf({}, metadata);
    EXPECT_EQ(statement->metadata(), metadata);
    EXPECT_EQ(statement->what()->view(), "Flat 2");
}

TEST(TKStatementTest, AWhatThatIsNoTextIsAbsent) {
    EXPECT_FALSE(statementOf({}, Dictionary::make({{"what", 7}}))->what());
    EXPECT_FALSE(statementOf({}, Dictionary::make({}))->what());
}

TEST(TKStatementTest, TheMappedClassNameIsTheSameForEveryStatement) {
    EXPECT_EQ(statementOf({})->mappedClassName()->view(), "TKStatement");
    EXPECT_EQ(platform::refCast<QBXMLMappedClass>(statementOf(amounts({1})))->mappedClassName()->view(),
              "TKStatement");
}

TEST(TKStatementTest, TheClassIsKnownByItsModule) {
    EXPECT_EQ(statementOf({})->runtimeClassName(), "EstateBook_Model.TKStatement");
}

// Tags

TEST(TKStatementTest, TagNamesAreGatheredInTheOrderOfTheLines) {
    const auto statement = statementOf({tagged("A, B"), makeRef<PlainTransaction>(1), tagged("B, C")});
    EXPECT_EQ(statement->tagNames()->editableString(), "A, B, C");
    EXPECT_EQ(statement->primaryTag()->view(), "A");
}

TEST(TKStatementTest, TagsOfLeftOutTransactionsDoNotAppear) {
    const auto dropped = makeRef<PlainTransaction>(1, Date{0}, TKTagNames::initWithEditableString("Gone"));
    const auto kept = makeRef<PlainTransaction>(1, Date{10}, TKTagNames::initWithEditableString("Kept"));
    EXPECT_EQ(statementOf({dropped, kept}, range(Date{5}, {}))->tagNames()->editableString(), "Kept");
}

TEST(TKStatementTest, TagNamesSharedByLinesAreGatheredOnce) {
    const auto names = TKTagNames::initWithEditableString("A, B");
    Lines lines;
    for (int count = 0; count < 5; ++count)
        lines.push_back(makeRef<PlainTransaction>(1, std::nullopt, names));
    lines.push_back(tagged("C"));
    lines.push_back(makeRef<PlainTransaction>(1, std::nullopt, names));
    const auto statement = statementOf(lines);
    EXPECT_EQ(statement->tagNames()->editableString(), "A, B, C");
    EXPECT_FALSE(statement->tagNames() == names);
}

TEST(TKStatementTest, ManyDifferentTagsAreGathered) {
    Lines lines;
    for (int number = 0; number < 300; ++number)
        lines.push_back(tagged(std::to_string(number % 100) + ",x" + std::to_string(number % 3)));
    EXPECT_EQ(statementOf(lines)->tagNames()->items()->count(), 103u);
}

// Nesting and lifetime

TEST(TKStatementTest, AStatementCanStandOnAStatement) {
    const auto inner =
        statementOf({makeRef<PlainTransaction>(100, Date{5}, TKTagNames::initWithEditableString("Rent")),
                     makeRef<PlainTransaction>(-30)},
                    Dictionary::make({{"what", String::make("Flat 2")}}));
    const auto outer = statementOf({inner, makeRef<PlainTransaction>(1)}, range(Date{5}, Date{5}));
    EXPECT_THAT(balancesOf(outer->items()), ElementsAre(70, 71));
    EXPECT_EQ(outer->when(), Date{5});
    EXPECT_EQ(outer->primaryTag()->view(), "Rent");
    EXPECT_EQ((*outer->items())[0].transaction()->what()->view(), "Flat 2");
}

TEST(TKStatementTest, AListOfOneClassOfTransactionsIsTaken) {
    const auto list =
        platform::ArrayOf<PlainTransaction>::of({makeRef<PlainTransaction>(2), makeRef<PlainTransaction>(3)});
    EXPECT_EQ(TKStatement::initWithTransactionsMetadata(list)->amount(), Decimal(5));
}

TEST(TKStatementTest, AnItemOutlivesItsStatement) {
    const auto transaction = tagged("A", 7);
    Ref<TKStatementItem> item(&(*statementOf({transaction})->items())[0]);
    EXPECT_EQ(item->balance(), 7);
    EXPECT_EQ(item->primaryTag()->view(), "A");
    EXPECT_EQ(transaction->referenceCount(), 2u);
    item = nullptr;
    EXPECT_EQ(transaction->referenceCount(), 1u);
}

TEST(TKStatementTest, ASumThatNoDecimalHoldsRaisesAndLeavesNothingBehind) {
    const auto huge = makeRef<PlainTransaction>(Decimal::parse("99999999999999999999999999999999999999e127"));
    EXPECT_THROW((void)statementOf({makeRef<PlainTransaction>(1), huge, huge}), platform::OverflowException);
    EXPECT_EQ(huge->referenceCount(), 1u);
}

TEST(TKStatementTest, ABuiltStatementIsReadFromManyThreads) {
    const auto statement =
        statementOf({tagged("A", -1), tagged("B", -2)}, Dictionary::make({{"what", String::make("x")}}));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int count = 0; count < 500; ++count) {
                EXPECT_EQ(statement->amount(), Decimal(-3));
                EXPECT_EQ(statement->what()->view(), "x");
                EXPECT_EQ(statement->primaryTag()->view(), "A");
                EXPECT_EQ(statement->outstandingItems()->count(), 2u);
            }
        });
    for (std::thread& thread : threads) thread.join();
}

} // namespace
} // namespace estatebook
