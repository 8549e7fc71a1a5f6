// SPDX-License-Identifier: MIT
#include "platform/persistence/PersistentStoreCoordinator.hpp"

#include "platform/persistence/store/InMemoryStore.hpp"
#include "platform/persistence/store/sqlite/SQLiteStore.hpp"

#include <cassert>
#include <utility>

namespace estatebook::platform {

namespace {

StoreError refusal(const std::string& location, std::string message) {
    return {StoreErrorCode::Unsupported, location, std::move(message)};
}

StoreResult<Ref<SQLiteStore>> openBook(const std::string& path, const Ref<ManagedObjectModel>& model,
                                       const PersistentStoreOptions& options) {
    using Access = SQLiteStore::Access;
    const SQLiteStore::Options opening{.access = options.isReadOnly ? Access::Read : Access::Write,
                                       .classes = options.classes,
                                       .holder = options.holder,
                                       .patience = options.patience};
    auto opened = SQLiteStore::open(path, model, opening);
    const bool isMissing = !opened && opened.error().code == StoreErrorCode::Missing;
    if (!isMissing || options.isReadOnly || !options.createsMissing) return opened;
    return SQLiteStore::create(path, model, opening);
}

StoreResult<Ref<Store>> open(std::string_view type, const std::string& location,
                             const Ref<ManagedObjectModel>& model, const PersistentStoreOptions& options) {
    if (!model) return refusal(location, "A store needs an object model, and the coordinator has none");
    if (type == "InMemory") return Ref<Store>(InMemoryStore::make(model));
    if (type != "SQLite")
        return refusal(location, "There is no type of stores \"" + std::string(type) +
                                     "\". Use \"SQLite\" or \"InMemory\".");
    auto book = openBook(location, model, options);
    if (!book) return book.error();
    return Ref<Store>(std::move(*book));
}

} // namespace

PersistentStoreCoordinator::PersistentStoreCoordinator(Ref<ManagedObjectModel> model) noexcept
    : Object(Counting::Local), model_(std::move(model)) {}

PersistentStoreCoordinator::~PersistentStoreCoordinator() = default;

Ref<Store> PersistentStoreCoordinator::addPersistentStore(std::string_view type, const std::string& location,
                                                          const PersistentStoreOptions& options,
                                                          Ref<Error>* error) {
    auto opened = store_ ? StoreResult<Ref<Store>>(refusal(
                               location, "The coordinator has a store already, and takes no second one"))
                         : open(type, location, model_, options);
    if (!opened) {
        if (error) *error = opened.error().asError();
        return nullptr;
    }
    store_ = *std::move(opened);
    return store_;
}

void PersistentStoreCoordinator::addPersistentStore(Ref<Store> store) {
    assert(!store_ && store && &store->model() == model_.get());
    store_ = std::move(store);
}

} // namespace estatebook::platform
