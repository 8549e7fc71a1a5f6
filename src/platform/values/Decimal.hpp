// SPDX-License-Identifier: MIT
#pragma once

/// Decimal: a number to the base of ten, for money and for parts of a period.
///
/// A decimal is ± mantissa × 10^exponent, with a mantissa of at most 38 digits and an exponent from −128 to
/// 127, so that 0.1 is exactly 0.1 and a year of rent adds up to the cent. There is one not-a-number, no
/// infinity and no −0. A decimal is always compact: 12.50 is held as 125e-1 and 1000 as 1e3. Equal values are
/// therefore the same bits, and `==` and `hash` look at nothing else. (Only where the exponent would pass 127
/// do zeros stay in the mantissa: the greatest decimal is 38 nines followed by 127 zeros.)
///
/// The trap: arithmetic has one rule, the exact result rounded to 38 significant digits, half away from zero,
/// and it raises when there is no such result. A not-a-number never travels silently: it is refused as an
/// operand of arithmetic (but compares, rounds, prints and converts).
///
///     const Decimal rent = Decimal::parse("535.71");
///     const Decimal owed = -(rent * 3) + 1000;        // -607.13
///     owed.decimalNumberByDividingBy(3).toString();   // "-202.37666666666666666666666666666666667"
///     owed.compare(0) < 0;                            // true
///
/// A plain value of 24 bytes. No operation allocates memory, except the texts and exceptions it hands out.
/// All operations take constant time, parsing takes time linear in the text.

#include "EstateBook_ModelExport.hpp"

#include <array>
#include <bit>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace estatebook::platform {

/// How a number that lies between two candidates is rounded to one of them.
enum class RoundingMode : std::uint8_t {
    Plain = 0,   ///< to the nearer one, halves away from zero: 2.5 is 3, -2.5 is -3
    Down = 1,    ///< towards minus infinity: -1.25 is -2
    Up = 2,      ///< towards plus infinity: -1.25 is -1
    Bankers = 3, ///< to the nearer one, halves to the even digit: 2.5 is 2, 3.5 is 4
};

/// What an operation does with its result: how it rounds it and which conditions it raises. A condition that
/// is not raised gives a not-a-number, save an inexact result, which is simply rounded.
struct DecimalBehavior {
    /// The scale that keeps all digits.
    static constexpr short NoScale = 32767;

    RoundingMode mode = RoundingMode::Plain;
    /// The fraction digits to keep; −2 rounds to hundreds.
    short scale = NoScale;
    bool raiseOnExactness = false;
    bool raiseOnOverflow = true;
    bool raiseOnUnderflow = true;
    bool raiseOnDivideByZero = true;
};

namespace detail {
struct DecimalParts;

inline constexpr std::array<std::int64_t, 16> ShortPowersOfTen = [] {
    std::array<std::int64_t, 16> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}();
} // namespace detail

class ESTATEBOOK_API Decimal {
public:
    static constexpr int MaximumDigits = 38;
    static constexpr int MinimumExponent = -128;
    static constexpr int MaximumExponent = 127;
    /// The most characters the text of a decimal has: a sign, 38 digits and 127 zeros.
    static constexpr std::size_t MaximumTextLength = 166;

    /// The digits of a decimal as an unsigned integer, high × 2^64 + low.
    struct Mantissa {
        std::uint64_t high = 0;
        std::uint64_t low = 0;
        friend constexpr bool operator==(const Mantissa&, const Mantissa&) noexcept = default;
        friend constexpr auto operator<=>(const Mantissa&, const Mantissa&) noexcept = default;
    };

    // -- Making ---------------------------------------------------------------------------------------------

    /// Zero.
    constexpr Decimal() noexcept = default;

