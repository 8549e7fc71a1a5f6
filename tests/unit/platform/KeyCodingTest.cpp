// SPDX-License-Identifier: MIT

// Reading and writing by key and key path.

#include "support/ObservedPerson.hpp"

#include "platform/observation/KeyPath.hpp"

#include <gtest/gtest.h>

namespace estatebook::platform {
namespace {

using test::Person;
using test::text;

Ref<Person> person(std::string_view name, std::optional<Decimal> amount = std::nullopt) {
    auto made = makeRef<Person>();
    made->setName(text(name));
    made->setAmount(amount);
    return made;
}

Ref<Set> setOf(std::initializer_list<Ref<Person>> members) {
    return Set::make({members.begin(), members.end()});
}

TEST(KeyCodingTest, AValueIsReadAndWrittenByKey) {
    const auto anna = makeRef<Person>();
    const auto name = text("Anna");
    anna->setValueForKey(name, "name");
    EXPECT_EQ(anna->name(), name) << "the very object is kept";
    EXPECT_EQ(anna->valueForKey("name").string(), name);
    anna->setValueForKey(Decimal(7), keys::amount);
    EXPECT_EQ(anna->valueForKey(keys::balance).decimal(), Decimal(21));
}

TEST(KeyCodingTest, AnAbsentValueIsReadAsAbsentAndNothingCanBeWritten) {
    const auto anna = person("Anna", Decimal(1));
    anna->setValueForKey(Value(), "name");
    anna->setValueForKey(NullObject{}, "amount");
    EXPECT_TRUE(anna->valueForKey("name").isAbsent());
    EXPECT_TRUE(anna->valueForKey("amount").isAbsent());
}

TEST(KeyCodingTest, ABooleanIsFoundUnderItsNameAndUnderThatOfItsGetter) {
    const auto anna = makeRef<Person>();
    EXPECT_TRUE(anna->valueForKey("balanced").boolValue());
    EXPECT_TRUE(anna->valueForKey("isBalanced").boolValue());
    EXPECT_EQ(anna->valueForKey("balanced").number()->kind(), Number::Kind::Boolean);
}

TEST(KeyCodingTest, AnUnknownKeyRaisesAndIsNamed) {
    const auto anna = makeRef<Person>();
    try {
        static_cast<void>(anna->valueForKey("shoeSize"));
        FAIL();
    } catch (const UndefinedKeyException& exception) {
        EXPECT_EQ(exception.name(), "NSUnknownKeyException");
        EXPECT_NE(exception.reason().find("shoeSize"), std::string_view::npos);
    }
    EXPECT_THROW(anna->setValueForKey(Value(1), "shoeSize"), UndefinedKeyException);
}

TEST(KeyCodingTest, AReadOnlyKeyCannotBeWritten) {
    EXPECT_THROW(makeRef<Person>()->setValueForKey(Value(1), "balance"), UndefinedKeyException);
}

TEST(KeyCodingTest, ADeclaredKeyWithoutAValueHasNoneToRead) {
    EXPECT_THROW(static_cast<void>(makeRef<Person>()->valueForKey("details")), UndefinedKeyException);
}

TEST(KeyCodingTest, NothingCannotBeWrittenToAPlainNumber) {
    const auto anna = makeRef<Person>();
    anna->setValueForKey(Value(3), "billingMode");
    EXPECT_THROW(anna->setValueForKey(Value(), "billingMode"), InvalidArgumentException);
    EXPECT_THROW(anna->setValueForKey(NullObject{}, "billingMode"), InvalidArgumentException);
    EXPECT_EQ(anna->billingMode(), 3u);
}

TEST(KeyCodingTest, AValueOfTheWrongKindIsRefusedAndChangesNothing) {
    const auto anna = person("Anna", Decimal(1));
    anna->setBillingMode(3);
    EXPECT_THROW(anna->setValueForKey(Value(1), "name"), InvalidArgumentException);
    EXPECT_THROW(anna->setValueForKey(text("1"), "amount"), InvalidArgumentException);
    EXPECT_THROW(anna->setValueForKey(text("1"), "billingMode"), InvalidArgumentException);
    EXPECT_THROW(anna->setValueForKey(Set::make({}), "owner"), InvalidArgumentException);
    EXPECT_EQ(anna->name()->view(), "Anna");
    EXPECT_EQ(anna->amount(), Decimal(1));
    EXPECT_EQ(anna->billingMode(), 3u);
}

TEST(KeyCodingTest, APathIsFollowedStepByStep) {
    const auto anna = person("Anna");
    const auto bert = person("Bert");
    anna->setOwner(bert);
    bert->setOwner(person("Cleo"));
    EXPECT_EQ(anna->valueForKeyPath("owner.owner.name").string()->view(), "Cleo");
    EXPECT_EQ(anna->valueForKeyPath("name").string()->view(), "Anna");
}

TEST(KeyCodingTest, NothingInTheMiddleOfAPathGivesNothing) {
    const auto anna = person("Anna");
    EXPECT_TRUE(anna->valueForKeyPath("owner.name").isAbsent());
    EXPECT_TRUE(anna->valueForKeyPath("owner.owner.noSuchKey").isAbsent());
    EXPECT_TRUE(anna->valueForKeyPath("tenures.@sum.amount").isAbsent()) << "this set is not there at all";
}

TEST(KeyCodingTest, WritingThroughNothingInTheMiddleLeavesEverythingAsItIs) {
    const auto anna = person("Anna");
    anna->setValueForKeyPath(text("Bert"), "owner.name");
    anna->setValueForKeyPath(text("Bert"), "owner.owner.name");
    EXPECT_FALSE(anna->owner());
}

TEST(KeyCodingTest, APathIsWrittenAtItsLastStep) {
    const auto anna = person("Anna");
    anna->setOwner(person("Bert"));
    anna->setValueForKeyPath(text("Bruno"), "owner.name");
    anna->setValueForKeyPath(text("Andrea"), "name");
    EXPECT_EQ(anna->owner()->name()->view(), "Bruno");
    EXPECT_EQ(anna->name()->view(), "Andrea");
}

TEST(KeyCodingTest, APathThroughAPlainValueRaises) {
    const auto anna = person("Anna", Decimal(1));
    EXPECT_THROW(static_cast<void>(anna->valueForKeyPath("amount.name")), UndefinedKeyException);
    EXPECT_THROW(anna->setValueForKeyPath(Value(1), "name.length"), InvalidArgumentException);
}

TEST(KeyCodingTest, AKeyOfAListGivesAListWithAPlaceForEveryMember) {
    const auto anna = makeRef<Person>();
    anna->setValue(Array::make({person("b"), makeRef<Person>(), person("b")}));
    const auto names = anna->valueForKeyPath("value.name").as<Array>();
    ASSERT_TRUE(names);
    ASSERT_EQ(names->count(), 3u);
    EXPECT_EQ(names->at(0).string()->view(), "b");
    EXPECT_TRUE(names->at(1).isNullObject());
    EXPECT_EQ(names->at(2).string()->view(), "b");
}

TEST(KeyCodingTest, AKeyOfASetLeavesAbsentResultsOutAndMergesEqualOnes) {
    const auto anna = makeRef<Person>();
    anna->setTenures(setOf({person("b"), makeRef<Person>(), person("b"), person("a")}));
    const auto names = anna->valueForKeyPath("tenures.name").as<Set>();
    ASSERT_TRUE(names);
    EXPECT_EQ(names->count(), 2u);
    EXPECT_TRUE(names->contains(text("a")));
}

TEST(KeyCodingTest, AMemberThatLacksTheKeyRaises) {
    const auto anna = makeRef<Person>();
    anna->setTenures(Set::make({person("a"), Value(1)}));
    EXPECT_THROW(static_cast<void>(anna->valueForKeyPath("tenures.name")), UndefinedKeyException);
    anna->setTenures(setOf({person("a")}));
    EXPECT_THROW(static_cast<void>(anna->valueForKeyPath("tenures.@sum.shoeSize")), UndefinedKeyException);
}

// @sum

TEST(KeyCodingTest, ASumTakesAbsentValuesAsNoughtAndIsDecimal) {
    const auto anna = makeRef<Person>();
    anna->setTenures(
        setOf({person("a", Decimal::parse("0.1")), person("b"), person("c", Decimal::parse("0.2"))}));
    EXPECT_EQ(anna->valueForKeyPath("tenures.@sum.amount").decimal(), Decimal::parse("0.3"));
}

TEST(KeyCodingTest, ASumCountsEqualAmountsOfDifferentMembersEach) {
    const auto anna = makeRef<Person>();
    anna->setTenures(setOf({person("a", Decimal(5)), person("b", Decimal(5))}));
    EXPECT_EQ(anna->valueForKeyPath("tenures.@sum.amount").decimal(), Decimal(10));
}

TEST(KeyCodingTest, ASumOverNobodyIsNought) {
    const auto anna = makeRef<Person>();
    anna->setTenures(Set::make({}));
    EXPECT_EQ(anna->valueForKeyPath("tenures.@sum.amount").decimal(), Decimal());
}

TEST(KeyCodingTest, ASumFollowsAPathFromEachMember) {
    const auto anna = makeRef<Person>();
    const auto owner = person("o", Decimal(4));
    const auto a = person("a");
    const auto b = person("b");
    a->setOwner(owner);
    b->setOwner(owner);
    anna->setTenures(setOf({a, b, person("without an owner")}));
    EXPECT_EQ(anna->valueForKeyPath("tenures.@sum.owner.amount").decimal(), Decimal(8));
}

TEST(KeyCodingTest, AnEmptyLeftSideMeansTheReceiver) {
    const Value list = Array::make({person("a", Decimal(1)), person("b", Decimal(2))});
    EXPECT_EQ(valueForKeyPathOfValue(list, "@sum.amount").decimal(), Decimal(3));
    EXPECT_THROW(static_cast<void>(person("a")->valueForKeyPath("@sum.amount")), UndefinedKeyException)
        << "a person is no collection";
}

TEST(KeyCodingTest, AnExceptionOfAMembersGetterLeavesTheSum) {
    const auto anna = makeRef<Person>();
    anna->setTenures(setOf({person("a", Decimal(-1))}));
    EXPECT_THROW(static_cast<void>(anna->valueForKeyPath("tenures.@sum.balance")), DivideByZeroException);
}

// @unionOfSets

Ref<Person> withSet(std::initializer_list<Ref<Person>> members) {
    auto made = makeRef<Person>();
    made->setTenures(setOf(members));
    return made;
}

TEST(KeyCodingTest, AUnionHoldsEachElementOnceAndPassesOverAbsentSets) {
    const auto x = person("x");
    const auto y = person("y");
    const auto z = person("z");
    const auto anna = withSet({withSet({x, y}), makeRef<Person>(), withSet({y, z})});
    const auto all = anna->valueForKeyPath("tenures.@unionOfSets.tenures").as<Set>();
    ASSERT_TRUE(all);
    EXPECT_EQ(all->count(), 3u);
    for (const auto& each : {x, y, z}) EXPECT_TRUE(all->contains(each));
}

TEST(KeyCodingTest, AUnionOverNobodyIsEmpty) {
    const auto all = withSet({})->valueForKeyPath("tenures.@unionOfSets.tenures").as<Set>();
    ASSERT_TRUE(all);
    EXPECT_TRUE(all->empty());
}

TEST(KeyCodingTest, AUnionOfWhatAreNoCollectionsRaises) {
    const auto anna = withSet({person("a")});
    EXPECT_THROW(static_cast<void>(anna->valueForKeyPath("tenures.@unionOfSets.name")),
                 InvalidArgumentException);
}

TEST(KeyCodingTest, AnUnknownOperatorRaises) {
    const auto anna = withSet({});
    EXPECT_THROW(static_cast<void>(anna->valueForKeyPath("tenures.@average.amount")),
                 InvalidArgumentException);
    EXPECT_THROW(static_cast<void>(anna->valueForKeyPath("tenures.@.amount")), InvalidArgumentException);
}

TEST(KeyCodingTest, AnApplicationMayGiveAClassAGetterForAKeyOfItsOwn) {
    const Key shout = Key::named("keyCodingTestShout");
    Person::Class.addProperty({.key = shout, .get = [](const ObservableObject& object) -> Value {
                                   return text(static_cast<const Person&>(object).name()->string() + "?");
                               }});
    EXPECT_EQ(person("Anna")->valueForKey("keyCodingTestShout").string()->view(), "Anna?");
    Person::Class.addProperty(
        {.key = shout, .get = [](const ObservableObject&) -> Value { return Value(1); }});
    EXPECT_EQ(person("Anna")->valueForKey(shout).decimal(), Decimal(1)) << "the latest is found first";
}

} // namespace
} // namespace estatebook::platform
