// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: Cell: what stands in one column of one row; RowDigest: the seal of a row.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace estatebook::platform::sqlite {

/// The text or data belongs to somebody else.
struct Cell {
    /// Numbered as the data base numbers them.
    enum class Type : std::uint8_t { Integer = 1, Real = 2, Text = 3, Blob = 4, Null = 5 };

    Type type = Type::Null;
    std::int64_t integer = 0;
    double real = 0;
    std::string_view bytes{};

    [[nodiscard]] static Cell of(std::int64_t number) noexcept { return {Type::Integer, number}; }
    [[nodiscard]] static Cell of(double number) noexcept { return {Type::Real, 0, number}; }
    [[nodiscard]] static Cell text(std::string_view text) noexcept { return {Type::Text, 0, 0, text}; }
    [[nodiscard]] static Cell blob(std::string_view bytes) noexcept { return {Type::Blob, 0, 0, bytes}; }
};

/// A sum over a row's cells, in the order of their columns. docs/book-file.md defines it. Each step maps the words one to one,
/// so that damage within one word of a row never leaves its digest as it was.
class RowDigest {
public:
    void add(const Cell& cell) noexcept {
        step(8 * cell.bytes.size() + static_cast<std::uint64_t>(cell.type));
        switch (cell.type) {
        case Cell::Type::Integer:
            step(static_cast<std::uint64_t>(cell.integer));
            break;
        case Cell::Type::Real:
            step(std::bit_cast<std::uint64_t>(cell.real));
            break;
        case Cell::Type::Text:
        case Cell::Type::Blob:
            addBytes(cell.bytes);
            break;
        case Cell::Type::Null:
            break;
        }
    }
    [[nodiscard]] std::int64_t value() const noexcept { return static_cast<std::int64_t>(state_); }

private:
    static constexpr std::uint64_t Factor = 0x9e37'79b9'7f4a'7c15u;

    void step(std::uint64_t word) noexcept {
        state_ = (state_ ^ word) * Factor;
        state_ ^= state_ >> 32;
    }
    void addBytes(std::string_view bytes) noexcept {
        for (; bytes.size() >= sizeof(std::uint64_t); bytes.remove_prefix(sizeof(std::uint64_t)))
            step(wordOf(bytes.substr(0, sizeof(std::uint64_t))));
        if (!bytes.empty()) step(wordOf(bytes));
    }
    /// Of at most eight bytes, little-endian, filled up with zeros.
    static std::uint64_t wordOf(std::string_view bytes) noexcept {
        std::uint64_t word = 0;
        if constexpr (std::endian::native == std::endian::little) {
            if (bytes.size() == sizeof word) return load<std::uint64_t>(bytes.data());
            // Two loads that overlap, since one of any length is a call.
            if (bytes.size() >= sizeof(std::uint32_t)) return twice<std::uint32_t>(bytes);
            if (bytes.size() >= sizeof(std::uint16_t)) return twice<std::uint16_t>(bytes);
        }
        for (std::size_t index = bytes.size(); index-- > 0;)
            word = (word << 8) | static_cast<std::uint8_t>(bytes[index]);
        return word;
    }
    template <class Word>
    static Word load(const char* first) noexcept {
        Word word;
        std::memcpy(&word, first, sizeof word);
        return word;
    }
    /// REQUIRES: as many bytes as one word has, at least, and at most twice as many.
    template <class Word>
    static std::uint64_t twice(std::string_view bytes) noexcept {
        const std::size_t last = bytes.size() - sizeof(Word);
        return load<Word>(bytes.data()) | std::uint64_t{load<Word>(bytes.data() + last)} << (8 * last);
    }

    std::uint64_t state_ = Factor;
};

} // namespace estatebook::platform::sqlite
