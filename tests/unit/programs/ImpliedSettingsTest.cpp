// SPDX-License-Identifier: MIT

// What a book has set though its document does not say it, and what of it comes back.

#include "estatebook/book/ImpliedSettings.hpp"

#include "estatebook/book/StoredDocument.hpp"

#include "platform/values/Exception.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"
#include "support/Book.hpp"
#include "support/StoreKinds.hpp"
#include "support/WatchedStore.hpp"
#include "tenure/TKTenure.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace estatebook {
namespace {

using bookkit::DefaultZone;
using document::BookDocument;
using document::Setting;
using platform::Ref;
using platform::String;
using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

class ImpliedSettingsTest : public testing::Test {
protected:
    void take(const BookDocument& document) {
        const auto failed = takeDocument(document, *book, *store, {});
        ASSERT_FALSE(failed) << failed->message;
        save();
    }
    void set(std::string_view name, const Value& value) {
        TKState::updateStateWithNameValueInManagedObjectContext(String::make(name), value, *book);
        save();
    }
    Value value(std::string_view name) {
        return TKState::valueForNameInManagedObjectContext(String::make(name), *book);
    }
    StoredDocument stored() {
        auto document = StoredDocument::of(*store);
        EXPECT_TRUE(document);
        EXPECT_THAT(document->leftOut, IsEmpty());
        return *document;
    }
    void save() {
        Ref<platform::Error> error;
        EXPECT_TRUE(book->save(&error)) << error->localizedDescription();
    }

    const DefaultZone zone{"Asia/Kathmandu"};
    const Ref<platform::ManagedObjectContext> book = TKManagedObjectModel::inMemoryManagedObjectContext();
    const Ref<platform::Store> store = book->persistentStoreCoordinator()->addPersistentStore("InMemory", "");
};

TEST_F(ImpliedSettingsTest, ADocumentThatSaysNothingIsReckonedInTheZoneItWasReadIn) {
    take({});
    EXPECT_EQ(value("TimeZone").string()->view(), "Asia/Kathmandu");
    EXPECT_EQ(value("BillingMode").unsignedIntegerValue(), TKPeriodBillingModeStart);
    EXPECT_TRUE(value("CurrencyCode").isAbsent());
    EXPECT_EQ(stored().document, BookDocument());
    EXPECT_TRUE(stored().isZoneImplied);
}

TEST_F(ImpliedSettingsTest, WhatTheDocumentGivesIsItsOwn) {
    BookDocument document;
    document.timeZone = "Asia/Kathmandu";
    document.settings = {{"BillingMode", std::int64_t{0}}};
    take(document);
    EXPECT_EQ(stored().document, document);
    EXPECT_FALSE(stored().isZoneImplied);
    EXPECT_THAT(*store->metadata(), IsEmpty());
}

TEST_F(ImpliedSettingsTest, ANullOfTheDocumentIsKept) {
    BookDocument document;
    document.settings = {{"BillingMode", {}}};
    take(document);
    EXPECT_TRUE(value("BillingMode").isNullObject());
    EXPECT_EQ(stored().document, document);
}

TEST_F(ImpliedSettingsTest, WhatIsSetAnewIsTheBooksOwn) {
    take({});
    set("BillingMode", std::int64_t{1});
    EXPECT_THAT(stored().document.settings, ElementsAre(Setting{"BillingMode", std::int64_t{1}}));
    EXPECT_EQ(stored().document.timeZone, std::nullopt);
    set("TimeZone", String::make("Europe/London"));
    EXPECT_EQ(stored().document.timeZone, "Europe/London");
    EXPECT_FALSE(stored().isZoneImplied);
}

TEST_F(ImpliedSettingsTest, AnotherKindOfTheSameValueIsSetAnew) {
    take({});
    set("BillingMode", String::make("0"));
    EXPECT_THAT(stored().document.settings, ElementsAre(Setting{"BillingMode", std::string("0")}));
}

TEST_F(ImpliedSettingsTest, ADocumentThatComesIntoTheBookOfAnEmptyOneBringsItsOwn) {
    take({});
    BookDocument document;
    document.timeZone = "Asia/Kathmandu";
    document.settings = {{"BillingMode", std::int64_t{0}}};
    take(document);
    EXPECT_EQ(stored().document, document);
}

TEST_F(ImpliedSettingsTest, WhatTheBookHadBeforeStays) {
    set("TimeZone", String::make("Europe/London"));
    take({});
    EXPECT_EQ(stored().document.timeZone, "Europe/London");
    EXPECT_THAT(stored().document.settings, IsEmpty());
}

TEST_F(ImpliedSettingsTest, ASettingThatWasOnlyLookedForIsGivenItsValue) {
    static_cast<void>(TKState::stateForKeyInManagedObjectContext(Ref<String>(TKBillingModeStateName), *book));
    save();
    take({});
    EXPECT_FALSE(value("BillingMode").isAbsent());
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 2u);
    EXPECT_EQ(stored().document, BookDocument());
}

TEST(UnreadableImpliedSettingsTest, WhatCannotBeReadIsNotMadeASecondTime) {
    const DefaultZone zone{"Asia/Kathmandu"};
    const auto store = platform::makeRef<test::WatchedStore>(
        Ref<platform::Store>(platform::InMemoryStore::make(test::bookModel())));
    auto coordinator = platform::makeRef<platform::PersistentStoreCoordinator>(test::bookModel());
    coordinator->addPersistentStore(Ref<platform::Store>(store));
    const auto book = platform::makeRef<platform::ManagedObjectContext>(platform::ConcurrencyType::MainQueue);
    book->setPersistentStoreCoordinator(std::move(coordinator));
    store->unreadable = platform::StoreError{platform::StoreErrorCode::Unreadable, "", "The disk is gone"};
    EXPECT_THROW(static_cast<void>(takeDocument({}, *book, *store, {})),
                 platform::ObjectInaccessibleException);
    EXPECT_FALSE(book->hasChanges());
    EXPECT_THAT(*store->metadata(), IsEmpty());
}

} // namespace
} // namespace estatebook
