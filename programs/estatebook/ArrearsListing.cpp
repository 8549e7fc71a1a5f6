// SPDX-License-Identifier: MIT
#include "estatebook/ArrearsListing.hpp"

#include "estatebook/DueFacts.hpp"
#include "estatebook/OutstandingLines.hpp"

#include "reports/Ageing.hpp"
#include "reports/RentRoll.hpp"
#include "statement/TKStatement.hpp"

#include <ostream>

namespace estatebook {

using platform::ArrayOf;
using platform::Date;
using platform::Decimal;
using platform::Ref;
using Align = TextTable::Align;

namespace {

/// What a tenure owes by a day.
struct Arrears {
    Ageing ageing;
    Ref<ArrayOf<TKStatementItem>> outstanding;

    static Arrears ofStatement(const TKStatement& statement, Date day) {
        return {Ageing::ofStatement(statement, day), outstandingOn(statement, day)};
    }
    /// Since when the balance has been below zero.
    [[nodiscard]] std::optional<Date> since() const {
        return outstanding->empty() ? std::nullopt : (*outstanding)[0].transaction()->when();
    }
    /// Less than half of the smallest unit is no debt.
    [[nodiscard]] bool isOwed(const platform::DecimalBehavior& rounding) const {
        return ageing.owed().decimalNumberByRoundingAccordingToBehavior(rounding) > Decimal::zero();
    }
};

std::vector<Listing::Cell> cellsOfTerms(const OpenBook::Letting& letting) {
    const RentRollEntry terms = RentRollEntry::ofTerms(letting.object);
    return {letting.id, Listing::cell(letting.object->name()), Listing::cell(terms.property),
            Listing::cell(terms.tenant)};
}

void appendTo(std::vector<Listing::Cell>& cells, const Arrears& arrears, const TKTenure& tenure) {
    std::optional<std::uint64_t> unpaid;
    std::optional<Date> next;
    // A tenure without rent may owe something, and has no periods.
    if (const auto due = reckon([&] { return tenure.duePeriods(); })) {
        unpaid = unpaidPeriods(**due);
        next = nextPeriodStart(**due);
    }
    cells.insert(cells.end(), {Listing::cell(arrears.since()), std::uint64_t{arrears.outstanding->count()},
                               Listing::cell(unpaid), Listing::cell(next), arrears.ageing.owed(),
                               Listing::cell(arrears.ageing.oldest)});
    cells.insert(cells.end(), arrears.ageing.buckets.begin(), arrears.ageing.buckets.end());
    cells.emplace_back(arrears.ageing.notYetDue);
}

} // namespace

ArrearsListing::ArrearsListing(const OpenBook& book)
    : book_(book), listing_(book, "arrears",
                            {{"id", "Identifier"},
                             {"name", "Tenure", Align::Flexible},
                             {"property"},
                             {"tenant"},
                             {"since", "Since"},
                             {"outstandingLines", "Lines", Align::Right},
                             {"unpaidPeriods", "Unpaid", Align::Right},
                             {"nextPeriod"},
                             {"owed", "Owed", Align::Decimal, true},
                             {"oldestDue"},
                             {"current", "Current", Align::Decimal, true},
                             {"days1To30", "1 to 30", Align::Decimal, true},
                             {"days31To60", "31 to 60", Align::Decimal, true},
                             {"days61To90", "61 to 90", Align::Decimal, true},
                             {"over90", "Over 90", Align::Decimal, true},
                             {"notYetDue", "Not yet due", Align::Decimal, true}}) {
    for (const OpenBook::Letting& letting : book.lettings()) add(letting);
}

void ArrearsListing::add(const OpenBook::Letting& letting) {
    TKTenure& tenure = *letting.object;
    const Schedule schedule(tenure);
    auto arrears = reckon([&] { return Arrears::ofStatement(*tenure.statement(), book_.asOf()); });
    if (!schedule.row()) arrears = schedule.row().error();
    if (arrears && !arrears->isOwed(book_.rounding())) return;

    std::vector<Listing::Cell> cells = cellsOfTerms(letting);
    if (arrears)
        appendTo(cells, *arrears, tenure);
    else
        cells.insert(cells.end(), {{}, {}, {}, {}, arrears.error()});
    cells.resize(listing_.columnCount());
    listing_.addRow(std::move(cells));
}

void ArrearsListing::print(Format format, std::ostream& out) const {
    const std::string heading = book_.heading("Arrears on");
    if (format != Format::Text) return listing_.print(heading, format, out);
    out << heading << "\n\n";
    if (listing_.isEmpty()) {
        out << "Nobody owes anything.\n";
        return;
    }
    listing_.printTable({"id", "name", "since", "outstandingLines", "unpaidPeriods", "owed"}, out);
    out << "\nOwed by days past due\n\n";
    listing_.printTable({"id", "current", "days1To30", "days31To60", "days61To90", "over90", "notYetDue"},
                        out);
}

} // namespace estatebook
