// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: BookFile: an open book file, its tables and how rows stand in them.

#include "platform/persistence/store/StoreJournal.hpp"
#include "platform/persistence/store/WriterLock.hpp"
#include "platform/persistence/store/sqlite/BookTables.hpp"
#include "platform/persistence/store/sqlite/CellCoding.hpp"
#include "platform/persistence/store/sqlite/Connection.hpp"
#include "platform/persistence/store/sqlite/LayoutSteps.hpp"
#include "platform/persistence/store/sqlite/SQLiteStore.hpp"

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace estatebook::platform::sqlite {

using Cells = std::vector<Cell>;

[[nodiscard]] std::int64_t digestOf(std::span<const Cell> cells) noexcept;

void insertSealed(Connection& connection, const SealedTable& table, std::span<const Cell> cells);

/// What the options say of them.
[[nodiscard]] LayoutSteps stepsOf(const SQLiteStore::Options& options) noexcept;

/// The layout of a book. Throws a StoreFailure unless the file begins as one of this or an earlier layout does.
[[nodiscard]] std::uint32_t requireHead(const FileSystem& files, const std::string& path);
/// Throws a StoreFailure unless the file is as long as it says. REQUIRES: nobody writes it: what a writer left unfinished has been
/// taken back by now.
void requireSize(const FileSystem& files, const std::string& path);
/// The file that is meant, absolute and without symbolic links. Throws a StoreFailure when there is none.
[[nodiscard]] std::string resolved(const FileSystem& files, const std::string& path);

/// The identifier of a book. Throws a StoreFailure unless it has just one header.
[[nodiscard]] std::string identifierIn(Connection& connection, const SealedTable& header);

class BookFile {
public:
    /// Both throw a StoreFailure, or the error of a lock that is taken, as the operations of the store tell.
    [[nodiscard]] static std::unique_ptr<BookFile>
    create(const std::string& path, Ref<ManagedObjectModel> model, const SQLiteStore::Options& options);
    [[nodiscard]] static std::unique_ptr<BookFile>
    open(const std::string& path, Ref<ManagedObjectModel> model, const SQLiteStore::Options& options);

    /// One that is not opened, and only tells how rows stand in it.
    [[nodiscard]] static std::unique_ptr<BookFile> closed(Ref<ManagedObjectModel> model,
                                                          const SQLiteStore::Options& options);
    /// A new, empty book at a path where nothing is.
    static void lay(const FileSystem& files, const std::string& path, const BookTables& tables,
                    const ManagedObjectModel& model);
    /// The same in a file that is open, and empty.
    static void lay(Connection& connection, const BookTables& tables, const ManagedObjectModel& model,
                    std::string_view identifier);

    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    [[nodiscard]] const std::string& identifier() const noexcept { return identifier_; }
    [[nodiscard]] bool isWritable() const noexcept { return lock_.has_value(); }
    /// What was done to it when it was opened.
    [[nodiscard]] const std::optional<SQLiteStore::Migration>& migration() const noexcept {
        return migration_;
    }
    [[nodiscard]] const RowShapes& shapes() const noexcept { return shapes_; }
    [[nodiscard]] const BookTables& tables() const noexcept { return tables_; }
    [[nodiscard]] const CellCoding& coding() const noexcept { return coding_; }

    /// Opened again when it was given up.
    [[nodiscard]] Connection& connection();
    /// The same, for somebody who begins a transaction.
    [[nodiscard]] Connection& connectionForWriting();
    /// Reads in between keep the file's lock from one to the next. Calls nest.
    void beginReading() noexcept;
    void endReading() noexcept;
    /// After trouble of which nobody knows what it left.
    void giveUp() noexcept {
        reading_.reset();
        connection_.reset();
        isInDoubt_ = true;
    }
    /// What is in the file now was told to the disk by a commit that succeeded.
    void beSure() noexcept { isInDoubt_ = false; }

    /// The cells of the present row of a sealed table, compared with their digest.
    static void read(const Statement::Use& row, const SealedTable& table, Cells& cells);
    /// The row whose first column is this, with the bytes in the room.
    [[nodiscard]] std::optional<Cells> find(const SealedTable& table, const Cell& first, CellRoom& room);

    /// Throws a StoreFailure for cells that no row of the table has, the digest being as it is.
    void requireForm(const SealedTable& table, std::span<const Cell> cells) const;
    /// Makes of cells what they stand for.
    void decode(const EntityTable& table, std::span<const Cell> cells, Row& row) const;
    /// The entity whose rows name it by this number, in a table or anywhere.
    [[nodiscard]] const EntityDescription& entityOf(std::int64_t number, const EntityTable* table) const;
    [[nodiscard]] Commit decodeCommit(std::span<const Cell> cells) const;
    [[nodiscard]] JournalEntry decodeEntry(std::span<const Cell> cells) const;
    /// As what the journal keeps the property; none for a property that the entity does not have.
    [[nodiscard]] std::optional<AttributeType> typeOf(const EntityDescription& entity,
                                                      std::string_view property) const;

    /// Throws a StoreFailure, too, when there is a row beyond it: its key would be given again.
    [[nodiscard]] RowKey lastKey();
    [[nodiscard]] std::int64_t lastCommit();
    /// Whether the save of this token is in the book.
    [[nodiscard]] bool holds(const CommitToken& token);
    /// And whether it stays there, whatever happens to the machine.
    [[nodiscard]] bool hasLanded(const CommitToken& token);

private:
    BookFile(std::string path, Ref<ManagedObjectModel> model, const SQLiteStore::Options& options);

    /// False, and nothing is open, when the book has an earlier form. REQUIRES: a book of the layout.
    [[nodiscard]] bool connect(std::uint32_t layout);
    void requireConnected(std::uint32_t layout);
    void bringUp(std::uint32_t layout, const SQLiteStore::Options& options);
    void adopt(std::unique_ptr<Connection>&& connection, std::unique_ptr<Transaction>&& snapshot);
    void confirm();
    void requireOwnProperties(const EntityTable& table, std::span<const Cell> cells, const Row& row) const;
    [[nodiscard]] bool isOfToday(Connection& connection) const;
    void stopReading() noexcept;

    std::string path_;
    Ref<ManagedObjectModel> model_;
    const RowShapes& shapes_;
    const BookTables& tables_;
    std::vector<ArchivedClass> classes_;
    CellCoding coding_;
    const FileSystem& files_;
    LayoutSteps steps_;
    std::chrono::milliseconds patience_;
    std::optional<WriterLock> lock_;
    std::optional<SQLiteStore::Migration> migration_;
    std::string identifier_;
    bool isInDoubt_ = false;
    std::unique_ptr<Connection> connection_;
    /// A reader's one view of the book.
    std::unique_ptr<Transaction> snapshot_;
    /// A writer's, while it reads much.
    std::optional<Transaction> reading_;
    std::size_t readings_ = 0;
};

} // namespace estatebook::platform::sqlite
