// SPDX-License-Identifier: MIT
#include "estatebook-desktop/statement/StatementModel.hpp"

#include "estatebook-desktop/window/Figures.hpp"

#include <QFont>

#include <algorithm>

namespace estatebook::desktop {

void StatementModel::show(const StatementParts& parts, const Figures& figures, platform::Date today) {
    beginResetModel();
    rows_.clear();
    for (const StatementParts::Part& part : parts.parts) addPart(part, figures, today);
    if (parts.untaggedCount > 0)
        addSum(parts.untaggedCount == 1 ? tr("1 line without a tag")
                                        : tr("%1 lines without a tag").arg(parts.untaggedCount),
               figures.amount(parts.untaggedAmount));
    endResetModel();
}

void StatementModel::clear() {
    beginResetModel();
    rows_.clear();
    endResetModel();
}

void StatementModel::addPart(const StatementParts::Part& part, const Figures& figures, platform::Date today) {
    if (part.tag) addHeading(QString::fromStdString(*part.tag));
    addLines(part.due, figures);
    addSum(tr("Balance on %1").arg(figures.day(today)), figures.amount(part.sheet.balance()));
    if (!part.tag && part.sheet.balance().isNegative())
        addSum(tr("Outstanding"), figures.amount(part.sheet.outstanding()));
    if (part.notYetDue.empty()) return;
    addHeading(tr("Not yet due"));
    addLines(part.notYetDue, figures);
    addSum(tr("Balance with what is not yet due"), figures.amount(part.sheet.finalBalance()));
}

void StatementModel::addLines(const std::vector<StatementParts::Line>& lines, const Figures& figures) {
    for (const StatementParts::Line& line : lines)
        rows_.push_back({line.line.isGenerated ? Kind::Generated : Kind::Recorded,
                         {figures.day(line.line.when), QString::fromStdString(line.line.what),
                          QString::fromStdString(line.tags), figures.amount(line.line.amount),
                          figures.amount(line.line.balance)},
                         line.transaction});
}

void StatementModel::addHeading(const QString& text) {
    rows_.push_back({Kind::Heading, {QString(), text}});
}

void StatementModel::addSum(const QString& text, const QString& amount) {
    rows_.push_back({Kind::Sum, {QString(), text, QString(), QString(), amount}});
}

TKTransaction* StatementModel::transaction(int row) const {
    return row >= 0 && row < rowCount() ? rows_[static_cast<std::size_t>(row)].transaction.get() : nullptr;
}

int StatementModel::rowOf(const TKTransaction& transaction) const {
    const auto found =
        std::ranges::find(rows_, &transaction, [](const Row& row) { return row.transaction.get(); });
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

QStringList StatementModel::texts(int row) const {
    const auto& texts = rows_[static_cast<std::size_t>(row)].texts;
    return {texts.begin(), texts.end()};
}

int StatementModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int StatementModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(ColumnCount);
}

QVariant StatementModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Row& row = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return row.texts[static_cast<std::size_t>(index.column())];
    case Qt::ToolTipRole:
        return row.kind == Kind::Generated ? tr("Not recorded, but reckoned from the terms of the letting")
                                           : QString();
    case Qt::TextAlignmentRole:
        return static_cast<int>((index.column() >= Amount ? Qt::AlignRight : Qt::AlignLeft) |
                                Qt::AlignVCenter);
    case Qt::FontRole: {
        QFont font;
        font.setItalic(row.kind == Kind::Generated);
        font.setBold(row.kind == Kind::Heading || row.kind == Kind::Sum);
        return font;
    }
    default:
        return {};
    }
}

QVariant StatementModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount) return {};
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>((section >= Amount ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    if (role != Qt::DisplayRole) return {};
    const std::array titles{tr("Date"), tr("Description"), tr("Tags"), tr("Amount"), tr("Balance")};
    return titles[static_cast<std::size_t>(section)];
}

Qt::ItemFlags StatementModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

} // namespace estatebook::desktop
