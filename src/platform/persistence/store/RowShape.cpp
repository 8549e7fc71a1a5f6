// SPDX-License-Identifier: MIT
#include "platform/persistence/store/RowShape.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"

#include <algorithm>
#include <cassert>

namespace estatebook::platform {

namespace {

template <class Items, class Matches>
std::optional<std::size_t> placeOf(const Items& items, Matches matches) {
    const auto found = std::ranges::find_if(items, matches);
    if (found == items.end()) return std::nullopt;
    return static_cast<std::size_t>(found - items.begin());
}

} // namespace

RowShape::RowShape(const EntityDescription& entity) : entity_(&entity), root_(&entity) {
    while (root_->superentity()) root_ = root_->superentity();
    for (const RelationshipDescription& relationship : entity.relationships()) {
        if (relationship.kind != PropertyKind::ToOne) continue;
        const auto* back = relationship.destinationEntity->relationship(relationship.inverse);
        links_.push_back({&relationship, back->kind == PropertyKind::OrderedToMany});
    }
}

std::optional<std::size_t> RowShape::attribute(Key name) const noexcept {
    return placeOf(entity_->attributes(), [&](const auto& each) { return each.name == name; });
}

std::optional<std::size_t> RowShape::link(Key name) const noexcept {
    return placeOf(links_, [&](const auto& each) { return each.relationship->name == name; });
}

Row RowShape::emptyRow(RowKey key) const {
    return {.key = key,
            .entity = entity_,
            .values = std::vector<Value>(entity_->attributes().size()),
            .links = std::vector<RowLink>(links_.size())};
}

RowShapes::RowShapes(const ManagedObjectModel& model) {
    shapes_.reserve(model.entities().size());
    for (const auto& entity : model.entities()) shapes_.emplace_back(*entity);
}

std::size_t RowShapes::linkToOwner(const RelationshipDescription& toMany) const noexcept {
    const auto links = of(*toMany.destinationEntity).links();
    const auto found = std::ranges::find_if(
        links, [&](const StoredLink& each) { return each.relationship->name == toMany.inverse; });
    assert(found != links.end());
    return static_cast<std::size_t>(found - links.begin());
}

} // namespace estatebook::platform
