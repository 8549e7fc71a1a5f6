// SPDX-License-Identifier: MIT
#pragma once

/// A clock that stands still until a test moves it.

#include "platform/system/Clock.hpp"

namespace estatebook::testkit {

/// Stands in for the clock of the process for as long as it lives.
class HeldClock {
public:
    explicit HeldClock(platform::Date now) : now_(now) {
        platform::Clock::setNow([this] { return now_; });
        platform::Clock::setUptime([this] { return uptime_; });
    }
    ~HeldClock() {
        platform::Clock::setNow({});
        platform::Clock::setUptime({});
    }
    HeldClock(const HeldClock&) = delete;
    HeldClock& operator=(const HeldClock&) = delete;

    /// As somebody sets the clock: no time passes.
    void set(platform::Date now) { now_ = now; }
    void pass(double seconds) {
        now_.secondsSinceReferenceDate += seconds;
        uptime_ += seconds;
    }
    platform::Date now() const { return now_; }

private:
    platform::Date now_;
    double uptime_ = 1000;
};

} // namespace estatebook::testkit
