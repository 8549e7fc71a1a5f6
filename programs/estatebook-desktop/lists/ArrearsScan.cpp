// SPDX-License-Identifier: MIT
#include "estatebook-desktop/lists/ArrearsScan.hpp"

#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook-desktop/window/Figures.hpp"
#include "estatebook/OutstandingLines.hpp"

#include "reports/Ageing.hpp"

#include <utility>

namespace estatebook::desktop {

using platform::Date;
using platform::Decimal;

namespace {

ListModel::Cell amountCell(const Figures& figures, const Decimal& amount) {
    return {amount.isZero() ? QString() : figures.amount(amount), amount.doubleValue(), amount};
}

ListModel::Row rowOf(const Figures& figures, const QString& name, const Ageing& ageing,
                     const std::optional<Date>& since) {
    ListModel::Row row{{{name},
                        {figures.day(since), since ? since->secondsSinceReferenceDate : -1e18},
                        amountCell(figures, figures.rounded(ageing.owed()))}};
    for (const Decimal& bucket : ageing.buckets)
        row.cells.push_back(amountCell(figures, figures.rounded(bucket)));
    row.cells.push_back(amountCell(figures, figures.rounded(ageing.notYetDue)));
    return row;
}

} // namespace

ArrearsScan::ArrearsScan(BookSession& session, ListModel& list, FiguresSource figures)
    : session_(session), list_(list), figures_(std::move(figures)) {}

void ArrearsScan::begin() {
    tenures_ = session_.tenures();
    next_ = 0;
    found_.clear();
    rows_.clear();
    slices_.begin([this] { return lookAtNext(); });
}

bool ArrearsScan::lookAtNext() {
    if (next_ < tenures_.size()) {
        lookAt(*tenures_[next_++]);
        return true;
    }
    tenures_.clear();
    list_.take(found_, std::move(rows_));
    return false;
}

void ArrearsScan::lookAt(TKTenure& tenure) {
    const Date today = session_.today();
    const auto reading = session_.reading();
    const auto statement = session_.statementOf(tenure);
    const auto ageing = statement ? reckon([&] { return Ageing::ofStatement(**statement, today); })
                                  : Reckoned<Ageing>(statement.error());
    const Figures& figures = figures_();
    if (!ageing) {
        ListModel::Row row{{{partiesOf(tenure)}, {}, {figures.amount(Reckoned<Decimal>(ageing.error()))}}};
        row.cells.resize(list_.columns().size());
        rows_.push_back(std::move(row));
    } else if (figures.rounded(ageing->owed()) > Decimal::zero()) {
        const auto lines = outstandingOn(**statement, today);
        rows_.push_back(rowOf(figures, partiesOf(tenure), *ageing,
                              lines->empty() ? std::nullopt : (*lines)[0].transaction()->when()));
    } else {
        return;
    }
    found_.emplace_back(&tenure);
}

} // namespace estatebook::desktop