    /// A whole number, exactly; all 64 bits are kept.
    template <std::integral Integer>
        requires(!std::same_as<Integer, bool> && sizeof(Integer) <= sizeof(std::uint64_t))
    constexpr Decimal(Integer value) noexcept
        : Decimal(
              compacted(value < 0 ? -static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value), 0,
                        value < 0)) {}

    /// Binary fractions have no one decimal: choose between `fromDouble` and `fromShortest`.
    template <class Other>
        requires(std::floating_point<Other> || std::same_as<Other, bool>)
    Decimal(Other) = delete;

    [[nodiscard]] static constexpr Decimal zero() noexcept { return Decimal(); }
    [[nodiscard]] static constexpr Decimal one() noexcept { return Decimal(1); }
    [[nodiscard]] static constexpr Decimal notANumber() noexcept { return Decimal(0, NaNMark, 0, 1); }

    /// decimalNumberWithMantissa:exponent:isNegative:
    /// ± mantissa × 10^exponent; a mantissa of 0 is zero whatever its sign; not-a-number when out of range.
    [[nodiscard]] static Decimal withMantissaExponentIsNegative(std::uint64_t mantissa, short exponent,
                                                                bool isNegative) noexcept;

    /// decimalNumberWithString:
    /// Reads the number at the start of the text: blanks, a sign, digits, a point, digits, and "e" with a
    /// signed exponent, each of which may be missing. Reading stops at the first foreign character
    /// ("1,234.56" is 1). Digits after the 38th significant one are dropped. A text that does not begin like
    /// a number, such as "", and a number out of range are not-a-number; "-", "." and "e5" are 0.
    [[nodiscard]] static Decimal parse(std::string_view text) noexcept;

    /// Reads a document's number: the whole text must be one number as JSON writes it (plain notation is a
    /// part of that), and a decimal must hold it exactly. Nothing is ever rounded; else there is no value.
    [[nodiscard]] static std::optional<Decimal> parseExact(std::string_view text) noexcept;

    /// The decimal type's own reading of a double: scaled by tens to just under 2^64 and cut to a whole
    /// number, with the noise that brings (3.133 is 3.132999999999999488). Out of range and infinite:
    /// not-a-number.
    [[nodiscard]] static Decimal fromDouble(double value) noexcept;

    /// The decimal of the shortest text that reads back as the same binary number: 0.1 is 0.1. Out of range
    /// and infinite: not-a-number.
    [[nodiscard]] static Decimal fromShortest(double value) noexcept;
    [[nodiscard]] static Decimal fromShortest(float value) noexcept;

    // -- Asking ---------------------------------------------------------------------------------------------

    [[nodiscard]] constexpr bool isNaN() const noexcept { return high_ == NaNMark; }
    [[nodiscard]] constexpr bool isZero() const noexcept { return (low_ | high_) == 0; }
    /// Less than zero; a not-a-number is not.
    [[nodiscard]] constexpr bool isNegative() const noexcept { return negative_ != 0 && !isNaN(); }
    /// The digits without their trailing zeros; 0 for a not-a-number.
    [[nodiscard]] constexpr Mantissa mantissa() const noexcept {
        return isNaN() ? Mantissa{} : Mantissa{high_, low_};
    }
    [[nodiscard]] constexpr int exponent() const noexcept { return exponent_; }

    // -- Arithmetic -----------------------------------------------------------------------------------------
    //
    // The exact result, rounded to 38 significant digits when it has more. With a behavior its mode sheds
    // those digits, working on the magnitude (Down towards zero, Up away from it), and then rounds to its
    // scale as `decimalNumberByRoundingAccordingToBehavior` does; without one: plain, no scale, everything
    // raises.
    //
    // They raise, tested in this order:
    //   - OverflowException when an operand is not a number (so not-a-number / 0 is an overflow);
    //   - DivideByZeroException when the divisor is zero, 0 / 0 included;
    //   - OverflowException and UnderflowException when the rounded, compacted result has no exponent in
    //   range;
    //   - ExactnessException when digits were lost, only if the behavior asks for it.

    /// decimalNumberByAdding:
    [[nodiscard]] Decimal decimalNumberByAdding(const Decimal& other) const;
    /// decimalNumberBySubtracting:
    [[nodiscard]] Decimal decimalNumberBySubtracting(const Decimal& other) const;
    /// decimalNumberByMultiplyingBy:
    [[nodiscard]] Decimal decimalNumberByMultiplyingBy(const Decimal& other) const;
    /// decimalNumberByDividingBy:
    [[nodiscard]] Decimal decimalNumberByDividingBy(const Decimal& other) const;

    /// decimalNumberByAdding:withBehavior:
    [[nodiscard]] Decimal decimalNumberByAdding(const Decimal& other, const DecimalBehavior& behavior) const;
    /// decimalNumberBySubtracting:withBehavior:
    [[nodiscard]] Decimal decimalNumberBySubtracting(const Decimal& other,
                                                     const DecimalBehavior& behavior) const;
    /// decimalNumberByMultiplyingBy:withBehavior:
    [[nodiscard]] Decimal decimalNumberByMultiplyingBy(const Decimal& other,
                                                       const DecimalBehavior& behavior) const;
    /// decimalNumberByDividingBy:withBehavior:
    [[nodiscard]] Decimal decimalNumberByDividingBy(const Decimal& other,
                                                    const DecimalBehavior& behavior) const;

    /// decimalNumberByRoundingAccordingToBehavior:
    /// The number at the behavior's scale; whole digits left of the point for a negative one. A magnitude
    /// that rounds to 0 loses its sign. A not-a-number stays one and raises nothing.
    [[nodiscard]] Decimal decimalNumberByRoundingAccordingToBehavior(const DecimalBehavior& behavior) const;

    [[nodiscard]] friend Decimal operator+(const Decimal& a, const Decimal& b) {
        return a.decimalNumberByAdding(b);
    }
    [[nodiscard]] friend Decimal operator-(const Decimal& a, const Decimal& b) {
        return a.decimalNumberBySubtracting(b);
    }
    [[nodiscard]] friend Decimal operator*(const Decimal& a, const Decimal& b) {
        return a.decimalNumberByMultiplyingBy(b);
    }
    [[nodiscard]] friend Decimal operator/(const Decimal& a, const Decimal& b) {
        return a.decimalNumberByDividingBy(b);
    }
    /// The product with minus one: exact, and raises for a not-a-number.
    [[nodiscard]] friend Decimal operator-(const Decimal& a) {
        return a.isNaN() ? addUnlike(a, a) : a.opposite();
    }
    Decimal& operator+=(const Decimal& other) { return *this = *this + other; }
    Decimal& operator-=(const Decimal& other) { return *this = *this - other; }
    Decimal& operator*=(const Decimal& other) { return *this = *this * other; }
    Decimal& operator/=(const Decimal& other) { return *this = *this / other; }

    // -- Comparing ------------------------------------------------------------------------------------------

    /// compare:
    /// By value. A not-a-number equals itself and is below every number.
    [[nodiscard]] constexpr std::strong_ordering compare(const Decimal& other) const noexcept {
        if (exponent_ == other.exponent_ && ((negative_ | other.negative_) == 0))
            return high_ == other.high_ ? low_ <=> other.low_ : high_ <=> other.high_;
        return compareUnlike(*this, other);
    }
    [[nodiscard]] friend constexpr bool operator==(const Decimal&, const Decimal&) noexcept = default;
    [[nodiscard]] friend constexpr std::strong_ordering operator<=>(const Decimal& a,
                                                                    const Decimal& b) noexcept {
        return a.compare(b);
    }
    [[nodiscard]] std::size_t hash() const noexcept;

    // -- Converting -----------------------------------------------------------------------------------------

    /// The whole part as an unsigned number. The fraction is cut off; a negative number wraps (−1 is 2^64 −
    /// 1); of a greater one the low 64 bits are taken (2^64 is 0). 0 when the exponent is above 20 and for a
    /// not-a-number.
    [[nodiscard]] std::uint64_t unsignedIntegerValue() const noexcept;
    /// The same bits as a signed number: −1.5 is −1.
    [[nodiscard]] std::int64_t integerValue() const noexcept;
    /// True unless zero; so a not-a-number is true.
    [[nodiscard]] constexpr bool boolValue() const noexcept { return !isZero(); }
    /// The nearest binary number, halves to even; a quiet NaN for a not-a-number.
    [[nodiscard]] double doubleValue() const noexcept;
    [[nodiscard]] float floatValue() const noexcept;

    /// Plain notation, never an exponent: "-535.71", "0.5", "1000"; "NaN". `parse` and, for numbers,
    /// `parseExact` read it back.
    [[nodiscard]] std::string toString() const;
    /// Writes that text without a closing zero and without allocating; gives the end of it, or null when it
    /// does not fit (`MaximumTextLength` always does), and then nothing is written.
    [[nodiscard]] char* toChars(char* first, char* last) const noexcept;

    friend ESTATEBOOK_API std::ostream& operator<<(std::ostream& stream, const Decimal& decimal);

