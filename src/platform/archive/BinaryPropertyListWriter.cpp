// SPDX-License-Identifier: MIT
#include "platform/archive/ArchiveError.hpp"
#include "platform/archive/BinaryPropertyList.hpp"
#include "platform/archive/BinaryPropertyListMarker.hpp"
#include "platform/archive/PropertyListUid.hpp"
#include "platform/text/Text.hpp"
#include "platform/values/Array.hpp"

#include <algorithm>
#include <bit>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace estatebook::platform {

namespace {

using detail::Marker;

struct Refusal {
    std::string reason;
};

/// The least number of bytes that hold the number: 1, 2, 4 or 8.
std::size_t widthOf(std::uint64_t number) {
    const auto bytes = static_cast<std::size_t>(std::bit_width(number | 1) + 7) / 8;
    return std::bit_ceil(bytes);
}

class Writer {
public:
    std::vector<std::byte> write(const Value& list) {
        collect(list, 0);
        referenceSize_ = widthOf(members_.size());
        for (const char character : detail::BinaryPropertyListHeader)
            append(static_cast<std::uint8_t>(character), 1);
        std::vector<std::size_t> offsets;
        offsets.reserve(members_.size());
        for (const Member& member : members_) {
            offsets.push_back(bytes_.size());
            append(member);
        }
        appendTable(offsets);
        return std::move(bytes_);
    }

private:
    struct Member {
        Value value;
        std::vector<std::size_t> references; // of a dictionary first those of its keys
    };

    /// Gives the member's number. A member stands before what it contains, and once however often it is contained.
    std::size_t collect(const Value& value, std::size_t depth) {
        if (depth > DeepestArchive) throw Refusal{"it is nested too deeply"};
        const std::size_t number = members_.size();
        if (const auto object = value.object()) {
            const auto [known, isNew] = numbers_.try_emplace(object.get(), number);
            if (!isNew) return known->second;
        }
        members_.push_back({value, {}});
        std::vector<std::size_t> references;
        if (const auto array = value.as<Array>()) {
            references.reserve(array->count());
            for (std::size_t index = 0; index < array->count(); ++index)
                references.push_back(collect(array->at(index), depth + 1));
        } else if (const auto dictionary = value.as<Dictionary>()) {
            references.reserve(2 * dictionary->count());
            for (const auto& entry : dictionary->entries()) references.push_back(collectKey(entry.first));
            for (const auto& entry : dictionary->entries())
                references.push_back(collect(entry.second, depth + 1));
        }
        members_[number].references = std::move(references);
        return number;
    }

    /// The same few keys stand in very many dictionaries; each of them is written once.
    std::size_t collectKey(const std::string& key) {
        const auto [known, isNew] = keys_.try_emplace(key, members_.size());
        if (isNew) members_.push_back({String::make(key), {}});
        return known->second;
    }

    void append(const Member& member) {
        const Value& value = member.value;
        if (const auto number = value.number())
            appendNumber(*number);
        else if (const auto date = value.date())
            appendDouble(Marker::Date, date->secondsSinceReferenceDate);
        else if (const auto text = value.string())
            appendText(text->view());
        else if (const auto data = value.as<Data>())
            appendData(data->bytes());
        else if (const auto uid = value.as<PropertyListUid>())
            appendUid(uid->number());
        else if (value.as<Array>())
            appendCollection(Marker::Array, member.references.size(), member.references);
        else if (value.as<Dictionary>())
            appendCollection(Marker::Dictionary, member.references.size() / 2, member.references);
        else
            throw Refusal{"it holds what no property list can hold: " + value.description()};
    }

