// SPDX-License-Identifier: MIT

// Attributes and relationships of managed objects, and what changing them announces and marks.

#include "support/ObservedPerson.hpp"

#include "model/Advertisement.hpp"
#include "platform/persistence/MutableOrderedSet.hpp"
#include "platform/values/AttributedString.hpp"
#include "platform/values/Data.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKNote.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyNote.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKState.hpp"
#include "store/TKTenant.hpp"
#include "store/TKTenantNote.hpp"
#include "store/TKTenureTransaction.hpp"
#include "tags/TKTag.hpp"
#include "tags/TKTagNames.hpp"
#include "tenure/TKTenure.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <map>

namespace estatebook::platform {
namespace {

using test::text;
using test::unwatch;
using test::watch;
using test::Watcher;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<ManagedObject> && !std::is_copy_assignable_v<ManagedObject>);

class ManagedObjectTest : public testing::Test {
protected:
    Ref<ManagedObjectContext> context = TKManagedObjectModel::inMemoryManagedObjectContext();

    template <class T>
    Ref<T> insert(std::string_view entity) {
        return context->insertNewObject<T>(entity);
    }
    Ref<TKProperty> property() { return insert<TKProperty>("Property"); }
    Ref<TKTenure> tenure() { return insert<TKTenure>("Tenure"); }
    Ref<TKPropertyNote> note() { return insert<TKPropertyNote>("PropertyNote"); }

