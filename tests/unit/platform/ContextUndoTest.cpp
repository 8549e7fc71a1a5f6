// SPDX-License-Identifier: MIT

// Undo, redo, rollback and faults of a context's objects.

#include "support/ObservedPerson.hpp"
#include "support/ProbedContext.hpp"

#include "billing/TKPeriodicBilling.hpp"
#include "model/Keys.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "statement/TKStatement.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKState.hpp"
#include "store/TKTenant.hpp"
#include "store/TKTenureTransaction.hpp"
#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace estatebook::platform {
namespace {

using test::Hooks;
using test::probedContext;
using test::ProbeNote;
using test::ProbeState;
using test::text;
using testing::ElementsAre;
using testing::IsEmpty;

class ContextUndoTest : public testing::Test {
protected:
    Ref<ManagedObjectContext> context = TKManagedObjectModel::inMemoryManagedObjectContext();
    Ref<UndoManager> undo = context->undoManager();

    Ref<TKProperty> property(std::string_view name) {
        auto made = context->insertNewObject<TKProperty>("Property");
        made->setName(text(name));
        return made;
    }
    Ref<TKTenure> tenure() { return context->insertNewObject<TKTenure>("Tenure"); }
    /// What was done so far is a step of its own.
    void step() { undo->endEvent(); }
    template <class T>
    std::vector<T*> all(std::string_view entity) {
        std::vector<T*> found;
        for (const auto& each : context->fetchAll<T>(entity)) found.push_back(each.get());
        return found;
    }
};

TEST_F(ContextUndoTest, AnAttributeReturnsWithTheVeryObjectItHeld) {
    const auto flat = property("Elm Street");
    const auto name = flat->name();
    step();
    flat->setName(text("Oak Lane"));
    flat->setName(text("Oak Alley"));
    context->undo();
    EXPECT_EQ(flat->name(), name);
    context->redo();
    EXPECT_EQ(flat->name()->string(), "Oak Alley");
}

TEST_F(ContextUndoTest, AnUndoneInsertionLeavesAndReturnsAsTheSameObject) {
    const auto flat = property("Elm Street");
    const auto number = flat->creationNumber();
    context->undo();
    EXPECT_THAT(all<TKProperty>("Property"), IsEmpty());
    EXPECT_FALSE(flat->managedObjectContext());
    EXPECT_FALSE(flat->name());
    context->redo();
    EXPECT_THAT(all<TKProperty>("Property"), ElementsAre(flat.get()));
    EXPECT_EQ(flat->name()->string(), "Elm Street");
    EXPECT_EQ(flat->creationNumber(), number);
    EXPECT_TRUE(flat->isInserted());
}

TEST_F(ContextUndoTest, ReturningObjectsAreFetchedInTheOrderOfTheirCreation) {
    const auto first = property("First");
    step();
    const auto second = property("Second");
    step();
    context->deleteObject(*first);
    context->processPendingChanges();
    EXPECT_THAT(all<TKProperty>("Property"), ElementsAre(second.get()));
    context->undo();
    EXPECT_THAT(all<TKProperty>("Property"), ElementsAre(first.get(), second.get()));
}

TEST_F(ContextUndoTest, ADeletionBringsBackLinksOfBothSides) {
    const auto flat = property("Elm Street");
    const auto letting = tenure();
    letting->setProperty(flat.get());
    auto* payment = letting->createTransaction();
    payment->setAmount(Decimal(250));
    step();
    context->deleteObject(*letting);
    context->processPendingChanges();
    EXPECT_EQ(flat->tenures().count(), 0u);
    EXPECT_THAT(all<TKTenureTransaction>("TenureTransaction"), IsEmpty());
    context->undo();
    ASSERT_EQ(flat->tenures().count(), 1u);
    EXPECT_EQ(letting->property(), flat.get());
    ASSERT_EQ(letting->transactions().count(), 1u);
    EXPECT_EQ(letting->transactions()[0].amount(), Decimal(250));
    EXPECT_EQ(flat->tenureIncome(), Decimal(250));
    context->redo();
    EXPECT_EQ(flat->tenures().count(), 0u);
    EXPECT_THAT(all<TKTenureTransaction>("TenureTransaction"), IsEmpty());
}

TEST_F(ContextUndoTest, ASavedDeletionReturnsAsAnInsertion) {
    const auto flat = property("Elm Street");
    ASSERT_TRUE(context->save());
    step();
    context->deleteObject(*flat);
    ASSERT_TRUE(context->save());
    EXPECT_FALSE(flat->managedObjectContext());
    context->undo();
    EXPECT_TRUE(flat->isInserted());
    EXPECT_EQ(flat->name()->string(), "Elm Street");
    EXPECT_TRUE(context->save());
    EXPECT_FALSE(flat->hasChanges());
    context->redo();
    EXPECT_TRUE(flat->isDeleted());
}

TEST_F(ContextUndoTest, AnUnsavedDeletionReturnsAsWhatItWas) {
    const auto flat = property("Elm Street");
    ASSERT_TRUE(context->save());
    step();
    context->deleteObject(*flat);
    context->undo();
    EXPECT_FALSE(flat->isDeleted());
    EXPECT_FALSE(flat->isInserted());
    EXPECT_TRUE(context->save());
    EXPECT_THAT(all<TKProperty>("Property"), ElementsAre(flat.get()));
}

TEST_F(ContextUndoTest, ARefusedDeletionIsTakenBackByAnUndo) {
    const auto flat = property("Elm Street");
    const auto letting = tenure();
    letting->setStartDate(Date{0});
    letting->setProperty(flat.get());
    step();
    context->deleteObject(*flat);
    Ref<Error> error;
    EXPECT_FALSE(context->save(&error));
    context->undo();
    EXPECT_FALSE(flat->isDeleted());
    EXPECT_EQ(letting->property(), flat.get());
    const auto own = context->executeFetchRequest({"Property"}).value();
    EXPECT_EQ(own.size(), 1u);
}

TEST_F(ContextUndoTest, ADeletionThatIsCarriedOutAfterARefusalIsUndoneWithItsCause) {
    const auto flat = property("Elm Street");
    const auto letting = tenure();
    letting->setProperty(flat.get());
    step();
    context->deleteObject(*flat);
    context->processPendingChanges();
    step();
    context->deleteObject(*letting);
    context->processPendingChanges();
    EXPECT_FALSE(flat->managedObjectContext());
    context->undo();
    EXPECT_EQ(flat->name()->string(), "Elm Street");
    EXPECT_EQ(letting->property(), flat.get());
    EXPECT_EQ(flat->tenures().count(), 1u);
    context->redo();
    EXPECT_FALSE(flat->managedObjectContext());
    EXPECT_FALSE(letting->managedObjectContext());
}

TEST_F(ContextUndoTest, AMemberReturnsToItsPlaceInAnOrderedRelationship) {
    const auto flat = property("Elm Street");
    auto tags = flat->mutableOrderedSetValueForKey(keys::tags);
    for (const char* name : {"Rent", "Repairs", "Rates"})
        tags.addObject(*flat->createTagWithName(text(name)));
    const std::vector<TKTag*> before{&flat->tags()[0], &flat->tags()[1], &flat->tags()[2]};
    step();
    tags.removeObjectAtIndex(1);
    step();
    tags.insertObjectAtIndex(*flat->createTagWithName(text("Water")), 0);
    step();
    context->undo();
    context->undo();
    const auto now = flat->tags();
    EXPECT_THAT((std::vector<TKTag*>{&now[0], &now[1], &now[2]}),
                ElementsAre(before[0], before[1], before[2]));
    context->redo();
    context->redo();
    ASSERT_EQ(flat->tags().count(), 3u);
    EXPECT_EQ(flat->tags()[0].name()->string(), "Water");
    EXPECT_EQ(flat->tags()[2].name()->string(), "Rates");
}

TEST_F(ContextUndoTest, ObserversFindEverythingRestoredWhenTheyAreTold) {
    const auto letting = tenure();
    letting->setStartDate(Date{0});
    step();
    letting->setRentalBillingCycle(Number(std::uint64_t{TKBillingCycleMonth}));
    letting->setRentalPeriod(Number(std::uint64_t{1}));
    letting->setRentalAmount(Decimal(100));
    step();

    class Reader final : public ObservableObject {
    public:
        std::vector<std::string> seen;
        void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject& object,
                                                         const KeyValueChange&, const void*) override {
            seen.push_back(object.valueForKey(keys::rentalBillingCycle).description() + " " +
                           object.valueForKey(keys::rentalPeriod).description() + " " +
                           object.valueForKey(keys::rentalAmount).description());
        }
    };
    const auto reader = makeRef<Reader>();
    for (const char* key : {"rentalBillingCycle", "rentalPeriod", "rentalAmount", "chargablePeriods"})
        letting->addObserverForKeyPathOptionsContext(*reader, key, ObservingNew, nullptr);
    context->undo();
    EXPECT_FALSE(reader->seen.empty());
    for (const auto& each : reader->seen) EXPECT_EQ(each, "(null) (null) (null)");
    reader->seen.clear();
    context->redo();
    EXPECT_FALSE(reader->seen.empty());
    for (const auto& each : reader->seen) EXPECT_EQ(each, "30 1 100");
}

