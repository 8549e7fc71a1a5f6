// SPDX-License-Identifier: MIT
#include "tags/TKTagNames.hpp"

#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/archive/PropertyListUid.hpp"
#include "platform/values/Dictionary.hpp"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace estatebook {
namespace {

using platform::ArchivedClass;
using platform::Array;
using platform::BinaryPropertyList;
using platform::Dictionary;
using platform::KeyedArchiver;
using platform::KeyedUnarchiver;
using platform::OrderedSet;
using platform::PropertyListUid;
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

std::span<const ArchivedClass> classes() {
    return {&TKTagNames::archivedClass(), 1};
}

Value text(std::string_view characters) {
    return String::make(characters);
}

Value uid(std::uint64_t number) {
    return PropertyListUid::make(number);
}

/// What an archive of the names "Rent" and "Repairs" consists of, with other entries for the value itself.
Ref<Dictionary> archiveWith(std::vector<Dictionary::Entry> entries) {
    entries.emplace_back("$class", uid(6));
    const auto record = [](std::string_view name) -> Value {
        return Dictionary::make(
            {{"$classname", text(name)}, {"$classes", Array::make({text(name), text("NSObject")})}});
    };
    return Dictionary::make(
        {{"$archiver", text("NSKeyedArchiver")},
         {"$version", 100000},
         {"$top", Dictionary::make({{"root", uid(1)}})},
         {"$objects",
          Array::make(
              {text("$null"), Dictionary::make(std::move(entries)),
               Dictionary::make({{"$class", uid(5)}, {"NS.object.0", uid(3)}, {"NS.object.1", uid(4)}}),
               text("Rent"), text("Repairs"), record("NSOrderedSet"),
               record("EstateBook_Model.TKTagNames")})}});
}

TEST(TKTagNamesTest, AnArchiveHoldsTheSetWithoutAKeyAndTheClassUnderItsModule) {
    const auto bytes = KeyedArchiver::archivedData(parsed("Rent, Repairs"), classes());
    ASSERT_TRUE(bytes);
    EXPECT_EQ(BinaryPropertyList::read(bytes->bytes()), Value(archiveWith({{"$0", uid(2)}})));
}

TEST(TKTagNamesTest, AnArchiveGivesBackTheSameNamesInTheSameOrder) {
    for (const auto& names :
         {parsed(""), parsed("Rent, Repairs"), parsed("b, a, Caf\u00e9, Cafe\u0301, \U0001F3E0"),
          TKTagNames::initWithArray(Array::make({String::make(" a,b "), String::make(""), Value(7)}))}) {
        const auto bytes = KeyedArchiver::archivedData(names, classes());
        ASSERT_TRUE(bytes);
        platform::Ref<platform::Error> error;
        const auto back =
            KeyedUnarchiver::unarchivedObject(bytes->bytes(), classes(), &error).as<TKTagNames>();
        ASSERT_TRUE(back);
        EXPECT_FALSE(error);
        EXPECT_FALSE(back == names);
        EXPECT_TRUE(back->items()->isEqual(*names->items()));
    }
}

TEST(TKTagNamesTest, AnArchiveByAnotherWriterIsRead) {
    // Texts that are alike stand there once, dictionaries are sorted by their keys.
    constexpr std::string_view Hexadecimal =
        "62706c6973743030d40102030405061e215924617263686976657258246f626a656374735424746f70582476657273696f6e"
        "5f100f4e534b657965644172636869766572a707080d1314151b55246e756c6cd2090a0b0c5224305624636c617373800280"
        "06d30a0e0f1011125b4e532e6f626a6563742e305b4e532e6f626a6563742e318005800380045452656e7457526570616972"
        "73d2161718195824636c61737365735a24636c6173736e616d65a2191a5c4e534f726465726564536574584e534f626a6563"
        "74d216171c1da21d1a5f101b457374617465426f6f6b5f4d6f64656c2e544b5461674e616d6573d11f2054726f6f74800112"
        "000186a008111b242932444c52575a6163656c788486888a8f979ca5b0b3c0c9ced1eff2f7f9000000000000010100000000"
        "00000022000000000000000000000000000000fe";
    std::vector<std::byte> bytes;
    for (std::size_t place = 0; place < Hexadecimal.size(); place += 2)
        bytes.push_back(
            static_cast<std::byte>(std::stoi(std::string(Hexadecimal.substr(place, 2)), nullptr, 16)));
    EXPECT_EQ(BinaryPropertyList::read(bytes), Value(archiveWith({{"$0", uid(2)}})));
    const auto names = KeyedUnarchiver::unarchivedObject(bytes, classes()).as<TKTagNames>();
    ASSERT_TRUE(names);
    EXPECT_EQ(namesOf(*names), (Names{"Rent", "Repairs"}));
}

TEST(TKTagNamesTest, OneValueArchivedTwiceComesBackAsOne) {
    const auto names = parsed("Rent");
    const auto bytes = KeyedArchiver::archivedData(Array::make({names, names, names->copy()}), classes());
    const auto back = KeyedUnarchiver::unarchivedObject(bytes->bytes(), classes()).as<Array>();
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->at(0).isIdentical(back->at(1)));
    EXPECT_FALSE(back->at(0).isIdentical(back->at(2)));
}

TEST(TKTagNamesTest, WhoHandsOverNoClassReadsNoNames) {
    const auto bytes = KeyedArchiver::archivedData(parsed("Rent"), classes());
    platform::Ref<platform::Error> error;
    EXPECT_TRUE(KeyedUnarchiver::unarchivedObject(bytes->bytes(), {}, &error).isAbsent());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription(),
              "The archive cannot be read: there is no class \"EstateBook_Model.TKTagNames\"");
}

TEST(TKTagNamesTest, ADamagedSetIsAnErrorBeforeTheNamesAreMissed) {
    const auto damaged = BinaryPropertyList::write(archiveWith({{"$0", uid(9)}}));
    platform::Ref<platform::Error> error;
    EXPECT_TRUE(KeyedUnarchiver::unarchivedObject(damaged->bytes(), classes(), &error).isAbsent());
    EXPECT_TRUE(error);
}

TEST(TKTagNamesDeathTest, NamesAreNotMadeOfNothing) {
    EXPECT_DEATH((void)TKTagNames::initWithOrderedSet(nullptr),
                 "EstateBook_Model.TKTagNames: initWithOrderedSet:");
    EXPECT_DEATH((void)TKTagNames::initWithArray(nullptr), "EstateBook_Model.TKTagNames: initWithArray:");
    EXPECT_DEATH(parsed("a")->setItems(nullptr), "EstateBook_Model.TKTagNames: setItems:");
}

TEST(TKTagNamesDeathTest, AnArchiveOfTheWrongClassStopsTheProgram) {
    const auto stops = [](std::vector<Dictionary::Entry> entries) {
        const auto bytes = BinaryPropertyList::write(archiveWith(std::move(entries)));
        EXPECT_DEATH((void)KeyedUnarchiver::unarchivedObject(bytes->bytes(), classes()),
                     "EstateBook_Model.TKTagNames: initWithCoder:");
    };
    stops({});
    stops({{"$0", uid(0)}});
    stops({{"$0", uid(3)}});
    stops({{"items", uid(2)}});
}

} // namespace
} // namespace estatebook
