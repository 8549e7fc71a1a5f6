// SPDX-License-Identifier: MIT
#include "tags/TKTag.hpp"

#include "model/Keys.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/values/Exception.hpp"
#include "support/Book.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::Book;
using bookkit::Listener;
using bookkit::text;

std::vector<std::string> namesOf(const TKTaggable& owner) {
    std::vector<std::string> names;
    for (const TKTag& tag : owner.tags()) names.push_back(bookkit::shownText(tag.name()));
    return names;
}

using Names = std::vector<std::string>;

class TKTagTest : public testing::Test {
protected:
    static Ref<TKTagNames> names(std::string_view editable) {
        return TKTagNames::initWithEditableString(editable);
    }

    /// A saved transaction with tags of these names, its names being the tags' own, as after a fetch.
    Ref<TKTenureTransaction> fetched(std::string_view editable) const {
        auto owner = book.insert<TKTenureTransaction>("TenureTransaction");
        TKTag::replaceTagNamesForTaggableObject(names(editable), *owner);
        owner->setTagNames(TKTag::fetchTagNamesFromTaggableObject(*owner));
        EXPECT_TRUE(book->save());
        return owner;
    }
    std::vector<Ref<TKTag>> allTags(std::string_view entity = "TransactionTag") const {
        return book->fetchAll<TKTag>(entity);
    }
    const Book book;
};

// Reading the names

TEST_F(TKTagTest, TheNamesOfAnOwnersTagsAreReadInTheirOrder) {
    const auto owner = fetched("Rent, Repairs");
    EXPECT_EQ(owner->tagNames()->editableString(), "Rent, Repairs");
}

TEST_F(TKTagTest, TheNamesReadAreTheVeryTextsOfTheTags) {
    const auto owner = fetched("Rent, Repairs");
    const auto read = TKTag::fetchTagNamesFromTaggableObject(*owner);
    for (std::size_t place = 0; place < 2; ++place)
        EXPECT_EQ(read->items()->at(place).string(), owner->tags()[place].name());
}

TEST_F(TKTagTest, EachReadingMakesNewNames) {
    const auto owner = fetched("Rent");
    EXPECT_NE(TKTag::fetchTagNamesFromTaggableObject(*owner), TKTag::fetchTagNamesFromTaggableObject(*owner));
}

TEST_F(TKTagTest, WithoutTagsTheNamesReadAreEmpty) {
    const auto owner = book.insert<TKTenureTransaction>("TenureTransaction");
    EXPECT_TRUE(TKTag::fetchTagNamesFromTaggableObject(*owner)->isEmpty());
}

TEST_F(TKTagTest, ARepeatedNameIsReadOnceAtItsFirstPlace) {
    const auto owner = fetched("Rent, Repairs");
    auto tags = owner->mutableOrderedSetValueForKey(keys::tags);
    tags.addObject(*owner->createTagWithName(text("Rent")));
    EXPECT_EQ(owner->tags().count(), 3u);
    EXPECT_EQ(TKTag::fetchTagNamesFromTaggableObject(*owner)->editableString(), "Rent, Repairs");
}

TEST_F(TKTagTest, ATagWithoutANameCannotBeRead) {
    const auto owner = fetched("Rent");
    auto tags = owner->mutableOrderedSetValueForKey(keys::tags);
    tags.addObject(*owner->createTagWithName(nullptr));
    EXPECT_THROW((void)TKTag::fetchTagNamesFromTaggableObject(*owner), InvalidArgumentException);
    EXPECT_EQ(owner->tags().count(), 2u);
}

// Creating

TEST_F(TKTagTest, ACreatedTagIsInsertedWithItsNameButNotYetATagOfTheOwner) {
    const auto owner = book.insert<TKTenureTransaction>("TenureTransaction");
    const auto name = text("Rent");
    const TKTag* tag = owner->createTagWithName(name);
    EXPECT_EQ(tag->name(), name);
    EXPECT_TRUE(tag->isInserted());
    EXPECT_EQ(tag->managedObjectContext(), &book.context());
    EXPECT_TRUE(owner->tags().empty());
}

TEST_F(TKTagTest, EachKindOfOwnerMakesTagsOfItsOwnEntity) {
    const auto entityOfTag = [](TKTaggable& owner) {
        return std::string(owner.createTagWithName(text("x"))->entity().name());
    };
    const auto house = book.property("Elm Street");
    const auto smith = book.tenant("A. Smith");
    const auto tenure = book.tenure();
    EXPECT_EQ(entityOfTag(*house), "AccountTag");
    EXPECT_EQ(entityOfTag(*smith), "AccountTag");
    EXPECT_EQ(entityOfTag(*house->createTransaction()), "TransactionTag");
    EXPECT_EQ(entityOfTag(*tenure->createTransaction()), "TransactionTag");
    EXPECT_EQ(entityOfTag(*house->createNote()), "NoteTag");
    EXPECT_EQ(entityOfTag(*smith->createNote()), "NoteTag");
    EXPECT_EQ(entityOfTag(*tenure->createNote()), "NoteTag");
}