TEST_F(ContextUndoTest, BothOwnersHearOfAPaymentWhoseAmountReturnsWithItsLetting) {
    const auto one = tenure();
    const auto other = tenure();
    const auto payment = Ref<TKTenureTransaction>(one->createTransaction());
    payment->setAmount(Decimal(10));
    step();
    payment->setAmount(Decimal(20));
    payment->setTenure(other.get());
    step();

    std::vector<std::string> seen;
    const auto observe = [&](const Ref<TKTenure>& letting, std::string_view name) {
        return letting->observe("totalIncome", [&seen, letting, name] {
            seen.push_back(std::string(name) + " " + Value(letting->totalIncome()).description());
        });
    };
    const auto ofOne = observe(one, "one");
    const auto ofOther = observe(other, "other");
    context->undo();
    EXPECT_THAT(seen, testing::UnorderedElementsAre("one 10", "other 0"));
    seen.clear();
    context->redo();
    EXPECT_THAT(seen, testing::UnorderedElementsAre("one 0", "other 20"));
}

TEST_F(ContextUndoTest, AnExceptionOutOfAnObserverLeavesNothingHalfRestored) {
    class Objector final : public ObservableObject {
        void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject&,
                                                         const KeyValueChange&, const void*) override {
            throw std::runtime_error("no");
        }
    };
    const auto flat = property("Elm Street");
    const auto other = property("Oak Lane");
    step();
    const auto objector = makeRef<Objector>();
    flat->setName(text("A"));
    other->setName(text("B"));
    flat->addObserverForKeyPathOptionsContext(*objector, "name", 0, nullptr);
    EXPECT_THROW(context->undo(), std::runtime_error);
    EXPECT_EQ(flat->name()->string(), "Elm Street");
    EXPECT_EQ(other->name()->string(), "Oak Lane");
    flat->removeObserverForKeyPath(*objector, "name");
    context->redo();
    EXPECT_EQ(flat->name()->string(), "A");
    EXPECT_EQ(other->name()->string(), "B");
}

