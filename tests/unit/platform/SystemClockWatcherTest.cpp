// SPDX-License-Identifier: MIT
#include "platform/system/SystemClockWatcher.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace estatebook::platform {
namespace {

/// Tells of a change whenever a test says so.
class PretendedSignal final : public ClockChangeSignal {
public:
    PretendedSignal() : descriptor_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~PretendedSignal() override { ::close(descriptor_); }
    int descriptor() const noexcept override { return descriptor_; }
    bool takeChange() override {
        ++asked;
        eventfd_t count = 0;
        return ::eventfd_read(descriptor_, &count) == 0 && isChange;
    }
    void raise() const { ::eventfd_write(descriptor_, 1); }

    bool isChange = true;
    int asked = 0;

private:
    int descriptor_;
};

bool isReadable(int descriptor) {
    pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&waiting, 1, 0) == 1;
}

class SystemClockWatcherTest : public testing::Test {
protected:
    SystemClockWatcherTest() {
        centre.addObserverSelectorNameObject(this, [this](const Notification& news) {
            ++heard;
            last = news;
        });
    }

    NotificationCentre centre;
    RunLoop loop;
    std::unique_ptr<PretendedSignal> owned = std::make_unique<PretendedSignal>();
    PretendedSignal& signal = *owned;
    int heard = 0;
    Notification last;
};

TEST_F(SystemClockWatcherTest, AClockThatWasSetIsToldOnTheLoop) {
    const SystemClockWatcher watcher(loop, std::move(owned), centre);
    signal.raise();
    EXPECT_EQ(heard, 0) << "only the loop delivers";
    EXPECT_TRUE(loop.turn());
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(last.name->view(), "NSSystemClockDidChangeNotification");
    EXPECT_TRUE(last.object.isAbsent());
    EXPECT_FALSE(last.userInfo);
    EXPECT_FALSE(loop.turn());
    signal.raise();
    loop.turn();
    EXPECT_EQ(heard, 2);
}

TEST_F(SystemClockWatcherTest, AWakeWithoutAChangeTellsNobody) {
    const SystemClockWatcher watcher(loop, std::move(owned), centre);
    signal.isChange = false;
    signal.raise();
    loop.turn();
    EXPECT_EQ(signal.asked, 1);
    EXPECT_EQ(heard, 0);
}

TEST_F(SystemClockWatcherTest, AWatcherThatEndedLeavesTheLoop) {
    std::make_unique<SystemClockWatcher>(loop, std::move(owned), centre).reset();
    EXPECT_TRUE(loop.isEmpty());
}

TEST_F(SystemClockWatcherTest, TheSystemsSignalIsSilentWhileNobodySetsTheClock) {
    const auto system = ClockChangeSignal::ofSystem();
    EXPECT_GE(system->descriptor(), 0);
    EXPECT_FALSE(isReadable(system->descriptor()));
    EXPECT_FALSE(system->takeChange());
    EXPECT_FALSE(isReadable(system->descriptor())) << "asking wakes nobody";
    EXPECT_FALSE(system->takeChange());
}

TEST_F(SystemClockWatcherTest, TheSystemsSignalNeverWakesALoopByItself) {
    const SystemClockWatcher watcher(loop, ClockChangeSignal::ofSystem(), centre);
    EXPECT_FALSE(loop.isEmpty());
    EXPECT_FALSE(isReadable(loop.descriptor()));
    EXPECT_FALSE(loop.turn());
    EXPECT_EQ(heard, 0);
}

TEST_F(SystemClockWatcherTest, ALoopMayHaveSeveralWatchers) {
    const SystemClockWatcher one(loop, std::move(owned), centre);
    const SystemClockWatcher other(loop, ClockChangeSignal::ofSystem(), centre);
    signal.raise();
    loop.turn();
    EXPECT_EQ(heard, 1);
}

} // namespace
} // namespace estatebook::platform
