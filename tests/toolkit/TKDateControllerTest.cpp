// SPDX-License-Identifier: MIT
#include "ui/TKDateController.hpp"

#include "platform/calendar/Calendar.hpp"
#include "support/LocalTime.hpp"
#include "support/ObservedPerson.hpp"
#include "toolkit/ToolkitTestCase.hpp"

#include <functional>
#include <stdexcept>

namespace estatebook {
namespace {

using namespace platform;
using test::at;
using test::Person;
using testing::ElementsAre;
using testing::IsEmpty;

class Answering final : public Adopts<Object, TKDateControllerDelegate> {
public:
    using Answer = std::function<std::optional<Date>(TKDateController&, Date)>;
    explicit Answering(Answer answer) : Adopts(Counting::Local), answer_(std::move(answer)) {}
    std::optional<Date> dateControllerDateValueWillChange(TKDateController& controller, Date date) override {
        asked.push_back(date);
        return answer_(controller, date);
    }
    std::vector<Date> asked;

private:
    Answer answer_;
};

class TKDateControllerTest : public test::ToolkitTestCase {
protected:
    TKDateControllerTest() {
        window->show();
        bench->settle();
        controller->setEnabledButton(box);
        controller->setDatePicker(picker);
        box->setAction([this](Control& sender) { controller->enabledButtonUpdated(&sender); });
        picker->setAction([this](Control& sender) { controller->datePickerUpdated(&sender); });
        picker->setDateValue(first);
        controller->bindToObjectWithKeyPath("currentDate", model, "value");
    }
    ~TKDateControllerTest() override {
        box->setAction({});
        picker->setAction({});
    }

    void tick() { bench->click(*window, *box); }
    void pick(Date date) { bench->pick(*window, *picker, date); }
    void expectSet(Date date) {
        EXPECT_EQ(controller->currentDate(), date);
        EXPECT_EQ(box->state(), ButtonState::On);
        EXPECT_TRUE(picker->isEnabled());
        EXPECT_EQ(picker->dateValue(), date);
    }
    void expectUnset(Date shown) {
        EXPECT_FALSE(controller->currentDate());
        EXPECT_EQ(box->state(), ButtonState::Off);
        EXPECT_FALSE(picker->isEnabled());
        EXPECT_EQ(picker->dateValue(), shown);
    }
    std::optional<Date> modelDate() const { return model->value().date(); }

