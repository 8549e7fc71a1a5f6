// SPDX-License-Identifier: MIT
#include "platform/system/ClockChangeSignal.hpp"

#include "platform/values/Exception.hpp"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <limits>
#include <string>
#include <sys/timerfd.h>
#include <unistd.h>

namespace estatebook::platform {

namespace {

/// A timer for the end of time, which the system cancels when its clock is set.
class CancelledTimer final : public ClockChangeSignal {
public:
    CancelledTimer() : timer_(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)) {
        // Arming anew tells of a change that nobody has read, and arms all the same.
        if (timer_ >= 0 && (arm() || errno == ECANCELED)) return;
        const std::string reason = std::strerror(errno);
        ::close(timer_);
        throw InternalInconsistencyException("changes of the clock cannot be watched: " + reason);
    }
    ~CancelledTimer() override { ::close(timer_); }

    [[nodiscard]] int descriptor() const noexcept override { return timer_; }

    bool takeChange() override {
        std::uint64_t expirations = 0;
        const ssize_t count = ::read(timer_, &expirations, sizeof expirations);
        if (count < 0 && errno == EAGAIN) return false;
        const bool wasCancelled = count < 0 && errno == ECANCELED;
        const bool wasCancelledSince = !arm() && errno == ECANCELED;
        return wasCancelled || wasCancelledSince;
    }

private:
    [[nodiscard]] bool arm() const noexcept {
        itimerspec never{};
        never.it_value.tv_sec = std::numeric_limits<time_t>::max();
        return ::timerfd_settime(timer_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr) == 0;
    }

    int timer_;
};

} // namespace

ClockChangeSignal::~ClockChangeSignal() = default;

std::unique_ptr<ClockChangeSignal> ClockChangeSignal::ofSystem() {
    return std::make_unique<CancelledTimer>();
}

} // namespace estatebook::platform
