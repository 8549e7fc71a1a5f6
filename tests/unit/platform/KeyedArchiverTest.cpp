// SPDX-License-Identifier: MIT
#include "platform/archive/KeyedArchiver.hpp"

#include "platform/archive/ArchiveError.hpp"
#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/archive/PropertyListUid.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace estatebook::platform {
namespace {

Ref<String> text(std::string_view characters) {
    return String::make(characters);
}

Value uid(std::uint64_t number) {
    return PropertyListUid::make(number);
}

/// An object that encodes under keys and without.
class Room final : public Object {
public:
    Room(Value first, Value second)
        : Object(Counting::Shared), first_(std::move(first)), second_(std::move(second)) {}
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Room"; }
    [[nodiscard]] const Value& first() const { return first_; }
    [[nodiscard]] const Value& second() const { return second_; }
    void setFirst(Value value) { first_ = std::move(value); }

private:
    Value first_;
    Value second_;
};

constexpr std::string_view RoomNames[] = {"Room", "NSObject"};
const ArchivedClass RoomClass{"Room", RoomNames,
                              [](const Value& value, KeyedArchiver& coder) {
                                  const auto room = value.as<Room>();
                                  coder.encodeObject(room->first());
                                  coder.encodeObjectForKey(room->second(), "$second");
                                  coder.encodePlainForKey(3.5, "height");
                                  coder.encodeObject(text("last"));
                              },
                              [](KeyedUnarchiver& coder) -> Value {
                                  EXPECT_EQ(coder.decodePlainForKey("height"), Value(3.5));
                                  EXPECT_TRUE(coder.containsValueForKey("$second"));
                                  EXPECT_FALSE(coder.containsValueForKey("second"));
                                  EXPECT_TRUE(coder.decodePlainForKey("second").isAbsent());
                                  EXPECT_TRUE(coder.decodeObjectForKey("second").isAbsent());
                                  EXPECT_FALSE(coder.decodeObjectsForKey("second").has_value());
                                  const Value second = coder.decodeObjectForKey("$second");
                                  const Value first = coder.decodeObject();
                                  EXPECT_EQ(coder.decodeObject(), Value(text("last")));
                                  EXPECT_TRUE(coder.decodeObject().isAbsent()) << "there is no more";
                                  return makeRef<Room>(first, second);
                              }};

Ref<Dictionary> structureOf(const Value& root) {
    Ref<Error> error;
    const auto bytes = KeyedArchiver::archivedData(root, {&RoomClass, 1}, &error);
    if (!bytes) {
        ADD_FAILURE() << error->localizedDescription();
        return Dictionary::make({});
    }
    return BinaryPropertyList::read(bytes->bytes()).as<Dictionary>();
}

Ref<Array> objectsOf(const Value& root) {
    return structureOf(root)->find("$objects").as<Array>();
}

Ref<Dictionary> objectAt(const Ref<Array>& objects, std::size_t index) {
    auto object = objects->at(index).as<Dictionary>();
    EXPECT_TRUE(object) << index;
    return object;
}

Ref<Dictionary> classRecord(std::vector<std::string_view> names) {
    std::vector<Value> lineage;
    for (const std::string_view name : names) lineage.emplace_back(text(name));
    return Dictionary::make(
        {{"$classname", text(names.front())}, {"$classes", Array::make(std::move(lineage))}});
}

Value readBack(const Value& root) {
    Ref<Error> error;
    const auto bytes = KeyedArchiver::archivedData(root, {&RoomClass, 1}, &error);
    if (!bytes) {
        ADD_FAILURE() << error->localizedDescription();
        return {};
    }
    Value back = KeyedUnarchiver::unarchivedObject(bytes->bytes(), {&RoomClass, 1}, &error);
    EXPECT_FALSE(error) << error->localizedDescription();
    return back;
}

std::string reasonFor(const Value& root) {
    Ref<Error> error;
    EXPECT_FALSE(KeyedArchiver::archivedData(root, {&RoomClass, 1}, &error));
    if (!error) return "none";
    EXPECT_EQ(error->domain(), ArchiveErrorDomain);
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(ArchiveErrorCode::InvalidValue));
    const std::string sentence = error->localizedDescription();
    return sentence.substr(sentence.find(": ") + 2);
}

