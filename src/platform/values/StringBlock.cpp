// SPDX-License-Identifier: MIT
#include "platform/values/StringBlock.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace estatebook::platform {

/// In memory: the piece, the strings side by side, then the characters of all.
struct StringBlock::Piece {
    // The block's hold on the memory, and one for each string that outlives it.
    std::atomic<std::size_t> outliving{1};

    static void release(Piece* piece, std::size_t holds) noexcept {
        if (piece->outliving.fetch_sub(holds, std::memory_order_acq_rel) == holds) ::operator delete(piece);
    }
};

StringBlock::Builder::Builder(std::size_t count) : capacity_(count) {
    constexpr std::size_t OrdinarySize = 64;
    if (count > String::MaximalPlaceInBlock) throw std::length_error("StringBlock: too many texts");
    allocate(count * OrdinarySize);
}

StringBlock::Builder::~Builder() {
    ::operator delete(piece_);
}

void StringBlock::Builder::allocate(std::size_t bytesOfCharacters) {
    static_assert(sizeof(Piece) % alignof(String) == 0);
    void* const memory = ::operator new(sizeof(Piece) + capacity_ * sizeof(String) + bytesOfCharacters);
    piece_ = new (memory) Piece;
    strings_ = reinterpret_cast<String*>(piece_ + 1);
    next_ = characters_ = reinterpret_cast<char*>(strings_ + capacity_);
    end_ = characters_ + bytesOfCharacters;
}

void StringBlock::Builder::grow(std::size_t bytes) {
    const auto used = static_cast<std::size_t>(next_ - characters_);
    Piece* const former = piece_;
    const String* const formerStrings = strings_;
    const char* const formerCharacters = characters_;
    allocate(std::max(2 * static_cast<std::size_t>(end_ - characters_), used + bytes));
    std::memcpy(characters_, formerCharacters, used);
    for (const std::size_t count = std::exchange(count_, 0); count_ < count;) {
        make(next_, formerStrings[count_].size_);
        next_ += formerStrings[count_ - 1].size_;
    }
    ::operator delete(former);
}

void StringBlock::Builder::refuseSize() {
    throw std::length_error("String: text over 4 GiB");
}

StringBlock::StringBlock(Builder&& builder) noexcept
    : piece_(std::exchange(builder.piece_, nullptr)), strings_(builder.strings_), count_(builder.count_) {}

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
    const String* const first = &string - (string.placeInBlock() - 1);
    auto* const piece = reinterpret_cast<Piece*>(const_cast<String*>(first)) - 1;
    string.~String();
    Piece::release(piece, 1);
}

} // namespace estatebook::platform