    /// An object of an entity that belongs to no context.
    template <class T>
    Ref<T> free(std::string_view entity) {
        return refCast<T>(ManagedObject::initWithEntityInsertIntoManagedObjectContext(
            *EntityDescription::entityForNameInManagedObjectContext(entity, *context), nullptr));
    }
    void settle() { ASSERT_TRUE(context->save()); }
};

template <class View>
std::vector<const Object*> listed(const View& view) {
    std::vector<const Object*> all;
    for (const auto& member : view) all.push_back(&member);
    return all;
}

// Attributes

TEST_F(ManagedObjectTest, WhatWasNeverSetReadsAsAbsentUnderEveryKey) {
    for (const auto& entity : context->persistentStoreCoordinator()->managedObjectModel()->entities()) {
        if (entity->isAbstract()) continue;
        const auto object = ManagedObject::initWithEntityInsertIntoManagedObjectContext(*entity, nullptr);
        for (const AttributeDescription& attribute : entity->attributes())
            EXPECT_TRUE(object->primitiveValueForKey(attribute.name).isAbsent())
                << entity->name() << "." << attribute.name.name();
        for (const RelationshipDescription& relationship : entity->relationships()) {
            const Value value = object->primitiveValueForKey(relationship.name);
            if (relationship.kind == PropertyKind::ToOne)
                EXPECT_TRUE(value.isAbsent()) << entity->name() << "." << relationship.name.name();
            else
                EXPECT_TRUE(value.as<DistinctValues>() && value.as<DistinctValues>()->empty())
                    << entity->name() << "." << relationship.name.name();
        }
    }
}

TEST_F(ManagedObjectTest, EveryAttributeTakesWhatItsTypeIsAndRefusesEverythingElse) {
    const std::map<AttributeType, Value> fitting{
        {AttributeType::String, text("a")},
        {AttributeType::Date, Date{1.5}},
        {AttributeType::Decimal, Decimal::parse("1.50")},
        {AttributeType::Number, Number(7u)},
        {AttributeType::Any, AttributedString::empty()},
    };
    for (const auto& entity : context->persistentStoreCoordinator()->managedObjectModel()->entities()) {
        if (entity->isAbstract()) continue;
        const auto object =
            ManagedObject::initWithEntityInsertIntoManagedObjectContext(*entity, context.get());
        for (const AttributeDescription& attribute : entity->attributes()) {
            const Key key = attribute.name;
            Value fit;
            if (attribute.type != AttributeType::Object)
                fit = fitting.at(attribute.type);
            else
                fit = key == keys::periods ? Value(Array::make({}))
                                           : Value(TKTagNames::initWithEditableString("a"));
            object->setValueForKey(fit, key);
            EXPECT_TRUE(object->valueForKey(key).isIdentical(fit)) << entity->name() << "." << key.name();
            EXPECT_TRUE(object->primitiveValueForKey(key).isIdentical(fit));

            std::vector<Value> others{Value(Data::make({})), Value(Set::make({}))};
            for (const auto& [type, value] : fitting) {
                const bool numberForNumber = value.isNumber() && fit.isNumber();
                if (type != attribute.type && !numberForNumber) others.push_back(value);
            }
            for (const Value& other : others) {
                if (attribute.type == AttributeType::Any) break; // takes all there is
                EXPECT_THROW(object->setValueForKey(other, key), InvalidArgumentException)
                    << entity->name() << "." << key.name() << " took " << other.description();
                EXPECT_THROW(object->setPrimitiveValueForKey(other, key), InvalidArgumentException);
                EXPECT_TRUE(object->valueForKey(key).isIdentical(fit)) << "a refused value changes nothing";
            }
            object->setValueForKey(Value(), key);
            EXPECT_TRUE(object->valueForKey(key).isAbsent());
        }
    }
}

TEST_F(ManagedObjectTest, ARefusedValueIsNeitherAnnouncedNorMarked) {
    const auto flat = property();
    settle();
    const auto watcher = makeRef<Watcher>();
    watch(*flat, *watcher, "rentalAmount");
    EXPECT_THROW(flat->setValueForKey(text("a"), "rentalAmount"), InvalidArgumentException);
    EXPECT_FALSE(flat->hasChanges());
    flat->setRentalAmount(Decimal(1));
    EXPECT_EQ(watcher->heard.size(), 1u) << "and no pair stayed open";
}

TEST_F(ManagedObjectTest, ANumberKeepsItsKindAndADecimalItsDigits) {
    const auto flat = property();
    for (const Number& number :
         {Number(true), Number(-3), Number(std::numeric_limits<std::uint64_t>::max()), Number(1.5f),
          Number(0.1), Number(Decimal::parse("12345678901234567890123456789012345678"))}) {
        flat->setRentalPeriod(number);
        ASSERT_TRUE(flat->rentalPeriod());
        EXPECT_EQ(flat->rentalPeriod()->kind(), number.kind());
        EXPECT_EQ(*flat->rentalPeriod(), number);
    }
    for (const char* digits : {"0", "-0.01", "99999999999999999999999999999999999999"}) {
        flat->setRentalAmount(Decimal::parse(digits));
        EXPECT_EQ(flat->rentalAmount(), Decimal::parse(digits));
    }
    flat->setRentalAmount(Decimal::notANumber());
    ASSERT_TRUE(flat->rentalAmount()) << "what is not a number is not absent";
    EXPECT_TRUE(flat->rentalAmount()->isNaN());
    const auto let = tenure();
    for (const double seconds : {0.0, -0.0, 1e300, std::numeric_limits<double>::infinity()}) {
        let->setStartDate(Date{seconds});
        EXPECT_EQ(let->startDate(), Date{seconds});
    }
    let->setStartDate(std::nullopt);
    EXPECT_FALSE(let->startDate());
}

TEST_F(ManagedObjectTest, AStringIsKeptByIdentity) {
    const auto flat = property();
    const auto name = text("Flat 2");
    flat->setName(name);
    EXPECT_EQ(flat->name(), name);
    EXPECT_EQ(flat->valueForKey(keys::name).string(), name);
    flat->setValueForKey(name, "sublease");
    EXPECT_EQ(flat->sublease(), name);
    settle();
    EXPECT_EQ(flat->name(), name) << "also over a save";
}

TEST_F(ManagedObjectTest, TheNullObjectIsWrittenAsNothing) {
    const auto flat = property();
    flat->setName(text("a"));
    flat->setValueForKey(NullObject{}, "name");
    EXPECT_TRUE(flat->valueForKey("name").isAbsent());
}

TEST_F(ManagedObjectTest, AnUnknownKeyRaises) {
    EXPECT_THROW(static_cast<void>(property()->valueForKey("shoeSize")), UndefinedKeyException);
    EXPECT_THROW(property()->setValueForKey(Value(1), "shoeSize"), UndefinedKeyException);
    EXPECT_THROW(static_cast<void>(property()->primitiveValueForKey(keys::fullName)), UndefinedKeyException)
        << "a derived key is not modelled";
}

TEST_F(ManagedObjectTest, AClassesOwnAccessorWinsOverTheStoredProperty) {
    const auto flat = property();
    flat->setName(text("Flat"));
    flat->setSublease(text("attic"));
    EXPECT_EQ(flat->valueForKey("fullName").string()->view(), "Flat - attic");
}

TEST_F(ManagedObjectTest, AStoredValueIsToldToObserversWhoAskForIt) {
    const auto flat = property();
    const auto watcher = makeRef<Watcher>();
    watch(*flat, *watcher, "rentalAmount", ObservingNew | ObservingOld | ObservingInitial);
    flat->setRentalAmount(Decimal(5));
    ASSERT_EQ(watcher->heard.size(), 2u);
    EXPECT_TRUE(watcher->heard[0].change.newValue.isNullObject());
    EXPECT_TRUE(watcher->heard[1].change.oldValue.isNullObject());
    EXPECT_EQ(watcher->heard[1].change.newValue.decimal(), Decimal(5));
}

TEST_F(ManagedObjectTest, CategoryNameAndDetailsCanBeObservedThoughTheyHaveNoValue) {
    const auto payment = insert<TKPropertyTransaction>("PropertyTransaction");
    const auto watcher = makeRef<Watcher>();
    for (const char* path : {"categoryName", "details"})
        watch(*payment, *watcher, path, ObservingNew | ObservingOld | ObservingInitial);
    payment->setWhat(text("Repair"));
    EXPECT_THAT(watcher->paths(), ElementsAre("categoryName", "details", "categoryName", "details"));
    for (const auto& each : watcher->heard) EXPECT_TRUE(each.change.newValue.isNullObject());
}

// Primitive values

TEST_F(ManagedObjectTest, APrimitiveWriteNeitherAnnouncesNorMarks) {
    const auto flat = property();
    settle();
    const auto watcher = makeRef<Watcher>();
    watch(*flat, *watcher, "rentalAmount");
    flat->setPrimitiveValueForKey(Decimal(5), keys::rentalAmount);
    EXPECT_EQ(flat->rentalAmount(), Decimal(5));
    EXPECT_EQ(flat->primitiveValueForKey(keys::rentalAmount).decimal(), Decimal(5));
    EXPECT_EQ(watcher->heard.size(), 0u);
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(ManagedObjectTest, APrimitiveWriteBetweenTheAnnouncementsIsTheNormalWrite) {
    const auto flat = property();
    const auto let = tenure();
    settle();
    let->willChangeValueForKey(keys::property);
    let->setPrimitiveValueForKey(flat, keys::property);
    let->didChangeValueForKey(keys::property);
    EXPECT_THAT(listed(flat->tenures()), ElementsAre(let.get()));
    EXPECT_TRUE(let->isUpdated());
    EXPECT_TRUE(flat->isUpdated());
}

TEST_F(ManagedObjectTest, APrimitiveLinkKeepsNoInverseAndGoesWithWhicheverEndsFirst) {
    const auto flat = property();
    const auto other = property();
    const auto let = tenure();
    let->setPrimitiveValueForKey(flat, keys::property);
    EXPECT_EQ(let->property(), flat.get());
    EXPECT_THAT(listed(flat->tenures()), IsEmpty());
    let->setProperty(other.get());
    EXPECT_THAT(listed(other->tenures()), ElementsAre(let.get()));

    const auto second = tenure();
    second->setPrimitiveValueForKey(flat, keys::property);
    context->deleteObject(*flat);
    context->processPendingChanges();
    EXPECT_EQ(second->property(), nullptr) << "no link leads to what has left";
    second->setPrimitiveValueForKey(other, keys::property);
    context->deleteObject(*second);
    context->processPendingChanges();
    EXPECT_THAT(listed(other->tenures()), ElementsAre(let.get()));
}

TEST_F(ManagedObjectTest, APrimitiveWriteTakesNoMembersAndNoStrangers) {
    const auto let = tenure();
    EXPECT_THROW(property()->setPrimitiveValueForKey(Set::make({}), keys::tenures), InvalidArgumentException);
    EXPECT_THROW(let->setPrimitiveValueForKey(insert<TKTenant>("Tenant"), keys::property),
                 InvalidArgumentException);
    EXPECT_THROW(let->setPrimitiveValueForKey(Value(1), keys::property), InvalidArgumentException);
    EXPECT_THROW(let->setPrimitiveValueForKey(free<TKProperty>("Property"), keys::property),
                 InvalidArgumentException);
    EXPECT_EQ(let->property(), nullptr);
}

// Relationships

TEST_F(ManagedObjectTest, ALinkIsKeptOnBothSidesAtOnceFromEitherSide) {
    const auto flat = property();
    const auto let = tenure();
    let->setProperty(flat.get());
    EXPECT_THAT(listed(flat->tenures()), ElementsAre(let.get()));
    let->setProperty(nullptr);
    EXPECT_THAT(listed(flat->tenures()), IsEmpty());
    flat->setValueForKey(Set::make({let}), "tenures");
    EXPECT_EQ(let->property(), flat.get());
    flat->setValueForKey(Value(), "tenures");
    EXPECT_EQ(let->property(), nullptr);
}

TEST_F(ManagedObjectTest, BothSidesAnnounceALinkAndSeeItDone) {
    const auto flat = property();
    const auto let = tenure();
    bool bothSidesAgreed = true;
    const auto watcher = makeRef<Watcher>([&](const auto&) {
        bothSidesAgreed =
            bothSidesAgreed && (let->property() == flat.get()) == (flat->tenures().count() == 1);
    });
    watch(*flat, *watcher, "tenures", ObservingNew | ObservingOld);
    watch(*let, *watcher, "property", ObservingNew | ObservingOld);
    let->setProperty(flat.get());
    ASSERT_EQ(watcher->heard.size(), 2u);
    const auto& onFlat = watcher->heard[watcher->heard[0].path == "tenures" ? 0 : 1].change;
    const auto& onLet = watcher->heard[watcher->heard[0].path == "tenures" ? 1 : 0].change;
    EXPECT_EQ(onFlat.kind, ChangeKind::Insertion);
    EXPECT_EQ(onFlat.newValue, Value(Set::make({let})));
    EXPECT_EQ(onLet.newValue.object(), Ref<Object>(flat));
    EXPECT_TRUE(onLet.oldValue.isNullObject());
    let->setProperty(nullptr);
    ASSERT_EQ(watcher->heard.size(), 4u);
    EXPECT_TRUE(bothSidesAgreed);
}

TEST_F(ManagedObjectTest, MovingAMemberTakesItFromItsFormerOwner) {
    const auto former = property();
    const auto latter = property();
    const auto let = tenure();
    let->setProperty(former.get());
    const auto watcher = makeRef<Watcher>();
    watch(*former, *watcher, "tenures", ObservingOld);
    watch(*latter, *watcher, "tenures", ObservingNew);
    latter->setTenures(Set::make({let}));
    EXPECT_EQ(let->property(), latter.get());
    EXPECT_THAT(listed(former->tenures()), IsEmpty());
    EXPECT_THAT(listed(latter->tenures()), ElementsAre(let.get()));
    ASSERT_EQ(watcher->heard.size(), 2u);
    EXPECT_EQ(watcher->heard[0].object, former.get());
    EXPECT_EQ(watcher->heard[0].change.kind, ChangeKind::Removal);
    EXPECT_EQ(watcher->heard[1].change.kind, ChangeKind::Setting) << "the whole value was assigned";
}

TEST_F(ManagedObjectTest, SettingALinkToWhatItIsAnnouncesButMovesNothing) {
    const auto flat = property();
    const auto let = tenure();
    let->setProperty(flat.get());
    const auto watcher = makeRef<Watcher>();
    watch(*flat, *watcher, "tenures");
    watch(*let, *watcher, "property");
    let->setProperty(flat.get());
    EXPECT_THAT(watcher->paths(), ElementsAre("property"));
    EXPECT_EQ(flat->tenures().count(), 1u);
}

TEST_F(ManagedObjectTest, MembersOfASetComeInTheOrderOfTheirCreation) {
    const auto flat = property();
    std::vector<Ref<TKTenure>> lets;
    for (int count = 0; count < 6; ++count) lets.push_back(tenure());
    for (const std::size_t index : {3u, 0u, 5u, 1u}) lets[index]->setProperty(flat.get());
    EXPECT_THAT(listed(flat->tenures()),
                ElementsAre(lets[0].get(), lets[1].get(), lets[3].get(), lets[5].get()));
    lets[1]->setProperty(nullptr);
    lets[2]->setProperty(flat.get());
    EXPECT_THAT(listed(flat->tenures()),
                ElementsAre(lets[0].get(), lets[2].get(), lets[3].get(), lets[5].get()));
    const auto byKey = flat->valueForKey("tenures").as<Set>();
    ASSERT_EQ(byKey->count(), 4u);
    EXPECT_EQ(byKey->members()[1].object(), Ref<Object>(lets[2]));
}

TEST_F(ManagedObjectTest, ASetThatWasReadByKeyStaysAsItWas) {
    const auto flat = property();
    const auto let = tenure();
    let->setProperty(flat.get());
    const auto before = flat->valueForKey("tenures").as<Set>();
    let->setProperty(nullptr);
    EXPECT_EQ(before->count(), 1u);
}

TEST_F(ManagedObjectTest, OneToOneIsKeptOnBothSidesAndEachHasJustOne) {
    const auto first = property();
    const auto second = property();
    const auto notice = insert<Advertisement>("Advertisement");
    const auto other = insert<Advertisement>("Advertisement");
    first->setAdvertisement(notice.get());
    EXPECT_EQ(notice->property(), first.get());
    notice->setProperty(second.get());
    EXPECT_EQ(second->advertisement(), notice.get());
    EXPECT_EQ(first->advertisement(), nullptr);
    second->setAdvertisement(other.get());
    EXPECT_EQ(other->property(), second.get());
    EXPECT_EQ(notice->property(), nullptr) << "whoever was linked before is let go";
    first->setAdvertisement(other.get());
    EXPECT_EQ(other->property(), first.get());
    EXPECT_EQ(second->advertisement(), nullptr);
    other->setProperty(nullptr);
    EXPECT_EQ(first->advertisement(), nullptr);
}

TEST_F(ManagedObjectTest, AValueOfTheWrongKindIsNoMemberAndNoTarget) {
    const auto flat = property();
    const auto let = tenure();
    EXPECT_THROW(let->setValueForKey(Value(1), "property"), InvalidArgumentException);
    EXPECT_THROW(let->setValueForKey(insert<TKTenant>("Tenant"), "property"), InvalidArgumentException);
    EXPECT_THROW(flat->setValueForKey(Set::make({Value(1)}), "tenures"), InvalidArgumentException);
    EXPECT_THROW(flat->setValueForKey(Set::make({let, flat}), "tenures"), InvalidArgumentException);
    EXPECT_THROW(flat->setValueForKey(Value(1), "tenures"), InvalidArgumentException);
    EXPECT_EQ(flat->tenures().count(), 0u) << "not even the fitting ones went in";
    const auto watcher = makeRef<Watcher>();
    watch(*flat, *watcher, "tenures");
    let->setProperty(flat.get());
    EXPECT_EQ(watcher->heard.size(), 1u) << "no pair stayed open";
}

TEST_F(ManagedObjectTest, ATagBelongsToOwnersOfItsOwnSortOnly) {
    const auto tag = insert<TKTag>("AccountTag");
    EXPECT_THROW(tag->setOwner(note().get()), InvalidArgumentException);
    EXPECT_THROW(tag->setOwner(insert<Advertisement>("Advertisement").get()), InvalidArgumentException);
    EXPECT_THROW(note()->setTags(OrderedSet::make({tag})), InvalidArgumentException);
    tag->setOwner(property().get());
    tag->setOwner(insert<TKTenant>("Tenant").get());
    EXPECT_TRUE(tag->owner());
}

TEST_F(ManagedObjectTest, LinksAcrossContextsAreRefused) {
    const auto otherContext = TKManagedObjectModel::inMemoryManagedObjectContext();
    const auto stranger = otherContext->insertNewObject<TKProperty>("Property");
    const auto let = tenure();
    const auto watcher = makeRef<Watcher>();
    watch(*let, *watcher, "property");
    EXPECT_THROW(let->setProperty(stranger.get()), InvalidArgumentException);
    EXPECT_THROW(stranger->setTenures(Set::make({let})), InvalidArgumentException);
    EXPECT_THROW(free<TKTenure>("Tenure")->setProperty(stranger.get()), InvalidArgumentException);
    EXPECT_THROW(let->setProperty(free<TKProperty>("Property").get()), InvalidArgumentException);
    EXPECT_EQ(let->property(), nullptr);
    EXPECT_EQ(stranger->tenures().count(), 0u);
    let->setProperty(property().get());
    EXPECT_EQ(watcher->heard.size(), 1u);
}

// What observers may do while a member moves

TEST_F(ManagedObjectTest, AnObserverMayMoveAMemberWhileItIsBeingMoved) {
    for (const unsigned options : {ObservingNothing, ObservingPrior}) {
        for (const std::size_t startsAt : {0u, 1u, 2u}) {
            std::vector<Ref<TKProperty>> flats{property(), property(), property()};
            const auto let = tenure();
            let->setProperty(flats[0].get());
            std::size_t moves = 0;
            const auto mover = makeRef<Watcher>([&](const auto&) {
                if (++moves <= 2) let->setProperty(flats[(startsAt + moves) % 3].get());
            });
            for (const auto& flat : flats) watch(*flat, *mover, "tenures", options);
            let->setProperty(flats[1].get());
            std::size_t memberships = 0;
            for (const auto& flat : flats) memberships += flat->tenures().count();
            EXPECT_EQ(memberships, 1u);
            ASSERT_TRUE(let->property());
            EXPECT_THAT(listed(let->property()->tenures()), ElementsAre(let.get()));
            for (const auto& flat : flats) unwatch(*flat, *mover, "tenures");
        }
    }
}

// Ordered relationships

struct Names {
    template <class Owner>
    std::vector<std::string> operator()(const Owner& owner) const {
        std::vector<std::string> names;
        for (const TKTag& tag : owner.tags()) names.push_back(tag.name()->string());
        return names;
    }
};
constexpr Names namesOf;

class MutableOrderedSetTest : public ManagedObjectTest {
protected:
    Ref<TKPropertyNote> owner = note();
    MutableOrderedSet tags = owner->mutableOrderedSetValueForKey(keys::tags);

    Ref<TKTag> tag(std::string_view name) {
        auto made = insert<TKTag>("NoteTag");
        made->setName(text(name));
        return made;
    }
    void fill(std::initializer_list<const char*> names) {
        for (const char* name : names) tags.addObject(*tag(name));
    }
};

TEST_F(MutableOrderedSetTest, ItIsALiveViewThatKeepsInverses) {
    const auto a = tag("a");
    tags.addObject(*a);
    EXPECT_EQ(tags.count(), 1u);
    EXPECT_EQ(a->owner(), owner.get());
    EXPECT_TRUE(tags.containsObject(*a));
    EXPECT_FALSE(tags.containsObject(*tag("b")));
    EXPECT_FALSE(tags.containsObject(*owner));
    a->setOwner(nullptr);
    EXPECT_EQ(tags.count(), 0u);
}

TEST_F(MutableOrderedSetTest, MembersStandWhereTheyWerePut) {
    fill({"a", "b", "c"});
    tags.insertObjectAtIndex(*tag("x"), 1);
    tags.insertObjectAtIndex(*tag("y"), 0);
    tags.insertObjectAtIndex(*tag("z"), 5);
    EXPECT_THAT(namesOf(*owner), ElementsAre("y", "a", "x", "b", "c", "z"));
    EXPECT_EQ(static_cast<TKTag&>(tags.objectAtIndex(2)).name()->view(), "x");
    tags.removeObjectAtIndex(3);
    tags.removeObjectAtIndex(0);
    EXPECT_THAT(namesOf(*owner), ElementsAre("a", "x", "c", "z"));
    tags.removeObject(tags.objectAtIndex(1));
    EXPECT_THAT(namesOf(*owner), ElementsAre("a", "c", "z"));
}

TEST_F(MutableOrderedSetTest, AddingAMemberAndRemovingAStrangerDoNothing) {
    fill({"a", "b"});
    const auto watcher = makeRef<Watcher>();
    watch(*owner, *watcher, "tags");
    tags.addObject(tags.objectAtIndex(0));
    tags.insertObjectAtIndex(tags.objectAtIndex(0), 2);
    tags.removeObject(*tag("b"));
    EXPECT_THAT(namesOf(*owner), ElementsAre("a", "b"));
    EXPECT_EQ(watcher->heard.size(), 0u);
}

TEST_F(MutableOrderedSetTest, APlaceThatDoesNotExistRaises) {
    fill({"a"});
    EXPECT_THROW(tags.insertObjectAtIndex(*tag("b"), 2), RangeException);
    EXPECT_THROW(tags.removeObjectAtIndex(1), RangeException);
    EXPECT_THAT(namesOf(*owner), ElementsAre("a"));
}

TEST_F(MutableOrderedSetTest, EachChangeIsToldOnceWithItsPlaces) {
    const auto watcher = makeRef<Watcher>();
    watch(*owner, *watcher, "tags", ObservingNew | ObservingOld);
    const auto a = tag("a");
    const auto b = tag("b");
    tags.addObject(*a);
    tags.insertObjectAtIndex(*b, 0);
    tags.removeObjectAtIndex(1);
    tags.addObject(*a);
    tags.removeAllObjects();
    tags.removeAllObjects();
    ASSERT_EQ(watcher->heard.size(), 5u);
    const auto expect = [&](std::size_t index, ChangeKind kind, std::vector<std::size_t> places,
                            const Value& members) {
        const KeyValueChange& change = watcher->heard[index].change;
        EXPECT_EQ(change.kind, kind) << index;
        EXPECT_EQ(change.indexes, places) << index;
        EXPECT_EQ(kind == ChangeKind::Insertion ? change.newValue : change.oldValue, members) << index;
    };
    expect(0, ChangeKind::Insertion, {0}, Array::make({a}));
    expect(1, ChangeKind::Insertion, {0}, Array::make({b}));
    expect(2, ChangeKind::Removal, {1}, Array::make({a}));
    expect(3, ChangeKind::Insertion, {1}, Array::make({a}));
    expect(4, ChangeKind::Removal, {0, 1}, Array::make({b, a}));
}

TEST_F(MutableOrderedSetTest, AMemberThatMovesFromAnotherOwnerLeavesItsPlaceThere) {
    fill({"a", "b", "c"});
    const auto b = Ref<ManagedObject>(&tags.objectAtIndex(1));
    const auto other = note();
    const auto watcher = makeRef<Watcher>();
    watch(*owner, *watcher, "tags");
    other->mutableOrderedSetValueForKey(keys::tags).addObject(*b);
    EXPECT_THAT(namesOf(*owner), ElementsAre("a", "c"));
    EXPECT_THAT(namesOf(*other), ElementsAre("b"));
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].change.kind, ChangeKind::Removal);
    EXPECT_THAT(watcher->heard[0].change.indexes, ElementsAre(1u));
}

