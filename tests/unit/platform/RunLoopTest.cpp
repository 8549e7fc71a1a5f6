// SPDX-License-Identifier: MIT
#include "platform/system/RunLoop.hpp"

#include "platform/values/Exception.hpp"
#include "support/HeldClock.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <unistd.h>
#include <vector>

namespace estatebook::platform {
namespace {

using testing::ElementsAre;

/// Readable from `raise` to `calm`.
class Bell {
public:
    Bell() : descriptor_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~Bell() { ::close(descriptor_); }
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;
    int descriptor() const { return descriptor_; }
    void raise() const { ::eventfd_write(descriptor_, 1); }
    void calm() const {
        eventfd_t count = 0;
        ::eventfd_read(descriptor_, &count);
    }

private:
    int descriptor_;
};

bool isReadable(int descriptor) {
    pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&waiting, 1, 0) == 1;
}

class RunLoopTest : public testing::Test {
protected:
    Ref<Timer> timer(double seconds, std::string name, bool repeats = false) {
        return Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
            seconds, nullptr, [this, name = std::move(name)](Timer&) { log.push_back(name); }, {}, repeats);
    }

    testkit::HeldClock clock{Date{5000}};
    RunLoop loop;
    std::vector<std::string> log;
};

TEST_F(RunLoopTest, AnEmptyLoopHasNothingToWaitFor) {
    EXPECT_TRUE(loop.isEmpty());
    EXPECT_FALSE(loop.nextTimeout());
    EXPECT_FALSE(loop.turn());
    EXPECT_FALSE(loop.runOnce());
    loop.run();
}

TEST_F(RunLoopTest, ATimerFiresOnceItsSecondsHavePassed) {
    loop.addTimer(timer(60, "minute"));
    EXPECT_EQ(loop.nextTimeout(), 60);
    EXPECT_FALSE(loop.turn());
    clock.pass(59.5);
    EXPECT_EQ(loop.nextTimeout(), 0.5);
    EXPECT_FALSE(loop.turn());
    clock.pass(0.5);
    EXPECT_EQ(loop.nextTimeout(), 0);
    EXPECT_TRUE(loop.turn());
    EXPECT_THAT(log, ElementsAre("minute"));
    EXPECT_TRUE(loop.isEmpty());
    clock.pass(3600);
    EXPECT_FALSE(loop.turn());
}

TEST_F(RunLoopTest, TimersFireInTheOrderInWhichTheyAreDue) {
    loop.addTimer(timer(30, "third"));
    loop.addTimer(timer(10, "first"));
    loop.addTimer(timer(20, "second"));
    loop.addTimer(timer(30, "fourth"));
    clock.pass(100);
    loop.turn();
    EXPECT_THAT(log, ElementsAre("first", "second", "third", "fourth"));
}

TEST_F(RunLoopTest, SettingTheClockMakesNoTimerDue) {
    loop.addTimer(timer(60, "minute"));
    clock.set(Date{1e9});
    EXPECT_EQ(loop.nextTimeout(), 60);
    EXPECT_FALSE(loop.turn());
    clock.set(Date{-1e9});
    clock.pass(60);
    EXPECT_TRUE(loop.turn());
}

TEST_F(RunLoopTest, ARepeatingTimerLeavesOutWhatItMissed) {
    const auto minute = timer(60, "minute", true);
    loop.addTimer(minute);
    clock.pass(60);
    loop.turn();
    EXPECT_EQ(loop.nextTimeout(), 60);
    clock.pass(200);
    loop.turn();
    EXPECT_THAT(log, ElementsAre("minute", "minute"));
    EXPECT_EQ(minute->fireDate(), Date{5300}) << "in step with its beginning";
    EXPECT_EQ(loop.nextTimeout(), 40);
    minute->invalidate();
    EXPECT_TRUE(loop.isEmpty());
    clock.pass(100);
    EXPECT_FALSE(loop.turn());
}

TEST_F(RunLoopTest, ATimerIsScheduledOnceHoweverOftenItIsAdded) {
    const auto minute = timer(60, "minute", true);
    loop.addTimer(minute);
    loop.addTimer(minute);
    clock.pass(60);
    loop.turn();
    EXPECT_EQ(log.size(), 1u);
}

