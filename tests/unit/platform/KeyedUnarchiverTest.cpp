// SPDX-License-Identifier: MIT
#include "platform/archive/KeyedUnarchiver.hpp"

#include "platform/archive/ArchiveError.hpp"
#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/PropertyListUid.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"
#include "platform/values/Data.hpp"
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

using Entries = std::vector<Dictionary::Entry>;

Value object(Entries entries, std::uint64_t classNumber) {
    entries.emplace_back("$class", uid(classNumber));
    return Dictionary::make(std::move(entries));
}

Value classRecord(std::string_view name) {
    return Dictionary::make(
        {{"$classname", text(name)}, {"$classes", Array::make({text(name), text("NSObject")})}});
}

/// The entries of an archive whose root is the object 1.
Entries archiveOf(std::vector<Value> objects) {
    objects.insert(objects.begin(), text("$null"));
    return {{"$archiver", text("NSKeyedArchiver")},
            {"$version", 100000},
            {"$top", Dictionary::make({{"root", uid(1)}})},
            {"$objects", Array::make(std::move(objects))}};
}

struct Outcome {
    Value value;
    std::string reason = "none";
};

Outcome readList(const Value& list) {
    const auto bytes = BinaryPropertyList::write(list);
    if (!bytes) {
        ADD_FAILURE() << "no property list";
        return {};
    }
    Ref<Error> error;
    Outcome outcome{KeyedUnarchiver::unarchivedObject(bytes->bytes(), {}, &error)};
    if (!error) return outcome;
    EXPECT_TRUE(outcome.value.isAbsent());
    EXPECT_EQ(error->domain(), ArchiveErrorDomain);
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(ArchiveErrorCode::ReadCorrupt));
    const std::string sentence = error->localizedDescription();
    outcome.reason = sentence.substr(sentence.find(": ") + 2);
    return outcome;
}

Outcome read(std::vector<Value> objects) {
    return readList(Dictionary::make(archiveOf(std::move(objects))));
}

std::string reasonFor(std::vector<Value> objects) {
    return read(std::move(objects)).reason;
}

TEST(KeyedUnarchiverTest, BytesThatAreNoArchiveAreAnError) {
    Ref<Error> error;
    EXPECT_TRUE(KeyedUnarchiver::unarchivedObject({}, {}, &error).isAbsent());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription(), "The property list cannot be read: it is too short");
    EXPECT_TRUE(KeyedUnarchiver::unarchivedObject({}).isAbsent()) << "without asking why";
    EXPECT_EQ(readList(text("a")).reason, "it is no dictionary");
}

TEST(KeyedUnarchiverTest, AnArchiveHasAllItsParts) {
    const auto with = [](std::string_view key, const Value& value) {
        Entries entries = archiveOf({text("a")});
        entries.emplace_back(key, value);
        return readList(Dictionary::make(std::move(entries))).reason;
    };
    EXPECT_EQ(with("other", 1), "none");
    EXPECT_EQ(with("$archiver", text("Other")), "\"NSKeyedArchiver\" is missing");
    EXPECT_EQ(with("$archiver", 1), "\"NSKeyedArchiver\" is missing");
    EXPECT_EQ(with("$version", 100001), "its version is unknown");
    EXPECT_EQ(with("$version", 100000u), "its version is unknown");
    EXPECT_EQ(with("$top", uid(1)), "\"$top\" is missing, or not what it should be");
    EXPECT_EQ(with("$top", Dictionary::make({})), "\"root\" is missing, or not what it should be");
    EXPECT_EQ(with("$top", Dictionary::make({{"root", 1}})), "\"root\" is missing, or not what it should be");
    EXPECT_EQ(with("$top", Dictionary::make({{"root", uid(2)}})), "a reference leads nowhere");
    EXPECT_EQ(with("$objects", 1), "\"$objects\" is missing, or not what it should be");
    EXPECT_EQ(with("$objects", Array::make({})), "it has no objects");
    EXPECT_EQ(with("$objects", Array::make({text("a"), text("b")})), "\"$null\" is missing");
}

