// SPDX-License-Identifier: MIT
#include "platform/system/Timer.hpp"

#include "platform/system/Clock.hpp"

#include <cmath>
#include <utility>

namespace estatebook::platform {

Ref<Timer> Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(double seconds, Ref<Object> target,
                                                                     Selector selector, Value userInfo,
                                                                     bool repeats) {
    const double interval = seconds > 0 ? seconds : LeastInterval;
    return Ref<Timer>(
        new Timer(interval, std::move(target), std::move(selector), std::move(userInfo), repeats));
}

Timer::Timer(double interval, Ref<Object> target, Selector selector, Value userInfo, bool repeats)
    : Object(Counting::Local), interval_(interval), target_(std::move(target)),
      selector_(std::move(selector)), userInfo_(std::move(userInfo)),
      fireDate_{Clock::now().secondsSinceReferenceDate + interval}, fireUptime_(Clock::uptime() + interval),
      repeats_(repeats) {}

void Timer::fire() {
    if (!isValid_) return;
    const Ref<Timer> held(this);
    const Ref<Object> heldTarget = target_;
    const Selector selector = selector_; // the timer may be invalidated by what it calls
    struct Invalidation {
        Timer& timer;
        ~Invalidation() {
            if (!timer.repeats_) timer.invalidate();
        }
    } const afterwards{*this};
    selector(*this);
}

void Timer::invalidate() noexcept {
    if (!std::exchange(isValid_, false)) return;
    // Whatever goes with them finds the timer done.
    const Ref<Object> target = std::exchange(target_, nullptr);
    const Selector selector = std::exchange(selector_, nullptr);
    const Value userInfo = std::exchange(userInfo_, Value());
}

void Timer::moveFireDatePast(double uptime) noexcept {
    if (!repeats_ || fireUptime_ > uptime) return;
    const double seconds = (std::floor((uptime - fireUptime_) / interval_) + 1) * interval_;
    fireUptime_ += seconds;
    fireDate_.secondsSinceReferenceDate += seconds;
}

} // namespace estatebook::platform
