// SPDX-License-Identifier: MIT
#include "desktop/program/MainWindowTestCase.hpp"

#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::click;
using estatebook::test::clickAt;
using estatebook::test::settle;
using platform::Decimal;
using testing::HasSubstr;
using testing::StartsWith;

class MainWindowTest : public MainWindowTestCase {};

TEST_F(MainWindowTest, FromANewBookToAPrintedStatement) {
    const std::string book = path("mine.estatebook");
    ASSERT_TRUE(window_->makeBook(QString::fromStdString(book)));
    settle();
    EXPECT_EQ(list(Page::Tenures).shownRows(), 0);

    choose(Page::Properties);
    press(*window_, Qt::Key_N, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    type(in<QLineEdit>("name"), "Flat 2");
    type(in<QLineEdit>("rent"), "1000");
    confirm();
    ASSERT_FALSE(window_->sheet());
    EXPECT_EQ(cell(Page::Properties, 0, 0), "Flat 2");

    choose(Page::Tenants);
    press(*window_, Qt::Key_N, Qt::ControlModifier);
    type(in<QLineEdit>("name"), "A. Smith");
    click(in<QPushButton>("save"));
    ASSERT_FALSE(window_->sheet());
    EXPECT_EQ(cell(Page::Tenants, 0, 0), "A. Smith");

    press(*window_, Qt::Key_T, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    type(in<QComboBox>("property"), "Flat 2");
    type(in<QComboBox>("tenant"), "A. Smith");
    type(in<QLineEdit>("rent"), "1000");
    EXPECT_EQ(in<QLabel>("balance").text().toStdString(), "\u22121,000.00") << "a month ahead";
    confirm();
    ASSERT_FALSE(window_->sheet());
    EXPECT_EQ(session().properties().size(), 1U);
    EXPECT_EQ(session().tenants().size(), 1U);
    EXPECT_THAT(cell(Page::Tenures, 0, 0), StartsWith("Flat 2 - A. Smith"));
    EXPECT_EQ(cell(Page::Tenures, 0, 2), "\u22121,000.00");

    press(*window_, Qt::Key_P, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    EXPECT_EQ(in<QLineEdit>("amount").text().toStdString(), "1000.00") << "one rent";
    type(in<QLineEdit>("what"), "First month");
    click(in<QPushButton>("save"));
    ASSERT_FALSE(window_->sheet());
    EXPECT_EQ(cell(Page::Tenures, 0, 2), "0.00");

    press(*window_, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(cell(Page::Tenures, 0, 2), "\u22121,000.00");
    press(*window_, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(cell(Page::Tenures, 0, 2), "0.00");

    press(*window_, Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(window_->statementPage().isVisible());
    EXPECT_THAT(window_->statementPage().csv(), HasSubstr("First month"));
    EXPECT_THAT(window_->statementPage().copiedText().toStdString(), HasSubstr("Balance on"));
    EXPECT_THAT(window_->statementPage().pdf(), StartsWith("%PDF"));
    press(*window_, Qt::Key_Escape);
    EXPECT_FALSE(window_->statementPage().isVisible());

    EXPECT_TRUE(window_->isWindowModified());
    passTime(2.1);
    EXPECT_FALSE(window_->isWindowModified());
    const auto saved = BookSession::openForReading(book, loop_->runLoop());
    EXPECT_EQ(tenureOf(*saved, "Flat 2")->balance(), Decimal(0));
}

TEST_F(MainWindowTest, WithoutABookTheDayIsToday) {
    const auto& day = *window_->findChild<QDateEdit*>(QStringLiteral("day"));
    EXPECT_EQ(day.date(), QDate(2026, 6, 30));
    openExample();
    window_->setAsOf(QDate(2025, 1, 1));
    settle();
    ASSERT_EQ(day.date(), QDate(2025, 1, 1));
    EXPECT_FALSE(window_->openBook(QString::fromStdString(path("gone.estatebook"))));
    EXPECT_EQ(day.date(), QDate(2026, 6, 30));
}

TEST_F(MainWindowTest, AnUndoIsCalledByItsName) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    press(*window_, Qt::Key_P, Qt::ControlModifier);
    confirm();
    EXPECT_EQ(window_->findChild<QAction*>(QStringLiteral("undo"))->text().toStdString(), "&Undo Payment");
    EXPECT_FALSE(window_->findChild<QAction*>(QStringLiteral("redo"))->isEnabled());
}

TEST_F(MainWindowTest, EscapeLeavesASheetAndNothingBehind) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    const std::string before = cell(Page::Tenures, 2, 2);
    press(*window_, Qt::Key_P, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    type(in<QLineEdit>("amount"), "99");
    press(sheetWidget(), Qt::Key_Escape);
    EXPECT_FALSE(window_->sheet());
    EXPECT_EQ(cell(Page::Tenures, 2, 2), before);
    EXPECT_FALSE(session().canUndo());
    EXPECT_EQ(session().condition(), BookSession::Condition::Saved);
}

TEST_F(MainWindowTest, ASheetKeepsTheUserFromTheWindow) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    press(*window_, Qt::Key_P, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    auto& sidebar = *window_->findChild<QListWidget*>(QStringLiteral("sidebar"));
    clickAt(*sidebar.viewport(), sidebar.visualItemRect(sidebar.item(2)).center());
    EXPECT_EQ(window_->page(), Page::Tenures);
    press(*window_, Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(window_->sheet());
    press(sheetWidget(), Qt::Key_Escape);
}

TEST_F(MainWindowTest, AnAmountThatCannotBeReadIsToldInItsPlace) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    press(*window_, Qt::Key_P, Qt::ControlModifier);
    type(in<QLineEdit>("amount"), "a lot");
    confirm();
    ASSERT_TRUE(window_->sheet());
    EXPECT_THAT(in<QLabel>("fault").text().toStdString(), HasSubstr("cannot be read"));
    EXPECT_TRUE(in<QLabel>("fault").isVisible());
    type(in<QLineEdit>("amount"), "1,050.50");
    confirm();
    EXPECT_FALSE(window_->sheet());
    EXPECT_EQ(session().undoName(), "Payment");
}

TEST_F(MainWindowTest, ALettingThatEndsADayShortIsToldOf) {
    openExample();
    press(*window_, Qt::Key_T, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    in<QDateEdit>("start").setDate(QDate(2027, 3, 1));
    click(in<QWidget>("hasEnd"));
    in<QDateEdit>("end").setDate(QDate(2027, 8, 31));
    settle();
    const QString words = in<QLabel>("dayShort").text();
    EXPECT_THAT(words.toStdString(), HasSubstr("is 5 rents and 30 days; "));
    EXPECT_THAT(words.toStdString(), HasSubstr("is 6 rents."));
    in<QDateEdit>("end").setDate(QDate(2027, 9, 1));
    settle();
    EXPECT_FALSE(in<QLabel>("dayShort").isVisible());
    EXPECT_EQ(in<QLineEdit>("periods").text().toStdString(), "6.00");
    type(in<QLineEdit>("periods"), "3");
    EXPECT_EQ(in<QDateEdit>("end").date(), QDate(2027, 6, 1));
    in<QDateEdit>("end").setDate(QDate(2027, 2, 1));
    settle();
    EXPECT_THAT(in<QLabel>("fault").text().toStdString(), HasSubstr("before the first day"));
    press(sheetWidget(), Qt::Key_Escape);
}

TEST_F(MainWindowTest, AWholeLettingIsMadeInOneSheet) {
    open(makeEmpty());
    press(*window_, Qt::Key_T, Qt::ControlModifier);
    type(in<QComboBox>("property"), "Boat House");
    type(in<QComboBox>("tenant"), "B. Lake");
    EXPECT_THAT(in<QLabel>("added").text().toStdString(), HasSubstr("Boat House"));
    type(in<QLineEdit>("rent"), "300");
    confirm();
    ASSERT_FALSE(window_->sheet());
    EXPECT_EQ(session().undoName(), "New Letting");
    EXPECT_EQ(session().properties().size(), 1U);
    session().undo();
    EXPECT_TRUE(session().properties().empty());
    EXPECT_TRUE(session().tenants().empty());
    EXPECT_TRUE(session().tenures().empty());
}

TEST_F(MainWindowTest, TermsThatAreOnlyLookedAtAreNoEdit) {
    openExample();
    const auto jones = tenureOf(session(), "M. Jones");
    const auto balance = jones->balance();
    selectRowOf(Page::Tenures, "M. Jones");
    press(*window_, Qt::Key_E, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    confirm();
    ASSERT_FALSE(window_->sheet());
    EXPECT_EQ(jones->balance(), balance);
    EXPECT_FALSE(session().canUndo()) << session().undoName();
    EXPECT_EQ(session().condition(), BookSession::Condition::Saved);
}

TEST_F(MainWindowTest, ABookThatIsLeftTakesItsSheetAlong) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    press(*window_, Qt::Key_P, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    EXPECT_FALSE(window_->openBook(QString::fromStdString(path("gone.estatebook"))));
    settle();
    EXPECT_FALSE(window_->sheet());
    EXPECT_FALSE(window_->session());
}

TEST_F(MainWindowTest, AWindowThatGoesTakesItsSheetAlong) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    press(*window_, Qt::Key_E, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    window_.reset();
    settle();
}

TEST_F(MainWindowTest, NotesAreWrittenAndTakenBackInOneStep) {
    openExample();
    choose(Page::Properties);
    selectRowOf(Page::Properties, "12 Harbour Street");
    const auto property = session().properties().front();
    const std::size_t before = property->notes().count();
    press(*window_, Qt::Key_M, Qt::ControlModifier);
    ASSERT_TRUE(window_->sheet());
    click(in<QPushButton>("addNote"));
    type(in<QLineEdit>("subject"), "Roof");
    type(in<QPlainTextEdit>("content"), "Two slates are loose.");
    confirm();
    ASSERT_FALSE(window_->sheet());
    ASSERT_EQ(property->notes().count(), before + 1);
    EXPECT_EQ(property->notes()[before].subject()->view(), "Roof");
    EXPECT_EQ(property->notes()[before].content().string()->view(), "Two slates are loose.");
    press(*window_, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(property->notes().count(), before);
}

TEST_F(MainWindowTest, TagsAreTakenAwayAsWell) {
    const auto book = makeExample();
    open(book);
    choose(Page::Properties);
    selectRowOf(Page::Properties, "12 Harbour Street");
    press(*window_, Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(in<QLineEdit>("tags").text().toStdString(), "House, Harbour");
    click(in<QLineEdit>("tags"));
    press(sheetWidget(), Qt::Key_A, Qt::ControlModifier);
    press(sheetWidget(), Qt::Key_Delete);
    confirm();
    ASSERT_FALSE(window_->sheet());
    ASSERT_TRUE(session().save()) << session().trouble();
    const auto saved = BookSession::openForReading(book, loop_->runLoop());
    const auto names = saved->properties().front()->tagNames();
    EXPECT_TRUE(!names || names->isEmpty());
}

TEST_F(MainWindowTest, MidnightMovesTheListsOn) {
    openExample();
    const std::string before = total(Page::Tenures, 2);
    auto& day = *window_->findChild<QDateEdit*>(QStringLiteral("day"));
    EXPECT_EQ(day.date(), QDate(2026, 6, 30));
    passTime(12 * 3600 + 2);
    EXPECT_EQ(day.date(), QDate(2026, 7, 1));
    EXPECT_NE(total(Page::Tenures, 2), before);
    EXPECT_FALSE(window_->isWindowModified());
}

TEST_F(MainWindowTest, TheFiguresOfAnotherDayStayOverMidnight) {
    openExample();
    auto& day = *window_->findChild<QDateEdit*>(QStringLiteral("day"));
    day.setDate(QDate(2026, 1, 1));
    settle();
    const std::string then = total(Page::Tenures, 2);
    passTime(24 * 3600);
    EXPECT_EQ(day.date(), QDate(2026, 1, 1));
    EXPECT_EQ(total(Page::Tenures, 2), then);
    window_->findChild<QAction*>(QStringLiteral("today"))->trigger();
    settle();
    EXPECT_EQ(day.date(), QDate(2026, 7, 1));
}

TEST_F(MainWindowTest, TwoProgramsOnOneBook) {
    const auto book = makeExample();
    platform::RunLoop other;
    const auto first = BookSession::open(book, other);
    EXPECT_FALSE(window_->openBook(QString::fromStdString(book)));
    settle();
    EXPECT_FALSE(window_->session());
    QPushButton* look = nullptr;
    const auto buttons = window_->findChildren<QPushButton*>();
    for (QPushButton* button : buttons)
        if (button->text().contains(QLatin1String("Look"))) look = button;
    ASSERT_TRUE(look && look->isVisible());
    click(*look);
    ASSERT_TRUE(window_->session());
    EXPECT_FALSE(session().canEdit());
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10);
    for (const char* action : {"add", "pay", "edit", "undo"})
        EXPECT_FALSE(window_->findChild<QAction*>(QLatin1String(action))->isEnabled()) << action;
    const auto property = first->properties().front();
    first->perform("Change", [&] { property->setName(platform::String::make("Quay House")); });
    EXPECT_TRUE(first->save()) << first->trouble();
}

TEST_F(MainWindowTest, EditsThatCannotBeSavedAreToldOfAboveTheLists) {
    const auto book = makeExample();
    open(book);
    const auto jones = tenureOf(session(), "M. Jones");
    session().perform("Change of Letting", [&] { jones->setEndDate(day(2025, 1, 1)); });
    passTime(2.1);
    EXPECT_THAT(window_->banner().sentence().toStdString(), HasSubstr("ends before it starts"));
    EXPECT_TRUE(window_->isWindowModified());
    makeWindow();
    open(book);
    EXPECT_THAT(window_->banner().sentence().toStdString(), HasSubstr("kept beside the book"));
    const auto buttons = window_->banner().findChildren<QPushButton*>();
    click(*buttons.front());
    EXPECT_EQ(window_->banner().sentence().toStdString(), "");
    EXPECT_TRUE(session().save()) << session().trouble();
}

TEST_F(MainWindowTest, TenThousandAnnouncementsAreOneRefresh) {
    openExample();
    const auto jones = tenureOf(session(), "M. Jones");
    const std::size_t before = window_->refreshes();
    for (int i = 1; i <= 10000; ++i) jones->setBondAmount(Decimal(i));
    settle();
    EXPECT_EQ(window_->refreshes(), before + 1);
    EXPECT_EQ(cell(Page::Tenures, 2, 2), window_->figures().amount(jones->balance()).toStdString());
}

TEST_F(MainWindowTest, ReadingTheListsHasNothingReadAnew) {
    openExample();
    for (const Page page : {Page::Tenures, Page::Arrears, Page::Properties, Page::Tenants, Page::Tenures}) {
        window_->showPage(page);
        settle();
    }
    window_->search(QStringLiteral("o"));
    settle();
    EXPECT_EQ(window_->refreshes(), 0U);
    EXPECT_EQ(list(Page::Tenures).model().readRows(), 10U) << "each row once";
}

TEST_F(MainWindowTest, ASearchShowsWhatFitsAndItsSums) {
    openExample();
    auto& search = *window_->findChild<QLineEdit*>(QStringLiteral("search"));
    type(search, "green");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 2);
    EXPECT_EQ(total(Page::Tenures, 0), "2 lines");
    EXPECT_EQ(total(Page::Tenures, 2), "\u2212675.71");
    type(search, "nobody of this name");
    EXPECT_EQ(list(Page::Tenures).shownRows(), 0);
    press(search, Qt::Key_Escape);
    EXPECT_EQ(list(Page::Tenures).shownRows(), 10);
}

TEST_F(MainWindowTest, SumsAreThoseOfTheRows) {
    openExample();
    for (const auto& [page, column] :
         {std::pair(Page::Tenures, 2), {Page::Properties, 4}, {Page::Tenants, 4}}) {
        window_->showPage(page);
        settle();
        Decimal sum;
        for (int row = 0; row < list(page).model().rowCount(); ++row)
            sum += list(page).model().row(row).cells[static_cast<std::size_t>(column)].amount.value();
        EXPECT_EQ(total(page, column), window_->figures().amount(sum).toStdString());
    }
}

TEST_F(MainWindowTest, ArrearsAreThoseWhoOwe) {
    openExample();
    choose(Page::Arrears);
    window_->refreshNow();
    ASSERT_EQ(list(Page::Arrears).shownRows(), 3);
    EXPECT_EQ(cell(Page::Arrears, 0, 2), "5,099.50");
    EXPECT_EQ(total(Page::Arrears, 2), "5,764.50");
}

TEST_F(MainWindowTest, WhatIsChargedByDaysIsShownInWholePence) {
    openExample();
    choose(Page::Tenants);
    ASSERT_EQ(cell(Page::Tenants, 6, 0), "R. Green");
    EXPECT_EQ(cell(Page::Tenants, 6, 3), "\u221221,757.71");
    EXPECT_EQ(total(Page::Tenants, 3), "\u2212156,222.71");
}

TEST_F(MainWindowTest, StatementLinesOfTheTermsAreLockedAndOthersOpen) {
    openExample();
    selectRowOf(Page::Tenures, "M. Jones");
    press(*window_, Qt::Key_Return, Qt::ControlModifier);
    const StatementModel& lines = window_->statementPage().model();
    int recorded = -1, generated = -1;
    for (int row = 0; row < lines.rowCount(); ++row) {
        const bool isItalic = lines.data(lines.index(row, 0), Qt::FontRole).value<QFont>().italic();
        if (isItalic) {
            EXPECT_FALSE(lines.transaction(row));
            generated = row;
        } else if (lines.transaction(row)) {
            recorded = row;
        }
    }
    ASSERT_GE(recorded, 0);
    ASSERT_GE(generated, 0);
    Q_EMIT window_->statementPage().table().doubleClicked(lines.index(generated, 0));
    EXPECT_FALSE(window_->sheet());
    Q_EMIT window_->statementPage().table().doubleClicked(lines.index(recorded, 0));
    ASSERT_TRUE(window_->sheet());
    type(in<QLineEdit>("what"), "Corrected");
    confirm();
    EXPECT_THAT(window_->statementPage().csv(), HasSubstr("Corrected"));
}

TEST_F(MainWindowTest, AWindowStandsWhereItStood) {
    openExample();
    window_->resize(900, 500);
    choose(Page::Tenants);
    window_->close();
    settle();
    makeWindow();
    EXPECT_EQ(window_->size(), QSize(900, 500));
    open(path("harbour.estatebook"));
    EXPECT_EQ(window_->page(), Page::Tenants);
}

TEST_F(MainWindowTest, EverythingThatIsWorkedWithHasANameToBeHeard) {
    openExample();
    const auto widgets = window_->findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        if (qobject_cast<const QTableView*>(widget)) {
            EXPECT_FALSE(widget->accessibleName().isEmpty());
        }
        const auto* line = qobject_cast<const QLineEdit*>(widget);
        const bool isInner = line && (qobject_cast<const QDateEdit*>(line->parent()) ||
                                      qobject_cast<const QComboBox*>(line->parent()));
        if (line && !isInner) {
            EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
        }
    }
}

} // namespace

} // namespace estatebook::desktop::test
