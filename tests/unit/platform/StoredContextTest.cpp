// SPDX-License-Identifier: MIT

// Contexts whose objects are kept by a store, of every kind.

#include "model/Advertisement.hpp"
#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyNote.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKState.hpp"
#include "store/TKTenant.hpp"
#include "store/TKTenureTransaction.hpp"
#include "support/StoreKinds.hpp"
#include "support/WatchedStore.hpp"
#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace estatebook::platform {
namespace {

using estatebook::test::bookModel;
using estatebook::test::StoreKind;
using estatebook::test::storeKinds;
using estatebook::test::WatchedStore;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

Ref<String> text(std::string_view characters) {
    return String::make(characters);
}

class StoredContextTest : public testing::TestWithParam<StoreKind> {
protected:
    std::unique_ptr<estatebook::test::StorePlace> place = GetParam().place();
    Ref<WatchedStore> store = watched();
    Ref<ManagedObjectContext> book = contextOn(store);
    Ref<Error> error;
    const StoreError unknown{StoreErrorCode::OutcomeUnknown, "", "Whether it was saved is unknown"};

    Ref<WatchedStore> watched() { return makeRef<WatchedStore>(Ref<Store>(&place->store())); }

    static Ref<ManagedObjectContext> contextOn(const Ref<WatchedStore>& on) {
        auto coordinator = makeRef<PersistentStoreCoordinator>(bookModel());
        coordinator->addPersistentStore(Ref<Store>(on));
        auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
        context->setPersistentStoreCoordinator(std::move(coordinator));
        return context;
    }

    void save() { ASSERT_TRUE(book->save(&error)) << error->localizedDescription(); }
    /// Ends the context, closes the store, and opens both again.
    void reopen() {
        book = nullptr;
        store = nullptr;
        place->reopen();
        store = watched();
        book = contextOn(store);
    }
    /// The store saves, but cannot tell.
    void saveUnknowingly() {
        store->onSave = [&](Store& inner, const StoreChanges& changes) -> StoreResult<SaveOutcome> {
            EXPECT_TRUE(inner.save(changes));
            return unknown;
        };
        EXPECT_FALSE(book->save(&error));
        store->onSave = nullptr;
    }
    void saveAndReopen() {
        save();
        reopen();
    }

