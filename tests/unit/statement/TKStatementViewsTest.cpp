// SPDX-License-Identifier: MIT
#include "statement/TKStatement.hpp"

#include "support/PlainTransaction.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace estatebook {
namespace {

using platform::Decimal;
using platform::Dictionary;
using platform::makeRef;
using platform::Ref;
using platform::String;
using test::PlainTransaction;
using test::tagged;
using testing::ElementsAre;
using testing::IsEmpty;

using Lines = std::vector<Ref<TKLedgerTransaction>>;

/// A statement whose lines have these balances.
Ref<TKStatement> withBalances(const std::vector<Decimal>& balances) {
    Lines lines;
    Decimal before;
    for (const Decimal& balance : balances) {
        lines.push_back(makeRef<PlainTransaction>(balance - before));
        before = balance;
    }
    return TKStatement::initWithTransactionsMetadata(lines);
}

std::vector<Decimal> outstanding(const std::vector<Decimal>& balances) {
    std::vector<Decimal> found;
    const auto items = withBalances(balances)->outstandingItems();
    for (const TKStatementItem& item : *items) found.push_back(item.balance());
    return found;
}

std::vector<std::string> tagsOf(const platform::ArrayOf<TKStatement>& statements) {
    std::vector<std::string> tags;
    for (const TKStatement& statement : statements) tags.push_back(statement.primaryTag()->string());
    return tags;
}

TEST(TKStatementViewsTest, AStatementWithoutLinesHasEmptyViews) {
    const auto statement = TKStatement::initWithTransactionsMetadata(Lines{});
    EXPECT_EQ(statement->outstandingItems()->count(), 0u);
    EXPECT_EQ(statement->byPrimaryTag()->count(), 0u);
}

TEST(TKStatementViewsTest, WhenTheBalanceNeverWasZeroAllLinesAreOutstanding) {
    EXPECT_THAT(outstanding({-50, -100}), ElementsAre(-50, -100));
}

TEST(TKStatementViewsTest, ALineAtZeroEndsTheSearch) {
    EXPECT_THAT(outstanding({-50, 0, -20, -40}), ElementsAre(-20, -40));
}

TEST(TKStatementViewsTest, ASettledStatementHasNoOutstandingLines) {
    EXPECT_THAT(outstanding({-50, 20}), IsEmpty());
    EXPECT_THAT(outstanding({-50, 0}), IsEmpty());
    EXPECT_THAT(outstanding({10}), IsEmpty());
}

TEST(TKStatementViewsTest, APaymentThatDoesNotSettleIsOutstandingToo) {
    EXPECT_THAT(outstanding({10, -100, -40, -60}), ElementsAre(-100, -40, -60));
}

TEST(TKStatementViewsTest, OutstandingItemsAreTheLinesThemselves) {
    const auto statement = withBalances({5, -1});
    EXPECT_EQ(&(*statement->outstandingItems())[0], &(*statement->items())[1]);
}

TEST(TKStatementViewsTest, OutstandingItemsOutliveTheirStatement) {
    const auto items = withBalances({-1, -2})->outstandingItems();
    EXPECT_EQ((*items)[1].balance(), -2);
}

TEST(TKStatementViewsTest, EachPrimaryTagHasAStatementOfItsOwn) {
    const auto first = tagged("A", -10);
    const auto untagged = makeRef<PlainTransaction>(-100);
    const auto third = tagged("A", 4);
    const auto other = tagged("B", 7);
    const auto groups =
        TKStatement::initWithTransactionsMetadata(Lines{first, untagged, third, other})->byPrimaryTag();
    ASSERT_THAT(tagsOf(*groups), ElementsAre("A", "B"));
    const auto& a = *(*groups)[0].items();
    ASSERT_EQ(a.count(), 2u);
    EXPECT_EQ(a[0].transaction(), first);
    EXPECT_EQ(a[0].balance(), -10);
    EXPECT_EQ(a[1].transaction(), third);
    EXPECT_EQ(a[1].balance(), -6);
    EXPECT_EQ((*groups)[1].items()->count(), 1u);
    EXPECT_EQ((*groups)[1].amount(), Decimal(7));
}

TEST(TKStatementViewsTest, GroupsStandInTheOrderInWhichTheirTagsFirstAppear) {
    const auto groups =
        TKStatement::initWithTransactionsMetadata(Lines{tagged("C"), tagged("A"), tagged("B"), tagged("A")})
            ->byPrimaryTag();
    EXPECT_THAT(tagsOf(*groups), ElementsAre("C", "A", "B"));
}

TEST(TKStatementViewsTest, WithoutTagsThereAreNoGroups) {
    EXPECT_EQ(withBalances({1, 2})->byPrimaryTag()->count(), 0u);
    EXPECT_EQ(TKStatement::initWithTransactionsMetadata(Lines{tagged("")})->byPrimaryTag()->count(), 0u);
}

TEST(TKStatementViewsTest, EquivalentSpellingsAreOneGroup) {
    const auto groups = TKStatement::initWithTransactionsMetadata(
                            Lines{tagged("Caf\u00e9"), tagged("Cafe\u0301"), tagged("caf\u00e9")})
                            ->byPrimaryTag();
    ASSERT_EQ(groups->count(), 2u);
    EXPECT_EQ((*groups)[0].items()->count(), 2u);
    EXPECT_EQ((*groups)[0].tagNames()->items()->count(), 2u);
    EXPECT_EQ((*groups)[1].primaryTag()->view(), "caf\u00e9");
}

TEST(TKStatementViewsTest, LetterCaseTellsGroupsApart) {
    const auto groups =
        TKStatement::initWithTransactionsMetadata(Lines{tagged("Rent"), tagged("rent")})->byPrimaryTag();
    EXPECT_THAT(tagsOf(*groups), ElementsAre("Rent", "rent"));
}

TEST(TKStatementViewsTest, SecondAndLaterTagsDoNotGroup) {
    const auto groups =
        TKStatement::initWithTransactionsMetadata(Lines{tagged("A, B"), tagged("A, C")})->byPrimaryTag();
    ASSERT_THAT(tagsOf(*groups), ElementsAre("A"));
    EXPECT_EQ((*groups)[0].tagNames()->editableString(), "A, B, C");
}

TEST(TKStatementViewsTest, GroupsHaveNoMetadata) {
    const auto metadata = Dictionary::make({{"what", String::make("x")}});
    const auto groups =
        TKStatement::initWithTransactionsMetadata(Lines{tagged("A")}, metadata)->byPrimaryTag();
    EXPECT_FALSE((*groups)[0].metadata());
    EXPECT_FALSE((*groups)[0].what());
}

} // namespace
} // namespace estatebook
