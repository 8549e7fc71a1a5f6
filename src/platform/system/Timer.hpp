// SPDX-License-Identifier: MIT
#pragma once

/// Timer: calls an operation of its target after some seconds, once or again and again.
///
/// A timer that was just made is not scheduled: it is valid and has a fire date, and waits for ever unless it is fired
/// by hand or a RunLoop is given it. It keeps its target alive until it is invalid.
///
///     auto timer = Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
///         60, Ref<Object>(this), [this](Timer&) { refresh(); }, {}, false);
///     loop.addTimer(timer);
///
/// The trap: seconds are those of `Clock::uptime`. Setting the system's clock moves neither a timer nor its fire date; who
/// waits for a time of day makes another timer then (SystemClockWatcher).

#include "EstateBook_ModelExport.hpp"
#include "platform/values/Date.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"
#include "platform/values/Value.hpp"

#include <functional>

namespace estatebook::platform {

class ESTATEBOOK_API Timer final : public Object {
public:
    using Selector = std::function<void(Timer&)>;

    /// The interval that stands for one of 0 or less, in seconds.
    static constexpr double LeastInterval = 0.0001;

    /// timerWithTimeInterval:target:selector:userInfo:repeats:
    /// A timer that is not scheduled. The target may be null.
    [[nodiscard]] static Ref<Timer>
    timerWithTimeIntervalTargetSelectorUserInfoRepeats(double seconds, Ref<Object> target, Selector selector,
                                                       Value userInfo, bool repeats);

    /// timeInterval: the seconds between two firings; 0 for a timer that fires once.
    [[nodiscard]] double timeInterval() const noexcept { return repeats_ ? interval_ : 0; }
    /// The instant of the next firing, or of the last one when the timer is invalid, as the clock stood when the timer was made.
    [[nodiscard]] Date fireDate() const noexcept { return fireDate_; }
    /// The same by `Clock::uptime`.
    [[nodiscard]] double fireUptime() const noexcept { return fireUptime_; }
    [[nodiscard]] bool isValid() const noexcept { return isValid_; }
    /// Null once the timer is invalid.
    [[nodiscard]] const Ref<Object>& target() const noexcept { return target_; }
    /// Absent once the timer is invalid.
    [[nodiscard]] const Value& userInfo() const noexcept { return userInfo_; }

    /// fire: calls the operation now. A timer that fires once is invalid afterwards, whatever the operation raised. An
    /// invalid one does nothing.
    void fire();
    /// invalidate: never fires again and lets its target go. A second time does nothing.
    void invalidate() noexcept;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Timer"; }

private:
    friend class RunLoop;
    Timer(double interval, Ref<Object> target, Selector selector, Value userInfo, bool repeats);
    /// Moves the next firing of a repeating timer past that uptime; those that were missed are left out.
    void moveFireDatePast(double uptime) noexcept;

    double interval_;
    Ref<Object> target_;
    Selector selector_;
    Value userInfo_;
    Date fireDate_;
    double fireUptime_;
    bool repeats_;
    bool isValid_ = true;
};

} // namespace estatebook::platform