TEST_F(ContextUndoTest, AStatementLeavesNoEntryAndLosesNone) {
    const auto letting = tenure();
    letting->setStartDate(Date{0});
    letting->setRentalBillingCycle(Number(std::uint64_t{TKBillingCycleMonth}));
    letting->setRentalPeriod(Number(std::uint64_t{1}));
    letting->setRentalAmount(Decimal(100));
    step();
    ASSERT_TRUE(letting->statement());
    EXPECT_TRUE(undo->isUndoRegistrationEnabled());
    letting->setRentalAmount(Decimal(200));
    ASSERT_TRUE(letting->statement());
    context->undo();
    EXPECT_EQ(letting->rentalAmount(), Decimal(100));
    context->undo();
    EXPECT_FALSE(undo->canUndo());
}

TEST_F(ContextUndoTest, WhatTheSystemWritesLeavesNoEntry) {
    const auto letting = tenure();
    const auto flat = property("Elm Street");
    ASSERT_TRUE(context->save());
    undo->removeAllActions();
    letting->setCurrentDate(Date{86400});
    flat->setCurrentDate(Date{86400});
    letting->updatePeriods();
    EXPECT_FALSE(undo->canUndo());
    static_cast<void>(TKState::stateForKeyInManagedObjectContext(text("Nowhere yet"), *context));
    EXPECT_FALSE(undo->canUndo());
    TKState::updateStateWithNameValueInManagedObjectContext(text("Nowhere yet"), Value(1), *context);
    EXPECT_TRUE(undo->canUndo());
}

