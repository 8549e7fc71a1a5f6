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

#include <cstddef>
#include <cstdint>
#include <vector>

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
        /// Where the next text is to be written: at least that many bytes, valid until the next call.
        [[nodiscard]] char* room(std::size_t bytes) {
            if (capacity_ - used_ < bytes + sizeof(Piece*)) [[unlikely]]
                grow(bytes + sizeof(Piece*));
            return memory_ + used_ + sizeof(Piece*);
        }
        /// Ends the text, which is the first `size` bytes of the room. REQUIRES: at most the bytes asked for.
        void append(std::size_t size);

    private:
        friend class StringBlock;
        void grow(std::size_t bytes);

        char* memory_ = nullptr;
        std::size_t capacity_ = 0;
        std::size_t used_ = 0;
        std::size_t characters_ = 0; // where those of the first text are
        std::vector<std::uint32_t> sizes_;
    };

    explicit StringBlock(Builder&& builder);
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

    Piece* piece_ = nullptr;
    String* strings_ = nullptr;
    std::size_t count_ = 0;
};

} // namespace estatebook::platform
