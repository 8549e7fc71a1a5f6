// SPDX-License-Identifier: MIT
#include "store/TKManagedObjectModel.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/values/Exception.hpp"
#include "store/EstateBook_ModelVersion.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string_view>
#include <type_traits>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::text;

static_assert(!std::is_default_constructible_v<TKManagedObjectModel>);
static_assert(static_cast<unsigned>(ConcurrencyType::MainQueue) == 2);

TEST(TKManagedObjectModelTest, TheContextIsBoundToTheMainQueue) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    EXPECT_EQ(context->concurrencyType(), ConcurrencyType::MainQueue);
}

TEST(TKManagedObjectModelTest, TheContextHasACoordinatorForTheModelOfTheResource) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    ASSERT_TRUE(context->persistentStoreCoordinator());
    const auto model = context->persistentStoreCoordinator()->managedObjectModel();
    ASSERT_TRUE(model);
    EXPECT_EQ(model->name(), "EstateBook");
    EXPECT_FALSE(TKManagedObjectModel::modelError());
}

TEST(TKManagedObjectModelTest, TheContextIsNewAndEmptyAndTheCallersAlone) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    EXPECT_EQ(context->referenceCount(), 1u);
    EXPECT_EQ(context->objectCount(), 0u);
    EXPECT_FALSE(context->hasChanges());
    EXPECT_TRUE(context->undoManager());
}

TEST(TKManagedObjectModelTest, TwoContextsAreIndependentAndTheirObjectsNeverMeet) {
    const Book book;
    const Book other;
    EXPECT_NE(&book.context(), &other.context());
    const auto flat = book.property("Flat 2");
    const auto tenure = other.tenure();
    EXPECT_EQ(book->fetchAll<TKProperty>("Property").size(), 1u);
    EXPECT_TRUE(other->fetchAll<TKProperty>("Property").empty());
    EXPECT_THROW(tenure->setProperty(flat.get()), InvalidArgumentException);
    EXPECT_FALSE(tenure->property());
    EXPECT_TRUE(flat->tenures().empty());
    EXPECT_THROW(other->deleteObject(*flat), InvalidArgumentException);
    EXPECT_FALSE(flat->isDeleted());
}

TEST(TKManagedObjectModelTest, ObjectsVanishWithTheirContextAndThenReadAsAbsent) {
    Ref<TKTenure> tenure;
    Ref<TKProperty> flat;
    {
        const Book book;
        flat = book.property("Flat 2");
        tenure = book.tenure(Date{0}, 30, 1, 1000);
        tenure->setProperty(flat.get());
    }
    EXPECT_FALSE(tenure->managedObjectContext());
    EXPECT_FALSE(tenure->startDate());
    EXPECT_FALSE(tenure->rentalAmount());
    EXPECT_FALSE(tenure->property());
    EXPECT_FALSE(flat->name());
    EXPECT_TRUE(flat->tenures().empty());
    EXPECT_EQ(tenure->balance(), Decimal::zero());
}

TEST(TKManagedObjectModelTest, SavingWithoutAStoreCommitsInMemory) {
    const Book book;
    const auto flat = book.property("Flat 2");
    EXPECT_TRUE(flat->isInserted());
    EXPECT_TRUE(book->save());
    EXPECT_FALSE(flat->isInserted());
    EXPECT_FALSE(book->hasChanges());
    EXPECT_EQ(book->fetchAll<TKProperty>("Property").size(), 1u);
}

TEST(EstateBook_ModelVersionTest, TheVersionStringIsTheseBytesAndAZero) {
    constexpr std::string_view expected = "@(#)PROGRAM:EstateBook_Model  PROJECT:EstateBook-1\n";
    EXPECT_EQ(std::memcmp(EstateBook_ModelVersionString, expected.data(), expected.size()), 0);
    EXPECT_EQ(EstateBook_ModelVersionString[expected.size()], 0);
    EXPECT_EQ(std::strlen(reinterpret_cast<const char*>(EstateBook_ModelVersionString)), expected.size());
}

TEST(EstateBook_ModelVersionTest, TheVersionNumberIsOne) {
    static_assert(std::is_same_v<decltype(EstateBook_ModelVersionNumber), const double>);
    EXPECT_EQ(EstateBook_ModelVersionNumber, 1.0);
}

} // namespace
} // namespace estatebook