TEST_F(ContextUndoTest, AnEditOfTagNamesIsUndoneButNotTheTagsMadeOfItInASave) {
    const auto flat = property("Elm Street");
    ASSERT_TRUE(context->save());
    undo->removeAllActions();
    flat->setTagNames(TKTagNames::initWithEditableString("Rent, Repairs"));
    step();
    ASSERT_TRUE(context->save());
    ASSERT_EQ(flat->tags().count(), 2u);
    context->undo();
    EXPECT_FALSE(flat->tagNames());
    EXPECT_FALSE(undo->canUndo());
    context->redo();
    ASSERT_TRUE(context->save());
    EXPECT_EQ(flat->tagNames()->editableString(), "Rent, Repairs");
    EXPECT_EQ(flat->tags().count(), 2u);
    EXPECT_EQ(all<TKTag>("AccountTag").size(), 2u);
}

TEST_F(ContextUndoTest, TagNamesSurviveLeavingAndReturning) {
    const auto flat = property("Elm Street");
    flat->setTagNames(TKTagNames::initWithEditableString("Rent, Repairs"));
    const auto names = flat->tagNames();
    context->undo();
    EXPECT_FALSE(flat->tagNames());
    context->redo();
    EXPECT_EQ(flat->tagNames(), names);
}

TEST_F(ContextUndoTest, AChangeWhileRegistrationIsDisabledIsProcessedWithoutAnEntry) {
    const auto flat = property("Elm Street");
    step();
    undo->disableUndoRegistration();
    flat->setName(text("Oak Lane"));
    context->processPendingChanges();
    undo->enableUndoRegistration();
    context->undo();
    EXPECT_THAT(all<TKProperty>("Property"), IsEmpty());
}

TEST_F(ContextUndoTest, WithoutAnUndoManagerNothingIsRemembered) {
    context->setUndoManager(nullptr);
    const auto flat = property("Elm Street");
    context->undo();
    context->redo();
    EXPECT_EQ(flat->name()->string(), "Elm Street");
    EXPECT_FALSE(undo->canUndo());
}

TEST_F(ContextUndoTest, AnUndoManagerThatOutlivesTheContextForgetsIt) {
    property("Elm Street");
    EXPECT_TRUE(undo->canUndo());
    context = nullptr;
    EXPECT_FALSE(undo->canUndo());
    undo->undo();
}

TEST_F(ContextUndoTest, AResetForgetsWhatCouldBeUndone) {
    property("Elm Street");
    EXPECT_TRUE(undo->canUndo());
    context->reset();
    EXPECT_FALSE(undo->canUndo());
}

// Rollback

TEST_F(ContextUndoTest, ARollbackReturnsToTheLastSave) {
    const auto kept = property("Kept");
    const auto gone = property("Gone");
    const auto letting = tenure();
    letting->setStartDate(Date{0});
    letting->setProperty(kept.get());
    ASSERT_TRUE(context->save());
    const auto newcomer = property("New");
    kept->setName(text("Renamed"));
    letting->setProperty(newcomer.get());
    context->deleteObject(*gone);
    context->processPendingChanges();
    context->rollback();
    EXPECT_EQ(kept->name()->string(), "Kept");
    EXPECT_EQ(gone->name()->string(), "Gone");
    EXPECT_EQ(letting->property(), kept.get());
    EXPECT_FALSE(newcomer->managedObjectContext());
    EXPECT_THAT(all<TKProperty>("Property"), ElementsAre(kept.get(), gone.get()));
    EXPECT_FALSE(context->hasChanges());
    EXPECT_FALSE(undo->canUndo());
}