TEST_F(MutableOrderedSetTest, AssigningTheWholeValueOrdersItAnew) {
    fill({"a", "b", "c"});
    const auto a = Ref<ManagedObject>(&tags.objectAtIndex(0));
    const auto c = Ref<ManagedObject>(&tags.objectAtIndex(2));
    const auto watcher = makeRef<Watcher>();
    watch(*owner, *watcher, "tags");
    owner->setTags(OrderedSet::make({c, tag("x"), a}));
    EXPECT_THAT(namesOf(*owner), ElementsAre("c", "x", "a"));
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(watcher->heard[0].change.kind, ChangeKind::Setting);
    owner->setValueForKey(Array::make({a, a, c}), "tags");
    EXPECT_THAT(namesOf(*owner), ElementsAre("a", "c"));
    owner->setTags(nullptr);
    EXPECT_EQ(tags.count(), 0u);
}

TEST_F(MutableOrderedSetTest, OnlyAnOrderedRelationshipHasAProxy) {
    for (const Key key : {keys::property, keys::subject, keys::regarding})
        EXPECT_THROW(static_cast<void>(owner->mutableOrderedSetValueForKey(key)), InvalidArgumentException);
}

TEST_F(MutableOrderedSetTest, AStrangerIsRefusedAndNoPairStaysOpen) {
    const auto watcher = makeRef<Watcher>();
    watch(*owner, *watcher, "tags");
    const auto otherContext = TKManagedObjectModel::inMemoryManagedObjectContext();
    EXPECT_THROW(tags.addObject(*otherContext->insertNewObject<TKTag>("NoteTag")), InvalidArgumentException);
    EXPECT_THROW(tags.addObject(*insert<TKTag>("AccountTag")), InvalidArgumentException);
    EXPECT_THROW(tags.addObject(*owner), InvalidArgumentException);
    EXPECT_EQ(watcher->heard.size(), 0u);
    tags.addObject(*tag("a"));
    EXPECT_EQ(watcher->heard.size(), 1u);
}

