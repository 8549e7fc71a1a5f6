// SPDX-License-Identifier: MIT
#include "tags/TKTagNamesValueTransformer.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/Set.hpp"
#include "tags/TKTagNames.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace estatebook {
namespace {

using platform::Array;
using platform::makeRef;
using platform::NullObject;
using platform::OrderedSet;
using platform::Ref;
using platform::String;
using platform::Value;

Value text(std::string_view characters) {
    return String::make(characters);
}

Value transformed(const Value& value) {
    return makeRef<TKTagNamesValueTransformer>()->transformedValue(value);
}

Value reversed(const Value& value) {
    return makeRef<TKTagNamesValueTransformer>()->reverseTransformedValue(value);
}

TEST(TKTagNamesValueTransformerTest, NamesBecomeAListInTheirOrder) {
    const auto names = TKTagNames::initWithEditableString("Rent, Repairs");
    const auto list = transformed(names).as<Array>();
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->isEqual(*Array::make({text("Rent"), text("Repairs")})));
    EXPECT_EQ(list->at(0).string(), names->first()) << "the very same objects";
}

TEST(TKTagNamesValueTransformerTest, AnEmptyValueBecomesAnEmptyList) {
    const auto list = transformed(TKTagNames::initWithEditableString("")).as<Array>();
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->empty());
}

TEST(TKTagNamesValueTransformerTest, EachListIsANewOne) {
    const auto names = TKTagNames::initWithEditableString("Rent");
    EXPECT_FALSE(transformed(names).isIdentical(transformed(names)));
}

TEST(TKTagNamesValueTransformerTest, WhatIsNoTagNamesBecomesNothing) {
    for (const Value& value : {Value(), text("Rent, Repairs"), Value(7), Value(NullObject{}),
                               Value(Array::make({text("Rent")})), Value(OrderedSet::make({text("Rent")}))})
        EXPECT_TRUE(transformed(value).isAbsent()) << value.description();
}

TEST(TKTagNamesValueTransformerTest, AListBecomesNamesAndARepeatedOneKeepsItsFirstPlace) {
    const auto rent = String::make("Rent");
    const auto names = reversed(Array::make({rent, text("Repairs"), text("Rent")})).as<TKTagNames>();
    ASSERT_TRUE(names);
    EXPECT_TRUE(names->items()->isEqual(*OrderedSet::make({text("Rent"), text("Repairs")})));
    EXPECT_EQ(names->first(), rent);
}

TEST(TKTagNamesValueTransformerTest, AnEmptyListBecomesAnEmptyValue) {
    const auto names = reversed(Array::make({})).as<TKTagNames>();
    ASSERT_TRUE(names);
    EXPECT_TRUE(names->isEmpty());
}

TEST(TKTagNamesValueTransformerTest, NamesOfAListAreKeptAsTheyStand) {
    const auto names =
        reversed(Array::make({text(" a,b "), text(""), text("rent"), text("Rent")})).as<TKTagNames>();
    ASSERT_TRUE(names);
    EXPECT_TRUE(
        names->items()->isEqual(*OrderedSet::make({text(" a,b "), text(""), text("rent"), text("Rent")})));
}

TEST(TKTagNamesValueTransformerTest, WhatIsNoListOfTextsBecomesNoNames) {
    for (const Value& value :
         {Value(), text("Rent, Repairs"), Value(7), Value(OrderedSet::make({text("Rent")})),
          Value(TKTagNames::initWithEditableString("Rent")), Value(Array::make({text("Rent"), 7})),
          Value(Array::make({text("Rent"), Value()})), Value(Array::make({NullObject{}}))})
        EXPECT_TRUE(reversed(value).isAbsent()) << value.description();
}

TEST(TKTagNamesValueTransformerTest, ThereIsAWayBack) {
    EXPECT_TRUE(makeRef<TKTagNamesValueTransformer>()->allowsReverseTransformation());
    EXPECT_EQ(makeRef<TKTagNamesValueTransformer>()->transformedValueClass(), "Object");
}

} // namespace
} // namespace estatebook
