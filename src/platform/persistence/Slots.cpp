// SPDX-License-Identifier: MIT
#include "platform/persistence/Slots.hpp"

#include "platform/values/Exception.hpp"

#include <string>

namespace estatebook::platform {

void NumberSlot::drop() noexcept {
    delete std::bit_cast<const Number*>(bits_);
}

// The bits of a number, above those of its kind; absent when they are too many to stand there.
std::optional<std::uint64_t> NumberSlot::raised(const Number& number) noexcept {
    switch (number.kind()) {
    case Number::Kind::Boolean:
        return std::uint64_t{number.boolValue()} << KindBits;
    case Number::Kind::Signed: {
        const std::int64_t whole = number.integerValue();
        const std::uint64_t bits = static_cast<std::uint64_t>(whole) << KindBits;
        return static_cast<std::int64_t>(bits) >> KindBits == whole ? std::optional(bits) : std::nullopt;
    }
    case Number::Kind::Unsigned: {
        const std::uint64_t whole = number.unsignedIntegerValue();
        const std::uint64_t bits = whole << KindBits;
        return bits >> KindBits == whole ? std::optional(bits) : std::nullopt;
    }
    case Number::Kind::Single:
        return std::uint64_t{std::bit_cast<std::uint32_t>(number.floatValue())} << KindBits;
    case Number::Kind::Double: {
        // The last bits of most fractions that people write are not zero; of whole and half ones they are.
        const auto bits = std::bit_cast<std::uint64_t>(number.doubleValue());
        return (bits & KindMask) == 0 ? std::optional(bits) : std::nullopt;
    }
    case Number::Kind::Decimal:
        return std::nullopt;
    }
    return std::nullopt;
}

NumberSlot& NumberSlot::operator=(const std::optional<Number>& value) {
    std::uint64_t bits = 0;
    if (value) {
        if (const auto content = raised(*value))
            bits = *content | (static_cast<std::uint64_t>(value->kind()) + 1);
        else
            bits = std::bit_cast<std::uint64_t>(new Number(*value));
    }
    if (isElsewhere()) drop();
    bits_ = bits;
    return *this;
}

std::optional<Number> NumberSlot::get() const noexcept {
    if (bits_ == 0) return std::nullopt;
    if (isElsewhere()) return *std::bit_cast<const Number*>(bits_);
    const std::uint64_t content = bits_ >> KindBits;
    switch (static_cast<Number::Kind>((bits_ & KindMask) - 1)) {
    case Number::Kind::Boolean:
        return Number(content != 0);
    case Number::Kind::Signed:
        return Number(static_cast<std::int64_t>(bits_) >> KindBits);
    case Number::Kind::Unsigned:
        return Number(content);
    case Number::Kind::Single:
        return Number(std::bit_cast<float>(static_cast<std::uint32_t>(content)));
    case Number::Kind::Double:
        return Number(std::bit_cast<double>(bits_ & ~KindMask));
    case Number::Kind::Decimal:
        break; // always elsewhere
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
