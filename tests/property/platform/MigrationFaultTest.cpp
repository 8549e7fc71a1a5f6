// SPDX-License-Identifier: MIT

// The power fails, or a call of the disk does, at each operation while a book of an earlier program is brought up to date and then
// saved. It is there as it was or up to date, complete, with all that it held; and it can be brought up to date afterwards.

#include "support/EarlierModel.hpp"
#include "support/Effort.hpp"
#include "support/HeldClock.hpp"
#include "support/Platter.hpp"
#include "support/SteppedLayout.hpp"
#include "support/StoreScript.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using test::bookModel;
using test::DiskContent;
using test::DiskOperation;
using test::EarlierModel;
using test::MemoryDisk;
using test::Platter;
using test::StoreScript;

const std::string Path = "/book.estatebook";

class MigrationFaultTest : public testing::Test {
protected:
    std::uint64_t seed = test::anySeed();
    std::mt19937_64 random{seed};
    const testkit::HeldClock clock{Date{800000000}};
    Ref<ManagedObjectModel> model;
    /// What today's program knows.
    Ref<ManagedObjectModel> modelOfToday = bookModel();
    const sqlite::LayoutSteps* steps = nullptr;
    /// By which contents are told.
    Ref<ManagedObjectModel> comparedAs;
    /// The disk with a book that a program of the model wrote.
    DiskContent earlier;
    std::string content;
    MemoryDisk disk;
    std::uint64_t losses = 0;

    /// At each operation of a migration and a save.
    void losePower();
    /// Each call, one after another.
    void failCalls();
    /// With some saves by chance.
    void makeEarlier() {
        model = EarlierModel::any(random()).make();
        // There must be something to do.
        if (isUpToDate()) model = EarlierModel{.withoutEntities = {"State"}}.make();
        comparedAs = model;
        fill();
    }
    /// One whose rows stand otherwise than today's.
    void makeStepped() {
        model = test::SteppedLayout::former();
        modelOfToday = comparedAs = test::SteppedLayout::today();
        steps = &test::SteppedLayout::steps();
        fill();
        test::SteppedLayout::age(Path, disk.name());
        earlier = disk.content();
        const std::string asItWas = content;
        content = contentNow();
        ASSERT_NE(content, asItWas);
    }
    void fill() {
        StoreScript script(random(), StoreScript::Manner::Sound, model);
        disk.load({});
        {
            const auto twin = InMemoryStore::make(model);
            const auto store = *SQLiteStore::create(Path, model, {.fileSystem = &disk});
            for (int saves = 0; saves < 6;) {
                const StoreChanges changes = script.changes(*twin);
                if (const auto taken = twin->save(changes); !taken || !taken->landed()) continue;
                ASSERT_TRUE(store->save(changes)->landed());
                ++saves;
            }
            content = test::contentAs(*model, *store);
        }
        earlier = disk.content();
    }
    [[nodiscard]] bool isUpToDate() const {
        MemoryDisk other;
        { const auto store = *SQLiteStore::create(Path, model, {.fileSystem = &other}); }
        return !(*SQLiteStore::open(Path, bookModel(), {.fileSystem = &other}))->migration();
    }