TEST_F(MutableOrderedSetTest, AnObserverMayEmptyTheSetWhileItIsFilled) {
    fill({"a", "b", "c"});
    const auto added = tag("x");
    const auto emptier = makeRef<Watcher>([&](const auto&) { owner->setTags(nullptr); });
    watch(*added, *emptier, "owner");
    tags.insertObjectAtIndex(*added, 1);
    EXPECT_EQ(tags.count(), 0u);
    EXPECT_EQ(added->owner(), nullptr);
}

TEST_F(MutableOrderedSetTest, AnObserverMayRemoveOthersWhileAllAreRemoved) {
    fill({"a", "b", "c", "d"});
    const auto last = Ref<ManagedObject>(&tags.objectAtIndex(3));
    const auto remover = makeRef<Watcher>([&](const auto&) {
        if (tags.count() > 1) tags.removeObjectAtIndex(0);
    });
    watch(*last, *remover, "owner");
    tags.removeAllObjects();
    EXPECT_EQ(tags.count(), 0u);
}

// Objects without a context

TEST_F(ManagedObjectTest, AnObjectWithoutAContextIsCompleteButNeverInserted) {
    const auto let = free<TKTenure>("Tenure");
    EXPECT_EQ(let->managedObjectContext(), nullptr);
    EXPECT_FALSE(let->isInserted());
    let->setRentalAmount(Decimal(5));
    EXPECT_EQ(let->rentalAmount(), Decimal(5));
    EXPECT_FALSE(let->hasChanges());
    EXPECT_FALSE(context->hasChanges());
    const auto watcher = makeRef<Watcher>();
    watch(*let, *watcher, "rentalAmount");
    let->setRentalAmount(Decimal(6));
    EXPECT_EQ(watcher->heard.size(), 1u);
    EXPECT_EQ(let->entity().name(), "Tenure");
}

