// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Listing.hpp"
#include "estatebook/RentText.hpp"

#include "reports/RentRoll.hpp"

namespace estatebook {

using Align = TextTable::Align;

void printRentRoll(const ListOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    Listing listing(book, "rentRoll",
                    {{"id"},
                     {"name", "Tenure", Align::Flexible},
                     {"property"},
                     {"tenant"},
                     {"start"},
                     {"end"},
                     {"rent", "Rent", Align::Decimal},
                     {"rhythm", "Rhythm"},
                     {"paidTo", "Paid to"},
                     {"nextDue", "Next due"},
                     {"balance", "Balance", Align::Decimal, true}});
    for (const auto& [id, tenure] : book.lettings()) {
        if (!tenure->isActive()) continue;
        const Listing::Cell name = Listing::cell(tenure->name());
        const auto entry = reckon([&] { return RentRollEntry::ofTenure(tenure); });
        const RentRollEntry known = entry ? *entry : RentRollEntry::ofTerms(tenure);
        const Listing::Cell rhythm = known.rent ? Listing::Cell(rentRhythm(*tenure)) : Listing::Cell();
        listing.addRow({id, name, Listing::cell(known.property), Listing::cell(known.tenant),
                        Listing::cell(known.start), Listing::cell(known.end), Listing::cell(known.rent),
                        rhythm, Listing::cell(known.paidTo), Listing::cell(known.nextDue),
                        entry ? Listing::Cell(known.balance) : Listing::Cell(entry.error())});
    }
    listing.print(book.heading("Rent roll of"), options.format, out);
}

} // namespace estatebook
