// SPDX-License-Identifier: MIT
#pragma once

/// ClassDescription: what is known of a class by key. One constant table a class: its properties with their
/// getters and setters, and its dependency rows.
///
/// The table is open: an application may give a class a getter for a key of its own, or declare that a key depends
/// on a path of keys, before or while objects of the class live.
///
///     TKTenure::Class.addProperty({.key = Key::named("label"), .get = &labelOf});
///     TKTenure::Class.addDependency(Key::named("label"), "tenant.name");
///
/// Rows added at run time may form cycles; each key is still announced once a change. Additions are made on the
/// model's thread.

#include "platform/observation/Dependencies.hpp"
#include "platform/observation/Key.hpp"
#include "platform/values/Value.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

namespace estatebook::platform {

class ObservableObject;

/// How a key is read and written. Without a getter the key has no value, yet it can be observed.
struct Property {
    Key key;
    /// Whether writing nothing to it is refused, because it holds a plain number.
    bool isScalar = false;
    Value (*get)(const ObservableObject&) = nullptr;
    void (*set)(ObservableObject&, const Value&) = nullptr;
};

/// Whether announcements of changes may be left out.
enum class Announces : std::uint8_t {
    /// Where nobody observes: the class has the platform's announcing pair.
    ToObservers,
    /// It replaces the pair, and says with `passesOn` for which keys that matters.
    AsItSays,
    /// It replaces the pair without a word.
    Always,
};

class ESTATEBOOK_API ClassDescription {
public:
    /// `rows` holds the inherited rows, too; `dependents` answers from their closure.
    constexpr ClassDescription(std::string_view name, const ClassDescription* parent,
                               std::span<const Property> properties, std::span<const DependencyRow> rows,
                               const DependentsTable& dependents, Announces announces) noexcept
        : name_(name), parent_(parent), properties_(properties), rows_(rows), dependents_(dependents),
          announces_(announces) {}
    ClassDescription(const ClassDescription&) = delete;
    ClassDescription& operator=(const ClassDescription&) = delete;

    [[nodiscard]] constexpr std::string_view name() const noexcept { return name_; }
    [[nodiscard]] constexpr const ClassDescription* parent() const noexcept { return parent_; }

    /// The property of the key, of this class or the nearest above; null for a key the class does not know.
    [[nodiscard]] const Property* property(Key key) const {
        if (indexMadeAt_ == additionsMade && key.number() < SmallKeys) [[likely]]
            return propertiesByNumber_[key.number()];
        return findProperty(key);
    }

    /// The keys whose values depend on this key within the same object: nearest first, each once.
    [[nodiscard]] std::span<const Key> dependentsOf(Key key) const { return dependentKeys(key).keys; }
    /// The same, also as a set.
    [[nodiscard]] DependentKeys dependentKeys(Key key) const {
        return anyAdded() ? dependentKeysWithAdded(key) : dependents_.find(key);
    }

    /// The declared rows of the class and the classes above it, as written.
    [[nodiscard]] constexpr std::span<const DependencyRow> rows() const noexcept { return rows_; }
    /// keyPathsForValuesAffecting<Key>: the declared key paths, those added at run time included.
    [[nodiscard]] std::vector<std::string> keyPathsForValuesAffecting(Key key) const;

    [[nodiscard]] constexpr Announces announces() const noexcept { return announces_; }

    /// Gives the class a property, or replaces it.
    void addProperty(const Property& property) const;
    /// Declares that `dependent` is computed from the key or dotted key path. Observers that were there before hear
    /// of a plain key at once, and of a dotted path once somebody registers on the object again.
    void addDependency(Key dependent, std::string_view keyPath) const;

    /// A dependency that leads through other objects.
    struct PathDependency {
        Key dependent;
        std::vector<Key> path;
    };
    /// The dotted dependencies of the class and the classes above it.
    [[nodiscard]] std::vector<const PathDependency*> pathDependencies() const;

