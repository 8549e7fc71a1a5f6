// SPDX-License-Identifier: MIT
#pragma once

/// Value: anything a key can have. A closed sum of 32 bytes: absent, the null object, a number of any kind,
/// a date, a text or another object.
///
/// Values travel where the key is known only at run time (reading by key, change records, archives). Typed
/// accessors read their slot and never make one.
///
///     Value amount = transaction.valueForKey(keys::amount);
///     if (auto decimal = amount.decimal()) total += *decimal;
///     amount.isAbsent();
///
/// Equality is by value for numbers, dates and texts and as the class says for other objects.

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Number.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/String.hpp"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace estatebook::platform {

/// Stands for "nothing" where a collection needs a member.
struct NullObject {
    friend bool operator==(NullObject, NullObject) noexcept { return true; }
};

class ESTATEBOOK_API Value {
public:
    Value() noexcept = default;
    Value(std::nullopt_t) noexcept {}
    Value(NullObject) noexcept : content_(NullObject{}) {}
    Value(std::same_as<bool> auto flag) noexcept : content_(flag) {}
    Value(std::signed_integral auto number) noexcept : content_(static_cast<std::int64_t>(number)) {}
    Value(std::unsigned_integral auto number) noexcept
        requires(!std::same_as<decltype(number), bool>)
        : content_(static_cast<std::uint64_t>(number)) {}
    Value(float number) noexcept : content_(number) {}
    Value(double number) noexcept : content_(number) {}
    Value(const Decimal& number) noexcept : content_(number) {}
    Value(Date date) noexcept : content_(date) {}
    Value(const Number& number) noexcept;
    Value(Ref<String> text) noexcept {
        if (text) content_ = std::move(text);
    }
    Value(Ref<Object> object) noexcept;
    template <class T>
        requires(std::derived_from<T, Object> && !std::same_as<T, String> && !std::same_as<T, Object>)
    Value(const Ref<T>& object) noexcept {
        if (object) content_ = Ref<Object>(object);
    }
    template <class T>
    Value(const std::optional<T>& optional) noexcept : Value(optional ? Value(*optional) : Value()) {}

    [[nodiscard]] bool isAbsent() const noexcept { return std::holds_alternative<std::monostate>(content_); }
    [[nodiscard]] bool isNullObject() const noexcept { return std::holds_alternative<NullObject>(content_); }
    [[nodiscard]] bool isNumber() const noexcept {
        // Plain alternatives from bool up to Decimal.
        return content_.index() >= 2 && content_.index() <= 7;
    }

    /// The number with its kind; none when this is no number.
    [[nodiscard]] std::optional<Number> number() const noexcept;
    /// The number as a decimal; none when this is no number.
    [[nodiscard]] std::optional<Decimal> decimal() const noexcept;
    [[nodiscard]] std::optional<Date> date() const noexcept;
    /// The text object itself; null when this is no text.
    [[nodiscard]] Ref<String> string() const noexcept;
    /// The object (a text counts as one); null when this is none.
    [[nodiscard]] Ref<Object> object() const noexcept;
    /// The object as a T, a class or a protocol; null when it is none.
    template <class T>
    [[nodiscard]] Ref<T> as() const noexcept {
        if constexpr (std::same_as<T, String>) return string();
        const auto* object = std::get_if<Ref<Object>>(&content_);
        return object ? Ref<T>(dynamic_cast<T*>(object->get())) : Ref<T>();
    }

    /// Unsigned value of a number as Number::unsignedIntegerValue; 0 when absent or no number.
    [[nodiscard]] std::uint64_t unsignedIntegerValue() const noexcept {
        const auto* same = std::get_if<std::uint64_t>(&content_);
        return same ? *same : convertedToUnsigned();
    }
    /// Truth of a number; false when absent or no number.
    [[nodiscard]] bool boolValue() const noexcept;

    [[nodiscard]] bool isEqual(const Value& other) const noexcept;
    /// The very same object, or the same bits of a plain value.
    [[nodiscard]] bool isIdentical(const Value& other) const noexcept;
    [[nodiscard]] std::size_t hash() const noexcept;
    /// As a format prints it: "(null)" for absent, "<null>" for the null object.
    [[nodiscard]] std::string description() const;

    friend bool operator==(const Value& a, const Value& b) noexcept { return a.isEqual(b); }

private:
    [[nodiscard]] std::uint64_t convertedToUnsigned() const noexcept;

    std::variant<std::monostate, NullObject, bool, std::int64_t, std::uint64_t, float, double, Decimal, Date,
                 Ref<String>, Ref<Object>>
        content_;
};

static_assert(sizeof(Value) <= 32);

} // namespace estatebook::platform

template <>
struct std::hash<estatebook::platform::Value> {
    std::size_t operator()(const estatebook::platform::Value& value) const noexcept { return value.hash(); }
};
