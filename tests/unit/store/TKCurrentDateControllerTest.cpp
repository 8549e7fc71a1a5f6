// SPDX-License-Identifier: MIT
#include "store/TKCurrentDateController.hpp"

#include "platform/system/Log.hpp"
#include "platform/system/RunLoop.hpp"
#include "platform/system/SystemClockWatcher.hpp"
#include "platform/text/DateDescription.hpp"
#include "platform/values/Exception.hpp"
#include "support/Book.hpp"
#include "support/HeldClock.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::DefaultZone;
using bookkit::LogLines;
using bookkit::onDay;
using testing::ElementsAre;
using testing::StartsWith;
using testkit::HeldClock;

/// Follows the current date as accounts and tenures do.
class Follower final : public Adopts<ObservableObject, TKCurrentDate> {
public:
    std::optional<Date> currentDate() const override { return date_; }
    void setCurrentDate(const std::optional<Date>& date) override {
        date_ = date;
        received.push_back(date);
        if (const auto reaction = onDate) reaction(); // which may replace itself
    }
    void observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath, ObservableObject& object,
                                                     const KeyValueChange& change,
                                                     const void* context) override {
        ASSERT_EQ(keyPath, "currentDate");
        ASSERT_EQ(context, TKCurrentDateChanged);
        newValues.push_back(change.newValue);
        setCurrentDate(object.valueForKey("currentDate").date());
    }

    std::vector<std::optional<Date>> received;
    std::vector<Value> newValues;
    std::function<void()> onDate;

private:
    std::optional<Date> date_;
};

/// Has a current date, but cannot observe.
class Deaf final : public Adopts<Object, TKCurrentDate> {
public:
    Deaf() : Adopts(Counting::Local) {}
    std::optional<Date> currentDate() const override { return {}; }
    void setCurrentDate(const std::optional<Date>&) override {}
};

/// Notifications of a new day.
class News {
public:
    News() {
        NotificationCentre::defaultCentre().addObserverSelectorNameObject(
            this, [this](const Notification& news) { on(news); }, TKCurrentDateChanged);
    }
    ~News() { NotificationCentre::defaultCentre().removeObserver(this); }
    News(const News&) = delete;
    News& operator=(const News&) = delete;

    std::vector<Notification> heard;
    std::function<void()> onNews;

private:
    void on(const Notification& news) {
        heard.push_back(news);
        if (onNews) onNews();
    }
};

class TKCurrentDateControllerTest : public testing::Test {
protected:
    ~TKCurrentDateControllerTest() override {
        if (controller.timer()) controller.timer()->invalidate();
    }
    /// The lines that an update at that time writes.
    std::vector<std::string> updateAt(Date now) {
        clock.set(now);
        const LogLines log;
        controller.dailyUpdate();
        return log.lines();
    }
    static std::string scheduling(const std::string& seconds) {
        return "Scheduling next update in " + seconds + " seconds";
    }

    const DefaultZone zone{"Europe/Berlin"};
    HeldClock clock{onDay(2025, 3, 1, 12)};
    TKCurrentDateController& controller = TKCurrentDateController::sharedInstance();
};

TEST_F(TKCurrentDateControllerTest, ThereIsOneForTheProcess) {
    EXPECT_EQ(&TKCurrentDateController::sharedInstance(), &controller);
}

TEST_F(TKCurrentDateControllerTest, TheExportedTextsAndNumbersAreAsDocumented) {
    EXPECT_EQ(TKCurrentDateChanged->view(), "TKCurrentDateChanged");
    EXPECT_EQ(SECONDS_PER_DAY, 86400u);
}

TEST_F(TKCurrentDateControllerTest, OneThatIsMadeKnowsTheTimeAtOnce) {
    const LogLines log;
    const News news;
    const auto made = TKCurrentDateController::init();
    EXPECT_EQ(made->currentDate(), clock.now());
    ASSERT_TRUE(made->timer());
    EXPECT_EQ(made->timer()->fireDate(), onDay(2025, 3, 2));
    EXPECT_EQ(news.heard.size(), 1u);
    EXPECT_EQ(log.lines().size(), 2u);
    made->timer()->invalidate();
}

