// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/MainWindow.hpp"

#include "estatebook-desktop/session/Sentences.hpp"
#include "estatebook-desktop/sheets/BookSheet.hpp"
#include "estatebook-desktop/statement/StatementPage.hpp"
#include "estatebook-desktop/window/Banner.hpp"
#include "estatebook-desktop/window/DesktopApplication.hpp"
#include "estatebook-desktop/window/SettingsPage.hpp"
#include "estatebook-desktop/window/WelcomePage.hpp"

#include "estatebook/book/StoredBook.hpp"
#include "platform/system/Clock.hpp"
#include "platform/toolkit/qt/QtWindow.hpp"
#include "platform/toolkit/qt/WallTime.hpp"

#include <QCloseEvent>
#include <QDateEdit>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSettings>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTableView>
#include <QToolBar>
#include <QVBoxLayout>

#include <utility>

namespace estatebook::desktop {

using platform::Ref;

namespace {

constexpr QSize UsualSize(1120, 700);
constexpr int SidebarWidth = 150;
constexpr int SidebarRowHeight = 34;
constexpr const char* BookKey = "book";
constexpr const char* GeometryKey = "window/geometry";
constexpr const char* PageKey = "window/page";
constexpr const char* ColumnsKey = "window/columns/%1";

template <class T>
ListModel::Objects objectsOf(const std::vector<Ref<T>>& objects) {
    return {objects.begin(), objects.end()};
}

/// The book as sheets find it behind the window.
class BookDocument final : public platform::Document {
public:
    explicit BookDocument(platform::ManagedObjectContext& context) : context_(&context) {}
    [[nodiscard]] Ref<platform::ManagedObjectContext> managedObjectContext() const override {
        return context_;
    }

private:
    Ref<platform::ManagedObjectContext> context_;
};

} // namespace

MainWindow::MainWindow(DesktopLoop& loop, Dialogs& dialogs) : loop_(loop), dialogs_(dialogs) {
    resize(UsualSize);
    turn_.setSingleShot(true);
    connect(&turn_, &QTimer::timeout, this, &MainWindow::refresh);
    makeActions();
    makeLists();
    makeFrame();
    makeMenus();
    makeToolBar();
    controller_ = platform::makeRef<platform::WindowController>();
    controller_->setWindow(platform::QtWindow::around(*this));
    leaveSession();
    restoreState();
    if (auto* application = qobject_cast<DesktopApplication*>(QCoreApplication::instance()))
        connect(application, &DesktopApplication::raised, this, &MainWindow::giveUpBook);
}

MainWindow::~MainWindow() {
    controller_->close();
    endSession();
}

// -- The frame ------------------------------------------------------------------------------------------------

void MainWindow::makeLists() {
    const FiguresSource figures = [this]() -> const Figures& { return this->figures(); };
    const auto add = [&](Page page, const QString& name, std::unique_ptr<ListModel> model,
                         const ListPage::WhenEmpty& whenEmpty) {
        auto* list = new ListPage(name, std::move(model), whenEmpty, figures);
        lists_[static_cast<std::size_t>(page)] = list;
        connect(list, &ListPage::selectionChanged, this, &MainWindow::updateActions);
        connect(list, &ListPage::beginningWanted, this, &MainWindow::addToList);
    };
    add(Page::Tenures, tr("Lettings"),
        makeTenureList(figures, [this](TKTenure& tenure) { session_->wake(tenure); }),
        {tr("No lettings yet"),
         tr("A letting says who rents what, from when, and for how much. The rent, what is owed and the "
            "statement follow from it."),
         tr("New letting…")});
    add(Page::Properties, tr("Properties"), makePropertyList(figures),
        {tr("No properties yet"), tr("A property is whatever is let: a house, a flat, a shop. Begin here."),
         tr("New property…")});
    add(Page::Tenants, tr("Tenants"), makeTenantList(figures),
        {tr("No tenants yet"), tr("A tenant is a person or a firm that rents."), tr("New tenant…")});
    add(Page::Arrears, tr("Arrears"), makeArrearsList(),
        {tr("Nobody owes anything"),
         tr("What falls due and is not paid by the day is listed here, by its age."),
         {}});
    for (const Page page : {Page::Tenures, Page::Arrears})
        connect(lists_[static_cast<std::size_t>(page)], &ListPage::opened, this, &MainWindow::openStatement);
    for (const Page page : {Page::Properties, Page::Tenants})
        connect(lists_[static_cast<std::size_t>(page)], &ListPage::opened, this, &MainWindow::editSelected);
}

void MainWindow::makeFrame() {
    sidebar_ = new QListWidget;
    sidebar_->setObjectName(QStringLiteral("sidebar"));
    sidebar_->setAccessibleName(tr("Lists"));
    sidebar_->setFixedWidth(SidebarWidth);
    sidebar_->setFrameShape(QFrame::NoFrame);
    sidebar_->viewport()->setBackgroundRole(QPalette::Window);
    for (const QString& name :
         {tr("Lettings"), tr("Properties"), tr("Tenants"), tr("Arrears"), tr("Settings")}) {
        auto* item = new QListWidgetItem(name, sidebar_);
        item->setSizeHint({SidebarWidth - 10, SidebarRowHeight});
    }

    pages_ = new QStackedWidget;
    for (ListPage* list : lists_) pages_->addWidget(list);
    connect(sidebar_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0) showPage(static_cast<Page>(row));
    });

    banner_ = new Banner;
    auto* book = new QWidget;
    auto* beside = new QHBoxLayout(book);
    beside->setContentsMargins(0, 0, 0, 0);
    beside->setSpacing(0);
    beside->addWidget(sidebar_);
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    column->addWidget(banner_);
    column->addWidget(pages_, 1);
    beside->addLayout(column, 1);

    welcome_ = new WelcomePage;
    connect(welcome_, &WelcomePage::exampleWanted, this, &MainWindow::chooseExample);
    connect(welcome_, &WelcomePage::newBookWanted, this, &MainWindow::chooseNewBook);
    connect(welcome_, &WelcomePage::openingWanted, this, &MainWindow::chooseBook);
    connect(welcome_, &WelcomePage::readingWanted, this, [this] { lookAtBook(refusedPath_); });
    whole_ = new QStackedWidget;
    whole_->addWidget(welcome_);
    whole_->addWidget(book);
    setCentralWidget(whole_);

    condition_ = new QLabel;
    condition_->setObjectName(QStringLiteral("condition"));
    currency_ = new QLabel;
    statusBar()->addWidget(condition_, 1);
    statusBar()->addPermanentWidget(currency_);
}

