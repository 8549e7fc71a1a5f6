// SPDX-License-Identifier: MIT
#pragma once

/// ListModel: objects of the book as the rows of a table, each read when it is first shown.
///
///     model.take(session.tenures());               // again after each change of the book
///     view->setModel(&model);
///
/// A row is a snapshot: what it shows stays until the next `take`, whatever the object does meanwhile, and costs nothing
/// to show again. A list that is scrolled reads what comes into sight and no more. Rows that stay keep their places, so that a
/// selection outlives a change.

#include "platform/persistence/ManagedObject.hpp"
#include "platform/toolkit/qt/ObjectTableModel.hpp"
#include "platform/values/Decimal.hpp"

#include <QString>

#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace estatebook::desktop {

class ListModel : public platform::ObjectTableModel {
    Q_OBJECT

public:
    struct Column {
        QString title;
        /// Amounts stand to the right.
        bool isAmount = false;
        /// Whether a sum of the column means anything.
        bool isSummed = false;
    };
    struct Cell {
        QString text;
        /// What it is sorted by; the text when it has none.
        QVariant order{};
        std::optional<platform::Decimal> amount{};
    };
    struct Row {
        std::vector<Cell> cells;
        /// Set back among the others, such as a letting that is over.
        bool isFaded = false;
    };
    using Objects = std::vector<platform::Ref<platform::ManagedObject>>;
    using RowMaker = std::function<Row(platform::ManagedObject&)>;

    /// The value that rows are sorted by.
    static constexpr int OrderRole = Qt::UserRole;

    ListModel(std::vector<Column> columns, RowMaker makeRow, QObject* parent = nullptr);

    /// The objects of the list, in its order. Rows are read anew when they are next shown.
    void take(const Objects& objects);
    /// The same with rows that are there already, one for each object.
    void take(const Objects& objects, std::vector<Row> rows);
    /// Names the columns anew.
    void setTitles(const std::vector<QString>& titles);

    [[nodiscard]] const std::vector<Column>& columns() const noexcept { return columns_; }
    /// REQUIRES: a row that is there; so does `row`.
    [[nodiscard]] platform::ManagedObject& object(int row) const;
    [[nodiscard]] const Row& row(int row) const;
    /// How many rows were read since the last `take`.
    [[nodiscard]] std::size_t readRows() const noexcept { return readRows_; }

    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

protected:
    [[nodiscard]] Heading heading(int column) const override;

private:
    void follow(const Objects& objects);

    std::vector<Column> columns_;
    RowMaker makeRow_;
    /// Those that were read.
    mutable std::unordered_map<const platform::ObservableObject*, Row> rows_;
    mutable std::size_t readRows_ = 0;
};

} // namespace estatebook::desktop