    Ref<TKProperty> property(std::string_view name) {
        const auto flat = book->insertNewObject<TKProperty>("Property");
        flat->setName(text(name));
        return flat;
    }
    Ref<TKTenure> letting(TKProperty* flat = nullptr, TKTenant* tenant = nullptr) {
        const auto tenure = book->insertNewObject<TKTenure>("Tenure");
        tenure->setProperty(flat);
        tenure->setTenant(tenant);
        return tenure;
    }
    Ref<TKProperty> theProperty() { return only<TKProperty>("Property"); }
    Ref<TKTenure> theLetting() { return only<TKTenure>("Tenure"); }
    template <class T>
    Ref<T> only(std::string_view entity) {
        auto all = book->fetchAll<T>(entity);
        EXPECT_THAT(all, SizeIs(1)) << entity;
        return all.empty() ? nullptr : all.front();
    }
    /// A payment for each amount.
    static void pay(TKTenure& tenure, std::initializer_list<int> amounts) {
        for (const int amount : amounts) tenure.createTransaction()->setAmount(Decimal(amount));
    }
    static std::vector<Decimal> amounts(const TKTenure& tenure) {
        std::vector<Decimal> all;
        for (const TKTransaction& each : tenure.transactions()) all.push_back(each.amount().value());
        return all;
    }
    static std::vector<std::string> tags(const TKTaggable& object) {
        std::vector<std::string> names;
        for (const TKTag& tag : object.tags()) names.emplace_back(tag.name()->view());
        return names;
    }
};

INSTANTIATE_TEST_SUITE_P(Stores, StoredContextTest, testing::ValuesIn(storeKinds()),
                         [](const auto& kind) { return kind.param.name; });

// Saving and coming back

TEST_P(StoredContextTest, SavedObjectsComeBackWithTheirValues) {
    const auto flat = property("Elm Street");
    flat->setRentalAmount(Decimal(1050));
    flat->setRentalPeriod(Number(std::int64_t{2}));
    flat->setRentalBillingCycle(Number(30.0));
    flat->setAvailable(Number(true));
    flat->createTransaction()->setWhen(Date{794000000.25});
    saveAndReopen();
    EXPECT_EQ(theProperty()->name()->view(), "Elm Street");
    EXPECT_EQ(theProperty()->rentalAmount(), Decimal(1050));
    EXPECT_EQ(theProperty()->rentalPeriod()->kind(), Number::Kind::Signed);
    EXPECT_EQ(theProperty()->rentalBillingCycle()->kind(), Number::Kind::Double);
    EXPECT_EQ(theProperty()->available()->kind(), Number::Kind::Boolean);
    EXPECT_FALSE(theProperty()->bondAmount());
    EXPECT_EQ(only<TKPropertyTransaction>("PropertyTransaction")->when(), Date{794000000.25});
}

TEST_P(StoredContextTest, LinksComeBackOnBothSides) {
    const auto flat = property("Elm Street");
    const auto tenant = book->insertNewObject<TKTenant>("Tenant");
    letting(flat.get(), tenant.get());
    saveAndReopen();
    const auto back = theLetting();
    EXPECT_EQ(back->property(), theProperty().get());
    EXPECT_EQ(back->tenant(), only<TKTenant>("Tenant").get());
    ASSERT_EQ(theProperty()->tenures().count(), 1u);
    EXPECT_EQ(&theProperty()->tenures()[0], back.get());
}

TEST_P(StoredContextTest, AOneToOneLinkComesBackOnBothSides) {
    const auto flat = property("Elm Street");
    flat->setAdvertisement(book->insertNewObject<Advertisement>("Advertisement").get());
    saveAndReopen();
    const auto advertisement = only<Advertisement>("Advertisement");
    EXPECT_EQ(advertisement->property(), theProperty().get());
    EXPECT_EQ(theProperty()->advertisement(), advertisement.get());
}

TEST_P(StoredContextTest, ADeletionTakesAlongTheOneLinkOfAnObjectThatNobodyHasRead) {
    property("Elm Street")->setAdvertisement(book->insertNewObject<Advertisement>("Advertisement").get());
    saveAndReopen();
    book->deleteObject(*only<Advertisement>("Advertisement"));
    saveAndReopen();
    EXPECT_FALSE(theProperty()->advertisement());
}

TEST_P(StoredContextTest, AnObjectThatMovesIsLetGoByAnOwnerThatNobodyHasRead) {
    property("Elm")->setAdvertisement(book->insertNewObject<Advertisement>("Advertisement").get());
    property("Ash")->setAdvertisement(book->insertNewObject<Advertisement>("Advertisement").get());
    saveAndReopen();
    const auto advertisements = book->fetchAll<Advertisement>("Advertisement");
    TKProperty* const elm = advertisements[0]->property();
    TKProperty* const ash = advertisements[1]->property();
    ASSERT_TRUE(elm->isFault() && ash->isFault());
    advertisements[0]->setProperty(ash);
    const auto expectMoved = [](const TKProperty& from, const TKProperty& to, const Advertisement& moved,
                                const Advertisement& left) {
        EXPECT_FALSE(from.advertisement());
        EXPECT_EQ(to.advertisement(), &moved);
        EXPECT_FALSE(left.property());
    };
    expectMoved(*elm, *ash, *advertisements[0], *advertisements[1]);
    saveAndReopen();
    const auto flats = book->fetchAll<TKProperty>("Property");
    const auto again = book->fetchAll<Advertisement>("Advertisement");
    expectMoved(*flats[0], *flats[1], *again[0], *again[1]);
}

TEST_P(StoredContextTest, WhatIsReadAgainDoesNotLeadToADeletedObject) {
    property("Elm Street")->setAdvertisement(book->insertNewObject<Advertisement>("Advertisement").get());
    saveAndReopen();
    const auto advertisement = only<Advertisement>("Advertisement");
    const auto flat = theProperty();
    book->deleteObject(*advertisement);
    book->refreshObjectMergeChanges(*flat, false);
    EXPECT_FALSE(flat->advertisement());
    book->rollback();
    EXPECT_EQ(flat->advertisement(), advertisement.get());
    book->deleteObject(*advertisement);
    book->refreshObjectMergeChanges(*flat, false);
    EXPECT_EQ(flat->name()->view(), "Elm Street");
    saveAndReopen();
    EXPECT_FALSE(theProperty()->advertisement());
}

TEST_P(StoredContextTest, FetchesAndMembersComeInTheOrderOfCreation) {
    for (const char* name : {"Elm", "Ash", "Yew"}) property(name);
    const auto tenure = letting();
    pay(*tenure, {3, 1, 2});
    saveAndReopen();
    std::vector<std::string_view> names;
    const auto properties = book->fetchAll<TKProperty>("Property");
    for (const auto& each : properties) names.push_back(each->name()->view());
    EXPECT_THAT(names, ElementsAre("Elm", "Ash", "Yew"));
    EXPECT_THAT(amounts(*theLetting()), ElementsAre(Decimal(3), Decimal(1), Decimal(2)));
}

TEST_P(StoredContextTest, TagsComeBackInTheirOrderAndTagNamesFromThem) {
    const auto flat = property("Elm Street");
    flat->setTagNames(TKTagNames::initWithEditableString("sea, garden, pets"));
    saveAndReopen();
    EXPECT_THAT(tags(*theProperty()), ElementsAre("sea", "garden", "pets"));
    EXPECT_EQ(theProperty()->tagNames()->editableString(), "sea, garden, pets");
    theProperty()->setTagNames(TKTagNames::initWithEditableString("garden, lift, sea"));
    saveAndReopen();
    EXPECT_THAT(tags(*theProperty()), ElementsAre("garden", "lift", "sea"));
}

TEST_P(StoredContextTest, ATagLeadsToItsOwnerWhateverItsEntity) {
    property("Elm Street")->setTagNames(TKTagNames::initWithEditableString("sea"));
    saveAndReopen();
    const auto tag = only<TKTag>("AccountTag");
    EXPECT_EQ(tag->valueForKey(keys::owner).as<TKProperty>(), theProperty());
}

TEST_P(StoredContextTest, AMovedMemberIsWithItsNewOwnerOnly) {
    const auto flat = property("Elm");
    property("Ash");
    letting(flat.get());
    saveAndReopen();
    const auto properties = book->fetchAll<TKProperty>("Property");
    theLetting()->setProperty(properties[1].get());
    EXPECT_EQ(properties[0]->tenures().count(), 0u);
    EXPECT_EQ(properties[1]->tenures().count(), 1u);
    saveAndReopen();
    const auto again = book->fetchAll<TKProperty>("Property");
    EXPECT_EQ(again[0]->tenures().count(), 0u);
    EXPECT_EQ(again[1]->tenures().count(), 1u);
}

TEST_P(StoredContextTest, AMemberThatMovesAnnouncesBothOwnersThoughNobodyHasReadThem) {
    const auto flat = property("Elm");
    property("Ash");
    letting(flat.get());
    saveAndReopen();
    const auto properties = book->fetchAll<TKProperty>("Property");
    const auto tenure = theLetting();
    std::vector<std::string> heard;
    const auto note = [&](std::string_view who) { return [&heard, who] { heard.emplace_back(who); }; };
    const auto first = properties[0]->observe("tenures", note("Elm"));
    const auto second = properties[1]->observe("tenures", note("Ash"));
    tenure->setProperty(properties[1].get());
    EXPECT_THAT(heard, ElementsAre("Elm", "Ash"));
}

TEST_P(StoredContextTest, ADeletionTakesMembersAlongThatNobodyHasRead) {
    const auto tenure = letting();
    pay(*tenure, {1, 2});
    tenure->setProperty(property("Elm").get());
    saveAndReopen();
    book->deleteObject(*theLetting());
    saveAndReopen();
    EXPECT_THAT(book->fetchAll<TKTenureTransaction>("TenureTransaction"), IsEmpty());
    EXPECT_EQ(theProperty()->tenures().count(), 0u);
}

TEST_P(StoredContextTest, ADeletionIsDeniedByMembersThatNobodyHasRead) {
    letting(property("Elm").get());
    saveAndReopen();
    book->deleteObject(*theProperty());
    EXPECT_FALSE(book->save(&error));
    EXPECT_EQ(error->code(), 1600);
    book->rollback();
    EXPECT_FALSE(theProperty()->isDeleted());
}

TEST_P(StoredContextTest, SavingNothingAsksTheStoreForNothing) {
    property("Elm");
    save();
    unsigned saves = 0;
    store->onSave = [&](Store& inner, const StoreChanges& changes) {
        ++saves;
        return inner.save(changes);
    };
    EXPECT_TRUE(book->save());
    // Set to what it is: the object is changed, its row is not.
    theProperty()->setName(theProperty()->name());
    EXPECT_TRUE(book->hasChanges());
    EXPECT_TRUE(book->save());
    EXPECT_EQ(saves, 0u);
    EXPECT_FALSE(book->hasChanges());
}

TEST_P(StoredContextTest, TheJournalTellsWhoChangedWhat) {
    const auto flat = property("Elm");
    book->setCommitOrigin("Ada", "estatebook", "rename");
    save();
    flat->setName(text("Ash"));
    save();
    const auto commits = store->commits();
    ASSERT_TRUE(commits);
    ASSERT_THAT(*commits, SizeIs(2));
    EXPECT_EQ(commits->back().origin.author, "Ada");
    EXPECT_EQ(commits->back().origin.command, "rename");
    const auto entries = store->journalOfCommit(2);
    ASSERT_TRUE(entries);
    ASSERT_THAT(*entries, SizeIs(1));
    EXPECT_EQ(entries->front().property, "name");
    EXPECT_EQ(entries->front().former, Value(text("Elm")));
    EXPECT_EQ(entries->front().current, Value(text("Ash")));
}

TEST_P(StoredContextTest, IdentifiersGoWithTheirRows) {
    const auto elm = property("Elm");
    const auto ash = property("Ash");
    book->setIdentifier(*elm, "p1");
    EXPECT_THAT(*book->identifiers(std::vector<Ref<ManagedObject>>{elm, ash}),
                ElementsAre("p1", std::nullopt));
    saveAndReopen();
    const auto all = book->executeFetchRequest({"Property"});
    EXPECT_THAT(*book->identifiers(*all), ElementsAre("p1", std::nullopt));
}

// Faults

TEST_P(StoredContextTest, ObjectsComeAsFaultsAndAwakeWhenTheyAreRead) {
    letting();
    saveAndReopen();
    const auto tenure = theLetting();
    EXPECT_TRUE(tenure->isFault());
    EXPECT_FALSE(tenure->primitiveValueForKey(keys::currentDate).date());
    EXPECT_TRUE(tenure->currentDate());
    EXPECT_FALSE(tenure->isFault());
}

TEST_P(StoredContextTest, OneRowHasOneObject) {
    letting(property("Elm").get());
    saveAndReopen();
    const auto tenure = theLetting();
    const TKProperty* const flat = tenure->property();
    EXPECT_EQ(theProperty().get(), flat);
    EXPECT_EQ(theLetting(), tenure);
    EXPECT_EQ(&flat->tenures()[0], tenure.get());
}

TEST_P(StoredContextTest, NeighboursAreReadAlongInOneBatch) {
    const auto tenure = letting();
    for (int index = 0; index < 60; ++index) pay(*tenure, {index});
    saveAndReopen();
    const auto back = theLetting();
    static_cast<void>(back->startDate());
    const auto members = back->transactions();
    store->reads = {};
    EXPECT_EQ(members[0].amount(), Decimal(0));
    const auto afterFirst = store->reads;
    EXPECT_LE(afterFirst.batches, 1u);
    EXPECT_THAT(amounts(*back), SizeIs(60));
    EXPECT_EQ(store->reads.batches, afterFirst.batches) << "all others were there already";
    EXPECT_LE(store->reads.memberBatches, 3u) << "of their tags";
}

TEST_P(StoredContextTest, MembersOfManyOwnersAreReadAtOnceWhenTheyAreWalked) {
    for (int index = 0; index < 50; ++index) pay(*letting(), {index, index});
    saveAndReopen();
    const auto tenures = book->fetchAll<TKTenure>("Tenure");
    for (const auto& tenure : tenures) static_cast<void>(tenure->startDate());
    store->reads = {};
    for (const auto& tenure : tenures) EXPECT_EQ(tenure->transactions().count(), 2u);
    EXPECT_EQ(store->reads.memberBatches, 3u) << "of one, of 16, and of all others";
}

TEST_P(StoredContextTest, WhoAsksForOneOwnersMembersGetsNoOthers) {
    for (int index = 0; index < 50; ++index) pay(*letting(), {index, index});
    saveAndReopen();
    const auto tenures = book->fetchAll<TKTenure>("Tenure");
    static_cast<void>(tenures[20]->startDate());
    const std::size_t before = book->objectCount();
    EXPECT_EQ(tenures[20]->transactions().count(), 2u);
    EXPECT_EQ(book->objectCount(), before + 2);
}

TEST_P(StoredContextTest, AnObjectIsFoundByWhatDocumentsCallIt) {
    const auto elm = property("Elm");
    const auto ash = property("Ash");
    const auto tenure = letting(elm.get());
    book->setIdentifier(*elm, "one");
    book->setIdentifier(*ash, "two");
    book->setIdentifier(*tenure, "one");
    const auto nameOf = [&](std::string_view identifier) {
        const auto found = book->objectWithIdentifier("Property", identifier);
        return found ? refCast<TKProperty>(found)->name()->string() : "nobody";
    };
    const auto expectAll = [&] {
        EXPECT_EQ(nameOf("one"), "Elm");
        EXPECT_EQ(nameOf("two"), "Ash");
        EXPECT_EQ(nameOf("three"), "nobody");
        EXPECT_EQ(book->objectWithIdentifier("Account", "two"),
                  book->objectWithIdentifier("Property", "two"));
        EXPECT_TRUE(book->objectWithIdentifier("Tenure", "one"));
        EXPECT_FALSE(book->objectWithIdentifier("Tenant", "one"));
        EXPECT_FALSE(book->objectWithIdentifier("Nothing", "one"));
    };
    expectAll();
    saveAndReopen();
    expectAll();
    // Names given anew count before they are saved.
    const auto found = book->objectWithIdentifier("Property", "two");
    book->setIdentifier(*found, "three");
    EXPECT_EQ(nameOf("three"), "Ash");
    EXPECT_EQ(nameOf("two"), "nobody");
    book->deleteObject(*found);
    EXPECT_EQ(nameOf("three"), "nobody");
    store->unreadable = StoreError{StoreErrorCode::Unreadable, "", "The disk does not answer"};
    Ref<Error> error;
    EXPECT_FALSE(book->objectWithIdentifier("Property", "one", &error));
    ASSERT_TRUE(error);
    store->unreadable.reset();
}

TEST_P(StoredContextTest, AnIdentifierIsFoundAmongAnyNumberOfThem) {
    std::vector<std::string> identifiers;
    for (int number = 0; number < 600; ++number) {
        identifiers.push_back("flat-" + std::to_string(number));
        book->setIdentifier(*property(identifiers.back()), identifiers.back());
    }
    saveAndReopen();
    for (const std::size_t number : {0u, 255u, 256u, 300u, 511u, 512u, 599u}) {
        const auto found = book->objectWithIdentifier("Property", identifiers[number]);
        ASSERT_TRUE(found) << number;
        EXPECT_EQ(refCast<TKProperty>(found)->name()->view(), identifiers[number]);
    }
    EXPECT_FALSE(book->objectWithIdentifier("Property", "flat-600"));
}

TEST_P(StoredContextTest, AFaultWhoseRowIsGoneSaysSo) {
    property("Elm")->createNote();
    saveAndReopen();
    const TKProperty* const flat = only<TKPropertyNote>("PropertyNote")->property();
    ASSERT_TRUE(flat->isFault());
    const auto other = contextOn(store);
    other->deleteObject(*other->fetchAll<TKProperty>("Property").front());
    ASSERT_TRUE(other->save());
    EXPECT_THROW(static_cast<void>(flat->name()), ObjectInaccessibleException);
    EXPECT_THROW(static_cast<void>(flat->name()), ObjectInaccessibleException);
}

TEST_P(StoredContextTest, AStoreThatCannotBeReadIsTold) {
    property("Elm")->createNote();
    saveAndReopen();
    const TKProperty* const flat = only<TKPropertyNote>("PropertyNote")->property();
    store->unreadable = StoreError{StoreErrorCode::Unreadable, "", "The disk does not answer"};
    EXPECT_THROW(static_cast<void>(flat->name()), ObjectInaccessibleException);
    EXPECT_THROW(static_cast<void>(flat->notes()), ObjectInaccessibleException);
    EXPECT_FALSE(book->executeFetchRequest({"Tenure"}, &error));
    EXPECT_EQ(error->localizedDescription(), "The disk does not answer");
    store->unreadable.reset();
    EXPECT_EQ(flat->name()->view(), "Elm") << "nothing is lost by that";
    EXPECT_EQ(flat->notes().count(), 1u);
}

TEST_P(StoredContextTest, WhoeverFetchesAllIsToldWhenTheyCannotBeRead) {
    property("Elm");
    property("Ash");
    saveAndReopen();
    store->unreadable = StoreError{StoreErrorCode::Unreadable, "", "The disk does not answer"};
    try {
        const auto all = book->fetchAll<TKProperty>("Property");
        ADD_FAILURE() << all.size() << " are no answer";
    } catch (const ObjectInaccessibleException& exception) {
        EXPECT_EQ(exception.reason(), "The disk does not answer");
    }
    EXPECT_THAT(book->fetchAll<TKProperty>("Castle"), IsEmpty()) << "nothing is asked";
    store->unreadable.reset();
    EXPECT_THAT(book->fetchAll<TKProperty>("Property"), SizeIs(2));
    EXPECT_THAT(book->fetchAll<TKProperty>("Castle"), IsEmpty());
}

TEST_P(StoredContextTest, ARefreshReadsWhatOthersSaved) {
    property("Elm");
    save();
    const auto mine = theProperty();
    const auto other = contextOn(store);
    other->fetchAll<TKProperty>("Property").front()->setName(text("Ash"));
    ASSERT_TRUE(other->save());
    EXPECT_EQ(mine->name()->view(), "Elm");
    mine->setRentalAmount(Decimal(5));
    book->refreshObjectMergeChanges(*mine, false);
    EXPECT_TRUE(mine->isFault());
    EXPECT_EQ(mine->name()->view(), "Ash");
    EXPECT_FALSE(mine->rentalAmount());
    EXPECT_FALSE(book->hasChanges());
    mine->setName(text("Oak"));
    EXPECT_TRUE(book->save(&error)) << "it is the version that was refreshed";
}

TEST_P(StoredContextTest, MembersThatWereDeletedBeforeARefreshReturnInTheirOrder) {
    property("Elm")->setTagNames(TKTagNames::initWithEditableString("sea, garden, pets"));
    saveAndReopen();
    const auto flat = theProperty();
    for (TKTag& tag : flat->tags()) book->deleteObject(tag);
    book->refreshObjectMergeChanges(*flat, false);
    EXPECT_THAT(tags(*flat), IsEmpty());
    book->rollback();
    EXPECT_THAT(tags(*flat), ElementsAre("sea", "garden", "pets"));
    EXPECT_FALSE(book->hasChanges());
}

TEST_P(StoredContextTest, AMergingRefreshKeepsChangesAndReadsTheRest) {
    property("Elm");
    save();
    const auto mine = theProperty();
    auto other = contextOn(store);
    other->fetchAll<TKProperty>("Property").front()->setName(text("Ash"));
    ASSERT_TRUE(other->save());
    other = nullptr;
    mine->setRentalAmount(Decimal(5));
    book->refreshObjectMergeChanges(*mine, true);
    EXPECT_EQ(mine->name()->view(), "Ash");
    EXPECT_EQ(mine->rentalAmount(), Decimal(5));
    saveAndReopen();
    EXPECT_EQ(theProperty()->name()->view(), "Ash");
    EXPECT_EQ(theProperty()->rentalAmount(), Decimal(5));
}

TEST_P(StoredContextTest, AMergingRefreshOfAnUnchangedObjectLeavesNothingToSave) {
    letting(property("Elm").get());
    save();
    const auto mine = theLetting();
    auto other = contextOn(store);
    const auto theirs = other->fetchAll<TKTenure>("Tenure").front();
    theirs->setRentalAmount(Decimal(5));
    theirs->setProperty(nullptr);
    ASSERT_TRUE(other->save());
    book->refreshObjectMergeChanges(*mine, true);
    EXPECT_EQ(mine->rentalAmount(), Decimal(5));
    EXPECT_EQ(theProperty()->tenures().count(), 0u);
    EXPECT_FALSE(book->hasChanges());
}

TEST_P(StoredContextTest, AValueThatWasPutBackIsNoChange) {
    property("Elm");
    save();
    const auto mine = theProperty();
    const auto other = contextOn(store);
    other->fetchAll<TKProperty>("Property").front()->setName(text("Ash"));
    ASSERT_TRUE(other->save());
    mine->setName(text("Oak"));
    mine->setName(text("Elm"));
    mine->setRentalAmount(Decimal(5));
    book->setMergePolicy(MergePolicy::ObjectTrump);
    save();
    EXPECT_EQ(mine->name()->view(), "Ash");
}

TEST_P(StoredContextTest, ARefreshedOwnerReadsItsMembersAnew) {
    letting();
    save();
    const auto mine = theLetting();
    EXPECT_EQ(mine->transactions().count(), 0u);
    const auto other = contextOn(store);
    pay(*other->fetchAll<TKTenure>("Tenure").front(), {7});
    ASSERT_TRUE(other->save());
    book->refreshObjectMergeChanges(*mine, false);
    EXPECT_THAT(amounts(*mine), ElementsAre(Decimal(7)));
}

TEST_P(StoredContextTest, MembersThatNobodyNeedsAreForgottenAndReadAgain) {
    pay(*letting(), {1, 2, 3});
    pay(*letting(), {4});
    saveAndReopen();
    const auto tenures = book->fetchAll<TKTenure>("Tenure");
    for (const auto& tenure : tenures) static_cast<void>(tenure->startDate());
    const std::size_t withoutMembers = book->objectCount();
    EXPECT_THAT(amounts(*tenures[0]), SizeIs(3));
    EXPECT_THAT(amounts(*tenures[1]), SizeIs(1));
    book->forgetMembers(*tenures[0], keys::transactions);
    EXPECT_EQ(book->objectCount(), withoutMembers + 1) << "the other letting's payment";
    EXPECT_FALSE(book->hasChanges());
    store->reads = {};
    EXPECT_THAT(amounts(*tenures[0]), ElementsAre(Decimal(1), Decimal(2), Decimal(3)));
    EXPECT_EQ(store->reads.memberBatches, 2u) << "of the letting, and the tags of its payments";
    EXPECT_EQ(tenures[0]->totalIncome(), Decimal(6));
    tenures[0]->createTransaction()->setAmount(Decimal(5));
    book->forgetMembers(*tenures[0], keys::transactions);
    EXPECT_THAT(amounts(*tenures[0]), SizeIs(4)) << "one is not saved yet";
    saveAndReopen();
    EXPECT_THAT(amounts(*book->fetchAll<TKTenure>("Tenure").front()), SizeIs(4));
}

TEST_P(StoredContextTest, MembersThatSomebodyNeedsAreNotForgotten) {
    const auto tenure = letting();
    pay(*tenure, {1, 2});
    save();
    const auto requireKept = [&](const char* why) {
        const std::size_t before = book->objectCount();
        book->forgetMembers(*tenure, keys::transactions);
        EXPECT_EQ(book->objectCount(), before) << why;
    };
    static_cast<void>(amounts(*tenure));
    auto held = Ref<ManagedObject>(&*tenure->transactions().begin());
    requireKept("one is held");
    dynamic_cast<TKTransaction&>(*held).setAmount(Decimal(9));
    held = nullptr;
    requireKept("one is changed");
}

TEST_P(StoredContextTest, TagsAreForgottenWithTheirOwner) {
    {
        const auto tenure = letting();
        pay(*tenure, {1, 2});
        (*tenure->transactions().begin())
            .setTagNames(TKTagNames::initWithArray(Array::make({Value(text("Rent")), Value(text("Bank"))})));
    }
    saveAndReopen();
    const auto tenure = theLetting();
    const auto tagged = [&]() -> TKTransaction& { return *tenure->transactions().begin(); };
    const auto readAll = [&] {
        EXPECT_THAT(amounts(*tenure), SizeIs(2));
        EXPECT_THAT(tags(tagged()), ElementsAre("Rent", "Bank"));
    };
    readAll();
    const std::size_t before = book->objectCount();
    book->forgetMembers(*tenure, keys::transactions);
    EXPECT_EQ(book->objectCount(), before - 4);
    readAll();
    EXPECT_EQ(book->objectCount(), before);
    const auto held = Ref<ManagedObject>(&*tagged().tags().begin());
    book->forgetMembers(*tenure, keys::transactions);
    EXPECT_EQ(book->objectCount(), before) << "a tag is held";
    EXPECT_TRUE(held->managedObjectContext());
}

TEST_P(StoredContextTest, OnlyMembersOfItsOwnObjectsAreForgotten) {
    const auto tenure = letting();
    EXPECT_THROW(book->forgetMembers(*tenure, keys::property), InvalidArgumentException);
    EXPECT_THROW(book->forgetMembers(*tenure, keys::name), InvalidArgumentException);
    EXPECT_THROW(contextOn(store)->forgetMembers(*tenure, keys::transactions), InvalidArgumentException);
    EXPECT_NO_THROW(book->forgetMembers(*tenure, keys::transactions)) << "it is not even saved";
}

TEST_P(StoredContextTest, ATenureWhoseAwakeningRaisedHalfWayIsLetGo) {
    const auto tenure = letting();
    tenure->setStartDate(Date{794000000});
    tenure->setRentalAmount(Decimal(1000));
    for (const std::uint64_t cycle : {30u, 99u}) {
        try {
            tenure->setRentalPeriod(Number(std::uint64_t{1}));
            tenure->setRentalBillingCycle(Number(cycle));
        } catch (const Exception&) {
            // It cannot be reckoned with, and stays set.
        }
    }
    saveAndReopen();
    const auto back = theLetting();
    ASSERT_TRUE(back->isFault());
    const auto token = back->observe(
        "balance", [] {}, ObservingNew);
    EXPECT_THROW(static_cast<void>(back->startDate()), Exception);
    EXPECT_NO_THROW(book = nullptr) << "what had not begun does not have to end";
    EXPECT_FALSE(back->managedObjectContext());
}

TEST_P(StoredContextTest, ADeletionThatCannotBeReadIsCarriedOutLater) {
    const auto tenure = letting();
    pay(*tenure, {1, 2});
    saveAndReopen();
    book->deleteObject(*theLetting());
    store->unreadable = StoreError{StoreErrorCode::Unreadable, "", "The disk does not answer"};
    EXPECT_THROW(static_cast<void>(book->save()), ObjectInaccessibleException);
    store->unreadable.reset();
    saveAndReopen();
    EXPECT_THAT(book->fetchAll<TKTenure>("Tenure"), IsEmpty());
    EXPECT_THAT(book->fetchAll<TKTenureTransaction>("TenureTransaction"), IsEmpty());
}

TEST_P(StoredContextTest, ALinkThatCouldNotBeFollowedIsFollowedLater) {
    property("Elm")->setTagNames(TKTagNames::initWithEditableString("sea"));
    saveAndReopen();
    store->unreadableBatches = StoreError{StoreErrorCode::Unreadable, "", "The disk does not answer"};
    EXPECT_FALSE(book->executeFetchRequest({"AccountTag"}, &error));
    EXPECT_EQ(error->localizedDescription(), "The disk does not answer");
    store->unreadableBatches.reset();
    EXPECT_EQ(only<TKTag>("AccountTag")->valueForKey(keys::owner).as<TKProperty>(), theProperty());
    EXPECT_THAT(tags(*theProperty()), ElementsAre("sea"));
}

TEST_P(StoredContextTest, ALinkThatCannotBeMadeForWantOfReadingChangesNeitherSide) {
    property("Elm")->createNote();
    property("Ash");
    saveAndReopen();
    const auto note = only<TKPropertyNote>("PropertyNote");
    const TKProperty* const elm = note->property();
    const auto all = book->fetchAll<TKProperty>("Property");
    store->unreadable = StoreError{StoreErrorCode::Unreadable, "", "The disk does not answer"};
    EXPECT_THROW(note->setProperty(all[1].get()), ObjectInaccessibleException);
    store->unreadable.reset();
    EXPECT_EQ(note->property(), elm);
    EXPECT_EQ(all[0]->notes().count(), 1u);
    EXPECT_EQ(all[1]->notes().count(), 0u);
}

TEST_P(StoredContextTest, WhoeverIsReadDoesNotLeadToAnOwnerThatIsGone) {
    property("Elm")->createNote();
    property("Ash");
    saveAndReopen();
    const auto note = only<TKPropertyNote>("PropertyNote");
    ASSERT_TRUE(note->property());
    {
        const auto other = contextOn(store);
        const auto theirs = other->fetchAll<TKProperty>("Property");
        other->fetchAll<TKPropertyNote>("PropertyNote").front()->setProperty(theirs[1].get());
        ASSERT_TRUE(other->save());
    }
    book->deleteObject(*book->fetchAll<TKProperty>("Property").front());
    save();
    EXPECT_FALSE(note->property());
}

TEST_P(StoredContextTest, ABookThatLeadsToSomethingElseIsNotTakenForWhatItSays) {
    auto changes = estatebook::test::newChanges();
    changes.insertions = {estatebook::test::RowOf("Tenant", 1),
                          estatebook::test::RowOf("PropertyTransaction", 2).to(keys::property, 1)};
    ASSERT_TRUE(store->save(changes));
    ASSERT_THAT(book->fetchAll<TKTenant>("Tenant"), SizeIs(1));
    EXPECT_FALSE(book->executeFetchRequest({"PropertyTransaction"}, &error));
    EXPECT_THAT(error->localizedDescription(), HasSubstr("as to one of \"Property\""));
    book->reset();
    EXPECT_TRUE(book->executeFetchRequest({"PropertyTransaction"}, &error));
    EXPECT_FALSE(book->executeFetchRequest({"Tenant"}, &error));
}

TEST_P(StoredContextTest, AMergingRefreshOfAnUnchangedObjectLeavesItUnchanged) {
    property("Elm");
    save();
    const auto mine = theProperty();
    {
        const auto other = contextOn(store);
        other->fetchAll<TKProperty>("Property").front()->setName(text("Ash"));
        ASSERT_TRUE(other->save());
    }
    book->refreshObjectMergeChanges(*mine, true);
    EXPECT_EQ(mine->name()->view(), "Ash");
    EXPECT_FALSE(book->hasChanges());
}

// Fetches

TEST_P(StoredContextTest, AFetchSeesUnsavedChanges) {
    property("Elm");
    property("Ash");
    property("Elm");
    saveAndReopen();
    const auto named = [&](std::string_view name) {
        std::vector<std::uint64_t> found;
        const auto predicate = Predicate::predicateWithFormat("name = %@", Value(text(name)));
        const auto objects = book->executeFetchRequest({"Property", predicate});
        for (const auto& each : *objects) found.push_back(each->creationNumber());
        return found;
    };
    const auto all = book->fetchAll<TKProperty>("Property");
    const auto number = [&](std::size_t index) { return all[index]->creationNumber(); };
    EXPECT_THAT(named("Elm"), ElementsAre(number(0), number(2)));
    all[0]->setName(text("Oak"));
    all[1]->setName(text("Elm"));
    const auto added = property("Elm");
    EXPECT_THAT(named("Elm"), ElementsAre(number(1), number(2), added->creationNumber()));
    book->deleteObject(*all[2]);
    EXPECT_THAT(named("Elm"), ElementsAre(number(1), added->creationNumber()));
    EXPECT_THAT(named("Oak"), ElementsAre(number(0)));
}

TEST_P(StoredContextTest, AFetchByADerivedKeyAsksTheObjects) {
    const auto tenure = letting();
    pay(*tenure, {100});
    letting();
    saveAndReopen();
    const auto paid = book->executeFetchRequest(
        {"Tenure", Predicate::predicateWithFormat("totalIncome = %@", Value(Decimal(100)))});
    ASSERT_TRUE(paid);
    EXPECT_THAT(*paid, SizeIs(1));
}

TEST_P(StoredContextTest, ASumIsAskedOfTheStoreAsFarAsNobodyHasReadTheMembers) {
    const auto flat = property("Elm");
    const auto other = property("Ash");
    for (const int amount : {1, 2, 4, 8, 16, 32}) flat->createTransaction()->setAmount(Decimal(amount));
    other->createTransaction()->setAmount(Decimal(64));
    saveAndReopen();
    const auto back = book->fetchAll<TKProperty>("Property");
    const auto sum = [&](std::size_t index) { return back[index]->totalIncome(); };
    EXPECT_EQ(sum(0), Decimal(63));
    EXPECT_EQ(store->reads.memberBatches, 1u) << "the tags of the properties, and no payments";
    EXPECT_EQ(store->reads.sums, 1u);
    // One was changed, one moved away, one came, one is new and one is gone.
    const auto costs = book->fetchAll<TKPropertyTransaction>("PropertyTransaction");
    costs[0]->setAmount(Decimal(101));
    costs[1]->setProperty(back[1].get());
    costs[6]->setProperty(back[0].get());
    back[0]->createTransaction()->setAmount(Decimal(1000));
    book->deleteObject(*costs[2]);
    book->processPendingChanges();
    EXPECT_EQ(sum(0), Decimal(101 + 8 + 16 + 32 + 64 + 1000));
    EXPECT_EQ(sum(1), Decimal(2));
    saveAndReopen();
    const auto again = book->fetchAll<TKProperty>("Property");
    const auto all = again[0]->transactions();
    EXPECT_TRUE(static_cast<const TKPropertyTransaction&>(all[5]).isFault());
    EXPECT_EQ(again[0]->totalIncome(), Decimal(101 + 8 + 16 + 32 + 64 + 1000));
    EXPECT_EQ(store->reads.sums, 1u) << "faults that are known are added up there, too";
}

TEST_P(StoredContextTest, ASettingThatIsThereIsFoundAgain) {
    TKState::stateForKeyInManagedObjectContext(text("Colour"), *book)->setValue(Value(text("green")));
    saveAndReopen();
    const auto found = TKState::stateForKeyInManagedObjectContext(text("Colour"), *book);
    EXPECT_EQ(found->value(), Value(text("green")));
    EXPECT_FALSE(book->hasChanges());
}

// Failing, undoing

TEST_P(StoredContextTest, ASaveThatFailsLeavesEverythingChanged) {
    const auto flat = property("Elm");
    save();
    flat->setName(text("Ash"));
    const auto added = property("Oak");
    const auto number = added->creationNumber();
    store->onSave = [](Store&, const StoreChanges&) -> StoreResult<SaveOutcome> {
        return StoreError{StoreErrorCode::Full, "", "There is no room left"};
    };
    EXPECT_FALSE(book->save(&error));
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(StoreErrorCode::Full));
    EXPECT_THAT(book->insertedObjects(), ElementsAre(added));
    EXPECT_THAT(book->updatedObjects(), ElementsAre(flat));
    EXPECT_EQ(added->creationNumber(), number);
    store->onSave = nullptr;
    saveAndReopen();
    EXPECT_THAT(book->fetchAll<TKProperty>("Property"), SizeIs(2));
}

