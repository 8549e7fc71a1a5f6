// SPDX-License-Identifier: MIT
#include "estatebook-desktop/statement/StatementPage.hpp"

#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook-desktop/session/Sentences.hpp"
#include "estatebook-desktop/window/Figures.hpp"
#include "estatebook/Amounts.hpp"
#include "estatebook/Csv.hpp"
#include "estatebook/Failure.hpp"
#include "estatebook/WholeFile.hpp"
#include "estatebook/document/DateText.hpp"
#include "paper/StatementPdf.hpp"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPrinter>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <QTextDocument>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <sstream>

namespace estatebook::desktop {

namespace {

constexpr int DateWidth = 110;
constexpr int TagsWidth = 150;
constexpr int AmountWidth = 118;
constexpr int SpaceAroundRow = 8;

QPushButton* addButton(QHBoxLayout& row, const QString& text) {
    auto* button = new QPushButton(text);
    button->setAutoDefault(false);
    row.addWidget(button);
    return button;
}

} // namespace

StatementPage::StatementPage(BookSession& session, Dialogs& dialogs, std::function<const Figures&()> figures)
    : session_(session), dialogs_(dialogs), figures_(std::move(figures)), model_(nullptr), title_(new QLabel),
      subtitle_(new QLabel), outstanding_(new QCheckBox(tr("&Outstanding only"))),
      byTag_(new QCheckBox(tr("By &tag"))) {
    makeTable();
    QFont font = title_->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.2);
    title_->setFont(font);
    title_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    title_->setWordWrap(true);

    auto* back = new QPushButton(tr("← &Back"));
    auto* row = new QHBoxLayout;
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(title_);
    words->addWidget(subtitle_);
    row->addWidget(back, 0, Qt::AlignTop);
    row->addSpacing(8);
    row->addLayout(words, 1);

    auto* choices = new QHBoxLayout;
    choices->addWidget(outstanding_);
    choices->addSpacing(12);
    choices->addWidget(byTag_);
    choices->addStretch();
    QPushButton* copy = addButton(*choices, tr("&Copy"));
    QPushButton* csv = addButton(*choices, tr("C&SV…"));
    QPushButton* pdf = addButton(*choices, tr("PD&F…"));
    QPushButton* print = addButton(*choices, tr("&Print…"));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(12, 12, 12, 0);
    column->setSpacing(10);
    column->addLayout(row);
    column->addLayout(choices);
    column->addWidget(table_, 1);

    connect(back, &QPushButton::clicked, this, &StatementPage::leaving);
    connect(outstanding_, &QCheckBox::toggled, this, &StatementPage::refresh);
    connect(byTag_, &QCheckBox::toggled, this, &StatementPage::refresh);
    connect(copy, &QPushButton::clicked, this, &StatementPage::copy);
    connect(print, &QPushButton::clicked, this, &StatementPage::print);
    connect(csv, &QPushButton::clicked, this, [this] {
        save(tr("Comma-separated values (*.csv)"), QStringLiteral(".csv"), [this] { return this->csv(); });
    });
    connect(pdf, &QPushButton::clicked, this, [this] {
        save(tr("PDF documents (*.pdf)"), QStringLiteral(".pdf"), [this] { return this->pdf(); });
    });
    const auto open = [this](const QModelIndex& index) {
        if (TKTransaction* transaction = model_.transaction(index.row())) Q_EMIT opened(transaction);
    };
    connect(table_, &QTableView::doubleClicked, this, open);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
        connect(new QShortcut(QKeySequence(key), table_, nullptr, nullptr, Qt::WidgetShortcut),
                &QShortcut::activated, this, [this, open] { open(table_->currentIndex()); });
}

void StatementPage::makeTable() {
    table_ = new QTableView;
    table_->setAccessibleName(tr("Statement"));
    table_->setModel(&model_);
    table_->setShowGrid(false);
    table_->setFrameShape(QFrame::NoFrame);
    table_->setWordWrap(false);
    table_->setTabKeyNavigation(false);
    table_->setAlternatingRowColors(true);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + SpaceAroundRow);
    QHeaderView& header = *table_->horizontalHeader();
    header.setHighlightSections(false);
    header.resizeSection(StatementModel::Date, DateWidth);
    header.resizeSection(StatementModel::Tags, TagsWidth);
    header.resizeSection(StatementModel::Amount, AmountWidth);
    header.resizeSection(StatementModel::Balance, AmountWidth);
    header.setSectionResizeMode(StatementModel::Description, QHeaderView::Stretch);
}

