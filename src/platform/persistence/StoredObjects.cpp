// SPDX-License-Identifier: MIT
#include "platform/persistence/StoredObjects.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"

#include <cassert>
#include <utility>

namespace estatebook::platform {

namespace {

const ModelledProperty* propertyOf(const EntityDescription& entity, Key key) {
    for (const ManagedClass::Properties table : entity.managedClass().properties) {
        if (!table) break;
        for (const ModelledProperty& property : table())
            if (property.key == key) return &property;
    }
    assert(false && "a loaded model agrees with its classes");
    return nullptr;
}

StoredProperties propertiesOf(const RowShape& shape) {
    const EntityDescription& entity = shape.entity();
    StoredProperties properties;
    properties.shape = &shape;
    for (const AttributeDescription& attribute : entity.attributes())
        properties.attributes.push_back(attribute.isTransient ? nullptr : propertyOf(entity, attribute.name));
    for (const StoredLink& link : shape.links())
        properties.links.push_back(propertyOf(entity, link.relationship->name));
    for (const RelationshipDescription& relationship : entity.relationships())
        if (relationship.kind != PropertyKind::ToOne)
            properties.toMany.push_back(propertyOf(entity, relationship.name));
    for (const auto& other : entity.model().entities())
        if (other->superentity() == &entity) properties.isLeaf = false;
    return properties;
}

} // namespace

StoredObjects::StoredObjects(Ref<Store> store) : store_(std::move(store)) {
    for (const RowShape& shape : store_->shapes().all()) properties_.push_back(propertiesOf(shape));
}

StoredObjects::Page* StoredObjects::pageOf(RowKey key) const noexcept {
    const auto place = static_cast<std::size_t>(key / PageSize);
    if (place < pages_.size()) return pages_[place].get();
    if (farPages_.empty()) return nullptr;
    const auto found = farPages_.find(key / PageSize);
    return found == farPages_.end() ? nullptr : found->second.get();
}

StoredObjects::Page& StoredObjects::makePage(RowKey key) {
    const RowKey place = key / PageSize;
    auto made = std::make_unique<Page>();
    if (place >= MostPlaces) return *(farPages_[place] = std::move(made));
    const auto index = static_cast<std::size_t>(place);
    if (index >= pages_.size()) pages_.resize(index + 1);
    return *(pages_[index] = std::move(made));
}

ManagedObject* StoredObjects::find(RowKey key) const noexcept {
    const Page* page = pageOf(key);
    return page ? (*page)[static_cast<std::size_t>(key % PageSize)] : nullptr;
}

void StoredObjects::enter(RowKey key, ManagedObject& object) {
    Page* known = pageOf(key);
    Page& page = known ? *known : makePage(key);
    page[static_cast<std::size_t>(key % PageSize)] = &object;
}

void StoredObjects::leave(RowKey key) noexcept {
    if (Page* page = pageOf(key)) (*page)[static_cast<std::size_t>(key % PageSize)] = nullptr;
    laterVersions_.erase(key);
}

void StoredObjects::clear() noexcept {
    pages_.clear();
    farPages_.clear();
    laterVersions_.clear();
}

std::int64_t StoredObjects::version(RowKey key) const noexcept {
    const auto later = laterVersions_.find(key);
    return later == laterVersions_.end() ? 1 : later->second;
}

void StoredObjects::setVersion(RowKey key, std::int64_t version) {
    if (version == 1)
        laterVersions_.erase(key);
    else
        laterVersions_[key] = version;
}

} // namespace estatebook::platform
