// SPDX-License-Identifier: MIT
#include "platform/system/Timer.hpp"

#include "platform/values/Exception.hpp"
#include "support/HeldClock.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace estatebook::platform {
namespace {

class Target final : public Object {
public:
    explicit Target(bool& lives) : Object(Counting::Local), lives_(lives) { lives_ = true; }

private:
    ~Target() override { lives_ = false; }
    bool& lives_;
};

class TimerTest : public testing::Test {
protected:
    Ref<Timer> timer(double seconds, bool repeats = false, Ref<Object> target = nullptr) {
        return Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
            seconds, std::move(target), [this](Timer&) { ++fired; }, Value(7), repeats);
    }

    testkit::HeldClock clock{Date{5000}};
    int fired = 0;
};

TEST_F(TimerTest, ATimerThatWasJustMadeIsValidAndHasNotFired) {
    const auto made = timer(60);
    EXPECT_TRUE(made->isValid());
    EXPECT_EQ(made->fireDate(), Date{5060});
    EXPECT_EQ(made->timeInterval(), 0) << "of one that fires once";
    EXPECT_EQ(made->userInfo(), Value(7));
    clock.pass(3600);
    EXPECT_TRUE(made->isValid());
    EXPECT_EQ(made->fireDate(), Date{5060});
    EXPECT_EQ(fired, 0);
}

TEST_F(TimerTest, ARepeatingTimerTellsItsInterval) {
    EXPECT_EQ(timer(60, true)->timeInterval(), 60);
    EXPECT_EQ(timer(0, true)->timeInterval(), 0.0001);
}

TEST_F(TimerTest, AnIntervalOfNothingOrLessIsATenthOfAMillisecond) {
    for (const double seconds : {0.0, -0.0, -5.0, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(timer(seconds)->fireDate(), Date{5000.0001}) << seconds;
        EXPECT_EQ(timer(seconds)->fireUptime(), 1000.0001) << seconds;
    }
}

TEST_F(TimerTest, FiringByHandOnceMakesItInvalid) {
    const auto made = timer(60);
    made->fire();
    EXPECT_EQ(fired, 1);
    EXPECT_FALSE(made->isValid());
    made->fire();
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerTest, ARepeatingTimerFiresByHandAsOftenAsOneLikesAndKeepsItsTime) {
    const auto made = timer(60, true);
    made->fire();
    made->fire();
    EXPECT_EQ(fired, 2);
    EXPECT_TRUE(made->isValid());
    EXPECT_EQ(made->fireDate(), Date{5060});
}

TEST_F(TimerTest, InvalidatingTwiceIsHarmless) {
    const auto made = timer(60, true);
    made->invalidate();
    made->invalidate();
    EXPECT_FALSE(made->isValid());
    made->fire();
    EXPECT_EQ(fired, 0);
    EXPECT_TRUE(made->userInfo().isAbsent());
}

TEST_F(TimerTest, TheTargetIsKeptUntilTheTimerIsInvalid) {
    bool lives = false;
    const auto invalidated = timer(60, true, makeRef<Target>(lives));
    EXPECT_TRUE(lives);
    invalidated->fire();
    EXPECT_TRUE(lives);
    invalidated->invalidate();
    EXPECT_FALSE(lives);
    EXPECT_FALSE(invalidated->target());

    const auto firedOnce = timer(60, false, makeRef<Target>(lives));
    EXPECT_TRUE(lives);
    firedOnce->fire();
    EXPECT_FALSE(lives);

    timer(60, false, makeRef<Target>(lives));
    EXPECT_FALSE(lives) << "with the timer itself";
}

TEST_F(TimerTest, ATimerMayBeInvalidatedByWhatItCalls) {
    bool lives = false;
    const auto made = Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        60, makeRef<Target>(lives),
        [&](Timer& timer) {
            timer.invalidate();
            EXPECT_TRUE(lives) << "it is still at work";
            ++fired;
        },
        {}, true);
    made->fire();
    EXPECT_EQ(fired, 1);
    EXPECT_FALSE(lives);
}

TEST_F(TimerTest, WhatATimerCallsMayRaise) {
    const auto made = Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        60, nullptr, [](Timer&) { throw RangeException("no"); }, {}, false);
    EXPECT_THROW(made->fire(), RangeException);
    EXPECT_FALSE(made->isValid());
}

TEST_F(TimerTest, SettingTheClockMovesNoTimer) {
    const auto made = timer(60);
    clock.set(Date{900000});
    EXPECT_EQ(made->fireDate(), Date{5060});
    EXPECT_EQ(made->fireUptime(), 1060);
}

} // namespace
} // namespace estatebook::platform
