// SPDX-License-Identifier: MIT
#include "reports/MonthlyIncome.hpp"

#include "platform/calendar/Calendar.hpp"
#include "store/TKProperty.hpp"
#include "tenure/TKTenure.hpp"

#include <cstdint>
#include <iterator>
#include <map>

namespace estatebook {

using platform::Calendar;
using platform::CivilDay;
using platform::Date;
using platform::Decimal;
using platform::Ref;

namespace {

/// A count of months since year 0; absent without a date that books have. Absent comes first.
using Month = std::optional<std::int64_t>;

Month monthOf(const std::optional<Date>& date, const Calendar& calendar) {
    if (!date || !calendar.isInBookYears(*date)) return std::nullopt;
    const platform::YearMonthDay day = calendar.civilDay(*date).yearMonthDay();
    return day.year * 12 + day.month - 1;
}

/// The months with transactions.
class Months {
public:
    Months(const Calendar& calendar, Date day) : calendar_(calendar), day_(day) {}

    template <class Transactions, class Function>
    void add(const Transactions& transactions, Function enter) {
        for (const TKTransaction& transaction : transactions) {
            const auto amount = transaction.amount();
            const auto when = transaction.when();
            if (amount && !(when && *when > day_))
                enter(months_[monthOf(when, calendar_)], transaction, *amount);
        }
    }

    [[nodiscard]] std::vector<MonthlyIncome> rows() && {
        std::vector<MonthlyIncome> rows;
        const auto append = [&](const Month& month, MonthlyIncome row) {
            if (month) row.month = calendar_.startOfCivilDay(CivilDay::clamped(*month, 1));
            rows.push_back(row);
        };
        Month last;
        for (const auto& [month, row] : months_) {
            if (last)
                for (std::int64_t empty = *last + 1; empty < *month; ++empty) append(empty, {});
            append(month, row);
            last = month;
        }
        if (const Month present = monthOf(day_, calendar_); last && present)
            for (std::int64_t empty = *last + 1; empty <= *present; ++empty) append(empty, {});
        return rows;
    }

private:
    const Calendar& calendar_;
    Date day_;
    std::map<Month, MonthlyIncome> months_;
};

} // namespace

std::vector<MonthlyIncome> MonthlyIncome::ofLedgers(std::span<const Ref<TKProperty>> properties,
                                                    std::span<const Ref<TKTenure>> tenures, Date day) {
    const Calendar calendar = Calendar::current();
    Months months(calendar, day);
    for (const Ref<TKProperty>& property : properties)
        months.add(property->transactions(),
                   [](MonthlyIncome& row, const TKTransaction&, const Decimal& amount) {
                       (amount.isNegative() ? row.ownCosts : row.ownIncome) += amount;
                   });
    for (const Ref<TKTenure>& tenure : tenures)
        months.add(tenure->transactions(),
                   [](MonthlyIncome& row, const TKTransaction& transaction, const Decimal& amount) {
                       (transaction.isAdjustment() ? row.adjustments : row.received) += amount;
                   });
    return std::move(months).rows();
}

} // namespace estatebook
