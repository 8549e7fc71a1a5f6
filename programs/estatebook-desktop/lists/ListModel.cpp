// SPDX-License-Identifier: MIT
#include "estatebook-desktop/lists/ListModel.hpp"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <utility>

namespace estatebook::desktop {

ListModel::ListModel(std::vector<Column> columns, RowMaker makeRow, QObject* parent)
    : QAbstractTableModel(parent), columns_(std::move(columns)), makeRow_(std::move(makeRow)) {}

void ListModel::take(Objects objects) {
    Rows rows(objects.size());
    replace(std::move(objects), std::move(rows));
}

void ListModel::take(Objects objects, std::vector<Row> rows) {
    Rows read;
    read.reserve(rows.size());
    for (Row& row : rows) read.emplace_back(std::move(row));
    replace(std::move(objects), std::move(read));
}

// What is the same at both ends stays where it is; what is between goes, and its like comes.
void ListModel::replace(Objects objects, Rows rows) {
    readRows_ = 0;
    const auto shorter = std::min(objects.size(), objects_.size());
    std::size_t head = 0;
    while (head < shorter && objects[head] == objects_[head]) ++head;
    std::size_t tail = 0;
    while (tail < shorter - head &&
           objects[objects.size() - 1 - tail] == objects_[objects_.size() - 1 - tail])
        ++tail;
    const auto at = [](auto& list, std::size_t index) {
        return list.begin() + static_cast<std::ptrdiff_t>(index);
    };
    const auto number = [](std::size_t index) { return static_cast<int>(index); };

    if (const std::size_t end = objects_.size() - tail; end > head) {
        beginRemoveRows({}, number(head), number(end) - 1);
        objects_.erase(at(objects_, head), at(objects_, end));
        rows_.erase(at(rows_, head), at(rows_, end));
        endRemoveRows();
    }
    if (const std::size_t end = objects.size() - tail; end > head) {
        beginInsertRows({}, number(head), number(end) - 1);
        objects_.insert(at(objects_, head), at(objects, head), at(objects, end));
        rows_.insert(at(rows_, head), at(rows, head), at(rows, end));
        endInsertRows();
    }
    rows_ = std::move(rows);
    if (!objects_.empty()) Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

void ListModel::setTitles(const std::vector<QString>& titles) {
    for (std::size_t i = 0; i < columns_.size(); ++i) columns_[i].title = titles[i];
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

int ListModel::rowOf(const platform::ManagedObject& object) const {
    const auto found = std::ranges::find(objects_, &object, [](const auto& each) { return each.get(); });
    return found == objects_.end() ? -1 : static_cast<int>(found - objects_.begin());
}

const ListModel::Row& ListModel::row(int row) const {
    auto& made = rows_[static_cast<std::size_t>(row)];
    if (!made) {
        made = makeRow_(object(row));
        ++readRows_;
    }
    return *made;
}

int ListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(objects_.size());
}

int ListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto column = static_cast<std::size_t>(index.column());
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>((columns_[column].isAmount ? Qt::AlignRight : Qt::AlignLeft) |
                                Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != OrderRole && role != Qt::ForegroundRole)
        return {};
    const Row& row = this->row(index.row());
    if (role == Qt::ForegroundRole)
        return row.isFaded ? QVariant(QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text))
                           : QVariant();
    const Cell& cell = row.cells[column];
    if (role == OrderRole && cell.order.isValid()) return cell.order;
    return cell.text;
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
    const Column& column = columns_[static_cast<std::size_t>(section)];
    if (role == Qt::DisplayRole) return column.title;
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>((column.isAmount ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    return {};
}

} // namespace estatebook::desktop
