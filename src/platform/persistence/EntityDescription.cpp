// SPDX-License-Identifier: MIT
#include "platform/persistence/EntityDescription.hpp"

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Exception.hpp"

namespace estatebook::platform {

const EntityDescription*
EntityDescription::entityForNameInManagedObjectContext(std::string_view name,
                                                       const ManagedObjectContext& context) {
    const auto& coordinator = context.persistentStoreCoordinator();
    if (!coordinator || !coordinator->managedObjectModel()) return nullptr;
    return coordinator->managedObjectModel()->entityNamed(name);
}

Ref<ManagedObject>
EntityDescription::insertNewObjectForEntityForNameInManagedObjectContext(std::string_view name,
                                                                         ManagedObjectContext& context) {
    const EntityDescription* entity = entityForNameInManagedObjectContext(name, context);
    if (!entity)
        throw InternalInconsistencyException("the context's model has no entity \"" + std::string(name) +
                                             "\"");
    return ManagedObject::initWithEntityInsertIntoManagedObjectContext(*entity, &context);
}

bool EntityDescription::isKindOfEntity(const EntityDescription& other) const noexcept {
    for (const EntityDescription* entity = this; entity; entity = entity->parent_)
        if (entity == &other) return true;
    return false;
}

const RelationshipDescription* EntityDescription::relationship(Key name) const noexcept {
    for (const RelationshipDescription& relationship : relationships_)
        if (relationship.name == name) return &relationship;
    return nullptr;
}

} // namespace estatebook::platform
