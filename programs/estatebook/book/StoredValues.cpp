// SPDX-License-Identifier: MIT
#include "estatebook/book/StoredValues.hpp"

#include "platform/values/AttributedString.hpp"

#include <limits>
#include <utility>

namespace estatebook {

using document::RichText;
using document::SettingValue;
using platform::AttributedString;
using platform::Decimal;
using platform::Number;
using platform::Value;

namespace {

/// As a document that is read has it: a whole number where it is one that fits.
SettingValue settingOf(const Decimal& number) {
    const bool fits = number >= Decimal(std::numeric_limits<std::int64_t>::min()) &&
                      number <= Decimal(std::numeric_limits<std::int64_t>::max());
    if (!number.isNaN() && fits && Decimal(number.integerValue()) == number) return number.integerValue();
    return number;
}

std::optional<std::vector<document::Setting>> attributesOf(const platform::Dictionary& dictionary) {
    std::vector<document::Setting> attributes;
    for (const auto& [name, value] : dictionary.entries()) {
        auto attribute = documentSetting(value);
        if (!attribute || value.isNullObject()) return std::nullopt;
        attributes.push_back({name, *std::move(attribute)});
    }
    return attributes;
}

} // namespace

std::optional<std::uint64_t> documentCount(const Value& value) {
    const auto number = value.number();
    if (!number) return std::nullopt;
    const std::uint64_t count = number->unsignedIntegerValue();
    return Number(count) == *number ? std::optional(count) : std::nullopt;
}

std::optional<bool> documentFlag(const Value& value) {
    const auto number = value.number();
    for (const bool flag : {false, true})
        if (number && *number == Number(flag)) return flag;
    return std::nullopt;
}

std::optional<SettingValue> documentSetting(const Value& value) {
    if (value.isNullObject()) return SettingValue();
    if (const auto text = value.string()) return text->string();
    const auto number = value.number();
    if (!number) return std::nullopt;
    switch (number->kind()) {
    case Number::Kind::Boolean:
        return number->boolValue();
    case Number::Kind::Signed:
        return number->integerValue();
    case Number::Kind::Unsigned:
    case Number::Kind::Decimal:
        return settingOf(number->decimalValue());
    case Number::Kind::Single:
    case Number::Kind::Double:
        break; // a document's numbers are decimals
    }
    return std::nullopt;
}

std::optional<RichText> documentText(const Value& value) {
    if (const auto plain = value.string()) return RichText(plain->string());
    const auto rich = value.as<AttributedString>();
    if (!rich) return std::nullopt;
    const std::string_view whole = rich->text()->view();
    RichText text;
    std::size_t end = 0;
    for (const AttributedString::Run& run : rich->runs()) {
        auto attributes = attributesOf(*run.attributes);
        if (!attributes) return std::nullopt;
        text.pieces.push_back({std::string(whole.substr(end, run.location - end)), {}});
        text.pieces.push_back({std::string(whole.substr(run.location, run.length)), *std::move(attributes)});
        end = run.location + run.length;
    }
    text.pieces.push_back({std::string(whole.substr(end)), {}});
    text.settle();
    return text;
}

std::string kindOfValue(const Value& value) {
    if (value.date()) return "a date";
    if (value.string()) return "a text";
    if (const auto number = value.number())
        return number->kind() == Number::Kind::Single || number->kind() == Number::Kind::Double
                   ? "a binary number"
                   : "a number";
    if (value.isNullObject()) return "the null object";
    const auto object = value.object();
    return object ? "an object of the class " + std::string(object->runtimeClassName()) : "nothing";
}

} // namespace estatebook
