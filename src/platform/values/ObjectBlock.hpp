// SPDX-License-Identifier: MIT
#pragma once

/// ObjectBlock<T>: objects of one class side by side in one piece of memory, each still counted by itself.
///
/// A row of periods or the lines of a statement are made together and usually die together. One allocation
/// serves them all; an element that somebody holds longer keeps the block until it is let go.
///
///     ArrayOf<TKPeriod>::Builder row(12);
///     row.emplace(start, end);                       // at most 12 times
///     Ref<ArrayOf<TKPeriod>> periods = std::move(row).finish();
///
/// A class joins by replacing `dispose` with `ObjectBlock<T>::dispose(this)`. A block holds up to 2^30 - 2
/// objects.

#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <atomic>
#include <cassert>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

namespace estatebook::platform {

template <class T>
class ObjectBlock {
public:
    static constexpr std::size_t MaximalCount = (std::size_t{1} << 30) - 2;

    ObjectBlock() noexcept = default;
    /// Room for this many objects; none are made yet.
    explicit ObjectBlock(std::size_t capacity) : capacity_(capacity) {
        if (capacity > MaximalCount) throw std::length_error("ObjectBlock: too many objects");
        if (capacity == 0) return;
        void* memory = ::operator new(HeaderSize + capacity * sizeof(T));
        header_ = new (memory) Header{};
    }
    ObjectBlock(ObjectBlock&& other) noexcept
        : header_(std::exchange(other.header_, nullptr)), size_(std::exchange(other.size_, 0)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    ObjectBlock& operator=(ObjectBlock&&) = delete;
    ~ObjectBlock() { clear(); }

    template <class... Arguments>
    T& emplace(Arguments&&... arguments) {
        assert(size_ < capacity_);
        T* object = new (static_cast<void*>(first() + size_)) T(std::forward<Arguments>(arguments)...);
        ++size_;
        object->count_ = 1;
        object->setPlaceInBlock(static_cast<std::uint32_t>(size_));
        return *object;
    }

    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] T* first() const noexcept {
        return reinterpret_cast<T*>(reinterpret_cast<std::byte*>(header_) + HeaderSize);
    }
    T& operator[](std::size_t index) const noexcept { return first()[index]; }

    /// What a class's `dispose` calls: ends an object that stands alone or in a block.
    static void dispose(const T* object) noexcept {
        const std::uint32_t place = object->placeInBlock();
        if (place == 0) {
            delete object;
            return;
        }
        auto* bytes = reinterpret_cast<std::byte*>(const_cast<T*>(object - (place - 1)));
        auto* header = reinterpret_cast<Header*>(bytes - HeaderSize);
        object->~T();
        if (header->outliving.fetch_sub(1, std::memory_order_acq_rel) == 1) ::operator delete(header);
    }

private:
    struct Header {
        // The owner's hold on the memory, and one for each object that outlives the owner.
        std::atomic<std::uint32_t> outliving{1};
    };
    static constexpr std::size_t HeaderSize =
        sizeof(Header) > alignof(T) ? (sizeof(Header) + alignof(T) - 1) / alignof(T) * alignof(T) : alignof(T);
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

    void clear() noexcept {
        if (!header_) return;
        for (std::size_t index = 0; index < size_; ++index) {
            T& object = first()[index];
            if (object.referenceCount() == 1) {
                object.T::~T();
            } else {
                header_->outliving.fetch_add(1, std::memory_order_relaxed);
                object.release();
            }
        }
        if (header_->outliving.fetch_sub(1, std::memory_order_acq_rel) == 1) ::operator delete(header_);
    }

    Header* header_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace estatebook::platform
