// SPDX-License-Identifier: MIT
#pragma once

/// Key: the name of a property, interned to a small integer; KeySet: a set of keys in two machine words.
///
/// The library's own keys are constants (generated/store/Keys.hpp) with fixed numbers. An application's keys
/// get theirs when they are first named. Strings appear only where a key comes in from outside.
///
///     Key balance = Key::named("balance");
///     balance == keys::balance;
///     balance.name();                // "balance"
///
/// Naming a key is safe from any thread; the number of keys is limited to 65,535.

#include "EstateBook_ModelExport.hpp"

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API Key {
public:
    /// No key.
    constexpr Key() noexcept = default;
    /// REQUIRES: the number of a known key.
    constexpr explicit Key(std::uint16_t number) noexcept : number_(number) {}

    /// The key of this name, made when it is new. The name holds no "." and is not empty (InvalidArgumentException).
    [[nodiscard]] static Key named(std::string_view name);
    /// The key of this name; none when nobody has named it yet.
    [[nodiscard]] static std::optional<Key> find(std::string_view name);

    [[nodiscard]] std::string_view name() const noexcept;
    [[nodiscard]] constexpr std::uint16_t number() const noexcept { return number_; }
    constexpr explicit operator bool() const noexcept { return number_ != 0; }

    friend constexpr bool operator==(Key, Key) noexcept = default;
    friend constexpr auto operator<=>(Key, Key) noexcept = default;

private:
    std::uint16_t number_ = 0;
};

/// Keys of the library have numbers below this, so that tables can be entered by number.
inline constexpr std::size_t SmallKeys = 128;

/// Keys with numbers up to 126 have a bit each; all others share the last one, so that membership of such a
/// key means "perhaps" and its absence means "no".
class KeySet {
public:
    constexpr KeySet() noexcept = default;
    [[nodiscard]] static constexpr KeySet of(std::same_as<Key> auto... keys) noexcept {
        KeySet set;
        (set.insert(keys), ...);
        return set;
    }
    constexpr void insert(Key key) noexcept { words_[word(key)] |= bit(key); }
    constexpr void remove(Key key) noexcept { words_[word(key)] &= ~bit(key); }
    [[nodiscard]] constexpr bool mayContain(Key key) const noexcept {
        return (words_[word(key)] & bit(key)) != 0;
    }
    [[nodiscard]] constexpr bool empty() const noexcept { return (words_[0] | words_[1]) == 0; }
    [[nodiscard]] constexpr KeySet operator&(const KeySet& other) const noexcept {
        KeySet common;
        common.words_[0] = words_[0] & other.words_[0];
        common.words_[1] = words_[1] & other.words_[1];
        return common;
    }
    constexpr void insert(const KeySet& other) noexcept {
        words_[0] |= other.words_[0];
        words_[1] |= other.words_[1];
    }
    /// The one key of the set; no key when there is none, more than one, or one without a bit of its own.
    [[nodiscard]] constexpr Key only() const noexcept {
        const std::uint64_t either = words_[0] | words_[1];
        if ((words_[0] != 0 && words_[1] != 0) || either == 0 || (either & (either - 1)) != 0) return {};
        const auto number = static_cast<std::uint16_t>((words_[0] != 0 ? 0 : 64) + std::countr_zero(either));
        return number == Shared ? Key() : Key(number);
    }
    /// How many keys with smaller numbers are in the set; of a key without a bit of its own, all that have one.
    [[nodiscard]] constexpr std::size_t countBelow(Key key) const noexcept {
        const std::uint64_t below = bit(key) - 1;
        return word(key) == 0 ? bitsIn(words_[0] & below) : bitsIn(words_[0]) + bitsIn(words_[1] & below);
    }
    /// Whether the key has a bit of its own.
    [[nodiscard]] static constexpr bool isExact(Key key) noexcept { return key.number() < Shared; }

private:
    static constexpr std::uint16_t Shared = 127;
    /// As std::popcount, which is a call where the processor at hand is not known to count bits itself.
    static constexpr std::size_t bitsIn(std::uint64_t word) noexcept {
        word -= (word >> 1) & 0x5555'5555'5555'5555u;
        word = (word & 0x3333'3333'3333'3333u) + ((word >> 2) & 0x3333'3333'3333'3333u);
        word = (word + (word >> 4)) & 0x0F0F'0F0F'0F0F'0F0Fu;
        return static_cast<std::size_t>((word * 0x0101'0101'0101'0101u) >> 56);
    }
    static constexpr unsigned place(Key key) noexcept {
        return key.number() < Shared ? key.number() : Shared;
    }
    static constexpr unsigned word(Key key) noexcept { return place(key) >> 6; }
    static constexpr std::uint64_t bit(Key key) noexcept { return std::uint64_t{1} << (place(key) & 63); }
    std::uint64_t words_[2] = {0, 0};
};

} // namespace estatebook::platform

template <>
struct std::hash<estatebook::platform::Key> {
    std::size_t operator()(estatebook::platform::Key key) const noexcept { return key.number(); }
};
