// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: Connection: one open data base file; Statement: one thing it is asked.

#include "platform/persistence/store/sqlite/Cell.hpp"
#include "platform/persistence/store/sqlite/FileSystem.hpp"
#include "platform/persistence/store/sqlite/StoreFailure.hpp"

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace estatebook::platform::sqlite {

class Connection;

class Statement {
public:
    /// Gives the statement back as it was, when its use ends.
    class Use {
    public:
        explicit Use(Statement& statement) noexcept : statement_(statement) {}
        ~Use() { statement_.reset(); }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

        /// Parameters are numbered from 1, each bound once; those that are not are null. Their bytes stay with the caller until
        /// the use ends.
        Use& bind(int parameter, const Cell& cell);
        Use& bind(int parameter, std::int64_t number) { return bind(parameter, Cell::of(number)); }
        /// Whether there is another row.
        [[nodiscard]] bool next();
        /// To the end.
        void run();
        /// Of the present row, numbered from 0. Its bytes are valid until the next row.
        [[nodiscard]] Cell cell(int column) const;
        /// As many as there is room for, from the first column on; gives their digest.
        [[nodiscard]] std::int64_t readCells(std::span<Cell> cells) const;
        [[nodiscard]] std::int64_t integer(int column) const;
        [[nodiscard]] std::string_view text(int column) const;

    private:
        void read(int column, Cell& cell) const;

        Statement& statement_;
    };

    Statement(Connection& connection, std::string_view sql);

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    void reset() noexcept;
    Connection& connection_;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

class Connection {
public:
    /// Copy: as Read, but able to write a copy elsewhere.
    enum class Access : std::uint8_t { Read, Copy, Write, Create };

    /// The path of a data base that is in no file.
    static constexpr std::string_view InMemory = ":memory:";

    /// Throws a StoreFailure, as everything here.
    Connection(const FileSystem& files, const std::string& path, Access access,
               std::chrono::milliseconds patience);

    /// The statement, compiled when it is first used, and there as long as the connection. One use of it at a time.
    [[nodiscard]] Statement& statement(const std::string& sql);
    /// Something that is asked once.
    void run(std::string_view sql);
    /// Gives the result code of the data base.
    [[nodiscard]] int tryRun(const char* sql) noexcept;
    [[nodiscard]] bool isInTransaction() const noexcept;

    /// What a result code of the data base means.
    [[nodiscard]] StoreFailure failureOf(int code) const noexcept;
    [[noreturn]] void fail(int code) const { throw failureOf(code); }
    [[nodiscard]] sqlite3* handle() const noexcept { return database_.get(); }

private:
    struct Closer {
        void operator()(sqlite3* database) const noexcept;
    };
    void protect();

    std::unique_ptr<sqlite3, Closer> database_;
    std::unordered_map<std::string, Statement> statements_;
};

/// Undone unless it is committed.
class Transaction {
public:
    explicit Transaction(Connection& connection, const char* begin = "BEGIN IMMEDIATE");
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

private:
    Connection& connection_;
};

/// The first bytes of a file, read without disturbing those who have it open.
struct FileHead {
    std::array<unsigned char, 100> bytes{};
    /// Of the whole file.
    std::int64_t size = 0;
};
[[nodiscard]] FileHead readFileHead(const FileSystem& files, const std::string& path);

} // namespace estatebook::platform::sqlite
