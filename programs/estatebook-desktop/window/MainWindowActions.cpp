// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/AccountSheets.hpp"
#include "estatebook-desktop/sheets/NotesSheet.hpp"
#include "estatebook-desktop/sheets/PaymentSheet.hpp"
#include "estatebook-desktop/sheets/TenureSheet.hpp"
#include "estatebook-desktop/statement/StatementPage.hpp"
#include "estatebook-desktop/window/MainWindow.hpp"

#include <QAction>
#include <QApplication>
#include <QDateEdit>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QProcess>
#include <QStackedWidget>
#include <QTableView>
#include <QToolBar>

#include <utility>

namespace estatebook::desktop {

using platform::Ref;

namespace {

constexpr const char* BookSuffix = ".estatebook";
constexpr int SearchWidth = 220;

} // namespace

// -- Actions and where they stand -----------------------------------------------------------------------------

void MainWindow::makeActions() {
    const auto make = [this](const char* name, const QString& text, const QKeySequence& keys, auto slot) {
        auto* action = new QAction(text, this);
        action->setObjectName(QLatin1String(name));
        action->setShortcut(keys);
        if (!keys.isEmpty())
            action->setToolTip(QStringLiteral("%1 (%2)").arg(QString(text).remove(QLatin1Char('&')),
                                                             keys.toString(QKeySequence::NativeText)));
        connect(action, &QAction::triggered, this, slot);
        addAction(action);
        return action;
    };
    newBook_ = make("newBook", tr("&New Book…"), tr("Ctrl+Shift+N"), &MainWindow::chooseNewBook);
    openBook_ = make("openBook", tr("&Open…"), tr("Ctrl+O"), &MainWindow::chooseBook);
    save_ = make("save", tr("&Save Now"), tr("Ctrl+S"), [this] { session_->save(); });
    undo_ = make("undo", tr("&Undo"), tr("Ctrl+Z"), &MainWindow::undo);
    redo_ = make("redo", tr("&Redo"), tr("Ctrl+Shift+Z"), &MainWindow::redo);
    add_ = make("add", tr("&New…"), tr("Ctrl+N"), &MainWindow::addToList);
    addTenure_ = make("addTenure", tr("New &Letting…"), tr("Ctrl+T"), [this] {
        showPage(Page::Tenures);
        addToList();
    });
    addProperty_ = make("addProperty", tr("New &Property…"), {}, [this] {
        showPage(Page::Properties);
        addToList();
    });
    addTenant_ = make("addTenant", tr("New &Tenant…"), {}, [this] {
        showPage(Page::Tenants);
        addToList();
    });
    edit_ = make("edit", tr("&Edit…"), tr("Ctrl+E"), &MainWindow::editSelected);
    delete_ = make("delete", tr("&Delete…"), tr("Ctrl+Del"), &MainWindow::deleteSelected);
    pay_ = make("pay", tr("Record &Payment…"), tr("Ctrl+P"), &MainWindow::recordPayment);
    notes_ = make("notes", tr("N&otes…"), tr("Ctrl+M"), &MainWindow::showNotes);
    openStatement_ = make("statement", tr("&Statement"), tr("Ctrl+Return"), &MainWindow::openStatement);
    today_ = make("today", tr("Today"), {}, [this] { setAsOf(std::nullopt); });
    today_->setToolTip(tr("Back to the figures of today"));
}

void MainWindow::makeMenus() {
    QMenu* book = menuBar()->addMenu(tr("&Book"));
    book->addActions({newBook_, openBook_});
    book->addAction(tr("&Example Book"), this, &MainWindow::chooseExample);
    book->addAction(tr("&Import a Document…"), this, &MainWindow::chooseImport);
    book->addSeparator();
    book->addAction(save_);
    book->addSeparator();
    book->addAction(tr("&Quit"), QKeySequence(tr("Ctrl+Q")), this, &MainWindow::close);

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    edit->addActions({undo_, redo_});
    edit->addSeparator();
    edit->addActions({add_, edit_, delete_});
    edit->addSeparator();
    edit->addAction(tr("&Find"), QKeySequence(tr("Ctrl+F")), this, [this] {
        search_->setFocus();
        search_->selectAll();
    });

    QMenu* letting = menuBar()->addMenu(tr("&Letting"));
    letting->addActions({addTenure_, addProperty_, addTenant_});
    letting->addSeparator();
    letting->addActions({pay_, openStatement_, notes_});

    QMenu* view = menuBar()->addMenu(tr("&View"));
    for (int page = 0; page < sidebar_->count(); ++page)
        view->addAction(sidebar_->item(page)->text(), QKeySequence(tr("Ctrl+%1").arg(page + 1)), this,
                        [this, page] { showPage(static_cast<Page>(page)); });
    view->addSeparator();
    view->addAction(today_);

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("&About EstateBook"), this, [this] {
        QMessageBox::about(this, tr("EstateBook"),
                           tr("EstateBook %1\n\nThe books of rental properties: who rents what, what is "
                              "owed, and what was paid.")
                               .arg(QApplication::applicationVersion()));
    });
}

