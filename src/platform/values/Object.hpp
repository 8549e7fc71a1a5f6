// SPDX-License-Identifier: MIT
#pragma once

/// Object: the root of everything that is shared by reference.
///
/// An object carries its own count of references; `Ref<T>` (Ref.hpp) counts for you. There are three
/// ways of counting, chosen once by the class:
///   - Local: plain arithmetic. Model objects and contexts, used on one thread.
///   - Shared: atomic, from the start of the process's second thread on. Immutable values that may outlive a request
///     and be read from any thread.
///   - Immortal: no counting. Constants with static storage.
///
///     Ref<String> name = String::make("Flat 2");   // count 1
///     Ref<String> same = name;                     // count 2, the same object
///
/// Two references are equal when they hold the same object. Equality by value is `isEqual`.

#include "EstateBook_ModelExport.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace estatebook::platform {

namespace detail {
/// Whether no second thread was ever started, as far as the system tells. Then nobody counts at the same time, and
/// plain arithmetic does, which takes a tenth of the time.
inline bool hasOneThread() noexcept {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}
} // namespace detail

enum class Counting : std::uint8_t { Local, Shared, Immortal };

class ESTATEBOOK_API Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    /// Adds a reference.
    void retain() const noexcept {
        if (countsPlainly())
            ++count_;
        else if (counting() == Counting::Shared)
            std::atomic_ref<std::uint32_t>(count_).fetch_add(1, std::memory_order_relaxed);
    }

    /// Drops a reference; the last one disposes of the object.
    void release() const noexcept {
        if (countsPlainly()) {
            if (--count_ == 0) dispose();
        } else if (counting() == Counting::Shared) {
            // Who holds the only reference needs no locked subtraction: nobody else can add one.
            std::atomic_ref<std::uint32_t> count(count_);
            if (count.load(std::memory_order_acquire) == 1 ||
                count.fetch_sub(1, std::memory_order_acq_rel) == 1)
                dispose();
        }
    }

    /// The number of references held at this moment; 0 for an immortal object.
    [[nodiscard]] std::uint32_t referenceCount() const noexcept {
        return std::atomic_ref<std::uint32_t>(count_).load(std::memory_order_acquire);
    }

    /// Equality by value; the same object unless a class says otherwise.
    [[nodiscard]] virtual bool isEqual(const Object& other) const noexcept { return this == &other; }

    /// A hash that agrees with isEqual.
    [[nodiscard]] virtual std::size_t hash() const noexcept;

    /// A short text for logs and messages.
    [[nodiscard]] virtual std::string description() const;

    /// The name under which the class is known at run time.
    [[nodiscard]] virtual std::string_view runtimeClassName() const noexcept;

protected:
    constexpr explicit Object(Counting counting) noexcept
        : placement_(static_cast<std::uint32_t>(counting)) {}
    /// An object that its maker holds already: the one reference is taken over with `Ref::adopt`.
    struct Held {};
    constexpr Object(Counting counting, Held) noexcept
        : count_(1), placement_(static_cast<std::uint32_t>(counting)) {}
    virtual ~Object() = default;

    /// Called once, when the last reference is dropped. Classes whose objects can live side by side in one
    /// block of memory (ObjectBlock.hpp) replace it.
    virtual void dispose() const noexcept;

    // For the classes whose objects can stand so:
    static constexpr std::uint32_t MaximalPlaceInBlock = (1u << 30) - 2;
    /// 1 + the index within the block the object stands in; 0 for an object of its own.
    [[nodiscard]] std::uint32_t placeInBlock() const noexcept { return placement_ >> CountingBits; }
    /// Has the object stand there, held by a first reference that is taken over with `Ref::adopt`.
    void standInBlock(std::uint32_t place) noexcept {
        count_ = 1;
        placement_ = (placement_ & ((1u << CountingBits) - 1)) | (place << CountingBits);
    }

private:
    template <class T>
    friend class ObjectBlock;

    static constexpr std::uint32_t CountingBits = 2;

    [[nodiscard]] Counting counting() const noexcept {
        return static_cast<Counting>(placement_ & ((1u << CountingBits) - 1));
    }
    [[nodiscard]] bool countsPlainly() const noexcept {
        return counting() == Counting::Local || (counting() == Counting::Shared && detail::hasOneThread());
    }

    mutable std::uint32_t count_ = 0;
    std::uint32_t placement_;
};

} // namespace estatebook::platform
