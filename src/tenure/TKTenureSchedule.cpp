// SPDX-License-Identifier: MIT
#include "billing/RoundingExtensions.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "statement/TKStatement.hpp"
#include "store/OwnedObjects.hpp"
#include "tenure/GeneratedLines.hpp"
#include "tenure/TKTenure.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <typeinfo>
#include <utility>
#include <vector>

namespace estatebook {

using namespace platform;

namespace {

constinit Constant<String> bondText{std::string_view("Bond Debit")};

/// Before every other; lines without a date, or with one that is no number, stand first.
double instantOf(const std::optional<Date>& when) noexcept {
    constexpr double First = -HUGE_VAL;
    return when && !std::isnan(when->secondsSinceReferenceDate) ? when->secondsSinceReferenceDate : First;
}

/// The lines of a statement in the making.
class DatedLines {
public:
    explicit DatedLines(std::size_t capacity) : lines_(capacity) {}
    /// `when` is the line's own.
    void add(Ref<TKLedgerTransaction> line, std::optional<Date> when) {
        const double instant = instantOf(when);
        isSorted_ = isSorted_ && last_ <= instant;
        last_ = instant;
        lines_[count_++] = std::move(line);
    }
    /// By instant; those of one instant as they were added.
    [[nodiscard]] std::vector<Ref<TKLedgerTransaction>> sorted() && {
        lines_.resize(count_);
        if (!isSorted_) sort();
        return std::move(lines_);
    }

private:
    void sort() {
        std::vector<double> instants;
        instants.reserve(lines_.size());
        for (const auto& line : lines_) instants.push_back(instantOf(line->when()));
        std::vector<std::size_t> places(lines_.size());
        std::iota(places.begin(), places.end(), std::size_t{0});
        std::ranges::stable_sort(places, {}, [&](std::size_t place) { return instants[place]; });
        std::vector<Ref<TKLedgerTransaction>> sorted;
        sorted.reserve(lines_.size());
        for (const std::size_t place : places) sorted.push_back(std::move(lines_[place]));
        lines_ = std::move(sorted);
    }

    std::vector<Ref<TKLedgerTransaction>> lines_;
    std::size_t count_ = 0;
    double last_ = -HUGE_VAL;
    bool isSorted_ = true;
};

/// The schedule as its periods; what else somebody may have stored there is passed over.
Ref<ArrayOf<TKPeriod>> rowOf(const Ref<Array>& schedule) {
    if (auto row = refCast<ArrayOf<TKPeriod>>(schedule)) return row;
    std::vector<Ref<TKPeriod>> periods;
    for (std::size_t index = 0; schedule && index < schedule->count(); ++index)
        if (auto period = schedule->at(index).as<TKPeriod>()) periods.push_back(std::move(period));
    return ArrayOf<TKPeriod>::of(std::move(periods));
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

    const auto recorded = transactions();
    const auto rows = rowOf(periods());
    DatedLines lines(recorded.count() + rows->count() + 1);
    for (TKTransaction& transaction : recorded)
        lines.add(Ref<TKLedgerTransaction>(&transaction), transaction.when());

    const auto generated =
        GeneratedLines::make(*entity().model().entityNamed("TenureTransaction"), rows->count() + 1);
    if (const auto bond = bondAmount(); bond && *bond > Decimal::zero())
        lines.add(generated->add(decimalNumberByNegating(*bond), startDate(), Ref<String>(bondText.get())),
                  startDate());

    const Decimal share = fractionalPart(chargablePeriods());
    const bool endsInPart = share != Decimal::zero() && !rows->empty();
    std::optional<Decimal> rent = rentalAmount();
    if (rent) rent = decimalNumberByNegating(*rent);
    std::optional<Decimal> partialRent;
    if (rent && endsInPart) partialRent = rent->decimalNumberByMultiplyingBy(share);
    for (std::size_t index = 0; index < rows->count(); ++index) {
        const TKPeriod& period = (*rows)[index];
        const bool isPart = endsInPart && index + 1 == rows->count();
        lines.add(generated->addRent(isPart ? RentTexts::Opening::PartialRent : RentTexts::Opening::Rent,
                                     period, isPart ? partialRent : rent),
                  period.billingDate());
    }

    if (undo) undo->enableUndoRegistration();
    return TKStatement::initWithTransactionsMetadata(std::move(lines).sorted());
}

bool TKTenure::isGenerated(const TKLedgerTransaction& line) noexcept {
    return typeid(line) == typeid(GeneratedLine);
}

} // namespace estatebook
