// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/BookMigration.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/sqlite/BookCheck.hpp"
#include "platform/persistence/store/sqlite/BookCopies.hpp"
#include "platform/persistence/store/sqlite/EarlierForm.hpp"
#include "platform/persistence/store/sqlite/NewFile.hpp"
#include "platform/persistence/store/sqlite/NewFolder.hpp"

#include <sqlite3.h>

#include <utility>

namespace estatebook::platform::sqlite {

namespace {

/// An open book of an earlier form, as one save left it.
class EarlierBook {
public:
    EarlierBook(const FileSystem& files, const std::string& path, const BookTables& tables,
                const RowShapes& shapes, const ManagedObjectModel& model, LayoutSteps steps,
                std::chrono::milliseconds patience)
        : layout_(requireHead(files, path)), tables_(tables), model_(model),
          connection_(files, path, Connection::Access::Read, patience), snapshot_(connection_, "BEGIN"),
          form_(connection_, layout_, tables, shapes, model, steps) {
        requireSize(files, path);
        requireSound("PRAGMA integrity_check(1)", "ok");
        requireSound("PRAGMA foreign_key_check", "");
    }

    /// Writes all that it holds into an empty file.
    void writeInto(Connection& connection) {
        BookFile::lay(connection, tables_, model_, identifierIn(connection_, tables_.header));
        Transaction transaction(connection);
        for (const SealedTable* table : tables_.sealedTables()) {
            const bool isLaid = table == &tables_.header || table == &tables_.entities;
            transfer(*table, isLaid ? nullptr : &connection);
        }
        if (const int code = connection.tryRun("COMMIT"); code != SQLITE_OK) connection.fail(code);
    }

private:
    void requireSound(const std::string& question, std::string_view answer) {
        Statement::Use rows(connection_.statement(question));
        while (rows.next())
            if (rows.text(0) != answer) damaged("it is not sound: " + std::string(rows.text(0)));
    }

    struct Sum {
        std::int64_t rows = 0;
        std::uint64_t digests = 0;

        void add(const Cells& cells) {
            ++rows;
            digests += static_cast<std::uint64_t>(digestOf(cells));
        }
    };

    /// Compares each row of a table, and their sum; writes what they are today when a file is given.
    void transfer(const SealedTable& table, Connection* to) {
        const SealedTable* stored = form_.stored(table);
        if (!stored) return;
        Sum former;
        Sum today;
        Cells cells;
        Cells brought;
        CellRoom room;
        Statement::Use rows(connection_.statement(stored->select));
        while (rows.next()) {
            BookFile::read(rows, *stored, cells);
            former.add(cells);
            if (!to) continue;
            room.clear();
            if (!form_.bring(table, cells, brought, room)) continue;
            insertSealed(*to, table, brought);
            today.add(brought);
        }
        requireSum(table, former);
        if (!to) return;
        Statement::Use(
            to->statement("UPDATE \"book_sum\" SET \"rows\" = ?2, \"digests\" = ?3 WHERE \"name\" = ?1"))
            .bind(1, Cell::text(table.name))
            .bind(2, today.rows)
            .bind(3, static_cast<std::int64_t>(today.digests))
            .run();
    }

    void requireSum(const SealedTable& table, const Sum& found) {
        Statement::Use row(
            connection_.statement("SELECT \"rows\", \"digests\" FROM \"book_sum\" WHERE \"name\" = ?1"));
        if (!row.bind(1, Cell::text(table.name)).next()) damaged("the table " + table.name + " has no sum");
        if (row.integer(0) != found.rows || static_cast<std::uint64_t>(row.integer(1)) != found.digests)
            damaged("the rows of its table \"" + table.name + "\" do not add up to their sum");
    }

    std::uint32_t layout_;
    const BookTables& tables_;
    const ManagedObjectModel& model_;
    Connection connection_;
    Transaction snapshot_;
    EarlierForm form_;
};

/// A copy that goes with the attempt it was made for.
class Copy {
public:
    Copy(const FileSystem& files, std::string path) : files_(files), path_(std::move(path)) {}
    ~Copy() {
        if (!isKept_) files_.remove(path_);
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    const std::string& keep() noexcept {
        isKept_ = true;
        return path_;
    }

private:
    const FileSystem& files_;
    std::string path_;
    bool isKept_ = false;
};

std::string copyOf(const std::string& path, const Ref<ManagedObjectModel>& model,
                   const SQLiteStore::Options& options) {
    auto made = BookCopies(path, model, options).makeBefore(BookCopies::Occasion::Migration);
    if (!made) throw StoreError(made.error());
    return *std::move(made);
}

} // namespace

std::unique_ptr<Connection> readEarlier(const FileSystem& files, const std::string& path,
                                        const BookTables& tables, const RowShapes& shapes,
                                        const ManagedObjectModel& model, LayoutSteps steps,
                                        std::chrono::milliseconds patience) {
    auto memory = std::make_unique<Connection>(files, std::string(Connection::InMemory),
                                               Connection::Access::Create, patience);
    EarlierBook(files, path, tables, shapes, model, steps, patience).writeInto(*memory);
    memory->run("PRAGMA query_only=ON");
    return memory;
}

std::string migrate(const FileSystem& files, const std::string& path, const BookTables& tables,
                    const RowShapes& shapes, const Ref<ManagedObjectModel>& model,
                    const SQLiteStore::Options& options) {
    const NewFolder folder(files, BookCopies(path, model, options).folder());
    Copy copy(files, copyOf(path, model, options));
    NewFile made(files, path, NewFile::Makers::Replacer);
    made.removeDraft();
    made.makeLike(path);
    {
        EarlierBook book(files, path, tables, shapes, *model, stepsOf(options), options.patience);
        Connection draft(files, made.draft(), Connection::Access::Create, options.patience);
        book.writeInto(draft);
    }
    {
        SQLiteStore::Options reading = options;
        reading.access = SQLiteStore::Access::Read;
        const auto draft = BookFile::open(made.draft(), model, reading);
        if (const auto findings = BookCheck(*draft).findings(); !findings.empty())
            damaged("it cannot be brought up to date as it is: " + findings.front());
    }
    try {
        made.settle();
    } catch (...) {
        if (made.isNamed()) copy.keep();
        throw;
    }
    return copy.keep();
}

} // namespace estatebook::platform::sqlite
