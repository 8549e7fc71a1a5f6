// SPDX-License-Identifier: MIT
#include "platform/observation/Key.hpp"

#include "platform/observation/KeyVocabulary.hpp"
#include "platform/values/Exception.hpp"

#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace estatebook::platform {

namespace {

/// What tells one short name from all others: its length and two words that cover up to 16 characters. Of a longer name
/// they are the beginning and the end.
struct Print {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::size_t size = 0;

    static constexpr std::size_t Covered = 16;

    explicit Print(std::string_view name) noexcept : size(name.size()) {
        if (size >= 8) {
            first = word<std::uint64_t>(name.data());
            last = word<std::uint64_t>(name.data() + size - 8);
        } else if (size >= 4) {
            first = word<std::uint32_t>(name.data());
            last = word<std::uint32_t>(name.data() + size - 4);
        } else if (size > 0) {
            first = static_cast<std::uint8_t>(name.front()) |
                    std::uint64_t{static_cast<std::uint8_t>(name.back())} << 8;
            last = static_cast<std::uint8_t>(name[size / 2]);
        }
    }
    [[nodiscard]] std::size_t hash() const noexcept {
        constexpr std::uint64_t Odd = 0x9E37'79B9'7F4A'7C15u;
        return static_cast<std::size_t>(((first ^ std::rotl(last, 29) ^ size) * Odd) >> 32);
    }

    friend bool operator==(const Print& a, const Print& b) noexcept {
        return ((a.first ^ b.first) | (a.last ^ b.last) | (a.size ^ b.size)) == 0;
    }

private:
    template <class Word>
    static Word word(const char* characters) noexcept {
        Word word;
        std::memcpy(&word, characters, sizeof word);
        return word;
    }
};

struct Row {
    Print print{{}};
    std::atomic<std::uint16_t> number{0}; // written last; 0 while the row is free
};

/// Rows by the hash of their names: a power of two of them, three of four free at the least.
struct Rows {
    explicit Rows(std::size_t count) : rows(std::make_unique<Row[]>(count)), last(count - 1) {}

    [[nodiscard]] const Row& at(std::size_t place) const noexcept { return rows[place & last]; }

    std::unique_ptr<Row[]> rows;
    std::size_t last;
    std::size_t used = 0;
};

/// What readers read. It is there once a key was named by its text.
constinit std::atomic<const Rows*> currentRows = nullptr;

/// All names. Many threads read them without waiting, also while one adds some: what is outgrown is kept for
/// those who are still reading it.
class KeyTable {
public:
    static KeyTable& shared() {
        static auto* table = new KeyTable; // outlives every static object that may still name a key
        return *table;
    }

    /// The number of a name that its print covers; 0 when it is not in the first place where it would be. Most stand
    /// there.
    [[nodiscard, gnu::always_inline]] static inline std::uint16_t findAtOnce(std::string_view name) noexcept {
        const Rows* rows = currentRows.load(std::memory_order_acquire);
        if (!rows || name.size() > Print::Covered) return 0;
        const Print print(name);
        const Row& row = rows->at(print.hash());
        const std::uint16_t number = row.number.load(std::memory_order_acquire);
        return row.print == print ? number : std::uint16_t{0};
    }

    /// 0 when there is no such name.
    [[nodiscard]] static std::uint16_t find(std::string_view name) noexcept {
        shared();
        const Print print(name);
        const Rows& rows = *currentRows.load(std::memory_order_acquire);
        for (std::size_t place = print.hash();; ++place) {
            const Row& row = rows.at(place);
            if (const std::uint16_t number = numberIn(row, print, name)) return number;
            if (row.number.load(std::memory_order_relaxed) == 0) return 0;
        }
    }