TEST_P(StoredContextTest, ASaveNobodyKnowsOfIsAskedAboutAndNeverDoneTwice) {
    const auto flat = property("Elm");
    save();
    flat->setName(text("Ash"));
    const auto added = property("Oak");
    store->onSave = [&](Store& inner, const StoreChanges& changes) -> StoreResult<SaveOutcome> {
        EXPECT_TRUE(inner.save(changes));
        return unknown;
    };
    EXPECT_FALSE(book->save(&error));
    EXPECT_TRUE(added->isInserted());
    store->outcomeUnknown = unknown;
    EXPECT_FALSE(book->save(&error));
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(StoreErrorCode::OutcomeUnknown));
    // Meanwhile the user goes on.
    added->setRentalAmount(Decimal(7));
    flat->setRentalAmount(Decimal(8));
    store->outcomeUnknown.reset();
    store->onSave = nullptr;
    ASSERT_TRUE(book->save(&error)) << error->localizedDescription();
    EXPECT_FALSE(book->hasChanges());
    reopen();
    const auto all = book->fetchAll<TKProperty>("Property");
    ASSERT_THAT(all, SizeIs(2));
    EXPECT_EQ(all[0]->name()->view(), "Ash");
    EXPECT_EQ(all[0]->rentalAmount(), Decimal(8));
    EXPECT_EQ(all[1]->name()->view(), "Oak");
    EXPECT_EQ(all[1]->rentalAmount(), Decimal(7));
}

