// SPDX-License-Identifier: MIT
#include "platform/values/Value.hpp"

#include <bit>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace estatebook::platform {

namespace {

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

} // namespace

Value::Value(const Number& number) noexcept {
    switch (number.kind()) {
    case Number::Kind::Boolean:
        content_ = number.boolValue();
        break;
    case Number::Kind::Signed:
        content_ = number.integerValue();
        break;
    case Number::Kind::Unsigned:
        content_ = number.unsignedIntegerValue();
        break;
    case Number::Kind::Single:
        content_ = number.floatValue();
        break;
    case Number::Kind::Double:
        content_ = number.doubleValue();
        break;
    case Number::Kind::Decimal:
        content_ = number.decimalValue();
        break;
    }
}

Value::Value(Ref<Object> object) noexcept {
    if (!object) return;
    // Nothing derives from String, so that there is no need of a cast, which takes ten times as long.
    const Object& referent = *object;
    if (typeid(referent) == typeid(String))
        content_ = Ref<String>(static_cast<String*>(object.get()));
    else
        content_ = std::move(object);
}

std::optional<Number> Value::number() const noexcept {
    return std::visit(Overloaded{
                          [](bool flag) -> std::optional<Number> { return Number(flag); },
                          [](std::int64_t number) -> std::optional<Number> { return Number(number); },
                          [](std::uint64_t number) -> std::optional<Number> { return Number(number); },
                          [](float number) -> std::optional<Number> { return Number(number); },
                          [](double number) -> std::optional<Number> { return Number(number); },
                          [](const Decimal& number) -> std::optional<Number> { return Number(number); },
                          [](const auto&) -> std::optional<Number> { return std::nullopt; },
                      },
                      content_);
}

std::optional<Decimal> Value::decimal() const noexcept {
    if (const auto* decimal = std::get_if<Decimal>(&content_)) return *decimal;
    if (const auto boxed = number()) return boxed->decimalValue();
    return std::nullopt;
}

std::optional<Date> Value::date() const noexcept {
    if (const auto* date = std::get_if<Date>(&content_)) return *date;
    return std::nullopt;
}

Ref<String> Value::string() const noexcept {
    if (const auto* text = std::get_if<Ref<String>>(&content_)) return *text;
    return nullptr;
}

Ref<Object> Value::object() const noexcept {
    if (const auto* object = std::get_if<Ref<Object>>(&content_)) return *object;
    return string();
}

std::uint64_t Value::convertedToUnsigned() const noexcept {
    const auto boxed = number();
    return boxed ? boxed->unsignedIntegerValue() : 0;
}

bool Value::boolValue() const noexcept {
    const auto boxed = number();
    return boxed && boxed->boolValue();
}

bool Value::isEqual(const Value& other) const noexcept {
    if (const auto mine = number(), theirs = other.number(); mine && theirs) return *mine == *theirs;
    if (content_.index() != other.content_.index()) return false;
    return std::visit(
        [&](const auto& mine) {
            using T = std::decay_t<decltype(mine)>;
            const auto& theirs = std::get<T>(other.content_);
            if constexpr (std::is_same_v<T, Ref<String>> || std::is_same_v<T, Ref<Object>>)
                return mine == theirs || mine->isEqual(*theirs);
            else
                return mine == theirs;
        },
        content_);
}

bool Value::isIdentical(const Value& other) const noexcept {
    if (content_.index() != other.content_.index()) return false;
    return std::visit(
        [&](const auto& mine) {
            using T = std::decay_t<decltype(mine)>;
            const auto& theirs = std::get<T>(other.content_);
            if constexpr (std::is_same_v<T, float>)
                return std::bit_cast<std::uint32_t>(mine) == std::bit_cast<std::uint32_t>(theirs);
            else if constexpr (std::is_same_v<T, double>)
                return std::bit_cast<std::uint64_t>(mine) == std::bit_cast<std::uint64_t>(theirs);
            else if constexpr (std::is_same_v<T, Date>)
                return std::bit_cast<std::uint64_t>(mine) == std::bit_cast<std::uint64_t>(theirs);
            else
                return mine == theirs;
        },
        content_);
}

std::size_t Value::hash() const noexcept {
    if (const auto boxed = number()) return boxed->hash();
    return std::visit(
        [](const auto& content) -> std::size_t {
            using T = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<T, Ref<String>> || std::is_same_v<T, Ref<Object>>)
                return content->hash();
            else if constexpr (std::is_same_v<T, Date>)
                return std::hash<Date>{}(content);
            else
                return 0;
        },
        content_);
}

std::string Value::description() const {
    if (const auto boxed = number()) return boxed->description();
    return std::visit(
        [](const auto& content) -> std::string {
            using T = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<T, Ref<String>> || std::is_same_v<T, Ref<Object>>)
                return content->description();
            else if constexpr (std::is_same_v<T, Date>)
                return content.description();
            else if constexpr (std::is_same_v<T, NullObject>)
                return "<null>";
            else
                return "(null)";
        },
        content_);
}

} // namespace estatebook::platform