    const Date first = at(2024, 2, 29, 10);
    const Date second = at(2025, 1, 1, 15, 30);
    Ref<WindowController> windows = makeRef<test::PlainController>("Plain");
    Ref<Window> window = windows->window();
    Ref<Button> box = window->button("enabled");
    Ref<DatePicker> picker = window->datePicker("date");
    Ref<Person> model = makeRef<Person>();
    Ref<TKDateController> controller = makeRef<TKDateController>();
};

TEST_F(TKDateControllerTest, BindingTakesTheModelsValue) {
    expectUnset(first);
    model->setValue(second);
    expectSet(second);
    model->setValue({});
    expectUnset(second);
}

TEST_F(TKDateControllerTest, TickingTheBoxTakesThePickersDateAndWritesItBack) {
    tick();
    expectSet(first);
    EXPECT_EQ(modelDate(), first);
}

TEST_F(TKDateControllerTest, ClearingTheBoxClearsTheDateAndWritesThatBack) {
    model->setValue(second);
    tick();
    expectUnset(second);
    EXPECT_TRUE(model->value().isAbsent());
}

TEST_F(TKDateControllerTest, PickingADateWritesItBack) {
    model->setValue(first);
    pick(second);
    expectSet(second);
    EXPECT_EQ(modelDate(), second);
}

TEST_F(TKDateControllerTest, ADelegatesDateStandsInThePickerAndInTheValue) {
    const auto startOfDay = makeRef<Answering>([](TKDateController&, Date date) -> std::optional<Date> {
        return Calendar::current().startOfDay(date);
    });
    controller->setDelegate(startOfDay);
    model->setValue(first);
    pick(second);
    expectSet(at(2025, 1, 1));
    EXPECT_EQ(modelDate(), at(2025, 1, 1));
    EXPECT_THAT(startOfDay->asked, ElementsAre(second));
}

TEST_F(TKDateControllerTest, TheDelegateIsAskedWhenTheBoxIsTickedAsWell) {
    controller->setDelegate(makeRef<Answering>([](TKDateController&, Date date) -> std::optional<Date> {
        return Calendar::current().startOfDay(date);
    }));
    tick();
    expectSet(at(2024, 2, 29));
}

TEST_F(TKDateControllerTest, ADelegateThatAnswersWithNothingClearsTheDate) {
    controller->setDelegate(
        makeRef<Answering>([](TKDateController&, Date) -> std::optional<Date> { return std::nullopt; }));
    model->setValue(first);
    pick(second);
    expectUnset(second);
    EXPECT_TRUE(model->value().isAbsent());
}

TEST_F(TKDateControllerTest, TheDelegateIsNotAskedOfADateThatIsSet) {
    const auto delegate =
        makeRef<Answering>([](TKDateController&, Date date) -> std::optional<Date> { return date; });
    controller->setDelegate(delegate);
    controller->setCurrentDate(second);
    controller->setInitialDate(first);
    controller->setCurrentDate(std::nullopt);
    EXPECT_THAT(delegate->asked, IsEmpty());
}

TEST_F(TKDateControllerTest, TheDelegateIsHeld) {
    auto delegate =
        makeRef<Answering>([](TKDateController&, Date date) -> std::optional<Date> { return date; });
    controller->setDelegate(delegate);
    EXPECT_EQ(delegate->referenceCount(), 2u);
    controller->setDelegate(nullptr);
    EXPECT_EQ(delegate->referenceCount(), 1u);
}

TEST_F(TKDateControllerTest, SettingTheDateShowsItAndWritesNothingBack) {
    controller->setCurrentDate(second);
    expectSet(second);
    EXPECT_TRUE(model->value().isAbsent());
    controller->setCurrentDate(std::nullopt);
    expectUnset(second);
}

TEST_F(TKDateControllerTest, SettingTheDateAnnouncesItOnceBetweenOldAndNew) {
    const auto watcher = makeRef<test::Watcher>();
    test::watch(*controller, *watcher, "currentDate", ObservingOld | ObservingNew);
    controller->setCurrentDate(second);
    ASSERT_EQ(watcher->heard.size(), 1u);
    EXPECT_TRUE(watcher->heard[0].change.oldValue.isNullObject());
    EXPECT_EQ(watcher->heard[0].change.newValue, Value(second));
    controller->setCurrentDate(second);
    EXPECT_EQ(watcher->heard.size(), 2u);
}

TEST_F(TKDateControllerTest, ObserversAreToldBeforeButtonAndPickerFollow) {
    const auto watcher = makeRef<test::Watcher>([&](const auto&) {
        EXPECT_EQ(controller->currentDate(), second);
        EXPECT_EQ(box->state(), ButtonState::Off);
        EXPECT_EQ(picker->dateValue(), first);
    });
    test::watch(*controller, *watcher, "currentDate");
    controller->setCurrentDate(second);
    EXPECT_EQ(watcher->heard.size(), 1u);
    expectSet(second);
}

TEST_F(TKDateControllerTest, AnObserverThatRaisesLeavesButtonAndPickerInStepAndTheDateWrittenBack) {
    const auto watcher = makeRef<test::Watcher>([](const auto&) { throw std::runtime_error("no room"); });
    test::watch(*controller, *watcher, "currentDate");
    EXPECT_THROW(controller->setCurrentDate(second), std::runtime_error);
    expectSet(second);
    picker->setDateValue(first);
    EXPECT_THROW(controller->datePickerUpdated(), std::runtime_error);
    expectSet(first);
    EXPECT_EQ(modelDate(), first);
}

TEST_F(TKDateControllerTest, TheInitialDateIsShownWhileTheBoxStaysOff) {
    const auto watcher = makeRef<test::Watcher>();
    test::watch(*controller, *watcher, "currentDate");
    controller->setInitialDate(second);
    expectUnset(second);
    EXPECT_THAT(watcher->heard, IsEmpty());
    tick();
    expectSet(second);
}

TEST_F(TKDateControllerTest, TheInitialDateLeavesAValueThatIsThere) {
    controller->setCurrentDate(first);
    box->setState(ButtonState::Off);
    picker->setEnabled(false);
    controller->setInitialDate(second);
    EXPECT_EQ(controller->currentDate(), first);
    EXPECT_EQ(picker->dateValue(), second);
    EXPECT_EQ(box->state(), ButtonState::On);
    EXPECT_TRUE(picker->isEnabled());
}

TEST_F(TKDateControllerTest, ABoxThatIsMixedHasNoDate) {
    controller->setCurrentDate(second);
    box->setAllowsMixedState(true);
    box->setState(ButtonState::Mixed);
    controller->enabledButtonUpdated();
    expectUnset(second);
}

TEST_F(TKDateControllerTest, WithoutABindingAnEditChangesTheControllerAlone) {
    controller->unbind("currentDate");
    tick();
    expectSet(first);
    EXPECT_TRUE(model->value().isAbsent());
}

TEST_F(TKDateControllerTest, WithoutControlsTheDateIsKeptAllTheSame) {
    const auto bare = makeRef<TKDateController>();
    bare->setCurrentDate(first);
    EXPECT_EQ(bare->currentDate(), first);
    bare->setInitialDate(second);
    bare->enabledButtonUpdated();
    EXPECT_FALSE(bare->currentDate());
}

TEST_F(TKDateControllerTest, AnEditGoesBackThroughTheTransformer) {
    /// Shows each date a day later than the model has it.
    class DayLater final : public ValueTransformer {
    public:
        [[nodiscard]] Value transformedValue(const Value& value) const override {
            return moved(value, 86400);
        }
        [[nodiscard]] Value reverseTransformedValue(const Value& value) const override {
            return moved(value, -86400);
        }

    private:
        static Value moved(const Value& value, double seconds) {
            const auto date = value.date();
            return date ? Value(Date{date->secondsSinceReferenceDate + seconds}) : Value();
        }
    };
    model->setValue(at(2024, 2, 28, 10));
    controller->bindToObjectWithKeyPath("currentDate", model, "value", makeRef<DayLater>());
    expectSet(first);
    pick(second);
    expectSet(second);
    EXPECT_EQ(modelDate(), at(2024, 12, 31, 15, 30));
}

TEST_F(TKDateControllerTest, TheModelHasTheLastWordWhenItStoresAnotherDate) {
    /// Keeps whole days.
    class Days final : public ValueTransformer {
    public:
        [[nodiscard]] Value transformedValue(const Value& value) const override { return value; }
        [[nodiscard]] Value reverseTransformedValue(const Value& value) const override {
            const auto date = value.date();
            return date ? Value(Calendar::current().startOfDay(*date)) : Value();
        }
    };
    controller->bindToObjectWithKeyPath("currentDate", model, "value", makeRef<Days>());
    model->setValue(first);
    pick(second);
    expectSet(at(2025, 1, 1));
}

TEST_F(TKDateControllerTest, AWriteThatIsRefusedLeavesTheEditInTheController) {
    controller->bindToObjectWithKeyPath("currentDate", model, "value");
    const auto watcher = makeRef<test::Watcher>([](const auto&) { throw std::runtime_error("refused"); });
    test::watch(*model, *watcher, "value");
    EXPECT_THROW(controller->datePickerUpdated(), std::runtime_error);
    expectSet(first);
}

} // namespace
} // namespace estatebook
