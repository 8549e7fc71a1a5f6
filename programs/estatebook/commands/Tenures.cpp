// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Amounts.hpp"
#include "estatebook/OpenBook.hpp"
#include "estatebook/TextTable.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/text/DateFormatter.hpp"

#include <fmt/format.h>

#include <ostream>

namespace estatebook {

using document::forMessage;

void printTenures(const BookOptions& options, std::ostream& out) {
    constexpr std::size_t LongestShownName = 400;
    const OpenBook book = OpenBook::open(options.file, options.asOf);
    const platform::DecimalBehavior rounding = book.rounding();

    out << fmt::format("Tenures on {}, {}\n\n",
                       platform::DateFormatter::medium()->stringFromDate(book.asOf()), book.currencyName());
    TextTable table({{"Identifier"},
                     {"Tenure", TextTable::Align::Flexible},
                     {"Active"},
                     {"Balance", TextTable::Align::Decimal}});
    for (const OpenBook::Letting& letting : book.lettings()) {
        const TKTenure& tenure = *letting.object;
        const auto balance = reckon([&] {
            return amountText(tenure.balance().decimalNumberByRoundingAccordingToBehavior(rounding),
                              rounding.scale);
        });
        table.addRow({forMessage(letting.id), forMessage(tenure.name()->view(), LongestShownName),
                      tenure.isActive() ? "yes" : "",
                      balance.value.value_or(std::string(balance.error.words))});
    }
    table.print(out, TextTable::widthOfOutput());
}

} // namespace estatebook
