// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: BookSalvage: reads what can be read of a damaged book, and writes it into a new one.

#include "platform/persistence/store/sqlite/BookCopies.hpp"
#include "platform/persistence/store/sqlite/BookFile.hpp"
#include "platform/persistence/store/sqlite/EarlierForm.hpp"
#include "platform/persistence/store/sqlite/SalvagedHistory.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace estatebook::platform::sqlite {

class BookSalvage {
public:
    BookSalvage(const FileSystem& files, const Ref<ManagedObjectModel>& model,
                const SQLiteStore::Options& options);

    /// Reads all that can be read; never fails for damage.
    void read(const std::string& path);
    /// Makes what was read agree with itself, and writes it into an empty book.
    void write(const std::string& path);
    [[nodiscard]] Salvage result(std::string path) &&;

private:
    using Rows = SalvagedHistory::Rows;
    static constexpr std::size_t MostLines = 1000;

    void lose(std::string what);
    /// Finds out how rows stand in the book; as they do today when nothing can be found out.
    void learnForm(Connection& connection, std::uint32_t layout);
    /// The table as it stands in the book; null when there is none yet.
    [[nodiscard]] const SealedTable* storedAs(const SealedTable& table) const noexcept;
    void readTable(Connection& connection, const SealedTable& table);
    /// Tells how many rows there were, if that still can be read.
    void compareCount(Connection& connection, const SealedTable& table);
    /// From that row number on; gives where to go on after trouble, or none at the end.
    [[nodiscard]] std::optional<std::int64_t> readFrom(Connection& connection, const SealedTable& table,
                                                       std::int64_t first);
    [[nodiscard]] std::optional<std::int64_t> firstReadableFrom(Connection& connection,
                                                                const SealedTable& table, std::int64_t first);
    void take(const SealedTable& table, const SealedTable& stored, std::int64_t number,
              const Statement::Use& row);
    /// Has each value stand in the form in which it is written.
    void writeAnew(const SealedTable& table, Cells& cells);
    /// Names the entries of the metadata that are lost, as far as the index over their names tells.
    void nameLostEntries(Connection& connection);
    void dropDoubles();
    void cutLinks();
    void countPlaces();
    void dropOrphans();
    void mendHistory();

    const FileSystem& files_;
    Ref<ManagedObjectModel> model_;
    const SQLiteStore::Options& options_;
    /// Tells how rows stand in a book.
    std::unique_ptr<BookFile> form_;
    /// None for a book that is damaged beyond that.
    std::unique_ptr<EarlierForm> stored_;
    const BookTables& tables_;
    CellRoom room_;
    std::unordered_map<const SealedTable*, Rows> rows_;
    /// How many rows are none any more in today's layout.
    std::unordered_map<const SealedTable*, std::int64_t> dropped_;
    std::vector<std::string> lost_;
    std::vector<std::string> lostEntries_;
    /// The names of entries of the metadata that were read, as they stand in the book.
    std::set<std::string, std::less<>> readEntries_;
    std::size_t unlisted_ = 0;
};

} // namespace estatebook::platform::sqlite