TEST_F(ContextUndoTest, ASettingMadeByALookUpOutlivesARollback) {
    ASSERT_TRUE(context->save());
    const auto made = TKState::stateForKeyInManagedObjectContext(text("Colour"), *context);
    made->setValue(Value(text("green")));
    context->rollback();
    EXPECT_EQ(made->managedObjectContext(), context.get());
    EXPECT_TRUE(made->value().isAbsent());
    EXPECT_EQ(TKState::stateForKeyInManagedObjectContext(text("Colour"), *context), made);
    EXPECT_TRUE(context->save());
}

TEST_F(ContextUndoTest, ARollbackWithNothingToTakeBackDoesNothing) {
    context->rollback();
    const auto flat = property("Elm Street");
    ASSERT_TRUE(context->save());
    context->rollback();
    EXPECT_EQ(flat->name()->string(), "Elm Street");
}

// Hooks

class RestoringHooksTest : public testing::Test {
protected:
    Hooks hooks;
    Ref<ManagedObjectContext> context = probedContext();
    Ref<ProbeState> state = context->insertNewObject<ProbeState>("State");

    void save() {
        ASSERT_TRUE(context->save());
        context->undoManager()->endEvent();
        hooks.log.clear();
    }
};

TEST_F(RestoringHooksTest, AnUndoneUpdateHearsOfItsSnapshotOnly) {
    save();
    state->setName(text("Colour"));
    context->undo();
    EXPECT_THAT(hooks.log, ElementsAre("awakeFromSnapshotEvents:8 1"));
    hooks.log.clear();
    context->redo();
    EXPECT_THAT(hooks.log, ElementsAre("awakeFromSnapshotEvents:8 1"));
}

TEST_F(RestoringHooksTest, AnUndoneInsertionTurnsIntoAFaultOnceAndAwakesAnewWhenItReturns) {
    context->undoManager()->endEvent();
    hooks.log.clear();
    context->undo();
    EXPECT_THAT(hooks.log, ElementsAre("prepareForDeletion 1", "willTurnIntoFault 1"));
    hooks.log.clear();
    context->redo();
    EXPECT_THAT(hooks.log, ElementsAre("awakeFromFetch 1", "awakeFromSnapshotEvents:2 1"));
    hooks.log.clear();
    context->undo();
    EXPECT_EQ(hooks.count("willTurnIntoFault 1"), 1u);
    hooks.log.clear();
    context = nullptr;
    EXPECT_THAT(hooks.log, IsEmpty());
}

TEST_F(RestoringHooksTest, AnUndoneDeletionAwakesAnewWithItsValues) {
    state->setName(text("Colour"));
    save();
    context->deleteObject(*state);
    ASSERT_TRUE(context->save());
    hooks.log.clear();
    std::string nameInHook;
    hooks.react = [&](ManagedObject& object, std::string_view hook) {
        if (hook == "awakeFromFetch") nameInHook = static_cast<ProbeState&>(object).name()->string();
    };
    context->undo();
    EXPECT_THAT(hooks.log, ElementsAre("awakeFromFetch 1", "awakeFromSnapshotEvents:4 1"));
    EXPECT_EQ(nameInHook, "Colour");
}

TEST_F(RestoringHooksTest, WhatTheFetchHookWritesGivesWayToWhatReturns) {
    state->setName(text("Colour"));
    save();
    context->deleteObject(*state);
    hooks.react = [&](ManagedObject& object, std::string_view hook) {
        if (hook == "awakeFromFetch") static_cast<ProbeState&>(object).setName(text("Sound"));
    };
    context->undo();
    EXPECT_EQ(state->name()->string(), "Colour");
}

TEST_F(RestoringHooksTest, ARollbackTellsTheRestored) {
    save();
    state->setName(text("Colour"));
    context->rollback();
    EXPECT_THAT(hooks.log, ElementsAre("awakeFromSnapshotEvents:16 1"));
    hooks.log.clear();
    context->deleteObject(*state);
    context->rollback();
    EXPECT_THAT(hooks.log, ElementsAre("prepareForDeletion 1", "willTurnIntoFault 1", "awakeFromFetch 1",
                                       "awakeFromSnapshotEvents:16 1"));
}

