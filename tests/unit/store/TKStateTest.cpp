// SPDX-License-Identifier: MIT
#include "store/TKState.hpp"

#include "model/Keys.hpp"
#include "platform/values/Exception.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

#include <string>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::Listener;
using bookkit::LogLines;
using bookkit::shownText;
using bookkit::text;

Ref<String> name(std::string_view view) {
    return text(view);
}

Ref<TKState> insertState(const Book& book, std::string_view stateName, const Value& value) {
    auto state = book.insert<TKState>("State");
    state->setName(text(stateName));
    state->setValue(value);
    return state;
}

TEST(TKStateTest, TheSettingNamesHaveTheirTexts) {
    EXPECT_EQ(*TKCurrencyCodeStateName, "CurrencyCode");
    EXPECT_EQ(*TKBillingModeStateName, "BillingMode");
}

TEST(TKStateTest, FetchingANameNobodyWroteFindsNothing) {
    const Book book;
    const auto states =
        TKState::fetchStateForNameInManagedObjectContext(name("CurrencyCode"), book.context());
    ASSERT_TRUE(states);
    EXPECT_TRUE(states->empty());
    EXPECT_FALSE(book->hasChanges());
}

TEST(TKStateTest, FetchingANameFindsEveryStateOfThatName) {
    const Book book;
    const auto first = insertState(book, "CurrencyCode", Value(name("EUR")));
    insertState(book, "BillingMode", Value(1));
    const auto second = insertState(book, "CurrencyCode", Value(name("USD")));
    const auto states =
        TKState::fetchStateForNameInManagedObjectContext(name("CurrencyCode"), book.context());
    ASSERT_TRUE(states);
    EXPECT_EQ(*states, (std::vector{first, second}));
}

TEST(TKStateTest, AskingTwiceForAMissingStateMakesOneObject) {
    const Book book;
    const auto first = TKState::stateForKeyInManagedObjectContext(name("CurrencyCode"), book.context());
    const auto second = TKState::stateForKeyInManagedObjectContext(name("CurrencyCode"), book.context());
    EXPECT_EQ(first, second);
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 1u);
    EXPECT_EQ(shownText(first->name()), "CurrencyCode");
    EXPECT_TRUE(first->value().isAbsent());
}

TEST(TKStateTest, ALookUpThatMakesAStateLeavesItUnsaved) {
    const Book book;
    const auto state =
        TKState::stateForKeyInManagedObjectContext(Ref<String>(TKBillingModeStateName), book.context());
    EXPECT_TRUE(state->isInserted());
    EXPECT_EQ(state->managedObjectContext(), &book.context());
    EXPECT_EQ(state->entity().name(), "State");
    EXPECT_EQ(state->name(), TKBillingModeStateName) << "the very name that was given";
}

TEST(TKStateTest, AskingForAnExistingStateKeepsItsValue) {
    const Book book;
    const auto state = insertState(book, "CurrencyCode", Value(name("EUR")));
    EXPECT_EQ(TKState::stateForKeyInManagedObjectContext(name("CurrencyCode"), book.context()), state);
    EXPECT_EQ(shownText(state->value().string()), "EUR");
}

TEST(TKStateTest, TheValueOfANameNeverWrittenIsAbsentAndNothingIsMade) {
    const Book book;
    EXPECT_TRUE(TKState::valueForNameInManagedObjectContext(name("CurrencyCode"), book.context()).isAbsent());
    EXPECT_FALSE(book->hasChanges());
    EXPECT_EQ(book->objectCount(), 0u);
}

TEST(TKStateTest, TheValueIsTheVeryObjectThatWasWritten) {
    const Book book;
    const auto code = name("EUR");
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(code),
                                                            book.context());
    EXPECT_EQ(TKState::valueForNameInManagedObjectContext(name("CurrencyCode"), book.context()).string(),
              code);
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 1u);
}

