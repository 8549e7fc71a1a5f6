// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/CellCoding.hpp"

#include "platform/archive/KeyedArchiver.hpp"
#include "platform/archive/KeyedUnarchiver.hpp"
#include "platform/persistence/store/sqlite/StoreFailure.hpp"
#include "platform/text/Text.hpp"

#include <bit>
#include <charconv>
#include <cmath>
#include <type_traits>

namespace estatebook::platform::sqlite {

namespace {

constexpr std::string_view True = "true";
constexpr std::string_view False = "false";
constexpr char UnsignedMark = 'u';
constexpr char DecimalMark = 'd';

[[noreturn]] void foreignCell() {
    damaged("it holds a value in a form that no program writes");
}

// Numbers of a fixed size, the first byte the most significant.

template <class Bits>
std::string_view bytesOf(Bits bits, CellRoom& room) {
    std::array<char, sizeof(Bits)> bytes{};
    for (std::size_t index = bytes.size(); index-- > 0; bits = static_cast<Bits>(bits >> 8))
        bytes[index] = static_cast<char>(bits & 0xff);
    return room.keep({bytes.data(), bytes.size()});
}

template <class Bits>
Bits bitsOf(std::string_view bytes) {
    Bits bits = 0;
    for (const char byte : bytes) bits = static_cast<Bits>((bits << 8) | static_cast<unsigned char>(byte));
    return bits;
}

/// Whether the data base gives a number back as it was given: it knows no number that is none, and but one zero.
bool isKept(double number) noexcept {
    return !std::isnan(number) && (number != 0 || !std::signbit(number));
}

Cell encodeDouble(double number, CellRoom& room) {
    if (isKept(number)) return Cell::of(number);
    return Cell::blob(bytesOf(std::bit_cast<std::uint64_t>(number), room));
}

double decodeDouble(const Cell& cell) {
    if (cell.type == Cell::Type::Real && isKept(cell.real)) return cell.real;
    if (cell.type != Cell::Type::Blob || cell.bytes.size() != sizeof(double)) foreignCell();
    const auto number = std::bit_cast<double>(bitsOf<std::uint64_t>(cell.bytes));
    if (isKept(number)) foreignCell();
    return number;
}

Cell encodeDecimal(const Decimal& decimal, CellRoom& room) {
    std::array<char, Decimal::MaximumTextLength> text{};
    const char* end = decimal.toChars(text.data(), text.data() + text.size());
    return Cell::text(room.keep({text.data(), static_cast<std::size_t>(end - text.data())}));
}

/// The decimal of a canonical text that is short, as those of nearly all amounts are; none for any other text.
std::optional<Decimal> decodeShortDecimal(std::string_view text) noexcept {
    constexpr std::size_t LongestShort = 16;
    const bool isNegative = text.starts_with('-');
    if (isNegative) text.remove_prefix(1);
    if (text.empty() || text.size() > LongestShort) return std::nullopt;
    std::uint64_t mantissa = 0;
    std::size_t whole = text.size();
    for (std::size_t place = 0; place < text.size(); ++place) {
        const auto digit = static_cast<unsigned>(static_cast<unsigned char>(text[place])) - '0';
        if (digit < 10)
            mantissa = mantissa * 10 + digit;
        else if (text[place] == '.' && whole == text.size())
            whole = place;
        else
            return std::nullopt;
    }
    const bool hasFraction = whole < text.size();
    const bool hasOneWriting = whole > 0 && (text.front() != '0' || whole == 1) &&
                               (!hasFraction || (text.back() != '0' && text.back() != '.')) &&
                               (mantissa != 0 || !isNegative);
    if (!hasOneWriting) return std::nullopt;
    const auto exponent = hasFraction ? static_cast<short>(whole + 1) - static_cast<short>(text.size()) : 0;
    return Decimal::withMantissaExponentIsNegative(mantissa, static_cast<short>(exponent), isNegative);
}

Decimal decodeDecimal(std::string_view text) {
    if (const auto decimal = decodeShortDecimal(text)) return *decimal;
    const Decimal decimal = Decimal::parse(text);
    std::array<char, Decimal::MaximumTextLength> canonical{};
    const char* end = decimal.toChars(canonical.data(), canonical.data() + canonical.size());
    if (text != std::string_view(canonical.data(), static_cast<std::size_t>(end - canonical.data())))
        foreignCell();
    return decimal;
}

Cell encodeNumber(const Number& number, CellRoom& room) {
    switch (number.kind()) {
    case Number::Kind::Boolean:
        return Cell::text(number.boolValue() ? True : False);
    case Number::Kind::Signed:
        return Cell::of(number.integerValue());
    case Number::Kind::Unsigned:
        return Cell::text(room.keep(UnsignedMark + std::to_string(number.unsignedIntegerValue())));
    case Number::Kind::Single:
        return Cell::blob(bytesOf(std::bit_cast<std::uint32_t>(number.floatValue()), room));
    case Number::Kind::Double:
        return encodeDouble(number.doubleValue(), room);
    case Number::Kind::Decimal:
        return Cell::text(
            room.keep(DecimalMark + std::string(encodeDecimal(number.decimalValue(), room).bytes)));
    }
    return {};
}

Value decodeUnsigned(std::string_view digits) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || digits != std::to_string(number))
        foreignCell();
    return number;
}