TEST_F(TKCurrentDateControllerTest, AnUpdateWritesTheTimeAndTheDelayIntoTheLog) {
    const auto before = Locale::current();
    Locale::setCurrent(Locale::named("en_GB"));
    EXPECT_THAT(updateAt(onDay(2025, 3, 1, 18, 30, 15)),
                ElementsAre("Daily Update: Saturday, 1 March 2025 at 18:30:15 Central European Standard Time",
                            "Scheduling next update in 19785 seconds"));
    Locale::setCurrent(before);
}

TEST_F(TKCurrentDateControllerTest, ASecondBeforeMidnightTheDelayIsOneSecond) {
    EXPECT_EQ(updateAt(onDay(2025, 3, 1, 23, 59, 59)).back(), scheduling("1"));
    EXPECT_EQ(controller.timer()->fireDate(), onDay(2025, 3, 2));
}

TEST_F(TKCurrentDateControllerTest, AtMidnightTheDelayIsAWholeDay) {
    EXPECT_EQ(updateAt(onDay(2025, 3, 1)).back(), scheduling("86400"));
    EXPECT_EQ(controller.timer()->fireDate(), onDay(2025, 3, 2));
}

TEST_F(TKCurrentDateControllerTest, AFractionOfASecondIsDropped) {
    const Date almost{onDay(2025, 3, 1, 23, 59, 59).secondsSinceReferenceDate + 0.75};
    EXPECT_EQ(updateAt(almost).back(), scheduling("1"));
    EXPECT_EQ(controller.timer()->fireDate().secondsSinceReferenceDate,
              onDay(2025, 3, 2).secondsSinceReferenceDate + 0.75)
        << "at midnight or less than a second after it";
    EXPECT_EQ(controller.currentDate(), almost);
}

TEST_F(TKCurrentDateControllerTest, ADayWithAChangeOfTheClocksCountsAs24Hours) {
    EXPECT_EQ(updateAt(onDay(2025, 3, 30)).back(), scheduling("86400"));
    EXPECT_EQ(controller.timer()->fireDate(), onDay(2025, 3, 31, 1)) << "an hour late";
    EXPECT_EQ(updateAt(onDay(2025, 10, 26)).back(), scheduling("86400"));
    EXPECT_EQ(controller.timer()->fireDate(), onDay(2025, 10, 26, 23)) << "an hour early";
}

TEST_F(TKCurrentDateControllerTest, TheDelayIsReckonedInTheCurrentCalendar) {
    const Date noon = onDay(2025, 3, 1, 12);
    EXPECT_EQ(updateAt(noon).back(), scheduling("43200"));
    const DefaultZone elsewhere{"Asia/Tokyo"};
    EXPECT_EQ(updateAt(noon).back(), scheduling("14400"));
}

TEST_F(TKCurrentDateControllerTest, AnotherLengthOfTheDayChangesTheNextDelay) {
    const auto before = std::exchange(SECONDS_PER_DAY, 100000);
    const auto longer = updateAt(onDay(2025, 3, 1, 12)).back();
    SECONDS_PER_DAY = 43199;
    const auto past = updateAt(onDay(2025, 3, 1, 12)).back();
    const double interval = controller.timer()->fireDate().secondsSinceReferenceDate -
                            onDay(2025, 3, 1, 12).secondsSinceReferenceDate;
    SECONDS_PER_DAY = before;
    EXPECT_EQ(longer, scheduling("56800"));
    EXPECT_EQ(past, scheduling("-1")) << "an unsigned difference, written as a signed number";
    EXPECT_EQ(interval, 18446744073709551615.0);
    EXPECT_EQ(updateAt(onDay(2025, 3, 1, 12)).back(), scheduling("43200"));
}

TEST_F(TKCurrentDateControllerTest, ATimeWithoutADayIsNoFailure) {
    EXPECT_EQ(updateAt(Date{std::numeric_limits<double>::infinity()}).back(), scheduling("86400"));
}

