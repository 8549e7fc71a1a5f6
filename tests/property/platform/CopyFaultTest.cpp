// SPDX-License-Identifier: MIT

// The power fails, or a call of the disk does, at each operation while a book is copied or salvaged. The book is as it was, and the
// new one is there complete or not at all.

#include "platform/persistence/store/sqlite/BookCopies.hpp"
#include "support/Effort.hpp"
#include "support/Platter.hpp"
#include "support/SavedHistory.hpp"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using test::bookModel;
using test::DiskContent;
using test::DiskOperation;
using test::MemoryDisk;
using test::Platter;
using test::SavedHistory;

const std::string Original(test::HistoryPath);
const std::string Made = "/made.estatebook";

/// A way to make a book of another one.
struct Way {
    const char* name;
    /// None when it was made.
    std::optional<StoreError> (*make)(const SQLiteStore::Options& options);

    friend void PrintTo(const Way& way, std::ostream* stream) { *stream << way.name; }
};

const Way Ways[] = {
    {"Copy",
     [](const SQLiteStore::Options& options) {
         const auto made = copyBook(Original, Made, bookModel(), options);
         return made ? std::nullopt : std::optional(made.error());
     }},
    {"Salvage",
     [](const SQLiteStore::Options& options) {
         const auto made = salvageBook(Original, Made, bookModel(), options);
         return made ? std::nullopt : std::optional(made.error());
     }},
};

class CopyFaultTest : public testing::TestWithParam<Way> {
protected:
    std::uint64_t seed = test::anySeed();
    std::mt19937_64 random{seed};
    SavedHistory history{random(), 6};
    MemoryDisk disk;
    std::vector<DiskOperation> operations;

    std::optional<StoreError> make() { return GetParam().make({.fileSystem = &disk}); }

    /// What a sound book holds; its rows alone for one that was salvaged.
    std::string contentOf(const std::string& path) {
        const auto store =
            SQLiteStore::open(path, bookModel(), {.access = SQLiteStore::Access::Read, .fileSystem = &disk});
        if (!store) return store.error().message;
        const auto findings = (*store)->check();
        if (!findings) return findings.error().message;
        if (!findings->empty()) return findings->front();
        if (GetParam().name == std::string_view("Copy")) return *test::contentOf(**store);
        std::ostringstream rows;
        for (const RowShape& shape : (*store)->shapes().all())
            static_cast<void>(
                (*store)->fetchRows(shape.entity(), {}, [&](const Row& row) { test::describe(rows, row); }));
        return rows.str();
    }
};

INSTANTIATE_TEST_SUITE_P(Ways, CopyFaultTest, testing::ValuesIn(Ways),
                         [](const auto& way) { return way.param.name; });

TEST_P(CopyFaultTest, APowerLossLeavesTheBookAndACompleteOneOrNone) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    disk.load(history.disk());
    const std::string content = contentOf(Original);
    disk.log = &operations;
    const auto error = make();
    ASSERT_FALSE(error) << error->message;
    disk.log = nullptr;
    ASSERT_EQ(contentOf(Made), content);

    const std::uint64_t tries = test::effort("ESTATEBOOK_COPY_LOSSES", 8, 1);
    Platter platter(history.disk());
    for (std::size_t count = 0; count <= operations.size(); ++count) {
        if (count > 0) platter.apply(operations[count - 1]);
        for (std::uint64_t each = 0; each < tries; ++each) {
            SCOPED_TRACE("after operation " + std::to_string(count));
            disk.load(platter.afterPowerLoss(random));
            ASSERT_EQ(contentOf(Original), content);
            if (disk.isTaken(Made)) {
                ASSERT_EQ(contentOf(Made), content) << "the new book is there in part";
            } else {
                ASSERT_LT(count, operations.size()) << "what was told to be made is gone";
            }
        }
    }
}

TEST_P(CopyFaultTest, ACallThatFailsIsToldAndNothingIsLeftBehind) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    disk.load(history.disk());
    const std::string content = contentOf(Original);
    std::uint64_t call = 0;
    for (std::uint64_t failing = 0;;
         failing += 1 + random() % test::effort("ESTATEBOOK_COPY_FAULTS", 4, 40)) {
        SCOPED_TRACE("call " + std::to_string(failing));
        disk.load(history.disk());
        call = 0;
        const bool isFull = random() % 2 == 0;
        disk.fault = [&](MemoryDisk::Call) {
            if (call++ != failing) return MemoryDisk::Fault::None;
            return isFull ? MemoryDisk::Fault::Full : MemoryDisk::Fault::Fails;
        };
        const auto error = make();
        disk.fault = nullptr;
        ASSERT_EQ(contentOf(Original), content);
        if (!error) {
            ASSERT_EQ(contentOf(Made), content);
        } else {
            // Its name may stand when its folder could not be told to keep it; it is complete then.
            if (disk.isTaken(Made)) {
                ASSERT_EQ(contentOf(Made), content);
                disk.remove(Made);
            }
            const auto again = make();
            ASSERT_FALSE(again) << again->message;
        }
        if (call <= failing) break;
    }
}

} // namespace
} // namespace estatebook::platform