    StoreResult<Ref<SQLiteStore>> open(SQLiteStore::Access access) { return openAt(Path, access); }
    StoreResult<Ref<SQLiteStore>> openAt(const std::string& path, SQLiteStore::Access access) {
        return SQLiteStore::open(path, modelOfToday,
                                 {.access = access, .fileSystem = &disk, .layoutSteps = steps});
    }
    /// What a sound book holds, as a reader of today finds it.
    std::string contentNow() {
        const auto store = open(SQLiteStore::Access::Read);
        if (!store) return store.error().message;
        const auto findings = (*store)->check();
        if (!findings) return findings.error().message;
        return findings->empty() ? test::contentAs(*comparedAs, **store) : findings->front();
    }
    /// Brings it up to date and looks at it.
    void expectUpToDate(const std::string& expected) {
        {
            const auto store = open(SQLiteStore::Access::Write);
            ASSERT_TRUE(store) << store.error().message;
            ASSERT_EQ(test::contentAs(*comparedAs, **store), expected);
            ASSERT_THAT(*(*store)->check(), testing::IsEmpty());
        }
        for (const auto& [name, bytes] : disk.content()) {
            // A journal that could not be removed is empty.
            ASSERT_TRUE(!name.starts_with(Path + ".new") || bytes.empty()) << name;
            if (!name.starts_with("/book.copies/") || !name.ends_with(".estatebook")) continue;
            const auto copy = openAt(name, SQLiteStore::Access::Read);
            ASSERT_TRUE(copy) << copy.error().message;
            ASSERT_EQ(test::contentAs(*comparedAs, **copy), content) << name;
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
        SCOPED_TRACE("seed " + std::to_string(seed));
        makeEarlier();
        if (HasFatalFailure()) return;
        ASSERT_EQ(contentNow(), content) << "read as it is";
        expectUpToDate(content);
        if (HasFatalFailure()) return;
        ASSERT_FALSE((*open(SQLiteStore::Access::Write))->migration());
    }
}

void MigrationFaultTest::losePower() {
    std::vector<DiskOperation> operations;
    std::size_t migrated = 0;
    std::string after;
    disk.log = &operations;
    {
        const auto store = *open(SQLiteStore::Access::Write);
        ASSERT_TRUE(store->migration());
        migrated = operations.size();
        ASSERT_TRUE(store->save(someSave())->landed());
        disk.log = nullptr;
        after = test::contentAs(*comparedAs, *store);
    }
    const std::uint64_t tries = test::effort("ESTATEBOOK_MIGRATION_LOSSES", 4, 1);
    Platter platter(earlier);
    for (std::size_t count = 0; count <= operations.size(); ++count) {
        if (count > 0) platter.apply(operations[count - 1]);
        for (std::uint64_t each = 0; each < tries; ++each) {
            SCOPED_TRACE("after operation " + std::to_string(count) + " of " +
                         std::to_string(operations.size()) + ", up to date after " +
                         std::to_string(migrated));
            disk.load(platter.afterPowerLoss(random));
            ++losses;
            const std::string found = contentNow();
            if (count == operations.size()) {
                ASSERT_EQ(found, after) << "what was acknowledged is gone";
            } else if (count <= migrated) {
                ASSERT_EQ(found, content);
            } else {
                ASSERT_TRUE(found == content || found == after) << found;
            }
            if (count >= migrated) {
                const auto store = open(SQLiteStore::Access::Write);
                ASSERT_TRUE(store) << store.error().message;
                ASSERT_FALSE((*store)->migration()) << "it was up to date already";
            }
            if (each == 0) expectUpToDate(found);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_F(MigrationFaultTest, APowerLossLeavesTheBookAsItWasOrUpToDate) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::uint64_t books = test::effort("ESTATEBOOK_MIGRATION_BOOKS", 1, 1);
    for (std::uint64_t each = 0; each < books && !HasFailure(); ++each) {
        makeEarlier();
        if (!HasFatalFailure()) losePower();
    }
    std::printf("%llu power losses in %llu books on their way up to date (seed %llu)\n",
                static_cast<unsigned long long>(losses), static_cast<unsigned long long>(books),
                static_cast<unsigned long long>(seed));
}

TEST_F(MigrationFaultTest, APowerLossAmidRowsThatChangeLeavesTheBookAsItWasOrUpToDate) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    makeStepped();
    if (!HasFatalFailure()) losePower();
    std::printf("%llu power losses while rows were brought into another form (seed %llu)\n",
                static_cast<unsigned long long>(losses), static_cast<unsigned long long>(seed));
}

TEST_F(MigrationFaultTest, ACallThatFailsIsToldAndTheBookIsThere) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    makeEarlier();
    if (!HasFatalFailure()) failCalls();
}

TEST_F(MigrationFaultTest, ACallThatFailsAmidRowsThatChangeIsToldAndTheBookIsThere) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    makeStepped();
    if (!HasFatalFailure()) failCalls();
}