TEST_P(StoredContextTest, WhatOthersChangeInASaveNobodyKnewOfIsAConflictOnlyForWhoChangedIt) {
    const auto one = property("Elm");
    const auto two = property("Oak");
    saveUnknowingly();
    {
        const auto other = contextOn(store);
        for (const auto& theirs : other->fetchAll<TKProperty>("Property")) theirs->setBondAmount(Decimal(3));
        ASSERT_TRUE(other->save());
    }
    two->setRentalAmount(Decimal(7));
    book->setMergePolicy(MergePolicy::ObjectTrump);
    save();
    reopen();
    for (const auto& each : book->fetchAll<TKProperty>("Property"))
        EXPECT_EQ(each->bondAmount(), Decimal(3)) << "which we have not touched";
    EXPECT_EQ(book->fetchAll<TKProperty>("Property")[1]->rentalAmount(), Decimal(7));
}

TEST_P(StoredContextTest, ASaveNobodyKnowsOfThatDidNotLandIsDoneAgain) {
    property("Elm");
    store->onSave = [&](Store&, const StoreChanges&) -> StoreResult<SaveOutcome> { return unknown; };
    EXPECT_FALSE(book->save(&error));
    store->onSave = nullptr;
    saveAndReopen();
    EXPECT_EQ(theProperty()->name()->view(), "Elm");
}

