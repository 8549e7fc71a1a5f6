// SPDX-License-Identifier: MIT

// The digest of a row as docs/book-file.md defines it: books that are written already depend on each bit of it.

#include "platform/persistence/store/sqlite/Cell.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace estatebook::platform::sqlite {
namespace {

std::uint64_t digestOf(const std::vector<Cell>& cells) {
    RowDigest digest;
    for (const Cell& cell : cells) digest.add(cell);
    return static_cast<std::uint64_t>(digest.value());
}

/// Word by word, as the page tells it.
std::uint64_t reckoned(const std::vector<std::uint64_t>& words) {
    std::uint64_t state = 0x9e3779b97f4a7c15u;
    for (const std::uint64_t word : words) {
        state = (state ^ word) * 0x9e3779b97f4a7c15u;
        state = state ^ (state >> 32);
    }
    return state;
}

TEST(RowDigestTest, IsWhatThePageSays) {
    EXPECT_EQ(reckoned({5}), digestOf({Cell()}));
    EXPECT_EQ(reckoned({1, 7}), digestOf({Cell::of(std::int64_t{7})}));
    EXPECT_EQ(reckoned({1, ~std::uint64_t{0}}), digestOf({Cell::of(std::int64_t{-1})}));
    EXPECT_EQ(reckoned({2, 0x3ff8000000000000u}), digestOf({Cell::of(1.5)}));
    EXPECT_EQ(reckoned({3}), digestOf({Cell::text("")}));
    EXPECT_EQ(reckoned({8 * 9 + 3, 0x6867666564636261u, 0x69u}), digestOf({Cell::text("abcdefghi")}));
    EXPECT_EQ(reckoned({8 * 2 + 4, 0xff01u}), digestOf({Cell::blob("\x01\xff")}));
    EXPECT_EQ(0xdcb6690b83b5b5cbu, digestOf({Cell::text("copied"), Cell::text("today")}));
}

TEST(RowDigestTest, TakesTextsOfAnyLengthInByEightBytes) {
    std::string text;
    for (int byte = 0; byte < 40; ++byte) {
        std::vector<std::uint64_t> words{8 * text.size() + 3};
        for (std::size_t place = 0; place < text.size(); ++place) {
            if (place % 8 == 0) words.push_back(0);
            words.back() |= std::uint64_t{static_cast<unsigned char>(text[place])} << (8 * (place % 8));
        }
        EXPECT_EQ(reckoned(words), digestOf({Cell::text(text)})) << text.size();
        text += static_cast<char>(0xf7 - 5 * byte);
    }
}

TEST(RowDigestTest, TellsCellsApartWhoseBytesAreTheSame) {
    EXPECT_NE(digestOf({Cell::text("ab"), Cell::text("c")}), digestOf({Cell::text("a"), Cell::text("bc")}));
    EXPECT_NE(digestOf({Cell::text("a")}), digestOf({Cell::blob("a")}));
    EXPECT_NE(digestOf({Cell::text("a")}), digestOf({Cell::text(std::string_view("a\0", 2))}));
    EXPECT_NE(digestOf({Cell()}), digestOf({Cell(), Cell()}));
    EXPECT_NE(digestOf({Cell::of(std::int64_t{0})}), digestOf({Cell::of(0.0)}));
}

TEST(RowDigestTest, NoBitOfARowCanTurnUnseen) {
    const std::string text = "the rent of a flat in a harbour street";
    const std::uint64_t whole = digestOf({Cell::of(std::int64_t{12}), Cell::text(text)});
    for (std::size_t place = 0; place < 8 * text.size(); ++place) {
        std::string damaged = text;
        damaged[place / 8] = static_cast<char>(damaged[place / 8] ^ (1 << (place % 8)));
        EXPECT_NE(whole, digestOf({Cell::of(std::int64_t{12}), Cell::text(damaged)})) << place;
    }
    for (int bit = 0; bit < 64; ++bit) {
        const auto number = static_cast<std::int64_t>(12 ^ (std::uint64_t{1} << bit));
        EXPECT_NE(whole, digestOf({Cell::of(number), Cell::text(text)})) << bit;
    }
}

} // namespace
} // namespace estatebook::platform::sqlite
