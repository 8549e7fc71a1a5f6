// SPDX-License-Identifier: MIT
#pragma once

/// TKDuePeriods: for one tenure, how far the payments reach in whole rent periods, which charged periods are still
/// unpaid, which period comes next, and how much is owed. A snapshot: it does not follow the tenure.
///
/// Paid periods are rounded down and charged periods up, so that a period paid or charged in part shows as outstanding. The
/// trap: `location` and `length` are periods, `balance` is money, and either may be zero without the other.
///
///     auto due = tenure->duePeriods();
///     due->outstanding().location;      // periods paid, 9223372036854775807 for a tenure without rent
///     due->hasOutstandingBalance();

#include "billing/TKPeriod.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Decimal.hpp"

#include <concepts>
#include <cstdint>
#include <optional>

namespace estatebook {

class TKTenure;

/// Places in a row, as a first place and a number of places.
struct Range {
    /// The location that stands for none: 2^63 - 1.
    static constexpr std::uint64_t NotFound = 9223372036854775807u;
    std::uint64_t location = NotFound;
    std::uint64_t length = 0;
    friend bool operator==(const Range&, const Range&) = default;
};

class ESTATEBOOK_API TKDuePeriods : public platform::Object {
public:
    /// duePeriodsForTenure:
    /// A new snapshot of the class it is asked of. Nothing is due for a rent of zero or less. Raises
    /// DivideByZeroException without a rent, and as the tenure's totals do; OverflowException when the next period lies beyond the
    /// year 9999. Linear in the tenure's transactions, whatever the number of periods.
    template <std::derived_from<TKDuePeriods> Class = TKDuePeriods>
    [[nodiscard]] static platform::Ref<Class> duePeriodsForTenure(const TKTenure& tenure) {
        platform::Ref<Class> due = platform::makeRef<Class>();
        due->readTenure(tenure);
        return due;
    }

    TKDuePeriods() noexcept : Object(platform::Counting::Local) {}
    ~TKDuePeriods() override;

    /// The tenure's own schedule, as it held it; null when it held none.
    [[nodiscard]] const platform::Ref<platform::Array>& periods() const noexcept { return periods_; }
    void setPeriods(const platform::Ref<platform::Array>& periods) { periods_ = periods; }
    /// From the first period that payments do not cover whole, the charged ones.
    [[nodiscard]] Range outstanding() const noexcept { return outstanding_; }
    void setOutstanding(Range outstanding) noexcept { outstanding_ = outstanding; }
    /// The first period after those; null when it would begin on or after the tenure's end.
    [[nodiscard]] const platform::Ref<TKPeriod>& next() const noexcept { return next_; }
    void setNext(const platform::Ref<TKPeriod>& next) { next_ = next; }
    /// The amount owed: the tenure's balance with its sign turned. Absent for a tenure without rent.
    [[nodiscard]] const std::optional<platform::Decimal>& balance() const noexcept { return balance_; }
    void setBalance(const std::optional<platform::Decimal>& balance) noexcept { balance_ = balance; }

    [[nodiscard]] bool hasOutstandingBalance() const noexcept;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "TKDuePeriods"; }

private:
    void readTenure(const TKTenure& tenure);

    platform::Ref<platform::Array> periods_;
    Range outstanding_;
    platform::Ref<TKPeriod> next_;
    std::optional<platform::Decimal> balance_;
};

} // namespace estatebook
