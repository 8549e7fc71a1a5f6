// SPDX-License-Identifier: MIT
#include "platform/archive/ArchivedDecimal.hpp"

#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/values/Data.hpp"
#include "platform/values/Exception.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace estatebook::platform::detail {

namespace {

constexpr std::string_view CompactKey = "NS.compact";
constexpr std::string_view ExponentKey = "NS.exponent";
constexpr std::string_view LengthKey = "NS.length";
constexpr std::string_view MantissaKey = "NS.mantissa";
constexpr std::string_view ByteOrderKey = "NS.mantissa.bo";
constexpr std::string_view NegativeKey = "NS.negative";

constexpr std::int64_t LittleEndian = 1;
constexpr std::size_t MantissaSize = 16;
constexpr int BitsInAWord = 16;
constexpr int BitsInAByte = 8;
constexpr std::size_t BytesInAHalf = sizeof(std::uint64_t);

/// The words that hold the digits.
std::int64_t lengthOf(const Decimal::Mantissa& mantissa) {
    const auto bits = static_cast<int>(mantissa.high != 0 ? 64 + std::bit_width(mantissa.high)
                                                          : std::bit_width(mantissa.low));
    return (bits + BitsInAWord - 1) / BitsInAWord;
}

void append(std::vector<std::byte>& bytes, std::uint64_t half) {
    for (std::size_t byte = 0; byte < BytesInAHalf; ++byte)
        bytes.push_back(static_cast<std::byte>(half >> (BitsInAByte * byte)));
}

std::uint64_t half(std::span<const std::byte> bytes) {
    std::uint64_t half = 0;
    for (std::size_t byte = BytesInAHalf; byte-- > 0;)
        half = half << BitsInAByte | static_cast<std::uint64_t>(bytes[byte]);
    return half;
}

[[noreturn]] void refuse() {
    throw InvalidUnarchiveOperationException("a decimal is not complete");
}

void require(bool holds) {
    if (!holds) refuse();
}

Number numberFor(const KeyedUnarchiver& coder, std::string_view key) {
    if (const auto number = coder.decodePlainForKey(key).number()) return *number;
    refuse();
}

/// Raises when the decimal would have more digits than it can hold, or is out of range.
Decimal decimalOf(const Decimal::Mantissa& mantissa, short exponent, bool isNegative) {
    constexpr DecimalBehavior Exact{.raiseOnExactness = true};
    const Decimal halfRange = Decimal(std::uint64_t{1} << 32);
    const Decimal digits = Decimal(mantissa.high)
                               .decimalNumberByMultiplyingBy(halfRange * halfRange, Exact)
                               .decimalNumberByAdding(mantissa.low, Exact);
    return digits.decimalNumberByMultiplyingBy(
        Decimal::withMantissaExponentIsNegative(1, exponent, isNegative), Exact);
}

} // namespace

void encodeDecimal(const Value& value, KeyedArchiver& coder) {
    const Decimal decimal = value.decimal().value_or(Decimal::notANumber());
    const Decimal::Mantissa mantissa = decimal.mantissa();
    std::vector<std::byte> bytes;
    append(bytes, mantissa.low);
    append(bytes, mantissa.high);
    coder.encodePlainForKey(true, CompactKey);
    coder.encodePlainForKey(decimal.exponent(), ExponentKey);
    coder.encodePlainForKey(lengthOf(mantissa), LengthKey);
    coder.encodePlainForKey(Data::make(std::move(bytes)), MantissaKey);
    coder.encodePlainForKey(LittleEndian, ByteOrderKey);
    coder.encodePlainForKey(decimal.isNegative() || decimal.isNaN(), NegativeKey);
}

Value decodeDecimal(KeyedUnarchiver& coder) {
    const auto bytes = coder.decodePlainForKey(MantissaKey).as<Data>();
    require(bytes && bytes->bytes().size() == MantissaSize);
    require(numberFor(coder, ByteOrderKey) == Number(LittleEndian));
    const Decimal::Mantissa mantissa{half(bytes->bytes().subspan(BytesInAHalf)), half(bytes->bytes())};
    require(numberFor(coder, LengthKey) == Number(lengthOf(mantissa)));
    const bool isNegative = numberFor(coder, NegativeKey).boolValue();
    if (mantissa == Decimal::Mantissa{}) return isNegative ? Decimal::notANumber() : Decimal::zero();
    const std::int64_t exponent = numberFor(coder, ExponentKey).integerValue();
    require(exponent >= Decimal::MinimumExponent && exponent <= Decimal::MaximumExponent);
    return decimalOf(mantissa, static_cast<short>(exponent), isNegative);
}

} // namespace estatebook::platform::detail
