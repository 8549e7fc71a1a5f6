// SPDX-License-Identifier: MIT
#pragma once

/// TKCurrentDateController: the one place that knows what day it is. Everything that depends on today follows it.
///
/// It takes the time when it is made and whenever the clock of the system was set, hands the new instant to
/// everybody who follows, posts a notification, and makes a timer for the next midnight.
///
/// The trap: the timer is not scheduled. Without a loop that is given it, no day ever moves on by itself. Each update makes a
/// new one, after the notification:
///
///     RunLoop loop;
///     SystemClockWatcher watcher(loop);
///     for (;;) {
///         loop.addTimer(TKCurrentDateController::sharedInstance().timer());    // harmless when it is there already
///         loop.runOnce();
///     }

#include "platform/observation/ObservableObject.hpp"
#include "platform/system/Timer.hpp"
#include "store/TKCurrentDate.hpp"

#include <concepts>
#include <cstdint>
#include <optional>

namespace estatebook {

/// The name of the notification of a new day, whose object is the date itself, and the context of every observation of the current
/// date. Whoever puts another text here changes both from then on.
ESTATEBOOK_API extern platform::String* TKCurrentDateChanged;
/// How long a day is when the next midnight is reckoned; read afresh each time.
ESTATEBOOK_API extern std::uint64_t SECONDS_PER_DAY;

class ESTATEBOOK_API TKCurrentDateController : public platform::ObservableObject {
public:
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }

    /// sharedInstance
    /// The controller of the process. The first call makes it, of the class it is asked of, and it is never destroyed:
    /// `sharedInstance<MyController>()` at start-up puts another class in place.
    template <std::derived_from<TKCurrentDateController> Class = TKCurrentDateController>
    static TKCurrentDateController& sharedInstance() {
        if (!shared_) {
            shared_ = platform::Ref<TKCurrentDateController>(new Class).detach();
            shared_->begin(); // those who are told of the first day may ask for the shared controller
        }
        return *shared_;
    }

    /// init
    /// A controller beside the shared one, with its first update done.
    template <std::derived_from<TKCurrentDateController> Class = TKCurrentDateController>
    [[nodiscard]] static platform::Ref<Class> init() {
        platform::Ref<Class> controller(new Class);
        controller->begin();
        return controller;
    }

    /// startTrackingChangesToDate:
    /// Makes the object an observer of the shared controller's "currentDate", with the context TKCurrentDateChanged, and sets
    /// its current date at once. Raises InvalidArgumentException for one that cannot observe. Told as often as it is registered.
    static void startTrackingChangesToDate(TKCurrentDate& object);
    /// stopTrackingChangesToDate:
    /// Takes away the latest such registration; raises RangeException when there is none.
    static void stopTrackingChangesToDate(TKCurrentDate& object);

    /// The instant of the last update.
    [[nodiscard]] std::optional<platform::Date> currentDate() const noexcept { return currentDate_; }
    /// Announces "currentDate".
    void setCurrentDate(const std::optional<platform::Date>& date);

    /// The timer that the last update made; it fires once, at the next midnight or less than a second later.
    /// It holds the controller as long as it is valid.
    [[nodiscard]] const platform::Ref<platform::Timer>& timer() const noexcept { return timer_; }
    void setTimer(const platform::Ref<platform::Timer>& timer) { timer_ = timer; }

    /// dailyUpdate
    /// Takes the time, tells everybody and makes the next timer. What is raised by those who are told is raised again when all
    /// of that is done. A day with a change of the clocks counts as 24 hours: the timer then fires an hour early or late.
    virtual void dailyUpdate();
    /// dateChanged
    /// The clock of the system was set.
    virtual void dateChanged();
    /// sendDateChangedNotification
    virtual void sendDateChangedNotification();

protected:
    TKCurrentDateController() = default;
    ~TKCurrentDateController() override;

private:
    void begin();

    static TKCurrentDateController* shared_;

    std::optional<platform::Date> currentDate_;
    platform::Ref<platform::Timer> timer_;
};

} // namespace estatebook