TEST_F(TKCurrentDateControllerTest, TheTimerIsValidUnscheduledAndFiresOnce) {
    updateAt(onDay(2025, 3, 1, 12));
    const auto timer = controller.timer();
    EXPECT_TRUE(timer->isValid());
    EXPECT_EQ(timer->timeInterval(), 0);
    EXPECT_EQ(timer->target(), &controller);
    EXPECT_TRUE(timer->userInfo().isAbsent());
    clock.pass(1e6);
    EXPECT_TRUE(timer->isValid()) << "nobody has scheduled it";
    timer->fire();
    EXPECT_EQ(controller.currentDate(), clock.now());
    EXPECT_FALSE(timer->isValid());
    EXPECT_NE(controller.timer(), timer);
}

TEST_F(TKCurrentDateControllerTest, AnUpdateInvalidatesTheTimerBefore) {
    updateAt(onDay(2025, 3, 1, 12));
    const auto first = controller.timer();
    updateAt(onDay(2025, 3, 1, 13));
    EXPECT_FALSE(first->isValid());
    EXPECT_TRUE(controller.timer()->isValid());
}

TEST_F(TKCurrentDateControllerTest, ScheduledOnALoopItMovesTheDayOnAtMidnight) {
    const auto follower = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*follower);
    updateAt(onDay(2025, 3, 1, 23, 30));
    RunLoop loop;
    loop.addTimer(controller.timer());
    clock.pass(1799);
    EXPECT_FALSE(loop.turn());
    clock.pass(1);
    EXPECT_TRUE(loop.turn());
    EXPECT_EQ(follower->currentDate(), onDay(2025, 3, 2));
    loop.addTimer(controller.timer());
    EXPECT_EQ(loop.nextTimeout(), 86400);
    TKCurrentDateController::stopTrackingChangesToDate(*follower);
}

TEST_F(TKCurrentDateControllerTest, TrackingSetsTheDateAtOnceEvenIfNoUpdateFollows) {
    updateAt(onDay(2025, 3, 1, 12));
    clock.pass(3600);
    const auto follower = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*follower);
    EXPECT_THAT(follower->received, ElementsAre(onDay(2025, 3, 1, 12)))
        << "the instant of the last update, not of this moment";
    EXPECT_TRUE(follower->newValues.empty());
    TKCurrentDateController::stopTrackingChangesToDate(*follower);
}

TEST_F(TKCurrentDateControllerTest, AnUpdateReachesEachFollowerOnce) {
    const auto one = makeRef<Follower>();
    const auto other = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*one);
    TKCurrentDateController::startTrackingChangesToDate(*other);
    updateAt(onDay(2025, 3, 4));
    for (const auto& follower : {one, other}) {
        EXPECT_EQ(follower->received.size(), 2u) << "registering and the update";
        EXPECT_EQ(follower->currentDate(), onDay(2025, 3, 4));
        EXPECT_THAT(follower->newValues, ElementsAre(Value(onDay(2025, 3, 4))));
        TKCurrentDateController::stopTrackingChangesToDate(*follower);
    }
    updateAt(onDay(2025, 3, 5));
    EXPECT_EQ(one->currentDate(), onDay(2025, 3, 4)) << "it follows no more";
}

TEST_F(TKCurrentDateControllerTest, TheSameInstantAgainIsAnUpdateAllTheSame) {
    const auto follower = makeRef<Follower>();
    updateAt(onDay(2025, 3, 4));
    TKCurrentDateController::startTrackingChangesToDate(*follower);
    updateAt(onDay(2025, 3, 4));
    EXPECT_EQ(follower->received.size(), 2u);
    TKCurrentDateController::stopTrackingChangesToDate(*follower);
}

TEST_F(TKCurrentDateControllerTest, WhoRegistersTwiceIsToldTwiceAndRemovedOnceATime) {
    const auto follower = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*follower);
    TKCurrentDateController::startTrackingChangesToDate(*follower);
    follower->received.clear();
    updateAt(onDay(2025, 3, 4));
    EXPECT_EQ(follower->received.size(), 2u);
    TKCurrentDateController::stopTrackingChangesToDate(*follower);
    updateAt(onDay(2025, 3, 5));
    EXPECT_EQ(follower->received.size(), 3u);
    TKCurrentDateController::stopTrackingChangesToDate(*follower);
    EXPECT_THROW(TKCurrentDateController::stopTrackingChangesToDate(*follower), RangeException);
}