TEST_P(StoredContextTest, WhatIsTakenBackAfterASaveNobodyKnowsOfIsTakenBackInTheStore) {
    const auto flat = property("Elm");
    save();
    book->undoManager()->endEvent();
    flat->setName(text("Ash"));
    letting(property("Oak").get());
    saveUnknowingly();
    store->outcomeUnknown = unknown;
    book->undo();
    EXPECT_FALSE(book->executeFetchRequest({"Property"}, &error)) << "what it would find may be here already";
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(StoreErrorCode::OutcomeUnknown));
    store->outcomeUnknown.reset();
    EXPECT_THAT(book->fetchAll<TKProperty>("Property"), ElementsAre(flat));
    save();
    EXPECT_FALSE(book->hasChanges());
    EXPECT_THAT(book->fetchAll<TKProperty>("Property"), ElementsAre(flat));
    reopen();
    EXPECT_EQ(theProperty()->name()->view(), "Elm");
    EXPECT_THAT(book->fetchAll<TKTenure>("Tenure"), IsEmpty());
}

TEST_P(StoredContextTest, ADeletionThatLandedUnknowinglyAndIsTakenBackIsSavedAsAnotherRow) {
    const auto tenure = letting(property("Elm").get());
    pay(*tenure, {1, 2});
    save();
    book->undoManager()->endEvent();
    const auto number = tenure->creationNumber();
    book->deleteObject(*tenure);
    saveUnknowingly();
    store->outcomeUnknown = unknown;
    book->rollback();
    store->outcomeUnknown.reset();
    letting(theProperty().get());
    save();
    EXPECT_GT(tenure->creationNumber(), number);
    EXPECT_EQ(&theProperty()->tenures()[0], tenure.get());
    EXPECT_THAT(book->fetchAll<TKTenure>("Tenure"), SizeIs(2));
    reopen();
    const auto all = book->fetchAll<TKTenure>("Tenure");
    ASSERT_THAT(all, SizeIs(2));
    EXPECT_THAT(amounts(*all[0]), ElementsAre(Decimal(1), Decimal(2)));
    EXPECT_EQ(all[0]->property(), theProperty().get());
}