void MigrationFaultTest::failCalls() {
    std::uint64_t call = 0;
    for (std::uint64_t failing = 0;;
         failing += 1 + random() % test::effort("ESTATEBOOK_MIGRATION_FAULTS", 5, 40)) {
        SCOPED_TRACE("call " + std::to_string(failing));
        disk.load(earlier);
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
            const auto opened = open(SQLiteStore::Access::Write);
            disk.fault = nullptr;
            if (opened) {
                ASSERT_EQ(test::contentAs(*comparedAs, **opened), content);
            } else if (!isSticky && !disk.content().contains(Path + ".new")) {
                // Whoever cannot be told of a failure may fail to tidy up; else there is the copy, or nothing.
                const bool isKept = !disk.namesIn("/book.copies").empty();
                ASSERT_EQ(disk.isTaken("/book.copies"), isKept) << opened.error().message;
            }
        }
        ASSERT_EQ(contentNow(), content);
        expectUpToDate(content);
        if (HasFatalFailure()) return;
        if (call <= failing) break;
    }
}

TEST_F(MigrationFaultTest, DamageIsToldOrWhatTheBookHeldIsThere) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    makeEarlier();
    if (HasFatalFailure()) return;
    constexpr std::size_t PageSize = 4096;
    std::size_t told = 0;
    const std::uint64_t cases = test::effort("ESTATEBOOK_MIGRATED_DAMAGES", 300, 30);
    for (std::uint64_t each = 0; each < cases; ++each) {
        DiskContent damaged = earlier;
        std::string& book = damaged.at(Path);
        const std::size_t page = random() % (book.size() / PageSize) * PageSize;
        switch (random() % 4) {
        case 0: {
            char& byte = book[random() % book.size()];
            byte = static_cast<char>(byte ^ (1 << random() % 8));
            break;
        }
        case 1: // where pages tell what is in them
            book[page + random() % 64] = static_cast<char>(random());
            break;
        case 2: // what is in them
            for (std::size_t place = page; place < page + PageSize; ++place)
                if (book[place] != 0 && random() % 200 == 0) book[place] = static_cast<char>(random());
            break;
        default:
            book.replace(page, PageSize,
                         book.substr(random() % (book.size() / PageSize) * PageSize, PageSize));
        }
        disk.load(damaged);
        const auto opened = open(SQLiteStore::Access::Write);
        if (opened) {
            ASSERT_EQ(test::contentAs(*comparedAs, **opened), content);
            continue;
        }
        ++told;
        ASSERT_EQ(disk.content().at(Path), book) << "it is left as it is: " << opened.error().message;
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
    SCOPED_TRACE("seed " + std::to_string(seed));
    makeEarlier();
    if (HasFatalFailure()) return;
    const auto sizeOf = [](const DiskContent& files) {
        std::size_t size = 0;
        for (const auto& [name, bytes] : files) size += bytes.size();
        return size;
    };
    // For the copy there is room, for the new book there is not.
    for (const std::size_t share : {1, 5, 15, 25}) {
        disk.load(earlier);
        disk.capacity = sizeOf(earlier) + sizeOf(earlier) * share / 10;
        for (int attempt = 0; attempt < 3; ++attempt) {
            const auto opened = open(SQLiteStore::Access::Write);
            if (opened) break;
            ASSERT_EQ(opened.error().code, StoreErrorCode::Full) << opened.error().message;
            ASSERT_EQ(disk.content(), earlier);
            ASSERT_FALSE(disk.isTaken("/book.copies"));
        }
        disk.capacity = SIZE_MAX;
        expectUpToDate(content);
        if (HasFatalFailure()) return;
    }
}

} // namespace
} // namespace estatebook::platform
