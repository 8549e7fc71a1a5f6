// SPDX-License-Identifier: MIT
#include "store/TKCurrentDateController.hpp"

#include "model/Keys.hpp"
#include "platform/calendar/Calendar.hpp"
#include "platform/system/Clock.hpp"
#include "platform/system/Log.hpp"
#include "platform/system/NotificationCentre.hpp"
#include "platform/system/SystemClockWatcher.hpp"
#include "platform/text/DateDescription.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/FirstException.hpp"

#include <string>

namespace estatebook {

using namespace platform;

namespace {

constinit Constant<String> currentDateChanged{std::string_view("TKCurrentDateChanged")};

constexpr Property properties[] = {
    writable<&TKCurrentDateController::currentDate, &TKCurrentDateController::setCurrentDate>(
        keys::currentDate),
};

ObservableObject& observerOf(const TKCurrentDate& object) {
    if (auto* observer = dynamic_cast<ObservableObject*>(&object.adopter())) return *observer;
    throw InvalidArgumentException(object.adopter().description() +
                                   " cannot follow the current date: it observes nothing");
}

/// The whole seconds until the next midnight, on a day without a change of the clocks.
std::uint64_t secondsToMidnight(Date now) {
    const auto parts = Calendar::current().componentsFromDate(
        CalendarUnit::Day | CalendarUnit::Hour | CalendarUnit::Minute | CalendarUnit::Second, now);
    const auto hour = static_cast<std::uint64_t>(parts.hour.value_or(0));
    const auto minute = static_cast<std::uint64_t>(parts.minute.value_or(0));
    const auto second = static_cast<std::uint64_t>(parts.second.value_or(0));
    return SECONDS_PER_DAY - hour * 3600 - minute * 60 - second;
}

} // namespace

constinit String* TKCurrentDateChanged = currentDateChanged.get();
constinit std::uint64_t SECONDS_PER_DAY = 86400;

constinit const ClassDescription TKCurrentDateController::Class("TKCurrentDateController", nullptr,
                                                                properties, {}, noDependents,
                                                                announcing<TKCurrentDateController>);

constinit TKCurrentDateController* TKCurrentDateController::shared_ = nullptr;

TKCurrentDateController::~TKCurrentDateController() {
    NotificationCentre::defaultCentre().removeObserver(this);
}

void TKCurrentDateController::begin() {
    FirstException exceptions;
    exceptions.keep([&] { dailyUpdate(); });
    NotificationCentre::defaultCentre().addObserverSelectorNameObject(
        this, [this](const Notification&) { dateChanged(); }, SystemClockDidChangeNotification);
    exceptions.rethrow();
}

void TKCurrentDateController::startTrackingChangesToDate(TKCurrentDate& object) {
    TKCurrentDateController& controller = sharedInstance();
    controller.addObserverForKeyPathOptionsContext(observerOf(object), "currentDate", ObservingNew,
                                                   TKCurrentDateChanged);
    object.setCurrentDate(controller.currentDate());
}

void TKCurrentDateController::stopTrackingChangesToDate(TKCurrentDate& object) {
    sharedInstance().removeObserverForKeyPathContext(observerOf(object), "currentDate", TKCurrentDateChanged);
}

void TKCurrentDateController::setCurrentDate(const std::optional<Date>& date) {
    change(keys::currentDate, [&] { currentDate_ = date; });
}

void TKCurrentDateController::dailyUpdate() {
    const Date now = Clock::now();
    Log::write("Daily Update: " + descriptionWithLocale(now, Locale::current()));
    FirstException exceptions;
    exceptions.keep([&] { setCurrentDate(now); });
    if (timer_) timer_->invalidate();
    const std::uint64_t delay = secondsToMidnight(now);
    exceptions.keep([&] { sendDateChangedNotification(); });
    Log::write("Scheduling next update in " + std::to_string(static_cast<std::int64_t>(delay)) + " seconds");
    setTimer(Timer::timerWithTimeIntervalTargetSelectorUserInfoRepeats(
        static_cast<double>(delay), Ref<Object>(this), [this](Timer&) { dailyUpdate(); }, {}, false));
    exceptions.rethrow();
}

void TKCurrentDateController::dateChanged() {
    Log::write("System date changed!");
    dailyUpdate();
}

void TKCurrentDateController::sendDateChangedNotification() {
    NotificationCentre::defaultCentre().postNotificationNameObjectUserInfo(TKCurrentDateChanged,
                                                                           currentDate());
}

} // namespace estatebook
