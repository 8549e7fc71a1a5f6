// SPDX-License-Identifier: MIT
#include "platform/system/NotificationCentre.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NotificationCentreTest : public testing::Test {
protected:
    NotificationCentre::Selector write(std::string who) {
        return [this, who](const Notification&) { log.push_back(who); };
    }
    std::vector<std::string> posted(const Ref<String>& name, const Value& object = {}) {
        log.clear();
        centre.postNotificationNameObjectUserInfo(name, object);
        return log;
    }

    NotificationCentre centre;
    std::vector<std::string> log;
    const Ref<String> rain = String::make("Rain");
    const Ref<String> sun = String::make("Sun");
    int me = 0;
    int you = 0;
};

TEST_F(NotificationCentreTest, PostingComesBackWhenAllHaveBeenTold) {
    centre.addObserverSelectorNameObject(&me, write("me"), rain);
    centre.addObserverSelectorNameObject(&you, write("you"), rain);
    EXPECT_THAT(posted(rain), ElementsAre("me", "you"));
}

TEST_F(NotificationCentreTest, ObserversAreToldWhatWasPosted) {
    const auto info = Dictionary::make({{"depth", Value(3)}});
    const auto where = Array::make({});
    Notification heard;
    centre.addObserverSelectorNameObject(&me, [&](const Notification& news) { heard = news; });
    centre.postNotificationNameObjectUserInfo(rain, Value(where), info);
    EXPECT_EQ(heard.name, rain);
    EXPECT_TRUE(heard.object.isIdentical(Value(where)));
    EXPECT_EQ(heard.userInfo, info);
    centre.postNotificationNameObjectUserInfo(rain);
    EXPECT_TRUE(heard.object.isAbsent());
    EXPECT_FALSE(heard.userInfo);
}

TEST_F(NotificationCentreTest, NamesAreComparedByTheirText) {
    centre.addObserverSelectorNameObject(&me, write("me"), rain);
    EXPECT_THAT(posted(String::make("Rain")), ElementsAre("me"));
    EXPECT_THAT(posted(sun), IsEmpty());
    EXPECT_THAT(posted(nullptr), IsEmpty());
}

TEST_F(NotificationCentreTest, WithoutANameEverythingIsHeard) {
    centre.addObserverSelectorNameObject(&me, write("me"));
    EXPECT_THAT(posted(rain), ElementsAre("me"));
    EXPECT_THAT(posted(sun, Value(5)), ElementsAre("me"));
}

TEST_F(NotificationCentreTest, AnObjectIsComparedByIdentity) {
    const auto here = String::make("here");
    centre.addObserverSelectorNameObject(&me, write("me"), rain, Value(here));
    EXPECT_THAT(posted(rain, Value(here)), ElementsAre("me"));
    EXPECT_THAT(posted(rain, Value(String::make("here"))), IsEmpty());
    EXPECT_THAT(posted(rain), IsEmpty());
}

TEST_F(NotificationCentreTest, ADateIsTheSameWhenItsBitsAre) {
    centre.addObserverSelectorNameObject(&me, write("me"), nullptr, Value(Date{5}));
    EXPECT_THAT(posted(rain, Value(Date{5})), ElementsAre("me"));
    EXPECT_THAT(posted(rain, Value(Date{6})), IsEmpty());
}

TEST_F(NotificationCentreTest, EachRegistrationOfAnObserverIsTold) {
    centre.addObserverSelectorNameObject(&me, write("one"), rain);
    centre.addObserverSelectorNameObject(&me, write("two"), rain);
    centre.addObserverSelectorNameObject(&me, write("any"));
    EXPECT_THAT(posted(rain), ElementsAre("one", "two", "any"));
}

TEST_F(NotificationCentreTest, RemovingTakesAwayAllAndIsHarmlessWhenThereIsNone) {
    centre.removeObserver(&me);
    centre.addObserverSelectorNameObject(&me, write("me"), rain);
    centre.addObserverSelectorNameObject(&you, write("you"), rain);
    centre.addObserverSelectorNameObject(&me, write("me"), sun);
    centre.removeObserver(&me);
    centre.removeObserver(&me);
    EXPECT_THAT(posted(rain), ElementsAre("you"));
    EXPECT_THAT(posted(sun), IsEmpty());
}

TEST_F(NotificationCentreTest, OneThatIsRemovedDuringAPostingHearsNothingMore) {
    centre.addObserverSelectorNameObject(&me, [&](const Notification&) {
        log.push_back("me");
        centre.removeObserver(&me);
        centre.removeObserver(&you);
    });
    centre.addObserverSelectorNameObject(&you, write("you"));
    EXPECT_THAT(posted(rain), ElementsAre("me"));
    EXPECT_THAT(posted(rain), IsEmpty());
}

TEST_F(NotificationCentreTest, OneThatIsAddedDuringAPostingHearsTheNext) {
    centre.addObserverSelectorNameObject(&me, [&](const Notification&) {
        centre.removeObserver(&me);
        centre.addObserverSelectorNameObject(&you, write("you"));
    });
    EXPECT_THAT(posted(rain), IsEmpty());
    EXPECT_THAT(posted(rain), ElementsAre("you"));
}

TEST_F(NotificationCentreTest, NewsMayBePostedWhileNewsIsTold) {
    centre.addObserverSelectorNameObject(
        &me,
        [&](const Notification&) {
            log.push_back("rain begins");
            centre.postNotificationNameObjectUserInfo(sun);
            log.push_back("rain ends");
        },
        rain);
    centre.addObserverSelectorNameObject(&you, write("sun"), sun);
    EXPECT_THAT(posted(rain), ElementsAre("rain begins", "sun", "rain ends"));
}

TEST_F(NotificationCentreTest, AllAreToldBeforeAnExceptionLeaves) {
    centre.addObserverSelectorNameObject(&me, [](const Notification&) { throw RangeException("first"); });
    centre.addObserverSelectorNameObject(
        &me, [](const Notification&) { throw InvalidArgumentException("second"); });
    centre.addObserverSelectorNameObject(&you, write("you"));
    EXPECT_THROW(centre.postNotificationNameObjectUserInfo(rain), RangeException);
    EXPECT_THAT(log, ElementsAre("you"));
}

TEST_F(NotificationCentreTest, TheProcessHasOneDefaultCentre) {
    EXPECT_EQ(&NotificationCentre::defaultCentre(), &NotificationCentre::defaultCentre());
}

} // namespace
} // namespace estatebook::platform
