// SPDX-License-Identifier: MIT
#include "support/ForgedBook.hpp"

#include "platform/persistence/store/sqlite/Cell.hpp"

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace estatebook::test {

namespace {

using platform::sqlite::Cell;
using platform::sqlite::RowDigest;
using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

Statement statement(const Database& database, const std::string& sql) {
    sqlite3_stmt* made = nullptr;
    if (sqlite3_prepare_v2(database.get(), sql.c_str(), -1, &made, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(database.get()));
    return {made, sqlite3_finalize};
}

Cell cellAt(sqlite3_stmt* row, int column) {
    const int type = sqlite3_column_type(row, column);
    if (type == SQLITE_INTEGER) return Cell::of(std::int64_t{sqlite3_column_int64(row, column)});
    if (type == SQLITE_FLOAT) return Cell::of(sqlite3_column_double(row, column));
    if (type == SQLITE_NULL) return {};
    const char* bytes = static_cast<const char*>(sqlite3_column_blob(row, column));
    const std::string_view view(bytes, static_cast<std::size_t>(sqlite3_column_bytes(row, column)));
    return type == SQLITE_TEXT ? Cell::text(view) : Cell::blob(view);
}

void seal(const Database& database, const std::string& table) {
    std::vector<std::pair<std::int64_t, std::int64_t>> digests;
    std::uint64_t sum = 0;
    {
        const Statement rows = statement(database, "SELECT rowid, * FROM \"" + table + "\"");
        while (sqlite3_step(rows.get()) == SQLITE_ROW) {
            RowDigest digest;
            for (int column = 1; column + 1 < sqlite3_column_count(rows.get()); ++column)
                digest.add(cellAt(rows.get(), column));
            digests.emplace_back(sqlite3_column_int64(rows.get(), 0), digest.value());
            sum += static_cast<std::uint64_t>(digest.value());
        }
    }
    const Statement update =
        statement(database, "UPDATE \"" + table + "\" SET \"_digest\" = ?2 WHERE rowid = ?1");
    for (const auto& [number, digest] : digests) {
        sqlite3_bind_int64(update.get(), 1, number);
        sqlite3_bind_int64(update.get(), 2, digest);
        if (sqlite3_step(update.get()) != SQLITE_DONE)
            throw std::runtime_error(sqlite3_errmsg(database.get()));
        sqlite3_reset(update.get());
    }
    const Statement sums =
        statement(database, "UPDATE book_sum SET \"rows\" = ?1, digests = ?2 WHERE name = ?3");
    sqlite3_bind_int64(sums.get(), 1, static_cast<std::int64_t>(digests.size()));
    sqlite3_bind_int64(sums.get(), 2, static_cast<std::int64_t>(sum));
    sqlite3_bind_text(sums.get(), 3, table.c_str(), -1, SQLITE_STATIC);
    if (sqlite3_step(sums.get()) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database.get()));
}

} // namespace

bool forgeBook(const std::string& path, const std::string& sql, const char* files) {
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE, files);
    const Database database(opened, sqlite3_close);
    if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(opened));
    sqlite3_exec(opened, "BEGIN", nullptr, nullptr, nullptr);
    if (sqlite3_exec(opened, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) return false;
    std::vector<std::string> tables;
    {
        const Statement names =
            statement(database, "SELECT name FROM sqlite_schema WHERE type = 'table' AND name <> 'book_sum'");
        while (sqlite3_step(names.get()) == SQLITE_ROW)
            tables.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(names.get(), 0)));
    }
    for (const std::string& table : tables) seal(database, table);
    return sqlite3_exec(opened, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
}

} // namespace estatebook::test
