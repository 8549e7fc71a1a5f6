// SPDX-License-Identifier: MIT

// Books that were changed by chance, all digests and sums being reckoned anew. What the check calls sound can be read, copied,
// salvaged and written in every respect; of everything else a salvage makes a sound book.

#include "platform/persistence/store/sqlite/BookCopies.hpp"
#include "support/Effort.hpp"
#include "support/ForgedBook.hpp"
#include "support/SavedHistory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <array>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using test::MemoryDisk;
using test::SavedHistory;

const std::string Path(test::HistoryPath);

class StoreForgeryTest : public testing::Test {
protected:
    std::uint64_t seed = test::anySeed();
    std::mt19937_64 random{seed};
    MemoryDisk disk;

    template <class Choices>
    const auto& any(const Choices& choices) {
        return choices[random() % std::size(choices)];
    }
    std::string anyValue() {
        static const std::array<std::string, 24> Values{"NULL",
                                                        "0",
                                                        "1",
                                                        "2",
                                                        "3",
                                                        "-1",
                                                        "17",
                                                        "100000",
                                                        "1 << 62",
                                                        "9223372036854775807",
                                                        "0.5",
                                                        "-0.0",
                                                        "'a'",
                                                        "''",
                                                        "'12'",
                                                        "'012'",
                                                        "'true'",
                                                        "'u7'",
                                                        "CAST(x'c3' AS TEXT)",
                                                        "'a' || char(0) || 'b'",
                                                        "x''",
                                                        "x'00ff'",
                                                        "x'000102030405060708090a0b0c0d0e0f'",
                                                        "'owner'"};
        return any(Values);
    }
    struct Table {
        std::string name;
        std::vector<std::string> columns;
    };
    std::vector<Table> tables;

    /// From a book.
    void learnTables() {
        disk.load(SavedHistory(1, 0).disk());
        sqlite3* database = nullptr;
        ASSERT_EQ(SQLITE_OK, sqlite3_open_v2(Path.c_str(), &database, SQLITE_OPEN_READWRITE, disk.name()));
        const auto enter = [](void* all, int, char** values, char**) {
            auto& tables = *static_cast<std::vector<Table>*>(all);
            if (tables.empty() || tables.back().name != values[0]) tables.push_back({values[0], {}});
            tables.back().columns.emplace_back(values[1]);
            return 0;
        };
        EXPECT_EQ(
            SQLITE_OK,
            sqlite3_exec(database,
                         "SELECT t.name, c.name FROM sqlite_schema t, pragma_table_info(t.name) c WHERE "
                         "t.type = 'table' AND c.name <> '_digest' ORDER BY t.name, c.cid",
                         enter, &tables, nullptr));
        sqlite3_close(database);
    }
    std::string anyChange() {
        const Table& table = any(tables);
        const std::string name = "\"" + table.name + "\"";
        const std::string column = "\"" + any(table.columns) + "\"";
        const auto anyOf = [&](const std::string& what) {
            return "(SELECT " + what + " FROM " + name + " ORDER BY rowid LIMIT 1 OFFSET " +
                   std::to_string(random() % 1000) + " % max(1, (SELECT count(*) FROM " + name + ")))";
        };
        const std::string someRow = anyOf("rowid");
        switch (random() % 6) {
        case 0:
            return "DELETE FROM " + name + " WHERE rowid = " + someRow;
        case 1: { // a row once more, under another number
            std::string list;
            for (const std::string& each : table.columns)
                list += (&each == &table.columns.front()
                             ? "max(\"" + each + "\") + " + std::to_string(random() % 3)
                             : "\"" + each + "\"") +
                        std::string(", ");
            return "INSERT OR IGNORE INTO " + name + " SELECT " + list + "0 FROM " + name;
        }
        case 2: // a cell of another row
            return "UPDATE OR IGNORE " + name + " SET " + column + " = " + anyOf(column) +
                   " WHERE rowid = " + someRow;
        case 3:
            return "UPDATE OR IGNORE " + name + " SET " + column + " = " + column +
                   " + 1 WHERE rowid = " + someRow;
        default:
            return "UPDATE OR IGNORE " + name + " SET " + column + " = " + anyValue() +
                   " WHERE rowid = " + someRow;
        }
    }