TEST(KeyedArchiverTest, AnArchiveTellsItsWriterItsVersionItsRootAndItsObjects) {
    const auto archive = structureOf(text("Rent"));
    EXPECT_TRUE(archive->isEqual(*Dictionary::make({
        {"$archiver", text("NSKeyedArchiver")},
        {"$version", 100000},
        {"$top", Dictionary::make({{"root", uid(1)}})},
        {"$objects", Array::make({text("$null"), text("Rent")})},
    })));
}

TEST(KeyedArchiverTest, NothingIsTheUidOfNoObject) {
    const auto archive = structureOf({});
    EXPECT_EQ(archive->find("$top"), Value(Dictionary::make({{"root", uid(0)}})));
    EXPECT_EQ(archive->find("$objects"), Value(Array::make({text("$null")})));
    EXPECT_TRUE(readBack({}).isAbsent());
}

TEST(KeyedArchiverTest, ObjectsAreNumberedAsTheyAreMetAndAClassAfterItsObject) {
    const auto objects = objectsOf(Array::make({text("a"), Array::make({text("b")}), Date{1}}));
    ASSERT_EQ(objects->count(), 8u);
    EXPECT_EQ(objects->at(1), Value(Dictionary::make({{"NS.objects", Array::make({uid(2), uid(3), uid(6)})},
                                                      {"$class", uid(5)}})));
    EXPECT_EQ(objects->at(2), Value(text("a")));
    EXPECT_EQ(objects->at(3),
              Value(Dictionary::make({{"NS.objects", Array::make({uid(4)})}, {"$class", uid(5)}})));
    EXPECT_EQ(objects->at(4), Value(text("b")));
    EXPECT_EQ(objects->at(5), Value(classRecord({"NSArray", "NSObject"})));
    EXPECT_EQ(objects->at(6), Value(Dictionary::make({{"NS.time", 1.0}, {"$class", uid(7)}})));
    EXPECT_EQ(objects->at(7), Value(classRecord({"NSDate", "NSObject"})));
}

TEST(KeyedArchiverTest, AnObjectReachedTwiceIsWrittenOnce) {
    const auto rent = text("Rent");
    const auto objects = objectsOf(Array::make({rent, rent, text("Rent")}));
    EXPECT_EQ(objectAt(objects, 1)->find("NS.objects"), Value(Array::make({uid(2), uid(2), uid(3)})));
    const auto back = readBack(Array::make({rent, rent, text("Rent")})).as<Array>();
    EXPECT_TRUE(back->at(0).isIdentical(back->at(1)));
    EXPECT_FALSE(back->at(0).isIdentical(back->at(2)));
}

TEST(KeyedArchiverTest, MembersOfAnOrderedSetHaveKeysOfTheirOwn) {
    const auto objects = objectsOf(OrderedSet::make({text("Rent"), text("Repairs")}));
    EXPECT_EQ(objects->at(1), Value(Dictionary::make(
                                  {{"$class", uid(4)}, {"NS.object.0", uid(2)}, {"NS.object.1", uid(3)}})));
    EXPECT_EQ(objects->at(4), Value(classRecord({"NSOrderedSet", "NSObject"})));
    EXPECT_EQ(objectsOf(OrderedSet::make({}))->at(1), Value(Dictionary::make({{"$class", uid(2)}})));
}

TEST(KeyedArchiverTest, ADictionaryIsAListOfKeysAndOneOfValues) {
    const auto objects = objectsOf(Dictionary::make({{"what", text("Rent")}, {"paid", true}}));
    EXPECT_EQ(objectAt(objects, 1)->find("NS.keys"), Value(Array::make({uid(2), uid(3)})));
    EXPECT_EQ(objectAt(objects, 1)->find("NS.objects"), Value(Array::make({uid(4), uid(5)})));
    EXPECT_EQ(objects->at(6), Value(classRecord({"NSDictionary", "NSObject"})));
}