// -- Books ----------------------------------------------------------------------------------------------------

bool MainWindow::openBook(const QString& path) {
    const QString whole = QFileInfo(path).absoluteFilePath();
    leaveSession();
    try {
        takeSession(BookSession::open(whole.toStdString(), loop_.runLoop()));
        return true;
    } catch (const Refusal& refusal) {
        refuse(whole, QString::fromUtf8(refusal.what()), refusal.canBeRead());
    } catch (const platform::Exception& exception) {
        giveUp(whole, exception);
    }
    return false;
}

bool MainWindow::lookAtBook(const QString& path) {
    leaveSession();
    try {
        takeSession(BookSession::openForReading(path.toStdString(), loop_.runLoop()));
        return true;
    } catch (const Refusal& refusal) {
        refuse(path, QString::fromUtf8(refusal.what()), refusal.canBeRead());
    } catch (const platform::Exception& exception) {
        giveUp(path, exception);
    }
    return false;
}

bool MainWindow::makeBook(const QString& path) {
    try {
        BookSession::makeEmpty(path.toStdString(),
                               QLocale().currencySymbol(QLocale::CurrencyIsoCode).toStdString());
    } catch (const Failure& failure) {
        const QString sentence = QString::fromStdString(sentenceOf(failure));
        if (session_)
            dialogs_.warn(*this, tr("New Book"), sentence);
        else
            refuse(path, sentence, false);
        return false;
    }
    return openBook(path);
}

