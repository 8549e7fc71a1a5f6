// SPDX-License-Identifier: MIT
#include "platform/persistence/store/Store.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"

namespace estatebook::platform {

Store::Store(Ref<ManagedObjectModel> model)
    : Object(Counting::Local), model_(std::move(model)), shapes_(model_->derived<RowShapes>()) {}

Store::~Store() = default;

StoreResult<std::vector<Row>> Store::rows(const EntityDescription& entity,
                                          std::span<const RowKey> keys) const {
    std::vector<Row> rows;
    rows.reserve(keys.size());
    const auto visited = visitRows(entity, keys, [&](const Row& row) { rows.push_back(row); });
    if (!visited) return visited.error();
    return rows;
}

StoreError Store::failure(StoreErrorCode code, std::string message) const {
    return {code, std::string(location()), std::move(message)};
}

} // namespace estatebook::platform