void MainWindow::makeToolBar() {
    toolBar_ = addToolBar(tr("Tools"));
    toolBar_->setObjectName(QStringLiteral("tools"));
    toolBar_->setMovable(false);
    toolBar_->setToolButtonStyle(Qt::ToolButtonTextOnly);
    toolBar_->addActions({add_, edit_, pay_, openStatement_, notes_});
    auto* space = new QWidget;
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    toolBar_->addWidget(space);

    auto* asOf = new QLabel(tr("As of "));
    day_ = new QDateEdit;
    day_->setObjectName(QStringLiteral("day"));
    day_->setAccessibleName(tr("The day of the figures"));
    day_->setCalendarPopup(true);
    day_->setDateRange(QDate(1583, 1, 1), QDate(9999, 12, 31));
    day_->setDisplayFormat(tr("d MMM yyyy"));
    asOf->setBuddy(day_);
    connect(day_, &QDateEdit::dateChanged, this, [this](const QDate& day) { setAsOf(day); });
    toolBar_->addWidget(asOf);
    toolBar_->addWidget(day_);
    toolBar_->addAction(today_);
    toolBar_->addSeparator();

    search_ = new QLineEdit;
    search_->setObjectName(QStringLiteral("search"));
    search_->setAccessibleName(tr("Search"));
    search_->setPlaceholderText(tr("Search"));
    search_->setClearButtonEnabled(true);
    search_->setFixedWidth(SearchWidth);
    connect(search_, &QLineEdit::textChanged, this, &MainWindow::search);
    toolBar_->addWidget(search_);
}

void MainWindow::updateActions() {
    const bool isOpen = session_ != nullptr;
    const bool canEdit = isOpen && session_->canEdit();
    const bool isStatement = isOpen && pages_->currentWidget() == statement_;
    const bool isSelected = selected() != nullptr;
    for (QAction* action : {addTenure_, addProperty_, addTenant_}) action->setEnabled(canEdit);
    add_->setEnabled(canEdit && page() != Page::Settings);
    edit_->setEnabled(canEdit && isSelected);
    delete_->setEnabled(canEdit && isSelected && !isStatement);
    notes_->setEnabled(isSelected);
    pay_->setEnabled(canEdit && isSelected && page() != Page::Tenants);
    openStatement_->setEnabled(!isStatement && selectedTenure() != nullptr);
    today_->setEnabled(isOpen && session_->asOf().has_value());
    save_->setEnabled(isOpen && isWindowModified());

    undo_->setEnabled(canEdit && session_->canUndo());
    redo_->setEnabled(canEdit && session_->canRedo());
    const QString undone = canEdit ? QString::fromStdString(session_->undoName()) : QString();
    const QString redone = canEdit ? QString::fromStdString(session_->redoName()) : QString();
    undo_->setText(undone.isEmpty() ? tr("&Undo") : tr("&Undo %1").arg(undone));
    redo_->setText(redone.isEmpty() ? tr("&Redo") : tr("&Redo %1").arg(redone));
}

