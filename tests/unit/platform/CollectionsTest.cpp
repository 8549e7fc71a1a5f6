// SPDX-License-Identifier: MIT

// Lists, sets, ordered sets, dictionaries, data and attributed strings.

#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"
#include "platform/values/Data.hpp"
#include "platform/values/Dictionary.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

Ref<String> text(std::string_view characters) {
    return String::make(characters);
}

std::vector<Value> numbered(int from, int to) {
    std::vector<Value> all;
    for (int number = from; number < to; ++number) all.emplace_back(number);
    return all;
}

TEST(ArrayTest, AListKeepsItsMembersInOrderAndTwice) {
    const auto a = text("a");
    const auto list = Array::make({a, Value(1), a});
    EXPECT_EQ(list->count(), 3u);
    EXPECT_EQ(list->at(2).string(), a);
    EXPECT_FALSE(list->empty());
    EXPECT_TRUE(Array::make({})->empty());
}

TEST(ArrayTest, ListsAreEqualMemberByMember) {
    EXPECT_TRUE(Array::make({text("a"), Value(1)})->isEqual(*Array::make({text("a"), Value(Decimal(1))})));
    EXPECT_FALSE(Array::make({Value(1), Value(2)})->isEqual(*Array::make({Value(2), Value(1)})));
    EXPECT_FALSE(Array::make({Value(1)})->isEqual(*Array::make({Value(1), Value(1)})));
    EXPECT_FALSE(Array::make({})->isEqual(*Set::make({})));
    EXPECT_EQ(Array::make({text("a")})->hash(), Array::make({text("a")})->hash());
}

TEST(ArrayTest, AListPrintsOneMemberALine) {
    EXPECT_EQ(Array::make({text("a"), Value(1), NullObject{}})->description(),
              "(\n    a,\n    1,\n    <null>\n)");
}

TEST(ArrayTest, AListOfObjectsGivesThemTypedAndAsValues) {
    const auto a = Array::make({});
    const auto b = Array::make({Value(1)});
    const auto list = ArrayOf<Array>::of({a, b});
    EXPECT_EQ(list->count(), 2u);
    EXPECT_EQ(&(*list)[1], b.get());
    EXPECT_EQ(&list->back(), b.get());
    EXPECT_EQ(list->at(0).object(), Ref<Object>(a));
    std::size_t members = 0;
    for (const Array& each : *list) members += each.count();
    EXPECT_EQ(members, 1u);
}

TEST(OrderedSetTest, TheFirstOccurrenceKeepsItsPlace) {
    const auto first = text("b");
    const auto set = OrderedSet::make({first, text("a"), text("b"), text("c"), text("a")});
    ASSERT_EQ(set->count(), 3u);
    EXPECT_EQ(set->at(0).string(), first);
    EXPECT_EQ(set->at(2).string()->view(), "c");
    EXPECT_EQ(set->index(text("c")), 2u);
    EXPECT_FALSE(set->index(text("d")));
}

TEST(OrderedSetTest, ComposedAndDecomposedLettersAreTwoMembers) {
    EXPECT_EQ(OrderedSet::make({text("\u00e9"), text("e\u0301")})->count(), 2u);
}

TEST(OrderedSetTest, AUnionPutsNewMembersAtTheEnd) {
    OrderedSet::Builder builder;
    builder.add(Value(3));
    builder.add(Value(1));
    builder.unionOrderedSet(*OrderedSet::make({Value(2), Value(1), Value(4)}));
    EXPECT_TRUE(
        std::move(builder).finish()->isEqual(*OrderedSet::make({Value(3), Value(1), Value(2), Value(4)})));
}

TEST(OrderedSetTest, EqualityNeedsTheSameOrder) {
    const auto ab = OrderedSet::make({text("a"), text("b")});
    EXPECT_TRUE(ab->isEqual(*OrderedSet::make({text("a"), text("b")})));
    EXPECT_FALSE(ab->isEqual(*OrderedSet::make({text("b"), text("a")})));
    EXPECT_FALSE(ab->isEqual(*Set::make({text("a"), text("b")})));
    EXPECT_EQ(ab->hash(), OrderedSet::make({text("a"), text("b")})->hash());
    EXPECT_TRUE(ab->array()->isEqual(*Array::make({text("a"), text("b")})));
}

TEST(OrderedSetTest, LargeSetsFindTheirMembersAsSmallOnesDo) {
    for (const int count : {8, 9, 10, 500}) {
        const auto set = OrderedSet::make(numbered(0, count));
        ASSERT_EQ(set->count(), static_cast<std::size_t>(count));
        for (int number = 0; number < count; ++number)
            ASSERT_EQ(set->index(Value(Decimal(number))), static_cast<std::size_t>(number)) << count;
        EXPECT_FALSE(set->contains(Value(count)));
        auto twice = numbered(0, count);
        for (const Value& each : numbered(0, count)) twice.push_back(each);
        EXPECT_TRUE(OrderedSet::make(std::move(twice))->isEqual(*set));
    }
}