    std::uint16_t add(std::string_view name) {
        const std::lock_guard lock(mutex_);
        if (const std::uint16_t known = find(name)) return known;
        const std::size_t number = libraryKeyCount + added_;
        if (number > std::numeric_limits<std::uint16_t>::max())
            throw InvalidArgumentException("there are too many keys to name \"" + std::string(name) + "\"");
        keepName(name);
        enter(name, static_cast<std::uint16_t>(number));
        return static_cast<std::uint16_t>(number);
    }

    [[nodiscard]] std::string_view addedName(std::size_t index) const noexcept {
        const std::string* chunk = chunks_[index / ChunkSize].load(std::memory_order_acquire);
        return chunk ? std::string_view(chunk[index % ChunkSize]) : std::string_view();
    }

private:
    /// The number of the row if it is the name's.
    [[nodiscard, gnu::always_inline]] static inline std::uint16_t numberIn(const Row& row, const Print& print,
                                                                           std::string_view name) noexcept {
        const std::uint16_t number = row.number.load(std::memory_order_acquire);
        if (number == 0 || !(row.print == print)) return 0;
        return name.size() <= Print::Covered || nameOf(Key(number)) == name ? number : std::uint16_t{0};
    }

    KeyTable() {
        grow(std::bit_ceil(8 * libraryKeyCount));
        for (std::size_t number = 1; number < libraryKeyCount; ++number)
            enter(libraryKeyNames[number], static_cast<std::uint16_t>(number));
        publish();
    }

    void enter(std::string_view name, std::uint16_t number) {
        if (4 * all_.back()->used > all_.back()->last) {
            grow(2 * (all_.back()->last + 1));
            publish();
        }
        put(*all_.back(), Print(name), number);
    }

    void grow(std::size_t count) {
        auto grown = std::make_unique<Rows>(count);
        if (!all_.empty())
            for (std::size_t place = 0; place <= all_.back()->last; ++place) {
                const Row& row = all_.back()->rows[place];
                if (const auto number = row.number.load(std::memory_order_relaxed))
                    put(*grown, row.print, number);
            }
        all_.push_back(std::move(grown));
    }

    void publish() { currentRows.store(all_.back().get(), std::memory_order_release); }

    static void put(Rows& rows, const Print& print, std::uint16_t number) {
        std::size_t place = print.hash() & rows.last;
        while (rows.rows[place].number.load(std::memory_order_relaxed) != 0) place = (place + 1) & rows.last;
        rows.rows[place].print = print;
        rows.rows[place].number.store(number, std::memory_order_release);
        ++rows.used;
    }

    void keepName(std::string_view name) {
        std::atomic<std::string*>& chunk = chunks_[added_ / ChunkSize];
        std::string* names = chunk.load(std::memory_order_relaxed);
        if (!names) names = new std::string[ChunkSize];
        names[added_++ % ChunkSize] = name;
        chunk.store(names, std::memory_order_release);
    }

    static constexpr std::size_t ChunkSize = 256;

    std::mutex mutex_;
    std::vector<std::unique_ptr<Rows>> all_;
    std::array<std::atomic<std::string*>, 256> chunks_{};
    std::size_t added_ = 0;
};

} // namespace

namespace {

[[gnu::noinline]] Key findOrMake(std::string_view name) {
    if (const std::uint16_t known = KeyTable::find(name)) return Key(known);
    if (name.empty() || name.find('.') != std::string_view::npos)
        throw InvalidArgumentException("\"" + std::string(name) +
                                       "\" is no key: it is empty or holds a point");
    return Key(KeyTable::shared().add(name));
}

} // namespace

Key Key::named(std::string_view name) {
    if (const std::uint16_t known = KeyTable::findAtOnce(name)) return Key(known);
    return findOrMake(name);
}

std::optional<Key> Key::find(std::string_view name) {
    const std::uint16_t known = KeyTable::find(name);
    return known ? std::optional(Key(known)) : std::nullopt;
}

std::string_view Key::name() const noexcept {
    if (number_ < libraryKeyCount) return libraryKeyNames[number_];
    return KeyTable::shared().addedName(number_ - libraryKeyCount);
}

} // namespace estatebook::platform
