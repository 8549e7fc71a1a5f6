// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/DueFacts.hpp"
#include "estatebook/Listing.hpp"

namespace estatebook {

using Align = TextTable::Align;

namespace {

bool isSettled(const TKDuePeriods& due) {
    const auto& balance = due.balance();
    return (!balance || balance->isZero()) && due.outstanding().length == 0;
}

} // namespace

void printDue(const ListOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    Listing listing(book, "due",
                    {{"id", "Identifier"},
                     {"name", "Tenure", Align::Flexible},
                     {"unpaidPeriods", "Unpaid", Align::Right},
                     {"owed", "Owed", Align::Decimal},
                     {"nextPeriod", "Next from"}});
    for (const OpenBook::Letting& letting : book.lettings()) {
        const Schedule schedule(*letting.object);
        const Listing::Cell name = Listing::cell(letting.object->name());
        const auto reading = reckon([&] { return letting.object->duePeriods(); });
        if (!reading) {
            listing.addRow({letting.id, name, {}, reading.error(), {}});
            continue;
        }
        const TKDuePeriods& due = **reading;
        if (isSettled(due) && !due.next()) continue;
        listing.addRow({letting.id, name, Listing::cell(unpaidPeriods(due)), Listing::cell(due.balance()),
                        Listing::cell(nextPeriodStart(due))});
    }
    listing.print(book.heading("Due on"), options.format, out);
}

} // namespace estatebook
