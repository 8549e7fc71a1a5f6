// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Listing.hpp"

namespace estatebook {

using Align = TextTable::Align;

void printTenants(const ListOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    Listing listing(book, "tenants",
                    {{"id", "Identifier"},
                     {"name", "Tenant", Align::Flexible},
                     {"active", "Active"},
                     {"balanced", "Balanced"},
                     {"paid", "Paid", Align::Decimal, true},
                     {"charged", "Charged", Align::Decimal, true},
                     {"balance", "Balance", Align::Decimal, true}});
    for (const auto& [id, object] : book.tenants()) {
        const TKTenant& tenant = *object;
        listing.addRow({id, Listing::cell(tenant.name()), tenant.isActive(),
                        Listing::reckoned([&] { return tenant.isBalanced(); }),
                        Listing::reckoned([&] { return tenant.totalIncome(); }),
                        Listing::reckoned([&] { return tenant.totalCost(); }),
                        Listing::reckoned([&] { return tenant.balance(); })});
    }
    listing.print(book.heading("Tenants on"), options.format, out);
}

} // namespace estatebook
