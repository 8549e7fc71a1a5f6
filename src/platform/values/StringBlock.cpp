// SPDX-License-Identifier: MIT
#include "platform/values/StringBlock.hpp"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

namespace estatebook::platform {

/// In memory: the piece, the strings side by side, then each string's characters, and before these the piece's address.
struct StringBlock::Piece {
    // The block's hold on the memory, and one for each string that outlives it.
    std::atomic<std::size_t> outliving{1};

    static void release(Piece* piece, std::size_t holds) noexcept {
        if (piece->outliving.fetch_sub(holds, std::memory_order_acq_rel) == holds) ::operator delete(piece);
    }
};

StringBlock::Builder::Builder(std::size_t expectedCount) {
    constexpr std::size_t OrdinarySize = 48;
    sizes_.reserve(expectedCount);
    capacity_ = expectedCount * OrdinarySize;
    characters_ = std::make_unique_for_overwrite<char[]>(capacity_);
}

char* StringBlock::Builder::room(std::size_t bytes) {
    if (capacity_ - used_ < bytes) [[unlikely]] {
        const std::size_t capacity = std::max(2 * capacity_, used_ + bytes);
        auto characters = std::make_unique_for_overwrite<char[]>(capacity);
        if (used_ > 0) std::memcpy(characters.get(), characters_.get(), used_);
        characters_ = std::move(characters);
        capacity_ = capacity;
    }
    return characters_.get() + used_;
}

void StringBlock::Builder::append(std::size_t size) {
    assert(size <= capacity_ - used_);
    if (size > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("String: text over 4 GiB");
    used_ += size;
    sizes_.push_back(static_cast<std::uint32_t>(size));
}

StringBlock::StringBlock(const Builder& builder) : count_(builder.sizes_.size()) {
    static_assert(sizeof(Piece) % alignof(String) == 0);
    const std::size_t strings = sizeof(Piece) + count_ * sizeof(String);
    auto* memory = static_cast<char*>(::operator new(strings + count_ * sizeof(Piece*) + builder.used_));
    piece_ = new (memory) Piece;
    strings_ = reinterpret_cast<String*>(memory + sizeof(Piece));
    const char* source = builder.characters_.get();
    char* target = memory + strings;
    for (std::size_t index = 0; index < count_; ++index) {
        const std::uint32_t size = builder.sizes_[index];
        std::memcpy(target, &piece_, sizeof piece_);
        target += sizeof piece_;
        std::memcpy(target, source, size);
        new (strings_ + index) String(String::Counted{}, target, size);
        source += size;
        target += size;
    }
}

StringBlock::~StringBlock() {
    // All count as outliving at first; those that end here are taken off in one go.
    piece_->outliving.fetch_add(count_, std::memory_order_relaxed);
    std::size_t done = 1;
    for (std::size_t index = 0; index < count_; ++index) {
        if (strings_[index].referenceCount() == 1) {
            strings_[index].~String();
            ++done;
        } else {
            strings_[index].release();
        }
    }
    Piece::release(piece_, done);
}

void StringBlock::endString(const String& string) noexcept {
    Piece* piece = nullptr;
    std::memcpy(&piece, string.view().data() - sizeof piece, sizeof piece);
    string.~String();
    Piece::release(piece, 1);
}

} // namespace estatebook::platform
