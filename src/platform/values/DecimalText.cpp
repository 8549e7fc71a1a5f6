// SPDX-License-Identifier: MIT
// The conversions of Decimal: text, binary numbers, integers.
#include "platform/values/Decimal.hpp"
#include "platform/values/DecimalParts.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <ostream>

namespace estatebook::platform {

using detail::DecimalParts;
using detail::powerOfTen;
using detail::UInt128;

// -- Reading ---------------------------------------------------------------------------------------

namespace detail {
namespace {

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}
bool isBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// Digits of any number, of which up to 38 significant ones are kept, the last of them not a zero.
class Digits {
public:
    void take(char character) {
        const auto digit = static_cast<unsigned>(character - '0');
        if (digit == 0 || lost_) {
            waiting_ += mantissa_ != 0;
            lost_ |= digit != 0;
            return;
        }
        if (count_ + waiting_ >= Decimal::MaximumDigits) {
            lost_ = true;
            ++waiting_;
            return;
        }
        mantissa_ = mantissa_ * powerOfTen(waiting_ + 1) + digit;
        count_ += waiting_ + 1;
        waiting_ = 0;
    }

    [[nodiscard]] UInt128 mantissa() const { return mantissa_; }
    /// The places after the last digit kept.
    [[nodiscard]] std::int64_t places() const { return waiting_; }
    [[nodiscard]] bool lost() const { return lost_; }

private:
    UInt128 mantissa_ = 0;
    std::int64_t count_ = 0;
    std::int64_t waiting_ = 0;
    bool lost_ = false;
};

} // namespace

DecimalScan scanDecimal(std::string_view text) noexcept {
    DecimalScan scan;
    Digits digits;
    std::size_t at = 0;
    const auto is = [&](char character) { return at < text.size() && text[at] == character; };
    const auto run = [&](auto&& taken) {
        const std::size_t start = at;
        for (; at < text.size() && isDigit(text[at]); ++at) taken(text[at]);
        return at - start;
    };
    const auto take = [&](char character) { digits.take(character); };

    bool documentForm = !is('+');
    scan.parts.negative = is('-');
    if (is('-') || is('+')) ++at;

    const bool leadingZero = is('0');
    const std::size_t whole = run(take);
    documentForm &= whole == 1 || (whole > 1 && !leadingZero);

    std::size_t fraction = 0;
    if (is('.')) {
        ++at;
        fraction = run(take);
        documentForm &= fraction > 0;
    }

    std::int64_t exponent = 0;
    if (is('e') || is('E')) {
        ++at;
        const bool negative = is('-');
        if (is('-') || is('+')) ++at;
        // Beyond any length of text no mantissa can make up for it.
        constexpr std::int64_t enough = std::int64_t{1} << 58;
        const std::size_t count =
            run([&](char digit) { exponent = exponent < enough ? exponent * 10 + (digit - '0') : exponent; });
        if (negative) exponent = -exponent;
        documentForm &= count > 0;
    }

    scan.parts.mantissa = digits.mantissa();
    if (scan.parts.mantissa == 0)
        scan.parts.negative = false;
    else
        scan.parts.exponent = exponent + digits.places() - static_cast<std::int64_t>(fraction);
    scan.length = at;
    scan.exact = !digits.lost();
    scan.documentForm = documentForm;
    return scan;
}

namespace {

template <class Float>
DecimalParts shortest(Float value) noexcept {
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    return scanDecimal({text, static_cast<std::size_t>(end.ptr - text)}).parts;
}

} // namespace

DecimalParts shortestParts(double value) noexcept {
    return shortest(value);
}
DecimalParts shortestParts(float value) noexcept {
    return shortest(value);
}

} // namespace detail

Decimal Decimal::parse(std::string_view text) noexcept {
    while (!text.empty() && detail::isBlank(text.front())) text.remove_prefix(1);
    const detail::DecimalScan scan = detail::scanDecimal(text);
    if (scan.length == 0) return notANumber();
    return scan.parts.decimal().value_or(notANumber());
}

std::optional<Decimal> Decimal::parseExact(std::string_view text) noexcept {
    const detail::DecimalScan scan = detail::scanDecimal(text);
    if (scan.length != text.size() || !scan.documentForm || !scan.exact) return std::nullopt;
    return scan.parts.decimal();
}

// -- Writing ---------------------------------------------------------------------------------------

namespace {

/// Writes the digits of a mantissa and gives the end of them.
char* writeDigits(char* at, UInt128 mantissa) {
    constexpr int half = 19;
    const auto power = static_cast<std::uint64_t>(powerOfTen(half));
    char* const room = at + Decimal::MaximumDigits;
    if (mantissa < power) return std::to_chars(at, room, static_cast<std::uint64_t>(mantissa)).ptr;
    at = std::to_chars(at, room, static_cast<std::uint64_t>(mantissa / power)).ptr;
    auto low = static_cast<std::uint64_t>(mantissa % power);
    for (int i = half - 1; i >= 0; --i, low /= 10) at[i] = static_cast<char>('0' + low % 10);
    return at + half;
}

char* write(char* at, std::string_view text) {
    return std::copy(text.begin(), text.end(), at);
}

} // namespace

