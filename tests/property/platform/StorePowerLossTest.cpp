// SPDX-License-Identifier: MIT

// The power fails at each operation of a book's making and saves, also while it is opened after such a failure. What had been
// acknowledged is there, every save is whole or absent, and the book is sound.

#include "support/Effort.hpp"
#include "support/Platter.hpp"
#include "support/SavedHistory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <span>
#include <unordered_set>

namespace estatebook::platform {
namespace {

using test::DiskContent;
using test::DiskOperation;
using test::MemoryDisk;
using test::Platter;
using test::SavedHistory;

/// Which states of a book a power loss may leave: one of `states` from the first to the last.
struct Allowed {
    bool mayBeMissing = false;
    std::size_t first = 0;
    std::size_t last = 0;
};

Allowed allowedAt(const SavedHistory& history, std::size_t operations) {
    Allowed allowed{.mayBeMissing = true};
    for (std::size_t index = 0; index < history.states().size(); ++index) {
        const SavedHistory::State& state = history.states()[index];
        if (state.begun > operations) break;
        allowed.last = index;
        if (state.acknowledged > operations) break;
        allowed.first = index;
        allowed.mayBeMissing = false;
    }
    return allowed;
}

class PowerLosses {
public:
    PowerLosses(std::uint64_t seed, std::uint64_t cases) : seed_(seed), random_(seed), wanted_(cases) {}

    void run() {
        while (cases_ < wanted_ && !testing::Test::HasFailure()) {
            const std::uint64_t seed = random_();
            play(SavedHistory(seed, 8 + random_() % 5));
        }
        std::printf("%llu power losses, %llu of them while a book was opened after another, in %llu books "
                    "(seed %llu)\n",
                    static_cast<unsigned long long>(cases_), static_cast<unsigned long long>(second_),
                    static_cast<unsigned long long>(books_), static_cast<unsigned long long>(seed_));
    }

private:
    void play(const SavedHistory& history) {
        ++books_;
        seen_.clear();
        Platter platter;
        const auto& operations = history.operations();
        for (std::size_t count = 0; count <= operations.size(); ++count) {
            if (count > 0) platter.apply(operations[count - 1]);
            for (int each = 0; each < 3 && cases_ < wanted_; ++each) {
                SCOPED_TRACE("seed " + std::to_string(seed_) + ", case " + std::to_string(cases_) +
                             ", after operation " + std::to_string(count));
                endure(platter.afterPowerLoss(random_), history, allowedAt(history, count));
                if (testing::Test::HasFailure()) return;
            }
        }
    }

    /// Opens what a power loss left; sometimes the power fails again meanwhile.
    void endure(const DiskContent& content, const SavedHistory& history, const Allowed& allowed) {
        if (!isNew(content, allowed)) return;
        ++cases_;
        std::vector<DiskOperation> operations;
        disk_.load(content);
        disk_.log = &operations;
        expectSound(history, allowed);
        disk_.log = nullptr;
        if (operations.empty() || random_() % 2 == 0 || cases_ == wanted_) return;
        const auto count = static_cast<std::ptrdiff_t>(random_() % (operations.size() + 1));
        Platter platter(content);
        std::for_each(operations.begin(), operations.begin() + count,
                      [&](const DiskOperation& operation) { platter.apply(operation); });
        const DiskContent second = platter.afterPowerLoss(random_);
        if (!isNew(second, allowed)) return;
        ++cases_;
        ++second_;
        disk_.load(second);
        expectSound(history, allowed);
        if (random_() % 4 == 0 && disk_.isTaken(std::string(test::HistoryPath))) expectSaving();
    }

    /// Whether no such disk was opened before, after a power loss at about the same time.
    bool isNew(const DiskContent& content, const Allowed& allowed) {
        std::string all = std::to_string(allowed.first) + "-" + std::to_string(allowed.last);
        for (const auto& [name, bytes] : content) all += name + std::to_string(bytes.size()) + bytes;
        return seen_.insert(std::hash<std::string>()(all)).second;
    }

    void expectSound(const SavedHistory& history, const Allowed& allowed) {
        const std::string path(test::HistoryPath);
        // Who only reads takes back what a writer left, too.
        const auto access = random_() % 4 == 0 ? SQLiteStore::Access::Read : SQLiteStore::Access::Write;
        const SQLiteStore::Options options{.access = access, .fileSystem = &disk_};
        if (!disk_.isTaken(path)) {
            EXPECT_TRUE(allowed.mayBeMissing) << "the book is missing";
            EXPECT_TRUE(SQLiteStore::create(path, test::bookModel(), options));
            return;
        }
        const auto store = SQLiteStore::open(path, test::bookModel(), options);
        ASSERT_TRUE(store) << store.error().message;
        const auto findings = (*store)->check();
        ASSERT_TRUE(findings) << findings.error().message;
        EXPECT_EQ(std::vector<std::string>(), *findings);
        const auto content = test::contentOf(**store);
        ASSERT_TRUE(content) << content.error().message;
        const std::span states(history.states());
        const auto found = std::ranges::find(states, *content, &SavedHistory::State::content);
        ASSERT_NE(found, states.end()) << "a save is there in part:\n" << *content;
        const auto place = static_cast<std::size_t>(found - states.begin());
        EXPECT_GE(place, allowed.first) << "an acknowledged save is lost";
        EXPECT_LE(place, allowed.last);
    }

    void expectSaving() {
        const auto store =
            SQLiteStore::open(std::string(test::HistoryPath), test::bookModel(), {.fileSystem = &disk_});
        ASSERT_TRUE(store) << store.error().message;
        StoreChanges changes = test::newChanges();
        changes.insertions = {test::RowOf("Tenant", *(*store)->lastKey() + 1)};
        const auto outcome = (*store)->save(changes);
        EXPECT_TRUE(outcome && outcome->landed());
        const auto findings = (*store)->check();
        EXPECT_TRUE(findings && findings->empty());
    }

    std::uint64_t seed_;
    std::mt19937_64 random_;
    std::uint64_t wanted_;
    std::uint64_t cases_ = 0;
    std::uint64_t second_ = 0;
    std::uint64_t books_ = 0;
    std::unordered_set<std::size_t> seen_;
    MemoryDisk disk_;
};

// In two halves, which may run beside each other.
class StorePowerLossTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(StorePowerLossTest, WhatWasAcknowledgedIsThereWheneverThePowerFails) {
    PowerLosses(test::anySeed() + GetParam(), test::effort("ESTATEBOOK_POWER_LOSSES", 50'000, 1'000) / 2)
        .run();
}

INSTANTIATE_TEST_SUITE_P(FirstHalf, StorePowerLossTest, testing::Values(0));
INSTANTIATE_TEST_SUITE_P(SecondHalf, StorePowerLossTest, testing::Values(1));

} // namespace
} // namespace estatebook::platform
