// SPDX-License-Identifier: MIT

// Inserting, fetching, deleting and saving, and when each hook runs.

#include "support/ObservedPerson.hpp"
#include "support/ProbedContext.hpp"

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
using test::watch;
using test::Watcher;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Over the library's own classes.
class ManagedObjectContextTest : public testing::Test {
protected:
    Ref<ManagedObjectContext> context = TKManagedObjectModel::inMemoryManagedObjectContext();

    template <class T>
    Ref<T> insert(std::string_view entity) {
        return context->insertNewObject<T>(entity);
    }
    Ref<TKProperty> property() { return insert<TKProperty>("Property"); }
    Ref<TKTenure> tenure() { return insert<TKTenure>("Tenure"); }
    Ref<TKState> state(std::string_view name) {
        auto made = insert<TKState>("State");
        made->setName(text(name));
        return made;
    }
    std::vector<Ref<ManagedObject>> fetch(std::string_view entity, std::optional<Predicate> predicate = {}) {
        return context->executeFetchRequest({std::string(entity), std::move(predicate)}).value();
    }
};

/// Over classes that report their hooks.
class HooksTest : public testing::Test {
protected:
    Hooks hooks;
    Ref<ManagedObjectContext> context = probedContext();

    Ref<ProbeState> state() { return context->insertNewObject<ProbeState>("State"); }
    Ref<ProbeNote> note() { return context->insertNewObject<ProbeNote>("PropertyNote"); }
    static std::string at(std::string_view hook, const ManagedObject& object) {
        return std::string(hook) + " " + std::to_string(Hooks::numberOf(object));
    }
};

// Insertion

TEST_F(ManagedObjectContextTest, TwoContextsShareNothing) {
    const auto other = TKManagedObjectModel::inMemoryManagedObjectContext();
    const auto flat = property();
    EXPECT_EQ(context->objectCount(), 1u);
    EXPECT_EQ(other->objectCount(), 0u);
    EXPECT_THAT(other->executeFetchRequest({"Property"}).value(), IsEmpty());
    EXPECT_FALSE(other->hasChanges());
    EXPECT_THROW(other->deleteObject(*flat), InvalidArgumentException);
    EXPECT_NE(context->undoManager(), other->undoManager());
    EXPECT_NE(context->persistentStoreCoordinator(), other->persistentStoreCoordinator());
}

TEST_F(ManagedObjectContextTest, AContextOfTheFactoryIsBoundToTheMainQueueAndHasNoObjects) {
    EXPECT_EQ(context->concurrencyType(), ConcurrencyType::MainQueue);
    EXPECT_EQ(static_cast<unsigned>(context->concurrencyType()), 2u);
    EXPECT_TRUE(context->undoManager());
    EXPECT_EQ(context->objectCount(), 0u);
    EXPECT_EQ(context->persistentStoreCoordinator()->managedObjectModel()->name(), "EstateBook");
    EXPECT_FALSE(TKManagedObjectModel::modelError());
}

TEST_F(ManagedObjectContextTest, AnInsertedObjectIsOfItsEntityAndItsContext) {
    const auto flat = property();
    EXPECT_EQ(flat->managedObjectContext(), context.get());
    EXPECT_EQ(flat->entity().name(), "Property");
    EXPECT_EQ(flat->entity().superentity()->name(), "Account");
    EXPECT_EQ(flat->entity().managedObjectClassName(), "TKProperty");
    EXPECT_TRUE(flat->isInserted());
    EXPECT_FALSE(flat->isUpdated());
    EXPECT_FALSE(flat->isDeleted());
    EXPECT_TRUE(context->hasChanges());
    EXPECT_THAT(context->insertedObjects(), ElementsAre(flat));
    EXPECT_LT(flat->creationNumber(), tenure()->creationNumber());
}

