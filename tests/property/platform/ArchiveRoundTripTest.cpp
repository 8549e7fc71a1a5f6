// SPDX-License-Identifier: MIT
// Random graphs of values are archived and read back; and archives that were cut or changed end in a value or an error.
// ESTATEBOOK_SEED=n runs one more script with that seed.
#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"
#include "platform/values/Data.hpp"
#include "platform/values/Set.hpp"
#include "tags/TKTagNames.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

std::span<const ArchivedClass> classes() {
    return {&TKTagNames::archivedClass(), 1};
}

/// The same kinds, bits, texts and order all the way down, and one object wherever there was one.
class Comparison {
public:
    bool isSame(const Value& a, const Value& b) {
        const auto object = a.object();
        const auto other = b.object();
        if (!object || !other) return a.isIdentical(b);
        const auto [known, isNew] = counterparts_.emplace(object.get(), other.get());
        if (!isNew) return known->second == other.get();
        if (object->runtimeClassName() != other->runtimeClassName()) return false;
        if (const auto array = a.as<Array>()) return areSame(membersOf(*array), membersOf(*b.as<Array>()));
        if (const auto set = a.as<DistinctValues>())
            return areSame(set->members(), b.as<DistinctValues>()->members());
        if (const auto names = a.as<TKTagNames>()) return isSame(names->items(), b.as<TKTagNames>()->items());
        if (const auto dictionary = a.as<Dictionary>()) return areSame(*dictionary, *b.as<Dictionary>());
        if (const auto string = a.as<AttributedString>()) return areSame(*string, *b.as<AttributedString>());
        return a == b;
    }

private:
    static std::vector<Value> membersOf(const Array& array) {
        std::vector<Value> members;
        for (std::size_t index = 0; index < array.count(); ++index) members.push_back(array.at(index));
        return members;
    }

    bool areSame(std::span<const Value> a, std::span<const Value> b) {
        if (a.size() != b.size()) return false;
        for (std::size_t index = 0; index < a.size(); ++index)
            if (!isSame(a[index], b[index])) return false;
        return true;
    }

    bool areSame(const Dictionary& a, const Dictionary& b) {
        if (a.count() != b.count()) return false;
        for (std::size_t index = 0; index < a.count(); ++index)
            if (a.entries()[index].first != b.entries()[index].first ||
                !isSame(a.entries()[index].second, b.entries()[index].second))
                return false;
        return true;
    }

    bool areSame(const AttributedString& a, const AttributedString& b) {
        if (!isSame(a.text(), b.text()) || a.runs().size() != b.runs().size()) return false;
        for (std::size_t index = 0; index < a.runs().size(); ++index)
            if (a.runs()[index].location != b.runs()[index].location ||
                a.runs()[index].length != b.runs()[index].length ||
                !isSame(a.runs()[index].attributes, b.runs()[index].attributes))
                return false;
        return true;
    }

    std::map<const Object*, const Object*> counterparts_;
};

class Generator {
public:
    explicit Generator(std::uint64_t seed) : random_(seed) {}

    /// A value whose parts may be objects that are elsewhere in it, too.
    Value value(int depth) {
        if (!made_.empty() && below(8) == 0) return made_[below(made_.size())];
        Value value = depth > 0 && below(3) > 0 ? collection(depth - 1) : plain();
        if (value.object()) made_.push_back(value);
        return value;
    }

    std::size_t below(std::size_t limit) { return random_() % limit; }

private:
    std::uint64_t bits() { return random_() >> below(64); }

    Value plain() {
        switch (below(10)) {
        case 0:
            return below(2) == 0;
        case 1:
            return static_cast<std::int64_t>(bits()) * (below(2) == 0 ? 1 : -1);
        case 2:
            return bits();
        case 3:
            return std::bit_cast<float>(static_cast<std::uint32_t>(random_()));
        case 4:
            return std::bit_cast<double>(random_());
        case 5:
            return decimal();
        case 6:
            return Date{static_cast<double>(bits()) / 7 - 1e9};
        case 7:
            return NullObject{};
        case 8: {
            std::vector<std::byte> bytes(below(40));
            for (std::byte& byte : bytes) byte = static_cast<std::byte>(random_());
            return Data::make(std::move(bytes));
        }
        default:
            return text();
        }
    }

    Decimal decimal() {
        const Decimal high = Decimal(bits()) * Decimal(std::uint64_t{1} << (32 * below(2)));
        const auto exponent = static_cast<short>(below(200)) - 100;
        const Decimal one =
            Decimal::withMantissaExponentIsNegative(1, static_cast<short>(exponent), below(2) == 0);
        return below(20) == 0 ? Decimal::notANumber() : (high + Decimal(bits())) * one;
    }

    Ref<String> text() {
        static constexpr std::array Pieces{"a", "Rent", " ", "\u00e9", "\u5bb6", "\U0001F3E0", "$", "\uffff"};
        std::string text;
        for (std::size_t count = below(12); count > 0; --count) text += Pieces[below(Pieces.size())];
        return String::make(text);
    }

    std::vector<Value> members(int depth) {
        std::vector<Value> members(below(6));
        for (Value& member : members) member = value(depth);
        return members;
    }

    Ref<Dictionary> dictionary(int depth) {
        std::vector<Dictionary::Entry> entries;
        for (const Value& member : members(depth)) entries.emplace_back(text()->string(), member);
        return Dictionary::make(std::move(entries));
    }

