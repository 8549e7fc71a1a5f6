// SPDX-License-Identifier: MIT
#include "billing/RoundingExtensions.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "statement/TKStatement.hpp"
#include "store/OwnedObjects.hpp"
#include "tenure/GeneratedLine.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

namespace estatebook {

using namespace platform;

namespace {

constinit Constant<String> bondText{std::string_view("Bond Debit")};

/// A line with the instant it sorts by. Lines without a date, or with one that is no number, stand first.
struct DatedLine {
    double when;
    Ref<TKLedgerTransaction> line;

    [[nodiscard]] static double sortingInstant(const std::optional<Date>& date) noexcept {
        constexpr double First = -HUGE_VAL;
        if (!date || std::isnan(date->secondsSinceReferenceDate)) return First;
        return date->secondsSinceReferenceDate;
    }
};

/// The schedule as its periods; what else somebody may have stored there is passed over.
std::vector<const TKPeriod*> periodsOf(const Array* array) {
    std::vector<const TKPeriod*> periods;
    if (!array) return periods;
    periods.reserve(array->count());
    if (const auto* row = dynamic_cast<const ArrayOf<TKPeriod>*>(array)) {
        for (const TKPeriod& period : *row) periods.push_back(&period);
    } else {
        for (std::size_t index = 0; index < array->count(); ++index)
            if (const auto period = array->at(index).as<TKPeriod>()) periods.push_back(period.get());
    }
    return periods;
}

} // namespace

Ref<ArrayOf<TKPeriod>> TKTenure::updatePeriods() {
    const auto billing = rentalPeriodicBilling();
    Decimal count = chargablePeriods();
    if (unsignedValue(chargeBehaviour()) == TKChargeBehaviourPartial) count = decimalNumberByCeiling(count);
    const auto rows = billing->periodsFromCount(startDate(), count.unsignedIntegerValue());
    if (const auto end = endDate(); end && !rows->empty()) rows->back().setEndDate(*end);
    setPeriods(rows);
    return rows;
}

Ref<TKStatement> TKTenure::statement() const {
    UndoManager* undo = managedObjectContext() ? managedObjectContext()->undoManager().get() : nullptr;
    if (undo) undo->disableUndoRegistration();

    const auto birth = ManagedObjectBirth::withoutContext(*entity().model().entityNamed("TenureTransaction"));

    std::vector<DatedLine> lines;
    const auto recorded = transactions();
    const Ref<Array> schedule = periods();
    std::vector<const TKPeriod*> rows = periodsOf(schedule.get());
    lines.reserve(recorded.count() + rows.size() + 1);
    for (TKTransaction& transaction : recorded)
        lines.push_back(
            {DatedLine::sortingInstant(transaction.when()), Ref<TKLedgerTransaction>(&transaction)});

    const auto texts = makeRef<RentTexts>(rows.size());
    ObjectBlock<GeneratedLine> generated(rows.size() + 1);
    const auto add = [&](GeneratedLine& line) {
        lines.push_back({DatedLine::sortingInstant(line.when()), Ref<TKLedgerTransaction>(&line)});
    };
    if (const auto bond = bondAmount(); bond && *bond > Decimal::zero())
        add(generated.emplace(birth, decimalNumberByNegating(*bond), startDate(),
                              Ref<String>(bondText.get())));

    const Decimal share = fractionalPart(chargablePeriods());
    const TKPeriod* partial = nullptr;
    if (share != Decimal::zero() && !rows.empty()) {
        partial = rows.back();
        rows.pop_back();
    }
    std::optional<Decimal> rent = rentalAmount();
    if (rent) rent = decimalNumberByNegating(*rent);
    const auto addRent = [&](const TKPeriod& period, const std::optional<Decimal>& amount,
                             RentTexts::Opening opening) {
        const std::uint32_t place = texts->add(opening, period.startDate(), period.endDate());
        add(generated.emplace(birth, amount, period.billingDate(), texts, place));
    };
    for (const TKPeriod* period : rows) addRent(*period, rent, RentTexts::Opening::Rent);
    if (partial) {
        const auto part = rent ? std::optional(rent->decimalNumberByMultiplyingBy(share)) : std::nullopt;
        addRent(*partial, part, RentTexts::Opening::PartialRent);
    }

    // Undated lines were given the earliest instant of all, so that this is a strict order.
    if (!std::ranges::is_sorted(lines, {}, &DatedLine::when))
        std::ranges::stable_sort(lines, {}, &DatedLine::when);
    std::vector<Ref<TKLedgerTransaction>> sorted;
    sorted.reserve(lines.size());
    for (DatedLine& line : lines) sorted.push_back(std::move(line.line));

    if (undo) undo->enableUndoRegistration();
    return TKStatement::initWithTransactionsMetadata(sorted);
}

} // namespace estatebook
