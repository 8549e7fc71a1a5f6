// SPDX-License-Identifier: MIT

// The power fails, or a call of the disk does, at each operation while a book of an earlier program is brought up to date and then
// saved. It is there as it was or up to date, complete, with all that it held; and it can be brought up to date afterwards.

#include "support/EarlierBook.hpp"
#include "support/Effort.hpp"
#include "support/HeldClock.hpp"
#include "support/Platter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using test::DiskContent;
using test::DiskOperation;
using test::EarlierBook;
using test::MemoryDisk;
using test::Platter;

const std::string& Path = EarlierBook::Path;

class MigrationFaultTest : public testing::Test {
protected:
    const std::uint64_t seed = test::anySeed();
    const testing::ScopedTrace trace{__FILE__, __LINE__, "seed " + std::to_string(seed)};
    std::mt19937_64 random{seed};
    const testkit::HeldClock clock{Date{800000000}};
    MemoryDisk disk;
    std::uint64_t losses = 0;

    /// At each operation of a migration and a save.
    void losePower(const EarlierBook& book);
    /// Each call, one after another.
    void failCalls(const EarlierBook& book);
    /// Brings it up to date and looks at it.
    void expectUpToDate(const EarlierBook& book, const std::string& expected) {
        {
            const auto store = book.open(disk, SQLiteStore::Access::Write);
            ASSERT_TRUE(store) << store.error().message;
            ASSERT_EQ(book.contentOf(**store), expected);
            ASSERT_THAT(*(*store)->check(), testing::IsEmpty());
        }
        for (const auto& [name, bytes] : disk.content()) {
            // A journal that could not be removed is empty.
            ASSERT_TRUE(!name.starts_with(Path + ".new") || bytes.empty()) << name;
            if (!name.starts_with("/book.copies/") || !name.ends_with(".estatebook")) continue;
            const auto copy = book.open(disk, SQLiteStore::Access::Read, name);
            ASSERT_TRUE(copy) << copy.error().message;
            ASSERT_EQ(book.contentOf(**copy), book.content) << name;
        }
    }
    static StoreChanges someSave() {
        StoreChanges changes = test::newChanges();
        changes.metadata = {{"note", "after"}};
        return changes;
    }
};

TEST_F(MigrationFaultTest, WhatAnyEarlierModelWroteIsThereAfterwards) {
    for (std::uint64_t count = test::effort("ESTATEBOOK_MIGRATIONS", 60, 10); count > 0; --count) {
        const auto book = EarlierBook::ofAnyModel(random);
        disk.load(book.files);
        ASSERT_EQ(book.contentOn(disk), book.content) << "read as it is";
        expectUpToDate(book, book.content);
        if (HasFatalFailure()) return;
        ASSERT_FALSE((*book.open(disk, SQLiteStore::Access::Write))->migration());
    }
}

