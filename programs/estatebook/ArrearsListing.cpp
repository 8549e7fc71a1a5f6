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

/// Where "owed" stands among the columns; in its place stands why it cannot be told.
constexpr std::size_t OwedPlace = 8;

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
};

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
    const auto& [id, tenure] = letting;
    const Schedule schedule(*tenure);
    const RentRollEntry terms = RentRollEntry::ofTerms(tenure);
    std::vector<Listing::Cell> cells{id, Listing::cell(tenure->name()), Listing::cell(terms.property),
                                     Listing::cell(terms.tenant)};
    const auto append = [&](const auto&... values) { (cells.push_back(values), ...); };

    auto arrears = reckon([&] { return Arrears::ofStatement(*tenure->statement(), book_.asOf()); });
    if (!schedule.row()) arrears = {std::nullopt, schedule.row().error};
    if (arrears) {
        const auto& [ageing, outstanding] = *arrears.value;
        const Decimal owed = ageing.owed();
        if (!(owed.decimalNumberByRoundingAccordingToBehavior(book_.rounding()) > Decimal::zero())) return;
        // A tenure without rent may owe something, and has no periods.
        const auto due = reckon([&] { return tenure->duePeriods(); });
        append(Listing::cell(arrears.value->since()), std::uint64_t{outstanding->count()},
               due ? Listing::cell(unpaidPeriods(**due.value)) : Listing::cell(std::nullopt),
               due ? Listing::cell(nextPeriodStart(**due.value)) : Listing::cell(std::nullopt), owed,
               Listing::cell(ageing.oldest));
        for (const Decimal& bucket : ageing.buckets) append(bucket);
        append(ageing.notYetDue);
    } else {
        cells.resize(listing_.columnCount());
        cells[OwedPlace] = arrears.error;
    }
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
