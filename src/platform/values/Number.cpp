// SPDX-License-Identifier: MIT
#include "platform/values/Number.hpp"

#include "platform/values/DecimalParts.hpp"

#include <charconv>
#include <cmath>
#include <limits>
#include <ostream>

namespace estatebook::platform {

using detail::DecimalParts;

namespace {

constexpr double TwoTo63 = 9223372036854775808.0;
constexpr double TwoTo64 = 18446744073709551616.0;

/// The place of a number among all numbers: first its rank, then, of numbers proper, its digits.
struct Place {
    enum class Rank : std::uint8_t { NotANumber, BelowAll, Proper, AboveAll };
    Rank rank = Rank::Proper;
    DecimalParts parts;
};

template <std::floating_point Float>
Place placeOf(Float value) {
    if (std::isnan(value)) return {Place::Rank::NotANumber, {}};
    if (std::isinf(value)) return {value < 0 ? Place::Rank::BelowAll : Place::Rank::AboveAll, {}};
    return {Place::Rank::Proper, detail::shortestParts(value)};
}
Place placeOf(const Decimal& value) {
    if (value.isNaN()) return {Place::Rank::NotANumber, {}};
    return {Place::Rank::Proper, DecimalParts::of(value)};
}
template <std::integral Integer>
Place placeOf(Integer value) {
    const auto bits = static_cast<std::uint64_t>(value);
    const bool negative = std::signed_integral<Integer> && value < Integer{0};
    const std::uint64_t magnitude = negative ? -bits : bits;
    return {Place::Rank::Proper, {magnitude, 0, negative}};
}

template <class Value>
constexpr bool IsBinary = std::floating_point<Value>;
template <class Value>
constexpr bool IsDecimal = std::same_as<Value, Decimal>;

std::int64_t integerFrom(double value) {
    if (std::isnan(value)) return 0;
    if (value >= TwoTo63) return std::numeric_limits<std::int64_t>::max();
    if (value < -TwoTo63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

std::uint64_t unsignedIntegerFrom(double value) {
    if (value >= TwoTo64) return std::numeric_limits<std::uint64_t>::max();
    if (value > 0) return static_cast<std::uint64_t>(value);
    return static_cast<std::uint64_t>(integerFrom(value));
}

} // namespace

std::uint64_t Number::unsignedIntegerValue() const noexcept {
    return std::visit(
        []<class Value>(const Value& value) -> std::uint64_t {
            if constexpr (IsDecimal<Value>)
                return value.unsignedIntegerValue();
            else if constexpr (IsBinary<Value>)
                return unsignedIntegerFrom(value);
            else
                return static_cast<std::uint64_t>(value);
        },
        value_);
}

std::int64_t Number::integerValue() const noexcept {
    return std::visit(
        []<class Value>(const Value& value) -> std::int64_t {
            if constexpr (IsDecimal<Value>)
                return value.integerValue();
            else if constexpr (IsBinary<Value>)
                return integerFrom(value);
            else
                return static_cast<std::int64_t>(value);
        },
        value_);
}

bool Number::boolValue() const noexcept {
    return std::visit(
        []<class Value>(const Value& value) {
            if constexpr (IsDecimal<Value>)
                return value.boolValue();
            else
                return value != Value{0};
        },
        value_);
}

float Number::floatValue() const noexcept {
    return std::visit(
        []<class Value>(const Value& value) {
            if constexpr (IsDecimal<Value>)
                return value.floatValue();
            else
                return static_cast<float>(value);
        },
        value_);
}

double Number::doubleValue() const noexcept {
    return std::visit(
        []<class Value>(const Value& value) {
            if constexpr (IsDecimal<Value>)
                return value.doubleValue();
            else
                return static_cast<double>(value);
        },
        value_);
}

Decimal Number::decimalValue() const noexcept {
    return std::visit(
        []<class Value>(const Value& value) -> Decimal {
            if constexpr (IsBinary<Value>)
                return Decimal::fromShortest(value);
            else if constexpr (std::same_as<Value, bool>)
                return value ? 1 : 0;
            else
                return value;
        },
        value_);
}

std::strong_ordering Number::compare(const Number& other) const noexcept {
    const auto place = [](const auto& value) { return placeOf(value); };
    const Place a = std::visit(place, value_);
    const Place b = std::visit(place, other.value_);
    if (a.rank != b.rank || a.rank != Place::Rank::Proper) return a.rank <=> b.rank;
    return detail::compare(a.parts, b.parts);
}

std::size_t Number::hash() const noexcept {
    Place place = std::visit([](const auto& value) { return placeOf(value); }, value_);
    if (place.rank == Place::Rank::NotANumber) return Decimal::notANumber().hash();
    if (place.rank != Place::Rank::Proper) return std::hash<bool>{}(place.rank == Place::Rank::AboveAll);
    // Out of a decimal's range, too, equal numbers come out compact and equal.
    if (place.parts.mantissa != 0) (void)place.parts.settle();
    return place.parts.hash();
}

std::string Number::description() const {
    return std::visit(
        []<class Value>(const Value& value) -> std::string {
            if constexpr (IsDecimal<Value>) {
                return value.toString();
            } else if constexpr (std::same_as<Value, bool>) {
                return value ? "1" : "0";
            } else {
                if constexpr (IsBinary<Value>)
                    if (std::isnan(value)) return "nan";
                char text[32];
                return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
            }
        },
        value_);
}

std::ostream& operator<<(std::ostream& stream, const Number& number) {
    return stream << number.description();
}

} // namespace estatebook::platform