private:
    friend struct detail::DecimalParts;

    static constexpr std::uint64_t NaNMark = ~std::uint64_t{0}; // above any mantissa, so never on a fast path

    constexpr Decimal(std::uint64_t low, std::uint64_t high, std::int32_t exponent,
                      std::uint32_t negative) noexcept
        : low_(low), high_(high), exponent_(exponent), negative_(negative) {}

    /// A tenth of the number if it ends in zero, else something above every tenth: multiplying by the inverse
    /// of 5 takes just the multiples of 5 to [0, max / 5], the rotation tests the factor 2 along with it.
    static constexpr std::uint64_t exactTenth(std::uint64_t number) noexcept {
        return std::rotr(number * 0xCCCC'CCCC'CCCC'CCCDu, 1);
    }
    static constexpr std::uint64_t GreatestTenth = ~std::uint64_t{0} / 10;

    /// REQUIRES: exponent in range.
    static constexpr Decimal compacted(std::uint64_t mantissa, int exponent, bool negative) noexcept {
        std::uint64_t tenth = exactTenth(mantissa);
        if (tenth > GreatestTenth) return Decimal(mantissa, 0, exponent, negative);
        if (mantissa == 0) return Decimal();
        for (; tenth <= GreatestTenth && exponent < MaximumExponent; tenth = exactTenth(mantissa)) {
            mantissa = tenth;
            ++exponent;
        }
        return Decimal(mantissa, 0, exponent, negative);
    }

    /// REQUIRES: a number.
    constexpr Decimal opposite() const noexcept {
        return Decimal(low_, high_, exponent_, isZero() ? 0 : negative_ ^ 1u);
    }

    // By value: a reference would force the operands of the fast path into memory.
    static Decimal addUnlike(Decimal a, Decimal b);
    static std::strong_ordering compareUnlike(Decimal a, Decimal b) noexcept;

    std::uint64_t low_ = 0;
    std::uint64_t high_ = 0;
    std::int32_t exponent_ = 0;
    std::uint32_t negative_ = 0;
};

