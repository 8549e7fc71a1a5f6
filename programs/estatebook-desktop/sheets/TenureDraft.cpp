// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/TenureDraft.hpp"

#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook/OpenBook.hpp"

#include "billing/TKPeriodicBilling.hpp"
#include "platform/calendar/Calendar.hpp"
#include "statement/TKStatement.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"

#include <algorithm>

namespace estatebook::desktop {

using platform::Calendar;
using platform::Date;
using platform::Decimal;
using platform::Number;
using platform::Ref;
using platform::String;

namespace {

/// The start and the cycles before the periods and the amount, so that no moment has terms that cannot be reckoned, unless those
/// at the end cannot be. Each is set whatever the one before raised.
void copyTerms(const TKTenure& from, TKTenure& to) {
    const auto set = [](const auto& setTerm) {
        static_cast<void>(reckon([&] {
            setTerm();
            return true;
        }));
    };
    const auto copy = [&](const auto& now, const auto& wanted, const auto& setTerm) {
        if (now != wanted) set([&] { setTerm(wanted); });
    };
    copy(to.startDate(), from.startDate(), [&](const auto& value) { to.setStartDate(value); });
    copy(to.rentalBillingCycle(), from.rentalBillingCycle(),
         [&](const auto& value) { to.setRentalBillingCycle(value); });
    copy(to.advanceBillingCycle(), from.advanceBillingCycle(),
         [&](const auto& value) { to.setAdvanceBillingCycle(value); });
    copy(to.chargeBehaviour(), from.chargeBehaviour(),
         [&](const auto& value) { to.setChargeBehaviour(value); });
    copy(to.chargeFullDuration(), from.chargeFullDuration(),
         [&](const auto& value) { to.setChargeFullDuration(value); });
    copy(to.endDate(), from.endDate(), [&](const auto& value) { to.setEndDate(value); });
    copy(to.rentalPeriod(), from.rentalPeriod(), [&](const auto& value) { to.setRentalPeriod(value); });
    copy(to.advancePeriod(), from.advancePeriod(), [&](const auto& value) { to.setAdvancePeriod(value); });
    copy(to.rentalAmount(), from.rentalAmount(), [&](const auto& value) { to.setRentalAmount(value); });
    copy(to.bondAmount(), from.bondAmount(), [&](const auto& value) { to.setBondAmount(value); });
}

/// Another day counts as today for a tenure, as long as this lives.
class DayMoved {
public:
    DayMoved(TKTenure& tenure, Date day) : tenure_(tenure), former_(tenure.currentDate()) {
        static_cast<void>(reckon([&] { return tenure.setCurrentDate(day), true; }));
    }
    ~DayMoved() {
        static_cast<void>(reckon([&] { return tenure_.setCurrentDate(former_), true; }));
    }
    DayMoved(const DayMoved&) = delete;
    DayMoved& operator=(const DayMoved&) = delete;

private:
    TKTenure& tenure_;
    std::optional<Date> former_;
};

} // namespace

TenureDraft::TenureDraft(const BookSession& session, const TKTenure* tenure)
    : session_(session), context_(TKManagedObjectModel::inMemoryManagedObjectContext()) {
    context_->setUndoManager(nullptr);
    for (String* const name : {TKCurrencyCodeStateName, TKBillingModeStateName})
        TKState::updateStateWithNameValueInManagedObjectContext(
            Ref<String>(name),
            TKState::valueForNameInManagedObjectContext(Ref<String>(name), session.context()), *context_);
    terms_ = context_->insertNewObject<TKTenure>("Tenure");
    set([&](TKTenure& terms) { terms.setCurrentDate(session.today()); });
    if (tenure) {
        copyTerms(*tenure, *terms_);
        addPaid(*tenure);
        return;
    }
    terms_->setStartDate(Calendar::current().startOfDay(session.today()));
    terms_->setRentalBillingCycle(Number(TKBillingCycleMonth));
    terms_->setRentalPeriod(Number(1U));
    terms_->setChargeBehaviour(Number(TKChargeBehaviourPartial));
    if (terms_->billingMode() == TKPeriodBillingModeEnd) return;
    terms_->setAdvanceBillingCycle(Number(TKBillingCycleMonth));
    terms_->setAdvancePeriod(Number(1U));
}

// Totals are all that a balance asks of transactions; the bond is a term.
void TenureDraft::addPaid(const TKTenure& tenure) const {
    const auto add = [&](const Decimal& amount, bool isAdjustment) {
        TKTenureTransaction* transaction = terms_->createTransaction();
        transaction->setAmount(amount);
        transaction->setAdjustment(Number(isAdjustment));
    };
    static_cast<void>(reckon([&] {
        add(tenure.totalIncome(), false);
        add(tenure.totalAdjustment() + tenure.bondAmount().value_or(Decimal::zero()), true);
        return true;
    }));
}

void TenureDraft::set(const std::function<void(TKTenure&)>& change) const {
    static_cast<void>(reckon([&] { return change(*terms_), true; }));
}

void TenureDraft::takeUsualTermsOf(const TKProperty& property) const {
    set([&](TKTenure& terms) {
        if (property.rentalBillingCycle() && property.rentalPeriod()) {
            terms.setRentalBillingCycle(property.rentalBillingCycle());
            terms.setRentalPeriod(property.rentalPeriod());
            if (terms.advancePeriod()) {
                terms.setAdvanceBillingCycle(property.rentalBillingCycle());
                terms.setAdvancePeriod(property.rentalPeriod());
            }
        }
        if (property.rentalAmount()) terms.setRentalAmount(property.rentalAmount());
        if (property.bondAmount()) terms.setBondAmount(property.bondAmount());
    });
}

TenureDraft::Fault TenureDraft::fault() const {
    if (!terms_->startDate()) return Fault::NoStart;
    if (!terms_->validateDuration(nullptr)) return Fault::EndBeforeStart;
    return preview() ? Fault::None : Fault::Unreckonable;
}

Reckoned<TenureDraft::Preview> TenureDraft::preview() const {
    return reckon([&] { return Preview{nextLines(), terms_->totalCost(), terms_->balance()}; });
}

// The statement of a later day tells what is charged by then.
std::vector<TenureDraft::Line> TenureDraft::nextLines() const {
    const Date today = session_.today();
    std::vector<Line> lines;
    const auto start = terms_->startDate();
    if (!start || !terms_->rentalAmount()) return lines;
    const Date from = std::max(today, *start);
    const auto later =
        terms_->rentalPeriodicBilling()->dateWithPeriodOffsetFromStartDate(PreviewLines + 2, from);
    const DayMoved moved(*terms_, later.value_or(from));
    const Schedule schedule(*terms_);
    const auto statement = terms_->statement();
    for (const TKStatementItem& item : *statement->items()) {
        const TKLedgerTransaction& charge = *item.transaction();
        if (lines.size() == PreviewLines || !TKTenure::isGenerated(charge)) continue;
        const auto when = charge.when();
        if (!when || *when <= today) continue;
        const auto what = charge.what();
        lines.push_back({when, what ? what->string() : std::string(), charge.amount()});
    }
    return lines;
}

std::optional<TenureDraft::DayShort> TenureDraft::dayShort() const {
    const auto found = reckon([&]() -> std::optional<DayShort> {
        const auto start = terms_->startDate();
        const auto end = terms_->endDate();
        if (!start || !end || *end < *start || !terms_->rentalPeriod() || !terms_->rentalBillingCycle())
            return std::nullopt;
        const Calendar calendar = Calendar::current();
        const auto billing = terms_->rentalPeriodicBilling();
        const std::uint64_t days = calendar.daysFromTo(*start, *end);
        const Decimal periods = billing->periodsFromDateForDays(start, days);
        const Decimal withNextDay = billing->periodsFromDateForDays(start, days + 1);
        const auto isWhole = [](const Decimal& number) {
            return number == Decimal(number.unsignedIntegerValue());
        };
        if (isWhole(periods) || !isWhole(withNextDay)) return std::nullopt;
        const std::uint64_t whole = periods.unsignedIntegerValue();
        const auto boundary = billing->dateWithPeriodOffsetFromStartDate(whole, calendar.startOfDay(*start));
        const auto next = calendar.dateByAdding(platform::CalendarUnit::Day, 1, calendar.startOfDay(*end));
        if (!boundary || !next) return std::nullopt;
        return DayShort{whole, calendar.daysFromTo(*boundary, *end), *end, *next};
    });
    return found ? *found : std::nullopt;
}

void TenureDraft::applyTo(TKTenure& tenure) const {
    copyTerms(*terms_, tenure);
}

} // namespace estatebook::desktop
