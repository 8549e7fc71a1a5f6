// SPDX-License-Identifier: MIT
#pragma once

/// MainWindow: one book, as lists of its tenures, properties, tenants and arrears, and what can be done with them.
///
///     DesktopLoop loop;
///     MainWindow window(loop);
///     window.openBook("harbour.estatebook");
///     window.show();
///
/// The lists follow the book: whatever announces a change has them read anew, once in a turn of the event loop however much was
/// announced. Of those out of sight nothing is read before they are shown.

#include "estatebook-desktop/lists/ArrearsScan.hpp"
#include "estatebook-desktop/lists/ListPage.hpp"
#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook-desktop/window/DesktopLoop.hpp"
#include "estatebook-desktop/window/Dialogs.hpp"
#include "estatebook-desktop/window/Figures.hpp"

#include "platform/toolkit/WindowController.hpp"

#include <QMainWindow>
#include <QTimer>

#include <array>
#include <cassert>
#include <exception>
#include <memory>
#include <optional>

class QAction;
class QDateEdit;
class QLabel;
class QLineEdit;
class QListWidget;
class QStackedWidget;
class QToolBar;

namespace estatebook {
class QBSheetController;
}

namespace estatebook::desktop {

class Banner;
class BookSheet;
class SettingsPage;
class StatementPage;
class WelcomePage;

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    enum class Page : int { Tenures, Properties, Tenants, Arrears, Settings };

    /// REQUIRES: the loop and the dialogs outlive the window.
    explicit MainWindow(DesktopLoop& loop, Dialogs& dialogs = Dialogs::usual());
    ~MainWindow() override;

    /// Opens a book file for editing. False when it is refused; the window then says why.
    bool openBook(const QString& path);
    /// Opens it without editing.
    bool lookAtBook(const QString& path);
    /// Makes an empty book and opens it.
    bool makeBook(const QString& path);
    /// Makes a book of the example and opens it; one that is there already is opened.
    bool openExample(const QString& path);
    /// Null as long as no book is open.
    [[nodiscard]] BookSession* session() const noexcept { return session_.get(); }
    /// Closes a book that cannot be read any further, after saving what can be, and says what was raised.
    void giveUpBook(const std::exception_ptr& raised);
    /// REQUIRES: a book is open.
    [[nodiscard]] const Figures& figures() const noexcept {
        assert(figures_);
        return *figures_;
    }

    void showPage(Page page);
    [[nodiscard]] Page page() const;
    /// REQUIRES: a page of a list.
    [[nodiscard]] ListPage& list(Page page) const { return *lists_[static_cast<std::size_t>(page)]; }
    void search(const QString& text);
    /// The figures of another day; those of today for none.
    void setAsOf(const std::optional<QDate>& day);
    void showStatementOf(TKTenure& tenure);
    [[nodiscard]] StatementPage& statementPage() const noexcept { return *statement_; }
    [[nodiscard]] Banner& banner() const noexcept { return *banner_; }

    /// The sheet in front of the window; null when there is none.
    [[nodiscard]] const platform::Ref<BookSheet>& sheet() const noexcept { return sheet_; }
    /// Of the sheet.
    void sheetControllerDidEndWithResult(QBSheetController& controller, std::int64_t result);

    /// Has everything in sight read anew at the end of this turn of the event loop.
    void refreshLater();
    /// Reads everything in sight anew now, sums included.
    void refreshNow();
    /// How often it was read anew since the window was made.
    [[nodiscard]] std::size_t refreshes() const noexcept { return refreshes_; }
    /// Whether the list of arrears is still being looked for, a few lettings in each turn of the event loop.
    [[nodiscard]] bool isLookingForArrears() const noexcept { return scan_ && scan_->isAtWork(); }

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    static constexpr std::size_t Lists = 4;

    // The window (MainWindow.cpp)
    void makeLists();
    void makeFrame();
    void takeSession(std::unique_ptr<BookSession> session);
    void leaveSession();
    void dropSession();
    void endSession() noexcept;
    void giveUp(const QString& path, const platform::Exception& exception);
    void giveUp(const QString& path, const QString& sentence);
    bool makeOfDocument(const QString& title, const QString& document, const QString& path);
    void refuse(const QString& path, const QString& sentence, bool canBeRead);
    void refresh();
    void refreshPage(Page page);
    void refreshStale();
    void showCondition();
    void showOffer();
    void showDay();
    void rememberState() const;
    void restoreState();

    // What can be done (MainWindowActions.cpp)
    void makeActions();
    void makeMenus();
    void makeToolBar();
    void updateActions();
    [[nodiscard]] platform::ManagedObject* selected() const;
    [[nodiscard]] TKTenure* selectedTenure() const;
    /// The path of a book that is to be made; empty for none.
    [[nodiscard]] QString newBookNamed(const QString& title, const QString& name);
    void chooseNewBook();
    void chooseBook();
    void chooseExample();
    void chooseImport();
    void undo();
    void redo();
    void addToList();
    void editSelected();
    void deleteSelected();
    void recordPayment();
    void showNotes();
    void openStatement();
    void leaveStatement();
    void editTransaction(TKTransaction& transaction);
    /// Saves what can be saved, and shows the sheet. `whenConfirmed` gives the object to be selected then; it may be null.
    void showSheet(const platform::Ref<BookSheet>& sheet,
                   std::function<platform::ManagedObject*()> whenConfirmed = {});
    void deleteObject(platform::ManagedObject& object, const QString& name, const QString& step);

    DesktopLoop& loop_;
    Dialogs& dialogs_;
    std::unique_ptr<BookSession> session_;
    /// The window and the book as sheets know them.
    platform::Ref<platform::Document> document_;
    platform::Ref<platform::WindowController> controller_;
    platform::Ref<BookSheet> sheet_;
    std::function<platform::ManagedObject*()> whenConfirmed_;
    std::optional<Figures> figures_;
    std::unique_ptr<ArrearsScan> scan_;
    /// Comes round in the next turn of the event loop when there is something to be read anew.
    QTimer turn_;
    std::size_t refreshes_ = 0;
    /// Of each page: whether it shows the book as it is.
    std::array<bool, Lists + 1> isFresh_{};
    QString refusedPath_;
    /// What the banner says of the opening, as long as nobody has answered it.
    QString offered_;

    std::array<ListPage*, Lists> lists_{};
    SettingsPage* settings_ = nullptr;
    StatementPage* statement_ = nullptr;
    WelcomePage* welcome_ = nullptr;
    Banner* banner_ = nullptr;
    QListWidget* sidebar_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    QStackedWidget* whole_ = nullptr;
    QToolBar* toolBar_ = nullptr;
    QLineEdit* search_ = nullptr;
    QDateEdit* day_ = nullptr;
    QLabel* condition_ = nullptr;
    QLabel* currency_ = nullptr;

    QAction* newBook_ = nullptr;
    QAction* openBook_ = nullptr;
    QAction* save_ = nullptr;
    QAction* undo_ = nullptr;
    QAction* redo_ = nullptr;
    QAction* add_ = nullptr;
    QAction* addTenure_ = nullptr;
    QAction* addProperty_ = nullptr;
    QAction* addTenant_ = nullptr;
    QAction* edit_ = nullptr;
    QAction* delete_ = nullptr;
    QAction* pay_ = nullptr;
    QAction* notes_ = nullptr;
    QAction* openStatement_ = nullptr;
    QAction* today_ = nullptr;
};

} // namespace estatebook::desktop
