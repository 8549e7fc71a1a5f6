// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/ObjectListModel.hpp"

#include "platform/toolkit/qt/ShownValue.hpp"
#include "platform/toolkit/qt/Unraised.hpp"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace estatebook::platform {

ObjectListModel::ObjectListModel(std::vector<ObjectListColumn> columns, Source source, QObject* parent)
    : QAbstractTableModel(parent), columns_(std::move(columns)), source_(std::move(source)) {
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
    unraised([this] { takeRows(source_()); });
}

void ObjectListModel::takeRows(std::vector<Row> rows) {
    std::unordered_map<const ObservableObject*, int> places;
    std::erase_if(rows, [&](const Row& row) {
        return !row || !places.emplace(row.get(), static_cast<int>(places.size())).second;
    });
    cells_.clear();
    removeThoseNotIn(places);
    orderBy(places);
    insertThoseMissing(rows);
    if (!rows_.empty() && !columns_.empty())
        Q_EMIT dataChanged(createIndex(0, 0), createIndex(static_cast<int>(rows_.size()) - 1,
                                                          static_cast<int>(columns_.size()) - 1));
}

void ObjectListModel::removeThoseNotIn(const std::unordered_map<const ObservableObject*, int>& places) {
    const auto isGone = [&](int row) { return !places.contains(rows_[static_cast<std::size_t>(row)].get()); };
    // From the end, each run of rows at once.
    for (int last = static_cast<int>(rows_.size()) - 1; last >= 0; --last) {
        if (!isGone(last)) continue;
        int first = last;
        while (first > 0 && isGone(first - 1)) --first;
        beginRemoveRows({}, first, last);
        rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
        arePlacesKnown_ = false;
        endRemoveRows();
        last = first;
    }
}

void ObjectListModel::orderBy(const std::unordered_map<const ObservableObject*, int>& places) {
    const auto placeOf = [&](const Row& row) { return places.at(row.get()); };
    if (std::ranges::is_sorted(rows_, {}, placeOf)) return;
    Q_EMIT layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    std::vector<Row> shown;
    for (const QModelIndex& index : before) shown.push_back(objectAt(index.row()));
    std::ranges::sort(rows_, {}, placeOf);
    arePlacesKnown_ = false;
    QModelIndexList after;
    for (qsizetype place = 0; place < before.size(); ++place) {
        const Row& row = shown[static_cast<std::size_t>(place)];
        after.append(row ? createIndex(rowOf(*row), before[place].column()) : QModelIndex());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}

void ObjectListModel::insertThoseMissing(const std::vector<Row>& rows) {
    std::unordered_set<const ObservableObject*> present;
    for (const Row& row : rows_) present.insert(row.get());
    for (std::size_t first = 0; first < rows.size(); ++first) {
        if (first < rows_.size() && rows_[first] == rows[first]) continue;
        std::size_t end = first;
        while (end < rows.size() && !present.contains(rows[end].get())) ++end;
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
        rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(first),
                     rows.begin() + static_cast<std::ptrdiff_t>(first),
                     rows.begin() + static_cast<std::ptrdiff_t>(end));
        arePlacesKnown_ = false;
        endInsertRows();
        first = end - 1;
    }
}

ObjectListModel::Row ObjectListModel::objectAt(int row) const {
    return row >= 0 && static_cast<std::size_t>(row) < rows_.size() ? rows_[static_cast<std::size_t>(row)]
                                                                    : nullptr;
}

int ObjectListModel::rowOf(const ObservableObject& object) const {
    if (!std::exchange(arePlacesKnown_, true)) {
        places_.clear();
        for (std::size_t row = 0; row < rows_.size(); ++row)
            places_.emplace(rows_[row].get(), static_cast<int>(row));
    }
    const auto found = places_.find(&object);
    return found == places_.end() ? -1 : found->second;
}

int ObjectListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
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

QVariant ObjectListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return QAbstractTableModel::headerData(section, orientation, role);
    if (section < 0 || section >= columnCount()) return {};
    const ObjectListColumn& column = columns_[static_cast<std::size_t>(section)];
    if (role == Qt::DisplayRole) return column.title;
    if (role == Qt::TextAlignmentRole) return QVariant(column.alignment);
    return {};
}

} // namespace estatebook::platform
