// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/Connection.hpp"

#include "platform/persistence/store/sqlite/NewFile.hpp"

#include <sqlite3.h>

#include <cerrno>
#include <cstddef>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

namespace estatebook::platform::sqlite {

namespace {

/// The longest text or data in a cell.
constexpr int LongestCell = 64 << 20;

int flagsFor(Connection::Access access) {
    constexpr int always = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOFOLLOW;
    // Who only reads may have to undo what a writer left when the machine failed.
    if (access != Connection::Access::Create) return always | SQLITE_OPEN_READWRITE;
    return always | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
}

StoreErrorCode meaningOf(int code) {
    switch (code) {
    case SQLITE_READONLY_DBMOVED:
        return StoreErrorCode::Moved;
    case SQLITE_IOERR_NOMEM:
        return StoreErrorCode::OutOfMemory;
    case SQLITE_CONSTRAINT_FOREIGNKEY:
        return StoreErrorCode::InvalidChange;
    default:
        break;
    }
    switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return StoreErrorCode::Busy;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_SCHEMA:
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
        return StoreErrorCode::Damaged;
    case SQLITE_FULL:
        return StoreErrorCode::Full;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return StoreErrorCode::ReadOnly;
    case SQLITE_NOMEM:
        return StoreErrorCode::OutOfMemory;
    case SQLITE_TOOBIG:
        return StoreErrorCode::InvalidChange;
    default:
        return StoreErrorCode::Unreadable;
    }
}

} // namespace

// Statement

Statement::Statement(Connection& connection, std::string_view sql) : connection_(connection) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(connection.handle(), sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    statement_.reset(statement);
    if (code != SQLITE_OK) connection.fail(code);
}

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
    sqlite3_finalize(statement);
}

void Statement::reset() noexcept {
    sqlite3_reset(statement_.get());
    sqlite3_clear_bindings(statement_.get());
}

Statement::Use& Statement::Use::bind(int parameter, const Cell& cell) {
    sqlite3_stmt* statement = statement_.statement_.get();
    // An empty text has an address, too; without one it would be no text.
    const char* bytes = cell.bytes.empty() ? "" : cell.bytes.data();
    int code = SQLITE_OK;
    switch (cell.type) {
    case Cell::Type::Integer:
        code = sqlite3_bind_int64(statement, parameter, cell.integer);
        break;
    case Cell::Type::Real:
        code = sqlite3_bind_double(statement, parameter, cell.real);
        break;
    case Cell::Type::Text:
        code =
            sqlite3_bind_text64(statement, parameter, bytes, cell.bytes.size(), SQLITE_STATIC, SQLITE_UTF8);
        break;
    case Cell::Type::Blob:
        code = sqlite3_bind_blob64(statement, parameter, bytes, cell.bytes.size(), SQLITE_STATIC);
        break;
    case Cell::Type::Null:
        break; // as long as nothing is bound
    }
    if (code != SQLITE_OK) statement_.connection_.fail(code);
    return *this;
}

bool Statement::Use::next() {
    const int code = sqlite3_step(statement_.statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) statement_.connection_.fail(code);
    return code == SQLITE_ROW;
}

void Statement::Use::run() {
    while (next()) {
    }
}

// The value itself: to ask for a column takes longer than to read it, and nobody else uses the connection.
void Statement::Use::read(int column, Cell& cell) const {
    sqlite3_value* value = sqlite3_column_value(statement_.statement_.get(), column);
    const auto bytes = [&](const void* first) -> std::string_view {
        // An empty blob stands nowhere; a text without room to end it does not either, and is not empty for that.
        if (!first && sqlite3_errcode(sqlite3_db_handle(statement_.statement_.get())) == SQLITE_NOMEM)
            statement_.connection_.fail(SQLITE_NOMEM);
        return {static_cast<const char*>(first), static_cast<std::size_t>(sqlite3_value_bytes(value))};
    };
    cell.type = static_cast<Cell::Type>(sqlite3_value_type(value));
    cell.bytes = {};
    switch (cell.type) {
    case Cell::Type::Integer:
        cell.integer = sqlite3_value_int64(value);
        break;
    case Cell::Type::Real:
        cell.real = sqlite3_value_double(value);
        break;
    case Cell::Type::Text:
        cell.bytes = bytes(sqlite3_value_text(value));
        break;
    case Cell::Type::Blob:
        cell.bytes = bytes(sqlite3_value_blob(value));
        break;
    case Cell::Type::Null:
        break;
    }
}

Cell Statement::Use::cell(int column) const {
    Cell cell;
    read(column, cell);
    return cell;
}

std::int64_t Statement::Use::readCells(std::span<Cell> cells) const {
    RowDigest digest;
    int column = 0;
    for (Cell& each : cells) {
        read(column++, each);
        digest.add(each);
    }
    return digest.value();
}

std::int64_t Statement::Use::integer(int column) const {
    const Cell found = cell(column);
    if (found.type != Cell::Type::Integer) damaged("it holds something else where a whole number stands");
    return found.integer;
}

std::string_view Statement::Use::text(int column) const {
    const Cell found = cell(column);
    if (found.type != Cell::Type::Text) damaged("it holds something else where a text stands");
    return found.bytes;
}

// Connection