TEST_F(TKTagTest, AnOwnerWithoutAContextCanMakeNoTags) {
    const auto* entity =
        EntityDescription::entityForNameInManagedObjectContext("TenureTransaction", book.context());
    const auto loose = refCast<TKTenureTransaction>(
        ManagedObject::initWithEntityInsertIntoManagedObjectContext(*entity, nullptr));
    EXPECT_THROW((void)loose->createTagWithName(text("Rent")), InvalidArgumentException);
    EXPECT_THROW(TKTag::replaceTagNamesForTaggableObject(names("Rent"), *loose), InvalidArgumentException);
    EXPECT_NO_THROW(TKTag::replaceTagNamesForTaggableObject(nullptr, *loose));
    EXPECT_TRUE(loose->tags().empty());
    const auto tag = refCast<TKTag>(ManagedObject::initWithEntityInsertIntoManagedObjectContext(
        *entity->model().entityNamed("TransactionTag"), nullptr));
    tag->setValueForKey(Value(loose), keys::owner);
    EXPECT_THROW(TKTag::replaceTagNamesForTaggableObject(nullptr, *loose), InvalidArgumentException);
    EXPECT_EQ(loose->tags().count(), 1u);
}

TEST_F(TKTagTest, ANameThatIsNoTextIsRefusedBeforeAnyTagGoes) {
    const auto owner = book.insert<TKTenureTransaction>("TenureTransaction");
    owner->setTagNames(names("Rent"));
    ASSERT_TRUE(book.context().save());
    owner->setTagNames(TKTagNames::initWithArray(Array::make({Value(text("Rent")), Value(7)})));
    EXPECT_THROW(static_cast<void>(book.context().save()), InvalidArgumentException);
    EXPECT_EQ(owner->tags().count(), 1u);
}

// Replacing

TEST_F(TKTagTest, ReplacingDeletesEveryTagEvenOneWhoseNameRemains) {
    const auto owner = fetched("Rent, Repairs");
    const auto before = owner->tags().members();
    TKTag::replaceTagNamesForTaggableObject(names("Repairs, Garden"), *owner);
    EXPECT_EQ(namesOf(*owner), (Names{"Repairs", "Garden"}));
    for (const auto& tag : before) {
        EXPECT_TRUE(tag->isDeleted());
        for (const TKTag& each : owner->tags()) EXPECT_NE(&each, tag.get());
    }
    EXPECT_EQ(allTags().size(), 2u);
}

TEST_F(TKTagTest, ReplacingWithNoNamesLeavesNoTags) {
    const auto owner = fetched("Rent, Repairs");
    TKTag::replaceTagNamesForTaggableObject(nullptr, *owner);
    EXPECT_TRUE(owner->tags().empty());
    EXPECT_TRUE(allTags().empty());
}

TEST_F(TKTagTest, ReplacingWithEmptyNamesLeavesNoTags) {
    const auto owner = fetched("Rent, Repairs");
    TKTag::replaceTagNamesForTaggableObject(names(""), *owner);
    EXPECT_TRUE(owner->tags().empty());
}

TEST_F(TKTagTest, ReplacingAnnouncesTheTagsAndKeepsTheNamesTexts) {
    const auto owner = fetched("Rent");
    const auto listener = makeRef<Listener>();
    listener->listenTo(*owner, "tags");
    const auto given = names("Garden, Repairs");
    TKTag::replaceTagNamesForTaggableObject(given, *owner);
    EXPECT_GT(listener->times("tags"), 0u);
    ASSERT_EQ(owner->tags().count(), 2u);
    for (std::size_t place = 0; place < 2; ++place)
        EXPECT_EQ(owner->tags()[place].name(), given->items()->at(place).string());
}

// Updating

TEST_F(TKTagTest, UpdatingWithTheTagsOwnNamesChangesNothing) {
    const auto owner = fetched("Rent, Repairs");
    const auto before = owner->tags().members();
    TKTag::updateTagNamesForTaggableObject(TKTag::fetchTagNamesFromTaggableObject(*owner), *owner);
    EXPECT_EQ(owner->tags().members(), before);
    EXPECT_FALSE(book->hasChanges());
}

