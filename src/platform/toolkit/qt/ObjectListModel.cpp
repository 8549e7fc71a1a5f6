// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/ObjectListModel.hpp"

#include "platform/toolkit/qt/ShownValue.hpp"
#include "platform/toolkit/qt/Unraised.hpp"

#include <utility>

namespace estatebook::platform {

ObjectListModel::ObjectListModel(std::vector<ObjectListColumn> columns, Source source, QObject* parent)
    : ObjectTableModel(parent), columns_(std::move(columns)), source_(std::move(source)) {
    turn_.setSingleShot(true);
    connect(&turn_, &QTimer::timeout, this, [this] { readAgain(); });
    readAgain();
}

ObjectListModel::~ObjectListModel() = default;

void ObjectListModel::markStale() {
    if (!turn_.isActive()) turn_.start(0);
}

void ObjectListModel::readAgain() {
    turn_.stop();
    ++readings_;
    unraised([this] {
        std::vector<Row> rows = source_();
        cells_.clear();
        follow(std::move(rows));
    });
}

int ObjectListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

const ObjectListModel::Cell& ObjectListModel::cell(const ObservableObject& object, int column) const {
    auto& row = cells_[&object];
    row.resize(columns_.size());
    std::optional<Cell>& cell = row[static_cast<std::size_t>(column)];
    if (cell) return *cell;
    cell.emplace();
    // A value that cannot be reckoned leaves its cell empty.
    try {
        const ObjectListColumn& shown = columns_[static_cast<std::size_t>(column)];
        if (!shown.keyPath.empty()) {
            Value value = object.valueForKeyPath(shown.keyPath);
            if (shown.transformer) value = shown.transformer->transformedValue(value);
            const auto date = value.date();
            cell->text = shownText(value, shown.formatter.get());
            cell->sorting = date ? QVariant(date->secondsSinceReferenceDate) : shownVariant(value);
        }
    } catch (const std::exception&) {
        cell->text = QString();
    }
    return *cell;
}

QVariant ObjectListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount()) return {};
    const Row object = objectAt(index.row());
    const ObjectListColumn& column = columns_[static_cast<std::size_t>(index.column())];
    if (column.data) {
        QVariant answer;
        unraised([&] { answer = column.data(*object, role); });
        if (answer.isValid()) return answer;
    }
    if (role == Qt::DisplayRole) return cell(*object, index.column()).text;
    if (role == SortRole) return cell(*object, index.column()).sorting;
    if (role == Qt::TextAlignmentRole) return QVariant(column.alignment);
    return {};
}

ObjectTableModel::Heading ObjectListModel::heading(int column) const {
    const ObjectListColumn& shown = columns_[static_cast<std::size_t>(column)];
    return {shown.title, shown.alignment};
}

} // namespace estatebook::platform