bool MainWindow::openExample(const QString& path) {
    if (QFileInfo::exists(path)) return openBook(path);
    return makeOfDocument(tr("Example Book"), QStringLiteral(":/examples/harbour-street.json"), path);
}

// The book that is open is left before, since a process has one zone, and opened again when nothing comes of the other one.
bool MainWindow::makeOfDocument(const QString& title, const QString& document, const QString& path) {
    QFile file(document);
    const QString former = session_ ? QString::fromStdString(session_->path()) : QString();
    try {
        if (!file.open(QIODevice::ReadOnly))
            throw Failure(ExitCode::CannotRead,
                          tr("%1: %2; choose another one").arg(document, file.errorString()).toStdString());
        leaveSession();
        BookSession::makeOfDocument(path.toStdString(), file.readAll().toStdString(),
                                    QFileInfo(document).fileName().toStdString());
    } catch (const Failure& failure) {
        const QString sentence = QString::fromStdString(sentenceOf(failure));
        if (former.isEmpty()) {
            refuse(path, sentence, false);
            return false;
        }
        dialogs_.warn(*this, title, sentence);
        if (!session_) openBook(former);
        return false;
    }
    return openBook(path);
}

void MainWindow::refuse(const QString& path, const QString& sentence, bool canBeRead) {
    refusedPath_ = path;
    welcome_->showRefusal(sentence, canBeRead);
}

void MainWindow::takeSession(std::unique_ptr<BookSession> session) {
    session_ = std::move(session);
    document_ = platform::makeRef<BookDocument>(session_->context());
    controller_->setDocument(document_.get());
    figures_ = Figures::of(*session_);
    scan_ = std::make_unique<ArrearsScan>(*session_, lists_[static_cast<std::size_t>(Page::Arrears)]->model(),
                                          [this]() -> const Figures& { return figures(); });
    settings_ = new SettingsPage(*session_);
    statement_ = new StatementPage(*session_, dialogs_, [this]() -> const Figures& { return figures(); });
    pages_->addWidget(settings_);
    pages_->addWidget(statement_);
    connect(statement_, &StatementPage::leaving, this, &MainWindow::leaveStatement);
    connect(statement_, &StatementPage::opened, this,
            [this](TKTransaction* transaction) { editTransaction(*transaction); });
    session_->whenChanged([this] { refreshLater(); });
    session_->whenConditionChanged([this] { showCondition(); });

    welcome_->showRefusal({}, false);
    whole_->setCurrentIndex(1);
    toolBar_->setEnabled(true);
    setWindowTitle(
        tr("%1[*] — EstateBook").arg(QFileInfo(QString::fromStdString(session_->path())).completeBaseName()));
    QSettings().setValue(QLatin1String(BookKey), QString::fromStdString(session_->path()));
    showOffer();
    showCondition();
    isFresh_ = {};
    if (sidebar_->currentRow() < 0) sidebar_->setCurrentRow(0);
    showPage(static_cast<Page>(sidebar_->currentRow()));
    list(Page::Tenures).table().setFocus();
}

void MainWindow::leaveSession() {
    if (sheet_) Ref<BookSheet>(sheet_)->cancelSheet();
    if (session_) {
        session_->whenChanged({});
        session_->whenConditionChanged({});
        session_->save();
        session_->setAsOf(std::nullopt);
    }
    dropSession();
}

void MainWindow::giveUpBook(const std::exception_ptr& raised) {
    if (!session_) return;
    const QString path = QString::fromStdString(session_->path());
    try {
        std::rethrow_exception(raised);
    } catch (const platform::Exception& exception) {
        giveUp(path, exception);
    } catch (const Failure& failure) {
        giveUp(path, QString::fromStdString(sentenceOf(failure)));
    }
}