TEST_F(RunLoopTest, ATimerMayScheduleItselfAgainWhileItFires) {
    const auto minute = Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        60, nullptr,
        [&](Timer& timer) {
            log.push_back("fired");
            loop.addTimer(Ref<Timer>(&timer));
        },
        {}, true);
    loop.addTimer(minute);
    clock.pass(60);
    loop.turn();
    clock.pass(60);
    loop.turn();
    EXPECT_EQ(log.size(), 2u);
}

TEST_F(RunLoopTest, AnInvalidTimerIsNotWaitedFor) {
    const auto early = timer(10, "early");
    early->invalidate();
    loop.addTimer(early);
    EXPECT_TRUE(loop.isEmpty());
    const auto late = timer(20, "late");
    loop.addTimer(late);
    loop.addTimer(timer(30, "later"));
    late->invalidate();
    EXPECT_EQ(loop.nextTimeout(), 30);
    clock.pass(30);
    loop.turn();
    EXPECT_THAT(log, ElementsAre("later"));
}

TEST_F(RunLoopTest, ALoopKeepsATimerUntilItIsInvalid) {
    const auto minute = timer(60, "minute");
    loop.addTimer(minute);
    EXPECT_EQ(minute->referenceCount(), 2u);
    minute->fire();
    loop.turn();
    EXPECT_EQ(minute->referenceCount(), 1u);
}

TEST_F(RunLoopTest, ATimerMadeInATurnWaitsForItsOwnTime) {
    const auto first = Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        1, nullptr, [&](Timer&) { loop.addTimer(timer(0, "next")); }, {}, false);
    loop.addTimer(first);
    clock.pass(1);
    EXPECT_TRUE(loop.turn());
    EXPECT_TRUE(log.empty());
    clock.pass(1);
    loop.turn();
    EXPECT_THAT(log, ElementsAre("next"));
}

TEST_F(RunLoopTest, AReadableDescriptorIsTold) {
    const Bell bell;
    loop.addDescriptor(bell.descriptor(), [&] {
        log.push_back("bell");
        bell.calm();
    });
    EXPECT_FALSE(loop.isEmpty());
    EXPECT_FALSE(loop.turn());
    bell.raise();
    EXPECT_TRUE(loop.turn());
    EXPECT_FALSE(loop.turn());
    EXPECT_THAT(log, ElementsAre("bell"));
    loop.removeDescriptor(bell.descriptor());
    loop.removeDescriptor(bell.descriptor());
    bell.raise();
    EXPECT_FALSE(loop.turn());
    EXPECT_TRUE(loop.isEmpty());
}

TEST_F(RunLoopTest, ADescriptorThatStaysReadableIsToldInEachTurn) {
    const Bell bell;
    bell.raise();
    loop.addDescriptor(bell.descriptor(), [&] { log.push_back("bell"); });
    loop.turn();
    loop.turn();
    EXPECT_EQ(log.size(), 2u);
    loop.removeDescriptor(bell.descriptor());
}

TEST_F(RunLoopTest, ADescriptorMayTakeItselfOrAnotherAway) {
    const Bell one;
    const Bell other;
    const auto removeBoth = [&] {
        log.push_back("rung");
        loop.removeDescriptor(one.descriptor());
        loop.removeDescriptor(other.descriptor());
    };
    loop.addDescriptor(one.descriptor(), removeBoth);
    loop.addDescriptor(other.descriptor(), removeBoth);
    one.raise();
    other.raise();
    loop.turn();
    EXPECT_EQ(log.size(), 1u) << "whichever came first took the other away";
}

TEST_F(RunLoopTest, WhatComesBackUnderTheSameNumberIsAnother) {
    const Bell one;
    const Bell other;
    const auto replace = [&](const Bell& mine, const Bell& theirs) {
        return [&] {
            mine.calm();
            loop.removeDescriptor(theirs.descriptor());
            loop.addDescriptor(theirs.descriptor(), [&] { log.push_back("second life"); });
        };
    };
    loop.addDescriptor(one.descriptor(), replace(one, other));
    loop.addDescriptor(other.descriptor(), replace(other, one));
    one.raise();
    other.raise();
    loop.turn();
    EXPECT_TRUE(log.empty()) << "not in the turn that was under way";
    loop.turn();
    EXPECT_THAT(log, ElementsAre("second life"));
}

