// SPDX-License-Identifier: MIT
#include "platform/persistence/UndoManager.hpp"

#include "platform/values/Exception.hpp"
#include "store/TKManagedObjectModel.hpp"

#include <gtest/gtest.h>

namespace estatebook::platform {
namespace {

TEST(UndoManagerTest, DisablingIsCounted) {
    const auto manager = makeRef<UndoManager>();
    EXPECT_TRUE(manager->isUndoRegistrationEnabled());
    manager->disableUndoRegistration();
    manager->disableUndoRegistration();
    manager->enableUndoRegistration();
    EXPECT_FALSE(manager->isUndoRegistrationEnabled());
    manager->enableUndoRegistration();
    EXPECT_TRUE(manager->isUndoRegistrationEnabled());
}

TEST(UndoManagerTest, EnablingMoreOftenThanDisablingRaisesAndChangesNothing) {
    const auto manager = makeRef<UndoManager>();
    try {
        manager->enableUndoRegistration();
        FAIL();
    } catch (const InternalInconsistencyException& exception) {
        EXPECT_EQ(exception.name(), "NSInternalInconsistencyException");
    }
    manager->disableUndoRegistration();
    EXPECT_FALSE(manager->isUndoRegistrationEnabled());
    manager->enableUndoRegistration();
    EXPECT_TRUE(manager->isUndoRegistrationEnabled());
}

TEST(UndoManagerTest, AContextHasOneThatCanBeTakenAwayAndShared) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    ASSERT_TRUE(context->undoManager());
    EXPECT_TRUE(context->undoManager()->isUndoRegistrationEnabled());
    context->setUndoManager(nullptr);
    EXPECT_FALSE(context->undoManager());
    EXPECT_TRUE(context->save());
    const auto own = makeRef<UndoManager>();
    context->setUndoManager(own);
    EXPECT_EQ(context->undoManager(), own);
}

} // namespace
} // namespace estatebook::platform
