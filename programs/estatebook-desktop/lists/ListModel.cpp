// SPDX-License-Identifier: MIT
#include "estatebook-desktop/lists/ListModel.hpp"

#include "estatebook-desktop/window/DesktopApplication.hpp"
#include "platform/values/Exception.hpp"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace estatebook::desktop {

ListModel::ListModel(std::vector<Column> columns, RowMaker makeRow, QObject* parent)
    : QAbstractTableModel(parent), columns_(std::move(columns)), makeRow_(std::move(makeRow)) {}

void ListModel::take(const Objects& objects) {
    Rows rows(objects.size());
    replace(objects, std::move(rows));
}

void ListModel::take(const Objects& objects, std::vector<Row> rows) {
    Rows read;
    read.reserve(rows.size());
    for (Row& row : rows) read.emplace_back(std::move(row));
    replace(objects, std::move(read));
}

void ListModel::replace(const Objects& objects, Rows rows) {
    readRows_ = 0;
    const auto numbersOf = [](const Objects& all) {
        std::unordered_map<const platform::ManagedObject*, std::size_t> numbers;
        for (std::size_t i = 0; i < all.size(); ++i) numbers.emplace(all[i].get(), i);
        return numbers;
    };
    const auto wanted = numbersOf(objects);
    // One that stays behind another that now stands after it goes and comes again.
    std::optional<std::size_t> last;
    removeRowsIf([&](const platform::ManagedObject& object) {
        const auto found = wanted.find(&object);
        if (found == wanted.end() || (last && found->second < *last)) return true;
        last = found->second;
        return false;
    });
    insertRowsMissing(objects);
    rows_ = std::move(rows);
    if (!objects_.empty()) Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

void ListModel::removeRowsIf(const std::function<bool(const platform::ManagedObject&)>& isGone) {
    std::vector<bool> gone;
    gone.reserve(objects_.size());
    for (const auto& object : objects_) gone.push_back(isGone(*object));
    for (std::size_t end = gone.size(); end > 0;) {
        if (!gone[end - 1]) {
            --end;
            continue;
        }
        std::size_t first = end;
        while (first > 0 && gone[first - 1]) --first;
        beginRemoveRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
        const auto at = [](auto& list, std::size_t place) {
            return list.begin() + static_cast<std::ptrdiff_t>(place);
        };
        objects_.erase(at(objects_, first), at(objects_, end));
        rows_.erase(at(rows_, first), at(rows_, end));
        endRemoveRows();
        end = first;
    }
}

// REQUIRES: those that are here stand in the order of the others.
void ListModel::insertRowsMissing(const Objects& objects) {
    for (std::size_t first = 0; first < objects.size();) {
        if (first < objects_.size() && objects_[first] == objects[first]) {
            ++first;
            continue;
        }
        std::size_t end = first;
        while (end < objects.size() && (first >= objects_.size() || objects[end] != objects_[first])) ++end;
        const auto at = [](auto& list, std::size_t place) {
            return list.begin() + static_cast<std::ptrdiff_t>(place);
        };
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
        objects_.insert(at(objects_, first), at(objects, first), at(objects, end));
        rows_.insert(at(rows_, first), end - first, std::nullopt);
        endInsertRows();
        first = end;
    }
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
        ++readRows_;
        try {
            made = makeRow_(object(row));
        } catch (const platform::Exception& exception) {
            // Amid painting nothing may be raised: the row stays blank until the window is told.
            DesktopApplication::tell(exception);
            made.emplace().cells.resize(columns_.size());
        }
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
