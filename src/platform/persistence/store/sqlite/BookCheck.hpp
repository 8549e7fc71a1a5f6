// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: BookCheck: compares everything in a book file that must agree.

#include "platform/persistence/store/sqlite/BookFile.hpp"

#include <string>
#include <unordered_map>
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
    void checkForm(const SealedTable& table, const Cells& cells);
    void checkArchives(const EntityTable& table, const Cells& cells, const Row& row);
    void checkPlaces(const EntityTable& table);
    void checkKeys();
    void checkIdentifiers();

    BookFile& file_;
    std::vector<std::string> findings_;
};

} // namespace estatebook::platform::sqlite
