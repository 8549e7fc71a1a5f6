// SPDX-License-Identifier: MIT
#include "statement/TKStatementItem.hpp"

#include "support/PlainTransaction.hpp"

#include <gtest/gtest.h>

#include <type_traits>

namespace estatebook {
namespace {

using platform::Ref;
using test::PlainTransaction;
using test::tagged;

static_assert(!std::is_default_constructible_v<TKStatementItem>);
static_assert(!std::is_copy_constructible_v<TKStatementItem>);

TEST(TKStatementItemTest, ATransactionWithoutTagNamesHasNoPrimaryTag) {
    const auto transaction = platform::makeRef<PlainTransaction>();
    EXPECT_FALSE(TKStatementItem::initWithTransactionBalance(transaction, 1)->primaryTag());
}

TEST(TKStatementItemTest, ATransactionWithEmptyTagNamesHasNoPrimaryTag) {
    EXPECT_FALSE(TKStatementItem::initWithTransactionBalance(tagged(""), 1)->primaryTag());
}

TEST(TKStatementItemTest, ThePrimaryTagIsTheFirstNameAtTheTimeOfReading) {
    const auto transaction = tagged("A, B");
    const auto item = TKStatementItem::initWithTransactionBalance(transaction, 70);
    EXPECT_EQ(item->primaryTag()->view(), "A");
    transaction->setTagNames(TKTagNames::initWithEditableString("B, A"));
    EXPECT_EQ(item->primaryTag()->view(), "B");
    EXPECT_EQ(item->balance(), 70);
}

TEST(TKStatementItemTest, TwoItemsOfOneTransactionKeepTheirBalances) {
    const auto transaction = platform::makeRef<PlainTransaction>(5);
    const auto first = TKStatementItem::initWithTransactionBalance(transaction, 5);
    const auto second = TKStatementItem::initWithTransactionBalance(transaction, 10);
    EXPECT_EQ(first->transaction(), second->transaction());
    EXPECT_EQ(first->balance(), 5);
    EXPECT_EQ(second->balance(), 10);
}

TEST(TKStatementItemTest, AnItemHoldsItsTransaction) {
    Ref<PlainTransaction> transaction = tagged("A");
    auto item = TKStatementItem::initWithTransactionBalance(transaction, 1);
    EXPECT_EQ(transaction->referenceCount(), 2u);
    item = nullptr;
    EXPECT_EQ(transaction->referenceCount(), 1u);
}

TEST(TKStatementItemTest, TheClassIsKnownByItsModule) {
    EXPECT_EQ(TKStatementItem::initWithTransactionBalance(tagged("A"), 1)->runtimeClassName(),
              "EstateBook_Model.TKStatementItem");
}

} // namespace
} // namespace estatebook
