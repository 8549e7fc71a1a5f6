// SPDX-License-Identifier: MIT
#include "platform/archive/BinaryPropertyList.hpp"

#include "platform/archive/ArchiveError.hpp"
#include "platform/archive/PropertyListUid.hpp"
#include "platform/values/Array.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using Bytes = std::vector<std::byte>;

Ref<String> text(std::string_view characters) {
    return String::make(characters);
}

std::string bigEndian(std::size_t number, std::size_t width) {
    std::string bytes(width, '\0');
    for (std::size_t index = width; index-- > 0; number >>= 8)
        bytes[index] = static_cast<char>(number & 0xFF);
    return bytes;
}

/// A list of the given members, one behind another, with references and offsets of some bytes each.
Bytes listOf(const std::vector<std::string>& members, std::size_t top = 0, std::size_t width = 1) {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string& member : members) {
        table += bigEndian(bytes.size(), width);
        bytes += member;
    }
    const std::size_t tableStart = bytes.size();
    bytes += table + std::string(6, '\0') + bigEndian(width, 1) + bigEndian(width, 1);
    for (const std::size_t number : {members.size(), top, tableStart}) bytes += bigEndian(number, 8);
    const auto* first = reinterpret_cast<const std::byte*>(bytes.data());
    return {first, first + bytes.size()};
}

Value readBack(const Value& value) {
    Ref<Error> error;
    const auto bytes = BinaryPropertyList::write(value, &error);
    if (!bytes) {
        ADD_FAILURE() << error->localizedDescription();
        return {};
    }
    Value read = BinaryPropertyList::read(bytes->bytes(), &error);
    EXPECT_FALSE(error);
    return read;
}

std::string reasonFor(const Bytes& bytes) {
    Ref<Error> error;
    const Value value = BinaryPropertyList::read(bytes, &error);
    EXPECT_EQ(value.isAbsent(), error != nullptr);
    if (!error) return "none";
    EXPECT_EQ(error->domain(), ArchiveErrorDomain);
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(ArchiveErrorCode::ReadCorrupt));
    const std::string sentence = error->localizedDescription();
    return sentence.substr(sentence.find(": ") + 2);
}

std::string reasonForWriting(const Value& value) {
    Ref<Error> error;
    EXPECT_FALSE(BinaryPropertyList::write(value, &error));
    if (!error) return "none";
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(ArchiveErrorCode::InvalidValue));
    const std::string sentence = error->localizedDescription();
    return sentence.substr(sentence.find(": ") + 2);
}

TEST(BinaryPropertyListTest, EachKindOfMemberHasItsBytes) {
    const auto bytesOf = [](const Value& value) {
        const auto data = BinaryPropertyList::write(value);
        const auto bytes = data->bytes();
        const auto content = bytes.subspan(8, bytes.size() - 8 - 1 - 32);
        return std::string(reinterpret_cast<const char*>(content.data()), content.size());
    };
    using namespace std::string_literals;
    EXPECT_EQ(bytesOf(false), "\x08"s);
    EXPECT_EQ(bytesOf(true), "\x09"s);
    EXPECT_EQ(bytesOf(0), "\x10\x00"s);
    EXPECT_EQ(bytesOf(255), "\x10\xff"s);
    EXPECT_EQ(bytesOf(256), "\x11\x01\x00"s);
    EXPECT_EQ(bytesOf(100000), "\x12\x00\x01\x86\xa0"s);
    EXPECT_EQ(bytesOf(std::int64_t{1} << 32), "\x13\x00\x00\x00\x01\x00\x00\x00\x00"s);
    EXPECT_EQ(bytesOf(-1), "\x13\xff\xff\xff\xff\xff\xff\xff\xff"s);
    EXPECT_EQ(bytesOf(7u), "\x14"s + std::string(15, '\0') + "\x07"s);
    EXPECT_EQ(bytesOf(1.5f), "\x22\x3f\xc0\x00\x00"s);
    EXPECT_EQ(bytesOf(1.5), "\x23\x3f\xf8\x00\x00\x00\x00\x00\x00"s);
    EXPECT_EQ(bytesOf(Date{1.5}), "\x33\x3f\xf8\x00\x00\x00\x00\x00\x00"s);
    EXPECT_EQ(bytesOf(Data::make({std::byte{1}, std::byte{2}})), "\x42\x01\x02"s);
    EXPECT_EQ(bytesOf(text("Rent")), "\x54Rent"s);
    EXPECT_EQ(bytesOf(text("fifteen letters")), "\x5f\x10\x0f"s
                                                "fifteen letters"s);
    EXPECT_EQ(bytesOf(text("\u00e9")), "\x61\x00\xe9"s);
    EXPECT_EQ(bytesOf(text("\U0001F3E0")), "\x62\xd8\x3c\xdf\xe0"s);
    EXPECT_EQ(bytesOf(PropertyListUid::make(5)), "\x80\x05"s);
    EXPECT_EQ(bytesOf(PropertyListUid::make(300)), "\x81\x01\x2c"s);
}