TEST_F(TKTagTest, UpdatingWithEqualTextsThatAreOtherObjectsRebuildsTheTags) {
    const auto owner = fetched("Rent, Repairs");
    const auto before = owner->tags().members();
    TKTag::updateTagNamesForTaggableObject(names("Rent, Repairs"), *owner);
    EXPECT_EQ(namesOf(*owner), (Names{"Rent", "Repairs"}));
    for (const auto& tag : before) EXPECT_TRUE(tag->isDeleted());
}

TEST_F(TKTagTest, UpdatingLooksOnlyAtAsManyPlacesAsThereAreNames) {
    const auto owner = fetched("Rent, Repairs");
    const auto first = TKTagNames::initWithArray(Array::make({Value(owner->tags()[0].name())}));
    TKTag::updateTagNamesForTaggableObject(first, *owner);
    EXPECT_EQ(namesOf(*owner), (Names{"Rent", "Repairs"}));
    EXPECT_FALSE(book->hasChanges());
}

TEST_F(TKTagTest, UpdatingWithMoreNamesThanTagsRebuildsThem) {
    const auto owner = fetched("Rent");
    const auto more =
        TKTagNames::initWithArray(Array::make({Value(owner->tags()[0].name()), Value(text("Garden"))}));
    TKTag::updateTagNamesForTaggableObject(more, *owner);
    EXPECT_EQ(namesOf(*owner), (Names{"Rent", "Garden"}));
    EXPECT_EQ(allTags().size(), 2u);
}

TEST_F(TKTagTest, UpdatingWithTheSameTextsInAnotherOrderRebuildsThem) {
    const auto owner = fetched("Rent, Repairs");
    const auto turned = TKTagNames::initWithArray(
        Array::make({Value(owner->tags()[1].name()), Value(owner->tags()[0].name())}));
    TKTag::updateTagNamesForTaggableObject(turned, *owner);
    EXPECT_EQ(namesOf(*owner), (Names{"Repairs", "Rent"}));
    EXPECT_EQ(allTags().size(), 2u);
}

TEST_F(TKTagTest, UpdatingWithNoNamesKeepsTheTags) {
    const auto owner = fetched("Rent");
    TKTag::updateTagNamesForTaggableObject(nullptr, *owner);
    TKTag::updateTagNamesForTaggableObject(names(""), *owner);
    EXPECT_EQ(namesOf(*owner), Names{"Rent"});
    EXPECT_FALSE(book->hasChanges());
}

// Saving

TEST_F(TKTagTest, ANewOwnerHasNeitherTagsNorNames) {
    const auto owner = book.insert<TKTenureTransaction>("TenureTransaction");
    EXPECT_FALSE(owner->tagNames());
    EXPECT_TRUE(owner->tags().empty());
    EXPECT_TRUE(book->save());
    EXPECT_FALSE(owner->tagNames());
    EXPECT_TRUE(owner->tags().empty());
}

TEST_F(TKTagTest, EditingTheNamesLeavesTheTagsUntilTheSave) {
    const auto owner = fetched("Rent");
    owner->setTagNames(names("Garden"));
    EXPECT_EQ(namesOf(*owner), Names{"Rent"});
    EXPECT_TRUE(book->save());
    EXPECT_EQ(namesOf(*owner), Names{"Garden"});
}

TEST_F(TKTagTest, SavingAnOwnerWithUneditedNamesMakesAndDeletesNoTags) {
    const auto owner = fetched("Rent, Repairs");
    const auto before = owner->tags().members();
    owner->setWhat(text("Rent March"));
    EXPECT_TRUE(book->save());
    EXPECT_EQ(owner->tags().members(), before);
    EXPECT_EQ(allTags(), before);
}

TEST_F(TKTagTest, SavingTheSameTextTypedAnewMakesTwoNewTagsForTheTwoOld) {
    const auto owner = fetched("Rent, Repairs");
    const auto before = owner->tags().members();
    owner->setTagNames(names("Rent, Repairs"));
    EXPECT_TRUE(book->save());
    EXPECT_EQ(namesOf(*owner), (Names{"Rent", "Repairs"}));
    const auto after = allTags();
    ASSERT_EQ(after.size(), 2u);
    for (const auto& tag : after)
        for (const auto& old : before) EXPECT_NE(tag, old);
    for (const auto& old : before) EXPECT_FALSE(old->managedObjectContext());
}

