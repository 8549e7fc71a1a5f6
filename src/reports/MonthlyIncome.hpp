// SPDX-License-Identifier: MIT
#pragma once

/// MonthlyIncome: what properties brought in, month by month, as money came and went.
///
/// Income is what was recorded, in the month of its date: rent that is charged and not paid is none. A tenure's adjustments
/// (bonds, allowances, fees taken back) are shown apart and are no income; a property's own adjustments correct
/// its costs and count among them. So the months add up to the properties' balances:
///
///     for (const MonthlyIncome& month : MonthlyIncome::ofLedgers(properties, tenures, today)) month.net();

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Ref.hpp"

#include <optional>
#include <span>
#include <vector>

namespace estatebook {

class TKProperty;
class TKTenure;

struct ESTATEBOOK_API MonthlyIncome {
    /// The first instant of the month in the current calendar; absent for what has no date in the years 1583 to 9999.
    std::optional<platform::Date> month;
    /// What tenants paid, less what was paid back to them as income.
    platform::Decimal received;
    /// The properties' own income, zero or more, and their own costs, zero or less.
    platform::Decimal ownIncome;
    platform::Decimal ownCosts;
    /// The tenures' adjustments, which are no income.
    platform::Decimal adjustments;

    /// Received, own income and own costs.
    [[nodiscard]] platform::Decimal net() const { return received + ownIncome + ownCosts; }

    /// First what has no date, if there is any; then every month from the first with a transaction to the month of `day`,
    /// those without any included. What is dated later than `day`, as full instants, is left out; without transactions there are no
    /// rows. Raises OverflowException for a sum that no decimal holds. Linear in the transactions and months.
    [[nodiscard]] static std::vector<MonthlyIncome>
    ofLedgers(std::span<const platform::Ref<TKProperty>> properties,
              std::span<const platform::Ref<TKTenure>> tenures, platform::Date day);
};

} // namespace estatebook