char* Decimal::toChars(char* first, char* last) const noexcept {
    constexpr std::string_view nan = "NaN";
    const auto room = static_cast<std::size_t>(last - first);
    if (isNaN()) return room < nan.size() ? nullptr : write(first, nan);

    const DecimalParts parts = DecimalParts::of(*this);
    char digits[MaximumDigits];
    const auto count = static_cast<int>(writeDigits(digits, parts.mantissa) - digits);
    const int before = count + exponent_; // digits before the point
    const int unsignedLength = exponent_ >= 0 ? before : before > 0 ? count + 1 : 2 - exponent_;
    const std::size_t length = static_cast<std::size_t>(unsignedLength) + parts.negative;
    if (room < length) return nullptr;

    if (parts.negative) *first++ = '-';
    if (exponent_ >= 0)
        return std::fill_n(write(first, {digits, static_cast<std::size_t>(count)}), exponent_, '0');
    if (before <= 0) {
        first = std::fill_n(write(first, "0."), -before, '0');
        return write(first, {digits, static_cast<std::size_t>(count)});
    }
    first = write(first, {digits, static_cast<std::size_t>(before)});
    *first++ = '.';
    return write(first, {digits + before, static_cast<std::size_t>(count - before)});
}

std::string Decimal::toString() const {
    char text[MaximumTextLength];
    return std::string(text, toChars(text, text + sizeof text));
}

std::ostream& operator<<(std::ostream& stream, const Decimal& decimal) {
    char text[Decimal::MaximumTextLength];
    return stream << std::string_view(
               text, static_cast<std::size_t>(decimal.toChars(text, text + sizeof text) - text));
}

// -- Binary numbers --------------------------------------------------------------------------------

Decimal Decimal::fromDouble(double value) noexcept {
    constexpr double limit = 18446744073709551616.0;
    if (!std::isfinite(value)) return notANumber();
    if (value == 0) return zero();
    double scaled = std::fabs(value);
    int exponent = 0;
    for (; scaled < limit; --exponent) scaled *= 10;
    for (; scaled >= limit; ++exponent) scaled /= 10;
    return DecimalParts{static_cast<std::uint64_t>(scaled), exponent, value < 0}.decimal().value_or(
        notANumber());
}

Decimal Decimal::fromShortest(double value) noexcept {
    if (!std::isfinite(value)) return notANumber();
    return detail::shortestParts(value).decimal().value_or(notANumber());
}

Decimal Decimal::fromShortest(float value) noexcept {
    if (!std::isfinite(value)) return notANumber();
    return detail::shortestParts(value).decimal().value_or(notANumber());
}

namespace {

/// REQUIRES: a number.
template <class Float>
Float nearest(const DecimalParts& parts) {
    char text[1 + Decimal::MaximumDigits + 8];
    char* at = text;
    if (parts.negative) *at++ = '-';
    at = writeDigits(at, parts.mantissa);
    *at++ = 'e';
    at = std::to_chars(at, text + sizeof text, parts.exponent).ptr;
    Float value = 0;
    const std::from_chars_result result = std::from_chars(text, at, value);
    if (result.ec == std::errc()) return value;
    // Only a float has too narrow a range.
    value = parts.exponent < 0 ? Float{0} : std::numeric_limits<Float>::infinity();
    return parts.negative ? -value : value;
}

} // namespace

double Decimal::doubleValue() const noexcept {
    // Both parts are exact in a double, so the one operation rounds once.
    constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    if (isNaN()) return std::numeric_limits<double>::quiet_NaN();
    if (high_ == 0 && low_ <= std::uint64_t{1} << 53 && exponent_ >= -22 && exponent_ <= 22) {
        const double magnitude = exponent_ < 0 ? static_cast<double>(low_) / powers[-exponent_]
                                               : static_cast<double>(low_) * powers[exponent_];
        return negative_ ? -magnitude : magnitude;
    }
    return nearest<double>(DecimalParts::of(*this));
}

float Decimal::floatValue() const noexcept {
    if (isNaN()) return std::numeric_limits<float>::quiet_NaN();
    return nearest<float>(DecimalParts::of(*this));
}

// -- Integers --------------------------------------------------------------------------------------

std::uint64_t Decimal::unsignedIntegerValue() const noexcept {
    if (isNaN() || exponent_ > 20 || exponent_ < -MaximumDigits) return 0;
    const UInt128 mantissa = DecimalParts::of(*this).mantissa;
    const UInt128 whole =
        exponent_ < 0 ? mantissa / powerOfTen(-exponent_) : mantissa * powerOfTen(exponent_);
    const auto low = static_cast<std::uint64_t>(whole);
    return negative_ ? -low : low;
}

std::int64_t Decimal::integerValue() const noexcept {
    return static_cast<std::int64_t>(unsignedIntegerValue());
}

} // namespace estatebook::platform