    /// Whether anything was added to any class; while false there are no dotted dependencies at all.
    [[nodiscard]] static bool anyAdded() noexcept { return additionsMade > 0; }

private:
    // Raised by every addition; an index made before it is stale.
    static std::uint64_t additionsMade;

    struct Additions;
    struct Index;
    [[nodiscard]] DependentKeys dependentKeysWithAdded(Key key) const;
    [[nodiscard]] const Property* findProperty(Key key) const;
    Additions& additions() const;
    const Index& index() const;

    std::string_view name_;
    const ClassDescription* parent_;
    std::span<const Property> properties_;
    std::span<const DependencyRow> rows_;
    DependentsTable dependents_;
    Announces announces_;
    mutable Additions* additions_ = nullptr;
    mutable const Index* index_ = nullptr;
    // Part of the index, for those in a hurry.
    static constexpr std::uint64_t Never = ~std::uint64_t{0};
    mutable std::uint64_t indexMadeAt_ = Never;
    mutable const Property* const* propertiesByNumber_ = nullptr;
};

/// For a class whose closure is the constant C.
template <const auto& C>
inline constexpr DependentsTable dependentsIn = C.table();
/// For a class without dependency rows.
inline constexpr Closure<0> closureOfNothing;
inline constexpr DependentsTable noDependents = closureOfNothing.table();

namespace detail {

template <class T>
struct MemberOf;
template <class R, class C>
struct MemberOf<R (C::*)() const> {
    using Class = C;
};
template <class R, class C>
struct MemberOf<R (C::*)() const noexcept> {
    using Class = C;
};
template <class C, class A>
struct MemberOf<void (C::*)(A)> {
    using Class = C;
    using Argument = std::remove_cvref_t<A>;
};

template <class T>
struct FromValue;
template <>
struct FromValue<std::optional<Decimal>> {
    static std::optional<Decimal> convert(const Value& value) { return value.decimal(); }
};
template <>
struct FromValue<std::optional<Date>> {
    static std::optional<Date> convert(const Value& value) { return value.date(); }
};
template <>
struct FromValue<std::optional<Number>> {
    static std::optional<Number> convert(const Value& value) { return value.number(); }
};
template <>
struct FromValue<std::uint64_t> {
    static std::uint64_t convert(const Value& value) { return value.unsignedIntegerValue(); }
};
template <>
struct FromValue<Value> {
    static const Value& convert(const Value& value) { return value; }
};
template <class T>
struct FromValue<Ref<T>> {
    static Ref<T> convert(const Value& value) { return value.as<T>(); }
};

/// A value of another kind is refused rather than read as absent.
[[noreturn]] ESTATEBOOK_API void refuseValue(Key key, const Value& value);

} // namespace detail

/// A read-only property from a member function.
template <auto Getter>
constexpr Property derived(Key key) noexcept {
    using Class = typename detail::MemberOf<decltype(Getter)>::Class;
    return {.key = key, .get = [](const ObservableObject& object) -> Value {
                return Value((static_cast<const Class&>(object).*Getter)());
            }};
}

/// A property from two member functions.
template <auto Getter, auto Setter>
constexpr Property writable(Key key) noexcept {
    using Class = typename detail::MemberOf<decltype(Setter)>::Class;
    using Argument = typename detail::MemberOf<decltype(Setter)>::Argument;
    Property property = derived<Getter>(key);
    property.isScalar = std::is_arithmetic_v<Argument>;
    property.set = [](ObservableObject& object, const Value& value) {
        auto argument = detail::FromValue<Argument>::convert(value);
        if constexpr (std::is_arithmetic_v<Argument>) {
            if (!value.isNumber()) detail::refuseValue(Key(), value);
        } else if constexpr (!std::is_same_v<Argument, Value>) {
            if (!argument && !value.isAbsent() && !value.isNullObject()) detail::refuseValue(Key(), value);
        }
        (static_cast<Class&>(object).*Setter)(std::move(argument));
    };
    return property;
}

} // namespace estatebook::platform