TEST(SetTest, EqualityDoesNotAskForOrder) {
    EXPECT_TRUE(Set::make({Value(1), text("a")})->isEqual(*Set::make({text("a"), Value(1u)})));
    EXPECT_FALSE(Set::make({Value(1)})->isEqual(*Set::make({Value(1), Value(2)})));
    EXPECT_FALSE(Set::make({Value(1), Value(3)})->isEqual(*Set::make({Value(1), Value(2)})));
    EXPECT_EQ(Set::make({Value(1), text("a")})->hash(), Set::make({text("a"), Value(1)})->hash());
}

TEST(SetTest, EqualMembersMerge) {
    EXPECT_EQ(
        Set::make({Value(1), Value(1.0), Value(Decimal(1)), Value(true), text("a"), text("a")})->count(), 2u);
    EXPECT_EQ(Set::make({NullObject{}, NullObject{}, Date{1}, Date{1}})->count(), 2u);
}

TEST(DictionaryTest, OfEntriesWithOneKeyTheLastHoldsAtTheFirstPlace) {
    const auto table = Dictionary::make({{"a", Value(1)}, {"b", Value(2)}, {"a", Value(3)}});
    EXPECT_EQ(table->count(), 2u);
    EXPECT_EQ(table->entries()[0].first, "a");
    EXPECT_EQ(table->find("a"), Value(3));
    EXPECT_TRUE(table->find("A").isAbsent());
}

TEST(DictionaryTest, EqualityDoesNotAskForOrder) {
    const auto ab = Dictionary::make({{"a", Value(1)}, {"b", Value(2)}});
    EXPECT_TRUE(ab->isEqual(*Dictionary::make({{"b", Value(2)}, {"a", Value(1)}})));
    EXPECT_FALSE(ab->isEqual(*Dictionary::make({{"a", Value(1)}, {"b", Value(3)}})));
    EXPECT_FALSE(ab->isEqual(*Dictionary::make({{"a", Value(1)}})));
    EXPECT_EQ(ab->hash(), Dictionary::make({{"b", Value(2)}, {"a", Value(1)}})->hash());
    EXPECT_EQ(Dictionary::make({{"a", Value()}})->description(), "{\n    a = (null);\n}");
}

TEST(DataTest, BytesAreComparedOneByOne) {
    const auto bytes = [](std::initializer_list<int> values) {
        std::vector<std::byte> all;
        for (const int value : values) all.push_back(static_cast<std::byte>(value));
        return Data::make(std::move(all));
    };
    EXPECT_TRUE(bytes({0, 255})->isEqual(*bytes({0, 255})));
    EXPECT_FALSE(bytes({0, 255})->isEqual(*bytes({0, 254})));
    EXPECT_FALSE(bytes({})->isEqual(*bytes({0})));
    EXPECT_EQ(bytes({1, 2})->hash(), bytes({1, 2})->hash());
    EXPECT_EQ(bytes({1, 2})->bytes().size(), 2u);
    EXPECT_EQ(bytes({1, 2, 3})->description(), "<3 bytes>");
}

TEST(DictionaryTest, ManyEntriesAreFoundAndRepeatedOnesMergedAsFewAre) {
    std::vector<Dictionary::Entry> entries;
    for (int number = 0; number < 300; ++number) entries.emplace_back(std::to_string(number % 100), number);
    const auto dictionary = Dictionary::make(entries);
    ASSERT_EQ(dictionary->count(), 100u);
    for (int number = 0; number < 100; ++number) {
        const auto place = static_cast<std::size_t>(number);
        EXPECT_EQ(dictionary->entries()[place].first, std::to_string(number));
        EXPECT_EQ(dictionary->find(std::to_string(number)), Value(number + 200));
    }
    EXPECT_TRUE(dictionary->find("100").isAbsent());
    EXPECT_TRUE(dictionary->find("").isAbsent());
    std::ranges::reverse(entries);
    EXPECT_FALSE(dictionary->isEqual(*Dictionary::make(entries)));
    EXPECT_TRUE(
        dictionary->isEqual(*Dictionary::make({dictionary->entries().begin(), dictionary->entries().end()})));
}