TEST(KeyedUnarchiverTest, OnlyKnownClassesAreMade) {
    EXPECT_EQ(reasonFor({object({}, 2), classRecord("NSTask")}), "there is no class \"NSTask\"");
    EXPECT_EQ(reasonFor({object({}, 2), classRecord("EstateBook_Model.TKTagNames")}),
              "there is no class \"EstateBook_Model.TKTagNames\"");
    EXPECT_EQ(reasonFor({Dictionary::make({})}), "\"$class\" is missing, or not what it should be");
    EXPECT_EQ(reasonFor({object({}, 0)}), "a class is not described");
    EXPECT_EQ(reasonFor({object({}, 9)}), "a class is not described");
    EXPECT_EQ(reasonFor({object({}, 2), Dictionary::make({{"$classname", text("NSArray")}})}),
              "\"$classes\" is missing, or not what it should be");
    EXPECT_EQ(reasonFor({object({}, 2), Dictionary::make({{"$classname", text("NSArray")},
                                                          {"$classes", Array::make({text("NSSet")})}})}),
              "a class does not begin its own lineage");
    EXPECT_EQ(reasonFor({Array::make({})}), "an object is of no known form");
    EXPECT_EQ(reasonFor({uid(1)}), "an object is of no known form");
}

TEST(KeyedUnarchiverTest, ObjectsThatMissSomethingAreRefused) {
    for (const char* name :
         {"NSArray", "NSSet", "NSDictionary", "NSDate", "NSMutableString", "NSMutableData"})
        EXPECT_EQ(reasonFor({object({}, 2), classRecord(name)}).substr(0, 26), "an object of the class \"NS")
            << name;
    EXPECT_EQ(reasonFor({object({{"NS.objects", 1}}, 2), classRecord("NSArray")}),
              "\"NS.objects\" is no list of objects");
    EXPECT_EQ(reasonFor({object({{"NS.objects", Array::make({1})}}, 2), classRecord("NSArray")}),
              "a value stands in the place of an object");
    EXPECT_EQ(reasonFor({object({{"NS.time", text("1")}}, 2), classRecord("NSDate")}),
              "\"NS.time\" is no plain value");
    EXPECT_EQ(reasonFor({object({{"NS.time", std::numeric_limits<double>::quiet_NaN()}}, 2),
                         classRecord("NSDate")}),
              "an object of the class \"NSDate\" is not complete");
}

TEST(KeyedUnarchiverTest, ADictionaryHasAsManyKeysAsValuesEachOnce) {
    const auto reasonWith = [](std::vector<Value> keys, std::vector<Value> values) {
        return reasonFor({object({{"NS.keys", Array::make(std::move(keys))},
                                  {"NS.objects", Array::make(std::move(values))}},
                                 2),
                          classRecord("NSDictionary"), text("k"), text("k"), 7});
    };
    EXPECT_EQ(reasonWith({uid(3)}, {uid(5)}), "none");
    const char* incomplete = "an object of the class \"NSDictionary\" is not complete";
    EXPECT_EQ(reasonWith({uid(3)}, {}), incomplete);
    EXPECT_EQ(reasonWith({uid(3), uid(4)}, {uid(5), uid(5)}), incomplete);
    EXPECT_EQ(reasonWith({uid(5)}, {uid(5)}), incomplete);
    EXPECT_EQ(reasonWith({uid(0)}, {uid(5)}), incomplete);
}

TEST(KeyedUnarchiverTest, ASetHasEachMemberOnce) {
    for (const auto& [name, entries] :
         {std::pair<const char*, Entries>{"NSSet", {{"NS.objects", Array::make({uid(3), uid(4)})}}},
          {"NSOrderedSet", {{"NS.object.0", uid(3)}, {"NS.object.1", uid(4)}}}}) {
        EXPECT_EQ(reasonFor({object(entries, 2), classRecord(name), text("a"), text("b")}), "none");
        EXPECT_EQ(reasonFor({object(entries, 2), classRecord(name), text("a"), text("a")}),
                  "an object of the class \"" + std::string(name) + "\" is not complete");
    }
}

TEST(KeyedUnarchiverTest, MembersOfAnOrderedSetEndWhereANumberIsMissing) {
    const auto outcome = read({object({{"NS.object.0", uid(3)}, {"NS.object.2", uid(4)}}, 2),
                               classRecord("NSOrderedSet"), text("a"), text("b")});
    EXPECT_EQ(outcome.value, Value(OrderedSet::make({text("a")})));
}

TEST(KeyedUnarchiverTest, WhatCanBeChangedIsReadAsWhatCannot) {
    EXPECT_EQ(read({object({{"NS.string", uid(3)}}, 2), classRecord("NSMutableString"), text("a")}).value,
              Value(text("a")));
    EXPECT_EQ(read({object({{"NS.data", Data::make({})}}, 2), classRecord("NSMutableData")}).value,
              Value(Data::make({})));
    EXPECT_EQ(read({object({{"NS.objects", Array::make({})}}, 2), classRecord("NSMutableArray")}).value,
              Value(Array::make({})));
    EXPECT_EQ(read({object({}, 2), classRecord("NSMutableOrderedSet")}).value, Value(OrderedSet::make({})));
    EXPECT_EQ(
        read({object({{"NSString", uid(3)}}, 2), classRecord("NSMutableAttributedString"), text("a")}).value,
        Value(AttributedString::make(text("a"))));
}