void StatementPage::show(TKTenure& tenure) {
    tenure_ = platform::Ref<TKTenure>(&tenure);
    refresh();
    table_->scrollToBottom();
}

void StatementPage::refresh() {
    if (!tenure_) return;
    if (!tenure_->managedObjectContext() || tenure_->isDeleted()) {
        tenure_ = nullptr;
        model_.clear();
        Q_EMIT leaving();
        return;
    }
    const Figures& figures = figures_();
    title_->setText(textOf(tenure_->name()));
    const auto parts =
        StatementParts::of(session_, *tenure_, {outstanding_->isChecked(), byTag_->isChecked()});
    if (!parts) {
        parts_ = {};
        model_.clear();
        subtitle_->setText(tr("The rent cannot be reckoned (%1); check the terms, the dates and the amounts.")
                               .arg(textOf(parts.error())));
        return;
    }
    parts_ = *parts;
    subtitle_->setText(heading());
    const platform::Ref<TKTransaction> current(model_.transaction(table_->currentIndex().row()));
    model_.show(parts_, figures, session_.today());
    QHeaderView& header = *table_->horizontalHeader();
    for (const int column : {StatementModel::Date, StatementModel::Amount, StatementModel::Balance}) {
        const int width = header.sectionSize(column);
        table_->resizeColumnToContents(column);
        header.resizeSection(column, std::max(width, header.sectionSize(column)));
    }
    if (const int row = current ? model_.rowOf(*current) : -1; row >= 0)
        table_->setCurrentIndex(model_.index(row, 0));
}

QString StatementPage::heading() const {
    const Figures& figures = figures_();
    const QString day = figures.day(session_.today());
    return figures.titled(outstanding_->isChecked() ? tr("Outstanding lines as of %1").arg(day)
                                                    : tr("Statement as of %1").arg(day));
}

std::string StatementPage::csv() const {
    std::ostringstream out;
    const Figures& figures = figures_();
    writeCsvRecord(out, {"tag", "date", "description", "tags", "amount", "balance", "generated", "due"});
    const auto amount = [&](const std::optional<platform::Decimal>& value) {
        return value ? amountText(*value, figures.digits()) : std::string();
    };
    for (const StatementParts::Part& part : parts_.parts) {
        const auto write = [&](const std::vector<StatementParts::Line>& lines, bool isDue) {
            for (const auto& [line, tags, transaction] : lines) {
                const auto day =
                    line.when ? document::dateText(*line.when, figures.calendar()) : std::nullopt;
                writeCsvRecord(out, {part.tag.value_or(""), day.value_or(""), line.what, tags,
                                     amount(line.amount), amountText(line.balance, figures.digits()),
                                     line.isGenerated ? "true" : "false", isDue ? "true" : "false"});
            }
        };
        write(part.due, true);
        write(part.notYetDue, false);
    }
    return std::move(out).str();
}

QString StatementPage::copiedText() const {
    QModelIndexList rows = table_->selectionModel()->selectedRows();
    std::ranges::sort(rows, {}, &QModelIndex::row);
    QStringList lines;
    if (rows.isEmpty())
        for (int row = 0; row < model_.rowCount(); ++row) lines << model_.texts(row).join(QLatin1Char('\t'));
    for (const QModelIndex& index : std::as_const(rows))
        lines << model_.texts(index.row()).join(QLatin1Char('\t'));
    return lines.join(QLatin1Char('\n'));
}

void StatementPage::print() {
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(textOf(tenure_->name()));
    if (!dialogs_.choosePrinter(*this, printer)) return;
    QTextDocument document;
    document.setHtml(html());
    document.print(&printer);
}