TEST_P(StoredContextTest, AFaultKeepsWhatWasSavedUnknowingly) {
    const auto flat = property("Elm");
    save();
    flat->setName(text("Ash"));
    saveUnknowingly();
    book->refreshObjectMergeChanges(*flat, false);
    property("Oak");
    save();
    EXPECT_EQ(flat->name()->view(), "Ash");
    reopen();
    EXPECT_EQ(book->fetchAll<TKProperty>("Property").front()->name()->view(), "Ash");
}

TEST_P(StoredContextTest, AnOrderThatWasSavedUnknowinglyAndIsTakenBackIsSaved) {
    const auto flat = property("Elm");
    flat->setTagNames(TKTagNames::initWithEditableString("sea, garden, pets"));
    save();
    book->undoManager()->endEvent();
    auto members = flat->mutableOrderedSetValueForKey(keys::tags);
    const Ref<ManagedObject> first(&members.objectAtIndex(0));
    members.removeObject(*first);
    members.addObject(*first);
    flat->setTagNames(TKTag::fetchTagNamesFromTaggableObject(*flat));
    saveUnknowingly();
    store->outcomeUnknown = unknown;
    book->undo();
    store->outcomeUnknown.reset();
    saveAndReopen();
    EXPECT_THAT(tags(*theProperty()), ElementsAre("sea", "garden", "pets"));
}

