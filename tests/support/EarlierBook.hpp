// SPDX-License-Identifier: MIT
#pragma once

/// EarlierBook: a book file that a program of an earlier form has written, with what it holds.
///
///     const auto book = EarlierBook::ofAnyModel(random);
///     disk.load(book.files);
///     const auto store = book.open(disk, SQLiteStore::Access::Write);    // brings it up to date
///     EXPECT_EQ(book.contentOf(**store), book.content);

#include "support/EarlierModel.hpp"
#include "support/MemoryDisk.hpp"
#include "support/SteppedLayout.hpp"
#include "support/StoreScript.hpp"

#include <random>
#include <stdexcept>
#include <string>
#include <utility>

namespace estatebook::test {

class EarlierBook {
    using Model = platform::Ref<platform::ManagedObjectModel>;
    using SQLiteStore = platform::SQLiteStore;

public:
    static inline const std::string Path = "/book.estatebook";

    /// Of a model that misses something of today's.
    [[nodiscard]] static EarlierBook ofAnyModel(std::mt19937_64& random) {
        EarlierBook book;
        Model model = EarlierModel::any(random()).make();
        if (isOfToday(model)) model = EarlierModel{.withoutEntities = {"State"}}.make();
        book.comparedAs_ = model;
        book.fill(random, model);
        return book;
    }
    /// Its rows stand otherwise than today's.
    [[nodiscard]] static EarlierBook ofFormerLayout(std::mt19937_64& random) {
        EarlierBook book;
        book.today_ = book.comparedAs_ = SteppedLayout::today();
        book.steps_ = &SteppedLayout::steps();
        // Now and then a book has no row that the step changes.
        for (int tries = 0; tries < 100; ++tries) {
            book.fill(random, SteppedLayout::former());
            MemoryDisk disk;
            disk.load(book.files);
            SteppedLayout::age(Path, disk.name());
            book.files = disk.content();
            const std::string asItWas = std::exchange(book.content, book.contentOn(disk));
            if (book.content != asItWas) return book;
        }
        throw std::logic_error("the step changes nothing");
    }

    /// As a program of today does.
    [[nodiscard]] platform::StoreResult<platform::Ref<SQLiteStore>>
    open(MemoryDisk& disk, SQLiteStore::Access access, const std::string& path = Path) const {
        return SQLiteStore::open(path, today_,
                                 {.access = access, .fileSystem = &disk, .layoutSteps = steps_});
    }
    [[nodiscard]] std::string contentOf(const platform::Store& store) const {
        return contentAs(*comparedAs_, store);
    }
    /// What a sound book holds, as a reader of today finds it; else what is wrong with it.
    [[nodiscard]] std::string contentOn(MemoryDisk& disk) const {
        const auto store = open(disk, SQLiteStore::Access::Read);
        if (!store) return store.error().message;
        const auto findings = (*store)->check();
        if (!findings) return findings.error().message;
        return findings->empty() ? contentOf(**store) : findings->front();
    }

    /// The disk.
    DiskContent files;
    std::string content;

private:
    EarlierBook() = default;

    [[nodiscard]] static bool isOfToday(const Model& model) {
        MemoryDisk disk;
        { const auto store = *SQLiteStore::create(Path, model, {.fileSystem = &disk}); }
        return !(*SQLiteStore::open(Path, bookModel(), {.fileSystem = &disk}))->migration();
    }
    void fill(std::mt19937_64& random, const Model& model) {
        StoreScript script(random(), StoreScript::Manner::Sound, model);
        MemoryDisk disk;
        {
            const auto twin = platform::InMemoryStore::make(model);
            const auto store = *SQLiteStore::create(Path, model, {.fileSystem = &disk});
            for (int saves = 0; saves < 6;) {
                const platform::StoreChanges changes = script.changes(*twin);
                if (const auto taken = twin->save(changes); !taken || !taken->landed()) continue;
                if (!store->save(changes)->landed()) throw std::logic_error("a sound save did not land");
                ++saves;
            }
            content = contentAs(*model, *store);
        }
        files = disk.content();
    }

    Model today_ = bookModel();
    /// By which contents are told.
    Model comparedAs_;
    const platform::sqlite::LayoutSteps* steps_ = nullptr;
};

} // namespace estatebook::test
