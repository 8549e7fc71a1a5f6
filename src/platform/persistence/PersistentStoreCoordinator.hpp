// SPDX-License-Identifier: MIT
#pragma once

/// PersistentStoreCoordinator: joins a context with an object model, and with the stores that keep its objects.
/// Without a store the objects live in memory only.

#include "platform/persistence/ManagedObjectModel.hpp"

namespace estatebook::platform {

class ESTATEBOOK_API PersistentStoreCoordinator final : public Object {
public:
    /// initWithManagedObjectModel: Null stands for a model without entities.
    explicit PersistentStoreCoordinator(Ref<ManagedObjectModel> model) noexcept
        : Object(Counting::Local), model_(std::move(model)) {}

    [[nodiscard]] const Ref<ManagedObjectModel>& managedObjectModel() const noexcept { return model_; }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "PersistentStoreCoordinator";
    }

private:
    Ref<ManagedObjectModel> model_;
};

} // namespace estatebook::platform