TEST(BinaryPropertyListTest, NumbersComeBackAsTheKindTheyWere) {
    for (const Value& value :
         {Value(true), Value(false), Value(0), Value(255), Value(65535), Value(65536), Value(-1),
          Value(std::numeric_limits<std::int64_t>::min()), Value(std::numeric_limits<std::int64_t>::max()),
          Value(0u), Value(7u), Value(std::numeric_limits<std::uint64_t>::max()), Value(0.1f), Value(-0.0f),
          Value(0.1), Value(-0.0), Value(std::numeric_limits<double>::infinity()),
          Value(std::numeric_limits<double>::quiet_NaN())})
        EXPECT_TRUE(readBack(value).isIdentical(value)) << value.description();
}

TEST(BinaryPropertyListTest, TextsComeBackToTheByte) {
    for (const std::string_view each : {"", "Rent", "Caf\u00e9", "\U0001F3E0 \u5bb6", "\u0080", "\uffff"})
        EXPECT_EQ(readBack(text(each)).string()->view(), each);
    const std::string zero("a\0b", 3);
    EXPECT_EQ(readBack(text(zero)).string()->view(), zero);
    const std::string longText(70000, 'x');
    EXPECT_EQ(readBack(text(longText)).string()->view(), longText);
}

TEST(BinaryPropertyListTest, CollectionsComeBackInTheirOrder) {
    const auto inner = Array::make({text("a"), Value(1u), Array::make({}), Dictionary::make({})});
    const auto list =
        Dictionary::make({{"z", inner}, {"a", Date{-1.25}}, {"Caf\u00e9", PropertyListUid::make(7)}});
    const auto back = readBack(list).as<Dictionary>();
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->isEqual(*list));
    EXPECT_EQ(back->entries().front().first, "z");
}

TEST(BinaryPropertyListTest, ManyMembersTakeWiderReferences) {
    std::vector<Value> members;
    for (int number = 0; number < 70000; ++number) members.emplace_back(number);
    const auto back = readBack(Array::make(members)).as<Array>();
    ASSERT_TRUE(back);
    ASSERT_EQ(back->count(), members.size());
    for (std::size_t index = 0; index < members.size(); ++index)
        ASSERT_TRUE(back->at(index).isIdentical(members[index]));
}

TEST(BinaryPropertyListTest, AKeyOfManyDictionariesIsWrittenOnce) {
    std::vector<Value> members;
    for (int number = 0; number < 100; ++number)
        members.emplace_back(Dictionary::make({{"a rather long key for a number", number}}));
    const auto bytes = BinaryPropertyList::write(Array::make(std::move(members)));
    EXPECT_LT(bytes->bytes().size(), 1200u);
}

TEST(BinaryPropertyListTest, WhatHasNoPlaceInAPropertyListIsNotWritten) {
    EXPECT_EQ(reasonForWriting(Value(Decimal(1))), "a decimal has no place in it");
    EXPECT_EQ(reasonForWriting(Value()), "it holds what no property list can hold: (null)");
    EXPECT_EQ(reasonForWriting(Array::make({NullObject{}})),
              "it holds what no property list can hold: <null>");
    EXPECT_EQ(reasonForWriting(text("\xc3")), "a text is not well formed");
    EXPECT_EQ(reasonForWriting(Dictionary::make({{"\xed\xa0\x80", 1}})), "a text is not well formed");
}

