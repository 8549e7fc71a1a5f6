// SPDX-License-Identifier: MIT
#pragma once

/// TKPeriod: one billing period of a tenure: when it starts, when it ends, and when its rent falls due.
///
/// The calendar engine (TKPeriodicBilling) makes periods in rows, each starting where the one before it ends;
/// a period itself reckons nothing but its length. The traps: the end is exclusive, it is the first instant
/// that no longer belongs to the period; and nothing is checked, any date may be set to anything or be
/// absent, and a start need not lie before an end.
///
///     Ref<TKPeriod> march = TKPeriod::periodWithStartDateEndDate(firstOfMarch, firstOfApril);
///     march->days();                              // 31
///     march->billingDate();                       // the start date, until it is set to another
///     march->fractionOfDuration(62);              // 0.5
///
/// Periods count their references atomically: a finished row may be read from any thread. The setters are for
/// the one that makes the row.

#include "EstateBook_ModelExport.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/Date.hpp"
#include "platform/values/Decimal.hpp"
#include "platform/values/Number.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace estatebook {

class ESTATEBOOK_API TKPeriod : public platform::Object {
public:
    using Date = platform::Date;

    /// A period without dates.
    TKPeriod() noexcept : Object(platform::Counting::Shared) {}
    // By plain dates: an optional that is copied is written in two pieces and read back as one, which costs more
    // than all the rest of making a period.
    TKPeriod(Date startDate, Date endDate, Date billingDate) noexcept
        : Object(platform::Counting::Shared), startDate_(startDate), endDate_(endDate),
          billingDate_(billingDate) {}

    /// periodWithStartDate:endDate:
    /// A new period of the class it is asked of, with these dates and the start date as its billing date:
    /// `periodWithStartDateEndDate<SeasonPeriod>(start, end)` makes a SeasonPeriod.
    template <std::derived_from<TKPeriod> Class = TKPeriod>
    [[nodiscard]] static platform::Ref<Class> periodWithStartDateEndDate(std::optional<Date> startDate,
                                                                         std::optional<Date> endDate) {
        platform::Ref<Class> period = platform::makeRef<Class>();
        period->setStartDate(startDate);
        period->setEndDate(endDate);
        period->setBillingDate(startDate);
        return period;
    }

    /// startDate: the first instant of the period.
    [[nodiscard]] std::optional<Date> startDate() const noexcept { return startDate_; }
    void setStartDate(std::optional<Date> date) noexcept { startDate_ = date; }

    /// endDate: the instant at which the period has ended; in a row the next one's start date.
    [[nodiscard]] std::optional<Date> endDate() const noexcept { return endDate_; }
    void setEndDate(std::optional<Date> date) noexcept { endDate_ = date; }

    /// billingDate: the instant on which the rent of this period is charged.
    [[nodiscard]] std::optional<Date> billingDate() const noexcept { return billingDate_; }
    void setBillingDate(std::optional<Date> date) noexcept { billingDate_ = date; }

    /// days: the days from the start date to the end date, as the host counts them (hostOperations().daysUntil);
    /// 0 when one of the dates is absent.
    [[nodiscard]] std::uint64_t days() const;

    /// "<Period Mar 1, 2024 -> Apr 1, 2024 (31)>", the dates in the current locale and the default time zone; an
    /// absent date is "(null)".
    [[nodiscard]] std::string description() const override;

    /// fractionOfDuration:
    /// The share of a duration in days that this period covers, to all 38 digits: 15 days of 31 are 15/31.
    /// Raises DivideByZeroException for a duration of 0 and for an absent one.
    [[nodiscard]] platform::Decimal fractionOfDuration(const std::optional<platform::Number>& duration) const;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "TKPeriod"; }

protected:
    ~TKPeriod() override = default;
    void dispose() const noexcept override;

private:
    friend class platform::ObjectBlock<TKPeriod>;

    std::optional<Date> startDate_;
    std::optional<Date> endDate_;
    std::optional<Date> billingDate_;
};

/// A row of periods.
using TKPeriodRow = platform::ArrayOf<TKPeriod>;

} // namespace estatebook
