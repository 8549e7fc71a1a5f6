// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/Binder.hpp"

#include "desktop/QtUser.hpp"
#include "platform/calendar/Calendar.hpp"
#include "platform/system/Log.hpp"
#include "platform/toolkit/NumberFieldFormatter.hpp"
#include "platform/values/Exception.hpp"
#include "support/ObservedPerson.hpp"
#include "tags/TKNegateValueTransformer.hpp"
#include "ui/TKDateFormatter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QVBoxLayout>

namespace estatebook::platform {
namespace {

using test::Person;
using test::settle;
using test::text;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Ref<NumberFieldFormatter> amounts() {
    const auto formatter = makeRef<NumberFieldFormatter>();
    formatter->setLocale(Locale::named("en_US"));
    formatter->setMinimumFractionDigits(2);
    formatter->setMaximumFractionDigits(2);
    formatter->setUsesGroupingSeparator(true);
    formatter->setGeneratesDecimalNumbers(true);
    return formatter;
}

class BinderTest : public testing::Test {
protected:
    BinderTest() {
        Log::setSink([this](std::string_view line) { logged.emplace_back(line); });
        auto* layout = new QVBoxLayout(&window);
        for (QWidget* widget : {static_cast<QWidget*>(name), static_cast<QWidget*>(amount),
                                static_cast<QWidget*>(label), static_cast<QWidget*>(notes)})
            layout->addWidget(widget);
        window.show();
        settle();
        binder.whenRefused = [this](QWidget& widget, const Ref<Error>& why) {
            refused.push_back(widget.objectName().toStdString() + ": " + why->localizedDescription());
        };
        amount->setObjectName(QStringLiteral("amount"));
    }
    ~BinderTest() override { Log::setSink({}); }

    void bindName(Binder::Direction direction = Binder::Direction::Edit) {
        binder.bind(*name, "text", {.object = person, .keyPath = "name"}, direction);
    }
    void bindAmount() {
        binder.bind(*amount, "text", {.object = person, .keyPath = "amount", .formatter = amounts()});
    }
    /// In the place of what stands there; the field is not left.
    void type(QLineEdit& edit, const char* characters) {
        test::giveFocus(edit);
        edit.selectAll();
        for (const char* each = characters; *each; ++each) QTest::keyClick(window.windowHandle(), *each);
        if (!*characters) QTest::keyClick(window.windowHandle(), Qt::Key_Delete);
        settle();
    }
    void leave() {
        label->setFocusPolicy(Qt::StrongFocus);
        test::giveFocus(*label);
    }
    template <class Widget>
    Widget& added() {
        auto* widget = new Widget;
        window.layout()->addWidget(widget);
        settle();
        return *widget;
    }

