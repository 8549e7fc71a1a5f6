// SPDX-License-Identifier: MIT

// What buttons and date pickers do, in every toolkit.

#include "support/LocalTime.hpp"
#include "toolkit/ToolkitTestCase.hpp"

namespace estatebook::platform {
namespace {

using test::at;
using test::PlainController;
using testing::ElementsAre;
using testing::IsEmpty;

class ControlTest : public test::ToolkitTestCase {
protected:
    ControlTest() {
        window->show();
        bench->settle();
    }
    void click(Button& button) { bench->click(*window, button); }
    void pick(Date date) { bench->pick(*window, *date_, date); }

    Ref<WindowController> controller = makeRef<PlainController>("Plain");
    Ref<Window> window = controller->window();
    Ref<Button> push = window->button("ok");
    Ref<Button> box = window->button("enabled");
    Ref<Button> several = window->button("several");
    Ref<DatePicker> date_ = window->datePicker("date");
};

TEST_F(ControlTest, AClickTicksABoxAndSendsItsActionOnce) {
    std::vector<ButtonState> states;
    box->setAction([&](Control& sender) {
        EXPECT_EQ(&sender, box.get());
        states.push_back(box->state());
    });
    EXPECT_EQ(box->state(), ButtonState::Off);
    click(*box);
    click(*box);
    EXPECT_THAT(states, ElementsAre(ButtonState::On, ButtonState::Off));
}

TEST_F(ControlTest, ABoxForSeveralThingsGoesFromOnToOffToMixed) {
    std::vector<ButtonState> states;
    several->setState(ButtonState::On);
    several->setAction([&](Control&) { states.push_back(several->state()); });
    for (int times = 0; times < 4; ++times) click(*several);
    EXPECT_THAT(states, ElementsAre(ButtonState::Off, ButtonState::Mixed, ButtonState::On, ButtonState::Off));
}

TEST_F(ControlTest, MixedBecomesOnWhereItIsNotAllowed) {
    box->setState(ButtonState::Mixed);
    EXPECT_EQ(box->state(), ButtonState::On);
    several->setState(ButtonState::Mixed);
    EXPECT_EQ(several->state(), ButtonState::Mixed);
    several->setAllowsMixedState(false);
    EXPECT_EQ(several->state(), ButtonState::On);
    EXPECT_FALSE(several->allowsMixedState());
}

TEST_F(ControlTest, APushButtonIsAlwaysOff) {
    int times = 0;
    push->setAction([&](Control&) { ++times; });
    push->setState(ButtonState::On);
    EXPECT_EQ(push->state(), ButtonState::Off);
    click(*push);
    EXPECT_EQ(push->state(), ButtonState::Off);
    EXPECT_EQ(times, 1);
}

TEST_F(ControlTest, WhatIsSetSendsNoAction) {
    int times = 0;
    for (const Ref<Control>& control : {Ref<Control>(box), Ref<Control>(several), Ref<Control>(date_)})
        control->setAction([&](Control&) { ++times; });
    for (const ButtonState state : {ButtonState::On, ButtonState::Mixed, ButtonState::Off}) {
        box->setState(state);
        several->setState(state);
    }
    date_->setDateValue(at(2024, 2, 29));
    date_->setEnabled(false);
    bench->settle();
    EXPECT_EQ(times, 0);
}

TEST_F(ControlTest, AControlThatIsNotEnabledIsPassedOver) {
    int times = 0;
    const Date before = at(2024, 2, 29, 15, 30);
    date_->setDateValue(before);
    for (const Ref<Control>& control : {Ref<Control>(box), Ref<Control>(push), Ref<Control>(date_)}) {
        EXPECT_TRUE(control->isEnabled());
        control->setAction([&](Control&) { ++times; });
        control->setEnabled(false);
        EXPECT_FALSE(control->isEnabled());
    }
    click(*box);
    click(*push);
    pick(at(2025, 1, 1));
    EXPECT_EQ(times, 0);
    EXPECT_EQ(box->state(), ButtonState::Off);
    EXPECT_EQ(date_->dateValue(), before);
}

TEST_F(ControlTest, AControlUnderASheetIsPassedOver) {
    int times = 0;
    push->setAction([&](Control&) { ++times; });
    const auto sheet = bench->toolkit().makeWindow();
    window->beginSheetCompletionHandler(sheet, {});
    bench->settle();
    click(*push);
    EXPECT_EQ(times, 0);
    window->endSheet(*sheet);
    bench->settle();
    click(*push);
    EXPECT_EQ(times, 1);
}

TEST_F(ControlTest, AnActionMayCloseItsWindowAndLetEverythingGo) {
    bool wasSent = false;
    Button& clicked = *push;
    push->setAction([&, this](Control&) {
        window->close();
        push = nullptr;
        box = nullptr;
        several = nullptr;
        date_ = nullptr;
        controller = nullptr;
        window = nullptr;
        wasSent = true;
    });
    const Ref<Window> clickedIn = window;
    bench->click(*clickedIn, clicked);
    EXPECT_TRUE(wasSent);
}

TEST_F(ControlTest, AnActionMayBeReplacedWhileItIsSent) {
    std::vector<int> sent;
    push->setAction([&](Control&) {
        push->setAction([&](Control&) { sent.push_back(2); });
        sent.push_back(1);
    });
    click(*push);
    click(*push);
    EXPECT_THAT(sent, ElementsAre(1, 2));
}

TEST_F(ControlTest, APickedDateIsTheValueAndSendsTheActionOnce) {
    std::vector<Date> dates;
    date_->setDateValue(at(2000, 1, 1));
    date_->setAction([&](Control&) { dates.push_back(date_->dateValue()); });
    pick(at(2024, 2, 29, 15, 30));
    EXPECT_THAT(dates, ElementsAre(at(2024, 2, 29, 15, 30)));
}

TEST_F(ControlTest, AnInstantIsGivenBackToTheLastBit) {
    for (const double seconds : {0.1, 762'000'000.000'000'1, 762'000'123.456'789, -1e9 - 1e-7}) {
        date_->setDateValue(Date{seconds});
        bench->settle();
        EXPECT_EQ(date_->dateValue(), Date{seconds});
    }
}

TEST_F(ControlTest, NothingAtAllLeavesTheDateAsItWas) {
    date_->setDateValue(at(2024, 2, 29));
    date_->setDateValue(std::nullopt);
    EXPECT_EQ(date_->dateValue(), at(2024, 2, 29));
}

TEST_F(ControlTest, AnInstantBeyondTheYearsOfBooksIsKeptAndNotClamped) {
    for (const Date date : {at(1400, 5, 1), at(12000, 5, 1), Date{-1e15}}) {
        date_->setDateValue(date);
        bench->settle();
        EXPECT_EQ(date_->dateValue(), date);
        pick(at(2024, 2, 29));
        EXPECT_EQ(date_->dateValue(), at(2024, 2, 29));
    }
}

TEST_F(ControlTest, TheFirstAndTheLastDayOfBooksCanBePicked) {
    date_->setDateValue(at(2000, 1, 1));
    for (const Date date : {at(1583, 1, 1), at(9999, 12, 31, 23, 59)}) {
        pick(date);
        EXPECT_EQ(date_->dateValue(), date);
    }
}

TEST_F(ControlTest, ControlsOfNoWindowAreMadeByTheToolkit) {
    EXPECT_EQ(bench->toolkit().makeButton(ButtonKind::CheckBox)->state(), ButtonState::Off);
    const auto picker = bench->toolkit().makeDatePicker();
    picker->setDateValue(at(2024, 2, 29));
    EXPECT_EQ(picker->dateValue(), at(2024, 2, 29));
}

TEST_F(ControlTest, AControlOutlivesItsWindow) {
    controller = nullptr;
    window = nullptr;
    bench->settle();
    box->setState(ButtonState::On);
    date_->setDateValue(at(2024, 2, 29));
    box->setEnabled(false);
    push->sendAction();
    EXPECT_FALSE(box->hasAction());
}

} // namespace
} // namespace estatebook::platform
