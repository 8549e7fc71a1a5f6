// SPDX-License-Identifier: MIT
#pragma once

/// StatementPage: the statement of a letting, to be read, printed, and taken elsewhere.

#include "estatebook-desktop/statement/StatementModel.hpp"
#include "estatebook-desktop/window/Dialogs.hpp"
#include "paper/PrintedStatement.hpp"

#include <QWidget>

#include <functional>

class QCheckBox;
class QLabel;
class QPushButton;
class QTableView;

namespace estatebook::desktop {

class StatementPage : public QWidget {
    Q_OBJECT

public:
    /// REQUIRES: what is given outlives the page.
    StatementPage(BookSession& session, Dialogs& dialogs, std::function<const Figures&()> figures);

    void show(TKTenure& tenure);
    /// Shows it as it is now; goes back to the list when the letting is gone.
    void refresh();
    /// Null when none is shown.
    [[nodiscard]] TKTenure* tenure() const noexcept { return tenure_.get(); }
    [[nodiscard]] const StatementModel& model() const noexcept { return model_; }
    [[nodiscard]] QTableView& table() const noexcept { return *table_; }

    /// The lines that are shown, as comma-separated values with a line of titles.
    [[nodiscard]] std::string csv() const;
    /// The statement as a PDF document; throws Failure when it cannot be made.
    [[nodiscard]] std::string pdf() const;
    /// The selected lines, or all when none is selected, for the clipboard.
    [[nodiscard]] QString copiedText() const;

Q_SIGNALS:
    void leaving();
    /// A line that somebody recorded was opened.
    void opened(TKTransaction* transaction);

private:
    void makeTable();
    void choose();
    void copy() const;
    void print();
    void save(const QString& filter, const QString& suffix, const std::function<std::string()>& content);
    [[nodiscard]] QString heading() const;
    [[nodiscard]] QString html() const;
    [[nodiscard]] paper::PrintedStatement printed() const;

    BookSession& session_;
    Dialogs& dialogs_;
    std::function<const Figures&()> figures_;
    platform::Ref<TKTenure> tenure_;
    StatementParts parts_;
    StatementModel model_;
    QTableView* table_ = nullptr;
    QLabel* title_ = nullptr;
    QLabel* subtitle_ = nullptr;
    QCheckBox* outstanding_ = nullptr;
    QCheckBox* byTag_ = nullptr;
};

} // namespace estatebook::desktop
