// SPDX-License-Identifier: MIT
#include "estatebook-desktop/lists/ListPage.hpp"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedLayout>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace estatebook::desktop {

using platform::Decimal;

namespace {

// As wide as amounts and days usually are, in characters.
constexpr int AmountCharacters = 12;
constexpr int TextCharacters = 14;
constexpr int LeastCharacters = 6;
constexpr int LeastCharactersOfNames = 20;
/// Other texts than amounts are cut at the end; a tool tip has the whole.
constexpr int MostCharacters = 26;
constexpr int SpaceAroundTitle = 22;
constexpr int SpaceAroundRow = 10;
constexpr int WidthOfAdvice = 420;
constexpr QSize ButtonSize(160, 32);

void makePlain(QTableView& table) {
    table.verticalHeader()->hide();
    table.setShowGrid(false);
    table.setWordWrap(false);
    table.setFrameShape(QFrame::NoFrame);
    table.setTextElideMode(Qt::ElideRight);
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() + SpaceAroundRow);
}

QFont bold(QFont font) {
    font.setBold(true);
    return font;
}

} // namespace

ListPage::ListPage(const QString& name, std::unique_ptr<ListModel> model, WhenEmpty whenEmpty,
                   std::function<const Figures&()> figures)
    : model_(std::move(model)), whenEmpty_(std::move(whenEmpty)), figures_(std::move(figures)) {
    shown_.setSourceModel(model_.get());
    shown_.setSortRole(ListModel::OrderRole);
    shown_.setSortLocaleAware(true);
    shown_.setSortCaseSensitivity(Qt::CaseInsensitive);
    shown_.setFilterCaseSensitivity(Qt::CaseInsensitive);
    shown_.setFilterKeyColumn(-1);

    makeTable(name);
    makeTotals(name);
    makeEmptyWords();
    auto* list = new QWidget;
    auto* column = new QVBoxLayout(list);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(table_, 1);
    column->addWidget(totalsView_);
    stack_ = new QStackedLayout(this);
    stack_->addWidget(list);
    stack_->addWidget(emptyWords_);

    for (const auto change : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(&shown_, change, this, &ListPage::listChanged);
    connect(&shown_, &QAbstractItemModel::dataChanged, this, &ListPage::listChanged);
    connect(&shown_, &QAbstractItemModel::modelReset, this, &ListPage::listChanged);
    slices_.setWaiting(true);
    listChanged();
}

void ListPage::makeTable(const QString& name) {
    table_ = new QTableView;
    makePlain(*table_);
    table_->setAccessibleName(name);
    table_->setModel(&shown_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setAlternatingRowColors(true);
    table_->setTabKeyNavigation(false);
    table_->setSortingEnabled(true);
    table_->sortByColumn(-1, Qt::AscendingOrder);
    table_->installEventFilter(this);
    table_->viewport()->installEventFilter(this);

    QHeaderView& header = *table_->horizontalHeader();
    header.setHighlightSections(false);
    header.setStretchLastSection(false);
    header.setSortIndicatorClearable(true);
    const int character = table_->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    header.setMinimumSectionSize(LeastCharacters * character);
    for (int i = 0; i < model_->columnCount(); ++i) {
        const ListModel::Column& column = model_->columns()[static_cast<std::size_t>(i)];
        const int usual = character * (column.isAmount ? AmountCharacters : TextCharacters);
        const int title = table_->fontMetrics().horizontalAdvance(column.title) + SpaceAroundTitle;
        header.resizeSection(i, std::max(usual, title));
    }
    header.setSectionResizeMode(0, QHeaderView::Stretch);
    longest_.resize(model_->columns().size());
    connect(&header, &QHeaderView::sectionResized, this, [this](int section) {
        if (section > 0) fitFirstColumn();
    });

    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ListPage::selectionChanged);
    connect(table_, &QTableView::doubleClicked, this, &ListPage::opened);
}

void ListPage::makeTotals(const QString& name) {
    totals_.setColumnCount(model_->columnCount());
    totals_.setRowCount(1);
    totalsView_ = new QTableView;
    makePlain(*totalsView_);
    totalsView_->setAccessibleName(tr("Sums of %1").arg(name));
    totalsView_->setModel(&totals_);
    totalsView_->setSelectionMode(QAbstractItemView::NoSelection);
    totalsView_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    totalsView_->setFocusPolicy(Qt::NoFocus);
    totalsView_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    totalsView_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    totalsView_->setFont(bold(totalsView_->font()));
    totalsView_->horizontalHeader()->hide();
    totalsView_->horizontalHeader()->setMinimumSectionSize(1);
    totalsView_->setFixedHeight(totalsView_->verticalHeader()->defaultSectionSize() + 2);
    totalsView_->viewport()->setBackgroundRole(QPalette::Window);

    const auto follow = [this] {
        for (int i = 0; i < totals_.columnCount(); ++i)
            totalsView_->horizontalHeader()->resizeSection(i, table_->horizontalHeader()->sectionSize(i));
    };
    connect(table_->horizontalHeader(), &QHeaderView::sectionResized, totalsView_, follow);
    connect(table_->horizontalHeader(), &QHeaderView::geometriesChanged, totalsView_, follow);
    follow();
    connect(table_->horizontalScrollBar(), &QScrollBar::valueChanged, totalsView_->horizontalScrollBar(),
            &QScrollBar::setValue);
}

void ListPage::makeEmptyWords() {
    emptyWords_ = new QWidget;
    emptyWords_->setAutoFillBackground(true);
    emptyWords_->setBackgroundRole(QPalette::Base);
    emptyTitle_ = new QLabel;
    QFont font = bold(emptyTitle_->font());
    font.setPointSizeF(font.pointSizeF() * 1.4);
    emptyTitle_->setFont(font);
    emptyTitle_->setAlignment(Qt::AlignCenter);
    emptyAdvice_ = new QLabel;
    emptyAdvice_->setWordWrap(true);
    emptyAdvice_->setAlignment(Qt::AlignCenter);
    emptyButton_ = new QPushButton;
    emptyButton_->setMinimumSize(ButtonSize);
    connect(emptyButton_, &QPushButton::clicked, this, &ListPage::beginningWanted);

    // A fixed width, so that words that are wrapped tell how high they are.
    auto* words = new QWidget;
    words->setFixedWidth(WidthOfAdvice);
    auto* column = new QVBoxLayout(words);
    column->setSpacing(12);
    column->addWidget(emptyTitle_);
    column->addWidget(emptyAdvice_);
    column->addWidget(emptyButton_, 0, Qt::AlignHCenter);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(words);
    row->addStretch();
    auto* whole = new QVBoxLayout(emptyWords_);
    whole->addStretch();
    whole->addLayout(row);
    whole->addStretch();
}

bool ListPage::eventFilter(QObject* watched, QEvent* event) {
    if (watched == table_->viewport() && event->type() == QEvent::Resize) fitFirstColumn();
    if (watched == table_ && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (isReturn && key->modifiers() == Qt::NoModifier && selected()) {
            Q_EMIT opened();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ListPage::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    slices_.setWaiting(false);
}

void ListPage::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    slices_.setWaiting(true);
}

platform::ManagedObject* ListPage::selected() const {
    const QModelIndexList rows = table_->selectionModel()->selectedRows();
    return rows.isEmpty() ? nullptr : &model_->object(shown_.mapToSource(rows.front()).row());
}

void ListPage::select(const platform::ManagedObject& object) {
    const int row = model_->rowOf(object);
    if (row < 0) return;
    const QModelIndex index = shown_.mapFromSource(model_->index(row, 0));
    if (!index.isValid()) return;
    table_->selectRow(index.row());
    table_->scrollTo(index);
}

void ListPage::search(const QString& text) {
    shown_.setFilterFixedString(text);
    listChanged();
}

void ListPage::setWhenEmpty(const WhenEmpty& whenEmpty) {
    whenEmpty_ = whenEmpty;
    showWordsOrList();
}

QByteArray ListPage::headerState() const {
    return table_->horizontalHeader()->saveState();
}

bool ListPage::restoreHeaderState(const QByteArray& state) {
    return table_->horizontalHeader()->restoreState(state);
}

// -- Words, or sums -------------------------------------------------------------------------------------------

void ListPage::listChanged() {
    showWordsOrList();
    sumUp();
}

void ListPage::showWordsOrList() {
    const bool isFiltered = !shown_.filterRegularExpression().pattern().isEmpty();
    emptyTitle_->setText(isFiltered ? tr("Nothing found") : whenEmpty_.title);
    emptyAdvice_->setText(isFiltered ? tr("No line of this list has the text of the search in it.")
                                     : whenEmpty_.advice);
    emptyButton_->setText(whenEmpty_.button);
    emptyButton_->setVisible(!isFiltered && !whenEmpty_.button.isEmpty());
    stack_->setCurrentIndex(shown_.rowCount() == 0 ? 1 : 0);
}

void ListPage::sumUp() {
    nextRow_ = 0;
    sums_.assign(model_->columns().size(), std::nullopt);
    if (shown_.rowCount() > 0) slices_.begin([this] { return addNextRow(); });
}

bool ListPage::addNextRow() {
    if (nextRow_ >= shown_.rowCount()) {
        showTotals();
        return false;
    }
    const int shownRow = nextRow_++;
    const ListModel::Row& row = model_->row(shown_.mapToSource(shown_.index(shownRow, 0)).row());
    for (std::size_t i = 0; i < sums_.size(); ++i) {
        if (const qsizetype length = row.cells[i].text.size(); length > longest_[i]) {
            longest_[i] = length;
            const auto column = static_cast<int>(i);
            widen(column, table_->sizeHintForIndex(shown_.index(shownRow, column)).width());
        }
        const auto& amount = row.cells[i].amount;
        if (!model_->columns()[i].isSummed || !amount) continue;
        const auto sum = reckon([&] { return sums_[i].value_or(Decimal::zero()) + *amount; });
        sums_[i] = sum ? *sum : Decimal::notANumber();
    }
    return true;
}

void ListPage::showTotals() {
    totals_.setItem(
        0, 0,
        new QStandardItem(shown_.rowCount() == 1 ? tr("1 line") : tr("%1 lines").arg(shown_.rowCount())));
    for (int i = 1; i < totals_.columnCount(); ++i) {
        auto* item = new QStandardItem(figures_().amount(sums_[static_cast<std::size_t>(i)]));
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        totals_.setItem(0, i, item);
        widen(i, totalsView_->sizeHintForIndex(item->index()).width());
    }
}

// -- Columns --------------------------------------------------------------------------------------------------

void ListPage::widen(int column, int width) {
    if (column == 0) return;
    QHeaderView& header = *table_->horizontalHeader();
    const int most = MostCharacters * table_->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    if (!model_->columns()[static_cast<std::size_t>(column)].isAmount) width = std::min(width, most);
    if (header.sectionSize(column) < width) header.resizeSection(column, width);
}

// Names have what the other columns leave, but never so little that nobody knows whose the line is.
void ListPage::fitFirstColumn() {
    QHeaderView& header = *table_->horizontalHeader();
    const int least = LeastCharactersOfNames * table_->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    const bool fits = table_->viewport()->width() - (header.length() - header.sectionSize(0)) >= least;
    const auto mode = fits ? QHeaderView::Stretch : QHeaderView::Fixed;
    if (header.sectionResizeMode(0) != mode) header.setSectionResizeMode(0, mode);
    if (!fits) header.resizeSection(0, least);
}

} // namespace estatebook::desktop
