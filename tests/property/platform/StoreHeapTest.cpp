// SPDX-License-Identifier: MIT

// A save finds no memory: each request of `new` fails, once or from then on. No exception leaves the store, the error tells the truth,
// nothing is lost, and the next save works.

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/PersistentStoreCoordinator.hpp"
#include "store/TKProperty.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "support/Effort.hpp"
#include "support/FailingHeap.hpp"
#include "support/StoreDescription.hpp"
#include "support/StoreScript.hpp"
#include "support/WatchedStore.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <new>
#include <optional>
#include <random>

namespace estatebook::platform {
namespace {

using test::FailingHeap;

class StoreHeapTest : public testing::TestWithParam<FailingHeap::Fault> {
protected:
    StoreHeapTest() {
        if (!FailingHeap::isPossible()) return;
        test::StoreScript script(seed_, test::StoreScript::Manner::Sound);
        const auto twin = InMemoryStore::make(test::bookModel());
        const auto store = *SQLiteStore::create(path_, test::bookModel(), {});
        for (int count = 0; count < 5;) {
            changes_ = script.changes(*twin);
            const std::string former = *test::contentOf(*twin);
            const auto taken = twin->save(changes_);
            if (!taken || !taken->landed()) continue;
            before_ = former;
            after_ = *test::contentOf(*twin);
            if (++count < 5) {
                EXPECT_TRUE(store->save(changes_)->landed());
            }
        }
    }
    void SetUp() override {
        if (!FailingHeap::isPossible()) GTEST_SKIP() << "the sanitizers own the heap";
        std::ifstream file(path_, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
    }
    void restore() { std::ofstream(path_, std::ios::binary) << bytes_; }
    StoreResult<Ref<SQLiteStore>> open() { return SQLiteStore::open(path_, test::bookModel(), {}); }

    const std::uint64_t seed_ = test::anySeed();
    std::mt19937_64 random_{seed_};
    test::TestFolder folder_;
    const std::string path_ = folder_.file("book.estatebook");
    StoreChanges changes_;
    std::string before_;
    std::string after_;
    std::string bytes_;
};

TEST_P(StoreHeapTest, SavesTellTheTruth) {
    int cases = 0;
    const std::uint64_t step = std::min<std::uint64_t>(3, test::effort("ESTATEBOOK_MEMORY_STEP", 3, 3));
    for (std::uint64_t at = 1; !HasFailure(); at += step, ++cases) {
        SCOPED_TRACE("seed " + std::to_string(seed_) + ", request " + std::to_string(at));
        restore();
        const auto store = *open();
        StoreResult<SaveOutcome> outcome = SaveOutcome{};
        bool hasFailed = false;
        {
            const FailingHeap heap(at + random_() % step, GetParam());
            outcome = store->save(changes_);
            hasFailed = heap.hasFailed();
        }
        if (!hasFailed) break;
        const auto landed = store->hasLanded(changes_.token);
        ASSERT_TRUE(landed) << landed.error().message;
        if (outcome) {
            EXPECT_TRUE(*landed);
        } else if (outcome.error().code != StoreErrorCode::OutcomeUnknown) {
            EXPECT_EQ(StoreErrorCode::OutOfMemory, outcome.error().code) << outcome.error().message;
            EXPECT_FALSE(*landed);
        }
        EXPECT_EQ(*landed ? after_ : before_, *test::contentOf(*store));
        if (!*landed) {
            EXPECT_TRUE(store->save(changes_)->landed());
        }
        EXPECT_EQ(after_, *test::contentOf(*store));
        EXPECT_EQ(std::vector<std::string>(), *store->check());
    }
    std::printf("Save, heap: %d cases (seed %llu)\n", cases, static_cast<unsigned long long>(seed_));
    EXPECT_GT(cases, 5);
}

TEST_P(StoreHeapTest, ReadersTellTheTruth) {
    int cases = 0;
    const std::uint64_t step = test::effort("ESTATEBOOK_MEMORY_STEP", 20, 20);
    for (std::uint64_t at = 1; !HasFailure(); at += step, ++cases) {
        SCOPED_TRACE("seed " + std::to_string(seed_) + ", request " + std::to_string(at));
        StoreResult<std::string> content = std::string();
        StoreResult<std::vector<std::string>> findings = std::vector<std::string>();
        bool hasFailed = false;
        {
            const FailingHeap heap(at + random_() % step, GetParam());
            const auto store = open();
            if (store) {
                findings = (*store)->check();
                const auto keys = (*store)->fetchKeys(test::entityNamed("Account"));
                if (!keys) content = keys.error();
            } else {
                content = store.error();
            }
            hasFailed = heap.hasFailed();
        }
        if (!hasFailed) break;
        if (!content) {
            EXPECT_EQ(StoreErrorCode::OutOfMemory, content.error().code) << content.error().message;
        }
        if (!findings) {
            EXPECT_EQ(StoreErrorCode::OutOfMemory, findings.error().code) << findings.error().message;
        } else {
            EXPECT_EQ(std::vector<std::string>(), *findings);
        }
        EXPECT_EQ(before_, *test::contentOf(**open()));
    }
    std::printf("Read, heap: %d cases (seed %llu)\n", cases, static_cast<unsigned long long>(seed_));
    EXPECT_GT(cases, 10);
}

TEST(UnknownSaveTest, WhatThereIsNoMemoryToKeepIsRecalledFromTheStore) {
    if (!FailingHeap::isPossible()) GTEST_SKIP() << "the sanitizers own the heap";
    const auto store = makeRef<test::WatchedStore>(Ref<Store>(InMemoryStore::make(test::bookModel())));
    const auto contextOnIt = [&] {
        auto coordinator = makeRef<PersistentStoreCoordinator>(test::bookModel());
        coordinator->addPersistentStore(Ref<Store>(store));
        auto context = makeRef<ManagedObjectContext>(ConcurrencyType::MainQueue);
        context->setPersistentStoreCoordinator(std::move(coordinator));
        return context;
    };
    const auto book = contextOnIt();
    const auto flat = book->insertNewObject<TKProperty>("Property");
    flat->setRentalAmount(Decimal(1));
    flat->createTransaction()->setAmount(Decimal(2));
    std::optional<FailingHeap> heap;
    store->onSave = [&](Store& inner, const StoreChanges& changes) -> StoreResult<SaveOutcome> {
        EXPECT_TRUE(inner.save(changes));
        const StoreError unknown{StoreErrorCode::OutcomeUnknown, "", "unknown"};
        heap.emplace(1, FailingHeap::Fault::FromThenOn);
        return unknown;
    };
    bool isTold = false;
    try {
        static_cast<void>(book->save());
    } catch (const std::bad_alloc&) {
        isTold = true;
    }
    heap.reset();
    EXPECT_TRUE(isTold);
    EXPECT_TRUE(flat->isInserted());
    store->onSave = nullptr;
    flat->setBondAmount(Decimal(3));
    ASSERT_TRUE(book->save());
    EXPECT_FALSE(book->hasChanges());
    const auto again = contextOnIt();
    const auto all = again->fetchAll<TKProperty>("Property");
    ASSERT_EQ(all.size(), 1u) << "nothing is saved twice";
    EXPECT_EQ(all[0]->rentalAmount(), Decimal(1));
    EXPECT_EQ(all[0]->bondAmount(), Decimal(3));
    EXPECT_EQ(all[0]->transactions().count(), 1u);
}

INSTANTIATE_TEST_SUITE_P(, StoreHeapTest,
                         testing::Values(FailingHeap::Fault::Once, FailingHeap::Fault::FromThenOn),
                         [](const auto& info) {
                             return info.param == FailingHeap::Fault::Once ? "Once" : "FromThenOn";
                         });

} // namespace
} // namespace estatebook::platform
