// SPDX-License-Identifier: MIT
#include "platform/persistence/UndoManager.hpp"

#include "platform/values/Exception.hpp"
#include "store/TKManagedObjectModel.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using testing::ElementsAre;

/// A number that remembers how to become what it was.
class Counter {
public:
    explicit Counter(UndoManager& manager) : manager_(manager) {}
    void set(int value) {
        manager_.registerUndo(this, [this, before = value_] { set(before); });
        value_ = value;
    }
    [[nodiscard]] int value() const { return value_; }

private:
    UndoManager& manager_;
    int value_ = 0;
};

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

class UndoGroupsTest : public testing::Test {
protected:
    Ref<UndoManager> manager = makeRef<UndoManager>();
    Counter counter{*manager};
};

TEST_F(UndoGroupsTest, AnEventIsOneStep) {
    counter.set(1);
    counter.set(2);
    manager->endEvent();
    counter.set(3);
    manager->undo();
    EXPECT_EQ(counter.value(), 2);
    manager->undo();
    EXPECT_EQ(counter.value(), 0);
    EXPECT_FALSE(manager->canUndo());
    manager->undo();
    EXPECT_EQ(counter.value(), 0);
}

TEST_F(UndoGroupsTest, RedoingGoesForwardAgainStepByStep) {
    for (const int value : {1, 2, 3}) {
        counter.set(value);
        manager->endEvent();
    }
    manager->undo();
    manager->undo();
    EXPECT_EQ(counter.value(), 1);
    manager->redo();
    EXPECT_EQ(counter.value(), 2);
    manager->undo();
    EXPECT_EQ(counter.value(), 1);
    manager->redo();
    manager->redo();
    EXPECT_EQ(counter.value(), 3);
    EXPECT_FALSE(manager->canRedo());
    EXPECT_TRUE(manager->canUndo());
}

TEST_F(UndoGroupsTest, ANewChangeEndsWhatCouldBeRedone) {
    counter.set(1);
    manager->undo();
    EXPECT_TRUE(manager->canRedo());
    counter.set(5);
    EXPECT_FALSE(manager->canRedo());
    manager->redo();
    EXPECT_EQ(counter.value(), 5);
}

TEST_F(UndoGroupsTest, ActionsAreCarriedOutInTheOppositeOrder) {
    std::vector<int> order;
    for (const int each : {1, 2, 3}) manager->registerUndo(this, [&order, each] { order.push_back(each); });
    manager->undo();
    EXPECT_THAT(order, ElementsAre(3, 2, 1));
}

TEST_F(UndoGroupsTest, GroupsBegunByHandNestAndAreUndoneTogether) {
    manager->setGroupsByEvent(false);
    manager->beginUndoGrouping();
    counter.set(1);
    manager->beginUndoGrouping();
    counter.set(2);
    EXPECT_EQ(manager->groupingLevel(), 2u);
    manager->endUndoGrouping();
    manager->endUndoGrouping();
    manager->undo();
    EXPECT_EQ(counter.value(), 0);
    manager->redo();
    EXPECT_EQ(counter.value(), 2);
}

TEST_F(UndoGroupsTest, AGroupWithoutChangesIsNoStep) {
    manager->setGroupsByEvent(false);
    manager->beginUndoGrouping();
    manager->endUndoGrouping();
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(UndoGroupsTest, MisusedGroupsRaiseAndChangeNothing) {
    EXPECT_THROW(manager->endUndoGrouping(), InternalInconsistencyException);
    manager->beginUndoGrouping();
    counter.set(1);
    EXPECT_THROW(manager->undo(), InternalInconsistencyException);
    manager->endUndoGrouping();
    EXPECT_THROW(manager->endUndoGrouping(), InternalInconsistencyException);
    manager->undo();
    EXPECT_EQ(counter.value(), 0);
    manager->setGroupsByEvent(false);
    EXPECT_THROW(counter.set(1), InternalInconsistencyException);
    EXPECT_EQ(counter.value(), 0);
}

TEST_F(UndoGroupsTest, NothingIsRememberedWhileRegistrationIsDisabled) {
    manager->disableUndoRegistration();
    counter.set(1);
    manager->enableUndoRegistration();
    EXPECT_FALSE(manager->canUndo());
    EXPECT_EQ(manager->groupingLevel(), 0u);
}

TEST_F(UndoGroupsTest, TheNameOfAStepStaysWithItThroughUndoAndRedo) {
    counter.set(1);
    manager->setActionName("Payment");
    EXPECT_EQ(manager->undoActionName(), "Payment");
    manager->endEvent();
    manager->setActionName("Nobody hears this");
    EXPECT_EQ(manager->undoActionName(), "Payment");
    counter.set(2);
    EXPECT_EQ(manager->undoActionName(), "");
    manager->undo();
    manager->undo();
    EXPECT_EQ(manager->undoActionName(), "");
    EXPECT_EQ(manager->redoActionName(), "Payment");
    manager->redo();
    EXPECT_EQ(manager->undoActionName(), "Payment");
}

TEST_F(UndoGroupsTest, OnlyTheLatestLevelsAreKept) {
    manager->setLevelsOfUndo(2);
    for (const int value : {1, 2, 3, 4}) {
        counter.set(value);
        manager->endEvent();
    }
    manager->undo();
    manager->undo();
    manager->undo();
    EXPECT_EQ(counter.value(), 2);
    manager->redo();
    manager->redo();
    EXPECT_EQ(counter.value(), 4);
    manager->setLevelsOfUndo(1);
    manager->undo();
    EXPECT_FALSE(manager->canUndo());
    EXPECT_EQ(counter.value(), 3);
}

TEST_F(UndoGroupsTest, ActionsOfATargetCanBeForgotten) {
    Counter other(*manager);
    counter.set(1);
    other.set(1);
    manager->endEvent();
    other.set(2);
    manager->endEvent();
    manager->removeAllActionsWithTarget(&other);
    manager->undo();
    EXPECT_EQ(counter.value(), 0);
    EXPECT_EQ(other.value(), 2);
    EXPECT_FALSE(manager->canUndo());
    EXPECT_TRUE(manager->canRedo());
    manager->removeAllActions();
    EXPECT_FALSE(manager->canRedo());
}

TEST_F(UndoGroupsTest, AnActionThatRaisesKeepsNoOtherFromItsWork) {
    counter.set(1);
    manager->registerUndo(this, [] { throw std::runtime_error("first"); });
    manager->registerUndo(this, [] { throw std::runtime_error("second"); });
    try {
        manager->undo();
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "second");
    }
    EXPECT_EQ(counter.value(), 0);
    EXPECT_FALSE(manager->isUndoing());
    manager->redo();
    EXPECT_EQ(counter.value(), 1);
}

TEST_F(UndoGroupsTest, AnUndoWithinAnUndoRaises) {
    manager->registerUndo(this, [&] { EXPECT_THROW(manager->undo(), InternalInconsistencyException); });
    manager->undo();
}

TEST_F(UndoGroupsTest, WhoAsksHasWhatIsPendingRegisteredFirst) {
    int pending = 7;
    manager->addCheckpoint(&pending, [&] {
        if (pending != 0) counter.set(std::exchange(pending, 0));
    });
    EXPECT_TRUE(manager->canUndo());
    EXPECT_EQ(counter.value(), 7);
    pending = 8;
    manager->undo();
    EXPECT_EQ(counter.value(), 0);
    manager->removeCheckpoint(&pending);
    pending = 9;
    EXPECT_FALSE(manager->canUndo());
    EXPECT_EQ(pending, 9);
}

} // namespace
} // namespace estatebook::platform