TEST_F(TKTagTest, SavingNamesInAnotherOrderLeavesExactlyTheseTags) {
    const auto owner = fetched("Rent, Repairs");
    owner->setTagNames(names("Repairs, Rent"));
    EXPECT_TRUE(book->save());
    EXPECT_EQ(namesOf(*owner), (Names{"Repairs", "Rent"}));
    EXPECT_EQ(allTags().size(), 2u);
}

TEST_F(TKTagTest, SavingEmptyOrAbsentNamesLeavesTheOldTags) {
    const auto owner = fetched("Rent, Repairs");
    const auto before = owner->tags().members();
    owner->setTagNames(names(""));
    EXPECT_TRUE(book->save());
    EXPECT_EQ(owner->tags().members(), before);
    owner->setTagNames(nullptr);
    EXPECT_TRUE(book->save());
    EXPECT_EQ(owner->tags().members(), before);
}

TEST_F(TKTagTest, ASaveComesToRestAndASecondOneDoesNothing) {
    const auto owner = fetched("Rent");
    owner->setTagNames(names("Garden, Repairs"));
    EXPECT_TRUE(book->save());
    EXPECT_FALSE(book->hasChanges());
    const auto after = owner->tags().members();
    owner->setWhat(text("x"));
    EXPECT_TRUE(book->save());
    EXPECT_EQ(owner->tags().members(), after);
}

TEST_F(TKTagTest, EveryKindOfOwnerIsBroughtIntoStepByASave) {
    const auto house = book.property("Elm Street");
    const auto tenure = book.tenure();
    auto* note = tenure->createNote();
    auto* cost = house->createTransaction();
    house->setTagNames(names("Brick, City"));
    note->setTagNames(names("Urgent"));
    cost->setTagNames(names("Plumber"));
    EXPECT_TRUE(book->save());
    EXPECT_EQ(namesOf(*house), (Names{"Brick", "City"}));
    EXPECT_EQ(namesOf(*note), Names{"Urgent"});
    EXPECT_EQ(namesOf(*cost), Names{"Plumber"});
    EXPECT_EQ(allTags("AccountTag").size(), 2u);
    EXPECT_EQ(allTags("NoteTag").size(), 1u);
    EXPECT_EQ(allTags("TransactionTag").size(), 1u);
}

TEST_F(TKTagTest, ADeletedOwnerMakesNoTagsWhenItIsSaved) {
    const auto owner = fetched("Rent");
    owner->setTagNames(names("Garden, Repairs"));
    book->deleteObject(*owner);
    owner->willSave();
    EXPECT_TRUE(book->save());
    for (const auto& tag : allTags()) EXPECT_NE(bookkit::shownText(tag->name()), "Garden");
}

TEST_F(TKTagTest, AnOwnersTagsGoWithIt) {
    const auto owner = fetched("Rent, Repairs");
    book->deleteObject(*owner);
    EXPECT_TRUE(book->save());
    EXPECT_TRUE(allTags().empty());
}

// Announcements

TEST_F(TKTagTest, SettingATransactionsNamesAnnouncesThemAndStoresThatVeryObject) {
    const auto owner = book.insert<TKTenureTransaction>("TenureTransaction");
    const auto listener = makeRef<Listener>();
    listener->listenTo(*owner, "tagNames");
    const auto given = names("Rent");
    owner->setTagNames(given);
    EXPECT_EQ(listener->times("tagNames"), 1u);
    EXPECT_EQ(owner->tagNames(), given);
    EXPECT_EQ(owner->primitiveValueForKey(keys::tagNames).object(), given.get());
}

TEST_F(TKTagTest, ObserversOfAnAccountsNamesHearOfItsTags) {
    const auto house = book.property("Elm Street");
    const auto listener = makeRef<Listener>();
    listener->listenTo(*house, "tagNames");
    auto tags = house->mutableOrderedSetValueForKey(keys::tags);
    tags.addObject(*house->createTagWithName(text("Brick")));
    EXPECT_GT(listener->times("tagNames"), 0u);
}

TEST_F(TKTagTest, ObserversOfATransactionsOrANotesNamesDoNotHearOfTheTags) {
    const auto house = book.property("Elm Street");
    auto* cost = house->createTransaction();
    auto* note = house->createNote();
    const auto listener = makeRef<Listener>();
    listener->listenTo(*cost, "tagNames");
    listener->listenTo(*note, "tagNames");
    cost->mutableOrderedSetValueForKey(keys::tags).addObject(*cost->createTagWithName(text("x")));
    note->mutableOrderedSetValueForKey(keys::tags).addObject(*note->createTagWithName(text("x")));
    EXPECT_TRUE(listener->heard().empty());
}

} // namespace
} // namespace estatebook