TEST_F(RunLoopTest, ADescriptorThatCannotBeWaitedForIsRefused) {
    const Bell bell;
    loop.addDescriptor(bell.descriptor(), [] {});
    EXPECT_THROW(loop.addDescriptor(bell.descriptor(), [] {}), InvalidArgumentException) << "twice";
    EXPECT_THROW(loop.addDescriptor(-1, [] {}), InvalidArgumentException);
    const int file = ::open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
    EXPECT_THROW(loop.addDescriptor(file, [] {}), InvalidArgumentException) << "a file can always be read";
    ::close(file);
    loop.removeDescriptor(bell.descriptor());
    EXPECT_TRUE(loop.isEmpty());
}

TEST_F(RunLoopTest, DescriptorsAreToldBeforeTimers) {
    const Bell bell;
    loop.addDescriptor(bell.descriptor(), [&] {
        log.push_back("bell");
        bell.calm();
    });
    loop.addTimer(timer(1, "timer"));
    bell.raise();
    clock.pass(1);
    loop.turn();
    EXPECT_THAT(log, ElementsAre("bell", "timer"));
}

TEST_F(RunLoopTest, AnExceptionLeavesTheTurnWhenEverythingDueIsDone) {
    const Bell bell;
    loop.addDescriptor(bell.descriptor(), [&] {
        bell.calm();
        throw RangeException("the first");
    });
    const auto failing = Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        1, nullptr, [](Timer&) { throw InvalidArgumentException("the second"); }, {}, true);
    loop.addTimer(failing);
    loop.addTimer(timer(1, "timer"));
    bell.raise();
    clock.pass(1);
    EXPECT_THROW(loop.turn(), RangeException);
    EXPECT_THAT(log, ElementsAre("timer"));
    EXPECT_EQ(loop.nextTimeout(), 1) << "the repeating one goes on";
    loop.removeDescriptor(bell.descriptor());
}

TEST_F(RunLoopTest, StopEndsTheInnermostRun) {
    const Bell outer;
    const Bell inner;
    outer.raise();
    inner.raise();
    loop.addDescriptor(outer.descriptor(), [&] {
        loop.removeDescriptor(outer.descriptor());
        loop.addDescriptor(inner.descriptor(), [&] {
            log.push_back("inner");
            loop.stop();
        });
        loop.run();
        log.push_back("outer");
        loop.stop();
    });
    loop.run();
    EXPECT_THAT(log, ElementsAre("inner", "outer"));
    loop.removeDescriptor(inner.descriptor());
}

TEST_F(RunLoopTest, ARunEndsWhenNothingIsLeftToWaitFor) {
    loop.addTimer(timer(1, "one"));
    loop.addTimer(timer(1, "other"));
    clock.pass(1);
    loop.run();
    EXPECT_THAT(log, ElementsAre("one", "other"));
}

TEST_F(RunLoopTest, AHostWatchesOneDescriptorForAll) {
    const Bell bell;
    loop.addDescriptor(bell.descriptor(), [&] { bell.calm(); });
    EXPECT_FALSE(isReadable(loop.descriptor()));
    bell.raise();
    EXPECT_TRUE(isReadable(loop.descriptor()));
    loop.turn();
    EXPECT_FALSE(isReadable(loop.descriptor())) << "the turn has done it all";
}

TEST(RunLoopHostTest, ATimerMakesTheDescriptorReadableByItself) {
    RunLoop loop;
    bool hasFired = false;
    loop.addTimer(Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        0, nullptr, [&](Timer&) { hasFired = true; }, {}, false));
    pollfd waiting{.fd = loop.descriptor(), .events = POLLIN, .revents = 0};
    while (!hasFired) {
        ASSERT_EQ(::poll(&waiting, 1, -1), 1);
        loop.turn();
    }
    EXPECT_FALSE(isReadable(loop.descriptor()));
}

TEST(RunLoopHostTest, TheSystemsClocksDriveARun) {
    RunLoop loop;
    int fired = 0;
    loop.addTimer(Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        0, nullptr,
        [&](Timer&) {
            if (++fired == 3) loop.stop();
        },
        {}, true));
    loop.run();
    EXPECT_EQ(fired, 3);
}

} // namespace
} // namespace estatebook::platform