    std::vector<std::string> logged;
    std::vector<std::string> refused;
    QWidget window;
    QLineEdit* name = new QLineEdit;
    QLineEdit* amount = new QLineEdit;
    QLabel* label = new QLabel;
    QPlainTextEdit* notes = new QPlainTextEdit;
    Ref<Person> person = makeRef<Person>();
    Binder binder;
};

TEST_F(BinderTest, AValueIsShownAtOnceAndAChangeInTheNextTurn) {
    person->setName(text("Ann"));
    bindName();
    EXPECT_EQ(name->text(), QStringLiteral("Ann"));
    person->setName(text("Bea"));
    EXPECT_EQ(name->text(), QStringLiteral("Ann"));
    settle();
    EXPECT_EQ(name->text(), QStringLiteral("Bea"));
    person->setName(nullptr);
    settle();
    EXPECT_EQ(name->text(), QString());
}

TEST_F(BinderTest, AThousandAnnouncementsAreOneRefresh) {
    bindName();
    for (int times = 0; times < 1000; ++times) person->setName(text(std::to_string(times)));
    EXPECT_EQ(binder.refreshes(), 0u);
    settle();
    EXPECT_EQ(binder.refreshes(), 1u);
    EXPECT_EQ(name->text(), QStringLiteral("999"));
    settle();
    EXPECT_EQ(binder.refreshes(), 1u);
}

TEST_F(BinderTest, OnlyWhatIsMarkedIsShownAnew) {
    bindName();
    bindAmount();
    person->setName(text("Ann"));
    settle();
    EXPECT_EQ(binder.refreshes(), 1u);
    binder.refresh();
    EXPECT_EQ(binder.refreshes(), 1u);
}

TEST_F(BinderTest, APathIsFollowedWhereverItLeads) {
    binder.bind(*label, "text", {.object = person, .keyPath = "owner.fullName"}, Binder::Direction::Show);
    const auto owner = makeRef<Person>();
    owner->setName(text("Ann"));
    person->setOwner(owner);
    settle();
    EXPECT_EQ(label->text(), QStringLiteral("Ann!"));
    owner->setName(text("Bea"));
    settle();
    EXPECT_EQ(label->text(), QStringLiteral("Bea!"));
}

TEST_F(BinderTest, TypedTextIsWrittenWhenTheFieldIsLeft) {
    bindName();
    type(*name, "Cleo");
    EXPECT_FALSE(person->name());
    EXPECT_TRUE(binder.hasUnwrittenText());
    leave();
    EXPECT_EQ(*person->name(), "Cleo");
    EXPECT_FALSE(binder.hasUnwrittenText());
}

TEST_F(BinderTest, TypedTextIsWrittenOnReturnAndByCommit) {
    bindName();
    type(*name, "Cleo");
    test::press(*name, Qt::Key_Return);
    EXPECT_EQ(*person->name(), "Cleo");
    type(*name, "Dora");
    EXPECT_TRUE(binder.commit());
    EXPECT_EQ(*person->name(), "Dora");
}

TEST_F(BinderTest, HalfTypedTextIsNeverOverwritten) {
    person->setName(text("Ann"));
    bindName();
    type(*name, "Cle");
    person->setName(text("Bea"));
    settle();
    EXPECT_EQ(name->text(), QStringLiteral("Cle"));
    binder.refresh();
    EXPECT_EQ(name->text(), QStringLiteral("Cle"));
    leave();
    EXPECT_EQ(*person->name(), "Cle");
    EXPECT_EQ(name->text(), QStringLiteral("Cle"));
}

TEST_F(BinderTest, TextThatIsGivenUpMakesRoomForTheChangeMeanwhile) {
    person->setName(text("Ann"));
    bindName();
    type(*name, "Cle");
    person->setName(text("Bea"));
    settle();
    binder.revert();
    EXPECT_EQ(name->text(), QStringLiteral("Bea"));
    EXPECT_FALSE(binder.hasUnwrittenText());
    leave();
    EXPECT_EQ(*person->name(), "Bea");
}

TEST_F(BinderTest, AFieldThatIsOnlyVisitedWritesNothing) {
    person->setAmount(Decimal::parse("12.3456"));
    bindAmount();
    const auto watcher = makeRef<test::Watcher>();
    test::watch(*person, *watcher, "amount");
    EXPECT_EQ(amount->text(), QStringLiteral("12.35"));
    test::giveFocus(*amount);
    test::press(*amount, Qt::Key_Return);
    leave();
    type(*amount, "12.35");
    leave();
    EXPECT_TRUE(binder.commit());
    EXPECT_THAT(watcher->heard, IsEmpty());
    EXPECT_EQ(person->amount(), Decimal::parse("12.3456"));
}

TEST_F(BinderTest, AVisitedFieldFollowsTheModelAgain) {
    person->setAmount(Decimal(1));
    bindAmount();
    type(*amount, "1.00");
    leave();
    person->setAmount(Decimal(2));
    settle();
    EXPECT_EQ(amount->text(), QStringLiteral("2.00"));
}

TEST_F(BinderTest, WhatIsReadIsShownAsItIsWritten) {
    bindAmount();
    type(*amount, "1234.5");
    leave();
    EXPECT_EQ(person->amount(), Decimal::parse("1234.5"));
    EXPECT_EQ(amount->text(), QStringLiteral("1,234.50"));
}

TEST_F(BinderTest, ATextThatCannotBeReadStaysAndIsToldWhy) {
    person->setAmount(Decimal(7));
    bindAmount();
    type(*amount, "seven");
    leave();
    EXPECT_EQ(amount->text(), QStringLiteral("seven"));
    EXPECT_EQ(person->amount(), Decimal(7));
    ASSERT_EQ(refused.size(), 1u);
    EXPECT_THAT(refused[0], HasSubstr("seven"));
    person->setAmount(Decimal(8));
    settle();
    EXPECT_EQ(amount->text(), QStringLiteral("seven"));
    EXPECT_FALSE(binder.commit());
    EXPECT_TRUE(amount->hasFocus());
    type(*amount, "9");
    EXPECT_TRUE(binder.commit());
    EXPECT_EQ(person->amount(), Decimal(9));
}

TEST_F(BinderTest, CommittingWritesWhatCanBeWrittenAndNamesWhatCannot) {
    bindAmount();
    bindName();
    type(*amount, "seven");
    type(*name, "Cleo");
    EXPECT_FALSE(binder.commit());
    EXPECT_EQ(*person->name(), "Cleo");
    EXPECT_TRUE(amount->hasFocus());
}

TEST_F(BinderTest, AnEmptyTextIsNothing) {
    person->setName(text("Ann"));
    bindName();
    type(*name, "");
    leave();
    EXPECT_FALSE(person->name());
    EXPECT_TRUE(refused.empty());
}

TEST_F(BinderTest, AnEmptyDateFieldIsNoDate) {
    const auto formatter = makeRef<TKDateFormatter>();
    formatter->setLocale(Locale::named("en_US"));
    formatter->awakeFromNib();
    person->setValue(Calendar::current().startOfCivilDay(CivilDay::fromYearMonthDay(2024, 2, 29)));
    binder.bind(*name, "text", {.object = person, .keyPath = "value", .formatter = formatter});
    EXPECT_EQ(name->text(), QStringLiteral("Feb 29, 2024"));
    type(*name, "");
    leave();
    EXPECT_TRUE(person->value().isAbsent());
    type(*name, "1/2/2025");
    leave();
    EXPECT_EQ(name->text(), QStringLiteral("Jan 2, 2025"));
}

TEST_F(BinderTest, AValueThatTheObjectRefusesStaysInTheField) {
    binder.bind(*amount, "text", {.object = person, .keyPath = "amount"});
    type(*amount, "text");
    leave();
    EXPECT_EQ(amount->text(), QStringLiteral("text"));
    EXPECT_EQ(refused.size(), 1u);
    EXPECT_FALSE(person->amount());
}

TEST_F(BinderTest, AnObserverThatRaisesIsToldAndStopsNothing) {
    bindName();
    const auto watcher = makeRef<test::Watcher>([](const auto&) { throw RangeException("no room"); });
    test::watch(*person, *watcher, "name");
    type(*name, "Cleo");
    leave();
    EXPECT_EQ(*person->name(), "Cleo");
    ASSERT_EQ(refused.size(), 1u);
    EXPECT_THAT(refused[0], HasSubstr("no room"));
}

TEST_F(BinderTest, AValueThatCannotBeReckonedIsLoggedAndNotShown) {
    person->setAmount(Decimal(1));
    binder.bind(*label, "text", {.object = person, .keyPath = "balance", .formatter = amounts()},
                Binder::Direction::Show);
    EXPECT_EQ(label->text(), QStringLiteral("3.00"));
    person->setAmount(Decimal(-1));
    settle();
    EXPECT_EQ(label->text(), QString());
    EXPECT_THAT(logged, ElementsAre(HasSubstr("there is no balance")));
    person->setAmount(Decimal(2));
    settle();
    EXPECT_EQ(label->text(), QStringLiteral("6.00"));
}

TEST_F(BinderTest, ATransformerStandsBetween) {
    person->setAmount(Decimal(-750));
    binder.bind(*amount, "text",
                {.object = person,
                 .keyPath = "amount",
                 .transformer = makeRef<TKNegateValueTransformer>(),
                 .formatter = amounts()});
    EXPECT_EQ(amount->text(), QStringLiteral("750.00"));
    type(*amount, "800");
    leave();
    EXPECT_EQ(person->amount(), Decimal(-800));
}

TEST_F(BinderTest, WhatIsOnlyShownIsNotWritten) {
    person->setName(text("Ann"));
    bindName(Binder::Direction::Show);
    type(*name, "Cleo");
    leave();
    EXPECT_TRUE(binder.commit());
    EXPECT_EQ(*person->name(), "Ann");
    EXPECT_FALSE(binder.hasUnwrittenText());
}

TEST_F(BinderTest, NotesAreWrittenWhenTheyAreLeft) {
    binder.bind(*notes, "plainText", {.object = person, .keyPath = "name"});
    test::giveFocus(*notes);
    for (const char each : {'t', 'w', 'o'}) QTest::keyClick(window.windowHandle(), each);
    person->setName(text("other"));
    settle();
    EXPECT_EQ(notes->toPlainText(), QStringLiteral("two"));
    leave();
    EXPECT_EQ(*person->name(), "two");
    person->setName(text("three"));
    settle();
    EXPECT_EQ(notes->toPlainText(), QStringLiteral("three"));
}

TEST_F(BinderTest, ABoxIsWrittenAtOnce) {
    auto& box = added<QCheckBox>();
    person->setValue(true);
    binder.bind(box, "checked", {.object = person, .keyPath = "value"});
    EXPECT_TRUE(box.isChecked());
    test::click(box);
    EXPECT_FALSE(person->value().boolValue());
    person->setValue(true);
    settle();
    EXPECT_TRUE(box.isChecked());
    person->setValue({});
    settle();
    EXPECT_FALSE(box.isChecked());
    EXPECT_TRUE(person->value().isAbsent()) << "showing nothing writes nothing";
}

TEST_F(BinderTest, AListsChoiceIsWrittenAtOnce) {
    auto& box = added<QComboBox>();
    box.addItems({QStringLiteral("start"), QStringLiteral("partial"), QStringLiteral("end")});
    person->setBillingMode(2);
    binder.bind(box, "currentIndex", {.object = person, .keyPath = "billingMode"});
    EXPECT_EQ(box.currentIndex(), 2);
    test::giveFocus(box);
    QTest::keyClick(window.windowHandle(), Qt::Key_Up);
    EXPECT_EQ(person->billingMode(), 1u);
}

TEST_F(BinderTest, ANumberIsWrittenWithoutTheNoiseOfDoubles) {
    auto& spin = added<QDoubleSpinBox>();
    spin.setDecimals(3);
    binder.bind(spin, "value", {.object = person, .keyPath = "amount"});
    test::giveFocus(spin);
    spin.selectAll();
    for (const char each : {'3', '.', '1', '3', '3'}) QTest::keyClick(window.windowHandle(), each);
    EXPECT_FALSE(person->amount()) << "half of a number is none";
    person->setAmount(Decimal(50));
    settle();
    EXPECT_EQ(spin.cleanText(), QStringLiteral("3.133"));
    EXPECT_TRUE(binder.commit());
    EXPECT_EQ(person->amount(), Decimal::parse("3.133"));
}

TEST_F(BinderTest, ANumberThatIsTypedAsItWasFollowsTheModelAgain) {
    auto& spin = added<QSpinBox>();
    person->setAmount(Decimal(5));
    binder.bind(spin, "value", {.object = person, .keyPath = "amount"});
    test::giveFocus(spin);
    spin.selectAll();
    QTest::keyClick(window.windowHandle(), '5');
    EXPECT_TRUE(binder.hasUnwrittenText());
    leave();
    EXPECT_FALSE(binder.hasUnwrittenText());
    person->setAmount(Decimal(6));
    settle();
    EXPECT_EQ(spin.value(), 6);
    spin.stepUp();
    EXPECT_EQ(person->amount(), Decimal(7));
}

TEST_F(BinderTest, ANumberThatIsGivenUpIsShownAsItWas) {
    auto& spin = added<QSpinBox>();
    person->setAmount(Decimal(5));
    binder.bind(spin, "value", {.object = person, .keyPath = "amount"});
    test::giveFocus(spin);
    spin.selectAll();
    QTest::keyClick(window.windowHandle(), '8');
    binder.revert();
    EXPECT_EQ(spin.text(), QStringLiteral("5"));
    leave();
    EXPECT_EQ(person->amount(), Decimal(5));
}

TEST_F(BinderTest, AListThatCanBeTypedIntoIsWrittenWhenItIsLeftOrChosenFrom) {
    auto& box = added<QComboBox>();
    box.setEditable(true);
    box.addItems({QStringLiteral("Rent"), QStringLiteral("Repairs")});
    person->setName(text("Rent"));
    binder.bind(box, "currentText", {.object = person, .keyPath = "name"});
    EXPECT_EQ(box.currentText(), QStringLiteral("Rent"));
    test::giveFocus(box);
    box.lineEdit()->selectAll();
    for (const char each : {'F', 'e', 'e', 's'}) QTest::keyClick(window.windowHandle(), each);
    EXPECT_EQ(*person->name(), "Rent");
    person->setName(text("Bond"));
    settle();
    EXPECT_EQ(box.currentText(), QStringLiteral("Fees"));
    leave();
    EXPECT_EQ(*person->name(), "Fees");
    test::giveFocus(box);
    QTest::keyClick(window.windowHandle(), Qt::Key_Down);
    EXPECT_EQ(*person->name(), box.currentText().toStdString());
    EXPECT_NE(*person->name(), "Fees");
}

TEST_F(BinderTest, ASecondBindingOfAPropertyReplacesTheFirst) {
    const auto other = makeRef<Person>();
    bindName();
    binder.bind(*name, "text", {.object = other, .keyPath = "name"});
    binder.bind(*name, "enabled", {.object = other, .keyPath = "balanced"}, Binder::Direction::Show);
    EXPECT_TRUE(name->isEnabled());
    person->setName(text("Ann"));
    other->setName(text("Bea"));
    other->setAmount(Decimal(3));
    settle();
    EXPECT_EQ(name->text(), QStringLiteral("Bea"));
    EXPECT_FALSE(name->isEnabled());
    EXPECT_EQ(person->referenceCount(), 1u);
}

TEST_F(BinderTest, AnotherPropertyOfAFieldMayChangeWhileItIsTypedInto) {
    bindName();
    binder.bind(*name, "enabled", {.object = person, .keyPath = "balanced"}, Binder::Direction::Show);
    binder.bind(*name, "toolTip", {.object = person, .keyPath = "fullName"}, Binder::Direction::Show);
    type(*name, "Cle");
    person->setName(text("Ann"));
    person->setAmount(Decimal(0));
    settle();
    EXPECT_EQ(name->toolTip(), QStringLiteral("Ann!"));
    person->setName(text("Bea"));
    settle();
    EXPECT_EQ(name->text(), QStringLiteral("Cle"));
    EXPECT_TRUE(binder.hasUnwrittenText());
}

TEST_F(BinderTest, UnboundAWidgetGoesItsOwnWay) {
    bindName();
    person->setName(text("Ann"));
    binder.unbind(*name);
    settle();
    EXPECT_EQ(name->text(), QString());
    type(*name, "Cleo");
    leave();
    EXPECT_EQ(*person->name(), "Ann");
    EXPECT_EQ(person->referenceCount(), 1u);
}

TEST_F(BinderTest, AWidgetMayGoWhileItIsBound) {
    bindName();
    bindAmount();
    delete name;
    person->setName(text("Ann"));
    person->setAmount(Decimal(3));
    settle();
    EXPECT_EQ(amount->text(), QStringLiteral("3.00"));
    EXPECT_TRUE(binder.commit());
}

TEST_F(BinderTest, ABinderMayGoWithAnnouncementsUnderWay) {
    auto other = std::make_unique<Binder>();
    other->bind(*name, "text", {.object = person, .keyPath = "name"});
    person->setName(text("Ann"));
    other = nullptr;
    settle();
    person->setName(text("Bea"));
    settle();
    EXPECT_EQ(name->text(), QString());
}

TEST_F(BinderTest, WhoIsToldMayUnbindEverything) {
    bindName();
    bindAmount();
    binder.whenWritten = [this](QWidget&) { binder.unbindAll(); };
    type(*name, "Cleo");
    type(*amount, "12");
    EXPECT_TRUE(binder.commit());
    EXPECT_EQ(*person->name(), "Cleo");
    settle();
    binder.whenWritten = nullptr;
}

TEST_F(BinderTest, WhatCannotBeBoundIsRefusedByName) {
    name->setObjectName(QStringLiteral("nameField"));
    const auto refusal = [&](const char* property, const char* path,
                             Binder::Direction direction) -> std::string {
        try {
            binder.bind(*name, property, {.object = person, .keyPath = path}, direction);
        } catch (const Exception& exception) {
            return exception.what();
        }
        return "none";
    };
    EXPECT_THAT(refusal("wings", "name", Binder::Direction::Edit),
                testing::AllOf(HasSubstr("nameField"), HasSubstr("wings")));
    EXPECT_THAT(refusal("maxLength", "name", Binder::Direction::Edit), HasSubstr("maxLength"));
    EXPECT_THAT(refusal("text", "nowhere", Binder::Direction::Show), HasSubstr("nowhere"));
    EXPECT_EQ(person->referenceCount(), 1u);
}

} // namespace
} // namespace estatebook::platform
