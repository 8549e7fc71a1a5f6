// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/QtWindow.hpp"

#include "desktop/QtUser.hpp"
#include "platform/system/Log.hpp"
#include "platform/toolkit/qt/QtToolkit.hpp"
#include "platform/toolkit/qt/SheetDialog.hpp"
#include "platform/values/Exception.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <memory>
#include <stdexcept>

namespace estatebook::platform {
namespace {

using test::click;
using test::clickCloseBox;
using test::press;
using test::settle;
using testing::ElementsAre;
using testing::IsEmpty;

class MainWindow final : public QMainWindow {
public:
    MainWindow() { setCentralWidget(new QPushButton(QStringLiteral("Press"))); }
    QPushButton& button() const { return *dynamic_cast<QPushButton*>(centralWidget()); }
    int timesAskedToClose = 0;
    bool closes = true;

protected:
    void closeEvent(QCloseEvent* event) override {
        ++timesAskedToClose;
        event->setAccepted(closes);
    }
};

/// A sheet as programs write them, with the usual buttons wired the usual way.
class Editor final : public SheetDialog {
public:
    Editor() {
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(edit = new QLineEdit);
        layout->addWidget(buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel));
        connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    }
    QLineEdit* edit;
    QDialogButtonBox* buttons;
};

class QtWindowTest : public testing::Test {
protected:
    QtWindowTest() {
        Log::setSink([this](std::string_view line) { logged.emplace_back(line); });
        main->show();
        settle();
        begin();
    }
    ~QtWindowTest() override {
        sheet = nullptr;
        parent = nullptr;
        settle();
        Log::setSink({});
    }

    void begin() {
        parent->beginSheetCompletionHandler(sheet, [this](std::int64_t code) { ends.push_back(code); });
        settle();
    }
    Editor& editor() { return dynamic_cast<Editor&>(*sheet->widget()); }
    void clickButton(QDialogButtonBox::StandardButton which) { click(*editor().buttons->button(which)); }

    std::vector<std::string> logged;
    std::vector<std::int64_t> ends;
    std::unique_ptr<MainWindow> main = std::make_unique<MainWindow>();
    Ref<QtWindow> parent = QtWindow::around(*main);
    Ref<QtWindow> sheet = QtWindow::owning(std::make_unique<Editor>());
};

TEST_F(QtWindowTest, ASheetIsAModalDialogOfItsParentAndOfNobodyElse) {
    EXPECT_EQ(editor().parentWidget(), main.get());
    EXPECT_EQ(editor().windowModality(), Qt::WindowModal);
    EXPECT_EQ(editor().windowHandle()->transientParent(), main->windowHandle());
    int presses = 0;
    QObject::connect(&main->button(), &QPushButton::clicked, [&] { ++presses; });
    click(main->button());
    EXPECT_EQ(presses, 0);
    MainWindow other;
    other.show();
    settle();
    QObject::connect(&other.button(), &QPushButton::clicked, [&] { ++presses; });
    click(other.button());
    EXPECT_EQ(presses, 1);
    clickButton(QDialogButtonBox::Ok);
    click(main->button());
    EXPECT_EQ(presses, 2);
}

TEST_F(QtWindowTest, ConfirmingIsZero) {
    QSignalSpy finished(&editor(), &QDialog::finished);
    clickButton(QDialogButtonBox::Ok);
    EXPECT_THAT(ends, ElementsAre(0));
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished[0][0].toInt(), 0);
    EXPECT_FALSE(editor().isVisible());
}

TEST_F(QtWindowTest, CancelEscapeAndTheCloseBoxAreMinusOne) {
    clickButton(QDialogButtonBox::Cancel);
    begin();
    press(editor(), Qt::Key_Escape);
    begin();
    press(*editor().edit, Qt::Key_Escape);
    begin();
    clickCloseBox(editor());
    begin();
    editor().close();
    begin();
    editor().reject();
    EXPECT_THAT(ends, ElementsAre(-1, -1, -1, -1, -1, -1));
    EXPECT_FALSE(editor().isVisible());
}

TEST_F(QtWindowTest, ReturnInAFieldConfirms) {
    test::giveFocus(*editor().edit);
    press(editor(), Qt::Key_Return);
    EXPECT_THAT(ends, ElementsAre(0));
}

TEST_F(QtWindowTest, ADialogThatIsDoneEndsWithItsResult) {
    editor().done(42);
    EXPECT_THAT(ends, ElementsAre(42));
    begin();
    editor().done(1);
    EXPECT_THAT(ends, ElementsAre(42, 1));
    editor().done(5);
    EXPECT_THAT(ends, ElementsAre(42, 1));
}

TEST_F(QtWindowTest, ASheetThatIsHiddenByAnybodyIsStopped) {
    editor().hide();
    EXPECT_THAT(ends, ElementsAre(Window::Stopped));
    begin();
    editor().setVisible(false);
    EXPECT_THAT(ends, ElementsAre(Window::Stopped, Window::Stopped));
}

TEST_F(QtWindowTest, AnEndThatTheProgramMakesIsHeardOnce) {
    QSignalSpy finished(&editor(), &QDialog::finished);
    parent->endSheetReturnCode(*sheet, 7);
    settle();
    EXPECT_THAT(ends, ElementsAre(7));
    EXPECT_EQ(finished.count(), 0);
}

TEST_F(QtWindowTest, AParentThatIsHiddenStopsItsSheet) {
    main->hide();
    settle();
    EXPECT_THAT(ends, ElementsAre(Window::Stopped));
    EXPECT_FALSE(editor().isVisible());
}