void MigrationFaultTest::losePower(const EarlierBook& book) {
    std::vector<DiskOperation> operations;
    std::size_t migrated = 0;
    std::string after;
    disk.load(book.files);
    disk.log = &operations;
    {
        const auto store = *book.open(disk, SQLiteStore::Access::Write);
        ASSERT_TRUE(store->migration());
        migrated = operations.size();
        ASSERT_TRUE(store->save(someSave())->landed());
        disk.log = nullptr;
        after = book.contentOf(*store);
    }
    const std::uint64_t tries = test::effort("ESTATEBOOK_MIGRATION_LOSSES", 4, 1);
    Platter platter(book.files);
    for (std::size_t count = 0; count <= operations.size(); ++count) {
        if (count > 0) platter.apply(operations[count - 1]);
        for (std::uint64_t each = 0; each < tries; ++each) {
            SCOPED_TRACE("after operation " + std::to_string(count) + " of " +
                         std::to_string(operations.size()) + ", up to date after " +
                         std::to_string(migrated));
            disk.load(platter.afterPowerLoss(random));
            ++losses;
            const std::string found = book.contentOn(disk);
            if (count == operations.size()) {
                ASSERT_EQ(found, after) << "what was acknowledged is gone";
            } else if (count <= migrated) {
                ASSERT_EQ(found, book.content);
            } else {
                ASSERT_TRUE(found == book.content || found == after) << found;
            }
            if (count >= migrated) {
                const auto store = book.open(disk, SQLiteStore::Access::Write);
                ASSERT_TRUE(store) << store.error().message;
                ASSERT_FALSE((*store)->migration()) << "it was up to date already";
            }
            if (each == 0) expectUpToDate(book, found);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_F(MigrationFaultTest, APowerLossLeavesTheBookAsItWasOrUpToDate) {
    const std::uint64_t books = test::effort("ESTATEBOOK_MIGRATION_BOOKS", 1, 1);
    for (std::uint64_t each = 0; each < books && !HasFailure(); ++each) {
        losePower(EarlierBook::ofAnyModel(random));
    }
    std::printf("%llu power losses in %llu books on their way up to date (seed %llu)\n",
                static_cast<unsigned long long>(losses), static_cast<unsigned long long>(books),
                static_cast<unsigned long long>(seed));
}

TEST_F(MigrationFaultTest, APowerLossAmidRowsThatChangeLeavesTheBookAsItWasOrUpToDate) {
    losePower(EarlierBook::ofFormerLayout(random));
    std::printf("%llu power losses while rows were brought into another form (seed %llu)\n",
                static_cast<unsigned long long>(losses), static_cast<unsigned long long>(seed));
}

TEST_F(MigrationFaultTest, ACallThatFailsIsToldAndTheBookIsThere) {
    failCalls(EarlierBook::ofAnyModel(random));
}

TEST_F(MigrationFaultTest, ACallThatFailsAmidRowsThatChangeIsToldAndTheBookIsThere) {
    failCalls(EarlierBook::ofFormerLayout(random));
}

void MigrationFaultTest::failCalls(const EarlierBook& book) {
    std::uint64_t call = 0;
    for (std::uint64_t failing = 0;;
         failing += 1 + random() % test::effort("ESTATEBOOK_MIGRATION_FAULTS", 5, 40)) {
        SCOPED_TRACE("call " + std::to_string(failing));
        disk.load(book.files);
        call = 0;
        const bool isFull = random() % 2 == 0;
        const bool isSticky = random() % 2 == 0;
        disk.fault = [&](MemoryDisk::Call) {
            const bool fails = isSticky ? call >= failing : call == failing;
            ++call;
            if (!fails) return MemoryDisk::Fault::None;
            return isFull ? MemoryDisk::Fault::Full : MemoryDisk::Fault::Fails;
        };
        {
            const auto opened = book.open(disk, SQLiteStore::Access::Write);
            disk.fault = nullptr;
            if (opened) {
                ASSERT_EQ(book.contentOf(**opened), book.content);
            } else if (!isSticky && !disk.content().contains(Path + ".new")) {
                // Whoever cannot be told of a failure may fail to tidy up; else there is the copy, or nothing.
                const bool isKept = !disk.namesIn("/book.copies").empty();
                ASSERT_EQ(disk.isTaken("/book.copies"), isKept) << opened.error().message;
            }
        }
        ASSERT_EQ(book.contentOn(disk), book.content);
        expectUpToDate(book, book.content);
        if (HasFatalFailure()) return;
        if (call <= failing) break;
    }
}

TEST_F(MigrationFaultTest, DamageIsToldOrWhatTheBookHeldIsThere) {
    const auto book = EarlierBook::ofAnyModel(random);
    constexpr std::size_t PageSize = 4096;
    std::size_t told = 0;
    const std::uint64_t cases = test::effort("ESTATEBOOK_MIGRATED_DAMAGES", 300, 30);
    for (std::uint64_t each = 0; each < cases; ++each) {
        DiskContent damaged = book.files;
        std::string& file = damaged.at(Path);
        const std::size_t page = random() % (file.size() / PageSize) * PageSize;
        switch (random() % 4) {
        case 0: {
            char& byte = file[random() % file.size()];
            byte = static_cast<char>(byte ^ (1 << random() % 8));
            break;
        }
        case 1: // where pages tell what is in them
            file[page + random() % 64] = static_cast<char>(random());
            break;
        case 2: // what is in them
            for (std::size_t place = page; place < page + PageSize; ++place)
                if (file[place] != 0 && random() % 200 == 0) file[place] = static_cast<char>(random());
            break;
        default:
            file.replace(page, PageSize,
                         file.substr(random() % (file.size() / PageSize) * PageSize, PageSize));
        }
        disk.load(damaged);
        const auto opened = book.open(disk, SQLiteStore::Access::Write);
        if (opened) {
            ASSERT_EQ(book.contentOf(**opened), book.content);
            continue;
        }
        ++told;
        ASSERT_EQ(disk.content().at(Path), file) << "it is left as it is: " << opened.error().message;
        for (const auto& [name, bytes] : disk.content())
            ASSERT_FALSE(name.starts_with("/book.copies/") || name.ends_with(".new")) << name;
        ASSERT_FALSE(disk.isTaken("/book.copies"));
    }
    EXPECT_GT(told, 0u);
    std::printf("%llu damaged books on their way up to date, %llu refused (seed %llu)\n",
                static_cast<unsigned long long>(cases), static_cast<unsigned long long>(told),
                static_cast<unsigned long long>(seed));
}

TEST_F(MigrationFaultTest, WithoutRoomTheBookStaysAndNothingFillsTheDisk) {
    const auto book = EarlierBook::ofAnyModel(random);
    const auto sizeOf = [](const DiskContent& files) {
        std::size_t size = 0;
        for (const auto& [name, bytes] : files) size += bytes.size();
        return size;
    };
    // For the copy there is room, for the new book there is not.
    for (const std::size_t share : {1, 5, 15, 25}) {
        disk.load(book.files);
        disk.capacity = sizeOf(book.files) + sizeOf(book.files) * share / 10;
        for (int attempt = 0; attempt < 3; ++attempt) {
            const auto opened = book.open(disk, SQLiteStore::Access::Write);
            if (opened) break;
            ASSERT_EQ(opened.error().code, StoreErrorCode::Full) << opened.error().message;
            ASSERT_EQ(disk.content(), book.files);
            ASSERT_FALSE(disk.isTaken("/book.copies"));
        }
        disk.capacity = SIZE_MAX;
        expectUpToDate(book, book.content);
        if (HasFatalFailure()) return;
    }
}

} // namespace
} // namespace estatebook::platform
