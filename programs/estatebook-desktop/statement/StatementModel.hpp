// SPDX-License-Identifier: MIT
#pragma once

/// StatementModel: the lines of a statement as a table: a snapshot that shows nothing else until it is given another.
///
/// Lines that follow from the terms stand in italics and are locked; headings and sums stand in bold.

#include "estatebook-desktop/statement/StatementParts.hpp"

#include <QAbstractTableModel>
#include <QString>

#include <optional>
#include <vector>

namespace estatebook::desktop {

class Figures;

class StatementModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column : int { Date, Description, Tags, Amount, Balance, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void show(const StatementParts& parts, const Figures& figures, platform::Date today);
    void clear();

    /// What the row was recorded as; null for one that nobody recorded.
    [[nodiscard]] TKTransaction* transaction(int row) const;
    /// The first row that was recorded as it; -1 when there is none.
    [[nodiscard]] int rowOf(const TKTransaction& transaction) const;
    /// The cells of a row, as texts.
    [[nodiscard]] QStringList texts(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    enum class Kind : std::uint8_t { Recorded, Generated, Heading, Sum };
    struct Row {
        Kind kind = Kind::Recorded;
        std::array<QString, ColumnCount> texts{};
        platform::Ref<TKTransaction> transaction{};
    };
    void addLines(const std::vector<StatementParts::Line>& lines, const Figures& figures);
    void addHeading(const QString& text);
    void addSum(const QString& text, const QString& amount);
    void addPart(const StatementParts::Part& part, const Figures& figures, platform::Date today);

    std::vector<Row> rows_;
};

} // namespace estatebook::desktop
