// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/QtDatePicker.hpp"

#include "desktop/QtUser.hpp"
#include "platform/calendar/Calendar.hpp"
#include "platform/toolkit/qt/WallTime.hpp"
#include "support/LocalTime.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <memory>

namespace estatebook::platform {
namespace {

using test::at;
using test::settle;
using testing::ElementsAre;
using testing::IsEmpty;

class QtDatePickerTest : public testing::Test {
protected:
    QtDatePickerTest() {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(edit = new QDateTimeEdit);
        layout->addWidget(other = new QLineEdit);
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        picker = makeRef<QtDatePicker>(*edit);
        picker->setDateValue(first);
        picker->setAction([this](Control&) { picked.push_back(picker->dateValue()); });
        window.show();
        test::giveFocus(*other);
    }
    void comeToEdit() {
        test::giveFocus(*edit);
        edit->setSelectedSection(QDateTimeEdit::YearSection);
        settle();
    }
    void type(const char* digits) {
        for (const char* digit = digits; *digit; ++digit) QTest::keyClick(window.windowHandle(), *digit);
    }
    void leave() { test::giveFocus(*other); }
    std::string shown() const { return edit->text().toStdString(); }

    const Date first{at(2024, 2, 29, 10, 20).secondsSinceReferenceDate + 0.123456789};
    QWidget window;
    QDateTimeEdit* edit = nullptr;
    QLineEdit* other = nullptr;
    Ref<QtDatePicker> picker;
    std::vector<Date> picked;
};

TEST_F(QtDatePickerTest, TheRangeIsThatOfBooks) {
    EXPECT_EQ(edit->minimumDate(), QDate(1583, 1, 1));
    EXPECT_EQ(edit->maximumDate(), QDate(9999, 12, 31));
}

TEST_F(QtDatePickerTest, ADateIsShownInTheDefaultZone) {
    const Ref<TimeZone> before = TimeZone::defaultTimeZone();
    TimeZone::setDefaultTimeZone(TimeZone::named("Pacific/Auckland"));
    picker->setDateValue(at(2025, 1, 1));
    EXPECT_EQ(shown(), "2025-01-01");
    TimeZone::setDefaultTimeZone(TimeZone::named("America/Los_Angeles"));
    picker->setDateValue(at(2025, 1, 1));
    EXPECT_EQ(shown(), "2025-01-01");
    TimeZone::setDefaultTimeZone(before);
}

TEST_F(QtDatePickerTest, ATimeThatTheClockLeavesOutIsMovedPastTheGap) {
    const Ref<TimeZone> before = TimeZone::defaultTimeZone();
    TimeZone::setDefaultTimeZone(TimeZone::named("Europe/Berlin"));
    const QDateTime wall(QDate(2025, 3, 30), QTime(2, 30), Qt::UTC);
    EXPECT_EQ(dateOfWallTime(wall)->description(), "2025-03-30 01:30:00 +0000");
    const QDateTime twice(QDate(2025, 10, 26), QTime(2, 30), Qt::UTC);
    EXPECT_EQ(dateOfWallTime(twice)->description(), "2025-10-26 00:30:00 +0000");
    TimeZone::setDefaultTimeZone(before);
}

TEST_F(QtDatePickerTest, NothingIsHeardOfADateThatIsSet) {
    QSignalSpy changes(edit, &QDateTimeEdit::dateTimeChanged);
    picker->setDateValue(at(2025, 1, 1));
    picker->setDateValue(Date{-1e15});
    EXPECT_EQ(changes.count(), 0);
    EXPECT_THAT(picked, IsEmpty());
}

TEST_F(QtDatePickerTest, ATypedDateIsPickedOnceWhenItIsLeft) {
    comeToEdit();
    type("20250131");
    EXPECT_THAT(picked, IsEmpty()) << "half of a date is none";
    leave();
    ASSERT_EQ(picked.size(), 1u);
    EXPECT_EQ(Calendar::current().civilDay(picked[0]), CivilDay::fromYearMonthDay(2025, 1, 31));
}

TEST_F(QtDatePickerTest, TheInstantStaysToTheLastBitWhenTheTextDoes) {
    comeToEdit();
    leave();
    EXPECT_EQ(picker->dateValue(), first);
    comeToEdit();
    type("20240229");
    leave();
    EXPECT_THAT(picked, IsEmpty());
    EXPECT_EQ(picker->dateValue(), first);
}

TEST_F(QtDatePickerTest, TheInstantComesBackWhenTheDateDoes) {
    comeToEdit();
    edit->stepBy(1);
    edit->stepBy(-1);
    EXPECT_THAT(picked, ElementsAre(testing::Ne(first), first));
    EXPECT_EQ(picker->dateValue(), first);
}

TEST_F(QtDatePickerTest, WhatIsNotShownStaysAsItWas) {
    comeToEdit();
    type("20250131");
    leave();
    EXPECT_EQ(picker->dateValue(), Date{at(2025, 1, 31, 10, 20).secondsSinceReferenceDate + 0.123});
}

TEST_F(QtDatePickerTest, ADateBeyondTheRangeIsShownAsItIs) {
    picker->setDateValue(at(1400, 5, 1));
    EXPECT_THAT(shown(), testing::HasSubstr("1400"));
    EXPECT_EQ(picker->dateValue(), at(1400, 5, 1));
}

TEST_F(QtDatePickerTest, LookingAtADateBeyondTheRangeDoesNotChangeIt) {
    picker->setDateValue(at(1400, 5, 1));
    comeToEdit();
    EXPECT_EQ(shown(), "1583-01-01");
    leave();
    EXPECT_THAT(shown(), testing::HasSubstr("1400"));
    EXPECT_EQ(picker->dateValue(), at(1400, 5, 1));
    EXPECT_THAT(picked, IsEmpty());
}

TEST_F(QtDatePickerTest, ADateBeyondTheRangeCanBeReplaced) {
    picker->setDateValue(at(12000, 5, 1));
    comeToEdit();
    type("20250131");
    leave();
    EXPECT_EQ(shown(), "2025-01-31");
    EXPECT_EQ(Calendar::current().civilDay(picker->dateValue()), CivilDay::fromYearMonthDay(2025, 1, 31));
}

TEST_F(QtDatePickerTest, AnActionMayLetThePickerGo) {
    picker->setAction([this](Control&) { picker = nullptr; });
    comeToEdit();
    type("20250131");
    leave();
    EXPECT_FALSE(picker);
}

TEST_F(QtDatePickerTest, AWidgetThatIsGoneLeavesTheDate) {
    delete edit;
    EXPECT_EQ(picker->dateValue(), first);
    picker->setDateValue(at(2025, 1, 1));
    EXPECT_EQ(picker->dateValue(), at(2025, 1, 1));
    EXPECT_FALSE(picker->isEnabled());
}

} // namespace
} // namespace estatebook::platform
