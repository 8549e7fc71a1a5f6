// SPDX-License-Identifier: MIT

// A small window, names that are longer than it is wide, and rents of millions.

#include "desktop/program/MainWindowTestCase.hpp"

#include <QAbstractButton>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>

namespace estatebook::desktop::test {

namespace {

using estatebook::test::settle;
using platform::Decimal;
using platform::Number;
using platform::String;

class LongNamesTest : public MainWindowTestCase {
protected:
    static constexpr QSize Small{1024, 700};

    LongNamesTest() {
        window_->resize(Small);
        open(makeEmpty());
        session().perform("New", [this] {
            auto& context = session().context();
            const auto property = context.insertNewObject<TKProperty>("Property");
            const auto tenant = context.insertNewObject<TKTenant>("Tenant");
            property->setName(String::make(name("Lower Harbour Street", 80)));
            tenant->setName(String::make(name("Wilhelmina", 80)));
            const auto tenure = context.insertNewObject<TKTenure>("Tenure");
            tenure->setProperty(property.get());
            tenure->setTenant(tenant.get());
            tenure->setStartDate(day(2026, 1, 1));
            tenure->setRentalBillingCycle(Number(TKBillingCycleMonth));
            tenure->setRentalPeriod(Number(1U));
            tenure->setChargeBehaviour(Number(TKChargeBehaviourPartial));
            tenure->setRentalAmount(Decimal::parse("1234567.89"));
            TKTransaction* paid = tenure->createTransaction();
            paid->setAmount(Decimal::parse("2345678.91"));
            paid->setWhat(String::make(name("Paid in cash,", 120)));
            paid->setWhen(day(2026, 2, 3));
            TKTransaction* spent = property->createTransaction();
            spent->setAmount(Decimal::parse("-1234567.89"));
        });
        settle();
    }

    static std::string name(const std::string& word, std::size_t length) {
        std::string text;
        while (text.size() < length) text += word + " ";
        text.resize(length);
        return text;
    }
    /// No amount is cut, and each title can be read.
    static void expectRoom(const QTableView& table, int firstAmount, const std::string& which) {
        const QAbstractItemModel& model = *table.model();
        for (int column = firstAmount; column < model.columnCount(); ++column)
            for (int row = 0; row < model.rowCount(); ++row) {
                const QModelIndex index = model.index(row, column);
                const QString text = index.data().toString();
                QFont font = table.font();
                if (index.data(Qt::FontRole).isValid())
                    font = index.data(Qt::FontRole).value<QFont>().resolve(font);
                // Some room between neighbours, too.
                EXPECT_GE(table.columnWidth(column), QFontMetrics(font).horizontalAdvance(text) + 6)
                    << which << ": " << text.toStdString();
            }
    }
    static void expectWhole(const QWidget& window, const std::string& which) {
        const auto labels = window.findChildren<QLabel*>();
        for (const QLabel* label : labels) {
            if (!label->isVisible()) continue;
            const QSize needed =
                label->wordWrap() ? QSize(0, label->heightForWidth(label->width())) : label->sizeHint();
            EXPECT_GE(label->height() + 1, needed.height()) << which << ": " << label->text().toStdString();
            EXPECT_GE(label->width() + 1, needed.width()) << which << ": " << label->text().toStdString();
        }
        const auto buttons = window.findChildren<QAbstractButton*>();
        for (const QAbstractButton* button : buttons)
            if (button->isVisible() && !button->text().isEmpty()) {
                EXPECT_GE(button->width() + 1, button->minimumSizeHint().width())
                    << which << ": " << button->text().toStdString();
            }
    }
};

TEST_F(LongNamesTest, ListsCutNoAmount) {
    for (const auto& [page, firstAmount, which] :
         {std::tuple(Page::Tenures, 2, "lettings"), std::tuple(Page::Properties, 2, "properties"),
          std::tuple(Page::Tenants, 2, "tenants"), std::tuple(Page::Arrears, 1, "arrears")}) {
        choose(page);
        window_->refreshNow();
        list(page).finishTotals();
        settle();
        const QTableView& table = list(page).table();
        ASSERT_EQ(table.model()->rowCount(), 1) << which;
        expectRoom(table, firstAmount, which);
        const auto views = list(page).findChildren<QTableView*>();
        for (const QTableView* view : views) expectRoom(*view, firstAmount, std::string(which) + ", sums");
        EXPECT_GE(table.columnWidth(0), 120) << which << ": whose line it is";
        EXPECT_GE(table.horizontalHeader()->length(), table.viewport()->width())
            << which << ": a strip of nothing";
        EXPECT_EQ(window_->size(), Small) << which;
    }
}

TEST_F(LongNamesTest, AStatementCutsNoAmount) {
    choose(Page::Tenures);
    list(Page::Tenures).table().selectRow(0);
    press(*window_, Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(window_->statementPage().isVisible());
    expectRoom(window_->statementPage().table(), StatementModel::Amount, "statement");
    EXPECT_EQ(window_->statementPage().table().horizontalScrollBar()->maximum(), 0);
    expectWhole(window_->statementPage(), "statement");
    EXPECT_EQ(window_->size(), Small);
}

TEST_F(LongNamesTest, SheetsAreNoLargerThanTheWindow) {
    for (const auto& [page, action] : {std::pair(Page::Tenures, "edit"), std::pair(Page::Tenures, "pay"),
                                       std::pair(Page::Tenures, "notes"), std::pair(Page::Properties, "edit"),
                                       std::pair(Page::Tenants, "edit")}) {
        choose(page);
        list(page).table().selectRow(0);
        settle();
        window_->findChild<QAction*>(QLatin1String(action))->trigger();
        settle();
        ASSERT_TRUE(window_->sheet()) << action;
        const std::string which = std::string(action) + std::to_string(static_cast<int>(page));
        EXPECT_LE(sheetWidget().width(), Small.width()) << which;
        EXPECT_LE(sheetWidget().height(), Small.height()) << which;
        expectWhole(sheetWidget(), which);
        const auto tables = sheetWidget().findChildren<QTableView*>();
        for (const QTableView* table : tables) expectRoom(*table, 0, which);
        press(sheetWidget(), Qt::Key_Escape);
    }
}

} // namespace

} // namespace estatebook::desktop::test