static_assert(sizeof(Decimal) == 24);
static_assert(std::is_trivially_copyable_v<Decimal>);
static_assert(std::has_unique_object_representations_v<Decimal>);

// Nearly every sum of money: two mantissas that stay within a signed integer when they are brought to one
// exponent. The steps carry no branch that depends on the digits, save the last: whether the sum ends in
// zero. (bench/DecimalBench.cpp)
inline Decimal Decimal::decimalNumberByAdding(const Decimal& other) const {
    const std::int32_t exponent = exponent_ < other.exponent_ ? exponent_ : other.exponent_;
    const auto shift = static_cast<std::uint32_t>(exponent_ - exponent);
    const auto otherShift = static_cast<std::uint32_t>(other.exponent_ - exponent);
    const auto opposite = -static_cast<std::int64_t>(negative_ ^ other.negative_);
    std::int64_t aligned = 0;
    std::int64_t otherAligned = 0;
    std::int64_t sum = 0; // positive where it has the sign of this number
    if ((high_ | other.high_) != 0 || static_cast<std::int64_t>(low_ | other.low_) < 0 ||
        (shift | otherShift) >= detail::ShortPowersOfTen.size() ||
        __builtin_mul_overflow(static_cast<std::int64_t>(low_), detail::ShortPowersOfTen[shift], &aligned) ||
        __builtin_mul_overflow(static_cast<std::int64_t>(other.low_), detail::ShortPowersOfTen[otherShift],
                               &otherAligned) ||
        __builtin_add_overflow(aligned, (otherAligned ^ opposite) - opposite, &sum)) [[unlikely]]
        return addUnlike(*this, other);
    const std::int64_t crossed = sum >> 63;
    return compacted(static_cast<std::uint64_t>((sum ^ crossed) - crossed), exponent,
                     (negative_ ^ (crossed & 1)) != 0);
}

inline Decimal Decimal::decimalNumberBySubtracting(const Decimal& other) const {
    return other.isNaN() ? addUnlike(*this, other) : decimalNumberByAdding(other.opposite());
}

} // namespace estatebook::platform

template <>
struct std::hash<estatebook::platform::Decimal> {
    std::size_t operator()(const estatebook::platform::Decimal& decimal) const noexcept {
        return decimal.hash();
    }
};
