// SPDX-License-Identifier: MIT
#pragma once

/// PersistentStoreCoordinator: joins a context with an object model, and with the store that keeps its objects.
/// Without a store the objects live in memory only, and end with their context.
///
///     Ref<Error> error;
///     if (!coordinator->addPersistentStore("SQLite", "harbour.estatebook", {}, &error)) return show(error);

#include "platform/archive/ArchivedClass.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/StoreChanges.hpp"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {

class Store;

struct PersistentStoreOptions {
    bool isReadOnly = false;
    /// Whether a store that is not there yet is made. One that is read only never is.
    bool createsMissing = true;
    /// The classes, beside the platform's own, of objects in attributes.
    std::vector<ArchivedClass> classes{};
    /// Told to others who want to write meanwhile.
    CommitOrigin holder{};
    /// How long a save waits for those who read, and an opening for a save.
    std::chrono::milliseconds patience{10'000};
};

class ESTATEBOOK_API PersistentStoreCoordinator final : public Object {
public:
    /// initWithManagedObjectModel: Null stands for a model without entities.
    explicit PersistentStoreCoordinator(Ref<ManagedObjectModel> model) noexcept;

    [[nodiscard]] const Ref<ManagedObjectModel>& managedObjectModel() const noexcept { return model_; }

    /// The types are "InMemory", of which the location names nothing, and "SQLite", whose location is a path. Null on failure,
    /// with the reason, a StoreErrorCode of the domain "Persistence", stored through `error` unless that is null. A coordinator
    /// has one store: a second one is refused. REQUIRES: no object of a context on this coordinator was saved before.
    Ref<Store> addPersistentStore(std::string_view type, const std::string& location,
                                  const PersistentStoreOptions& options = {}, Ref<Error>* error = nullptr);
    /// The same with a store that is open. REQUIRES: no store yet, and one of the same model.
    void addPersistentStore(Ref<Store> store);
    /// Null when there is none.
    [[nodiscard]] const Ref<Store>& persistentStore() const noexcept { return store_; }

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override {
        return "PersistentStoreCoordinator";
    }

private:
    ~PersistentStoreCoordinator() override;

    Ref<ManagedObjectModel> model_;
    Ref<Store> store_;
};

} // namespace estatebook::platform
