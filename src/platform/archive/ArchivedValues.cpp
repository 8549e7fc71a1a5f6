// SPDX-License-Identifier: MIT
#include "platform/archive/ArchivedValues.hpp"

#include "platform/archive/ArchivedDecimal.hpp"
#include "platform/archive/ArchivedText.hpp"
#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Data.hpp"
#include "platform/values/Dictionary.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace estatebook::platform::detail {

namespace {

using Names = std::string_view;

[[noreturn]] void refuse(std::string_view name) {
    throw InvalidUnarchiveOperationException("an object of the class \"" + std::string(name) +
                                             "\" is not complete");
}

void requireOf(std::string_view name, bool holds) {
    if (!holds) refuse(name);
}

// Lists

constexpr std::string_view MembersKey = "NS.objects";

std::vector<Value> membersOf(KeyedUnarchiver& coder, std::string_view name,
                             std::string_view key = MembersKey) {
    if (auto members = coder.decodeObjectsForKey(key)) return *std::move(members);
    refuse(name);
}

constexpr Names ArrayNames[] = {"NSArray", "NSObject"};
constexpr Names MutableArrayNames[] = {"NSMutableArray", "NSArray", "NSObject"};

void encodeArray(const Value& value, KeyedArchiver& coder) {
    const auto array = value.as<Array>();
    std::vector<Value> members;
    members.reserve(array->count());
    for (std::size_t index = 0; index < array->count(); ++index) members.push_back(array->at(index));
    coder.encodeObjectsForKey(members, MembersKey);
}

Value decodeArray(KeyedUnarchiver& coder) {
    return Array::make(membersOf(coder, ArrayNames[0]));
}

// Sets

constexpr Names SetNames[] = {"NSSet", "NSObject"};
constexpr Names MutableSetNames[] = {"NSMutableSet", "NSSet", "NSObject"};
constexpr Names OrderedSetNames[] = {"NSOrderedSet", "NSObject"};
constexpr Names MutableOrderedSetNames[] = {"NSMutableOrderedSet", "NSOrderedSet", "NSObject"};

void encodeSet(const Value& value, KeyedArchiver& coder) {
    coder.encodeObjectsForKey(value.as<Set>()->members(), MembersKey);
}

Value decodeSet(KeyedUnarchiver& coder) {
    auto members = membersOf(coder, SetNames[0]);
    coder.requireComparable(members);
    const std::size_t count = members.size();
    auto set = Set::make(std::move(members));
    requireOf(SetNames[0], set->count() == count);
    return set;
}

std::string memberKey(std::size_t index) {
    return "NS.object." + std::to_string(index);
}

void encodeOrderedSet(const Value& value, KeyedArchiver& coder) {
    const auto set = value.as<OrderedSet>();
    for (std::size_t index = 0; index < set->count(); ++index)
        coder.encodeObjectForKey(set->at(index), memberKey(index));
}

Value decodeOrderedSet(KeyedUnarchiver& coder) {
    std::vector<Value> members;
    for (std::string key = memberKey(0); coder.containsValueForKey(key); key = memberKey(members.size()))
        members.push_back(coder.decodeObjectForKey(key));
    coder.requireComparable(members);
    const std::size_t count = members.size();
    auto set = OrderedSet::make(std::move(members));
    requireOf(OrderedSetNames[0], set->count() == count);
    return set;
}

// Dictionaries

constexpr std::string_view KeysKey = "NS.keys";
constexpr Names DictionaryNames[] = {"NSDictionary", "NSObject"};
constexpr Names MutableDictionaryNames[] = {"NSMutableDictionary", "NSDictionary", "NSObject"};

void encodeDictionary(const Value& value, KeyedArchiver& coder) {
    const auto dictionary = value.as<Dictionary>();
    std::vector<Value> keys;
    std::vector<Value> values;
    keys.reserve(dictionary->count());
    values.reserve(dictionary->count());
    for (const auto& [key, member] : dictionary->entries()) {
        keys.emplace_back(String::make(key));
        values.push_back(member);
    }
    coder.encodeObjectsForKey(keys, KeysKey);
    coder.encodeObjectsForKey(values, MembersKey);
}

Value decodeDictionary(KeyedUnarchiver& coder) {
    const auto keys = membersOf(coder, DictionaryNames[0], KeysKey);
    auto values = membersOf(coder, DictionaryNames[0]);
    requireOf(DictionaryNames[0], keys.size() == values.size());
    std::vector<Dictionary::Entry> entries;
    entries.reserve(values.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
        const auto key = keys[index].string();
        requireOf(DictionaryNames[0], key != nullptr);
        // Any number of dictionaries may share one long key.
        coder.requireWork(key->size());
        entries.emplace_back(key->string(), std::move(values[index]));
    }
    auto dictionary = Dictionary::make(std::move(entries));
    requireOf(DictionaryNames[0], dictionary->count() == keys.size());
    return dictionary;
}

// Plain values

constexpr std::string_view TimeKey = "NS.time";
constexpr Names DateNames[] = {"NSDate", "NSObject"};

void encodeDate(const Value& value, KeyedArchiver& coder) {
    const auto date = value.date();
    if (!date || std::isnan(date->secondsSinceReferenceDate))
        throw InvalidArchiveOperationException("a date is no instant");
    coder.encodePlainForKey(date->secondsSinceReferenceDate, TimeKey);
}

Value decodeDate(KeyedUnarchiver& coder) {
    const auto seconds = coder.decodePlainForKey(TimeKey).number();
    // A date that is no instant is unequal to itself, and a set could hold it any number of times.
    if (!seconds || std::isnan(seconds->doubleValue())) refuse(DateNames[0]);
    return Date{seconds->doubleValue()};
}

constexpr Names NullNames[] = {"NSNull", "NSObject"};

void encodeNull(const Value&, KeyedArchiver&) {}

Value decodeNull(KeyedUnarchiver&) {
    return NullObject{};
}

// Texts and data stand for themselves unless they can be changed.

constexpr Names StringNames[] = {"NSString", "NSObject"};
constexpr Names MutableStringNames[] = {"NSMutableString", "NSString", "NSObject"};

Value decodeString(KeyedUnarchiver& coder) {
    auto text = coder.decodeObjectForKey("NS.string").string();
    requireOf(StringNames[0], text != nullptr);
    return text;
}

constexpr Names DataNames[] = {"NSData", "NSObject"};
constexpr Names MutableDataNames[] = {"NSMutableData", "NSData", "NSObject"};

Value decodeData(KeyedUnarchiver& coder) {
    auto data = coder.decodePlainForKey("NS.data").as<Data>();
    requireOf(DataNames[0], data != nullptr);
    return data;
}

} // namespace