void MainWindow::giveUp(const QString& path, const platform::Exception& exception) {
    giveUp(path, QString::fromStdString(sentenceOf(path.toStdString(), exception)));
}

void MainWindow::giveUp(const QString& path, const QString& sentence) {
    endSession();
    refuse(path, sentence, false);
}

// Even one that cannot be read any more.
void MainWindow::endSession() noexcept {
    try {
        leaveSession();
    } catch (const platform::Exception&) {
        dropSession();
    }
}

void MainWindow::dropSession() {
    for (ListPage* list : lists_) list->model().take({});
    delete std::exchange(settings_, nullptr);
    delete std::exchange(statement_, nullptr);
    scan_.reset();
    document_ = nullptr;
    session_.reset();
    figures_.reset();
    banner_->show({});
    whole_->setCurrentIndex(0);
    toolBar_->setEnabled(false);
    {
        const QSignalBlocker quiet(day_);
        day_->setDate(platform::wallTimeOf(platform::Clock::now()).date());
    }
    setWindowModified(false);
    setWindowTitle(tr("EstateBook"));
    condition_->clear();
    currency_->clear();
    updateActions();
}

// -- Showing --------------------------------------------------------------------------------------------------

MainWindow::Page MainWindow::page() const {
    return static_cast<Page>(std::max(sidebar_->currentRow(), 0));
}

void MainWindow::showPage(Page page) {
    {
        const QSignalBlocker quiet(sidebar_);
        sidebar_->setCurrentRow(static_cast<int>(page));
    }
    if (!session_) return;
    pages_->setCurrentIndex(static_cast<int>(page));
    refreshStale();
    if (!sidebar_->hasFocus() && !search_->hasFocus() && page != Page::Settings)
        list(page).table().setFocus();
    updateActions();
}

void MainWindow::showStatementOf(TKTenure& tenure) {
    statement_->show(tenure);
    pages_->setCurrentWidget(statement_);
    statement_->table().setFocus();
    updateActions();
}

void MainWindow::leaveStatement() {
    showPage(page());
    if (page() != Page::Settings) list(page()).table().setFocus();
}

void MainWindow::search(const QString& text) {
    for (ListPage* list : lists_) list->search(text);
}

void MainWindow::setAsOf(const std::optional<QDate>& day) {
    if (!session_) return;
    const bool isToday = day && *day == figures().dateOf(platform::Clock::now());
    session_->setAsOf(day && !isToday ? std::optional(figures().instantOf(*day)) : std::nullopt);
}

void MainWindow::refreshLater() {
    isFresh_ = {};
    if (!turn_.isActive()) turn_.start(0);
}

void MainWindow::refreshNow() {
    if (!session_) return;
    isFresh_ = {};
    refresh();
    if (scan_->isAtWork()) scan_->finish();
    for (ListPage* list : lists_) list->finishTotals();
}

void MainWindow::refresh() {
    turn_.stop();
    if (!session_) return;
    ++refreshes_;
    figures_ = Figures::of(*session_);
    refreshStale();
    if (statement_ && pages_->currentWidget() == statement_) statement_->refresh();
    showDay();
    showCondition();
    updateActions();
}

void MainWindow::refreshStale() {
    const auto index = static_cast<std::size_t>(page());
    if (!std::exchange(isFresh_[index], true)) refreshPage(page());
    showDay();
}

void MainWindow::refreshPage(Page page) {
    switch (page) {
    case Page::Tenures:
        return list(page).model().take(objectsOf(session_->tenures()));
    case Page::Properties:
        return list(page).model().take(objectsOf(session_->properties()));
    case Page::Tenants:
        return list(page).model().take(objectsOf(session_->tenants()));
    case Page::Arrears:
        return scan_->begin();
    case Page::Settings:
        return settings_->refresh();
    }
}

