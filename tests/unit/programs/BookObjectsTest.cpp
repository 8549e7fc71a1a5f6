// SPDX-License-Identifier: MIT

// Objects of a document that are to be kept.

#include "estatebook/BookObjects.hpp"

#include "estatebook/book/StoredDocument.hpp"

#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"
#include "support/Book.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace estatebook {
namespace {

using document::BookDocument;
using platform::Ref;
using platform::String;
using platform::Value;

BookDocument documentWith(std::vector<document::Setting> settings) {
    BookDocument document;
    document.settings = std::move(settings);
    document.tenures.resize(20);
    return document;
}

std::vector<document::Setting> manyWith(std::size_t currencyAt, std::size_t modeAt) {
    std::vector<document::Setting> settings;
    for (std::size_t i = 0; i < 300; ++i) settings.push_back({"S" + std::to_string(i), std::int64_t{1}});
    settings[currencyAt] = {TKCurrencyCodeStateName->string(), std::string("NPR")};
    settings[modeAt] = {TKBillingModeStateName->string(), std::int64_t{1}};
    return settings;
}

class BookObjectsTest : public testing::TestWithParam<std::pair<std::size_t, std::size_t>> {
protected:
    void save() {
        Ref<platform::Error> error;
        ASSERT_TRUE(book->save(&error)) << error->localizedDescription();
    }
    /// What each look-up of a setting goes through: the settings made before.
    std::size_t statesBefore(const platform::ManagedObject& object) {
        const auto states = book->fetchAll<TKState>("State");
        return static_cast<std::size_t>(std::ranges::count_if(
            states, [&](const auto& state) { return state->creationNumber() < object.creationNumber(); }));
    }

    const Ref<platform::ManagedObjectContext> book = TKManagedObjectModel::inMemoryManagedObjectContext();
    const Ref<platform::Store> store = book->persistentStoreCoordinator()->addPersistentStore("InMemory", "");
};

TEST_P(BookObjectsTest, TenuresLookThroughFewSettingsHoweverManyThereAre) {
    const auto [currencyAt, modeAt] = GetParam();
    const BookDocument document = documentWith(manyWith(currencyAt, modeAt));
    const auto made = BookObjects::keptOfDocument(document, *book);
    EXPECT_LE(statesBefore(*made.lettings.front().object), 2u);
    EXPECT_LE(statesBefore(*made.lettings.back().object), 2u);
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 300u) << "none stands in for another any more";
}

TEST_P(BookObjectsTest, SettingsKeepTheirOrder) {
    const auto [currencyAt, modeAt] = GetParam();
    const BookDocument document = documentWith(manyWith(currencyAt, modeAt));
    BookObjects::keptOfDocument(document, *book);
    save();
    EXPECT_EQ(StoredDocument::of(*store)->document.settings, document.settings);
}

TEST_P(BookObjectsTest, TenuresFollowTheSettingsThatAreKept) {
    const auto [currencyAt, modeAt] = GetParam();
    const auto made = BookObjects::keptOfDocument(documentWith(manyWith(currencyAt, modeAt)), *book);
    const auto set = [&](String* name, const Value& value) {
        TKState::updateStateWithNameValueInManagedObjectContext(Ref<String>(name), value, *book);
    };
    for (int round = 0; round < 2; ++round) {
        for (const auto& [id, tenure] : made.lettings) {
            EXPECT_EQ(tenure->currencyCode()->view(), round == 0 ? "NPR" : "GBP");
            EXPECT_EQ(tenure->billingMode(), round == 0 ? 1u : 0u);
        }
        set(TKCurrencyCodeStateName, String::make("GBP"));
        set(TKBillingModeStateName, std::int64_t{0});
    }
    save();
}

INSTANTIATE_TEST_SUITE_P(Places, BookObjectsTest,
                         testing::Values(std::pair(0, 1), std::pair(1, 0), std::pair(0, 299),
                                         std::pair(299, 0), std::pair(298, 299), std::pair(150, 20)));

} // namespace
} // namespace estatebook
