// SPDX-License-Identifier: MIT

// Lettings that awake while their settings cannot be read, and look-ups that must not take that for settings that are not there.

#include "platform/values/Exception.hpp"
#include "store/TKState.hpp"
#include "support/StoreKinds.hpp"
#include "support/WatchedStore.hpp"
#include "tenure/TKTenure.hpp"

#include <gtest/gtest.h>

namespace estatebook {
namespace {

using namespace platform;
using test::InMemoryPlace;
using test::WatchedStore;

class UnreadableSettingsTest : public testing::Test {
protected:
    InMemoryPlace place;
    Ref<WatchedStore> store = makeRef<WatchedStore>(Ref<Store>(&place.store()));
    Ref<ManagedObjectContext> book = open();

    UnreadableSettingsTest() {
        write(*book, "EUR");
        static_cast<void>(book->insertNewObject<TKTenure>("Tenure"));
        EXPECT_TRUE(book->save());
        book = open();
    }
    [[nodiscard]] Ref<ManagedObjectContext> open() const {
        auto coordinator = makeRef<PersistentStoreCoordinator>(test::bookModel());
        coordinator->addPersistentStore(Ref<Store>(store));
        auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
        context->setPersistentStoreCoordinator(std::move(coordinator));
        return context;
    }
    static void write(ManagedObjectContext& context, const char* currency) {
        TKState::updateStateWithNameValueInManagedObjectContext(Ref<String>(TKCurrencyCodeStateName),
                                                                Value(String::make(currency)), context);
    }
    [[nodiscard]] Ref<TKState> read() const {
        return TKState::readStateForNameInManagedObjectContext(Ref<String>(TKCurrencyCodeStateName), *book);
    }
};

TEST_F(UnreadableSettingsTest, ALettingAwakesWhenTheyCanBeReadAndNotBefore) {
    const auto letting = book->fetchAll<TKTenure>("Tenure").front();
    store->unreadable = StoreError{StoreErrorCode::Unreadable, "", "The disk is gone"};
    for (int attempt = 0; attempt < 2; ++attempt)
        EXPECT_THROW(static_cast<void>(letting->startDate()), ObjectInaccessibleException);
    EXPECT_TRUE(letting->isFault());
    EXPECT_FALSE(book->hasChanges());

    store->unreadable.reset();
    EXPECT_FALSE(letting->startDate());
    ASSERT_TRUE(letting->currencyCode());
    EXPECT_EQ(letting->currencyCode()->view(), "EUR");
    EXPECT_EQ(book->fetchAll<TKState>("State").size(), 2u);
    write(*book, "JPY");
    EXPECT_EQ(letting->currencyCode()->view(), "JPY");
}

TEST_F(UnreadableSettingsTest, ALettingThatWasTakenBackHasThemWithoutReading) {
    const auto letting = book->fetchAll<TKTenure>("Tenure").front();
    book->deleteObject(*letting);
    book->processPendingChanges();
    store->unreadable = StoreError{StoreErrorCode::Unreadable, "", "The disk is gone"};
    book->rollback();
    EXPECT_FALSE(book->hasChanges());
    store->unreadable.reset();
    write(*book, "JPY");
    ASSERT_TRUE(letting->currencyCode());
    EXPECT_EQ(letting->currencyCode()->view(), "JPY");
}

TEST_F(UnreadableSettingsTest, ReadingOneTellsWhatIsNotThereFromWhatCannotBeRead) {
    ASSERT_TRUE(read());
    EXPECT_EQ(read()->value().string()->view(), "EUR");
    EXPECT_FALSE(TKState::readStateForNameInManagedObjectContext(String::make("Colour"), *book));
    EXPECT_FALSE(book->hasChanges());
    store->unreadable = StoreError{StoreErrorCode::Unreadable, "", "The disk is gone"};
    try {
        static_cast<void>(read());
        ADD_FAILURE() << "nothing was told";
    } catch (const ObjectInaccessibleException& exception) {
        EXPECT_EQ(exception.reason(), "The disk is gone");
    }
}

} // namespace
} // namespace estatebook
