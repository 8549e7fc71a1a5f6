// SPDX-License-Identifier: MIT
#include "platform/values/Decimal.hpp"

#include "platform/values/DecimalParts.hpp"
#include "platform/values/DecimalWide.hpp"
#include "platform/values/Exception.hpp"

#include <boost/multiprecision/cpp_int.hpp>

#include <algorithm>
#include <utility>

namespace estatebook::platform {

using boost::multiprecision::uint256_t;
using detail::DecimalParts;
using detail::digitCount;
using detail::MantissaLimit;
using detail::PowerDivision;
using detail::PowerDivisions;
using detail::powerOfTen;
using detail::UInt128;
using detail::Wide;

namespace {

constexpr DecimalBehavior DefaultBehavior{};

// -- Conditions ------------------------------------------------------------------------------------

template <class Raised>
[[gnu::cold]] Decimal failed(bool raises, const char* reason) {
    if (raises) throw Raised(reason);
    return Decimal::notANumber();
}
Decimal overflow(const DecimalBehavior& behavior) {
    return failed<OverflowException>(behavior.raiseOnOverflow, "Decimal number overflow exception");
}
Decimal underflow(const DecimalBehavior& behavior) {
    return failed<UnderflowException>(behavior.raiseOnUnderflow, "Decimal number underflow exception");
}
Decimal notANumberOperand(const DecimalBehavior& behavior) {
    return failed<OverflowException>(behavior.raiseOnOverflow, "Decimal number operand is not a number");
}
Decimal divisionByZero(const DecimalBehavior& behavior) {
    return failed<DivideByZeroException>(behavior.raiseOnDivideByZero,
                                         "Decimal number divide by zero exception");
}

// -- Shedding digits -------------------------------------------------------------------------------

/// What becomes of a magnitude that lies between two candidates.
enum class Shedding : std::uint8_t { HalfAway, Truncate, Away, HalfEven };

Shedding sheddingOfMagnitude(RoundingMode mode) {
    static constexpr Shedding table[] = {Shedding::HalfAway, Shedding::Truncate, Shedding::Away,
                                         Shedding::HalfEven};
    return table[static_cast<int>(mode)];
}

Shedding sheddingOfNumber(RoundingMode mode, bool negative) {
    if (mode == RoundingMode::Down) return negative ? Shedding::Away : Shedding::Truncate;
    if (mode == RoundingMode::Up) return negative ? Shedding::Truncate : Shedding::Away;
    return sheddingOfMagnitude(mode);
}

/// Whether the magnitude goes up, by how the dropped part compares with a half.
bool goesUp(Shedding shedding, std::strong_ordering withHalf, bool odd, bool anyDropped) {
    switch (shedding) {
    case Shedding::HalfAway:
        return withHalf >= 0;
    case Shedding::Truncate:
        return false;
    case Shedding::Away:
        return anyDropped;
    case Shedding::HalfEven:
        return withHalf > 0 || (withHalf == 0 && odd);
    }
    return false;
}

/// A magnitude on its way to 38 digits.
struct Shed {
    UInt128 magnitude;
    bool inexact;
};

/// Drops 1 to 38 digits; `more` tells of a remainder that was left off before. REQUIRES: 38 digits stay at most.
Shed dropDigits(const Wide& number, int count, bool more, Shedding shedding) {
    const PowerDivision& power = PowerDivisions[static_cast<std::size_t>(count)];
    const auto [kept, dropped] = power.divide(number);
    const bool inexact = more || dropped != 0;
    std::strong_ordering withHalf = dropped <=> power.divisor / 2;
    if (withHalf == 0 && more) withHalf = std::strong_ordering::greater;
    return {kept + (goesUp(shedding, withHalf, (kept & 1) != 0, inexact) ? 1 : 0), inexact};
}

// -- The end of every operation --------------------------------------------------------------------

Shed roundedToScale(const Shed& number, std::int64_t& exponent, bool negative,
                    const DecimalBehavior& behavior) {
    const std::int64_t excess = -std::int64_t{behavior.scale} - exponent;
    if (excess <= 0) return number;
    const Shedding shedding = sheddingOfNumber(behavior.mode, negative);
    exponent += excess;
    if (excess <= Decimal::MaximumDigits) {
        const Shed shed = dropDigits({0, number.magnitude}, static_cast<int>(excess), false, shedding);
        return {shed.magnitude, shed.inexact || number.inexact};
    }
    // Fewer than 39 digits are all below the half of 10^39.
    const bool any = number.magnitude != 0;
    return {any && shedding == Shedding::Away ? UInt128{1} : UInt128{0}, any || number.inexact};
}

/// Rounds to the scale, compacts, tests the range. In line, so that nothing of a behavior known beforehand is
/// left to test.
[[gnu::always_inline]] inline Decimal finish(Shed shed, std::int64_t exponent, bool negative,
                                             const DecimalBehavior& behavior) {
    if (behavior.scale != DecimalBehavior::NoScale) shed = roundedToScale(shed, exponent, negative, behavior);
    DecimalParts parts{shed.magnitude, exponent, negative};
    if (shed.magnitude == 0) {
        parts = {};
    } else if (!parts.settle()) [[unlikely]] {
        return exponent < 0 ? underflow(behavior) : overflow(behavior);
    }
    if (behavior.raiseOnExactness && shed.inexact)
        throw ExactnessException("Decimal number exactness exception");
    return parts.settled();
}

[[gnu::always_inline]] inline Decimal finish(UInt128 magnitude, std::int64_t exponent, bool negative,
                                             const DecimalBehavior& behavior) {
    Shed shed{magnitude, false};
    if (magnitude >= MantissaLimit) [[unlikely]] {
        shed = dropDigits({0, magnitude}, 1, false, sheddingOfMagnitude(behavior.mode));
        ++exponent;
    }
    return finish(shed, exponent, negative, behavior);
}

/// `more`: the exact magnitude lies above the number, by less than one.
Decimal finish(const Wide& number, bool more, std::int64_t exponent, bool negative,
               const DecimalBehavior& behavior) {
    const int excess = digitCount(number) - Decimal::MaximumDigits;
    if (excess <= 0) return finish(Shed{number.low, more}, exponent, negative, behavior);
    return finish(dropDigits(number, excess, more, sheddingOfMagnitude(behavior.mode)), exponent + excess,
                  negative, behavior);
}

// -- Sum -------------------------------------------------------------------------------------------

/// How great a mantissa may be so that it stays below 2^127 times a power of ten.
constexpr std::array<UInt128, Decimal::MaximumDigits + 1> ShiftLimits = [] {
    std::array<UInt128, Decimal::MaximumDigits + 1> limits{};
    for (std::size_t i = 0; i < limits.size(); ++i)
        limits[i] = ((UInt128{1} << 127) - 1) / powerOfTen(static_cast<int>(i));
    return limits;
}();

/// REQUIRES: a has the greater exponent and stands, aligned with b, above 2^127.
Decimal addWide(const DecimalParts& a, const DecimalParts& b, const DecimalBehavior& behavior) {
    // Of b the part that reaches up to the 76 digits of a counts, and of the rest whether there is any.
    const auto difference = static_cast<int>(a.exponent - b.exponent);
    const int shift = std::min(difference, Wide::MaximumDigits - digitCount(a.mantissa));
    const int rest = difference - shift;
    const UInt128 unit =
        powerOfTen(std::min(rest, Decimal::MaximumDigits)); // of 38 digits none reaches 10^38
    const UInt128 reaching = b.mantissa / unit;
    const bool more = reaching * unit != b.mantissa;

    const int first = std::min(shift, Decimal::MaximumDigits - digitCount(a.mantissa));
    const Wide aligned = Wide::product(a.mantissa * powerOfTen(first), powerOfTen(shift - first));
    const Wide sum = a.negative == b.negative ? aligned + reaching : aligned - (reaching + (more ? 1 : 0));
    return finish(sum, more, b.exponent + rest, a.negative, behavior);
}

Decimal add(DecimalParts a, DecimalParts b, const DecimalBehavior& behavior) {
    if (a.mantissa == 0) return finish(b.mantissa, b.exponent, b.negative, behavior);
    if (b.mantissa == 0) return finish(a.mantissa, a.exponent, a.negative, behavior);
    if (a.exponent < b.exponent) std::swap(a, b);
    const std::int64_t shift = a.exponent - b.exponent;
    if (shift > Decimal::MaximumDigits || a.mantissa > ShiftLimits[static_cast<std::size_t>(shift)])
        return addWide(a, b, behavior);

    const UInt128 aligned = a.mantissa * powerOfTen(shift);
    if (a.negative == b.negative) return finish(aligned + b.mantissa, b.exponent, a.negative, behavior);
    if (aligned >= b.mantissa) return finish(aligned - b.mantissa, b.exponent, a.negative, behavior);
    return finish(b.mantissa - aligned, b.exponent, b.negative, behavior);
}

// -- Product and quotient --------------------------------------------------------------------------

Decimal multiply(const DecimalParts& a, const DecimalParts& b, const DecimalBehavior& behavior) {
    const std::int64_t exponent = a.exponent + b.exponent;
    const bool negative = a.negative != b.negative;
    if (((a.mantissa | b.mantissa) >> 64) == 0)
        return finish(a.mantissa * b.mantissa, exponent, negative, behavior);
    return finish(Wide::product(a.mantissa, b.mantissa), false, exponent, negative, behavior);
}

/// Long division, 19 digits at a time, until 38 digits stand or nothing remains. REQUIRES: a divisor above 0.
[[gnu::always_inline]] inline Decimal divide(const DecimalParts& a, std::uint64_t divisor, bool negative,
                                             std::int64_t exponent, const DecimalBehavior& behavior) {
    constexpr int chunk = 19;
    const int dividendDigits = std::min(chunk + digitCount(divisor), Decimal::MaximumDigits);
    const int shift = std::max(0, dividendDigits - digitCount(a.mantissa));
    const UInt128 first = a.mantissa * powerOfTen(shift);
    UInt128 quotient = first / divisor;
    auto remainder = static_cast<std::uint64_t>(first) - static_cast<std::uint64_t>(quotient) * divisor;
    exponent -= shift;
    while (remainder != 0) {
        const int digits = std::min(chunk, Decimal::MaximumDigits - digitCount(quotient));
        if (digits == 0) break;
        const UInt128 numerator = remainder * powerOfTen(digits);
        const auto next = static_cast<std::uint64_t>(numerator / divisor);
        quotient = quotient * powerOfTen(digits) + next;
        remainder = static_cast<std::uint64_t>(numerator) - next * divisor;
        exponent -= digits;
    }
    const std::strong_ordering withHalf = UInt128{remainder} * 2 <=> UInt128{divisor};
    const bool up = goesUp(sheddingOfMagnitude(behavior.mode), withHalf, (quotient & 1) != 0, remainder != 0);
    return finish(Shed{quotient + up, remainder != 0}, exponent, negative, behavior);
}

/// REQUIRES: b is not 0.
Decimal divide(const DecimalParts& a, const DecimalParts& b, const DecimalBehavior& behavior) {
    const bool negative = a.negative != b.negative;
    const std::int64_t exponent = a.exponent - b.exponent;
    if ((b.mantissa >> 64) == 0)
        return divide(a, static_cast<std::uint64_t>(b.mantissa), negative, exponent, behavior);
    if (a.mantissa == 0) return finish(Shed{0, false}, 0, false, behavior);
    // One digit more than is kept, so that the rounding sees it and, in the remainder, what follows.
    const int shift = Decimal::MaximumDigits + 1 + digitCount(b.mantissa) - digitCount(a.mantissa);
    const int first = std::min(shift, Decimal::MaximumDigits);
    const uint256_t numerator =
        uint256_t(a.mantissa) * uint256_t(powerOfTen(first)) * uint256_t(powerOfTen(shift - first));
    const uint256_t divisor = b.mantissa;
    const uint256_t quotient = numerator / divisor;
    const Wide kept{static_cast<UInt128>(quotient >> 128), static_cast<UInt128>(quotient)};
    return finish(kept, quotient * divisor != numerator, exponent - shift, negative, behavior);
}

} // namespace

// -- Parts -----------------------------------------------------------------------------------------

namespace detail {

namespace {

constexpr ExactDivision ByGreaterPowers[] = {ExactDivision(32), ExactDivision(16), ExactDivision(8),
                                             ExactDivision(4), ExactDivision(2)};

} // namespace

void DecimalParts::stripMore() noexcept {
    for (const ExactDivision& division : ByGreaterPowers) divide(division);
    divide(ByTen);
}

bool DecimalParts::bringBelowMaximum() noexcept {
    const std::int64_t excess = exponent - Decimal::MaximumExponent;
    if (excess >= Decimal::MaximumDigits || mantissa >= powerOfTen(Decimal::MaximumDigits - excess))
        return false;
    mantissa *= powerOfTen(excess);
    exponent = Decimal::MaximumExponent;
    return true;
}

std::size_t DecimalParts::hash() const noexcept {
    const auto low = static_cast<std::uint64_t>(mantissa);
    const auto high = static_cast<std::uint64_t>(mantissa >> 64);
    std::uint64_t mixed =
        low ^ std::rotl(high, 32) ^ (static_cast<std::uint64_t>(exponent) << 1 | negative) << 48;
    mixed = (mixed ^ mixed >> 32) * 0x9E37'79B9'7F4A'7C15u;
    return static_cast<std::size_t>(mixed ^ mixed >> 29);
}

std::strong_ordering compare(const DecimalParts& a, const DecimalParts& b) noexcept {
    const int signA = a.mantissa == 0 ? 0 : a.negative ? -1 : 1;
    const int signB = b.mantissa == 0 ? 0 : b.negative ? -1 : 1;
    if (signA != signB || signA == 0) return signA <=> signB;
    const auto magnitudes = [](const DecimalParts& x, const DecimalParts& y) -> std::strong_ordering {
        const std::int64_t topX = x.exponent + digitCount(x.mantissa);
        const std::int64_t topY = y.exponent + digitCount(y.mantissa);
        if (topX != topY) return topX <=> topY;
        // Of equally many digits before the point, so that aligned they have at most 38.
        if (x.exponent >= y.exponent) return x.mantissa * powerOfTen(x.exponent - y.exponent) <=> y.mantissa;
        return x.mantissa <=> y.mantissa * powerOfTen(y.exponent - x.exponent);
    };
    return signA > 0 ? magnitudes(a, b) : magnitudes(b, a);
}

} // namespace detail

// -- Operations ------------------------------------------------------------------------------------

Decimal Decimal::withMantissaExponentIsNegative(std::uint64_t mantissa, short exponent,
                                                bool isNegative) noexcept {
    return DecimalParts{mantissa, exponent, isNegative}.decimal().value_or(notANumber());
}

Decimal Decimal::addUnlike(Decimal a, Decimal b) {
    return a.decimalNumberByAdding(b, DefaultBehavior);
}

Decimal Decimal::decimalNumberByMultiplyingBy(const Decimal& other) const {
    // A product that stays within one word needs nothing but to be compact.
    const std::int32_t exponent = exponent_ + other.exponent_;
    std::uint64_t product = 0;
    if ((high_ | other.high_) == 0 && exponent >= MinimumExponent && exponent <= MaximumExponent &&
        !__builtin_mul_overflow(low_, other.low_, &product))
        return compacted(product, exponent, negative_ != other.negative_);
    return decimalNumberByMultiplyingBy(other, DefaultBehavior);
}
Decimal Decimal::decimalNumberByDividingBy(const Decimal& other) const {
    if ((high_ | other.high_) == 0 && !other.isZero())
        return divide(DecimalParts::of(*this), other.low_, negative_ != other.negative_,
                      std::int64_t{exponent_} - other.exponent_, DefaultBehavior);
    return decimalNumberByDividingBy(other, DefaultBehavior);
}

Decimal Decimal::decimalNumberByAdding(const Decimal& other, const DecimalBehavior& behavior) const {
    if (isNaN() || other.isNaN()) return notANumberOperand(behavior);
    return add(DecimalParts::of(*this), DecimalParts::of(other), behavior);
}

Decimal Decimal::decimalNumberBySubtracting(const Decimal& other, const DecimalBehavior& behavior) const {
    if (isNaN() || other.isNaN()) return notANumberOperand(behavior);
    return add(DecimalParts::of(*this), DecimalParts::of(other.opposite()), behavior);
}

Decimal Decimal::decimalNumberByMultiplyingBy(const Decimal& other, const DecimalBehavior& behavior) const {
    if (isNaN() || other.isNaN()) return notANumberOperand(behavior);
    return multiply(DecimalParts::of(*this), DecimalParts::of(other), behavior);
}

Decimal Decimal::decimalNumberByDividingBy(const Decimal& other, const DecimalBehavior& behavior) const {
    if (isNaN() || other.isNaN()) return notANumberOperand(behavior);
    if (other.isZero()) return divisionByZero(behavior);
    return divide(DecimalParts::of(*this), DecimalParts::of(other), behavior);
}

Decimal Decimal::decimalNumberByRoundingAccordingToBehavior(const DecimalBehavior& behavior) const {
    if (isNaN()) return *this;
    const DecimalParts parts = DecimalParts::of(*this);
    return finish(parts.mantissa, parts.exponent, parts.negative, behavior);
}

std::strong_ordering Decimal::compareUnlike(Decimal a, Decimal b) noexcept {
    if (a.isNaN() || b.isNaN()) return b.isNaN() <=> a.isNaN();
    return detail::compare(DecimalParts::of(a), DecimalParts::of(b));
}

std::size_t Decimal::hash() const noexcept {
    return DecimalParts::of(*this).hash();
}

} // namespace estatebook::platform