TEST(BinaryPropertyListTest, DepthHasALimitOnBothSides) {
    Value nested = 1;
    for (std::size_t level = 0; level < DeepestArchive; ++level) nested = Array::make({nested});
    EXPECT_EQ(readBack(nested), nested);
    EXPECT_EQ(reasonForWriting(Array::make({nested})), "it is nested too deeply");
    std::vector<std::string> members;
    const auto nest = [&](std::size_t levels) {
        members.clear();
        for (std::size_t level = 1; level <= levels; ++level) members.push_back("\xa1" + bigEndian(level, 4));
        members.emplace_back("\x09");
        return listOf(members, 0, 4);
    };
    EXPECT_EQ(reasonFor(nest(DeepestArchive)), "none");
    EXPECT_EQ(reasonFor(nest(DeepestArchive + 1)), "it is nested too deeply");
    EXPECT_EQ(reasonFor(nest(1000000)), "it is nested too deeply");
}

TEST(BinaryPropertyListTest, BytesThatAreNoListAreRefused) {
    EXPECT_EQ(reasonFor({}), "it is too short");
    EXPECT_EQ(reasonFor(Bytes(40)), "it is too short");
    EXPECT_EQ(reasonFor(Bytes(41)), "it does not begin as one");
    EXPECT_EQ(reasonFor(listOf({"\x09"})), "none");
    EXPECT_EQ(reasonFor(listOf({"\x09"}, 1)), "it has no first member");
    EXPECT_EQ(reasonFor(listOf({})), "it is too short");
}

TEST(BinaryPropertyListTest, AMemberOfNoKnownKindIsRefused) {
    using namespace std::string_literals;
    for (const std::string& member : {"\x00"s, "\x0f"s, "\x70"s, "\x90"s, "\xb0"s, "\xc0"s, "\xe0"s, "\xf0"s})
        EXPECT_EQ(reasonFor(listOf({member})), "a member is of no known kind");
    EXPECT_EQ(reasonFor(listOf({"\x15"s + std::string(32, '\0')})), "an integer has an impossible width");
    EXPECT_EQ(reasonFor(listOf({"\x21\x00\x00"s})), "a number has an impossible width");
    EXPECT_EQ(reasonFor(listOf({"\x32\x00\x00\x00\x00"s})), "a date has an impossible width");
    EXPECT_EQ(reasonFor(listOf({"\x88"s + std::string(9, '\0')})), "a reference has an impossible width");
    EXPECT_EQ(reasonFor(listOf({"\x14\x00\x00\x00\x00\x00\x00\x00\x01\x00\x00\x00\x00\x00\x00\x00\x00"s})),
              "an integer is out of range");
    EXPECT_EQ(reasonFor(listOf({"\x5f\x23\x00\x00\x00\x00\x00\x00\x00\x00"s})), "a count is no number");
}

TEST(BinaryPropertyListTest, ACountBeyondTheBytesIsRefusedBeforeAnythingIsMade) {
    using namespace std::string_literals;
    for (const char* kind : {"\x4f", "\x5f", "\x6f", "\xaf", "\xdf"})
        EXPECT_EQ(reasonFor(listOf({kind + "\x13\x7f\xff\xff\xff\xff\xff\xff\xff"s})),
                  "a member ends outside of it");
    EXPECT_EQ(reasonFor(listOf({"\x54"
                                "Ren"s})),
              "a member ends outside of it");
    EXPECT_EQ(reasonFor(listOf({"\x23\x00"s})), "a member ends outside of it");
}

TEST(BinaryPropertyListTest, TextsThatAreNotWellFormedAreRefused) {
    using namespace std::string_literals;
    EXPECT_EQ(reasonFor(listOf({"\x51\xe9"s})), "a text is not well formed");
    EXPECT_EQ(reasonFor(listOf({"\x61\xd8\x3c"s})), "a text is not well formed");
    EXPECT_EQ(reasonFor(listOf({"\x62\xdf\xe0\xd8\x3c"s})), "a text is not well formed");
}

