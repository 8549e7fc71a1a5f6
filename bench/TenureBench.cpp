// SPDX-License-Identifier: MIT
// Statements of tenures against the least anybody could do for the same lines in the same run: for generated rent lines
// an ICU calendar and an ICU formatter that are made once and reused; for stored transactions a bare loop over the live
// objects.

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/text/Locale.hpp"
#include "statement/TKStatement.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "tenure/TKTenure.hpp"

#include <benchmark/benchmark.h>
#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace estatebook;
using namespace estatebook::platform;

constexpr const char* Zone = "Europe/Berlin";
constexpr int Periods = 1200;
/// 1 January 2025, 00:00 in Berlin.
constexpr double AnchorUnixSecond = 1735686000;

/// A book in Berlin with one tenure of 1200 monthly periods in arrears.
struct Letting {
    Letting() {
        TimeZone::setDefaultTimeZone(TimeZone::named(Zone));
        Locale::setCurrent(Locale::named("en_US"));
        context = TKManagedObjectModel::inMemoryManagedObjectContext();
        tenure = context->insertNewObject<TKTenure>("Tenure");
        const Date start = Date::fromUnixSeconds(AnchorUnixSecond);
        tenure->setStartDate(start);
        tenure->setRentalBillingCycle(Number(30u));
        tenure->setRentalPeriod(Number(1u));
        tenure->setRentalAmount(Decimal::parse("1234.50"));
        tenure->setCurrentDate(Calendar::current().dateByAdding(CalendarUnit::Month, Periods, start));
        tenure->updatePeriods();
    }
    Ref<ManagedObjectContext> context;
    Ref<TKTenure> tenure;
};

void GeneratedStatement_ours(benchmark::State& state) {
    const Letting letting;
    for (auto _ : state) {
        const auto statement = letting.tenure->statement();
        std::size_t bytes = 0;
        for (const TKStatementItem& line : *statement->items()) bytes += line.transaction()->what()->size();
        benchmark::DoNotOptimize(bytes);
        if (statement->items()->count() != Periods) state.SkipWithError("not the lines that were meant");
    }
    state.SetItemsProcessed(state.iterations() * Periods);
}

void GeneratedStatement_peer_icu(benchmark::State& state) {
    struct Line {
        double amount;
        std::string text;
        UDate when;
    };
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(Zone));
    icu::GregorianCalendar calendar(*zone, status);
    const std::unique_ptr<icu::DateFormat> formatter(
        icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale("en_US")));
    formatter->setTimeZone(*zone);
    const auto textOf = [&](UDate date) {
        icu::UnicodeString text;
        std::string utf8;
        formatter->format(date, text).toUTF8String(utf8);
        return utf8;
    };
    for (auto _ : state) {
        std::vector<std::unique_ptr<Line>> lines;
        lines.reserve(Periods);
        UDate start = AnchorUnixSecond * 1000;
        for (int period = 1; period <= Periods; ++period) {
            calendar.setTime(AnchorUnixSecond * 1000, status);
            calendar.add(UCAL_MONTH, period, status);
            const UDate end = calendar.getTime(status);
            lines.push_back(std::make_unique<Line>(
                Line{-1234.5, "Rent (" + textOf(start) + " \u2192 " + textOf(end) + ")", end}));
            start = end;
        }
        benchmark::DoNotOptimize(lines);
    }
    state.SetItemsProcessed(state.iterations() * Periods);
}

/// That many stored transactions, and the references a caller holds to them.
struct Transactions {
    explicit Transactions(std::int64_t count)
        : context(TKManagedObjectModel::inMemoryManagedObjectContext()) {
        lines.reserve(static_cast<std::size_t>(count));
        for (std::int64_t number = 0; number < count; ++number) {
            const auto transaction = context->insertNewObject<TKTenureTransaction>("TenureTransaction");
            transaction->setAmount(Decimal(number % 200003 - 100001) / 100);
            transaction->setWhen(Date{static_cast<double>(number) * 3600});
            lines.emplace_back(transaction);
        }
    }
    Ref<ManagedObjectContext> context;
    std::vector<Ref<TKLedgerTransaction>> lines;
};

/// The book of that many, kept from one measurement to the next.
const Transactions& transactions(std::int64_t count) {
    static std::unique_ptr<Transactions> kept;
    if (!kept || kept->lines.size() != static_cast<std::size_t>(count)) {
        kept.reset();
        kept = std::make_unique<Transactions>(count);
    }
    return *kept;
}

void StoredStatement_ours(benchmark::State& state) {
    const Transactions& book = transactions(state.range(0));
    for (auto _ : state) {
        const auto statement = TKStatement::initWithTransactionsMetadata(book.lines);
        benchmark::DoNotOptimize(statement->amount());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void StoredStatement_limit(benchmark::State& state) {
    const Transactions& book = transactions(state.range(0));
    for (auto _ : state) {
        std::vector<std::pair<const TKLedgerTransaction*, Decimal>> lines;
        lines.reserve(book.lines.size());
        Decimal balance;
        for (const auto& transaction : book.lines) {
            if (const auto amount = transaction->amount()) balance += *amount;
            lines.emplace_back(transaction.get(), balance);
        }
        benchmark::DoNotOptimize(lines.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(GeneratedStatement_ours)->Name("GeneratedStatement/ours");
BENCHMARK(GeneratedStatement_peer_icu)->Name("GeneratedStatement/peer_icu");
BENCHMARK(StoredStatement_ours)->Name("StoredStatement/ours")->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(StoredStatement_limit)->Name("StoredStatement/limit")->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(StoredStatement_ours)->Name("StoredStatement/ours")->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(StoredStatement_limit)->Name("StoredStatement/limit")->Arg(1000000)->Unit(benchmark::kMillisecond);

} // namespace
