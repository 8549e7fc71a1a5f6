// SPDX-License-Identifier: MIT
#pragma once

/// Inner header of observing: WeakReference, an observable object that may be gone.

#include <cstdint>
#include <utility>

namespace estatebook::platform {

class ObservableObject;

/// Where a dying object leaves word that it is gone.
struct WeakBlock {
    explicit WeakBlock(ObservableObject& living) noexcept : object(&living) {}
    void hold() noexcept { ++holders; }
    void letGo() noexcept {
        if (--holders == 0) delete this;
    }

    ObservableObject* object;
    std::uint32_t holders = 1; // the object itself
};

class WeakReference {
public:
    WeakReference() = default;
    explicit WeakReference(ObservableObject& object);
    WeakReference(const WeakReference& other) noexcept : block_(other.block_) {
        if (block_) block_->hold();
    }
    WeakReference(WeakReference&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    WeakReference& operator=(WeakReference other) noexcept {
        std::swap(block_, other.block_);
        return *this;
    }
    ~WeakReference() {
        if (block_) block_->letGo();
    }

    /// The object, or null when it is gone or there never was one.
    [[nodiscard]] ObservableObject* get() const noexcept { return block_ ? block_->object : nullptr; }
    /// What stands for the object, also when it is gone.
    [[nodiscard]] WeakBlock* block() const noexcept { return block_; }
    /// Gives the hold away without letting go.
    [[nodiscard]] WeakBlock* detach() noexcept { return std::exchange(block_, nullptr); }
    /// Takes over a hold.
    [[nodiscard]] static WeakReference adopt(WeakBlock* block) noexcept {
        WeakReference reference;
        reference.block_ = block;
        return reference;
    }

private:
    WeakBlock* block_ = nullptr;
};

} // namespace estatebook::platform
