// SPDX-License-Identifier: MIT
#pragma once

/// Number: a number that keeps its kind, as attributes and settings store it: a boolean, a whole number with
/// or without a sign, a binary number, or a decimal.
///
/// Numbers are compared by value, whatever their kinds: 1, true, 1.0 and the decimal 1 are one number and
/// have one hash. The trap is what the value of a binary number is: it counts as the decimal of its shortest
/// text, so that 0.1 is 0.1 as a double, as a single and as a decimal, and not one of the long fractions
/// these really hold.
///
///     const Number cycle = 30;
///     cycle.kind();                            // Number::Kind::Signed
///     cycle == Decimal(30);                    // true
///     Number(3.133).decimalValue();            // 3.133
///     Number(-1.5).unsignedIntegerValue();     // 18446744073709551615
///
/// A plain value; every operation takes constant time, and none but `description` allocates or can fail.

#include "platform/values/Decimal.hpp"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <variant>

namespace estatebook::platform {

class ESTATEBOOK_API Number {
public:
    enum class Kind : std::uint8_t { Boolean, Signed, Unsigned, Single, Double, Decimal };

    /// The signed 0.
    constexpr Number() noexcept : value_(std::int64_t{0}) {}
    template <std::same_as<bool> Boolean>
    constexpr Number(Boolean value) noexcept : value_(value) {}
    template <std::signed_integral Integer>
        requires(sizeof(Integer) <= sizeof(std::int64_t))
    constexpr Number(Integer value) noexcept : value_(static_cast<std::int64_t>(value)) {}
    template <std::unsigned_integral Integer>
        requires(!std::same_as<Integer, bool> && sizeof(Integer) <= sizeof(std::uint64_t))
    constexpr Number(Integer value) noexcept : value_(static_cast<std::uint64_t>(value)) {}
    /// A named count, such as a billing cycle.
    template <class Enumeration>
        requires(std::is_enum_v<Enumeration> && std::unsigned_integral<std::underlying_type_t<Enumeration>>)
    constexpr Number(Enumeration value) noexcept : value_(static_cast<std::uint64_t>(value)) {}
    constexpr Number(float value) noexcept : value_(value) {}
    constexpr Number(double value) noexcept : value_(value) {}
    constexpr Number(const Decimal& value) noexcept : value_(value) {}

    [[nodiscard]] constexpr Kind kind() const noexcept { return static_cast<Kind>(value_.index()); }

    /// The whole part as an unsigned number, the fraction cut off; a negative one wraps (−1 is 2^64 − 1), and
    /// so do decimals out of range, as Decimal tells. A binary number of 2^64 or more gives 2^64 − 1, one
    /// below −2^63 gives 2^63 (the wrapped −2^63), and one that is not a number 0.
    [[nodiscard]] std::uint64_t unsignedIntegerValue() const noexcept;
    /// The same as a signed number: an unsigned one from 2^63 on wraps. A binary number out of range gives
    /// the nearest number in range, and one that is not a number 0.
    [[nodiscard]] std::int64_t integerValue() const noexcept;
    /// True unless zero; so not-a-number is true.
    [[nodiscard]] bool boolValue() const noexcept;
    /// The nearest binary number, halves to even; infinite when out of range.
    [[nodiscard]] float floatValue() const noexcept;
    [[nodiscard]] double doubleValue() const noexcept;
    /// Whole numbers and booleans exactly, binary numbers as the decimal of their shortest text. Not-a-number
    /// for an infinite one and for one out of a decimal's range.
    [[nodiscard]] Decimal decimalValue() const noexcept;

    /// compare:
    /// By value across kinds. What is not a number equals its like and is below everything else; infinite
    /// numbers are beyond all others, and binary numbers out of a decimal's range still have their place.
    [[nodiscard]] std::strong_ordering compare(const Number& other) const noexcept;
    [[nodiscard]] friend bool operator==(const Number& a, const Number& b) noexcept {
        return a.compare(b) == 0;
    }
    [[nodiscard]] friend std::strong_ordering operator<=>(const Number& a, const Number& b) noexcept {
        return a.compare(b);
    }
    /// Agrees with equality, and with the hash of a decimal of the same value.
    [[nodiscard]] std::size_t hash() const noexcept;

    /// Digits in plain notation; "1" and "0" for booleans; the shortest text of a binary number, which may
    /// have an exponent; "inf", "-inf", "nan"; "NaN" for a decimal.
    [[nodiscard]] std::string description() const;

    friend ESTATEBOOK_API std::ostream& operator<<(std::ostream& stream, const Number& number);

private:
    std::variant<bool, std::int64_t, std::uint64_t, float, double, Decimal> value_;
};

static_assert(sizeof(Number) <= 32);
static_assert(std::is_trivially_copyable_v<Number>);

} // namespace estatebook::platform

template <>
struct std::hash<estatebook::platform::Number> {
    std::size_t operator()(const estatebook::platform::Number& number) const noexcept {
        return number.hash();
    }
};
