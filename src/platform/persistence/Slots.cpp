// SPDX-License-Identifier: MIT
#include "platform/persistence/Slots.hpp"

#include "platform/values/Exception.hpp"

#include <string>

namespace estatebook::platform {

void NumberSlot::clear() noexcept {
    if (kind_ == Kind::Decimal) delete reinterpret_cast<Decimal*>(bits_);
    kind_ = Kind::Absent;
}

NumberSlot& NumberSlot::operator=(const std::optional<Number>& value) {
    clear();
    if (!value) return *this;
    switch (value->kind()) {
    case Number::Kind::Boolean:
        bits_ = value->boolValue();
        kind_ = Kind::Boolean;
        break;
    case Number::Kind::Signed:
        bits_ = static_cast<std::uint64_t>(value->integerValue());
        kind_ = Kind::Signed;
        break;
    case Number::Kind::Unsigned:
        bits_ = value->unsignedIntegerValue();
        kind_ = Kind::Unsigned;
        break;
    case Number::Kind::Single:
        bits_ = std::bit_cast<std::uint32_t>(value->floatValue());
        kind_ = Kind::Single;
        break;
    case Number::Kind::Double:
        bits_ = std::bit_cast<std::uint64_t>(value->doubleValue());
        kind_ = Kind::Double;
        break;
    case Number::Kind::Decimal:
        bits_ = reinterpret_cast<std::uintptr_t>(new Decimal(value->decimalValue()));
        kind_ = Kind::Decimal;
        break;
    }
    return *this;
}

std::optional<Number> NumberSlot::get() const noexcept {
    switch (kind_) {
    case Kind::Absent:
        return std::nullopt;
    case Kind::Boolean:
        return Number(bits_ != 0);
    case Kind::Signed:
        return Number(static_cast<std::int64_t>(bits_));
    case Kind::Unsigned:
        return Number(bits_);
    case Kind::Single:
        return Number(std::bit_cast<float>(static_cast<std::uint32_t>(bits_)));
    case Kind::Double:
        return Number(std::bit_cast<double>(bits_));
    case Kind::Decimal:
        return Number(*reinterpret_cast<const Decimal*>(bits_));
    }
    return std::nullopt;
}

void refuseForSlot(const Value& value, Key key) {
    throw InvalidArgumentException("the value " + value.description() + " is of a kind that the key \"" +
                                   std::string(key.name()) + "\" does not take");
}

namespace {

template <class T>
std::optional<T> accepted(std::optional<T> content, const Value& value, Key key) {
    if (!content && !value.isAbsent() && !value.isNullObject()) refuseForSlot(value, key);
    return content;
}

} // namespace

void storeInSlot(Ref<String>& slot, const Value& value, Key key) {
    Ref<String> text = value.string();
    if (!text && !value.isAbsent() && !value.isNullObject()) refuseForSlot(value, key);
    slot = std::move(text);
}

void storeInSlot(DateSlot& slot, const Value& value, Key key) {
    slot = accepted(value.date(), value, key);
}

void storeInSlot(DecimalSlot& slot, const Value& value, Key key) {
    slot = accepted(value.decimal(), value, key);
}

void storeInSlot(NumberSlot& slot, const Value& value, Key key) {
    slot = accepted(value.number(), value, key);
}

} // namespace estatebook::platform
