// SPDX-License-Identifier: MIT
#include "estatebook/watch/ArrearsWatch.hpp"

#include "platform/system/NotificationCentre.hpp"
#include "platform/system/SystemClockWatcher.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKCurrentDateController.hpp"
#include "support/Book.hpp"
#include "support/HeldClock.hpp"
#include "support/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <utility>

namespace estatebook {
namespace {

using namespace platform;
using bookkit::onDay;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testkit::writeFile;

/// A book in which 100 fall due on the first of each month.
std::string bookOf(const std::string& tenant, const std::string& zone = "Europe/London") {
    return R"({"schema": "estatebook/book/1", "timeZone": ")" + zone +
           R"(", "tenants": [{"id": "t", "name": ")" + tenant +
           R"("}], "tenures": [{"id": "a", "tenant": "t", "startDate": "2025-01-01", "rentalAmount": 100,)"
           R"("rentalPeriod": 1, "rentalBillingCycle": "month"}]})";
}

class ArrearsWatchTest : public testing::Test {
protected:
    ArrearsWatchTest() {
        controller.dailyUpdate();
        writeFile(file, bookOf("A. Smith"));
    }
    ~ArrearsWatchTest() override { controller.timer()->invalidate(); }

    ArrearsWatch watch(ArrearsWatch::Screen screen = ArrearsWatch::Screen::Lines) {
        return ArrearsWatch(file.string(), "", loop, out, screen);
    }
    /// What was printed since it was asked last, in as many turns as it takes.
    std::string printed() {
        loop.addTimer(controller.timer());
        while (loop.turn()) loop.addTimer(controller.timer());
        return std::exchange(out, std::ostringstream()).str();
    }