TEST_F(QtWindowTest, AParentThatAsksToCloseStopsItsSheetOnlyIfItDoes) {
    main->closes = false;
    main->close();
    EXPECT_THAT(ends, IsEmpty());
    EXPECT_TRUE(editor().isVisible());
    EXPECT_EQ(main->timesAskedToClose, 0) << "a window under a sheet is not asked";
    parent->endSheetReturnCode(*sheet, 0);
    main->close();
    EXPECT_EQ(main->timesAskedToClose, 1);
    EXPECT_TRUE(main->isVisible());
}

TEST_F(QtWindowTest, AWidgetThatIsDestroyedStopsItsSheetWhichCanBeShownElsewhere) {
    const QPointer<QWidget> dialog = sheet->widget();
    main = nullptr;
    settle();
    EXPECT_THAT(ends, ElementsAre(Window::Stopped));
    EXPECT_EQ(parent->widget(), nullptr);
    EXPECT_FALSE(parent->isVisible());
    ASSERT_TRUE(dialog);
    EXPECT_FALSE(dialog->isVisible());
    MainWindow other;
    other.show();
    const auto elsewhere = QtWindow::around(other);
    elsewhere->beginSheetCompletionHandler(sheet, [this](std::int64_t code) { ends.push_back(code); });
    settle();
    EXPECT_TRUE(dialog->isVisible());
    elsewhere->endSheetReturnCode(*sheet, 3);
    EXPECT_THAT(ends, ElementsAre(Window::Stopped, 3));
}

TEST_F(QtWindowTest, NothingIsShownOnAWindowWhoseWidgetIsGone) {
    main = nullptr;
    ends.clear();
    begin();
    parent->show();
    parent->close();
    EXPECT_THAT(ends, IsEmpty());
    EXPECT_FALSE(sheet->isSheet());
    EXPECT_EQ(parent->control("anything"), nullptr);
}

TEST_F(QtWindowTest, ASheetWhoseWidgetIsDestroyedIsStoppedAndTheNextOneShown) {
    const auto next = QtWindow::owning(std::make_unique<Editor>());
    parent->beginSheetCompletionHandler(next, {});
    delete sheet->widget();
    settle();
    EXPECT_THAT(ends, ElementsAre(Window::Stopped));
    EXPECT_TRUE(next->isVisible());
    parent->endSheet(*next);
}

TEST_F(QtWindowTest, ASheetThatIsShownAgainKeepsWhatStandsInIt) {
    editor().edit->setText(QStringLiteral("typed"));
    clickButton(QDialogButtonBox::Cancel);
    begin();
    EXPECT_EQ(editor().edit->text(), QStringLiteral("typed"));
    EXPECT_TRUE(editor().isVisible());
    EXPECT_EQ(editor().windowModality(), Qt::WindowModal);
}

TEST_F(QtWindowTest, AHandlerMayLetTheSheetGoWhileItsButtonIsClicked) {
    parent->endSheet(*sheet);
    const QPointer<QWidget> dialog = sheet->widget();
    parent->beginSheetCompletionHandler(sheet, [this](std::int64_t) { sheet = nullptr; });
    settle();
    QPushButton* ok = editor().buttons->button(QDialogButtonBox::Ok);
    click(*ok);
    settle();
    EXPECT_FALSE(sheet);
    EXPECT_FALSE(dialog);
}

TEST_F(QtWindowTest, WhatAHandlerRaisesIsLoggedAndDoesNotReachTheEventLoop) {
    parent->endSheet(*sheet);
    parent->beginSheetCompletionHandler(sheet, [](std::int64_t) { throw std::runtime_error("no room"); });
    settle();
    clickButton(QDialogButtonBox::Ok);
    EXPECT_THAT(logged, ElementsAre(testing::HasSubstr("no room")));
    EXPECT_FALSE(sheet->isSheet());
}

TEST_F(QtWindowTest, AnythingButASheetDialogIsRefusedAsASheet) {
    QDialog plain;
    QMainWindow other;
    for (QWidget* widget : {static_cast<QWidget*>(&plain), static_cast<QWidget*>(&other)})
        EXPECT_THROW(parent->beginSheetCompletionHandler(QtWindow::around(*widget), {}),
                     InvalidArgumentException);
    EXPECT_THAT(parent->sheets(), ElementsAre(Ref<Window>(sheet)));
}

TEST_F(QtWindowTest, ADialogOfTheProgramStaysItsOwn) {
    parent->endSheet(*sheet);
    Editor own;
    {
        const auto around = QtWindow::around(own);
        parent->beginSheetCompletionHandler(around, [this](std::int64_t code) { ends.push_back(code); });
        settle();
        EXPECT_TRUE(own.isVisible());
        click(*own.buttons->button(QDialogButtonBox::Cancel));
    }
    settle();
    EXPECT_THAT(ends, ElementsAre(Window::Stopped, -1));
    own.setParent(nullptr);
    own.show();
    own.reject();
    EXPECT_EQ(own.result(), -1);
}

TEST_F(QtWindowTest, WidgetsAreFoundByNameAndClass) {
    editor().edit->setObjectName(QStringLiteral("name"));
    EXPECT_EQ(sheet->find<QLineEdit>("name"), editor().edit);
    EXPECT_EQ(sheet->find<QPushButton>("name"), nullptr);
    EXPECT_EQ(sheet->find<QWidget>("nobody"), nullptr);
    EXPECT_EQ(sheet->find<QWidget>(""), nullptr);
}

} // namespace
} // namespace estatebook::platform