TEST(KeyedArchiverTest, ADecimalIsWrittenWithItsDigits) {
    const auto objects = objectsOf(Value(Decimal::parse("-655.37")));
    std::vector<std::byte> digits(16);
    digits[0] = std::byte{0x01};
    digits[2] = std::byte{0x01}; // 65537
    EXPECT_EQ(objects->at(1), Value(Dictionary::make({{"NS.compact", true},
                                                      {"NS.exponent", -2},
                                                      {"NS.length", 2},
                                                      {"NS.mantissa", Data::make(digits)},
                                                      {"NS.mantissa.bo", 1},
                                                      {"NS.negative", true},
                                                      {"$class", uid(2)}})));
    EXPECT_EQ(objects->at(2), Value(classRecord({"NSDecimalNumber", "NSNumber", "NSValue", "NSObject"})));
}

TEST(KeyedArchiverTest, AnAttributedStringIsWrittenInUtf16Units) {
    const auto bold = Dictionary::make({{"bold", true}});
    const auto objects = objectsOf(AttributedString::make(text("\U0001F3E0 caf\u00e9 no"), {{5, 5, bold}}));
    const auto string = objectAt(objects, 1);
    EXPECT_EQ(string->find("NSString"), Value(uid(2)));
    EXPECT_EQ(objects->at(2), Value(text("\U0001F3E0 caf\u00e9 no")));
    const auto info = string->find("NSAttributeInfo").as<PropertyListUid>();
    ASSERT_TRUE(info);
    // Three units without attributes, four of them bold, three without.
    EXPECT_EQ(objects->at(info->number()), Value(Data::make({std::byte{3}, std::byte{0}, std::byte{4},
                                                             std::byte{1}, std::byte{3}, std::byte{0}})));
}

TEST(KeyedArchiverTest, ADictionaryThatHoldsForTheWholeTextStandsAlone) {
    const auto bold = Dictionary::make({{"bold", true}});
    const auto string = objectAt(objectsOf(AttributedString::make(text("all"), {{0, 3, bold}})), 1);
    EXPECT_FALSE(string->find("NSAttributes").isAbsent());
    EXPECT_TRUE(string->find("NSAttributeInfo").isAbsent());
}

TEST(KeyedArchiverTest, WhatIsEncodedWithoutAKeyIsCountedForEachObject) {
    const auto inner = makeRef<Room>(text("a"), Value());
    const auto objects = objectsOf(makeRef<Room>(inner, inner));
    const auto outer = objectAt(objects, 1);
    EXPECT_EQ(outer->find("$0"), uid(2));
    EXPECT_EQ(outer->find("$1"), uid(6));
    EXPECT_EQ(outer->find("height"), Value(3.5));
    EXPECT_EQ(objectAt(objects, 2)->find("$0"), uid(3));
    EXPECT_EQ(objectAt(objects, 2)->find("$1"), uid(4));
    EXPECT_EQ(objects->at(5), Value(classRecord({"Room", "NSObject"})));
}

TEST(KeyedArchiverTest, AKeyThatBeginsAsTheArchivesOwnIsEscaped) {
    const auto room = objectAt(objectsOf(makeRef<Room>(text("a"), text("b"))), 1);
    EXPECT_TRUE(room->find("$second").isAbsent());
    EXPECT_EQ(room->find("$$second"), uid(3));
}

TEST(KeyedArchiverTest, AnObjectComesBackWithWhatItEncoded) {
    const auto shared = text("shared");
    const auto back = readBack(makeRef<Room>(shared, Array::make({shared, Value()}))).as<Room>();
    ASSERT_TRUE(back);
    EXPECT_EQ(back->first(), Value(shared));
    const auto list = back->second().as<Array>();
    EXPECT_TRUE(list->at(0).isIdentical(back->first()));
    EXPECT_TRUE(list->at(1).isAbsent());
}

TEST(KeyedArchiverTest, NumbersAndDatesKeepTheirKind) {
    for (const Value& value : {Value(true),
                               Value(false),
                               Value(-7),
                               Value(7),
                               Value(7u),
                               Value(1.5f),
                               Value(1.5),
                               Value(Decimal(7)),
                               Value(Decimal::parse("0.00000001")),
                               Value(Decimal::notANumber()),
                               Value(Decimal::zero()),
                               Value(Decimal::parse("99999999999999999999999999999999999999e127")),
                               Value(Decimal::parse("-99999999999999999999999999999999999999e-128")),
                               Value(Decimal::parse("1e127")),
                               Value(Decimal::parse("1e-128")),
                               Value(Decimal::parse("184467440737095516160")),
                               Value(Date{-0.0}),
                               Value(Date{1e300}),
                               Value(NullObject{}),
                               Value(text("a")),
                               Value(text(""))}) {
        const Value back = readBack(value);
        EXPECT_EQ(back, value) << value.description();
        EXPECT_TRUE(value.string() || back.isIdentical(value)) << value.description();
    }
}

