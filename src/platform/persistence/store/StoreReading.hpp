// SPDX-License-Identifier: MIT
#pragma once

/// StoreReading: while one lives, a store keeps its hold on what it reads from, so that each of many reads costs less.
///
///     const StoreReading reading(store);
///     for (const auto& tenure : tenures) total += tenure->balance();
///
/// The trap: whoever else wants to save the book waits for it. Let it go after a fraction of a second.

#include "platform/persistence/store/Store.hpp"
#include "platform/values/Ref.hpp"

#include <utility>

namespace estatebook::platform {

class StoreReading {
public:
    /// Of no store: nothing is held.
    explicit StoreReading(Ref<Store> store) noexcept : store_(std::move(store)) {
        if (store_) store_->beginReading();
    }
    ~StoreReading() {
        if (store_) store_->endReading();
    }
    StoreReading(const StoreReading&) = delete;
    StoreReading& operator=(const StoreReading&) = delete;

private:
    Ref<Store> store_;
};

} // namespace estatebook::platform