TEST(TKStateTest, UpdatingAgainReplacesTheValueOfTheSameObject) {
    const Book book;
    TKState::updateStateWithNameValueInManagedObjectContext(name("BillingMode"), Value(0), book.context());
    const auto state = TKState::stateForKeyInManagedObjectContext(name("BillingMode"), book.context());
    TKState::updateStateWithNameValueInManagedObjectContext(name("BillingMode"), Value(1), book.context());
    EXPECT_EQ(state->value().unsignedIntegerValue(), 1u);
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 1u);
}

TEST(TKStateTest, UpdatingWithAnAbsentValueClearsAnExistingSetting) {
    const Book book;
    const auto state = insertState(book, "CurrencyCode", Value(name("EUR")));
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(), book.context());
    EXPECT_TRUE(state->value().isAbsent());
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 1u);
}

TEST(TKStateTest, UpdatingAMissingSettingWithAnAbsentValueMakesAnObjectWithoutOne) {
    const Book book;
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(), book.context());
    const auto states = book->fetchAll<TKState>("State");
    ASSERT_EQ(states.size(), 1u);
    EXPECT_EQ(shownText(states[0]->name()), "CurrencyCode");
    EXPECT_TRUE(states[0]->value().isAbsent());
}

TEST(TKStateTest, AnUpdateReachesWhoeverObservesTheValue) {
    const Book book;
    const auto state = TKState::stateForKeyInManagedObjectContext(name("CurrencyCode"), book.context());
    const auto listener = makeRef<Listener>();
    listener->listenTo(*state, "value", ObservingNew, TKCurrencyCodeStateName);
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(name("NZD")),
                                                            book.context());
    ASSERT_EQ(listener->heard().size(), 1u);
    EXPECT_EQ(listener->heard()[0].context, TKCurrencyCodeStateName);
}

class TKStateDuplicatesTest : public testing::Test {
protected:
    void expectOneWarning() const {
        ASSERT_EQ(log.lines().size(), 1u);
        const std::string& line = log.lines()[0];
        EXPECT_TRUE(line.starts_with("Warning, several items for state named CurrencyCode: (")) << line;
        EXPECT_NE(line.find(first->description()), std::string::npos) << line;
        EXPECT_NE(line.find(second->description()), std::string::npos) << line;
        EXPECT_EQ(line.find('\n'), std::string::npos) << "one line";
    }

    const Book book;
    const Ref<TKState> first = insertState(book, "CurrencyCode", Value(name("EUR")));
    const Ref<TKState> second = insertState(book, "CurrencyCode", Value(name("USD")));
    const LogLines log;
};

TEST_F(TKStateDuplicatesTest, LookingUpAStateWarnsAndGivesTheFirst) {
    EXPECT_EQ(TKState::stateForKeyInManagedObjectContext(name("CurrencyCode"), book.context()), first);
    expectOneWarning();
}

TEST_F(TKStateDuplicatesTest, ReadingAValueWarnsAndReadsTheFirst) {
    const auto value = TKState::valueForNameInManagedObjectContext(name("CurrencyCode"), book.context());
    EXPECT_EQ(shownText(value.string()), "EUR");
    expectOneWarning();
}

TEST_F(TKStateDuplicatesTest, UpdatingWarnsAndWritesTheFirstOnly) {
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(name("NZD")),
                                                            book.context());
    EXPECT_EQ(shownText(first->value().string()), "NZD");
    EXPECT_EQ(shownText(second->value().string()), "USD");
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 2u) << "duplicates are never removed";
    expectOneWarning();
}

TEST_F(TKStateDuplicatesTest, FetchingThemDoesNotWarn) {
    EXPECT_EQ(TKState::fetchStateForNameInManagedObjectContext(name("CurrencyCode"), book.context())->size(),
              2u);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TKStateDuplicatesTest, OnceOneIsDeletedTheOtherServesWithoutAWarning) {
    book->deleteObject(*first);
    EXPECT_EQ(TKState::stateForKeyInManagedObjectContext(name("CurrencyCode"), book.context()), second);
    EXPECT_TRUE(log.lines().empty());
}