TEST(KeyedUnarchiverTest, AnObjectThatContainsItselfIsRefused) {
    EXPECT_EQ(reasonFor({object({{"NS.objects", Array::make({uid(1)})}}, 2), classRecord("NSArray")}),
              "an object contains itself");
    EXPECT_EQ(reasonFor({object({{"NS.objects", Array::make({uid(3)})}}, 2), classRecord("NSArray"),
                         object({{"NS.objects", Array::make({uid(1)})}}, 2)}),
              "an object contains itself");
}

TEST(KeyedUnarchiverTest, DeepNestingIsRefused) {
    std::vector<Value> objects;
    constexpr std::uint64_t Levels = 100000;
    for (std::uint64_t level = 1; level <= Levels; ++level)
        objects.push_back(object({{"NS.objects", Array::make({uid(level + 1)})}}, Levels + 2));
    objects.push_back(text("a"));
    objects.push_back(classRecord("NSArray"));
    EXPECT_EQ(reasonFor(std::move(objects)), "it is nested too deeply");
}

TEST(KeyedUnarchiverTest, ListsThatStandForVeryManyMembersAreReadButNotCompared) {
    // Each list holds the one before it twice: level n stands for 2^n texts. Two such towers in a set are compared for ever.
    constexpr std::uint64_t Levels = 100;
    std::vector<Value> objects;
    const auto pair = [](std::uint64_t first, std::uint64_t second, std::uint64_t classNumber) {
        return object({{"NS.objects", Array::make({uid(first), uid(second)})}}, classNumber);
    };
    objects.push_back(pair(4, 5, 2));
    objects.push_back(classRecord("NSArray"));
    objects.push_back(classRecord("NSSet"));
    for (std::uint64_t level = 0; level < Levels; ++level)
        for (const std::uint64_t tower : {4u, 5u})
            objects.push_back(pair(tower + 2 * (level + 1), tower + 2 * (level + 1), 2));
    objects.push_back(text("a"));
    objects.push_back(text("a"));
    EXPECT_EQ(reasonFor(objects), "none");
    objects[0] = pair(4, 5, 3);
    EXPECT_EQ(reasonFor(objects), "it takes too much work");
}

TEST(KeyedUnarchiverTest, ASetOfVeryManyListsIsRefused) {
    const auto setOf = [](int count) {
        std::vector<Value> members;
        for (int number = 0; number < count; ++number) members.emplace_back(Array::make({number}));
        Ref<Error> error;
        const auto bytes = KeyedArchiver::archivedData(OrderedSet::make(std::move(members)));
        const Value back = KeyedUnarchiver::unarchivedObject(bytes->bytes(), {}, &error);
        return error == nullptr;
    };
    EXPECT_TRUE(setOf(1000));
    EXPECT_FALSE(setOf(5000));
}

TEST(KeyedUnarchiverTest, ALongTextSharedByVeryManyObjectsIsRefused) {
    const auto bold = Dictionary::make({{"bold", true}});
    const auto longText = text(std::string(200000, 'x'));
    std::vector<Value> strings;
    for (int number = 0; number < 1000; ++number)
        strings.emplace_back(AttributedString::make(longText, {{0, 1, bold}}));
    const auto bytes = KeyedArchiver::archivedData(Array::make(std::move(strings)));
    Ref<Error> error;
    EXPECT_TRUE(KeyedUnarchiver::unarchivedObject(bytes->bytes(), {}, &error).isAbsent());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription(), "The archive cannot be read: it takes too much work");
}

Entries decimalEntries() {
    std::vector<std::byte> digits(16);
    digits[0] = std::byte{25};
    return {{"NS.compact", true},  {"NS.exponent", -1},
            {"NS.length", 1},      {"NS.mantissa", Data::make(digits)},
            {"NS.mantissa.bo", 1}, {"NS.negative", true}};
}

