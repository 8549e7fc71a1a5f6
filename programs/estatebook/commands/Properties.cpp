// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Listing.hpp"

namespace estatebook {

using Align = TextTable::Align;

void printProperties(const ListOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    Listing listing(book, "properties",
                    {{"id", "Identifier"},
                     {"name", "Property", Align::Flexible},
                     {"let", "Let"},
                     {"currentTenants"},
                     {"received", "Received", Align::Decimal, true},
                     {"own", "Own", Align::Decimal, true},
                     {"balance", "Balance", Align::Decimal, true},
                     {"tenureBalance", "Tenants", Align::Decimal, true},
                     {"active"},
                     {"balanced"}});
    for (const auto& [id, object] : book.properties()) {
        const TKProperty& property = *object;
        listing.addRow({id, Listing::cell(property.fullName()), property.currentTenures()->count() > 0,
                        Listing::reckoned([&] { return property.currentTenuresNames(); }),
                        Listing::reckoned([&] { return property.tenureIncome(); }),
                        Listing::reckoned([&] { return property.totalIncome(); }),
                        Listing::reckoned([&] { return property.balance(); }),
                        Listing::reckoned([&] { return property.tenureBalance(); }), property.isActive(),
                        property.isBalanced()});
    }
    listing.print(book.heading("Properties on"), options.format, out);
}

} // namespace estatebook