    Ref<AttributedString> attributedString(int depth) {
        const Ref<String> whole = text();
        std::vector<AttributedString::Run> runs;
        std::size_t start = 0;
        const auto isBoundary = [&](std::size_t place) {
            return place == whole->size() ||
                   (static_cast<unsigned char>(whole->view()[place]) & 0xC0) != 0x80;
        };
        while (start < whole->size()) {
            std::size_t end = start + 1 + below(whole->size() - start);
            while (!isBoundary(end)) ++end;
            if (below(3) > 0) runs.push_back({start, end - start, dictionary(depth)});
            start = end;
        }
        return AttributedString::make(whole, std::move(runs));
    }

    Value collection(int depth) {
        switch (below(6)) {
        case 0:
            return Array::make(members(depth));
        case 1:
            return Set::make(members(depth));
        case 2:
            return OrderedSet::make(members(depth));
        case 3:
            return dictionary(depth);
        case 4:
            return attributedString(depth);
        default:
            return TKTagNames::initWithArray(Array::make(members(depth)));
        }
    }

    std::mt19937_64 random_;
    std::vector<Value> made_;
};

void runScript(std::uint64_t seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Value value = Generator(seed).value(5);
    Ref<Error> error;
    const auto bytes = KeyedArchiver::archivedData(value, classes(), &error);
    ASSERT_TRUE(bytes) << error->localizedDescription();
    const Value back = KeyedUnarchiver::unarchivedObject(bytes->bytes(), classes(), &error);
    ASSERT_FALSE(error) << error->localizedDescription();
    ASSERT_TRUE(Comparison().isSame(value, back)) << value.description() << back.description();
    ASSERT_TRUE(KeyedArchiver::archivedData(back, classes())->isEqual(*bytes))
        << "the same value, the same bytes";
}

TEST(ArchiveRoundTripTest, WhatIsReadIsWhatWasWritten) {
    std::cout << "seeds 1 to 3000\n";
    for (std::uint64_t seed = 1; seed <= 3000 && !HasFatalFailure(); ++seed) runScript(seed);
    if (const char* seed = std::getenv("ESTATEBOOK_SEED")) runScript(std::strtoull(seed, nullptr, 10));
}

/// Tag names stop the program when they are not what they should be; this stands in for them.
constexpr std::string_view Names[] = {"EstateBook_Model.TKTagNames", "NSObject"};
const ArchivedClass AnyNames{
    "", Names, nullptr, [](KeyedUnarchiver& coder) -> Value { return Array::make({coder.decodeObject()}); }};

void endsWell(std::span<const std::byte> bytes) {
    Ref<Error> error;
    const Value value = KeyedUnarchiver::unarchivedObject(bytes, {&AnyNames, 1}, &error);
    if (error)
        ASSERT_TRUE(value.isAbsent());
    else
        ASSERT_TRUE(KeyedArchiver::archivedData(value)) << value.description();
}

/// One archive for each kind of value, and some of many kinds.
std::vector<std::vector<std::byte>> samples() {
    const auto bold = Dictionary::make({{"bold", true}});
    std::vector<Value> values = {
        TKTagNames::initWithEditableString("Rent, Repairs, Caf\u00e9"),
        Array::make({true, -1, 7u, 0.5f, 0.5, Decimal::parse("-12.50"), Date{1}, NullObject{}, Data::make({}),
                     Value()}),
        Set::make({String::make("a"), Array::make({1})}),
        Dictionary::make({{"what", String::make("Rent")}, {"when", Date{7}}}),
        AttributedString::make(String::make("caf\u00e9 \U0001F3E0!"), {{0, 1, bold}, {3, 2, bold}}),
    };
    for (std::uint64_t seed = 1; seed <= 4; ++seed) values.push_back(Generator(seed).value(3));
    std::vector<std::vector<std::byte>> samples;
    for (const Value& value : values) {
        const auto bytes = KeyedArchiver::archivedData(value, classes());
        samples.emplace_back(bytes->bytes().begin(), bytes->bytes().end());
    }
    return samples;
}

TEST(ArchiveRoundTripTest, EveryTruncationEndsWell) {
    for (const auto& sample : samples())
        for (std::size_t size = 0; size < sample.size(); ++size) {
            Ref<Error> error;
            ASSERT_TRUE(
                KeyedUnarchiver::unarchivedObject(std::span(sample).first(size), {&AnyNames, 1}, &error)
                    .isAbsent());
            ASSERT_TRUE(error) << size;
        }
}

TEST(ArchiveRoundTripTest, EveryChangedByteEndsWell) {
    for (auto sample : samples())
        for (std::byte& byte : sample) {
            const std::byte before = byte;
            for (const int change : {1, 2, 4, 8, 16, 32, 64, 128, 255}) {
                byte = before ^ static_cast<std::byte>(change);
                ASSERT_NO_FATAL_FAILURE(endsWell(sample));
            }
            byte = before;
        }
}

TEST(ArchiveRoundTripTest, ManyChangedBytesEndWell) {
    Generator random(1);
    const auto all = samples();
    for (int round = 0; round < 100000; ++round) {
        auto sample = all[random.below(all.size())];
        for (std::size_t changes = 2 + random.below(6); changes > 0; --changes)
            sample[random.below(sample.size())] = static_cast<std::byte>(random.below(256));
        ASSERT_NO_FATAL_FAILURE(endsWell(sample));
    }
}

} // namespace
} // namespace estatebook::platform
