// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Listing.hpp"

namespace estatebook {

using Align = TextTable::Align;

void printTenures(const ListOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    Listing listing(book, "tenures",
                    {{"id", "Identifier"},
                     {"name", "Tenure", Align::Flexible},
                     {"active", "Active"},
                     {"balance", "Balance", Align::Decimal}});
    for (const OpenBook::Letting& letting : book.lettings()) {
        const TKTenure& tenure = *letting.object;
        listing.addRow({letting.id, Listing::cell(tenure.name()), tenure.isActive(),
                        Listing::reckoned([&] { return tenure.balance(); })});
    }
    listing.print(book.heading("Tenures on"), options.format, out);
}

} // namespace estatebook