TEST_F(TKCurrentDateControllerTest, WhatCannotObserveCannotFollow) {
    const auto deaf = makeRef<Deaf>();
    EXPECT_THROW(TKCurrentDateController::startTrackingChangesToDate(*deaf), InvalidArgumentException);
    EXPECT_THROW(TKCurrentDateController::stopTrackingChangesToDate(*deaf), InvalidArgumentException);
}

TEST_F(TKCurrentDateControllerTest, TheNotificationIsPostedWhenAllHoldTheNewDate) {
    const auto follower = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*follower);
    News news;
    std::optional<Date> heldThen;
    std::size_t linesThen = 0;
    const LogLines log;
    news.onNews = [&] {
        heldThen = follower->currentDate();
        linesThen = log.lines().size();
    };
    clock.set(onDay(2025, 3, 4));
    controller.dailyUpdate();
    EXPECT_EQ(heldThen, onDay(2025, 3, 4));
    EXPECT_EQ(linesThen, 1u) << "the delay is told afterwards";
    ASSERT_EQ(news.heard.size(), 1u);
    EXPECT_EQ(news.heard[0].name, TKCurrentDateChanged);
    EXPECT_EQ(news.heard[0].object, Value(controller.currentDate()));
    EXPECT_FALSE(news.heard[0].userInfo);
    TKCurrentDateController::stopTrackingChangesToDate(*follower);
}

TEST_F(TKCurrentDateControllerTest, ASetClockIsToldInTheLogBeforeTheUpdate) {
    const auto follower = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*follower);
    clock.set(onDay(2025, 6, 1, 12));
    const LogLines log;
    controller.dateChanged();
    EXPECT_THAT(log.lines(),
                ElementsAre("System date changed!",
                            "Daily Update: " + descriptionWithLocale(clock.now(), Locale::current()),
                            scheduling("43200")));
    EXPECT_EQ(follower->currentDate(), onDay(2025, 6, 1, 12));
    TKCurrentDateController::stopTrackingChangesToDate(*follower);
}

TEST_F(TKCurrentDateControllerTest, TheSystemsNotificationOfASetClockIsHeardFromAnySender) {
    for (const Value& sender : {Value(), Value(5)}) {
        clock.pass(60);
        const LogLines log;
        NotificationCentre::defaultCentre().postNotificationNameObjectUserInfo(
            SystemClockDidChangeNotification, sender);
        EXPECT_EQ(controller.currentDate(), clock.now());
        ASSERT_EQ(log.lines().size(), 3u);
        EXPECT_THAT(log.lines()[0], "System date changed!");
    }
}

TEST_F(TKCurrentDateControllerTest, OneThatEndsLeavesTheNotificationCentre) {
    auto made = TKCurrentDateController::init();
    made->timer()->invalidate();
    made = nullptr;
    const LogLines log;
    NotificationCentre::defaultCentre().postNotificationNameObjectUserInfo(SystemClockDidChangeNotification);
    EXPECT_EQ(log.lines().size(), 3u) << "of the shared one alone";
}

TEST_F(TKCurrentDateControllerTest, ATimerKeepsItsControllerAsLongAsItIsValid) {
    auto made = TKCurrentDateController::init();
    const auto timer = made->timer();
    const auto* const kept = made.get();
    made = nullptr;
    EXPECT_EQ(timer->target(), kept);
    timer->fire();
    ASSERT_FALSE(timer->isValid());
    // The update has made the next timer, which now holds it.
    const_cast<TKCurrentDateController*>(kept)->timer()->invalidate();
}

