// SPDX-License-Identifier: MIT
#include "estatebook/document/BookValues.hpp"

#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/JsonText.hpp"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include <fmt/format.h>

namespace estatebook::document {

namespace {

using platform::Decimal;

/// "-12.50": digits as in JSON, but without an exponent.
bool isPlainNumber(std::string_view text) noexcept {
    const auto takeDigits = [&] {
        const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
        text.remove_prefix(count);
        return count;
    };
    if (text.starts_with('-')) text.remove_prefix(1);
    const bool leadingZero = text.starts_with('0');
    const std::size_t whole = takeDigits();
    if (whole == 0 || (leadingZero && whole > 1)) return false;
    if (text.empty()) return true;
    if (text.front() != '.') return false;
    text.remove_prefix(1);
    return takeDigits() > 0 && text.empty();
}

/// REQUIRES: a number, or a text in plain notation.
Verdict takeNumber(const Scalar& value, Decimal& result) {
    const std::optional<Decimal> exact = Decimal::parseExact(value.text);
    if (!exact)
        return Refusal{fmt::format("{} does not fit", value.shown()),
                       "use at most 38 digits and 127 zeros after them, or 128 digits behind the point"};
    result = *exact;
    return {};
}

bool isWhole(const Decimal& number) noexcept {
    return number.exponent() >= 0;
}

Verdict takeCount(const Scalar& value, const Wanted& wanted, std::uint64_t& result) {
    const auto refusal = [&](std::string_view why) {
        return Refusal{fmt::format("{} {}", value.shown(), why), std::string(wanted.how)};
    };
    Decimal number;
    if (Verdict misfit = takeNumber(value, number)) return misfit;
    if (number.isNegative()) return refusal("is below zero");
    if (!isWhole(number)) return refusal("has a fraction");
    if (number > Decimal(std::numeric_limits<std::uint64_t>::max())) return refusal("does not fit");
    result = number.unsignedIntegerValue();
    return {};
}

template <class Number>
Verdict takeNamed(const Scalar& value, std::optional<Number>& field) {
    if (value.type == Scalar::Type::Text) field = numberNamed<Number>(value.text);
    if (field) return {};
    if (value.type != Scalar::Type::Number) return notWanted(wantedFor(field), value.shown());
    std::uint64_t number = 0;
    if (Verdict refusal = takeCount(value, wantedFor(field), number)) return refusal;
    field = Number{number};
    return {};
}

} // namespace

std::string Scalar::shown() const {
    switch (type) {
    case Type::Null:
        return "null";
    case Type::Boolean:
        return boolean ? "true" : "false";
    case Type::Number:
        return fmt::format("the number {}", forMessage(text));
    case Type::Text:
        break;
    }
    return fmt::format("the text \"{}\"", forMessage(text));
}

Refusal notWanted(const Wanted& wanted, std::string_view found) {
    return {fmt::format("{} is wanted here, not {}", wanted.what, found), std::string(wanted.how)};
}

Verdict take(const Scalar& value, std::optional<std::string>& field) {
    if (value.type != Scalar::Type::Text) return notWanted(wantedFor(field), value.shown());
    field = value.text;
    return {};
}

Verdict take(const Scalar& value, std::optional<RichText>& field) {
    if (value.type != Scalar::Type::Text) return notWanted(wantedFor(field), value.shown());
    field.emplace(std::string(value.text));
    return {};
}

Verdict take(const Scalar& value, std::optional<bool>& field) {
    if (value.type != Scalar::Type::Boolean) return notWanted(wantedFor(field), value.shown());
    field = value.boolean;
    return {};
}

Verdict take(const Scalar& value, std::optional<Decimal>& field) {
    if (value.type == Scalar::Type::Boolean) return notWanted(wantedFor(field), value.shown());
    if (value.type == Scalar::Type::Text && !isPlainNumber(value.text))
        return Refusal{fmt::format("{} is not a number in plain notation", value.shown()),
                       "write digits, and a point before the fraction"};
    return takeNumber(value, field.emplace());
}

Verdict take(const Scalar& value, std::optional<std::uint64_t>& field) {
    if (value.type != Scalar::Type::Number) return notWanted(wantedFor(field), value.shown());
    return takeCount(value, wantedFor(field), field.emplace());
}

Verdict take(const Scalar& value, std::optional<BillingCycle>& field) {
    return takeNamed(value, field);
}

Verdict take(const Scalar& value, std::optional<ChargeBehaviour>& field) {
    return takeNamed(value, field);
}

Verdict takeSetting(const Scalar& value, SettingValue& field) {
    switch (value.type) {
    case Scalar::Type::Null:
        field = std::monostate();
        return {};
    case Scalar::Type::Boolean:
        field = value.boolean;
        return {};
    case Scalar::Type::Text:
        field = std::string(value.text);
        return {};
    case Scalar::Type::Number:
        break;
    }
    Decimal number;
    if (Verdict refusal = takeNumber(value, number)) return refusal;
    const bool isInteger = isWhole(number) && number <= Decimal(std::numeric_limits<std::int64_t>::max()) &&
                           number >= Decimal(std::numeric_limits<std::int64_t>::min());
    field = isInteger ? SettingValue(number.integerValue()) : SettingValue(number);
    return {};
}

void dropRepeated(std::vector<std::string>& list) {
    std::vector<std::size_t> order(list.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return list[a] < list[b]; });
    std::vector<bool> repeated(list.size());
    for (std::size_t i = 1; i < order.size(); ++i) repeated[order[i]] = list[order[i]] == list[order[i - 1]];
    std::size_t kept = 0;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (repeated[i]) continue;
        if (kept != i) list[kept] = std::move(list[i]);
        ++kept;
    }
    list.resize(kept);
}

} // namespace estatebook::document
