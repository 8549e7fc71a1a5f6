// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Listing.hpp"
#include "estatebook/document/JsonText.hpp"

#include "reports/MonthlyIncome.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace estatebook {

using platform::Ref;
using Align = TextTable::Align;

namespace {

/// "2025-03"; nothing for what has no date.
Listing::Cell monthCell(const MonthlyIncome& month, const platform::Calendar& calendar) {
    if (!month.month) return {};
    const platform::YearMonthDay first = calendar.civilDay(*month.month).yearMonthDay();
    return fmt::format("{:04}-{:02}", first.year, first.month);
}

/// The last so many months, without what has no date.
void keepLast(std::vector<MonthlyIncome>& months, std::uint64_t count) {
    std::erase_if(months, [](const MonthlyIncome& month) { return !month.month; });
    const std::size_t surplus = months.size() - std::min<std::size_t>(months.size(), count);
    months.erase(months.begin(), months.begin() + static_cast<std::ptrdiff_t>(surplus));
}

} // namespace

void printIncome(const IncomeOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.list.book.file, options.list.book.asOf);
    std::string heading = book.heading("Income by");
    std::vector<Ref<TKProperty>> properties;
    std::vector<Ref<TKTenure>> tenures;
    if (options.property) {
        const auto& [id, property] = book.propertyNamed(*options.property);
        properties.push_back(property);
        for (TKTenure& tenure : property->tenures()) tenures.emplace_back(&tenure);
        const auto name = property->fullName();
        heading += "\n" + document::forMessage(name ? name->view() : id, 400);
    } else {
        for (const auto& entry : book.properties()) properties.push_back(entry.object);
        for (const auto& entry : book.lettings()) tenures.push_back(entry.object);
    }
    auto reading = reckon([&] { return MonthlyIncome::ofLedgers(properties, tenures, book.asOf()); });
    if (!reading)
        throw Failure(ExitCode::BadData,
                      fmt::format("{}: the income of a month cannot be reckoned ({}); check the amounts",
                                  book.file(), reading.error().words));
    auto& months = *reading;
    if (options.months) keepLast(months, *options.months);

    Listing listing(book, "income",
                    {{.key = "month", .title = "Month", .absent = "no date"},
                     {"received", "Received", Align::Decimal, true},
                     {"ownIncome", "Own income", Align::Decimal, true},
                     {"ownCosts", "Own costs", Align::Decimal, true},
                     {"net", "Net", Align::Decimal, true},
                     {"adjustments", "Adjustments", Align::Decimal, true}});
    for (const MonthlyIncome& month : months)
        listing.addRow({monthCell(month, book.calendar()), month.received, month.ownIncome, month.ownCosts,
                        Listing::reckoned([&] { return month.net(); }), month.adjustments});
    listing.print(heading, options.list.format, out);
}

} // namespace estatebook
