// SPDX-License-Identifier: MIT
#include "support/SavedHistory.hpp"

#include <random>
#include <stdexcept>

namespace estatebook::test {

using namespace platform;

SavedHistory::SavedHistory(std::uint64_t seed, std::size_t saves) {
    MemoryDisk disk;
    disk.log = &operations_;
    const std::string path(HistoryPath);
    const SQLiteStore::Options options{.fileSystem = &disk};
    StoreScript script(seed, StoreScript::Manner::Sound);
    const auto twin = InMemoryStore::make(bookModel());
    const auto demand = [](auto result) {
        if (!result) throw std::runtime_error(result.error().message);
        return *std::move(result);
    };
    const auto enter = [&](std::size_t begun) {
        states_.push_back({begun, operations_.size(), demand(contentOf(*twin))});
    };
    Ref<SQLiteStore> store = demand(SQLiteStore::create(path, bookModel(), options));
    enter(0);
    while (states_.size() <= saves) {
        const StoreChanges changes = script.changes(*twin);
        if (const auto taken = twin->save(changes); !taken || !taken->landed()) continue;
        const std::size_t begun = operations_.size();
        if (!demand(store->save(changes)).landed()) throw std::runtime_error("a conflict");
        enter(begun);
        if (script.below(4) != 0) continue;
        store = nullptr;
        if (script.below(2) == 0) {
            const auto reader = demand(SQLiteStore::open(
                path, bookModel(), {.access = SQLiteStore::Access::Read, .fileSystem = &disk}));
            static_cast<void>(demand(reader->lastKey()));
        }
        store = demand(SQLiteStore::open(path, bookModel(), options));
    }
    store = nullptr;
    disk_ = disk.content();
}

} // namespace estatebook::test
