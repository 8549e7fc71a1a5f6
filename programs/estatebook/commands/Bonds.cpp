// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Listing.hpp"

#include "reports/BondLedger.hpp"

namespace estatebook {

using Align = TextTable::Align;

void printBonds(const BondOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.list.book.file, options.list.book.asOf);
    Listing listing(book, "bonds",
                    {{"id"},
                     {"name", "Tenure", Align::Flexible},
                     {"charged", "Charged", Align::Decimal, true},
                     {"paid", "Paid", Align::Decimal, true},
                     {"released", "Released", Align::Decimal, true},
                     {"returned", "Returned", Align::Decimal, true},
                     {"held", "Held", Align::Decimal, true}});
    for (const auto& [id, tenure] : book.lettings()) {
        const Listing::Cell name = Listing::cell(tenure->name());
        const auto entry =
            reckon([&] { return BondLedgerEntry::ofTenure(tenure, book.asOf(), options.tag); });
        if (!entry)
            listing.addRow({id, name, {}, {}, {}, {}, entry.error()});
        else if (!entry->isEmpty())
            listing.addRow(
                {id, name, entry->charged, entry->paid, entry->released, entry->returned, entry->held()});
    }
    listing.print(book.heading("Bonds on"), options.list.format, out);
}

} // namespace estatebook