TEST_P(StoredContextTest, ARollbackReturnsToASaveThatTurnsOutToHaveLanded) {
    const auto flat = property("Elm");
    save();
    flat->setName(text("Ash"));
    const auto added = property("Oak");
    saveUnknowingly();
    flat->setName(text("Yew"));
    book->rollback();
    EXPECT_EQ(flat->name()->view(), "Ash");
    EXPECT_THAT(book->fetchAll<TKProperty>("Property"), ElementsAre(flat, added));
    EXPECT_FALSE(book->hasChanges());
}

TEST_P(StoredContextTest, ANameGivenAfterASaveNobodyKnowsOfIsKept) {
    const auto flat = property("Elm");
    book->setIdentifier(*flat, "p1");
    saveUnknowingly();
    book->setIdentifier(*flat, "p2");
    saveAndReopen();
    const std::vector<Ref<ManagedObject>> all{theProperty()};
    EXPECT_THAT(*book->identifiers(all), ElementsAre("p2"));
}

TEST_P(StoredContextTest, ARollbackReturnsToWhatTheStoreHas) {
    const auto tenure = letting(property("Elm").get());
    pay(*tenure, {1, 2});
    saveAndReopen();
    const auto back = theLetting();
    back->setRentalAmount(Decimal(9));
    back->setProperty(property("Ash").get());
    pay(*back, {3});
    book->deleteObject(back->transactions()[0]);
    book->rollback();
    EXPECT_FALSE(back->rentalAmount());
    EXPECT_EQ(back->property()->name()->view(), "Elm");
    EXPECT_THAT(amounts(*back), ElementsAre(Decimal(1), Decimal(2)));
    EXPECT_FALSE(book->hasChanges());
    saveAndReopen();
    EXPECT_THAT(amounts(*theLetting()), ElementsAre(Decimal(1), Decimal(2)));
}

TEST_P(StoredContextTest, ARollbackTakesBackWhatWasInsertedThoughItsDeletionIsRefused) {
    const auto tenure = letting();
    save();
    const auto flat = property("Elm");
    tenure->setProperty(flat.get());
    book->deleteObject(*flat);
    EXPECT_FALSE(book->save(&error));
    book->rollback();
    EXPECT_THAT(book->fetchAll<TKProperty>("Property"), IsEmpty());
    EXPECT_FALSE(tenure->property());
    EXPECT_FALSE(book->hasChanges());
}

TEST_P(StoredContextTest, AnOrderReturnsToASaveThatTurnsOutToHaveLanded) {
    const auto flat = property("Elm");
    flat->setTagNames(TKTagNames::initWithEditableString("sea, garden, pets"));
    saveUnknowingly();
    store->outcomeUnknown = unknown;
    book->rollback();
    store->outcomeUnknown.reset();
    book->rollback();
    EXPECT_THAT(tags(*flat), ElementsAre("sea", "garden", "pets"));
}

TEST_P(StoredContextTest, AnUndoneDeletionIsSavedAsAnotherRow) {
    const auto tenure = letting(property("Elm").get());
    pay(*tenure, {1, 2});
    save();
    book->undoManager()->endEvent();
    const auto number = tenure->creationNumber();
    book->deleteObject(*tenure);
    save();
    book->undo();
    EXPECT_EQ(theLetting(), tenure);
    save();
    EXPECT_GT(tenure->creationNumber(), number);
    reopen();
    EXPECT_THAT(amounts(*theLetting()), ElementsAre(Decimal(1), Decimal(2)));
    EXPECT_EQ(theLetting()->property()->name()->view(), "Elm");
}

TEST_P(StoredContextTest, AnUndoneDeletionBringsBackMembersThatNobodyHadRead) {
    pay(*letting(), {1, 2});
    saveAndReopen();
    const auto tenure = theLetting();
    book->deleteObject(*tenure);
    book->undo();
    EXPECT_THAT(amounts(*tenure), ElementsAre(Decimal(1), Decimal(2)));
    saveAndReopen();
    EXPECT_THAT(amounts(*theLetting()), ElementsAre(Decimal(1), Decimal(2)));
}

TEST_P(StoredContextTest, AnUndoneChangeIsSaved) {
    const auto flat = property("Elm");
    save();
    book->undoManager()->endEvent();
    flat->setName(text("Ash"));
    save();
    book->undo();
    saveAndReopen();
    EXPECT_EQ(theProperty()->name()->view(), "Elm");
}

TEST_P(StoredContextTest, AResetForgetsTheObjectsButNotTheRows) {
    property("Elm");
    save();
    const auto held = theProperty();
    book->reset();
    EXPECT_FALSE(held->managedObjectContext());
    EXPECT_FALSE(held->name());
    EXPECT_NE(theProperty(), held);
    EXPECT_EQ(theProperty()->name()->view(), "Elm");
}

TEST_P(StoredContextTest, ObjectsInsertedBeforeTheStoreCameAreSavedInIt) {
    auto coordinator = makeRef<PersistentStoreCoordinator>(bookModel());
    book = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
    book->setPersistentStoreCoordinator(coordinator);
    const auto flat = property("Elm");
    coordinator->addPersistentStore(Ref<Store>(store));
    coordinator = nullptr;
    letting(flat.get());
    saveAndReopen();
    EXPECT_EQ(theLetting()->property(), theProperty().get());
}

// Conflicts

class ConflictTest : public StoredContextTest {
protected:
    Ref<TKProperty> mine;

    /// Both change the property: the name both, the rent we, the bond they.
    void conflict(MergePolicy policy) {
        const auto flat = property("Elm");
        flat->setRentalAmount(Decimal(1));
        flat->setBondAmount(Decimal(1));
        save();
        mine = theProperty();
        const auto other = contextOn(store);
        const auto theirs = other->fetchAll<TKProperty>("Property").front();
        theirs->setName(text("Theirs"));
        theirs->setBondAmount(Decimal(3));
        ASSERT_TRUE(other->save());
        mine->setName(text("Mine"));
        mine->setRentalAmount(Decimal(2));
        book->setMergePolicy(policy);
    }
    /// The other context deletes what we change.
    void lose(MergePolicy policy) {
        property("Elm");
        save();
        mine = theProperty();
        mine->setName(text("Mine"));
        const auto other = contextOn(store);
        other->deleteObject(*other->fetchAll<TKProperty>("Property").front());
        ASSERT_TRUE(other->save());
        book->setMergePolicy(policy);
    }
    void expectSaved(std::string_view name, int rent, int bond) {
        ASSERT_TRUE(book->save(&error)) << error->localizedDescription();
        EXPECT_FALSE(book->hasChanges());
        const auto expect = [&] {
            EXPECT_EQ(theProperty()->name()->view(), name);
            EXPECT_EQ(theProperty()->rentalAmount(), Decimal(rent));
            EXPECT_EQ(theProperty()->bondAmount(), Decimal(bond));
        };
        expect();
        reopen();
        expect();
    }
};

