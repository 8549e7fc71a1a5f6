// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: what a context knows of the rows in its store: which object stands for which row, in which version it
/// was read, and which property stands at which place of a row.

#include "platform/persistence/ManagedObject.hpp"
#include "platform/persistence/store/Store.hpp"

#include <array>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

namespace estatebook::platform {

/// The places of an entity's rows, as properties of its objects.
struct StoredProperties {
    const RowShape* shape = nullptr;
    /// Null at the places of transient attributes.
    std::vector<const ModelledProperty*> attributes;
    std::vector<const ModelledProperty*> links;
    std::vector<const ModelledProperty*> toMany;
    /// No other entity inherits from it, so that a key alone tells what object to make.
    bool isLeaf = true;
};

class StoredObjects {
public:
    explicit StoredObjects(Ref<Store> store);

    [[nodiscard]] Store& store() const noexcept { return *store_; }
    [[nodiscard]] const StoredProperties& properties(const EntityDescription& entity) const noexcept {
        return properties_[entity.index()];
    }

    /// Null when no object stands for the row yet.
    [[nodiscard]] ManagedObject* find(RowKey key) const noexcept;
    void enter(RowKey key, ManagedObject& object);
    void leave(RowKey key) noexcept;
    void clear() noexcept;

    /// As it was last read or saved.
    [[nodiscard]] std::int64_t version(RowKey key) const noexcept;
    void setVersion(RowKey key, std::int64_t version);

private:
    // Keys are dense as a rule, so that a row takes one pointer; a file that lies about them takes no more than it has rows,
    // and a fixed number of places beside them.
    static constexpr RowKey PageSize = 256;
    static constexpr RowKey MostPlaces = 1 << 16;
    using Page = std::array<ManagedObject*, PageSize>;

    [[nodiscard]] Page* pageOf(RowKey key) const noexcept;
    [[nodiscard]] Page& makePage(RowKey key);

    Ref<Store> store_;
    std::vector<StoredProperties> properties_;
    /// By their places; those beyond the last in the map.
    std::vector<std::unique_ptr<Page>> pages_;
    std::unordered_map<RowKey, std::unique_ptr<Page>> farPages_;
    /// Those beyond the first: most rows are never changed.
    std::unordered_map<RowKey, std::int64_t> laterVersions_;
};

} // namespace estatebook::platform