TEST_F(ManagedObjectTest, ObjectsWithoutAContextMayBeLinkedWithOneAnother) {
    const auto flat = free<TKProperty>("Property");
    {
        const auto let = free<TKTenure>("Tenure");
        let->setProperty(flat.get());
        EXPECT_THAT(listed(flat->tenures()), ElementsAre(let.get()));
    }
    EXPECT_EQ(flat->tenures().count(), 0u) << "nobody leads to an object that ended";
    const auto let = free<TKTenure>("Tenure");
    {
        const auto shortLived = free<TKProperty>("Property");
        let->setProperty(shortLived.get());
    }
    EXPECT_EQ(let->property(), nullptr);
}

TEST_F(ManagedObjectTest, AnObjectWithoutAContextOutlivesTheContextOfItsEntity) {
    const auto let = free<TKTenure>("Tenure");
    context = nullptr;
    let->setRentalAmount(Decimal(5));
    EXPECT_EQ(let->entity().name(), "Tenure");
    EXPECT_EQ(let->valueForKey("rentalAmount").decimal(), Decimal(5));
}

// What marks an object as changed

TEST_F(ManagedObjectTest, SettingAValueMarksEvenIfItIsEqual) {
    const auto flat = property();
    flat->setName(text("a"));
    settle();
    EXPECT_FALSE(flat->hasChanges());
    flat->setName(flat->name());
    EXPECT_TRUE(flat->isUpdated());
    EXPECT_TRUE(context->hasChanges());
}

