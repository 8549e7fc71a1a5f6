// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Amounts.hpp"
#include "estatebook/OpenBook.hpp"
#include "estatebook/TextTable.hpp"
#include "estatebook/document/JsonText.hpp"

#include "billing/TKDuePeriods.hpp"
#include "platform/text/DateFormatter.hpp"

#include <fmt/format.h>

#include <ostream>

namespace estatebook {

using document::forMessage;
using platform::DateFormatter;
using platform::DecimalBehavior;
using platform::Ref;

namespace {

constexpr std::size_t LongestShownName = 400;

std::string periodsText(Range outstanding) {
    return outstanding.location == Range::NotFound ? "" : std::to_string(outstanding.length);
}

/// Empty for a tenure that owes nothing and has no further period.
std::vector<std::string> cellsOf(const TKDuePeriods& due, const DecimalBehavior& rounding,
                                 const DateFormatter& dates) {
    const auto& balance = due.balance();
    const bool isSettled = (!balance || balance->isZero()) && due.outstanding().length == 0;
    if (isSettled && !due.next()) return {};
    std::string owed;
    if (balance)
        owed = amountText(balance->decimalNumberByRoundingAccordingToBehavior(rounding), rounding.scale);
    const auto next = due.next() ? due.next()->startDate() : std::nullopt;
    return {periodsText(due.outstanding()), std::move(owed), next ? dates.stringFromDate(*next) : ""};
}

} // namespace

void printDue(const BookOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.file, options.asOf);
    const DecimalBehavior rounding = book.rounding();
    const Ref<DateFormatter> dates = DateFormatter::medium();

    out << fmt::format("Due on {}, {}\n\n", dates->stringFromDate(book.asOf()), book.currencyName());
    TextTable table({{"Identifier"},
                     {"Tenure", TextTable::Align::Flexible},
                     {"Unpaid", TextTable::Align::Right},
                     {"Owed", TextTable::Align::Decimal},
                     {"Next from"}});
    for (const OpenBook::Letting& letting : book.lettings()) {
        const Schedule schedule(*letting.object);
        const auto cells = reckon([&] { return cellsOf(*letting.object->duePeriods(), rounding, *dates); });
        if (cells && cells.value->empty()) continue;
        std::vector<std::string> row{forMessage(letting.id),
                                     forMessage(letting.object->name()->view(), LongestShownName)};
        if (cells)
            row.insert(row.end(), cells.value->begin(), cells.value->end());
        else
            row.insert(row.end(), {"", std::string(cells.error.words), ""});
        table.addRow(std::move(row));
    }
    table.print(out, TextTable::widthOfOutput());
}

} // namespace estatebook