TEST(TKStateTest, NamesThatDifferOnlyInLetterCaseAreDifferentSettings) {
    const Book book;
    const LogLines log;
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(name("EUR")),
                                                            book.context());
    TKState::updateStateWithNameValueInManagedObjectContext(name("currencycode"), Value(name("USD")),
                                                            book.context());
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 2u);
    const auto value = [&](std::string_view which) {
        return shownText(TKState::valueForNameInManagedObjectContext(name(which), book.context()).string());
    };
    EXPECT_EQ(value("CurrencyCode"), "EUR");
    EXPECT_EQ(value("currencycode"), "USD");
    EXPECT_EQ(value("CURRENCYCODE"), "(null)");
    EXPECT_TRUE(log.lines().empty());
}

TEST(TKStateTest, NamesThatAreOnlyCanonicallyEquivalentAreDifferentSettings) {
    const Book book;
    TKState::updateStateWithNameValueInManagedObjectContext(name("Caf\u00e9"), Value(1), book.context());
    EXPECT_TRUE(TKState::valueForNameInManagedObjectContext(name("Cafe\u0301"), book.context()).isAbsent());
}

TEST(TKStateTest, SettingsOfOneBookAreUnknownToAnother) {
    const Book book;
    const Book other;
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(name("EUR")),
                                                            book.context());
    EXPECT_TRUE(
        TKState::valueForNameInManagedObjectContext(name("CurrencyCode"), other.context()).isAbsent());
}

TEST(TKStateTest, NothingHereSaves) {
    const Book book;
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(name("EUR")),
                                                            book.context());
    EXPECT_TRUE(book->hasChanges());
    EXPECT_TRUE(book->save());
    EXPECT_FALSE(book->hasChanges());
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(name("USD")),
                                                            book.context());
    EXPECT_TRUE(book->hasChanges());
}

TEST(TKStateTest, AStateOutlivesASave) {
    const Book book;
    TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(name("EUR")),
                                                            book.context());
    ASSERT_TRUE(book->save());
    EXPECT_EQ(
        shownText(TKState::valueForNameInManagedObjectContext(name("CurrencyCode"), book.context()).string()),
        "EUR");
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 1u);
}

TEST(TKStateTest, AFetchThatFailsCountsAsFindingNothing) {
    // Without a model there is no entity to fetch, nor one to insert.
    const auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    EXPECT_FALSE(TKState::fetchStateForNameInManagedObjectContext(name("CurrencyCode"), *context));
    EXPECT_TRUE(TKState::valueForNameInManagedObjectContext(name("CurrencyCode"), *context).isAbsent());
    EXPECT_THROW((void)TKState::stateForKeyInManagedObjectContext(name("CurrencyCode"), *context),
                 InternalInconsistencyException);
    EXPECT_THROW(
        TKState::updateStateWithNameValueInManagedObjectContext(name("CurrencyCode"), Value(1), *context),
        InternalInconsistencyException);
}

TEST(TKStateTest, AValueMayBeOfAnyKind) {
    const Book book;
    for (const Value& value :
         {Value(true), Value(-3), Value(7u), Value(Decimal::parse("2.5")), Value(Date{12}),
          Value(name("EUR")), Value(Array::make({Value(1), Value(name("x"))}))}) {
        TKState::updateStateWithNameValueInManagedObjectContext(name("Anything"), value, book.context());
        EXPECT_TRUE(
            TKState::valueForNameInManagedObjectContext(name("Anything"), book.context()).isIdentical(value))
            << value.description();
    }
}

TEST(TKStateTest, AnAttributeNeverSetReadsAsAbsent) {
    const Book book;
    const auto state = book.insert<TKState>("State");
    EXPECT_FALSE(state->name());
    EXPECT_TRUE(state->value().isAbsent());
}

} // namespace
} // namespace estatebook