TEST_F(ManagedObjectContextTest, AnUnknownAnAbstractAndAForeignEntityAreRefused) {
    EXPECT_THROW(insert<ManagedObject>("Castle"), InternalInconsistencyException);
    EXPECT_THROW(insert<ManagedObject>("Account"), InternalInconsistencyException);
    EXPECT_THROW(insert<ManagedObject>("property"), InternalInconsistencyException) << "letter case counts";
    const auto other = TKManagedObjectModel::inMemoryManagedObjectContext();
    const auto& foreign = *EntityDescription::entityForNameInManagedObjectContext("Property", *other);
    EXPECT_THROW(static_cast<void>(
                     ManagedObject::initWithEntityInsertIntoManagedObjectContext(foreign, context.get())),
                 InvalidArgumentException);
    EXPECT_EQ(context->objectCount(), 0u);
    EXPECT_EQ(EntityDescription::entityForNameInManagedObjectContext("Castle", *context), nullptr);
}

TEST_F(ManagedObjectContextTest, AnObjectOfAnotherClassThanAskedForIsRefused) {
    EXPECT_THROW(insert<TKTenure>("Property"), InvalidArgumentException);
}

TEST_F(HooksTest, AwakeFromInsertRunsOnceInsideTheInsertion) {
    hooks.react = [&](ManagedObject& object, std::string_view hook) {
        if (hook != "awakeFromInsert") return;
        EXPECT_EQ(object.managedObjectContext(), context.get());
        static_cast<ProbeState&>(object).setName(text("new"));
    };
    const auto object = state();
    EXPECT_EQ(hooks.count(at("awakeFromInsert", *object)), 1u);
    EXPECT_EQ(object->name()->view(), "new");
    ASSERT_TRUE(context->save());
    static_cast<void>(context->executeFetchRequest({"State"}));
    EXPECT_EQ(hooks.count(at("awakeFromInsert", *object)), 1u);
    EXPECT_EQ(hooks.count(at("awakeFromFetch", *object)), 0u) << "it is real already";
}

TEST_F(HooksTest, AnObjectWithoutAContextHearsOfNothing) {
    {
        const auto& entity = *EntityDescription::entityForNameInManagedObjectContext("State", *context);
        const auto object = ManagedObject::initWithEntityInsertIntoManagedObjectContext(entity, nullptr);
        object->setValueForKey(text("a"), "name");
    }
    EXPECT_TRUE(context->save());
    EXPECT_THAT(hooks.log, IsEmpty());
}

// Fetching

TEST_F(ManagedObjectContextTest, AFetchGivesTheObjectsInTheOrderOfTheirCreation) {
    const auto flat = property();
    const auto tenant = insert<TKTenant>("Tenant");
    const auto house = property();
    EXPECT_THAT(fetch("Property"), ElementsAre(flat, house));
    EXPECT_THAT(fetch("Account"), ElementsAre(flat, tenant, house)) << "and of entities that inherit";
    EXPECT_THAT(context->fetchAll<TKTenant>("Tenant"), ElementsAre(tenant));
    ASSERT_TRUE(context->save());
    EXPECT_THAT(fetch("Account"), ElementsAre(flat, tenant, house)) << "also after a save";
}

TEST_F(ManagedObjectContextTest, AFetchSeesPendingInsertionsAndChangesAndNoDeletedObjects) {
    const auto a = state("a");
    const auto b = state("b");
    ASSERT_TRUE(context->save());
    const auto c = state("c");
    a->setName(text("c"));
    context->deleteObject(*b);
    EXPECT_THAT(fetch("State"), ElementsAre(a, c));
    EXPECT_THAT(fetch("State", Predicate::predicateWithFormat("name = %@", text("c"))), ElementsAre(a, c));
    EXPECT_THAT(fetch("State", Predicate::predicateWithFormat("name = %@", text("a"))), IsEmpty());
    EXPECT_THAT(fetch("State", Predicate::predicateWithFormat("name = %@", text("b"))), IsEmpty());
}

