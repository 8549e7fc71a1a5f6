// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: BookCheck: compares everything in a book file that must agree.

#include "platform/persistence/store/sqlite/BookFile.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace estatebook::platform::sqlite {

class BookCheck {
public:
    explicit BookCheck(BookFile& file) noexcept : file_(file) {}

    /// A line for each thing that is wrong, but no more than a person would read. Throws a StoreFailure when the
    /// file cannot be read at all.
    [[nodiscard]] std::vector<std::string> findings();

private:
    static constexpr std::size_t MostFindings = 100;

    void find(std::string finding);
    void checkPages();
    void checkLinks();
    void checkTable(const SealedTable& table);
    void checkSum(const SealedTable& table, std::int64_t count, std::uint64_t digests);
    void checkForm(const SealedTable& table, const Cells& cells);
    void checkCommit(const Commit& commit);
    /// Past a commit that is damaged.
    void passOver(const Cells& commit) noexcept;
    void checkEntry(std::int64_t number, const JournalEntry& entry);
    void checkArchives(const EntityTable& table, const Cells& cells, const Row& row);
    void checkPlaces(const EntityTable& table);
    void checkKeys();
    void checkIdentifiers();
    void checkSums();

    BookFile& file_;
    std::vector<std::string> findings_;
    /// The last one that was looked at, and the greatest key that was given by then.
    std::int64_t lastCommit_ = 0;
    RowKey lastKey_ = NoRow;
    bool areKeysKnown_ = true;
    /// The commit and key of the entry before.
    std::pair<std::int64_t, RowKey> lastEntry_{};
    /// Of all rows, each with the place of its table.
    std::vector<std::pair<RowKey, std::size_t>> keys_;
};

} // namespace estatebook::platform::sqlite