platform::ManagedObject* MainWindow::selected() const {
    if (!session_) return nullptr;
    if (pages_->currentWidget() == statement_) return statement_->tenure();
    return page() == Page::Settings ? nullptr : list(page()).selected();
}

TKTenure* MainWindow::selectedTenure() const {
    return dynamic_cast<TKTenure*>(selected());
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape || !session_) return QMainWindow::keyPressEvent(event);
    if (pages_->currentWidget() == statement_)
        leaveStatement();
    else
        search_->clear();
}

// -- Books ----------------------------------------------------------------------------------------------------

QString MainWindow::newBookNamed(const QString& title, const QString& name) {
    const QString suffix = QLatin1String(BookSuffix);
    return dialogs_.fileToSave(*this, {title, Dialogs::usualFolder() + QLatin1Char('/') + name + suffix,
                                       tr("Books (*%1)").arg(suffix), suffix, false});
}

void MainWindow::chooseNewBook() {
    const QString path = newBookNamed(tr("New Book"), tr("My Properties"));
    if (!path.isEmpty()) makeBook(path);
}

// A process has one book, since all its days are those of the book's zone.
void MainWindow::chooseBook() {
    const QString path = dialogs_.fileToOpen(*this, tr("Open Book"), Dialogs::usualFolder(),
                                             tr("Books (*%1);;All files (*)").arg(QLatin1String(BookSuffix)));
    if (path.isEmpty()) return;
    if (session_)
        QProcess::startDetached(QApplication::applicationFilePath(), {path});
    else
        openBook(path);
}

void MainWindow::chooseExample() {
    const QString path =
        Dialogs::usualFolder() + QLatin1Char('/') + tr("Harbour Street") + QLatin1String(BookSuffix);
    if (session_ && session_->path() == path.toStdString()) return;
    openExample(path);
}

void MainWindow::chooseImport() {
    const QString document = dialogs_.fileToOpen(*this, tr("Import a Document"), Dialogs::usualFolder(),
                                                 tr("Book documents (*.json);;All files (*)"));
    if (document.isEmpty()) return;
    const QString path = newBookNamed(tr("New Book of the Document"), QFileInfo(document).completeBaseName());
    if (!path.isEmpty()) makeOfDocument(tr("Import a Document"), document, path);
}

// -- Editing --------------------------------------------------------------------------------------------------

void MainWindow::undo() {
    session_->undo();
}

void MainWindow::redo() {
    session_->redo();
}

void MainWindow::openStatement() {
    if (TKTenure* tenure = selectedTenure()) showStatementOf(*tenure);
}

// -- Sheets ---------------------------------------------------------------------------------------------------

void MainWindow::showSheet(const Ref<BookSheet>& sheet,
                           std::function<platform::ManagedObject*()> whenConfirmed) {
    if (sheet_) return;
    session_->save();
    sheet_ = sheet;
    whenConfirmed_ = std::move(whenConfirmed);
    sheet_->setParent(controller_->window());
    sheet_->setDelegate(this);
    sheet_->showSheet();
    // An interface file that is not in order has no window.
    if (sheet_ && !sheet_->isWindowLoaded()) {
        const auto error = std::exchange(sheet_, nullptr)->loadError();
        dialogs_.warn(*this, tr("EstateBook"),
                      error ? QString::fromStdString(std::string(error->localizedDescription())) : QString());
    }
}

void MainWindow::sheetControllerDidEndWithResult(QBSheetController&, std::int64_t result) {
    const Ref<BookSheet> ended = std::exchange(sheet_, nullptr);
    const auto whenConfirmed = std::exchange(whenConfirmed_, {});
    if (!session_) return;
    if (result == QBSheetController::Confirmed) {
        refresh();
        platform::ManagedObject* object = whenConfirmed ? whenConfirmed() : nullptr;
        if (object && page() != Page::Settings) list(page()).select(*object);
    }
    updateActions();
    // Not every window system gives the keyboard back to what is behind a dialog.
    if (isVisible()) activateWindow();
    if (page() != Page::Settings && pages_->currentWidget() != statement_) list(page()).table().setFocus();
}

