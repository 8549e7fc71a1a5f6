// SPDX-License-Identifier: MIT
#include "estatebook-desktop/lists/ListModel.hpp"

#include "estatebook-desktop/window/DesktopApplication.hpp"
#include "platform/values/Exception.hpp"

#include <QGuiApplication>
#include <QPalette>

#include <utility>

namespace estatebook::desktop {

ListModel::ListModel(std::vector<Column> columns, RowMaker makeRow, QObject* parent)
    : ObjectTableModel(parent), columns_(std::move(columns)), makeRow_(std::move(makeRow)) {}

void ListModel::take(const Objects& objects) {
    rows_.clear();
    follow(objects);
}

void ListModel::take(const Objects& objects, std::vector<Row> rows) {
    rows_.clear();
    for (std::size_t i = 0; i < objects.size(); ++i) rows_.emplace(objects[i].get(), std::move(rows[i]));
    follow(objects);
}

void ListModel::follow(const Objects& objects) {
    readRows_ = 0;
    ObjectTableModel::follow({objects.begin(), objects.end()});
}

void ListModel::setTitles(const std::vector<QString>& titles) {
    for (std::size_t i = 0; i < columns_.size(); ++i) columns_[i].title = titles[i];
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

platform::ManagedObject& ListModel::object(int row) const {
    return static_cast<platform::ManagedObject&>(*objectAt(row));
}

const ListModel::Row& ListModel::row(int row) const {
    platform::ManagedObject& object = this->object(row);
    if (const auto read = rows_.find(&object); read != rows_.end()) return read->second;
    ++readRows_;
    Row made;
    try {
        made = makeRow_(object);
    } catch (const platform::Exception&) {
        // Amid painting nothing may be raised: the row stays blank until the window is told.
        DesktopApplication::tell();
    }
    made.cells.resize(columns_.size());
    return rows_.insert_or_assign(&object, std::move(made)).first->second;
}

int ListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto column = static_cast<std::size_t>(index.column());
    if (role == Qt::TextAlignmentRole) return QVariant(heading(index.column()).alignment);
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

ListModel::Heading ListModel::heading(int column) const {
    const Column& shown = columns_[static_cast<std::size_t>(column)];
    return {shown.title, shown.isAmount ? AmountAlignment : TextAlignment};
}

} // namespace estatebook::desktop