Value decodeNumber(const Cell& cell) {
    switch (cell.type) {
    case Cell::Type::Integer:
        return cell.integer;
    case Cell::Type::Real:
        return decodeDouble(cell);
    case Cell::Type::Blob:
        if (cell.bytes.size() != sizeof(float)) return decodeDouble(cell);
        return std::bit_cast<float>(bitsOf<std::uint32_t>(cell.bytes));
    case Cell::Type::Text:
        if (cell.bytes == True) return true;
        if (cell.bytes == False) return false;
        if (cell.bytes.starts_with(UnsignedMark)) return decodeUnsigned(cell.bytes.substr(1));
        if (cell.bytes.starts_with(DecimalMark)) return decodeDecimal(cell.bytes.substr(1));
        break;
    case Cell::Type::Null:
        break;
    }
    foreignCell();
}

} // namespace

std::string_view textOf(const Cell& cell) {
    if (cell.type != Cell::Type::Text) damaged("it holds something else where a text stands");
    if (!isWellFormedUtf8(cell.bytes)) damaged("it holds a text that is not UTF-8");
    return cell.bytes;
}

std::int64_t wholeNumberOf(const Cell& cell) {
    if (cell.type != Cell::Type::Integer) damaged("it holds something else where a whole number stands");
    return cell.integer;
}

Cell encodeDate(Date date, CellRoom& room) {
    return encodeDouble(date.secondsSinceReferenceDate, room);
}

Date decodeDate(const Cell& cell) {
    return Date{decodeDouble(cell)};
}

Cell CellCoding::encode(const Value& value, AttributeType type, CellRoom& room) const {
    if (value.isAbsent()) return {};
    switch (type) {
    case AttributeType::String:
        if (const auto text = value.string()) return Cell::text(text->view());
        break;
    case AttributeType::Date:
        if (const auto date = value.date()) return encodeDate(*date, room);
        break;
    case AttributeType::Decimal:
        if (const auto decimal = value.decimal()) return encodeDecimal(*decimal, room);
        break;
    case AttributeType::Number:
        if (const auto number = value.number()) return encodeNumber(*number, room);
        break;
    case AttributeType::Any:
    case AttributeType::Object:
        return encodeObject(value, room);
    }
    throw StoreFailure{StoreErrorCode::InvalidChange, "A value is not of the type of its attribute"};
}

Cell CellCoding::encodeObject(const Value& value, CellRoom& room) const {
    Ref<Error> error;
    const Ref<Data> archive = KeyedArchiver::archivedData(value, classes_, &error);
    if (!archive) throw StoreFailure{StoreErrorCode::InvalidChange, error->localizedDescription()};
    const auto bytes = archive->bytes();
    return Cell::blob(room.keep({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
}

Value CellCoding::decode(const Cell& cell, AttributeType type) const {
    if (cell.type == Cell::Type::Null) return {};
    switch (type) {
    case AttributeType::String:
        return String::make(textOf(cell));
    case AttributeType::Date:
        return decodeDate(cell);
    case AttributeType::Decimal:
        if (cell.type != Cell::Type::Text) foreignCell();
        return decodeDecimal(cell.bytes);
    case AttributeType::Number:
        return decodeNumber(cell);
    case AttributeType::Any:
    case AttributeType::Object:
        break;
    }
    if (cell.type != Cell::Type::Blob) foreignCell();
    Ref<Error> error;
    Value value = KeyedUnarchiver::unarchivedObject(
        {reinterpret_cast<const std::byte*>(cell.bytes.data()), cell.bytes.size()}, classes_, &error);
    if (error) damaged("an object in it cannot be read: " + error->localizedDescription());
    if (value.isAbsent()) foreignCell();
    return value;
}

} // namespace estatebook::platform::sqlite