INSTANTIATE_TEST_SUITE_P(Stores, ConflictTest, testing::ValuesIn(storeKinds()),
                         [](const auto& kind) { return kind.param.name; });

TEST_P(ConflictTest, IsAnErrorWithTheListAtFirst) {
    conflict(MergePolicy::Error);
    EXPECT_FALSE(book->save(&error));
    EXPECT_EQ(error->code(), 133020);
    const auto list = error->userInfo()->find(ConflictListKey).as<Array>();
    ASSERT_TRUE(list);
    ASSERT_EQ(list->count(), 1u);
    const auto told = list->at(0).as<MergeConflict>();
    EXPECT_EQ(told->sourceObject(), mine);
    EXPECT_EQ(told->oldVersionNumber(), 1);
    EXPECT_EQ(told->newVersionNumber(), 2);
    EXPECT_EQ(mine->name()->view(), "Mine");
    EXPECT_TRUE(mine->isUpdated());
}

TEST_P(ConflictTest, TheStoreTrumpsPropertyByProperty) {
    conflict(MergePolicy::StoreTrump);
    expectSaved("Theirs", 2, 3);
}

TEST_P(ConflictTest, TheObjectTrumpsPropertyByProperty) {
    conflict(MergePolicy::ObjectTrump);
    expectSaved("Mine", 2, 3);
}

TEST_P(ConflictTest, TheObjectOverwritesTheWholeRow) {
    conflict(MergePolicy::Overwrite);
    expectSaved("Mine", 2, 1);
}

TEST_P(ConflictTest, TheObjectIsRolledBackToTheRow) {
    conflict(MergePolicy::Rollback);
    expectSaved("Theirs", 1, 3);
}

TEST_P(ConflictTest, ADeletionOfWhatOthersChangedFollowsThePolicy) {
    for (const MergePolicy policy :
         {MergePolicy::StoreTrump, MergePolicy::Rollback, MergePolicy::ObjectTrump, MergePolicy::Overwrite}) {
        property("Elm");
        save();
        const auto flat = book->fetchAll<TKProperty>("Property").back();
        const auto other = contextOn(store);
        other->fetchAll<TKProperty>("Property").back()->setName(text("Theirs"));
        ASSERT_TRUE(other->save());
        book->deleteObject(*flat);
        book->setMergePolicy(policy);
        ASSERT_TRUE(book->save(&error)) << error->localizedDescription();
        const bool storeWins = policy == MergePolicy::StoreTrump || policy == MergePolicy::Rollback;
        EXPECT_EQ(flat->managedObjectContext() != nullptr, storeWins);
        if (storeWins) {
            EXPECT_EQ(flat->name()->view(), "Theirs");
        }
        for (const auto& each : book->fetchAll<TKProperty>("Property")) book->deleteObject(*each);
        book->setMergePolicy(MergePolicy::Error);
        save();
    }
}

TEST_P(ConflictTest, ALinkThatIsTakenAwayWinsOverOneToWhatWasNeverRead) {
    property("Elm")->createNote();
    property("Ash");
    saveAndReopen();
    const auto note = only<TKPropertyNote>("PropertyNote");
    {
        const auto other = contextOn(store);
        const auto theirs = other->fetchAll<TKProperty>("Property");
        other->fetchAll<TKPropertyNote>("PropertyNote").front()->setProperty(theirs[1].get());
        ASSERT_TRUE(other->save());
    }
    note->setProperty(nullptr);
    book->setMergePolicy(MergePolicy::ObjectTrump);
    saveAndReopen();
    EXPECT_FALSE(only<TKPropertyNote>("PropertyNote")->property());
}

TEST_P(ConflictTest, WhatBothHaveDeletedIsGone) {
    for (const MergePolicy policy : {MergePolicy::Error, MergePolicy::ObjectTrump, MergePolicy::Rollback}) {
        lose(policy);
        book->deleteObject(*mine);
        ASSERT_TRUE(book->save(&error)) << error->localizedDescription();
        EXPECT_FALSE(mine->managedObjectContext());
        EXPECT_FALSE(book->hasChanges());
    }
}

TEST_P(ConflictTest, ARowThatIsGoneTakesTheObjectAlongWhenTheStoreWins) {
    for (const MergePolicy policy : {MergePolicy::StoreTrump, MergePolicy::Rollback}) {
        lose(policy);
        ASSERT_TRUE(book->save(&error)) << error->localizedDescription();
        EXPECT_FALSE(mine->managedObjectContext());
        EXPECT_FALSE(book->hasChanges());
        EXPECT_THAT(book->fetchAll<TKProperty>("Property"), IsEmpty());
    }
}

TEST_P(ConflictTest, ARowThatIsGoneFailsTheSaveWhenTheObjectWouldWin) {
    for (const MergePolicy policy : {MergePolicy::ObjectTrump, MergePolicy::Overwrite, MergePolicy::Error}) {
        lose(policy);
        EXPECT_FALSE(book->save(&error));
        EXPECT_EQ(error->code(), 133020);
        EXPECT_TRUE(mine->isUpdated());
        EXPECT_EQ(mine->name()->view(), "Mine");
        book->reset();
    }
}

// The coordinator

TEST(PersistentStoreCoordinatorTest, OpensEachTypeOfStore) {
    const estatebook::test::TestFolder folder;
    for (const std::string_view type : {"InMemory", "SQLite"}) {
        const auto coordinator = makeRef<PersistentStoreCoordinator>(bookModel());
        const auto store = coordinator->addPersistentStore(type, folder.file("book.estatebook"));
        ASSERT_TRUE(store);
        EXPECT_EQ(store->type(), type);
        EXPECT_EQ(coordinator->persistentStore(), store);
    }
    Ref<Error> error;
    const auto again = makeRef<PersistentStoreCoordinator>(bookModel());
    EXPECT_TRUE(again->addPersistentStore("SQLite", folder.file("book.estatebook"), {.isReadOnly = true}));
    EXPECT_FALSE(again->addPersistentStore("InMemory", "", {}, &error));
    EXPECT_THAT(error->localizedDescription(), HasSubstr("has a store already"));
}

TEST(PersistentStoreCoordinatorTest, RefusesWhatItCannotOpen) {
    const estatebook::test::TestFolder folder;
    Ref<Error> error;
    const auto coordinator = makeRef<PersistentStoreCoordinator>(bookModel());
    EXPECT_FALSE(coordinator->addPersistentStore("Binary", "", {}, &error));
    EXPECT_THAT(error->localizedDescription(), HasSubstr("no type of stores \"Binary\""));
    EXPECT_FALSE(coordinator->addPersistentStore("SQLite", folder.file("none.estatebook"),
                                                 {.isReadOnly = true}, &error));
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(StoreErrorCode::Missing));
    EXPECT_FALSE(coordinator->addPersistentStore("SQLite", folder.file("none.estatebook"),
                                                 {.createsMissing = false}, &error));
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(StoreErrorCode::Missing));
    EXPECT_FALSE(coordinator->persistentStore());
    EXPECT_FALSE(
        makeRef<PersistentStoreCoordinator>(nullptr)->addPersistentStore("InMemory", "", {}, &error));
}

} // namespace
} // namespace estatebook::platform
