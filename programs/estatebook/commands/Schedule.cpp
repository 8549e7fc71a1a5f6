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
using platform::Date;
using platform::DateFormatter;
using platform::Decimal;
using platform::DecimalBehavior;
using platform::DivideByZeroException;
using platform::Ref;

namespace {

constexpr std::size_t LongestShownName = 1000;
constexpr std::size_t MaximalLinesOfName = 5;
constexpr short ShownPeriodDigits = 4;

/// The first periods by the terms, whether charged by now or not, up to the end of the tenure.
std::vector<Ref<TKPeriod>> firstPeriods(const TKTenure& tenure, std::uint64_t count) {
    const auto billing = tenure.rentalPeriodicBilling();
    if (billing->period() == 0 || billing->periodicCalendarUnits() == 0)
        throw DivideByZeroException("the terms have no rhythm");
    const auto end = tenure.endDate();
    std::vector<Ref<TKPeriod>> periods;
    for (std::uint64_t length = std::min<std::uint64_t>(count, 64);; length = std::min(count, 2 * length)) {
        const auto row = billing->periodsFromCount(tenure.startDate(), length);
        for (std::size_t i = periods.size(); i < row->count(); ++i) {
            TKPeriod& period = (*row)[i];
            if (end && period.startDate() >= end) return periods;
            if (end && period.endDate() > end) period.setEndDate(end);
            periods.emplace_back(&period);
        }
        if (length == count || row->empty()) return periods;
    }
}

std::vector<Ref<TKPeriod>> periodsOf(const TKPeriodRow& row) {
    std::vector<Ref<TKPeriod>> periods;
    for (TKPeriod& period : row) periods.emplace_back(&period);
    return periods;
}

std::string termsText(const TKTenure& tenure, const DecimalBehavior& rounding) {
    const auto amount = tenure.rentalAmount();
    const auto billing = tenure.rentalPeriodicBilling();
    const auto cycle = tenure.periodicNameForRentalBillingCycle();
    return fmt::format("Rent {} for {} {}, billed at the {} of each period",
                       amount ? amountText(*amount, rounding.scale) : "of no amount", billing->period(),
                       cycle ? cycle->string() : "periods",
                       billing->periodBillingMode() == TKPeriodBillingModeEnd ? "end" : "start");
}

} // namespace

void printSchedule(const ScheduleOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    const OpenBook::Letting& letting = book.lettingNamed(options.tenure);
    TKTenure& tenure = *letting.object;
    const Schedule schedule(tenure);
    const auto periods = reckon([&] {
        if (options.count) return firstPeriods(tenure, *options.count);
        return schedule.row() ? periodsOf(**schedule.row().value) : std::vector<Ref<TKPeriod>>();
    });
    if (!schedule.row()) throw book.unreckonable(letting, schedule.row().error);
    if (!periods) throw book.unreckonable(letting, periods.error);

    const std::size_t width = TextTable::widthOfOutput();
    const Ref<DateFormatter> dates = DateFormatter::medium();
    const std::string name = forMessage(tenure.name()->view(), LongestShownName);
    for (const std::string& line : wrapText(name, width, MaximalLinesOfName)) out << line << '\n';
    out << termsText(tenure, book.rounding()) << ", " << book.currencyName() << '\n';
    const DecimalBehavior shown{.scale = ShownPeriodDigits};
    out << fmt::format("Charged by {}: {} periods, {} days\n\n", dates->stringFromDate(book.asOf()),
                       tenure.chargablePeriods().decimalNumberByRoundingAccordingToBehavior(shown).toString(),
                       tenure.chargableDays().unsignedIntegerValue());

    const auto dateCell = [&](const std::optional<Date>& date) {
        return date ? dates->stringFromDate(*date) : "";
    };
    TextTable table({{"No.", TextTable::Align::Right},
                     {"From"},
                     {"Until"},
                     {"Days", TextTable::Align::Right},
                     {"Billed"}});
    std::size_t number = 0;
    for (const Ref<TKPeriod>& period : *periods.value)
        table.addRow({std::to_string(++number), dateCell(period->startDate()), dateCell(period->endDate()),
                      std::to_string(period->days()), dateCell(period->billingDate())});
    table.print(out, width);
}

} // namespace estatebook