TEST_F(TKCurrentDateControllerTest, AllAreToldAndATimerIsMadeBeforeAnExceptionLeaves) {
    const auto failing = makeRef<Follower>();
    const auto last = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*failing);
    TKCurrentDateController::startTrackingChangesToDate(*last);
    failing->onDate = [] { throw DivideByZeroException("the first"); };
    News news;
    news.onNews = [] { throw RangeException("the second"); };
    const auto before = controller.timer();

    clock.set(onDay(2025, 3, 4));
    {
        const LogLines log;
        EXPECT_THROW(controller.dailyUpdate(), DivideByZeroException);
        EXPECT_EQ(log.lines().size(), 2u);
    }
    EXPECT_EQ(controller.currentDate(), onDay(2025, 3, 4));
    EXPECT_EQ(last->currentDate(), onDay(2025, 3, 4));
    EXPECT_EQ(news.heard.size(), 1u);
    EXPECT_FALSE(before->isValid());
    EXPECT_TRUE(controller.timer()->isValid());
    EXPECT_EQ(controller.timer()->fireDate(), onDay(2025, 3, 5));

    failing->onDate = nullptr;
    EXPECT_THROW(updateAt(onDay(2025, 3, 5)), RangeException) << "out of the notification";
    TKCurrentDateController::stopTrackingChangesToDate(*failing);
    TKCurrentDateController::stopTrackingChangesToDate(*last);
}

TEST_F(TKCurrentDateControllerTest, AFollowerThatDiedIsPassedOver) {
    TKCurrentDateController::startTrackingChangesToDate(*makeRef<Follower>());
    const auto last = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*last);
    updateAt(onDay(2025, 3, 4));
    EXPECT_EQ(last->currentDate(), onDay(2025, 3, 4));
    TKCurrentDateController::stopTrackingChangesToDate(*last);
}

TEST_F(TKCurrentDateControllerTest, FollowersMayComeAndGoDuringAnUpdate) {
    const auto first = makeRef<Follower>();
    const auto second = makeRef<Follower>();
    const auto newcomer = makeRef<Follower>();
    TKCurrentDateController::startTrackingChangesToDate(*first);
    TKCurrentDateController::startTrackingChangesToDate(*second);
    first->onDate = [&] {
        first->onDate = nullptr;
        TKCurrentDateController::stopTrackingChangesToDate(*second);
        TKCurrentDateController::startTrackingChangesToDate(*newcomer);
    };
    updateAt(onDay(2025, 3, 4));
    EXPECT_EQ(second->received.size(), 1u) << "by registering";
    EXPECT_THAT(newcomer->received, ElementsAre(onDay(2025, 3, 4))) << "likewise";
    TKCurrentDateController::stopTrackingChangesToDate(*first);
    TKCurrentDateController::stopTrackingChangesToDate(*newcomer);
}

TEST_F(TKCurrentDateControllerTest, TheNameOfTheNotificationIsReadAfreshEachTime) {
    static constinit Constant<String> other{std::string_view("AnotherDay")};
    std::vector<std::string> heard;
    NotificationCentre::defaultCentre().addObserverSelectorNameObject(
        this, [&](const Notification& news) { heard.push_back(news.name->string()); });
    auto* const before = std::exchange(TKCurrentDateChanged, other.get());
    controller.sendDateChangedNotification();
    TKCurrentDateChanged = before;
    controller.sendDateChangedNotification();
    NotificationCentre::defaultCentre().removeObserver(this);
    EXPECT_THAT(heard, ElementsAre("AnotherDay", "TKCurrentDateChanged"));
}

TEST_F(TKCurrentDateControllerTest, ASubclassTakesPartFromItsFirstUpdate) {
    class Counting final : public TKCurrentDateController {
    public:
        void dailyUpdate() override {
            ++updates;
            TKCurrentDateController::dailyUpdate();
        }
        int updates = 0;
    };
    const auto counting = TKCurrentDateController::init<Counting>();
    EXPECT_EQ(counting->updates, 1);
    counting->dateChanged();
    counting->timer()->fire();
    EXPECT_EQ(counting->updates, 3);
    counting->timer()->invalidate();
}

TEST_F(TKCurrentDateControllerTest, TheDateIsReadAndWrittenByKey) {
    controller.setValueForKey(Value(Date{7}), "currentDate");
    EXPECT_EQ(controller.valueForKey("currentDate"), Value(Date{7}));
    controller.setValueForKey(Value(), "currentDate");
    EXPECT_FALSE(controller.currentDate());
    updateAt(onDay(2025, 3, 1));
}

} // namespace
} // namespace estatebook
