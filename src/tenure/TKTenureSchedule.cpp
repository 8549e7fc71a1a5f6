// SPDX-License-Identifier: MIT
#include "billing/RoundingExtensions.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "statement/TKStatement.hpp"
#include "store/OwnedObjects.hpp"
#include "tenure/GeneratedLine.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

namespace estatebook {

using namespace platform;

namespace {

constinit Constant<String> bondText{std::string_view("Bond Debit")};

/// The lines of a statement in the making, each with the instant it sorts by. Lines without a date, or with one that is no
/// number, stand first.
class DatedLines {
public:
    explicit DatedLines(std::size_t capacity) {
        lines_.reserve(capacity);
        instants_.reserve(capacity);
    }
    void add(TKLedgerTransaction& line, const std::optional<Date>& when) {
        constexpr double First = -HUGE_VAL;
        const double instant =
            when && !std::isnan(when->secondsSinceReferenceDate) ? when->secondsSinceReferenceDate : First;
        isSorted_ = isSorted_ && (instants_.empty() || instants_.back() <= instant);
        instants_.push_back(instant);
        lines_.emplace_back(&line);
    }
    /// By instant; those of one instant as they were added.
    [[nodiscard]] std::vector<Ref<TKLedgerTransaction>> sorted() && {
        if (isSorted_) return std::move(lines_);
        std::vector<std::size_t> places(lines_.size());
        std::iota(places.begin(), places.end(), std::size_t{0});
        std::ranges::stable_sort(places, {}, [&](std::size_t place) { return instants_[place]; });
        std::vector<Ref<TKLedgerTransaction>> sorted;
        sorted.reserve(lines_.size());
        for (const std::size_t place : places) sorted.push_back(std::move(lines_[place]));
        return sorted;
    }

private:
    std::vector<Ref<TKLedgerTransaction>> lines_;
    std::vector<double> instants_;
    bool isSorted_ = true;
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
    auto rows = billing->periodsFromCount(startDate(), count.unsignedIntegerValue());
    if (const auto end = endDate(); end && !rows->empty()) rows->back().setEndDate(*end);
    setPeriods(rows);
    return rows;
}

Ref<TKStatement> TKTenure::statement() const {
    UndoManager* undo = managedObjectContext() ? managedObjectContext()->undoManager().get() : nullptr;
    if (undo) undo->disableUndoRegistration();

    const auto birth = ManagedObjectBirth::withoutContext(*entity().model().entityNamed("TenureTransaction"));

    const auto recorded = transactions();
    const Ref<Array> schedule = periods();
    std::vector<const TKPeriod*> rows = periodsOf(schedule.get());
    DatedLines lines(recorded.count() + rows.size() + 1);
    for (TKTransaction& transaction : recorded) lines.add(transaction, transaction.when());

    const auto texts = makeRef<RentTexts>(rows.size());
    ObjectBlock<GeneratedLine> generated(rows.size() + 1);
    if (const auto bond = bondAmount(); bond && *bond > Decimal::zero())
        lines.add(generated.emplace(birth, decimalNumberByNegating(*bond), startDate(),
                                    Ref<String>(bondText.get())),
                  startDate());

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
        lines.add(generated.emplace(birth, amount, period.billingDate(), texts, place), period.billingDate());
    };
    for (const TKPeriod* period : rows) addRent(*period, rent, RentTexts::Opening::Rent);
    if (partial) {
        const auto part = rent ? std::optional(rent->decimalNumberByMultiplyingBy(share)) : std::nullopt;
        addRent(*partial, part, RentTexts::Opening::PartialRent);
    }

    if (undo) undo->enableUndoRegistration();
    return TKStatement::initWithTransactionsMetadata(std::move(lines).sorted());
}

} // namespace estatebook
