// SPDX-License-Identifier: MIT
#pragma once

/// StringBlock: texts that are made together, in one piece of memory, each a String counted by itself.
///
/// Many short texts that live and die together cost two allocations in place of one each. A text that somebody
/// holds longer keeps the piece until it is let go.
///
///     StringBlock::Builder builder(2);
///     std::memcpy(builder.room(5), "first", 5);
///     builder.append(5);
///     …
///     StringBlock block(std::move(builder));
///     Ref<String> first = block[0];
///
/// A finished block may be read from any thread.

#include "platform/values/String.hpp"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

namespace estatebook::platform {

class ESTATEBOOK_API StringBlock {
    struct Piece;

public:
    /// Makes the texts one after another in the place where they stay.
    class ESTATEBOOK_API Builder {
    public:
        /// For at most that many texts.
        explicit Builder(std::size_t count);
        Builder(const Builder&) = delete;
        Builder& operator=(const Builder&) = delete;
        ~Builder();
        /// Where the next text is to be written: at least that many bytes, valid until the next call. The characters of the
        /// texts before stand right before it.
        [[nodiscard]] char* room(std::size_t bytes) {
            if (static_cast<std::size_t>(end_ - next_) < bytes) [[unlikely]]
                grow(bytes);
            return next_;
        }
        /// Ends the text, which is the first `size` bytes of the room. REQUIRES: at most the bytes asked for.
        void append(std::size_t size) {
            assert(count_ < capacity_ && size <= static_cast<std::size_t>(end_ - next_));
            if (size > std::numeric_limits<std::uint32_t>::max()) [[unlikely]]
                refuseSize();
            make(next_, static_cast<std::uint32_t>(size));
            next_ += size;
        }

    private:
        friend class StringBlock;
        [[noreturn]] static void refuseSize();
        void allocate(std::size_t bytesOfCharacters);
        void grow(std::size_t bytes);
        void make(const char* text, std::uint32_t size) noexcept {
            auto* const string = new (strings_ + count_) String(String::Counted{}, text, size);
            string->standInBlock(static_cast<std::uint32_t>(++count_));
        }

        Piece* piece_ = nullptr;
        String* strings_ = nullptr;
        std::size_t count_ = 0;
        std::size_t capacity_;
        // The characters: all there is room for, and where those of the next text go.
        char* characters_ = nullptr;
        char* next_ = nullptr;
        char* end_ = nullptr;
    };

    explicit StringBlock(Builder&& builder) noexcept;
    StringBlock(const StringBlock&) = delete;
    StringBlock& operator=(const StringBlock&) = delete;
    ~StringBlock();

    [[nodiscard]] std::size_t count() const noexcept { return count_; }
    /// REQUIRES: index < count().
    [[nodiscard]] Ref<String> operator[](std::size_t index) const noexcept {
        return Ref<String>(strings_ + index);
    }

private:
    friend class String;
    /// A string of a block has ended.
    static void endString(const String& string) noexcept;

    Piece* piece_;
    String* strings_;
    std::size_t count_;
};

} // namespace estatebook::platform