TEST_F(ManagedObjectContextTest, AConditionComparesExactly) {
    const auto plain = state("Caf\u00e9");
    static_cast<void>(state("caf\u00e9"));
    static_cast<void>(state("Cafe\u0301"));
    const auto nameless = insert<TKState>("State");
    EXPECT_THAT(fetch("State", Predicate::predicateWithFormat("name = %@", text("Caf\u00e9"))),
                ElementsAre(plain));
    EXPECT_THAT(fetch("State", Predicate::predicateWithFormat("name = %@", Value())), ElementsAre(nameless));
}

TEST_F(ManagedObjectContextTest, AConditionOfAnotherFormIsRefused) {
    for (const char* format :
         {"", "name", "name == %@", "name = ", " = %@", "a.name = %@", "name = %@ OR 1", "name  = %@"})
        EXPECT_THROW(static_cast<void>(Predicate::predicateWithFormat(format, Value())),
                     InvalidArgumentException)
            << format;
}

TEST_F(ManagedObjectContextTest, AFetchOfAnUnknownEntityFailsWithAnError) {
    Ref<Error> error;
    EXPECT_FALSE(context->executeFetchRequest({"Castle"}, &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "Persistence");
    EXPECT_THAT(std::string(error->localizedDescription()), HasSubstr("Castle"));
    EXPECT_FALSE(context->executeFetchRequest({"Castle"}));
    EXPECT_THAT(context->fetchAll<TKState>("Castle"), IsEmpty());
}

TEST_F(ManagedObjectContextTest, AContextWithoutAModelHasNoEntities) {
    const auto bare = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    EXPECT_FALSE(bare->executeFetchRequest({"State"}));
    bare->setPersistentStoreCoordinator(makeRef<PersistentStoreCoordinator>(nullptr));
    EXPECT_FALSE(bare->executeFetchRequest({"State"}));
    EXPECT_THROW(bare->insertNewObject<TKState>("State"), InternalInconsistencyException);
    EXPECT_TRUE(bare->save());
}

// Deletion

TEST_F(ManagedObjectContextTest, ADeletedObjectIsMarkedAtOnceAndGoneAfterTheSave) {
    const auto flat = property();
    ASSERT_TRUE(context->save());
    context->deleteObject(*flat);
    EXPECT_TRUE(flat->isDeleted());
    EXPECT_EQ(flat->managedObjectContext(), context.get());
    EXPECT_THAT(context->deletedObjects(), ElementsAre(flat));
    ASSERT_TRUE(context->save());
    EXPECT_FALSE(flat->isDeleted());
    EXPECT_EQ(flat->managedObjectContext(), nullptr);
    EXPECT_EQ(context->objectCount(), 0u);
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(ManagedObjectContextTest, AnObjectThatWasNeverSavedJustLeaves) {
    const auto flat = property();
    flat->setName(text("a"));
    context->deleteObject(*flat);
    context->processPendingChanges();
    EXPECT_THAT(context->deletedObjects(), IsEmpty());
    EXPECT_THAT(context->insertedObjects(), IsEmpty());
    EXPECT_FALSE(context->hasChanges());
    EXPECT_EQ(flat->managedObjectContext(), nullptr);
    EXPECT_FALSE(flat->name()) << "it reads as absent";
}

TEST_F(ManagedObjectContextTest, SeveralDeletionsAreOne) {
    const auto saved = property();
    ASSERT_TRUE(context->save());
    const auto pending = property();
    for (const auto& each : {saved, pending}) {
        context->deleteObject(*each);
        EXPECT_NO_THROW(context->deleteObject(*each));
    }
    EXPECT_TRUE(context->save());
    for (const auto& each : {saved, pending})
        EXPECT_NO_THROW(context->deleteObject(*each)) << "also of what has left";
}

TEST_F(ManagedObjectContextTest,
       RulesOfDeletionAreCarriedOutLaterSoThatMembersMayBeDeletedWhileTheyAreWalked) {
    const auto flat = property();
    for (int count = 0; count < 5; ++count) flat->createTransaction();
    ASSERT_TRUE(context->save());
    std::size_t walked = 0;
    for (TKTransaction& payment : flat->transactions()) {
        context->deleteObject(payment);
        ++walked;
    }
    EXPECT_EQ(walked, 5u);
    EXPECT_EQ(flat->transactions().count(), 5u);
    context->processPendingChanges();
    EXPECT_EQ(flat->transactions().count(), 0u);
}

TEST_F(ManagedObjectContextTest, NullifyClearsTheOtherSideWithAnnouncements) {
    const auto flat = property();
    const auto let = tenure();
    let->setProperty(flat.get());
    ASSERT_TRUE(context->save());
    const auto watcher = makeRef<Watcher>();
    watch(*flat, *watcher, "tenures", ObservingOld);
    context->deleteObject(*let);
    EXPECT_EQ(flat->tenures().count(), 1u);
    ASSERT_TRUE(context->save());
    EXPECT_EQ(flat->tenures().count(), 0u);
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].change.kind, ChangeKind::Removal);
    EXPECT_FALSE(flat->hasChanges());
}

