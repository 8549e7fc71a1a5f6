// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/RunLoopDriver.hpp"

#include "desktop/QtUser.hpp"
#include "platform/calendar/Calendar.hpp"
#include "platform/system/Log.hpp"
#include "platform/system/SystemClockWatcher.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKCurrentDateController.hpp"
#include "support/HeldClock.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/eventfd.h>
#include <unistd.h>

namespace estatebook::platform {
namespace {

using test::settle;
using testing::ElementsAre;
using testing::HasSubstr;

Date at(std::int64_t year, std::int64_t month, std::int64_t day, std::int64_t hour = 0) {
    return *Calendar::current().dateFromComponents({.year = year, .month = month, .day = day, .hour = hour});
}

/// Readable from `raise` on; tells of it once.
class Bell final : public ClockChangeSignal {
public:
    Bell() : descriptor_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~Bell() override { ::close(descriptor_); }
    [[nodiscard]] int descriptor() const noexcept override { return descriptor_; }
    bool takeChange() override {
        eventfd_t count = 0;
        return ::eventfd_read(descriptor_, &count) == 0;
    }
    void raise() const { ::eventfd_write(descriptor_, 1); }

private:
    int descriptor_;
};

class RunLoopDriverTest : public testing::Test {
protected:
    RunLoopDriverTest() {
        Log::setSink([this](std::string_view line) { logged.emplace_back(line); });
    }
    ~RunLoopDriverTest() override { Log::setSink({}); }

    Ref<Timer> timer(double seconds, std::function<void()> what) {
        return Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
            seconds, nullptr, [what = std::move(what)](Timer&) { what(); }, {}, false);
    }

    std::vector<std::string> logged;
    RunLoop loop;
};

TEST_F(RunLoopDriverTest, ADescriptorIsReadInQtsTurn) {
    Bell bell;
    int rings = 0;
    loop.addDescriptor(bell.descriptor(), [&] { rings += bell.takeChange() ? 1 : 0; });
    const RunLoopDriver driver(loop);
    settle();
    EXPECT_EQ(rings, 0);
    bell.raise();
    settle();
    EXPECT_EQ(rings, 1);
    settle();
    EXPECT_EQ(rings, 1);
    loop.removeDescriptor(bell.descriptor());
}

TEST_F(RunLoopDriverTest, ATimerFiresInQtsLoop) {
    const RunLoopDriver driver(loop);
    bool hasFired = false;
    loop.addTimer(timer(0.001, [&] { hasFired = true; }));
    while (!hasFired) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

TEST_F(RunLoopDriverTest, WhatACallRaisesIsLoggedAndTheOthersAreMade) {
    Bell bell;
    int asked = 0;
    loop.addDescriptor(bell.descriptor(), [&] {
        bell.takeChange();
        throw RangeException("no room");
    });
    const RunLoopDriver driver(loop, [&] { ++asked; });
    EXPECT_EQ(asked, 1);
    bell.raise();
    settle();
    EXPECT_THAT(logged, ElementsAre(HasSubstr("no room")));
    EXPECT_EQ(asked, 2);
    loop.removeDescriptor(bell.descriptor());
}

TEST_F(RunLoopDriverTest, ADriverThatIsGoneTakesNoTurns) {
    Bell bell;
    int rings = 0;
    loop.addDescriptor(bell.descriptor(), [&] { rings += bell.takeChange() ? 1 : 0; });
    { const RunLoopDriver driver(loop); }
    bell.raise();
    settle();
    EXPECT_EQ(rings, 0);
    loop.removeDescriptor(bell.descriptor());
}

TEST_F(RunLoopDriverTest, TheDayMovesOnAtMidnightAndTheNextIsAwaited) {
    testkit::HeldClock clock(at(2025, 2, 15, 22));
    const auto today = TKCurrentDateController::init();
    RunLoopDriver driver(loop, [&] { loop.addTimer(today->timer()); });
    EXPECT_EQ(today->currentDate(), at(2025, 2, 15, 22));
    clock.pass(2 * 3600);
    driver.turn();
    EXPECT_EQ(today->currentDate(), at(2025, 2, 16));
    clock.pass(24 * 3600);
    driver.turn();
    EXPECT_EQ(today->currentDate(), at(2025, 2, 17));
    today->timer()->invalidate();
}

TEST_F(RunLoopDriverTest, AClockThatIsSetMovesTheDayOn) {
    testkit::HeldClock clock(at(2025, 2, 15, 22));
    const auto today = TKCurrentDateController::init();
    auto signal = std::make_unique<Bell>();
    const Bell& bell = *signal;
    const SystemClockWatcher watcher(loop, std::move(signal));
    const RunLoopDriver driver(loop, [&] { loop.addTimer(today->timer()); });
    clock.set(at(2025, 3, 1, 12));
    bell.raise();
    settle();
    EXPECT_EQ(today->currentDate(), at(2025, 3, 1, 12));
    today->timer()->invalidate();
}

} // namespace
} // namespace estatebook::platform
