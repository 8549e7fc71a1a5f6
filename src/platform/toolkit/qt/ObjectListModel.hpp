// SPDX-License-Identifier: MIT
#pragma once

/// ObjectListModel: a list of objects for Qt's views: a row for each object, a column for each key path.
///
///     ObjectListModel model({{.title = "Tenant", .keyPath = "tenant.name"},
///                            {.title = "Balance", .keyPath = "balance", .formatter = amounts, .alignment = Qt::AlignRight}},
///                           [&] { return allTenures(*context); });
///     view->setModel(&model);
///     auto token = tenure->observe("balance", [&] { model.markStale(); });
///
/// The list is a snapshot: it stays as it is until it is read again, and so does each cell once somebody has looked at it. A cell
/// nobody looks at is not reckoned, so that a long list costs what its visible rows cost. `markStale` has it read again once in
/// the next turn of the event loop, however often it is called; objects that stay keep their rows, and the selection with
/// them.
///
/// The trap: the model observes nothing. Some totals of the books are not announced on the object that shows them, and
/// observing ten thousand rows would cost more than reading twenty; who shows a list says when it is to be read again.

#include "platform/toolkit/FieldFormatter.hpp"
#include "platform/toolkit/qt/ObjectTableModel.hpp"
#include "platform/values/ValueTransformer.hpp"

#include <QString>
#include <QTimer>
#include <QVariant>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace estatebook::platform {

struct ObjectListColumn {
    QString title;
    /// Empty for a column that has `data` alone.
    std::string keyPath{};
    Ref<ValueTransformer> transformer{};
    Ref<FieldFormatter> formatter{};
    Qt::Alignment alignment = ObjectTableModel::TextAlignment;
    /// What a cell has for a role beyond the value itself, such as a colour; an invalid answer leaves the role to the model.
    std::function<QVariant(const ObservableObject& object, int role)> data{};
};

class ObjectListModel : public ObjectTableModel {
public:
    /// The value itself, for proxies that sort: a number, an instant in seconds, or a text.
    static constexpr int SortRole = Qt::UserRole;

    using Row = Ref<ObservableObject>;
    /// Lists the objects, each once.
    using Source = std::function<std::vector<Row>()>;

    /// Reads the list at once.
    ObjectListModel(std::vector<ObjectListColumn> columns, Source source, QObject* parent = nullptr);
    ~ObjectListModel() override;

    /// Has the list and all cells read again in the next turn of the event loop.
    void markStale();
    /// Reads them now. What the source raises is logged and leaves the list as it is.
    void readAgain();
    /// How often the list was read.
    [[nodiscard]] std::size_t readings() const noexcept { return readings_; }

    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

protected:
    [[nodiscard]] Heading heading(int column) const override;

private:
    struct Cell {
        QVariant text;
        QVariant sorting;
    };

    [[nodiscard]] const Cell& cell(const ObservableObject& object, int column) const;

    std::vector<ObjectListColumn> columns_;
    Source source_;
    mutable std::unordered_map<const ObservableObject*, std::vector<std::optional<Cell>>> cells_;
    std::size_t readings_ = 0;
    /// Comes round in the next turn of the event loop.
    QTimer turn_;
};

} // namespace estatebook::platform
