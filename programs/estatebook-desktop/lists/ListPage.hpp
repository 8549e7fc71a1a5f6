// SPDX-License-Identifier: MIT
#pragma once

/// ListPage: a list with its sums below, a search, and words in the place of an empty one.

#include "estatebook-desktop/lists/ListModel.hpp"
#include "estatebook-desktop/lists/Slices.hpp"
#include "estatebook-desktop/window/Figures.hpp"

#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QWidget>

#include <functional>
#include <memory>

class QLabel;
class QPushButton;
class QStackedLayout;
class QTableView;

namespace estatebook::desktop {

class ListPage : public QWidget {
    Q_OBJECT

public:
    /// What stands in the place of an empty list: what to do, and the button for it.
    struct WhenEmpty {
        QString title;
        QString advice;
        /// No button when there is no text.
        QString button{};
    };

    /// Named for people who hear the window rather than see it.
    ListPage(const QString& name, std::unique_ptr<ListModel> model, WhenEmpty whenEmpty,
             std::function<const Figures&()> figures);

    [[nodiscard]] ListModel& model() const noexcept { return *model_; }
    [[nodiscard]] QTableView& table() const noexcept { return *table_; }
    [[nodiscard]] const QStandardItemModel& totals() const noexcept { return totals_; }
    /// Null when none is selected.
    [[nodiscard]] platform::ManagedObject* selected() const;
    void select(const platform::ManagedObject& object);
    /// Only rows in which the text stands somewhere.
    void search(const QString& text);
    [[nodiscard]] int shownRows() const { return shown_.rowCount(); }
    void setWhenEmpty(const WhenEmpty& whenEmpty);
    /// Whether there are sums left to be reckoned.
    [[nodiscard]] bool isSummingUp() const noexcept { return slices_.isAtWork(); }
    /// Reckons all of them at once.
    void finishTotals() { slices_.finish(); }

    /// The widths of the columns, to be remembered.
    [[nodiscard]] QByteArray headerState() const;
    bool restoreHeaderState(const QByteArray& state);

Q_SIGNALS:
    void selectionChanged();
    /// The row was opened, with the return key or by a double click.
    void opened();
    /// The button of the empty list was pressed.
    void beginningWanted();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Sums wait while nobody sees them, so that they hold up no list that is seen.
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void makeTable(const QString& name);
    void makeTotals(const QString& name);
    void makeEmptyWords();
    void listChanged();
    void showWordsOrList();
    void sumUp();
    bool addNextRow();
    void showTotals();
    /// Never cuts an amount.
    void widen(int column, int width);
    void fitFirstColumn();

    std::unique_ptr<ListModel> model_;
    WhenEmpty whenEmpty_;
    std::function<const Figures&()> figures_;
    QSortFilterProxyModel shown_;
    QStandardItemModel totals_;
    Slices slices_;
    /// The sum of each column so far, and the next row to be added.
    std::vector<std::optional<platform::Decimal>> sums_;
    int nextRow_ = 0;
    /// The length of the longest text of each column so far: what is no longer needs no more room.
    std::vector<qsizetype> longest_;

    QTableView* table_ = nullptr;
    QTableView* totalsView_ = nullptr;
    QWidget* emptyWords_ = nullptr;
    QLabel* emptyTitle_ = nullptr;
    QLabel* emptyAdvice_ = nullptr;
    QPushButton* emptyButton_ = nullptr;
    QStackedLayout* stack_ = nullptr;
};

} // namespace estatebook::desktop
