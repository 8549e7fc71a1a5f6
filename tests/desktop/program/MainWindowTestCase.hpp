// SPDX-License-Identifier: MIT
#pragma once

/// The window of the program with a user in front of it, who answers its dialogs as the test says.

#include "desktop/QtUser.hpp"
#include "desktop/program/DesktopTestCase.hpp"

#include "estatebook-desktop/sheets/BookSheet.hpp"
#include "estatebook-desktop/statement/StatementPage.hpp"
#include "estatebook-desktop/window/Banner.hpp"
#include "estatebook-desktop/window/MainWindow.hpp"
#include "platform/toolkit/qt/QtToolkit.hpp"

#include <QAction>
#include <QListWidget>
#include <QPrinter>
#include <QSettings>
#include <QTableView>

#include <deque>
#include <memory>
#include <stdexcept>

namespace estatebook::desktop::test {

/// Answers that are given in turn, and what was asked. Whoever is asked more than there are answers for cancels.
class AnsweredDialogs final : public Dialogs {
public:
    std::deque<QString> files;
    std::deque<bool> confirmations;
    /// Where the printer prints to; nothing is printed when it is empty.
    QString paper;
    std::vector<std::string> asked;

    QString fileToOpen(QWidget&, const QString& title, const QString&, const QString&) override {
        asked.push_back(title.toStdString());
        return next(files);
    }
    bool choosePrinter(QWidget&, QPrinter& printer) override {
        asked.push_back(printer.docName().toStdString());
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(paper);
        return !paper.isEmpty();
    }
    bool confirm(QWidget&, const Question& question) override {
        asked.push_back(question.words.toStdString());
        return next(confirmations);
    }
    void tell(QWidget&, const QString&, const QString& words) override {
        asked.push_back(words.toStdString());
    }
    void warn(QWidget&, const QString&, const QString& words) override {
        asked.push_back(words.toStdString());
    }

    /// The file that was offered last.
    QString offered;

protected:
    QString nameToSave(QWidget&, const QString& title, const QString& path, const QString&) override {
        asked.push_back(title.toStdString());
        offered = path;
        return next(files);
    }

private:
    template <class T>
    static T next(std::deque<T>& answers) {
        if (answers.empty()) return T();
        T answer = answers.front();
        answers.pop_front();
        return answer;
    }
};

/// To a window that has the keyboard: not every window system gives it to one that is shown. A window behind a sheet is left
/// behind it.
inline void press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWidget* window = widget.window();
    const QWidget* inFront = QApplication::activeModalWidget();
    if (!inFront || inFront == window) {
        window->activateWindow();
        static_cast<void>(
            QTest::qWaitFor([&] { return window->isActiveWindow(); }, estatebook::test::Patience));
    }
    estatebook::test::press(widget, key, modifiers);
}

class MainWindowTestCase : public DesktopTestCase {
protected:
    using Page = MainWindow::Page;

    MainWindowTestCase() {
        QCoreApplication::setOrganizationName(QStringLiteral("EstateBook"));
        QCoreApplication::setApplicationName(QStringLiteral("tests"));
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                           QString::fromStdString(path("settings")));
        platform::Toolkit::setCurrent(&toolkit_);
        makeWindow();
    }
    ~MainWindowTestCase() override {
        window_.reset();
        loop_.reset();
        platform::Toolkit::setCurrent(nullptr);
    }

    /// By whom the window is answered.
    virtual Dialogs& dialogs() { return dialogs_; }
    void makeWindow() {
        window_.reset();
        loop_ = std::make_unique<DesktopLoop>();
        window_ = std::make_unique<MainWindow>(*loop_, dialogs());
        window_->show();
        estatebook::test::settle();
    }
    void open(const std::string& book) {
        ASSERT_TRUE(window_->openBook(QString::fromStdString(book)));
        estatebook::test::settle();
    }
    void openExample() { open(makeExample()); }

    [[nodiscard]] BookSession& session() const { return *window_->session(); }
    [[nodiscard]] ListPage& list(Page page) const { return window_->list(page); }
    void passTime(double seconds) {
        clock_.pass(seconds);
        loop_->turn();
        estatebook::test::settle();
    }
    void choose(Page page) {
        auto& sidebar = *window_->findChild<QListWidget*>(QStringLiteral("sidebar"));
        const QRect item = sidebar.visualItemRect(sidebar.item(static_cast<int>(page)));
        estatebook::test::clickAt(*sidebar.viewport(), item.center());
        ASSERT_EQ(window_->page(), page);
    }
    /// The text of a cell as it is shown.
    [[nodiscard]] std::string cell(Page page, int row, int column) const {
        return list(page).table().model()->index(row, column).data().toString().toStdString();
    }
    [[nodiscard]] std::string total(Page page, int column) const {
        list(page).finishTotals();
        return list(page).totals().item(0, column)->text().toStdString();
    }
    void selectRowOf(Page page, std::string_view text) {
        const QAbstractItemModel& model = *list(page).table().model();
        for (int row = 0; row < model.rowCount(); ++row)
            if (cell(page, row, 0).find(text) != std::string::npos) {
                const QRect place = list(page).table().visualRect(model.index(row, 0));
                estatebook::test::clickAt(*list(page).table().viewport(), place.center());
                return;
            }
        FAIL() << "no row with " << text;
    }

    // The sheet in front of the window
    template <class Widget>
    [[nodiscard]] Widget& in(std::string_view name) const {
        auto* widget = sheet().qtWindow().find<Widget>(name);
        if (!widget) throw std::runtime_error("the sheet has no " + std::string(name));
        return *widget;
    }
    [[nodiscard]] BookSheet& sheet() const {
        if (!window_->sheet()) throw std::runtime_error("there is no sheet");
        return *window_->sheet();
    }
    [[nodiscard]] QWidget& sheetWidget() const { return *sheet().qtWindow().widget(); }
    void type(QWidget& into, const char* text) {
        estatebook::test::click(into);
        press(into, Qt::Key_A, Qt::ControlModifier);
        for (const char* each = text; *each; ++each) QTest::keyClick(into.window()->windowHandle(), *each);
        estatebook::test::settle();
    }
    void confirm() { press(sheetWidget(), Qt::Key_Return, Qt::ControlModifier); }

    platform::QtToolkit toolkit_;
    AnsweredDialogs dialogs_;
    std::unique_ptr<DesktopLoop> loop_;
    std::unique_ptr<MainWindow> window_;
};

} // namespace estatebook::desktop::test
