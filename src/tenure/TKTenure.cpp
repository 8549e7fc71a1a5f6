// SPDX-License-Identifier: MIT
#include "tenure/TKTenure.hpp"

#include "billing/TKDuePeriods.hpp"
#include "platform/text/DateFormatter.hpp"
#include "statement/TKStatement.hpp"
#include "store/OwnedObjects.hpp"
#include "store/TKProperty.hpp"
#include "store/TKTenant.hpp"

#include <string>

namespace estatebook {

using namespace platform;

namespace {

constexpr auto closure = closureOf(TKTenure::Dependencies);

constexpr Property properties[] = {
    derived<&TKTenure::rentalPeriodicBilling>(keys::rentalPeriodicBilling),
    derived<&TKTenure::advancePeriodicBilling>(keys::advancePeriodicBilling),
    derived<&TKTenure::duePeriods>(keys::duePeriods),
    derived<&TKTenure::name>(keys::name),
    writable<&TKTenure::currencyCodeState, &TKTenure::setCurrencyCodeState>(keys::currencyCodeState),
    writable<&TKTenure::currencyCode, &TKTenure::setCurrencyCode>(keys::currencyCode),
    writable<&TKTenure::billingModeState, &TKTenure::setBillingModeState>(keys::billingModeState),
    writable<&TKTenure::billingMode, &TKTenure::setBillingMode>(keys::billingMode),
    derived<&TKTenure::periodicNameForRentalBillingCycle>(keys::periodicNameForRentalBillingCycle),
    derived<&TKTenure::periodicNameForAdvanceBillingCycle>(keys::periodicNameForAdvanceBillingCycle),
    derived<&TKTenure::functionalNameForChargeBehaviour>(keys::functionalNameForChargeBehaviour),
    derived<&TKTenure::isActive>(keys::active),
    derived<&TKTenure::isActive>(keys::isActive),
    derived<&TKTenure::maximumChargableDays>(keys::maximumChargableDays),
    derived<&TKTenure::chargableDays>(keys::chargableDays),
    derived<&TKTenure::chargablePeriods>(keys::chargablePeriods),
    writable<&TKTenure::numberOfDays, &TKTenure::setNumberOfDays>(keys::numberOfDays),
    writable<&TKTenure::numberOfPeriods, &TKTenure::setNumberOfPeriods>(keys::numberOfPeriods),
    derived<&TKTenure::totalCost>(keys::totalCost),
    derived<&TKTenure::totalIncome>(keys::totalIncome),
    derived<&TKTenure::totalAdjustment>(keys::totalAdjustment),
    derived<&TKTenure::balance>(keys::balance),
    derived<&TKTenure::isBalanced>(keys::balanced),
    derived<&TKTenure::isBalanced>(keys::isBalanced),
    derived<&TKTenure::statement>(keys::statement),
};

constexpr std::string_view functionalNames[] = {"start", "partial", "end"};

/// As a format prints it: "(null)" for what is absent.
std::string printed(const Ref<String>& text) {
    return Value(text).description();
}

std::string printed(const std::optional<Date>& date) {
    return date ? TKTenure::sharedDateFormatter()->stringFromDate(*date) : Value().description();
}

} // namespace

constinit const ClassDescription TKTenure::Class("TKTenure", nullptr, properties, Dependencies,
                                                 dependentsIn<closure>, announcing<TKTenure>);

TKTenure::~TKTenure() = default;

void TKTenure::setCurrencyCodeState(const Ref<TKState>& state) {
    change(keys::currencyCodeState, [&] { currencyCodeState_ = state; });
}

void TKTenure::setCurrencyCode(const Ref<String>& code) {
    change(keys::currencyCode, [&] { currencyCode_ = code; });
}

void TKTenure::setBillingModeState(const Ref<TKState>& state) {
    change(keys::billingModeState, [&] { billingModeState_ = state; });
}

void TKTenure::setBillingMode(std::uint64_t mode) {
    change(keys::billingMode, [&] { billingMode_ = mode; });
}

Ref<TKPeriodicBilling> TKTenure::rentalPeriodicBilling() const {
    auto billing = TKPeriodicBilling::periodicBillingForCycleWithPeriod(unsignedValue(rentalBillingCycle()),
                                                                        unsignedValue(rentalPeriod()));
    if (unsignedValue(advancePeriod()) == 0) billing->setPeriodBillingMode(TKPeriodBillingModeEnd);
    return billing;
}

Ref<TKPeriodicBilling> TKTenure::advancePeriodicBilling() const {
    return TKPeriodicBilling::periodicBillingForCycleWithPeriod(unsignedValue(advanceBillingCycle()),
                                                                unsignedValue(advancePeriod()));
}

Ref<TKDuePeriods> TKTenure::duePeriods() const {
    return TKDuePeriods::duePeriodsForTenure(*this);
}

Ref<String> TKTenure::periodicNameForRentalBillingCycle() const {
    return TKPeriodicBilling::periodicNameForBillingCycle(unsignedValue(rentalBillingCycle()));
}

Ref<String> TKTenure::periodicNameForAdvanceBillingCycle() const {
    return TKPeriodicBilling::periodicNameForBillingCycle(unsignedValue(advanceBillingCycle()));
}

Ref<String> TKTenure::functionalNameForChargeBehaviour() const {
    const std::uint64_t behaviour = unsignedValue(chargeBehaviour());
    return behaviour < std::size(functionalNames) ? String::make(functionalNames[behaviour]) : nullptr;
}

const Ref<DateFormatter>& TKTenure::sharedDateFormatter() {
    static const Ref<DateFormatter> formatter = DateFormatter::medium();
    return formatter;
}

Ref<String> TKTenure::name() const {
    const TKProperty* let = property();
    const TKTenant* letTo = tenant();
    const auto end = endDate();
    return String::make(printed(let ? let->name() : nullptr) + " - " +
                        printed(letTo ? letTo->name() : nullptr) + " (" + printed(startDate()) + " → " +
                        (end ? printed(end) : "...") + ")");
}

// Validation

bool TKTenure::validateDuration(Ref<Error>* error) const {
    const auto start = startDate();
    const auto end = endDate();
    if (!end || (start && *start <= *end)) return true;
    if (error)
        *error = Error::make("Validation", -1,
                             "Tenure end date must be greater or equal to the tenure start date");
    return false;
}

bool TKTenure::validateForInsert(Ref<Error>* error) {
    return ManagedObject::validateForInsert(error) && validateDuration(error);
}

bool TKTenure::validateForUpdate(Ref<Error>* error) {
    return ManagedObject::validateForUpdate(error) && validateDuration(error);
}

// Activity

bool TKTenure::isActiveAtDate(const std::optional<Date>& date) const {
    if (!date) return true;
    const auto billing = rentalPeriodicBilling();
    const auto day = billing->dateWithZeroOffset(date);
    const auto end = endDate();
    if (end && day > billing->dateWithZeroOffset(end)) return false;
    const auto start = startDate();
    return !start || day >= billing->dateWithZeroOffset(start);
}

// Ledger and notes

TKTenureTransaction* TKTenure::createTransaction() {
    auto* transaction = insertOwned<TKTenureTransaction>("TenureTransaction", *this, keys::tenure);
    transaction->setValueForKey(Value(rentalAmount()), keys::amount);
    return transaction;
}

ToManyView<TKTransaction> TKTenure::transactions() const {
    return TKTenureProperties::transactions();
}

TKTenureNote* TKTenure::createNote() {
    return insertOwned<TKTenureNote>("TenureNote", *this, keys::tenure);
}

ToManyView<TKNote> TKTenure::notes() const {
    return TKTenureProperties::notes();
}

} // namespace estatebook
