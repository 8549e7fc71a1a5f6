// SPDX-License-Identifier: MIT
#pragma once

/// TKTenure: one letting of a property to a tenant over a range of dates, with its rent terms.
///
/// Nothing it derives is stored: each value is computed from the terms whenever it is read. Money received is
/// positive, money charged negative; a balance of zero or more means that the tenant owes nothing.
///
///     tenure->setStartDate(march1);
///     tenure->setRentalBillingCycle(Number(30u));      // the cycle before the period and the amount
///     tenure->setRentalPeriod(Number(1u));
///     tenure->setRentalAmount(Decimal(1000));
///     tenure->statement()->amount();
///
/// A tenure of a context is awake until it turns into a fault: it follows the current day and the book's settings, rebuilds its
/// schedule whenever what it charges may have changed, and tells its property of its balance and income. The trap: an awake
/// tenure reckons inside each setter. Terms that cannot be reckoned, such as a period without a cycle, raise out of
/// the setter that made them so; the value stays set.
///
/// The end date is the last day of the letting: active, but never charged. Without an advance (0 or absent) rent is
/// billed at the end of each period, with one at its start. `chargeBehaviour`: 0 charges whole periods only, 1
/// pro rata, 2 each begun period in full; any other value leaves the count of periods as it is.

#include "billing/TKPeriodicBilling.hpp"
#include "model/TKTenureProperties.hpp"
#include "platform/values/Error.hpp"
#include "store/TKCurrentDate.hpp"
#include "store/TKLedger.hpp"
#include "store/TKNotable.hpp"
#include "store/TKState.hpp"
#include "store/TKTenureNote.hpp"
#include "store/TKTenureTransaction.hpp"

#include <array>
#include <cstdint>
#include <optional>

namespace estatebook::platform {
class DateFormatter;
}

