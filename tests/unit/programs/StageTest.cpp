// SPDX-License-Identifier: MIT

// A work on a thread of its own: its order, its bounds, and how it ends.

#include "estatebook/Stage.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <vector>

namespace estatebook {
namespace {

using testing::ElementsAre;

TEST(StageTest, ItemsAreWorkedOnInTheirOrder) {
    std::vector<int> done;
    Stage<int> stage([&](int item) { done.push_back(item); });
    std::vector<int> all(1000);
    std::iota(all.begin(), all.end(), 0);
    for (const int item : all) stage.put(item);
    stage.finish();
    EXPECT_EQ(done, all);
}

TEST(StageTest, TheWorkIsDoneByAnotherThreadAndItemsEndWhereTheyWereMade) {
    const auto here = std::this_thread::get_id();
    std::vector<std::thread::id> workers;
    std::vector<std::thread::id> enders;
    {
        Stage<std::shared_ptr<int>> stage(
            [&](const std::shared_ptr<int>&) { workers.push_back(std::this_thread::get_id()); });
        for (int number = 0; number < 20; ++number)
            stage.put(std::shared_ptr<int>(new int(number), [&](const int* item) {
                enders.push_back(std::this_thread::get_id());
                delete item;
            }));
        stage.finish();
    }
    EXPECT_THAT(workers, testing::AllOf(testing::SizeIs(20), testing::Each(testing::Ne(here))));
    EXPECT_THAT(enders, testing::AllOf(testing::SizeIs(20), testing::Each(here)));
}

TEST(StageTest, WhoMakesItemsFasterThanTheyAreTakenWaits) {
    std::atomic<std::size_t> taken = 0;
    std::size_t farthest = 0;
    Stage<std::size_t> stage([&](std::size_t) { ++taken; });
    for (std::size_t made = 1; made <= 500; ++made) {
        stage.put(made);
        farthest = std::max(farthest, made - taken);
    }
    stage.finish();
    EXPECT_LE(farthest, Stage<std::size_t>::Room + 1) << "those that wait, and the one that is worked on";
    EXPECT_EQ(taken, 500u);
}

TEST(StageTest, WhatTheWorkRaisesLeavesOnceAndNothingIsDoneBehindIt) {
    std::vector<int> done;
    Stage<int> stage([&](int item) {
        if (item == 2) throw std::runtime_error("the paper is out");
        done.push_back(item);
    });
    bool isTold = false;
    for (int item = 0; item < 100 && !isTold; ++item) {
        try {
            stage.put(item);
        } catch (const std::runtime_error&) {
            isTold = true;
        }
    }
    EXPECT_TRUE(isTold) << "there is room for fewer than were put";
    EXPECT_THROW(stage.finish(), std::runtime_error);
    EXPECT_THAT(done, ElementsAre(0, 1));
}

TEST(StageTest, WhatTheLastItemRaisesIsToldInTheEnd) {
    Stage<int> stage([](int) { throw std::runtime_error("the paper is out"); });
    stage.put(1);
    EXPECT_THROW(stage.finish(), std::runtime_error);
}

TEST(StageTest, WithoutFinishWhatWasPutIsDoneAllTheSame) {
    std::vector<int> done;
    std::latch begins(1);
    try {
        Stage<int> stage([&](int item) {
            begins.wait();
            done.push_back(item);
        });
        stage.put(1);
        stage.put(2);
        begins.count_down();
        throw std::runtime_error("the next one cannot be made");
    } catch (const std::runtime_error&) {
    }
    EXPECT_THAT(done, ElementsAre(1, 2));
}

} // namespace
} // namespace estatebook
