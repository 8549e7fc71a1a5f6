// SPDX-License-Identifier: MIT
#pragma once

/// RowShape: what the places of an entity's rows stand for; RowShapes: the shapes of all entities of a model.
///
///     const RowShapes shapes(*model);
///     const RowShape& shape = shapes.of(*entity);
///     row.values[*shape.attribute(keys::amount)] = Decimal(20);
///     row.links[*shape.link(keys::tenure)] = {tenureKey};

#include "platform/observation/Key.hpp"
#include "platform/persistence/EntityDescription.hpp"
#include "platform/persistence/store/Row.hpp"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace estatebook::platform {

/// A to-one relationship, which a row holds as a link.
struct StoredLink {
    const RelationshipDescription* relationship = nullptr;
    /// Whether the other side is ordered, so that the link has a place.
    bool isPlaced = false;
};

class ESTATEBOOK_API RowShape {
public:
    explicit RowShape(const EntityDescription& entity);

    [[nodiscard]] const EntityDescription& entity() const noexcept { return *entity_; }
    /// The ancestor without a parent, which may be the entity itself.
    [[nodiscard]] const EntityDescription& root() const noexcept { return *root_; }
    [[nodiscard]] std::span<const StoredLink> links() const noexcept { return links_; }
    /// The place of an attribute among a row's values; none when the entity has no such attribute.
    [[nodiscard]] std::optional<std::size_t> attribute(Key name) const noexcept;
    /// The place of a to-one relationship among a row's links.
    [[nodiscard]] std::optional<std::size_t> link(Key name) const noexcept;
    /// A row of this shape without any value.
    [[nodiscard]] Row emptyRow(RowKey key) const;

private:
    const EntityDescription* entity_;
    const EntityDescription* root_;
    std::vector<StoredLink> links_;
};

class ESTATEBOOK_API RowShapes {
public:
    /// REQUIRES: the model outlives it.
    explicit RowShapes(const ManagedObjectModel& model);

    /// REQUIRES: an entity of the model.
    [[nodiscard]] const RowShape& of(const EntityDescription& entity) const noexcept {
        return shapes_[entity.index()];
    }
    /// The place, among a member's links, of the one that leads to the member's owner. REQUIRES: a to-many
    /// relationship of the model.
    [[nodiscard]] std::size_t linkToOwner(const RelationshipDescription& toMany) const noexcept;
    /// In the order of the model's entities.
    [[nodiscard]] std::span<const RowShape> all() const noexcept { return shapes_; }

private:
    std::vector<RowShape> shapes_;
};

} // namespace estatebook::platform