TEST_F(ManagedObjectTest, AnnouncingAModelledKeyMarks) {
    const auto flat = property();
    settle();
    flat->willChangeValueForKey(keys::name);
    flat->didChangeValueForKey(keys::name);
    EXPECT_TRUE(flat->isUpdated());
}

TEST_F(ManagedObjectTest, WhatTheSystemWritesNeverMarks) {
    const auto flat = property();
    const auto let = tenure();
    settle();
    flat->setCurrentDate(Date{1});
    let->setCurrentDate(Date{1});
    let->setPeriods(Array::make({}));
    EXPECT_FALSE(context->hasChanges());
    flat->setTagNames(TKTagNames::initWithEditableString("a"));
    EXPECT_TRUE(flat->isUpdated()) << "the user's tag names do";
}

TEST_F(ManagedObjectTest, AnnouncingADerivedKeyNeverMarks) {
    const auto flat = property();
    const auto let = tenure();
    let->setProperty(flat.get());
    settle();
    const auto watcher = makeRef<Watcher>();
    watch(*flat, *watcher, "tenureIncome");
    let->willChangeValueForKey(keys::totalIncome);
    let->didChangeValueForKey(keys::totalIncome);
    EXPECT_GE(watcher->heard.size(), 1u);
    EXPECT_FALSE(context->hasChanges());
}