QString StatementPage::html() const {
    const auto cell = [](const QString& text, bool isAmount, const char* tag) {
        return QStringLiteral("<%1 align=\"%2\">%3</%1>")
            .arg(QLatin1String(tag), isAmount ? QLatin1String("right") : QLatin1String("left"),
                 text.toHtmlEscaped());
    };
    QString rows;
    for (int row = -1; row < model_.rowCount(); ++row) {
        QString cells;
        for (int column = 0; column < StatementModel::ColumnCount; ++column) {
            const bool isAmount = column >= StatementModel::Amount;
            const QModelIndex index = model_.index(row, column);
            if (row < 0) {
                cells += cell(model_.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString(), isAmount,
                              "th");
                continue;
            }
            const auto font = index.data(Qt::FontRole).value<QFont>();
            QString text = cell(index.data().toString(), isAmount, "td");
            if (font.italic()) text = text.replace(QLatin1String("\">"), QLatin1String("\"><i>"));
            if (font.bold()) text = text.replace(QLatin1String("\">"), QLatin1String("\"><b>"));
            cells += text;
        }
        rows += QStringLiteral("<tr>%1</tr>").arg(cells);
    }
    return QStringLiteral("<h2>%1</h2><p>%2</p><table width=\"100%\" cellpadding=\"3\">%3</table>")
        .arg(title_->text().toHtmlEscaped(), subtitle_->text().toHtmlEscaped(), rows);
}

void StatementPage::copy() const {
    QGuiApplication::clipboard()->setText(copiedText());
}

void StatementPage::save(const QString& filter, const QString& suffix,
                         const std::function<std::string()>& content) {
    const QString name = textOf(tenure_->name()).replace(QLatin1Char('/'), QLatin1Char('-')) + suffix;
    const QString path = dialogs_.fileToSave(
        *this, {tr("Save Statement"), Dialogs::usualFolder() + QLatin1Char('/') + name, filter, suffix});
    if (path.isEmpty()) return;
    try {
        writeWholeFile(path.toStdString(), content());
    } catch (const Failure& failure) {
        dialogs_.warn(*this, tr("Save Statement"), QString::fromStdString(sentenceOf(failure)));
    }
}

// Worded as on the screen, so that paper and screen are in one language.
paper::PrintedStatement StatementPage::printed() const {
    const Figures& figures = figures_();
    const auto text = [](const QString& words) { return words.toStdString(); };
    paper::PrintedStatement printed{.title = text(textOf(tenure_->name())), .subtitle = text(heading())};
    printed.columns = {text(tr("Date")), text(tr("Description")), text(tr("Amount")), text(tr("Balance"))};
    printed.pageOfPages = text(tr("Page {page} of {pages}"));
    printed.continued = text(tr("{heading} (continued)"));
    bool hasGenerated = false;
    const auto linesOf = [&](const std::vector<StatementParts::Line>& lines) {
        std::vector<paper::PrintedStatement::Line> made;
        for (const auto& [line, tags, transaction] : lines) {
            made.push_back({text(figures.day(line.when)), line.what, text(figures.amount(line.amount)),
                            text(figures.amount(line.balance)), line.isGenerated});
            hasGenerated = hasGenerated || line.isGenerated;
        }
        return made;
    };
    for (const StatementParts::Part& part : parts_.parts) {
        auto& due = printed.sections.emplace_back();
        due.heading = part.tag.value_or("");
        due.isPart = part.tag.has_value();
        due.lines = linesOf(part.due);
        due.totals.push_back({text(tr("Balance on %1").arg(figures.day(session_.today()))),
                              text(figures.amount(part.sheet.balance()))});
        if (!part.tag && part.sheet.balance().isNegative())
            due.totals.push_back({text(tr("Outstanding")), text(figures.amount(part.sheet.outstanding()))});
        if (part.notYetDue.empty()) continue;
        auto& later = printed.sections.emplace_back();
        later.heading = text(tr("Not yet due"));
        later.lines = linesOf(part.notYetDue);
        later.totals.push_back(
            {text(tr("Balance with what is not yet due")), text(figures.amount(part.sheet.finalBalance()))});
    }
    if (hasGenerated)
        printed.remarks.push_back(
            text(tr("Lines in italics are not recorded, but reckoned from the terms of the letting.")));
    if (parts_.untaggedCount > 0)
        printed.remarks.push_back(text(tr("Lines without a tag: %1, which come to %2")
                                           .arg(parts_.untaggedCount)
                                           .arg(figures.amount(parts_.untaggedAmount))));
    return printed;
}

std::string StatementPage::pdf() const {
    try {
        return paper::pdfOf(printed(), paper::PaperSize::ofLocale(QLocale().name().toStdString()));
    } catch (const paper::PaperError& error) {
        throw Failure(ExitCode::CannotRead, error.what());
    }
}

} // namespace estatebook::desktop