void MainWindow::showDay() {
    const QSignalBlocker quiet(day_);
    day_->setDate(figures().dateOf(session_->today()));
    today_->setEnabled(session_->asOf().has_value());
    currency_->setText(figures().currency().isEmpty() ? QString()
                                                      : tr("Amounts in %1").arg(figures().currency()));
}

void MainWindow::showCondition() {
    if (!session_) return;
    using Condition = BookSession::Condition;
    const Condition condition = session_->condition();
    setWindowModified(condition == Condition::Edited || condition == Condition::Stuck);
    const QString trouble = QString::fromStdString(session_->trouble());
    switch (condition) {
    case Condition::Saved:
        condition_->setText(tr("Everything is saved"));
        break;
    case Condition::Edited:
        condition_->setText(tr("Edited; saved in a moment"));
        break;
    case Condition::Stuck:
        condition_->setText(tr("Edited, and not saved yet"));
        break;
    case Condition::ReadOnly:
        condition_->setText(tr("To be looked at only"));
        break;
    }
    if (condition == Condition::Stuck)
        banner_->show(trouble, {tr("Try again"), [this] { session_->save(); }});
    else if (banner_->sentence() != offered_)
        banner_->show({});
    save_->setEnabled(isWindowModified());
}

void MainWindow::showOffer() {
    offered_.clear();
    const auto when = session_->canEdit() ? session_->putAsideOn() : std::nullopt;
    if (!when) {
        if (const QString notice = QString::fromStdString(session_->notice()); !notice.isEmpty()) {
            offered_ = notice;
            banner_->show(notice, {tr("OK"), [this] {
                                       offered_.clear();
                                       banner_->show({});
                                   }});
        }
        return;
    }
    offered_ =
        tr("Edits of %1 could not be saved then, and are kept beside the book.").arg(figures().day(*when));
    const auto take = [this] {
        try {
            session_->takePutAside();
            offered_.clear();
            showCondition();
        } catch (const Failure& failure) {
            dialogs_.warn(*this, tr("Edits"), QString::fromStdString(sentenceOf(failure)));
        }
    };
    const auto discard = [this] {
        session_->discardPutAside();
        offered_.clear();
        banner_->show({});
    };
    banner_->show(offered_, {tr("Go on with them"), take}, {tr("Discard them"), discard});
}

// -- Leaving --------------------------------------------------------------------------------------------------

void MainWindow::closeEvent(QCloseEvent* event) {
    if (session_ && !session_->save()) {
        const QString trouble = QString::fromStdString(session_->trouble());
        if (!dialogs_.confirm(
                *this, {tr("Not saved"),
                        tr("%1\n\nThe edits will be offered again when the book is opened.").arg(trouble),
                        tr("Close")}))
            return event->ignore();
    }
    rememberState();
    event->accept();
}

void MainWindow::rememberState() const {
    QSettings settings;
    settings.setValue(QLatin1String(GeometryKey), saveGeometry());
    settings.setValue(QLatin1String(PageKey), static_cast<int>(page()));
    for (std::size_t i = 0; i < lists_.size(); ++i)
        settings.setValue(QString::fromLatin1(ColumnsKey).arg(i), lists_[i]->headerState());
}

void MainWindow::restoreState() {
    const QSettings settings;
    restoreGeometry(settings.value(QLatin1String(GeometryKey)).toByteArray());
    for (std::size_t i = 0; i < lists_.size(); ++i)
        lists_[i]->restoreHeaderState(settings.value(QString::fromLatin1(ColumnsKey).arg(i)).toByteArray());
    const int page = settings.value(QLatin1String(PageKey), 0).toInt();
    const QSignalBlocker quiet(sidebar_);
    sidebar_->setCurrentRow(page >= 0 && page < sidebar_->count() ? page : 0);
}

} // namespace estatebook::desktop
