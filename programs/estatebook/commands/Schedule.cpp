// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Amounts.hpp"
#include "estatebook/OpenBook.hpp"
#include "estatebook/RentText.hpp"
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

/// The first periods by the terms, whether charged by now or not, up to the end of the tenure or of the year 9999.
std::vector<Ref<TKPeriod>> firstPeriods(const TKTenure& tenure, std::uint64_t count) {
    const auto billing = tenure.rentalPeriodicBilling();
    if (billing->period() == 0 || billing->periodicCalendarUnits() == 0)
        throw DivideByZeroException("the terms have no rhythm");
    const auto anchor = billing->dateWithZeroOffset(tenure.startDate());
    const auto last = tenure.endDate();
    std::vector<Ref<TKPeriod>> periods;
    for (auto start = anchor; start && periods.size() < count && !(last && start >= last);) {
        const auto end =
            reckon([&] { return billing->dateWithPeriodOffsetFromStartDate(periods.size() + 1, anchor); });
        if (!end) break;
        periods.push_back(TKPeriod::periodWithStartDateEndDate(start, *end));
        TKPeriod& period = *periods.back();
        if (billing->periodBillingMode() == TKPeriodBillingModeEnd) period.setBillingDate(*end);
        if (last && period.endDate() > last) period.setEndDate(last);
        start = *end;
    }
    return periods;
}

std::vector<Ref<TKPeriod>> periodsOf(const TKPeriodRow& row) {
    std::vector<Ref<TKPeriod>> periods;
    for (TKPeriod& period : row) periods.emplace_back(&period);
    return periods;
}

std::string counted(const Decimal& count, std::string_view thing) {
    return fmt::format("{} {}{}", count.toString(), thing, count == Decimal::one() ? "" : "s");
}

std::string termsText(const TKTenure& tenure, const DecimalBehavior& rounding) {
    const auto amount = tenure.rentalAmount();
    if (!amount) return "No rent";
    const auto billing = tenure.rentalPeriodicBilling();
    return fmt::format("Rent {} {}, billed at the {} of each period", amountText(*amount, rounding.scale),
                       rentRhythm(tenure),
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
        return schedule.row() ? periodsOf(**schedule.row()) : std::vector<Ref<TKPeriod>>();
    });
    if (!schedule.row()) throw book.unreckonable(letting, schedule.row().error());
    if (!periods) throw book.unreckonable(letting, periods.error());

    const std::size_t width = TextTable::widthOfOutput();
    const Ref<DateFormatter> dates = DateFormatter::medium();
    const std::string name = forMessage(tenure.name()->view(), LongestShownName);
    for (const std::string& line : wrapText(name, width, MaximalLinesOfName)) out << line << '\n';
    out << termsText(tenure, book.rounding()) << ", " << book.currencyName() << '\n';
    const DecimalBehavior shown{.scale = ShownPeriodDigits};
    out << fmt::format(
        "Charged by {}: {}, {}\n\n", dates->stringFromDate(book.asOf()),
        counted(tenure.chargablePeriods().decimalNumberByRoundingAccordingToBehavior(shown), "period"),
        counted(tenure.chargableDays().unsignedIntegerValue(), "day"));

    const auto dateCell = [&](const std::optional<Date>& date) {
        return date ? dates->stringFromDate(*date) : "";
    };
    TextTable table({{"No.", TextTable::Align::Right},
                     {"From"},
                     {"Until"},
                     {"Days", TextTable::Align::Right},
                     {"Billed"}});
    std::size_t number = 0;
    for (const Ref<TKPeriod>& period : *periods)
        table.addRow({std::to_string(++number), dateCell(period->startDate()), dateCell(period->endDate()),
                      std::to_string(period->days()), dateCell(period->billingDate())});
    table.print(out, width);
}

} // namespace estatebook