TEST(KeyedUnarchiverTest, ADecimalMustBeWhole) {
    const auto with = [](std::string_view key, const Value& value) {
        Entries entries = decimalEntries();
        entries.emplace_back(key, value);
        return reasonFor({object(std::move(entries), 2), classRecord("NSDecimalNumber")});
    };
    EXPECT_EQ(read({object(decimalEntries(), 2), classRecord("NSDecimalNumber")}).value,
              Value(Decimal::parse("-2.5")));
    EXPECT_EQ(with("NS.mantissa", Data::make({})), "a decimal is not complete");
    EXPECT_EQ(with("NS.mantissa", Data::make(std::vector<std::byte>(16, std::byte{255}))),
              "a decimal is not complete");
    EXPECT_EQ(with("NS.mantissa.bo", 2), "a decimal is not complete");
    EXPECT_EQ(with("NS.length", 2), "a decimal is not complete");
    EXPECT_EQ(with("NS.exponent", 128), "a decimal is not complete");
    EXPECT_EQ(with("NS.exponent", -129), "a decimal is not complete");
    EXPECT_EQ(with("NS.exponent", uid(1)), "\"NS.exponent\" is no plain value");
    for (const char* key : {"NS.exponent", "NS.length", "NS.mantissa", "NS.mantissa.bo", "NS.negative"}) {
        Entries entries = decimalEntries();
        std::erase_if(entries, [&](const auto& entry) { return entry.first == key; });
        EXPECT_EQ(reasonFor({object(std::move(entries), 2), classRecord("NSDecimalNumber")}),
                  "a decimal is not complete")
            << key;
    }
}

TEST(KeyedUnarchiverTest, ADecimalOfTooManyDigitsOrOutOfRangeIsRefused) {
    const auto with = [](std::vector<std::byte> digits, int exponent) {
        Entries entries = decimalEntries();
        entries.emplace_back("NS.mantissa", Data::make(std::move(digits)));
        entries.emplace_back("NS.length", 8);
        entries.emplace_back("NS.exponent", exponent);
        return reasonFor({object(std::move(entries), 2), classRecord("NSDecimalNumber")});
    };
    EXPECT_NE(with(std::vector<std::byte>(16, std::byte{255}), 0), "none");
    std::vector<std::byte> thousands(16); // 10^38 = 0x4B3B4CA8 5A86C47A 098A2240 00000000
    for (std::size_t index = 0; const int byte : {0, 0, 0, 0, 0x40, 0x22, 0x8a, 0x09, 0x7a, 0xc4, 0x86, 0x5a,
                                                  0xa8, 0x4c, 0x3b, 0x4b})
        thousands[index++] = static_cast<std::byte>(byte);
    EXPECT_EQ(with(thousands, 0), "none") << "it is compact";
    EXPECT_NE(with(thousands, 127), "none");
}

TEST(KeyedUnarchiverTest, RunsOfAttributesCoverTheirText) {
    const auto reasonWith = [](std::vector<int> info, std::string_view characters = "a\U0001F3E0b") {
        std::vector<std::byte> bytes;
        for (const int byte : info) bytes.push_back(static_cast<std::byte>(byte));
        return reasonFor(
            {object({{"NSString", uid(3)}, {"NSAttributes", uid(4)}, {"NSAttributeInfo", uid(7)}}, 2),
             classRecord("NSAttributedString"), text(characters),
             object({{"NS.objects", Array::make({uid(6), uid(3)})}}, 5), classRecord("NSArray"),
             object({{"NS.keys", Array::make({})}, {"NS.objects", Array::make({})}}, 8), Data::make(bytes),
             classRecord("NSDictionary")});
    };
    EXPECT_EQ(reasonWith({1, 0, 2, 0, 1, 0}), "none");
    EXPECT_EQ(reasonWith({4, 0}), "none");
    EXPECT_EQ(reasonWith({0x84, 0x00, 0}), "none") << "in more groups than it takes";
    const char* incomplete = "an attributed string is not complete";
    EXPECT_EQ(reasonWith({}), incomplete);
    EXPECT_EQ(reasonWith({3, 0}), incomplete);
    EXPECT_EQ(reasonWith({5, 0}), incomplete);
    EXPECT_EQ(reasonWith({2, 0, 2, 0}), incomplete) << "in the middle of a character";
    EXPECT_EQ(reasonWith({0, 0, 4, 0}), incomplete);
    EXPECT_EQ(reasonWith({4}), incomplete);
    EXPECT_EQ(reasonWith({4, 1}), incomplete) << "that is no dictionary";
    EXPECT_EQ(reasonWith({4, 2}), incomplete);
    EXPECT_EQ(reasonWith({0x84}), incomplete);
    EXPECT_EQ(reasonWith({0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 1, 0}),
              incomplete);
    EXPECT_EQ(reasonWith({1, 0}, ""), "none") << "there is nothing to cover";
}

} // namespace
} // namespace estatebook::platform