Connection::Connection(const FileSystem& files, const std::string& path, Access access,
                       std::chrono::milliseconds patience) {
    sqlite3* database = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &database, flagsFor(access), files.name());
    database_.reset(database);
    if (!database) throw StoreFailure{StoreErrorCode::OutOfMemory, "there is no memory left"};
    if (code != SQLITE_OK) fail(code);
    sqlite3_busy_timeout(database, static_cast<int>(patience.count()));
    protect();
    if (access == Access::Copy) {
        // A copy is another file that it opens for itself.
        sqlite3_limit(database, SQLITE_LIMIT_ATTACHED, 1);
        return;
    }
    if (access == Access::Read) {
        run("PRAGMA query_only=ON");
        return;
    }
    run("PRAGMA foreign_keys=ON");
    run("PRAGMA journal_mode=TRUNCATE");
    run("PRAGMA synchronous=EXTRA");
}

// A book may come from anywhere: nothing that it holds is carried out.
void Connection::protect() {
    sqlite3* database = database_.get();
    constexpr std::pair<int, int> Settings[] = {
        {SQLITE_DBCONFIG_DEFENSIVE, 1},       {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
        {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},  {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
        {SQLITE_DBCONFIG_WRITABLE_SCHEMA, 0}, {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
        {SQLITE_DBCONFIG_DQS_DDL, 0},         {SQLITE_DBCONFIG_DQS_DML, 0},
    };
    for (const auto& [setting, value] : Settings) {
        const int code = sqlite3_db_config(database, setting, value, nullptr);
        if (code != SQLITE_OK) fail(code);
    }
    constexpr std::pair<int, int> Limits[] = {
        {SQLITE_LIMIT_LENGTH, LongestCell}, {SQLITE_LIMIT_SQL_LENGTH, 1 << 16},
        {SQLITE_LIMIT_COLUMN, 1000},        {SQLITE_LIMIT_ATTACHED, 0},
        {SQLITE_LIMIT_TRIGGER_DEPTH, 1},    {SQLITE_LIMIT_EXPR_DEPTH, 100},
        {SQLITE_LIMIT_COMPOUND_SELECT, 4},  {SQLITE_LIMIT_WORKER_THREADS, 0},
    };
    for (const auto& [limit, value] : Limits) sqlite3_limit(database, limit, value);
    run("PRAGMA cell_size_check=ON");
    run("PRAGMA mmap_size=0");
    run("PRAGMA temp_store=MEMORY");
    run("PRAGMA cache_size=-16384");
}

void Connection::Closer::operator()(sqlite3* database) const noexcept {
    sqlite3_close(database);
}

Statement& Connection::statement(const std::string& sql) {
    auto found = statements_.find(sql);
    if (found == statements_.end()) found = statements_.try_emplace(sql, *this, sql).first;
    return found->second;
}

void Connection::run(std::string_view sql) {
    Statement statement(*this, sql);
    Statement::Use(statement).run();
}

int Connection::tryRun(const char* sql) noexcept {
    return sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
}

bool Connection::isInTransaction() const noexcept {
    return sqlite3_get_autocommit(database_.get()) == 0;
}

StoreFailure Connection::failureOf(int code) const noexcept {
    try {
        const std::string meaning = sqlite3_errstr(code);
        const std::string detail = sqlite3_errmsg(database_.get());
        return {meaningOf(code), detail == meaning ? meaning : meaning + " (" + detail + ")"};
    } catch (const std::bad_alloc&) {
        return {meaningOf(code), {}};
    }
}

// Transaction

Transaction::Transaction(Connection& connection, const char* begin) : connection_(connection) {
    connection.run(begin);
}

Transaction::~Transaction() {
    if (connection_.isInTransaction()) static_cast<void>(connection_.tryRun("ROLLBACK"));
}

// Files

// Through the data base's own door to files: to close a file by another drops the locks that this process holds on it.
FileHead readFileHead(const FileSystem& files, const std::string& path) {
    sqlite3_vfs* system = sqlite3_vfs_find(files.name());
    const auto unreadable = [](const char* reason) -> StoreFailure {
        return {StoreErrorCode::Unreadable, reason};
    };
    if (!system) throw StoreFailure{StoreErrorCode::OutOfMemory, "there is no memory left"};
    const std::unique_ptr<char, void (*)(const char*)> name(
        const_cast<char*>(sqlite3_create_filename(path.c_str(), "", "", 0, nullptr)), sqlite3_free_filename);
    if (!name) throw StoreFailure{StoreErrorCode::OutOfMemory, "there is no memory left"};
    std::vector<std::max_align_t> room(static_cast<std::size_t>(system->szOsFile) / sizeof(std::max_align_t) +
                                       1);
    auto* file = reinterpret_cast<sqlite3_file*>(room.data());
    const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB;
    errno = 0;
    if (system->xOpen(system, name.get(), file, flags, nullptr) != SQLITE_OK) {
        if (errno == EACCES)
            throw sqlite::unreadable("the file cannot be opened",
                                     std::make_error_code(std::errc::permission_denied));
        throw unreadable("the file cannot be opened");
    }
    FileHead head;
    sqlite3_int64 size = 0;
    int code = file->pMethods->xFileSize(file, &size);
    if (code == SQLITE_OK && size >= static_cast<sqlite3_int64>(head.bytes.size()))
        code = file->pMethods->xRead(file, head.bytes.data(), static_cast<int>(head.bytes.size()), 0);
    file->pMethods->xClose(file);
    if (code != SQLITE_OK) throw unreadable("the file cannot be read");
    head.size = size;
    return head;
}

} // namespace estatebook::platform::sqlite
