// SPDX-License-Identifier: MIT
#include "platform/values/StringBlock.hpp"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace estatebook::platform {

/// In memory: the piece, the strings side by side, then each string's characters, and before these the piece's address.
struct StringBlock::Piece {
    // The block's hold on the memory, and one for each string that outlives it.
    std::atomic<std::size_t> outliving{1};

    static void release(Piece* piece, std::size_t holds) noexcept {
        if (piece->outliving.fetch_sub(holds, std::memory_order_acq_rel) == holds) ::operator delete(piece);
    }
};

StringBlock::Builder::Builder(std::size_t count) {
    constexpr std::size_t OrdinarySize = 64;
    sizes_.reserve(count);
    characters_ = used_ = sizeof(Piece) + count * sizeof(String);
    capacity_ = used_ + count * OrdinarySize;
    memory_ = static_cast<char*>(::operator new(capacity_));
}

StringBlock::Builder::~Builder() {
    ::operator delete(memory_);
}

void StringBlock::Builder::grow(std::size_t bytes) {
    const std::size_t capacity = std::max(2 * capacity_, used_ + bytes);
    auto* memory = static_cast<char*>(::operator new(capacity));
    std::memcpy(memory + characters_, memory_ + characters_, used_ - characters_);
    ::operator delete(memory_);
    memory_ = memory;
    capacity_ = capacity;
}

void StringBlock::Builder::append(std::size_t size) {
    assert(size + sizeof(Piece*) <= capacity_ - used_);
    if (size > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("String: text over 4 GiB");
    used_ += sizeof(Piece*) + size;
    sizes_.push_back(static_cast<std::uint32_t>(size));
}

StringBlock::StringBlock(Builder&& builder) : count_(builder.sizes_.size()) {
    static_assert(sizeof(Piece) % alignof(String) == 0);
    assert(sizeof(Piece) + count_ * sizeof(String) <= builder.characters_);
    char* memory = std::exchange(builder.memory_, nullptr);
    piece_ = new (memory) Piece;
    strings_ = reinterpret_cast<String*>(memory + sizeof(Piece));
    char* text = memory + builder.characters_;
    for (std::size_t index = 0; index < count_; ++index) {
        std::memcpy(text, &piece_, sizeof piece_);
        text += sizeof piece_;
        new (strings_ + index) String(String::Counted{}, text, builder.sizes_[index]);
        text += builder.sizes_[index];
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