void MainWindow::addToList() {
    if (page() == Page::Properties) {
        auto sheet = platform::makeRef<PropertySheet>(*session_, nullptr);
        return showSheet(sheet, [made = sheet.get()] { return made->property(); });
    }
    if (page() == Page::Tenants) {
        auto sheet = platform::makeRef<TenantSheet>(*session_, nullptr);
        return showSheet(sheet, [made = sheet.get()] { return made->tenant(); });
    }
    auto sheet = platform::makeRef<TenureSheet>(*session_, nullptr);
    showSheet(sheet, [made = sheet.get()] { return made->tenure(); });
}

void MainWindow::editSelected() {
    platform::ManagedObject* object = selected();
    if (!object || !session_->canEdit()) return;
    if (auto* tenure = dynamic_cast<TKTenure*>(object))
        showSheet(platform::makeRef<TenureSheet>(*session_, tenure));
    else if (auto* property = dynamic_cast<TKProperty*>(object))
        showSheet(platform::makeRef<PropertySheet>(*session_, property));
    else if (auto* tenant = dynamic_cast<TKTenant*>(object))
        showSheet(platform::makeRef<TenantSheet>(*session_, tenant));
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): references are counted

void MainWindow::recordPayment() {
    platform::ManagedObject* object = selected();
    if (auto* tenure = dynamic_cast<TKTenure*>(object))
        showSheet(platform::makeRef<PaymentSheet>(*session_, *tenure));
    else if (auto* property = dynamic_cast<TKProperty*>(object))
        showSheet(platform::makeRef<PaymentSheet>(*session_, *property));
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): references are counted

void MainWindow::editTransaction(TKTransaction& transaction) {
    if (session_->canEdit()) showSheet(platform::makeRef<PaymentSheet>(*session_, transaction));
}

void MainWindow::showNotes() {
    platform::ManagedObject* object = selected();
    if (auto* tenure = dynamic_cast<TKTenure*>(object))
        showSheet(platform::makeRef<NotesSheet>(*session_, *tenure, textOf(tenure->name())));
    else if (auto* property = dynamic_cast<TKProperty*>(object))
        showSheet(platform::makeRef<NotesSheet>(*session_, *property, textOf(property->fullName())));
    else if (auto* tenant = dynamic_cast<TKTenant*>(object))
        showSheet(platform::makeRef<NotesSheet>(*session_, *tenant, textOf(tenant->name())));
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): references are counted

// -- Deleting -------------------------------------------------------------------------------------------------

void MainWindow::deleteSelected() {
    platform::ManagedObject* object = selected();
    if (auto* tenure = dynamic_cast<TKTenure*>(object))
        return deleteObject(*tenure, textOf(tenure->name()), tr("Deletion of Letting"));
    const auto* property = dynamic_cast<TKProperty*>(object);
    const auto* tenant = dynamic_cast<TKTenant*>(object);
    if (!property && !tenant) return;
    const QString name = property ? textOf(property->fullName()) : textOf(tenant->name());
    const std::size_t tenures = property ? property->tenures().count() : tenant->tenures().count();
    if (tenures > 0) {
        dialogs_.tell(
            *this, tr("Delete"),
            tr("“%1” has lettings, which are part of the books. End them, or delete them first.").arg(name));
        return;
    }
    deleteObject(*object, name, property ? tr("Deletion of Property") : tr("Deletion of Tenant"));
}

void MainWindow::deleteObject(platform::ManagedObject& object, const QString& name, const QString& step) {
    const QString words = tr("Delete “%1” with all its payments and notes? It can be undone.").arg(name);
    if (dialogs_.confirm(*this, {tr("Delete"), words, tr("Delete")}))
        session_->perform(step.toStdString(), [&] { session_->context().deleteObject(object); });
}

} // namespace estatebook::desktop
