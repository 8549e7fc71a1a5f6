// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/ObjectTableModel.hpp"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace estatebook::platform {

void ObjectTableModel::follow(std::vector<Ref<ObservableObject>> objects) {
    Places places;
    std::erase_if(objects, [&](const auto& object) {
        return !object || !places.emplace(object.get(), static_cast<int>(places.size())).second;
    });
    removeThoseNotIn(places);
    orderBy(places);
    insertThoseMissing(objects);
    if (!rows_.empty() && columnCount() > 0)
        Q_EMIT dataChanged(createIndex(0, 0), createIndex(rowCount() - 1, columnCount() - 1));
}

void ObjectTableModel::removeThoseNotIn(const Places& places) {
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

void ObjectTableModel::orderBy(const Places& places) {
    const auto placeOf = [&](const auto& row) { return places.at(row.get()); };
    if (std::ranges::is_sorted(rows_, {}, placeOf)) return;
    Q_EMIT layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    std::vector<Ref<ObservableObject>> shown;
    for (const QModelIndex& index : before) shown.push_back(objectAt(index.row()));
    std::ranges::sort(rows_, {}, placeOf);
    arePlacesKnown_ = false;
    QModelIndexList after;
    for (qsizetype place = 0; place < before.size(); ++place) {
        const auto& row = shown[static_cast<std::size_t>(place)];
        after.append(row ? createIndex(rowOf(*row), before[place].column()) : QModelIndex());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}

void ObjectTableModel::insertThoseMissing(const std::vector<Ref<ObservableObject>>& objects) {
    std::unordered_set<const ObservableObject*> present;
    for (const auto& row : rows_) present.insert(row.get());
    for (std::size_t first = 0; first < objects.size(); ++first) {
        if (first < rows_.size() && rows_[first] == objects[first]) continue;
        std::size_t end = first;
        while (end < objects.size() && !present.contains(objects[end].get())) ++end;
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
        rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(first),
                     objects.begin() + static_cast<std::ptrdiff_t>(first),
                     objects.begin() + static_cast<std::ptrdiff_t>(end));
        arePlacesKnown_ = false;
        endInsertRows();
        first = end - 1;
    }
}

Ref<ObservableObject> ObjectTableModel::objectAt(int row) const {
    return row >= 0 && static_cast<std::size_t>(row) < rows_.size() ? rows_[static_cast<std::size_t>(row)]
                                                                    : nullptr;
}

int ObjectTableModel::rowOf(const ObservableObject& object) const {
    if (!std::exchange(arePlacesKnown_, true)) {
        places_.clear();
        for (std::size_t row = 0; row < rows_.size(); ++row)
            places_.emplace(rows_[row].get(), static_cast<int>(row));
    }
    const auto found = places_.find(&object);
    return found == places_.end() ? -1 : found->second;
}

int ObjectTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant ObjectTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return QAbstractTableModel::headerData(section, orientation, role);
    if (section < 0 || section >= columnCount()) return {};
    if (role == Qt::DisplayRole) return heading(section).title;
    if (role == Qt::TextAlignmentRole) return QVariant(heading(section).alignment);
    return {};
}

} // namespace estatebook::platform