std::span<const ArchivedClass> archivedValueClasses() noexcept {
    static constexpr ArchivedClass Classes[] = {
        {"Array", ArrayNames, encodeArray, decodeArray},
        {"", MutableArrayNames, nullptr, decodeArray},
        {"Set", SetNames, encodeSet, decodeSet},
        {"", MutableSetNames, nullptr, decodeSet},
        {"OrderedSet", OrderedSetNames, encodeOrderedSet, decodeOrderedSet},
        {"", MutableOrderedSetNames, nullptr, decodeOrderedSet},
        {"Dictionary", DictionaryNames, encodeDictionary, decodeDictionary},
        {"", MutableDictionaryNames, nullptr, decodeDictionary},
        {"Decimal", DecimalNames, encodeDecimal, decodeDecimal},
        {"Date", DateNames, encodeDate, decodeDate},
        {"NullObject", NullNames, encodeNull, decodeNull},
        {"", StringNames, nullptr, decodeString},
        {"", MutableStringNames, nullptr, decodeString},
        {"", DataNames, nullptr, decodeData},
        {"", MutableDataNames, nullptr, decodeData},
        {"AttributedString", AttributedStringNames, encodeAttributedString, decodeAttributedString},
        {"", MutableAttributedStringNames, nullptr, decodeAttributedString},
    };
    return Classes;
}

bool isPropertyList(const Value& value) noexcept {
    if (const auto number = value.number()) return number->kind() != Number::Kind::Decimal;
    return value.string() || value.as<Data>();
}

std::size_t bytesIn(const Value& value) noexcept {
    if (const auto text = value.string()) return text->size();
    if (const auto data = value.as<Data>()) return data->bytes().size();
    return 0;
}

std::string_view runtimeNameOf(const Value& value) noexcept {
    if (const auto object = value.object()) return object->runtimeClassName();
    if (value.date()) return "Date";
    return value.isNullObject() ? "NullObject" : "Decimal";
}

} // namespace estatebook::platform::detail
