// SPDX-License-Identifier: MIT
#include "estatebook/watch/SignalWatcher.hpp"

#include <gtest/gtest.h>

namespace estatebook {
namespace {

class SignalWatcherTest : public testing::Test {
protected:
    platform::RunLoop loop;
    int heard = 0;
};

TEST_F(SignalWatcherTest, ASignalIsHeardInATurnOfTheLoop) {
    const SignalWatcher watcher(loop, {SIGINT, SIGTERM}, [&] { ++heard; });
    EXPECT_FALSE(loop.turn());
    raise(SIGTERM);
    EXPECT_EQ(heard, 0);
    EXPECT_TRUE(loop.turn());
    EXPECT_EQ(heard, 1);
    raise(SIGINT);
    raise(SIGTERM);
    loop.turn();
    EXPECT_EQ(heard, 2) << "both in one turn";
}

TEST_F(SignalWatcherTest, TwoWatchersHearTheirOwnSignals) {
    int resized = 0;
    const SignalWatcher ending(loop, {SIGTERM}, [&] { ++heard; });
    const SignalWatcher resizing(loop, {SIGWINCH}, [&] { ++resized; });
    raise(SIGWINCH);
    loop.turn();
    EXPECT_EQ(heard, 0);
    EXPECT_EQ(resized, 1);
}

TEST_F(SignalWatcherTest, AfterwardsSignalsDoWhatTheyDidBefore) {
    {
        const SignalWatcher watcher(loop, {SIGTERM}, [&] { ++heard; });
        raise(SIGTERM); // taken, and not left to end the program
    }
    EXPECT_TRUE(loop.isEmpty());
    EXPECT_EXIT(raise(SIGTERM), testing::KilledBySignal(SIGTERM), "");
}

} // namespace
} // namespace estatebook