    void appendNumber(const Number& number) {
        switch (number.kind()) {
        case Number::Kind::Boolean:
            append(number.boolValue() ? detail::TrueMarker : detail::FalseMarker, 1);
            break;
        case Number::Kind::Signed:
            appendSigned(number.integerValue());
            break;
        case Number::Kind::Unsigned:
            appendMarker(Marker::Integer, 4);
            append(0, 8);
            append(number.unsignedIntegerValue(), 8);
            break;
        case Number::Kind::Single:
            appendMarker(Marker::Real, 2);
            append(std::bit_cast<std::uint32_t>(number.floatValue()), 4);
            break;
        case Number::Kind::Double:
            appendDouble(Marker::Real, number.doubleValue());
            break;
        case Number::Kind::Decimal:
            throw Refusal{"a decimal has no place in it"};
        }
    }

    /// What is below zero takes eight bytes: shorter integers have no sign.
    void appendSigned(std::int64_t number) {
        const auto bits = static_cast<std::uint64_t>(number);
        const std::size_t width = widthOf(bits);
        appendMarker(Marker::Integer, static_cast<std::size_t>(std::countr_zero(width)));
        append(bits, width);
    }

    void appendDouble(Marker marker, double number) {
        appendMarker(marker, 3);
        append(std::bit_cast<std::uint64_t>(number), 8);
    }

    void appendText(std::string_view text) {
        const auto units = toUtf16(text);
        if (!units) throw Refusal{"a text is not well formed"};
        if (units->size() == text.size()) { // only ASCII takes as many units as bytes
            appendCounted(Marker::AsciiText, text.size());
            for (const char character : text) append(static_cast<std::uint8_t>(character), 1);
        } else {
            appendCounted(Marker::Utf16Text, units->size());
            for (const char16_t unit : *units) append(unit, 2);
        }
    }

    void appendData(std::span<const std::byte> data) {
        appendCounted(Marker::Data, data.size());
        bytes_.insert(bytes_.end(), data.begin(), data.end());
    }

    void appendUid(std::uint64_t number) {
        const std::size_t width = widthOf(number);
        appendMarker(Marker::Uid, width - 1);
        append(number, width);
    }

    void appendCollection(Marker marker, std::size_t count, const std::vector<std::size_t>& references) {
        appendCounted(marker, count);
        for (const std::size_t reference : references) append(reference, referenceSize_);
    }

    void appendCounted(Marker marker, std::size_t count) {
        if (count < detail::CountFollows) return appendMarker(marker, count);
        appendMarker(marker, detail::CountFollows);
        appendSigned(static_cast<std::int64_t>(count));
    }

    void appendMarker(Marker marker, std::size_t size) {
        append(static_cast<std::uint64_t>(marker) << 4 | size, 1);
    }

    void append(std::uint64_t number, std::size_t size) {
        for (std::size_t byte = size; byte-- > 0;)
            bytes_.push_back(static_cast<std::byte>(number >> (8 * byte)));
    }

    void appendTable(const std::vector<std::size_t>& offsets) {
        constexpr std::size_t Unused = 6;
        const std::size_t table = bytes_.size();
        const std::size_t offsetSize = widthOf(table);
        for (const std::size_t offset : offsets) append(offset, offsetSize);
        append(0, Unused);
        append(offsetSize, 1);
        append(referenceSize_, 1);
        append(offsets.size(), 8);
        append(0, 8); // the first member is the whole list
        append(table, 8);
    }

    std::vector<Member> members_;
    std::unordered_map<const Object*, std::size_t> numbers_;
    std::unordered_map<std::string, std::size_t> keys_;
    std::size_t referenceSize_ = 0;
    std::vector<std::byte> bytes_;
};

} // namespace

Ref<Data> BinaryPropertyList::write(const Value& list, Ref<Error>* error) {
    try {
        return Data::make(Writer().write(list));
    } catch (const Refusal& refusal) {
        if (error)
            *error =
                Error::make(ArchiveErrorDomain, static_cast<std::int64_t>(ArchiveErrorCode::InvalidValue),
                            "The property list cannot be written: " + refusal.reason);
        return nullptr;
    }
}

} // namespace estatebook::platform
