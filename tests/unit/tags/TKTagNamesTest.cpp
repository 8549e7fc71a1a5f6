// SPDX-License-Identifier: MIT
#include "tags/TKTagNames.hpp"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace estatebook {
namespace {

using platform::Array;
using platform::OrderedSet;
using platform::Ref;
using platform::String;
using platform::Value;

static_assert(!std::is_default_constructible_v<TKTagNames>);
static_assert(!std::is_copy_constructible_v<TKTagNames>);

Ref<TKTagNames> parsed(std::string_view text) {
    return TKTagNames::initWithEditableString(text);
}

std::vector<std::string> namesOf(const TKTagNames& names) {
    std::vector<std::string> texts;
    for (const Value& name : names.items()->members()) texts.push_back(name.string()->string());
    return texts;
}

using Names = std::vector<std::string>;

TEST(TKTagNamesTest, TheEmptyTextIsTheEmptyValue) {
    for (const char* text : {"", " , ,  ", ",,", "\t", "\u200b,\u00a0"}) {
        const auto names = parsed(text);
        EXPECT_EQ(names->editableString(), "") << text;
        EXPECT_TRUE(names->isEmpty());
        EXPECT_FALSE(names->first());
        EXPECT_EQ(names->items()->count(), 0u);
    }
}

TEST(TKTagNamesTest, PiecesAreTrimmedAndEmptyOnesDropped) {
    const auto names = parsed(" Rent ,Repairs,, rent");
    EXPECT_EQ(namesOf(*names), (Names{"Rent", "Repairs", "rent"}));
    EXPECT_EQ(names->editableString(), "Rent, Repairs, rent");
    EXPECT_FALSE(names->isEmpty());
}

TEST(TKTagNamesTest, OfARepeatedNameTheFirstKeepsItsPlace) {
    EXPECT_EQ(namesOf(*parsed("Rent, Repairs, Rent")), (Names{"Rent", "Repairs"}));
}

TEST(TKTagNamesTest, OnlyCommasSeparate) {
    EXPECT_EQ(namesOf(*parsed("a;b")), Names{"a;b"});
    EXPECT_EQ(namesOf(*parsed("a  b")), Names{"a  b"});
    EXPECT_EQ(namesOf(*parsed("a\nb")), Names{"a\nb"});
    EXPECT_EQ(namesOf(*parsed("a\uff0cb")), Names{"a\uff0cb"});
}

TEST(TKTagNamesTest, ATabInsideANameIsKeptAndOneAtAnEndTrimmed) {
    EXPECT_EQ(namesOf(*parsed("a\tb")), Names{"a\tb"});
    EXPECT_EQ(namesOf(*parsed("\ta\t,\tb")), (Names{"a", "b"}));
}

TEST(TKTagNamesTest, ALineBreakAtAnEndIsKept) {
    EXPECT_EQ(namesOf(*parsed("\na\n")), Names{"\na\n"});
    EXPECT_EQ(namesOf(*parsed(" \n ")), Names{"\n"});
}

TEST(TKTagNamesTest, AZeroWidthSpaceIsTrimmed) {
    EXPECT_EQ(namesOf(*parsed("\u200bRent\u200b")), Names{"Rent"});
}

TEST(TKTagNamesTest, ContainsIsExactAndCaseSensitive) {
    const auto names = parsed("Rent, Caf\u00e9");
    EXPECT_TRUE(names->contains("Rent"));
    EXPECT_TRUE(names->contains(String::make("Rent")));
    EXPECT_FALSE(names->contains("rent"));
    EXPECT_FALSE(names->contains("Cafe\u0301"));
    EXPECT_FALSE(names->contains(""));
    EXPECT_FALSE(names->contains(Ref<String>()));
}

TEST(TKTagNamesTest, ComposedAndDecomposedSpellingsAreTwoNames) {
    EXPECT_EQ(parsed("Caf\u00e9, Cafe\u0301")->items()->count(), 2u);
}

TEST(TKTagNamesTest, NameByNameDecidesTheOrder) {
    const auto compare = [](std::string_view a, std::string_view b) {
        return parsed(a)->compare(*parsed(b));
    };
    EXPECT_TRUE(std::is_lt(compare("a, b", "a, c")));
    EXPECT_TRUE(std::is_gt(compare("a, b", "a")));
    EXPECT_TRUE(std::is_lt(compare("a", "a, b")));
    EXPECT_TRUE(std::is_eq(compare("", "")));
    EXPECT_TRUE(std::is_lt(compare("", "a")));
    EXPECT_TRUE(std::is_gt(compare("a", "")));
    EXPECT_TRUE(std::is_lt(compare("B", "a")));
    EXPECT_TRUE(std::is_eq(compare("a, b", "a, b")));
    EXPECT_TRUE(std::is_gt(compare("b", "a, c")));
    EXPECT_TRUE(std::is_eq(compare("Caf\u00e9", "Cafe\u0301")));
}

TEST(TKTagNamesTest, ACopyIsAnotherObjectWithTheSameNames) {
    const auto names = parsed("Rent, Repairs");
    for (const auto& copy : {names->copy(), names->copyWithZone(nullptr)}) {
        EXPECT_FALSE(copy == names);
        EXPECT_FALSE(copy->isEqual(*names));
        EXPECT_TRUE(std::is_eq(copy->compare(*names)));
        EXPECT_EQ(namesOf(*copy), namesOf(*names));
    }
    EXPECT_TRUE(names->isEqual(*names));
}

TEST(TKTagNamesTest, NameObjectsKeepTheirIdentity) {
    const Ref<String> rent = String::make("Rent");
    const Ref<String> again = String::make("Rent");
    const auto ofArray = TKTagNames::initWithArray(Array::make({rent, again}));
    EXPECT_EQ(ofArray->items()->count(), 1u);
    EXPECT_EQ(ofArray->first(), rent);
    const auto ofSet = TKTagNames::initWithOrderedSet(OrderedSet::make({again, rent}));
    EXPECT_EQ(ofSet->first(), again);
    EXPECT_EQ(ofSet->copy()->first(), again);
}

TEST(TKTagNamesTest, NamesThatTypingCannotGiveArePrintedAsTheyStand) {
    const auto names = TKTagNames::initWithArray(Array::make({String::make(" a,b "), String::make("")}));
    EXPECT_EQ(names->editableString(), " a,b , ");
    EXPECT_FALSE(names->isEmpty());
}

TEST(TKTagNamesTest, AMemberThatIsNoTextIsTolerated) {
    const auto names = TKTagNames::initWithOrderedSet(OrderedSet::make({7, String::make("Rent")}));
    EXPECT_FALSE(names->first());
    EXPECT_FALSE(names->isEmpty());
    EXPECT_TRUE(names->contains("Rent"));
    EXPECT_EQ(names->editableString(), "7, Rent");
    EXPECT_TRUE(std::is_lt(names->compare(*parsed("a"))));
}

TEST(TKTagNamesTest, ManyNamesAreFoundByTheirText) {
    std::string text;
    for (int number = 0; number < 500; ++number)
        text += std::to_string(number) + "," + std::to_string(number % 7) + ",";
    const auto names = parsed(text);
    EXPECT_EQ(names->items()->count(), 500u);
    EXPECT_TRUE(names->contains("499"));
    EXPECT_FALSE(names->contains("500"));
}

TEST(TKTagNamesTest, ItemsCanBeReplaced) {
    const auto names = parsed("a");
    const auto items = OrderedSet::make({String::make("b")});
    names->setItems(items);
    EXPECT_EQ(names->items(), items);
    EXPECT_EQ(names->editableString(), "b");
}

TEST(TKTagNamesTest, TheClassIsKnownByItsModule) {
    EXPECT_EQ(parsed("")->runtimeClassName(), "EstateBook_Model.TKTagNames");
}

TEST(TKTagNamesDeathTest, NamesAreNotMadeOfNothing) {
    EXPECT_DEATH((void)TKTagNames::initWithOrderedSet(nullptr),
                 "EstateBook_Model.TKTagNames: initWithOrderedSet:");
    EXPECT_DEATH((void)TKTagNames::initWithArray(nullptr), "EstateBook_Model.TKTagNames: initWithArray:");
    EXPECT_DEATH(parsed("a")->setItems(nullptr), "EstateBook_Model.TKTagNames: setItems:");
}

} // namespace
} // namespace estatebook