TEST(BinaryPropertyListTest, ReferencesLeadToMembersAndNotInACircle) {
    EXPECT_EQ(reasonFor(listOf({"\xa1\x01"})), "a reference leads nowhere");
    EXPECT_EQ(reasonFor(listOf({std::string("\xa1\x00", 2)})), "a member contains itself");
    EXPECT_EQ(reasonFor(listOf({"\xa1\x01", std::string("\xa1\x00", 2)})), "a member contains itself");
    EXPECT_EQ(reasonFor(listOf({"\xd1\x01\x02", "\x51k", std::string("\xa1\x00", 2)})),
              "a member contains itself");
    EXPECT_EQ(reasonFor(listOf({"\xd1\x02\x01", "\x51k", "\x09"})), "a key is no text");
    EXPECT_EQ(reasonFor(listOf({"\xd2\x01\x01\x02\x02", "\x51k", "\x09"})), "a key is there twice");
    EXPECT_EQ(reasonFor(listOf({"\xd2\x01\x02\x03\x03", "\x51k", std::string("\x61\x00k", 3), "\x09"})),
              "a key is there twice");
    EXPECT_EQ(reasonFor(listOf({"\xd1\x09\x01", "\x51k"})), "a reference leads nowhere");
}

TEST(BinaryPropertyListTest, MembersDoNotShareTheirBytes) {
    Bytes bytes = listOf({"\xa2\x01\x02", "\x10\x10", "\x10\x10"});
    EXPECT_EQ(reasonFor(bytes), "none");
    const std::size_t table = 8 + 3 + 2 + 2;
    bytes[table + 2] = bytes[table + 1];
    EXPECT_EQ(reasonFor(bytes), "two members share their bytes");
    bytes[table + 2] = static_cast<std::byte>(8 + 3 + 1);
    EXPECT_EQ(reasonFor(bytes), "two members share their bytes");
    bytes[table + 2] = static_cast<std::byte>(table);
    EXPECT_EQ(reasonFor(bytes), "a member stands outside of it");
    bytes[table + 2] = static_cast<std::byte>(7);
    EXPECT_EQ(reasonFor(bytes), "a member stands outside of it");
}

TEST(BinaryPropertyListTest, TheTableIsWhatTheTrailerSays) {
    const Bytes good = listOf({"\xa1\x01", "\x09"});
    const auto changed = [&](std::size_t fromEnd, std::uint8_t byte) {
        Bytes bytes = good;
        bytes[bytes.size() - fromEnd] = static_cast<std::byte>(byte);
        return reasonFor(bytes);
    };
    EXPECT_EQ(changed(26, 0), "its numbers have an impossible width");
    EXPECT_EQ(changed(26, 9), "its numbers have an impossible width");
    EXPECT_EQ(changed(25, 0), "its numbers have an impossible width");
    EXPECT_EQ(changed(26, 2), "its table has another size than it says");
    EXPECT_EQ(changed(17, 3), "its table has another size than it says");
    EXPECT_EQ(changed(24, 0x80), "its table has another size than it says");
    EXPECT_EQ(changed(1, 200), "its table stands nowhere");
    EXPECT_EQ(changed(8, 0x80), "its table stands nowhere");
    EXPECT_EQ(changed(9, 2), "it has no first member");
}

TEST(BinaryPropertyListTest, OneMemberOfManyListsIsReadOnce) {
    const auto back = BinaryPropertyList::read(listOf({"\xa2\x01\x01", "\xa2\x02\x02", "\x51x"}));
    const auto list = back.as<Array>();
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->at(0).isIdentical(list->at(1)));
}

TEST(BinaryPropertyListTest, WhatIsReachedTwiceIsWrittenOnce) {
    Value tower = text("a");
    for (int level = 0; level < 100; ++level) tower = Array::make({tower, tower});
    const auto bytes = BinaryPropertyList::write(tower);
    ASSERT_TRUE(bytes);
    EXPECT_LT(bytes->bytes().size(), 600u);
    const auto back = BinaryPropertyList::read(bytes->bytes()).as<Array>();
    EXPECT_TRUE(back->at(0).isIdentical(back->at(1)));
}

TEST(BinaryPropertyListTest, ALongKeyOfVeryManyDictionariesIsRefused) {
    const std::string key(100000, 'k');
    std::vector<Value> members;
    for (int number = 0; number < 1000; ++number) members.emplace_back(Dictionary::make({{key, 1}}));
    const auto bytes = BinaryPropertyList::write(Array::make(std::move(members)));
    ASSERT_TRUE(bytes);
    EXPECT_EQ(reasonFor({bytes->bytes().begin(), bytes->bytes().end()}), "its keys are too long");
}

} // namespace
} // namespace estatebook::platform