namespace estatebook {

class TKDuePeriods;
class TKStatement;

/// The context of a tenure's observation of its own chargeable periods. Never the name of a notification.
ESTATEBOOK_API extern platform::String* const TKChargablePeriodsChanged;

/// How a part period is charged.
enum TKChargeBehaviour : std::uint64_t {
    TKChargeBehaviourStart = 0,
    TKChargeBehaviourPartial = 1,
    TKChargeBehaviourEnd = 2,
};

class ESTATEBOOK_API TKTenure
    : public platform::Adopts<TKTenureProperties, TKCurrentDate, TKLedger, TKNotable> {
public:
    using Adopts::Adopts;
    static const platform::ClassDescription Class;
    [[nodiscard]] const platform::ClassDescription& classDescription() const noexcept override {
        return Class;
    }
    static constexpr std::array Dependencies{
        platform::DependencyRow{keys::rentalPeriodicBilling,
                                {keys::rentalBillingCycle, keys::rentalPeriod, keys::advancePeriod}},
        platform::DependencyRow{keys::advancePeriodicBilling,
                                {keys::advanceBillingCycle, keys::advancePeriod}},
        platform::DependencyRow{keys::endDate, {keys::currentDate}},
        platform::DependencyRow{keys::name, {keys::tenant, keys::property}},
        platform::DependencyRow{keys::maximumChargableDays,
                                {keys::startDate, keys::endDate, keys::rentalPeriodicBilling}},
        platform::DependencyRow{
            keys::chargableDays,
            {keys::maximumChargableDays, keys::chargeFullDuration, keys::advancePeriodicBilling}},
        platform::DependencyRow{
            keys::chargablePeriods,
            {keys::chargableDays, keys::rentalPeriod, keys::rentalAmount, keys::chargeBehaviour}},
        platform::DependencyRow{keys::numberOfDays, {keys::startDate, keys::endDate}},
        platform::DependencyRow{keys::numberOfPeriods,
                                {keys::numberOfDays, keys::rentalPeriod, keys::rentalPeriodicBilling}},
        platform::DependencyRow{keys::totalCost, {keys::rentalAmount, keys::chargablePeriods}},
        platform::DependencyRow{keys::totalIncome, {keys::transactions}},
        platform::DependencyRow{keys::totalAdjustment, {keys::transactions, keys::bondAmount}},
        platform::DependencyRow{keys::balance,
                                {keys::totalCost, keys::totalIncome, keys::totalAdjustment,
                                 keys::chargeBehaviour, keys::currencyCode}},
        platform::DependencyRow{keys::periods, {keys::chargablePeriods}},
    };

    [[nodiscard]] std::optional<platform::Date> currentDate() const override {
        return TKTenureProperties::currentDate();
    }
    void setCurrentDate(const std::optional<platform::Date>& date) override {
        TKTenureProperties::setCurrentDate(date);
    }

    // Values that are not stored: the book's settings as the tenure knows them.

    [[nodiscard]] const platform::Ref<TKState>& currencyCodeState() const noexcept {
        return currencyCodeState_;
    }
    void setCurrencyCodeState(const platform::Ref<TKState>& state);
    /// The code of the currency the rent is kept in; null when it is not known.
    [[nodiscard]] const platform::Ref<platform::String>& currencyCode() const noexcept {
        return currencyCode_;
    }
    void setCurrencyCode(const platform::Ref<platform::String>& code);
    [[nodiscard]] const platform::Ref<TKState>& billingModeState() const noexcept {
        return billingModeState_;
    }
    void setBillingModeState(const platform::Ref<TKState>& state);
    /// For the application; no value here depends on it.
    [[nodiscard]] std::uint64_t billingMode() const noexcept { return billingMode_; }
    void setBillingMode(std::uint64_t mode);

    // Terms (TKTenure.cpp)

    /// rentalPeriodicBilling
    /// The calendar of the rent, made afresh: it bills at the end of each period without an advance, else at the start.
    [[nodiscard]] platform::Ref<TKPeriodicBilling> rentalPeriodicBilling() const;
    /// advancePeriodicBilling
    [[nodiscard]] platform::Ref<TKPeriodicBilling> advancePeriodicBilling() const;
    /// duePeriods
    /// A new snapshot of what is paid, outstanding and next.
    [[nodiscard]] platform::Ref<TKDuePeriods> duePeriods() const;

    /// The localised name of a cycle; null when it is none of the four.
    [[nodiscard]] platform::Ref<platform::String> periodicNameForRentalBillingCycle() const;
    [[nodiscard]] platform::Ref<platform::String> periodicNameForAdvanceBillingCycle() const;
    /// "start", "partial" or "end"; null for another behaviour.
    [[nodiscard]] platform::Ref<platform::String> functionalNameForChargeBehaviour() const;

    /// sharedDateFormatter
    /// Medium dates for all tenures, with the locale and zone of its first use.
    [[nodiscard]] static const platform::Ref<platform::DateFormatter>& sharedDateFormatter();
    /// "PROPERTY - TENANT (START → END)", with "..." for an open end. What is absent reads "(null)".
    [[nodiscard]] platform::Ref<platform::String> name() const;

    /// validateDuration:
    /// False when the end is before the start (full instants), or stands without one; the reason is then stored
    /// through `error` unless that is null: domain "Validation", code -1.
    bool validateDuration(platform::Ref<platform::Error>* error) const;
    bool validateForInsert(platform::Ref<platform::Error>* error) override;
    bool validateForUpdate(platform::Ref<platform::Error>* error) override;

    /// isActiveAtDate:
    /// Whether the day of the date lies within the letting, first and last day included. An absent end or start
    /// does not bound it, and an absent date lies within every letting.
    [[nodiscard]] bool isActiveAtDate(const std::optional<platform::Date>& date) const;
    /// At the current date.
    [[nodiscard]] bool isActive() const { return isActiveAtDate(currentDate()); }

    /// createTransaction
    /// A new transaction on the tenure, of one rent.
    TKTenureTransaction* createTransaction() override;
    [[nodiscard]] platform::ToManyView<TKTransaction> transactions() const override;
    void setTransactions(const platform::Ref<platform::Set>& transactions) override {
        TKTenureProperties::setTransactions(transactions);
    }
    TKTenureNote* createNote() override;
    [[nodiscard]] platform::ToManyView<TKNote> notes() const override;
    void setNotes(const platform::Ref<platform::Set>& notes) override { TKTenureProperties::setNotes(notes); }

    // Days, periods and totals (TKTenureTotals.cpp). Totals are linear in the transactions.

    /// Days from the start to the end of the letting, a signed number; absent without an end. 0 without a start.
    [[nodiscard]] std::optional<platform::Number> maximumChargableDays() const;
    /// Days that can be charged now, an unsigned number. 0 without a start; raises OverflowException when the advance
    /// leads beyond the years of books.
    [[nodiscard]] platform::Number chargableDays() const;
    /// Rent periods that can be charged now, rounded as the charge behaviour says. 0 without a period, an amount or a
    /// start; raises DivideByZeroException for an unknown cycle or a period of 0, and as chargableDays.
    [[nodiscard]] platform::Decimal chargablePeriods() const;

    /// The length of the letting in days, up to today when it has no end: an unsigned number. Absent without a start.
    [[nodiscard]] std::optional<platform::Number> numberOfDays() const;
    /// Moves the end date to the start date plus so many days, at the start's time of day. Absent counts as 0. Raises
    /// OverflowException for an end beyond the years of books.
    void setNumberOfDays(const std::optional<platform::Number>& days);
    /// The same in rent periods, unrounded. Absent without a start or a period; raises as chargablePeriods.
    [[nodiscard]] std::optional<platform::Decimal> numberOfPeriods() const;
    /// Moves the end date; a part of a day counts as a whole day. Absent counts as 0. Raises as setNumberOfDays.
    void setNumberOfPeriods(const std::optional<platform::Number>& periods);

    /// The rent charged: zero or negative. 0 without an amount; raises as chargablePeriods.
    [[nodiscard]] platform::Decimal totalCost() const;
    /// The sum of the transactions that are no adjustments.
    [[nodiscard]] platform::Decimal totalIncome() const;
    /// The bond, negated, plus the sum of the adjustments.
    [[nodiscard]] platform::Decimal totalAdjustment() const;
    /// Income plus cost plus adjustment; rounded to the currency when rent is charged pro rata.
    [[nodiscard]] platform::Decimal balance() const;
    [[nodiscard]] bool isBalanced() const;

    // Schedule and statement (TKTenureSchedule.cpp)

    /// updatePeriods
    /// Makes the schedule anew from the terms, stores it in `periods` and returns it. The last period of a letting with an
    /// end date ends there, even where charging stops before. Raises as chargablePeriods, also for a schedule that leaves the
    /// years of books. Linear in the periods.
    platform::Ref<platform::ArrayOf<TKPeriod>> updatePeriods();

    /// statement
    /// A new statement of all stored transactions, the bond and the rent of `periods` as they stand, by date: those without
    /// one first; of one instant the stored ones first, in the order of their creation, then the bond, then the rent.
    /// Generated lines belong to no context. Raises as chargablePeriods, and then leaves undo registration disabled.
    [[nodiscard]] platform::Ref<TKStatement> statement() const;
    /// Whether a line of a statement was generated: nobody recorded it.
    [[nodiscard]] static bool isGenerated(const TKLedgerTransaction& line) noexcept;

    // Observation (TKTenureObservation.cpp)

    /// addObservers
    /// Follows the current day, the settings "CurrencyCode" and "BillingMode" of the context, which are made when there are none,
    /// and the tenure's own chargeable periods. Takes the day and the settings over at once.
    void addObservers();
    /// removeObservers
    /// Follows them no more; raises RangeException when it did not. The settings are kept.
    void removeObservers();
    /// By the context alone: takes over the current date or a setting, or rebuilds the schedule.
    void observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath,
                                                     platform::ObservableObject& object,
                                                     const platform::KeyValueChange& change,
                                                     const void* context) override;
    void awakeFromInsert() override;
    void awakeFromFetch() override;
    void willTurnIntoFault() override;

    /// "balance" announces the property's "tenureBalance", and "totalIncome" its "tenureIncome".
    void willChangeValueForKey(platform::Key key) override;
    void didChangeValueForKey(platform::Key key) override;
    [[nodiscard]] bool passesOn(const platform::KeySet& changed) const override;

protected:
    ~TKTenure() override;

private:
    /// Observes the setting of that name, which is also the context of the observation.
    platform::Ref<TKState> observedState(platform::String* name);

    platform::Ref<TKState> currencyCodeState_;
    platform::Ref<platform::String> currencyCode_;
    platform::Ref<TKState> billingModeState_;
    std::uint64_t billingMode_ = 0;
};

} // namespace estatebook
