// SPDX-License-Identifier: MIT
#pragma once

/// EntityDescription: one entity of a loaded object model, its attributes and relationships, and the C++ class that
/// stands behind it. Descriptions live as long as their model.

#include "platform/observation/Key.hpp"
#include "platform/persistence/ManagedClass.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {

class EntityDescription;
class ManagedObjectContext;
class ManagedObjectModel;

enum class DeleteRule : std::uint8_t { NoAction = 0, Nullify = 1, Cascade = 2, Deny = 3 };

struct AttributeDescription {
    Key name;
    AttributeType type = AttributeType::Any;
    bool isTransient = false;
    bool isWrittenBySystem = false;
    /// Whether objects are looked up by it.
    bool isIndexed = false;
};

struct RelationshipDescription {
    Key name;
    std::string destination;
    /// The entity of that name.
    const EntityDescription* destinationEntity = nullptr;
    Key inverse;
    PropertyKind kind = PropertyKind::ToOne;
    DeleteRule deleteRule = DeleteRule::Nullify;
};

class ESTATEBOOK_API EntityDescription {
public:
    EntityDescription() = default;
    EntityDescription(const EntityDescription&) = delete;
    EntityDescription& operator=(const EntityDescription&) = delete;

    /// entityForName:inManagedObjectContext: null when the model has no entity of this name.
    [[nodiscard]] static const EntityDescription*
    entityForNameInManagedObjectContext(std::string_view name, const ManagedObjectContext& context);

    /// insertNewObjectForEntityForName:inManagedObjectContext: A new object of the entity's class, its `awakeFromInsert` has
    /// run. Raises InternalInconsistencyException for a name the model does not have, or an entity that is abstract.
    static Ref<ManagedObject>
    insertNewObjectForEntityForNameInManagedObjectContext(std::string_view name,
                                                          ManagedObjectContext& context);

    [[nodiscard]] std::string_view name() const noexcept { return name_; }
    [[nodiscard]] std::string_view managedObjectClassName() const noexcept { return className_; }
    /// The parent entity; null for none.
    [[nodiscard]] const EntityDescription* superentity() const noexcept { return parent_; }
    [[nodiscard]] bool isAbstract() const noexcept { return isAbstract_; }
    [[nodiscard]] bool isKindOfEntity(const EntityDescription& other) const noexcept;

    /// Own and inherited ones, inherited first.
    [[nodiscard]] std::span<const AttributeDescription> attributes() const noexcept { return attributes_; }
    [[nodiscard]] std::span<const RelationshipDescription> relationships() const noexcept {
        return relationships_;
    }
    /// Null when the entity has no such relationship.
    [[nodiscard]] const RelationshipDescription* relationship(Key name) const noexcept;

    [[nodiscard]] const ManagedObjectModel& model() const noexcept { return *model_; }
    [[nodiscard]] const ManagedClass& managedClass() const noexcept { return *class_; }
    /// The place of the entity within its model.
    [[nodiscard]] std::size_t index() const noexcept { return index_; }
    /// The home of objects without a context.
    [[nodiscard]] const ManagedObjectHome& homeOutside() const noexcept { return outside_; }

private:
    friend class ModelReader;
    std::string name_;
    std::string className_;
    std::string parentName_;
    const EntityDescription* parent_ = nullptr;
    bool isAbstract_ = false;
    std::vector<AttributeDescription> attributes_;
    std::vector<RelationshipDescription> relationships_;
    const ManagedClass* class_ = nullptr;
    std::size_t index_ = 0;
    const ManagedObjectModel* model_ = nullptr;
    ManagedObjectHome outside_{.entity = this};
};

inline ManagedObjectBirth ManagedObjectBirth::withoutContext(const EntityDescription& entity) noexcept {
    return ManagedObjectBirth(entity.homeOutside(), true);
}
inline ManagedObjectBirth
ManagedObjectBirth::withoutContextAndModel(const EntityDescription& entity) noexcept {
    return ManagedObjectBirth(entity.homeOutside());
}

} // namespace estatebook::platform
