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
/// objects. Very many of them stand in several pieces of memory, each made when it is needed and just small
/// enough for the allocator to keep it for the next block; one it does not keep costs more to get from
/// the system, page by page, than all else. (bench/StatementBench.cpp)

#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

namespace estatebook::platform {

template <class T>
class ObjectBlock {
public:
    static constexpr std::size_t MaximalCount = Object::MaximalPlaceInBlock;

    ObjectBlock() noexcept = default;
    /// Room for this many objects; none are made yet.
    explicit ObjectBlock(std::size_t capacity) : capacity_(capacity) {
        if (capacity > MaximalCount) throw std::length_error("ObjectBlock: too many objects");
    }
    ObjectBlock(ObjectBlock&& other) noexcept
        : first_(std::exchange(other.first_, nullptr)), more_(std::exchange(other.more_, {})),
          size_(std::exchange(other.size_, 0)), capacity_(std::exchange(other.capacity_, 0)),
          next_(std::exchange(other.next_, nullptr)), end_(std::exchange(other.end_, nullptr)),
          place_(std::exchange(other.place_, 0)) {}
    ObjectBlock& operator=(ObjectBlock&&) = delete;
    ~ObjectBlock() { clear(); }

    template <class... Arguments>
    T& emplace(Arguments&&... arguments) {
        assert(size_ < capacity_);
        if (next_ == end_) [[unlikely]]
            addPiece();
        T* object = new (static_cast<void*>(next_)) T(std::forward<Arguments>(arguments)...);
        ++next_;
        ++size_;
        static_cast<Object*>(object)->standInBlock(++place_);
        return *object;
    }

    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    T& operator[](std::size_t index) const noexcept {
        if (index < PieceCapacity) [[likely]]
            return firstOf(first_)[index];
        return firstOf(more_[index / PieceCapacity - 1])[index % PieceCapacity];
    }

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
    static constexpr std::size_t HeaderSize = sizeof(Header) > alignof(T)
                                                  ? (sizeof(Header) + alignof(T) - 1) / alignof(T) *
                                                        alignof(T)
                                                  : alignof(T);
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

    // The allocator of the C library gives larger pieces back to the system at once (its
    // DEFAULT_MMAP_THRESHOLD_MAX is 32 MiB).
    static constexpr std::size_t LargestPiece = (std::size_t{31} << 20) - HeaderSize;
    static constexpr std::size_t PieceCapacity = LargestPiece / sizeof(T);

    [[nodiscard]] static T* firstOf(Header* piece) noexcept {
        return reinterpret_cast<T*>(reinterpret_cast<std::byte*>(piece) + HeaderSize);
    }

    void addPiece() {
        const std::size_t room = std::min(capacity_ - size_, PieceCapacity);
        if (first_) more_.reserve((capacity_ - 1) / PieceCapacity);
        auto* piece = new (::operator new(HeaderSize + room * sizeof(T))) Header{};
        if (first_)
            more_.push_back(piece);
        else
            first_ = piece;
        next_ = firstOf(piece);
        end_ = next_ + room;
        place_ = 0;
    }

    void clear() noexcept {
        if (first_) clearPiece(first_, std::min(size_, PieceCapacity));
        for (std::size_t piece = 0; piece < more_.size(); ++piece)
            clearPiece(more_[piece], std::min(size_ - (piece + 1) * PieceCapacity, PieceCapacity));
    }

    static void clearPiece(Header* piece, std::size_t count) noexcept {
        // All count as outliving at first; those that end here are taken off in one go.
        piece->outliving.fetch_add(static_cast<std::uint32_t>(count), std::memory_order_relaxed);
        std::uint32_t done = 1;
        for (std::size_t index = 0; index < count; ++index) {
            T& object = firstOf(piece)[index];
            if (object.referenceCount() == 1) {
                object.T::~T();
                ++done;
            } else {
                object.release();
            }
        }
        if (piece->outliving.fetch_sub(done, std::memory_order_acq_rel) == done) ::operator delete(piece);
    }

    Header* first_ = nullptr;
    std::vector<Header*> more_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
    // Where the next object of the last piece goes, the end of that piece, and the objects in it.
    T* next_ = nullptr;
    T* end_ = nullptr;
    std::uint32_t place_ = 0;
};

} // namespace estatebook::platform