TEST(AttributedStringTest, RunsLieWithinTheTextAndDoNotOverlap) {
    const auto bold = Dictionary::make({{"bold", Value(true)}});
    const auto made = AttributedString::make(text("abcdef"), {{0, 2, bold}, {2, 1, bold}, {5, 1, bold}});
    EXPECT_EQ(made->runs().size(), 3u);
    EXPECT_EQ(made->text()->view(), "abcdef");
    EXPECT_EQ(made->description(), "abcdef");
    const auto refuse = [&](std::vector<AttributedString::Run> runs) {
        EXPECT_THROW(static_cast<void>(AttributedString::make(text("abcdef"), std::move(runs))),
                     InvalidArgumentException);
    };
    refuse({{0, 7, bold}});
    refuse({{6, 1, bold}});
    refuse({{static_cast<std::size_t>(-1), 2, bold}});
    refuse({{1, static_cast<std::size_t>(-1), bold}});
    refuse({{0, 3, bold}, {2, 1, bold}});
    refuse({{3, 1, bold}, {0, 1, bold}});
    refuse({{0, 1, nullptr}});
    EXPECT_THROW(static_cast<void>(AttributedString::make(nullptr)), InvalidArgumentException);
}

TEST(AttributedStringTest, ARunDoesNotCutACharacterInTwo) {
    const auto bold = Dictionary::make({{"bold", Value(true)}});
    const auto house = text("a\U0001F3E0b");
    EXPECT_EQ(AttributedString::make(house, {{1, 4, bold}})->runs().size(), 1u);
    for (const AttributedString::Run& run : {AttributedString::Run{2, 3, bold}, {0, 2, bold}, {1, 3, bold}})
        EXPECT_THROW(static_cast<void>(AttributedString::make(house, {run})), InvalidArgumentException);
}

TEST(AttributedStringTest, ARunThatSaysNothingIsLeftOut) {
    const auto bold = Dictionary::make({{"bold", Value(true)}});
    const auto made =
        AttributedString::make(text("abc"), {{0, 0, bold}, {0, 1, Dictionary::make({})}, {1, 1, bold}});
    ASSERT_EQ(made->runs().size(), 1u);
    EXPECT_EQ(made->runs().front().location, 1u);
}

TEST(AttributedStringTest, EqualityIsOfTextAndRuns) {
    const auto bold = [] { return Dictionary::make({{"bold", Value(true)}}); };
    const auto make = [&](std::size_t length) {
        return AttributedString::make(text("abc"), {{0, length, bold()}});
    };
    EXPECT_TRUE(make(2)->isEqual(*make(2)));
    EXPECT_FALSE(make(2)->isEqual(*make(1)));
    EXPECT_FALSE(make(2)->isEqual(*AttributedString::make(text("abc"))));
    EXPECT_FALSE(AttributedString::make(text("abc"))->isEqual(*text("abc")));
    EXPECT_TRUE(AttributedString::empty()->isEqual(*AttributedString::make(text(""))));
    EXPECT_EQ(make(2)->hash(), make(2)->hash());
}

TEST(ErrorTest, ASentenceStandsUnderItsKey) {
    const auto error = Error::make("Validation", -1, "No.");
    EXPECT_EQ(error->domain(), "Validation");
    EXPECT_EQ(error->code(), -1);
    EXPECT_EQ(error->localizedDescription(), "No.");
    EXPECT_EQ(error->userInfo()->find("NSLocalizedDescription").string()->view(), "No.");
    EXPECT_EQ(error->description(), "Error Domain=Validation Code=-1 \"No.\"");
}

TEST(ErrorTest, WithoutASentenceItTellsDomainAndCode) {
    const auto error = makeRef<Error>("Persistence", 134001, nullptr);
    EXPECT_EQ(error->localizedDescription(), "Persistence error 134001");
    EXPECT_EQ(error->userInfo()->count(), 0u);
}

TEST(ExceptionTest, EachHasThePlatformsNameAndOneRoot) {
    const auto named = [](const Exception& exception, std::string_view name) {
        EXPECT_EQ(exception.name(), name);
        EXPECT_EQ(exception.reason(), "why");
        EXPECT_EQ(exception.what(), std::string(name) + ": why");
    };
    named(DivideByZeroException("why"), "NSDecimalNumberDivideByZeroException");
    named(OverflowException("why"), "NSDecimalNumberOverflowException");
    named(UnderflowException("why"), "NSDecimalNumberUnderflowException");
    named(ExactnessException("why"), "NSDecimalNumberExactnessException");
    named(InvalidArgumentException("why"), "NSInvalidArgumentException");
    named(RangeException("why"), "NSRangeException");
    named(UndefinedKeyException("why"), "NSUnknownKeyException");
    named(InternalInconsistencyException("why"), "NSInternalInconsistencyException");
    named(ObjectInaccessibleException("why"), "NSObjectInaccessibleException");
}

} // namespace
} // namespace estatebook::platform
