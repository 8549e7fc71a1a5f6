// SPDX-License-Identifier: MIT
#pragma once

/// What the engine knows of a C++ class whose objects a context manages: how to make one, and its modelled
/// properties. Generated from the model file; a loaded model must agree with it.

#include "platform/observation/Key.hpp"
#include "platform/values/Value.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace estatebook::platform {

class EntityDescription;
class ManagedObject;
class ManagedObjectContext;
struct ToOneSlot;
class ToManySlot;

enum class PropertyKind : std::uint8_t { Attribute, ToOne, ToMany, OrderedToMany };
enum class AttributeType : std::uint8_t {
    String = 1,
    Date = 2,
    Decimal = 3,
    Number = 4,
    Any = 5,
    Object = 6
};

/// Never saved.
inline constexpr unsigned PropertyTransient = 1;
/// Written by the system: no edit of the user.
inline constexpr unsigned PropertyWrittenBySystem = 2;

struct ModelledProperty {
    Key key;
    PropertyKind kind = PropertyKind::Attribute;
    AttributeType type = AttributeType::Any;
    unsigned flags = 0;
    Key inverse{};
    // Of an attribute:
    Value (*primitive)(const ManagedObject&) = nullptr;
    void (*setPrimitive)(ManagedObject&, const Value&) = nullptr;
    // Of a relationship:
    ToOneSlot& (*toOne)(ManagedObject&) noexcept = nullptr;
    ToManySlot& (*toMany)(ManagedObject&) noexcept = nullptr;

    [[nodiscard]] constexpr bool isRelationship() const noexcept { return kind != PropertyKind::Attribute; }
};

/// Finds a property of one class's table by the number of its key.
class ModelledPropertyIndex {
public:
    template <std::size_t N>
    explicit constexpr ModelledPropertyIndex(const ModelledProperty (&properties)[N]) noexcept {
        for (std::size_t index = 0; index < N; ++index)
            places_[properties[index].key.number()] = static_cast<std::uint8_t>(index + 1);
    }
    [[nodiscard]] constexpr const ModelledProperty* find(const ModelledProperty* properties,
                                                         Key key) const noexcept {
        if (key.number() >= places_.size() || places_[key.number()] == 0) return nullptr;
        return properties + (places_[key.number()] - 1);
    }

private:
    std::array<std::uint8_t, 128> places_{};
};

using ModelledPropertyVisitor = void (*)(const ModelledProperty&, void* info);

/// Where objects of one entity are at home: in a context, or in none. One for all of them, so that an object takes
/// a single pointer to tell both.
struct ManagedObjectHome {
    const EntityDescription* entity = nullptr;
    /// Null for objects that belong to no context.
    ManagedObjectContext* context = nullptr;
};

/// Handed to a constructor by the engine; only the engine makes objects of entities.
class ManagedObjectBirth {
public:
    [[nodiscard]] static ManagedObjectBirth withoutContext(const EntityDescription& entity) noexcept;
    /// For an object whose maker keeps the model alive as long as the object is.
    [[nodiscard]] static ManagedObjectBirth withoutContextAndModel(const EntityDescription& entity) noexcept;
    [[nodiscard]] const ManagedObjectHome& home() const noexcept { return home_; }
    /// Whether nobody else keeps the entity's model for the object.
    [[nodiscard]] bool holdsModel() const noexcept { return holdsModel_; }

private:
    friend class ManagedObject;
    friend class ManagedObjectContext;
    explicit ManagedObjectBirth(const ManagedObjectHome& home, bool holdsModel = false) noexcept
        : home_(home), holdsModel_(holdsModel) {}
    const ManagedObjectHome& home_;
    bool holdsModel_;
};

struct ManagedClass {
    static constexpr std::size_t MaximalLineage = 4;
    using Properties = std::span<const ModelledProperty> (*)() noexcept;

    std::string_view name;
    /// Null for a class of which only subclasses have objects.
    ManagedObject* (*make)(const ManagedObjectBirth&) = nullptr;
    /// The tables of the class and its ancestors, the root first; unused places are null.
    std::array<Properties, MaximalLineage> properties{};
};

template <class T>
ManagedObject* makeManagedObject(const ManagedObjectBirth& birth) {
    return new T(birth);
}

} // namespace estatebook::platform