    const bookkit::DefaultZone zone{"Europe/London"};
    testkit::HeldClock clock{onDay(2025, 3, 30, 12)};
    TKCurrentDateController& controller = TKCurrentDateController::sharedInstance();
    const testkit::TemporaryFolder folder;
    const std::filesystem::path file = folder / "book.json";
    RunLoop loop;
    std::ostringstream out;
};

TEST_F(ArrearsWatchTest, ABookIsShownWhenItIsOpened) {
    const auto watching = watch();
    EXPECT_THAT(printed(), HasSubstr("A. Smith"));
    EXPECT_EQ(printed(), "");
}

TEST_F(ArrearsWatchTest, AnotherBookUnderTheNameIsShownAfterAnEmptyLine) {
    const auto watching = watch();
    printed();
    writeFile(folder / "new", bookOf("J. Brown"));
    std::filesystem::rename(folder / "new", file);
    const std::string text = printed();
    EXPECT_THAT(text, StartsWith("\nArrears on "));
    EXPECT_THAT(text, HasSubstr("J. Brown"));
    EXPECT_THAT(text, Not(HasSubstr("A. Smith")));
}

TEST_F(ArrearsWatchTest, ABookThatSaysTheSameIsNotShownAgain) {
    const auto watching = watch();
    printed();
    writeFile(file, bookOf("A. Smith") + "\n");
    EXPECT_EQ(printed(), "");
}

TEST_F(ArrearsWatchTest, HalfABookLeavesWhatWasReadBeforeWithALineThatSaysWhatIsWrong) {
    const auto watching = watch();
    const std::string before = printed();
    writeFile(file, bookOf("J. Brown").substr(0, 80));
    EXPECT_THAT(printed(), StartsWith("\n" + before + "\nNot up to date: " + file.string() + ":1: "));
    writeFile(file, "");
    EXPECT_THAT(printed(), StartsWith("\n" + before + "\nNot up to date: "));
    std::filesystem::remove(file);
    EXPECT_THAT(printed(), HasSubstr("No such file or directory"));
    writeFile(file, bookOf("J. Brown"));
    const std::string after = printed();
    EXPECT_THAT(after, HasSubstr("J. Brown"));
    EXPECT_THAT(after, Not(HasSubstr("Not up to date")));
}

TEST_F(ArrearsWatchTest, ABookThatMovedToAnotherZoneIsNotFollowed) {
    const auto watching = watch();
    printed();
    writeFile(file, bookOf("J. Brown", "Asia/Tokyo"));
    const std::string text = printed();
    EXPECT_THAT(text, HasSubstr("A. Smith"));
    EXPECT_THAT(text, HasSubstr("its time zone is Asia/Tokyo now; start again to follow it\n"));
    EXPECT_EQ(TimeZone::defaultTimeZone()->name(), "Europe/London");
}

TEST_F(ArrearsWatchTest, AtMidnightTheTableIsThatOfTheNewDay) {
    const auto watching = watch();
    printed();
    clock.pass(12 * 3600 - 1);
    EXPECT_EQ(printed(), "");
    clock.pass(1);
    EXPECT_THAT(printed(), HasSubstr("200.00"));
    clock.pass(86400);
    EXPECT_THAT(printed(), HasSubstr("300.00")) << "rent fell due on the first of April";
}

TEST_F(ArrearsWatchTest, WhatWasReadBeforeFollowsTheDayToo) {
    const auto watching = watch();
    printed();
    writeFile(file, "");
    printed();
    clock.pass(36 * 3600);
    const std::string text = printed();
    EXPECT_THAT(text, HasSubstr("300.00"));
    EXPECT_THAT(text, HasSubstr("Not up to date"));
}

TEST_F(ArrearsWatchTest, ATenureThatCannotBeReckonedKeepsNoOtherFromTheNewDay) {
    std::string book = bookOf("A. Smith");
    book.insert(book.find("[{\"id\": \"a\"") + 1,
                R"({"id": "odd", "startDate": "2025-01-01", "rentalAmount": 100, "rentalPeriod": 1}, )");
    writeFile(file, book);
    const auto watching = watch();
    EXPECT_THAT(printed(), HasSubstr("division by zero"));
    clock.pass(12 * 3600);
    EXPECT_THROW(loop.turn(), DivideByZeroException);
    clock.pass(86400);
    loop.addTimer(controller.timer());
    EXPECT_THROW(loop.turn(), DivideByZeroException);
    EXPECT_THAT(printed(), HasSubstr("300.00"));
}

TEST_F(ArrearsWatchTest, AClockThatIsSetMovesTheDay) {
    const auto watching = watch();
    printed();
    clock.set(onDay(2025, 6, 1, 9));
    NotificationCentre::defaultCentre().postNotificationNameObjectUserInfo(SystemClockDidChangeNotification);
    EXPECT_THAT(printed(), HasSubstr("500.00"));
}

TEST_F(ArrearsWatchTest, OnATerminalATableTakesThePlaceOfTheOneBefore) {
    auto watching = watch(ArrearsWatch::Screen::Terminal);
    EXPECT_THAT(printed(), StartsWith("\033[H\033[2JArrears on "));
    writeFile(file, bookOf("J. Brown"));
    EXPECT_THAT(printed(), StartsWith("\033[H\033[2JArrears on "));
    watching.redraw();
    EXPECT_THAT(printed(), StartsWith("\033[H\033[2JArrears on ")) << "asked for, although nothing changed";
}

TEST_F(ArrearsWatchTest, ABookThatCannotBeReadIsNotWatched) {
    std::filesystem::remove(file);
    EXPECT_THROW(watch(), Failure);
    writeFile(file, "{");
    EXPECT_THROW(watch(), Failure);
    EXPECT_TRUE(loop.isEmpty());
}

TEST_F(ArrearsWatchTest, AWatchThatEndedHearsNothing) {
    { const auto watching = watch(); }
    printed();
    clock.pass(86400);
    writeFile(file, bookOf("J. Brown"));
    EXPECT_EQ(printed(), "");
}

} // namespace
} // namespace estatebook