TEST_F(RestoringHooksTest, AHookThatRaisesWhileReturningLeavesTheObjectWhole) {
    state->setName(text("Colour"));
    save();
    context->deleteObject(*state);
    hooks.react = [&](ManagedObject&, std::string_view hook) {
        if (hook == "awakeFromFetch") throw std::runtime_error("no");
    };
    EXPECT_THROW(context->undo(), std::runtime_error);
    hooks.react = nullptr;
    EXPECT_EQ(state->name()->string(), "Colour");
    EXPECT_EQ(hooks.count("awakeFromSnapshotEvents:4 1"), 1u);
    EXPECT_TRUE(context->save());
}

// Faults

TEST_F(RestoringHooksTest, AFaultFiresOnceOnFirstAccess) {
    state->setName(text("Colour"));
    save();
    context->refreshObjectMergeChanges(*state, false);
    EXPECT_THAT(hooks.log, ElementsAre("willTurnIntoFault 1"));
    hooks.log.clear();
    EXPECT_EQ(state->name()->string(), "Colour");
    EXPECT_EQ(state->name()->string(), "Colour");
    EXPECT_THAT(hooks.log, ElementsAre("awakeFromFetch 1"));
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(RestoringHooksTest, ARefreshWithoutMergingDropsUnsavedChanges) {
    state->setName(text("Colour"));
    save();
    state->setName(text("Sound"));
    context->refreshObjectMergeChanges(*state, false);
    EXPECT_FALSE(context->hasChanges());
    EXPECT_EQ(state->name()->string(), "Colour");
}

TEST_F(RestoringHooksTest, ARefreshWithMergingKeepsChangesAndTells) {
    save();
    state->setName(text("Sound"));
    context->refreshObjectMergeChanges(*state, true);
    EXPECT_EQ(state->name()->string(), "Sound");
    EXPECT_TRUE(context->hasChanges());
    EXPECT_THAT(hooks.log, ElementsAre("awakeFromSnapshotEvents:32 1"));
}

TEST_F(RestoringHooksTest, AFaultIsNotToldAgainThatItBecomesOne) {
    save();
    context->refreshObjectMergeChanges(*state, false);
    context->refreshObjectMergeChanges(*state, false);
    context = nullptr;
    EXPECT_EQ(hooks.count("willTurnIntoFault 1"), 1u);
    EXPECT_FALSE(state->name());
}

TEST_F(RestoringHooksTest, AnExceptionOutOfTheFetchHookLeavesTheReadAndTheObjectIsReal) {
    state->setName(text("Colour"));
    save();
    context->refreshObjectMergeChanges(*state, false);
    hooks.react = [](ManagedObject&, std::string_view hook) {
        if (hook == "awakeFromFetch") throw std::runtime_error("no");
    };
    EXPECT_THROW(static_cast<void>(state->name()), std::runtime_error);
    EXPECT_EQ(state->name()->string(), "Colour");
}

TEST_F(RestoringHooksTest, AFaultThatIsDeletedAwakesToTurnIntoOne) {
    state->setName(text("Colour"));
    save();
    context->refreshObjectMergeChanges(*state, false);
    hooks.log.clear();
    context->deleteObject(*state);
    EXPECT_THAT(hooks.log, ElementsAre("awakeFromFetch 1", "prepareForDeletion 1", "willTurnIntoFault 1"));
    context->undo();
    EXPECT_EQ(state->name()->string(), "Colour");
}

TEST_F(RestoringHooksTest, WhatWasNeverSavedHasNothingToBeReadFrom) {
    state->setName(text("Colour"));
    context->refreshObjectMergeChanges(*state, false);
    EXPECT_EQ(state->name()->string(), "Colour");
    EXPECT_TRUE(state->isInserted());
    const auto other = probedContext();
    EXPECT_THROW(other->refreshObjectMergeChanges(*state, false), InvalidArgumentException);
}

TEST_F(RestoringHooksTest, RelationshipsOfAFaultStand) {
    auto note = context->insertNewObject<ProbeNote>("PropertyNote");
    auto flat = context->insertNewObject<TKProperty>("Property");
    note->setProperty(flat.get());
    save();
    context->refreshObjectMergeChanges(*flat, false);
    context->refreshObjectMergeChanges(*note, false);
    EXPECT_EQ(note->property(), flat.get());
    EXPECT_EQ(flat->notes().count(), 1u);
}

} // namespace
} // namespace estatebook::platform