TEST_F(ManagedObjectTest, AStoredKeyThatFollowsFromAnotherIsToldButNotMarked) {
    const auto let = tenure();
    let->setStartDate(Date{1});
    let->setEndDate(Date{5});
    settle();
    const auto watcher = makeRef<Watcher>();
    watch(*let, *watcher, "endDate");
    let->setCurrentDate(Date{1});
    EXPECT_GE(watcher->heard.size(), 1u);
    EXPECT_FALSE(context->hasChanges());
    EXPECT_EQ(let->endDate(), Date{5});
}

TEST_F(ManagedObjectTest, AStoredKeyThatFollowsFromAPathIsToldButNotMarked) {
    static const bool added = [] {
        TKTenantNote::Class.addDependency(keys::subject, "tenant.addressBookID");
        return true;
    }();
    static_cast<void>(added);
    const auto owner = insert<TKTenant>("Tenant");
    auto* const aboutOwner = owner->createNote();
    settle();
    const auto watcher = makeRef<Watcher>();
    watch(*aboutOwner, *watcher, "subject");
    owner->setAddressBookID(text("a"));
    EXPECT_EQ(watcher->heard.size(), 1u);
    EXPECT_FALSE(aboutOwner->hasChanges());
    EXPECT_TRUE(owner->hasChanges());
}

TEST_F(ManagedObjectTest, ALinkMarksBothSides) {
    const auto flat = property();
    const auto let = tenure();
    settle();
    let->setProperty(flat.get());
    EXPECT_TRUE(let->isUpdated());
    EXPECT_TRUE(flat->isUpdated());
}

} // namespace
} // namespace estatebook::platform