TEST(KeyedArchiverTest, CollectionsComeBackAsTheClassTheyWere) {
    const auto bold = Dictionary::make({{"bold", true}});
    for (const Value& value :
         {Value(Array::make({})), Value(Array::make({1, text("b"), Value(), NullObject{}})),
          Value(Set::make({})), Value(Set::make({1, text("b"), Array::make({2})})),
          Value(OrderedSet::make({text("b"), text("a"), 3})), Value(Dictionary::make({})),
          Value(Dictionary::make({{"z", 1}, {"a", Array::make({})}, {"$class", 7}})), Value(Data::make({})),
          Value(Data::make({std::byte{0}, std::byte{255}})), Value(AttributedString::empty()),
          Value(AttributedString::make(text("plain"))),
          Value(AttributedString::make(text("caf\u00e9 \U0001F3E0!"),
                                       {{0, 1, bold}, {3, 2, bold}, {5, 6, bold}}))}) {
        const Value back = readBack(value);
        EXPECT_EQ(back, value) << value.description();
        EXPECT_EQ(back.object()->runtimeClassName(), value.object()->runtimeClassName());
    }
}

TEST(KeyedArchiverTest, LargeOrderedSetsAndDictionariesComeBack) {
    std::vector<Value> members;
    std::vector<Dictionary::Entry> entries;
    for (int number = 0; number < 20000; ++number) {
        members.emplace_back(text(std::to_string(number)));
        entries.emplace_back(std::to_string(number), number);
    }
    const Value set = OrderedSet::make(members);
    EXPECT_EQ(readBack(set), set);
    const Value dictionary = Dictionary::make(entries);
    EXPECT_EQ(readBack(dictionary), dictionary);
}

TEST(KeyedArchiverTest, WhatCannotBeWrittenIsAnError) {
    EXPECT_EQ(reasonFor(PropertyListUid::make(1)),
              "no objects of the class \"PropertyListUid\" are archived");
    EXPECT_EQ(reasonFor(Array::make({text("\xc3")})), "a text is not well formed");
    EXPECT_EQ(reasonFor(Value(Date{std::numeric_limits<double>::quiet_NaN()})), "a date is no instant");
    const auto room = makeRef<Room>(Value(), Value());
    room->setFirst(Array::make({room}));
    EXPECT_EQ(reasonFor(room), "an object contains itself");
    room->setFirst({});
    Value nested;
    for (std::size_t level = 0; level < DeepestArchive; ++level) nested = Array::make({nested});
    EXPECT_EQ(readBack(nested), nested);
    EXPECT_EQ(reasonFor(Array::make({nested})), "it is nested too deeply");
    EXPECT_FALSE(KeyedArchiver::archivedData(PropertyListUid::make(1))) << "without asking why";
}

TEST(KeyedArchiverTest, OnlyNumbersAndDataArePlain) {
    static constexpr std::string_view Names[] = {"Odd", "NSObject"};
    const ArchivedClass odd{"Room", Names,
                            [](const Value& value, KeyedArchiver& coder) {
                                coder.encodePlainForKey(value.as<Room>()->first(), "plain");
                            },
                            nullptr};
    const auto isWritten = [&](const Value& plain) {
        return KeyedArchiver::archivedData(makeRef<Room>(plain, Value()), {&odd, 1}) != nullptr;
    };
    EXPECT_TRUE(isWritten(1));
    EXPECT_TRUE(isWritten(Data::make({})));
    for (const Value& value :
         {Value(), Value(text("a")), Value(Decimal(1)), Value(Date{1}), Value(Array::make({}))})
        EXPECT_FALSE(isWritten(value)) << value.description();
}

} // namespace
} // namespace estatebook::platform