    StoreResult<Ref<SQLiteStore>> open(const std::string& path, SQLiteStore::Access access) {
        return SQLiteStore::open(path, test::bookModel(), {.access = access, .fileSystem = &disk});
    }
    enum class Verdict : std::uint8_t { Refused, Newer, Told, Sound };
    Verdict judge() {
        const auto store = open(Path, SQLiteStore::Access::Read);
        if (!store) {
            // A newer program may have an entity of any name.
            if (store.error().code == StoreErrorCode::Newer) return Verdict::Newer;
            EXPECT_EQ(store.error().code, StoreErrorCode::Damaged) << store.error().message;
            return Verdict::Refused;
        }
        const auto findings = (*store)->check();
        return findings && findings->empty() ? Verdict::Sound : Verdict::Told;
    }
    void expectGoodInEveryRespect();
    void expectSalvage();
};

void StoreForgeryTest::expectGoodInEveryRespect() {
    const SQLiteStore::Options options{.fileSystem = &disk};
    std::string content;
    {
        const auto store = *open(Path, SQLiteStore::Access::Read);
        const auto found = test::contentOf(*store);
        ASSERT_TRUE(found) << found.error().message;
        content = *found;
        static_cast<void>(test::description(*store)); // would end here
    }
    const auto copied = copyBook(Path, "/copy.estatebook", test::bookModel(), options);
    ASSERT_TRUE(copied) << copied.error().message;
    EXPECT_EQ(*test::contentOf(**open(*copied, SQLiteStore::Access::Read)), content);
    const auto saved = salvageBook(Path, "/saved.estatebook", test::bookModel(), options);
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_THAT(saved->lost, testing::IsEmpty());
    EXPECT_THAT(*test::contentOf(**open(saved->path, SQLiteStore::Access::Read)),
                testing::StartsWith(content))
        << "a save more than the book";
    const auto store = *open(Path, SQLiteStore::Access::Write);
    StoreChanges changes = test::newChanges();
    changes.insertions = {test::RowOf("Tenant", *store->lastKey() + 1)};
    const auto outcome = store->save(changes);
    ASSERT_TRUE(outcome) << outcome.error().message;
    EXPECT_THAT(*store->check(), testing::IsEmpty());
}

void StoreForgeryTest::expectSalvage() {
    const auto saved = salvageBook(Path, "/saved.estatebook", test::bookModel(), {.fileSystem = &disk});
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_THAT(*(*open(saved->path, SQLiteStore::Access::Read))->check(), testing::IsEmpty());
}

TEST_F(StoreForgeryTest, WhatTheCheckCallsSoundIsGoodInEveryRespect) {
    learnTables();
    std::uint64_t refused = 0;
    std::uint64_t told = 0;
    std::uint64_t sound = 0;
    const std::uint64_t cases = test::effort("ESTATEBOOK_FORGERIES", 1'500, 200);
    while (refused + told + sound < cases && !HasFailure()) {
        const SavedHistory history(random(), 8);
        for (int each = 0; each < 100 && !HasFailure(); ++each) {
            std::string sql = anyChange();
            if (random() % 3 == 0) sql += "; " + anyChange();
            SCOPED_TRACE("seed " + std::to_string(seed) + ", case " + std::to_string(refused + told + sound) +
                         ": " + sql);
            disk.load(history.disk());
            // The data base itself keeps what is no number from where numbers are needed.
            if (!test::forgeBook(Path, sql, disk.name())) continue;
            const Verdict verdict = judge();
            ++(verdict == Verdict::Sound ? sound : verdict == Verdict::Told ? told : refused);
            if (verdict == Verdict::Sound)
                expectGoodInEveryRespect();
            else if (verdict != Verdict::Newer)
                expectSalvage();
        }
    }
    EXPECT_GT(told, 0u);
    EXPECT_GT(sound, 0u);
    std::printf("%llu forged books refused, %llu told by the check, %llu sound (seed %llu)\n",
                static_cast<unsigned long long>(refused), static_cast<unsigned long long>(told),
                static_cast<unsigned long long>(sound), static_cast<unsigned long long>(seed));
}

} // namespace
} // namespace estatebook::platform