TEST_F(ManagedObjectContextTest, CascadeTakesAllThatBelongsToAnOwner) {
    const auto flat = property();
    const auto* payment = flat->createTransaction();
    const auto* note = flat->createNote();
    flat->setTagNames(TKTagNames::initWithEditableString("a, b"));
    ASSERT_TRUE(context->save());
    ASSERT_EQ(fetch("AccountTag").size(), 2u);
    const Ref<const ManagedObject> held[] = {payment, note};
    context->deleteObject(*flat);
    EXPECT_FALSE(payment->isDeleted()) << "not before changes are processed";
    context->processPendingChanges();
    for (const auto& each : held) EXPECT_TRUE(each->isDeleted());
    ASSERT_TRUE(context->save());
    EXPECT_EQ(context->objectCount(), 0u);
}

TEST_F(ManagedObjectContextTest, ADeniedDeletionFailsTheSaveAndChangesNothing) {
    const auto flat = property();
    const auto let = tenure();
    let->setProperty(flat.get());
    auto* const note = flat->createNote();
    ASSERT_TRUE(context->save());
    context->deleteObject(*flat);
    Ref<Error> error;
    EXPECT_FALSE(context->save(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "Persistence");
    EXPECT_EQ(error->code(), 1600);
    EXPECT_EQ(let->property(), flat.get());
    EXPECT_EQ(flat->notes().count(), 1u);
    EXPECT_FALSE(note->isDeleted());
    EXPECT_EQ(flat->managedObjectContext(), context.get());
    EXPECT_FALSE(context->save()) << "and it is asked again";
}

TEST_F(ManagedObjectContextTest, AnOwnerGoesWithThoseWhoDenyItsDeletion) {
    for (const bool ownerFirst : {true, false}) {
        const auto flat = property();
        const auto let = tenure();
        let->setProperty(flat.get());
        ASSERT_TRUE(context->save());
        if (ownerFirst) context->deleteObject(*flat);
        context->deleteObject(*let);
        if (!ownerFirst) context->deleteObject(*flat);
        EXPECT_TRUE(context->save());
        EXPECT_THAT(fetch("Property"), IsEmpty());
    }
}

TEST_F(ManagedObjectContextTest, ADeniedDeletionIsCarriedOutOnceNobodyDeniesItAnyMore) {
    const auto flat = property();
    const auto let = tenure();
    let->setProperty(flat.get());
    ASSERT_TRUE(context->save());
    context->deleteObject(*flat);
    EXPECT_FALSE(context->save());
    let->setProperty(nullptr);
    EXPECT_TRUE(context->save());
    EXPECT_EQ(flat->managedObjectContext(), nullptr);
}

TEST_F(ManagedObjectContextTest, AnObserverThatRaisesKeepsNoDeletionFromBeingCarriedOut) {
    const auto flat = property();
    const auto house = property();
    for (int count = 0; count < 3; ++count) flat->createTransaction();
    const auto thrower = makeRef<Watcher>([](const auto&) { throw RangeException("gone"); });
    watch(*flat, *thrower, "transactions");
    watch(*flat, *thrower, "balance");
    context->deleteObject(*flat);
    context->deleteObject(*house);
    EXPECT_THROW(context->processPendingChanges(), RangeException);
    EXPECT_EQ(context->objectCount(), 0u);
    EXPECT_NO_THROW(context->processPendingChanges());
}

TEST_F(HooksTest, HooksOfDeletionRunBeforeAnythingIsTornDownAndOnce) {
    const auto flat = context->insertNewObject<TKProperty>("Property");
    const auto object = note();
    object->setValueForKey(flat, "property");
    object->setSubject(text("Roof"));
    ASSERT_TRUE(context->save());
    hooks.log.clear();
    hooks.react = [&](ManagedObject&, std::string_view hook) {
        if (hook != "willTurnIntoFault" && hook != "prepareForDeletion") return;
        EXPECT_EQ(object->subject()->view(), "Roof");
        EXPECT_EQ(object->primitiveValueForKey(keys::property).object(), Ref<Object>(flat));
        context->deleteObject(*object);
    };
    context->deleteObject(*object);
    EXPECT_THAT(hooks.log, ElementsAre(at("prepareForDeletion", *object), at("willTurnIntoFault", *object)));
    hooks.log.clear();
    ASSERT_TRUE(context->save());
    EXPECT_EQ(hooks.count("willTurnIntoFault " + std::to_string(Hooks::numberOf(*object))), 0u);
}

TEST_F(HooksTest, ObjectsThatDeleteOneAnotherComeToAnEnd) {
    const auto a = state();
    const auto b = state();
    hooks.react = [&](ManagedObject& object, std::string_view hook) {
        if (hook == "prepareForDeletion") context->deleteObject(&object == a.get() ? *b : *a);
    };
    context->deleteObject(*a);
    EXPECT_TRUE(a->isDeleted());
    EXPECT_TRUE(b->isDeleted());
    EXPECT_TRUE(context->save());
    EXPECT_EQ(context->objectCount(), 0u);
}

TEST_F(HooksTest, AHookThatRaisesDeletesAllTheSame) {
    const auto object = state();
    hooks.react = [](ManagedObject&, std::string_view hook) {
        if (hook == "willTurnIntoFault") throw RangeException("hook");
    };
    EXPECT_THROW(context->deleteObject(*object), RangeException);
    EXPECT_TRUE(object->isDeleted());
    EXPECT_TRUE(context->save());
    EXPECT_EQ(hooks.count(at("willTurnIntoFault", *object)), 1u);
}

// Saving

TEST_F(HooksTest, ASaveWithoutChangesRunsNoHooks) {
    static_cast<void>(state());
    ASSERT_TRUE(context->save());
    hooks.log.clear();
    EXPECT_TRUE(context->save());
    EXPECT_THAT(hooks.log, IsEmpty());
}

TEST_F(HooksTest, ASaveAsksValidatesAndTellsInThisOrder) {
    const auto deleted = state();
    const auto updated = state();
    const auto untouched = state();
    ASSERT_TRUE(context->save());
    const auto inserted = state();
    updated->setName(text("a"));
    context->deleteObject(*deleted);
    hooks.log.clear();
    ASSERT_TRUE(context->save());
    EXPECT_THAT(hooks.log,
                ElementsAre(at("willSave", *inserted), at("willSave", *updated), at("willSave", *deleted),
                            at("validateForDelete", *deleted), at("validateForInsert", *inserted),
                            at("validateForUpdate", *updated), at("didSave", *inserted),
                            at("didSave", *updated), at("didSave", *deleted)));
    for (const auto& each : {updated, untouched, inserted}) EXPECT_FALSE(each->hasChanges());
    EXPECT_FALSE(inserted->isInserted());
}

TEST_F(HooksTest, WhoChangesWhileAskedIsAskedAgainUntilNothingChanges) {
    const auto a = state();
    const auto b = state();
    int rounds = 0;
    hooks.react = [&](ManagedObject& object, std::string_view hook) {
        if (hook == "willSave" && &object == a.get() && ++rounds < 4) a->setValue(Value(rounds));
    };
    ASSERT_TRUE(context->save());
    EXPECT_EQ(hooks.count(at("willSave", *a)), 4u);
    EXPECT_EQ(hooks.count(at("willSave", *b)), 1u);
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(HooksTest, WhatIsInsertedAndDeletedWhileAskingTakesPart) {
    const auto doomed = state();
    ASSERT_TRUE(context->save());
    const auto a = state();
    Ref<ProbeState> born;
    hooks.react = [&](ManagedObject& object, std::string_view hook) {
        if (hook != "willSave" || &object != a.get() || born) return;
        born = state();
        context->deleteObject(*doomed);
    };
    hooks.log.clear();
    ASSERT_TRUE(context->save());
    EXPECT_EQ(hooks.count(at("willSave", *born)), 1u);
    EXPECT_EQ(hooks.count(at("willSave", *doomed)), 1u);
    EXPECT_EQ(hooks.count(at("didSave", *born)), 1u);
    EXPECT_EQ(doomed->managedObjectContext(), nullptr);
    EXPECT_FALSE(born->isInserted());
}

TEST_F(HooksTest, ASaveThatNeverComesToRestGivesUp) {
    const auto a = state();
    hooks.react = [&](ManagedObject&, std::string_view hook) {
        if (hook == "willSave") a->setValue(Value(1));
    };
    try {
        context->save();
        FAIL();
    } catch (const InternalInconsistencyException& exception) {
        EXPECT_EQ(exception.name(), "NSInternalInconsistencyException");
        EXPECT_THAT(std::string(exception.reason()),
                    HasSubstr("Failed to process pending changes before save. The context is still dirty "
                              "after 1000 attempts."));
    }
    EXPECT_EQ(hooks.count(at("willSave", *a)), ManagedObjectContext::MaximalSaveRounds);
    EXPECT_TRUE(a->isInserted()) << "nothing was saved";
}

TEST_F(HooksTest, ASaveThatComesToRestInItsLastRoundIsASave) {
    const auto a = state();
    std::size_t rounds = 0;
    hooks.react = [&](ManagedObject&, std::string_view hook) {
        if (hook == "willSave" && ++rounds < ManagedObjectContext::MaximalSaveRounds) a->setValue(Value(1));
    };
    EXPECT_TRUE(context->save());
    EXPECT_EQ(rounds, ManagedObjectContext::MaximalSaveRounds);
}

TEST_F(HooksTest, OneFailureIsHandedBackAsItIs) {
    const auto a = state();
    const auto b = state();
    const auto failure = Error::make("Validation", -1, "no");
    hooks.judge = [&](ManagedObject& object) { return &object == a.get() ? failure : nullptr; };
    Ref<Error> error;
    EXPECT_FALSE(context->save(&error));
    EXPECT_EQ(error, failure);
    EXPECT_EQ(hooks.count(at("validateForInsert", *b)), 1u) << "all are tried";
    EXPECT_TRUE(a->isInserted());
    EXPECT_TRUE(b->isInserted()) << "nothing is committed";
    EXPECT_EQ(hooks.count(at("didSave", *b)), 0u);
}

TEST_F(HooksTest, SeveralFailuresAreHandedBackTogether) {
    const auto a = state();
    const auto b = state();
    hooks.judge = [](ManagedObject& object) {
        return Error::make("Validation", -static_cast<std::int64_t>(Hooks::numberOf(object)), "no");
    };
    Ref<Error> error;
    EXPECT_FALSE(context->save(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "Persistence");
    EXPECT_EQ(error->code(), 1560);
    const auto details = error->userInfo()->find(DetailedErrorsKey).as<Array>();
    ASSERT_TRUE(details);
    ASSERT_EQ(details->count(), 2u);
    EXPECT_EQ(details->at(0).as<Error>()->code(), -static_cast<std::int64_t>(Hooks::numberOf(*a)));
    EXPECT_EQ(details->at(1).as<Error>()->code(), -static_cast<std::int64_t>(Hooks::numberOf(*b)));
}

TEST_F(HooksTest, WithNobodyToReportToTheFirstFailureEndsTheValidation) {
    static_cast<void>(state());
    static_cast<void>(state());
    hooks.judge = [](ManagedObject&) { return Error::make("Validation", -1, "no"); };
    EXPECT_FALSE(context->save());
    EXPECT_EQ(std::ranges::count_if(hooks.log, [](const auto& each) { return each.starts_with("validate"); }),
              1);
}

TEST_F(HooksTest, AFailedSaveLeavesEverythingChangedAndTheNextAsksEverybodyAgain) {
    const auto updated = state();
    ASSERT_TRUE(context->save());
    updated->setName(text("a"));
    const auto inserted = state();
    bool fails = true;
    hooks.judge = [&](ManagedObject&) { return fails ? Error::make("Validation", -1, "no") : nullptr; };
    EXPECT_FALSE(context->save());
    EXPECT_TRUE(updated->isUpdated());
    EXPECT_TRUE(inserted->isInserted());
    EXPECT_TRUE(context->hasChanges());
    fails = false;
    hooks.log.clear();
    EXPECT_TRUE(context->save());
    EXPECT_EQ(hooks.count(at("willSave", *updated)), 1u);
    EXPECT_EQ(hooks.count(at("willSave", *inserted)), 1u);
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(HooksTest, AnExceptionAfterTheSaveLeavesItOnceEverybodyWasTold) {
    const auto a = state();
    const auto b = state();
    hooks.react = [&](ManagedObject& object, std::string_view hook) {
        if (hook == "didSave" && &object == a.get()) throw RangeException("told");
    };
    EXPECT_THROW(context->save(), RangeException);
    EXPECT_EQ(hooks.count(at("didSave", *b)), 1u);
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(HooksTest, WhatIsChangedAfterTheSaveIsANewChange) {
    const auto a = state();
    bool once = true;
    hooks.react = [&](ManagedObject&, std::string_view hook) {
        if (hook == "didSave" && std::exchange(once, false)) a->setName(text("a"));
    };
    EXPECT_TRUE(context->save());
    EXPECT_TRUE(a->isUpdated());
    EXPECT_TRUE(context->save());
    EXPECT_FALSE(a->hasChanges());
}

TEST_F(ManagedObjectContextTest, TagsAreRebuiltWhileSavingAndTheSaveComesToRest) {
    const auto flat = property();
    flat->setTagNames(TKTagNames::initWithEditableString("a, b"));
    EXPECT_TRUE(context->save());
    EXPECT_FALSE(context->hasChanges());
    ASSERT_EQ(flat->tags().count(), 2u);
    EXPECT_EQ(flat->tags()[0].name(), flat->tagNames()->items()->at(0).string()) << "the very same string";
}

TEST_F(ManagedObjectContextTest, AWrongTermFailsTheSaveWithItsOwnError) {
    const auto let = tenure();
    let->setStartDate(Date{5});
    let->setEndDate(Date{4});
    Ref<Error> error;
    EXPECT_FALSE(context->save(&error));
    EXPECT_EQ(error->domain(), "Validation");
    EXPECT_EQ(error->code(), -1);
}

// The end

TEST_F(HooksTest, EachAwakeObjectIsToldOnceThatItTurnsIntoAFault) {
    const auto deleted = state();
    const auto kept = state();
    ASSERT_TRUE(context->save());
    context->deleteObject(*deleted);
    ASSERT_TRUE(context->save());
    hooks.react = [&](ManagedObject& object, std::string_view hook) {
        if (hook != "willTurnIntoFault" || &object != kept.get()) return;
        EXPECT_EQ(kept->name()->view(), "kept");
    };
    kept->setName(text("kept"));
    context = nullptr;
    EXPECT_EQ(hooks.count(at("willTurnIntoFault", *kept)), 1u);
    EXPECT_EQ(hooks.count(at("willTurnIntoFault", *deleted)), 1u);
    EXPECT_FALSE(kept->name());
}

TEST_F(HooksTest, AResetTellsEverybodyAndForgetsEverything) {
    const auto saved = state();
    ASSERT_TRUE(context->save());
    const auto pending = state();
    const auto deleted = state();
    context->deleteObject(*deleted);
    context->reset();
    for (const auto& each : {saved, pending, deleted}) {
        EXPECT_EQ(hooks.count(at("willTurnIntoFault", *each)), 1u);
        EXPECT_EQ(each->managedObjectContext(), nullptr);
        EXPECT_FALSE(each->hasChanges());
    }
    EXPECT_FALSE(context->hasChanges());
    EXPECT_EQ(context->objectCount(), 0u);
    EXPECT_THAT(context->executeFetchRequest({"State"}).value(), IsEmpty());
    const auto next = state();
    EXPECT_GT(next->creationNumber(), deleted->creationNumber());
    EXPECT_TRUE(context->save());
}

TEST_F(HooksTest, HooksThatRaiseOrInsertDoNotStopTheEnd) {
    for (int count = 0; count < 3; ++count) static_cast<void>(state());
    int inserted = 0;
    hooks.react = [&, whileItLives = context.get()](ManagedObject& object, std::string_view hook) {
        if (hook != "willTurnIntoFault") return;
        const Ref<ManagedObjectContext> held(whileItLives);
        if (++inserted < 3) static_cast<void>(held->insertNewObject<ProbeState>("State"));
        static_cast<void>(object.valueForKey(keys::name));
        throw RangeException("end");
    };
    context = nullptr;
    EXPECT_EQ(std::ranges::count_if(hooks.log,
                                    [](const auto& each) { return each.starts_with("willTurnIntoFault"); }),
              5);
}

TEST_F(ManagedObjectContextTest, WhatOutlivesItsContextReadsAsAbsent) {
    const auto flat = property();
    const auto let = tenure();
    let->setProperty(flat.get());
    flat->setName(text("a"));
    flat->setTagNames(TKTagNames::initWithEditableString("a"));
    ASSERT_TRUE(context->save());
    const auto watcher = makeRef<Watcher>();
    watch(*flat, *watcher, "name");
    context = nullptr;
    EXPECT_EQ(flat->managedObjectContext(), nullptr);
    EXPECT_FALSE(flat->name());
    EXPECT_FALSE(flat->tagNames());
    EXPECT_EQ(flat->tenures().count(), 0u);
    EXPECT_EQ(flat->tags().count(), 0u);
    EXPECT_EQ(let->property(), nullptr);
    EXPECT_EQ(flat->valueForKeyPath("tenures.@sum.balance").decimal(), Decimal());
    EXPECT_EQ(flat->entity().name(), "Property") << "its description lives on with it";
    flat->setName(text("b"));
    EXPECT_EQ(watcher->heard.size(), 1u);
}

TEST_F(ManagedObjectContextTest, AContextMayEndWithManyLinksAndChangesOpen) {
    for (int count = 0; count < 50; ++count) {
        const auto flat = property();
        const auto let = tenure();
        let->setProperty(flat.get());
        let->createTransaction();
        if (count % 3 == 0) context->deleteObject(*let);
        if (count % 7 == 0) context->processPendingChanges();
    }
    context = nullptr;
}

TEST_F(ManagedObjectContextTest, RowsThatAreEmptiedAndFilledAgainKeepTheirOrder) {
    std::vector<Ref<TKState>> states;
    for (int count = 0; count < 40; ++count) states.push_back(state("a"));
    for (std::size_t index = 0; index < states.size(); ++index)
        if (index % 4 != 0) context->deleteObject(*states[index]);
    context->processPendingChanges();
    std::vector<Ref<ManagedObject>> left;
    for (std::size_t index = 0; index < states.size(); index += 4) left.push_back(states[index]);
    left.push_back(state("b"));
    EXPECT_EQ(fetch("State"), left);
}

} // namespace
} // namespace estatebook::platform
