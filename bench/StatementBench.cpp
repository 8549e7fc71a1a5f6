// SPDX-License-Identifier: MIT

// Building a statement over plain objects, against the bare loop that reads the same amounts through the same
// protocol and puts each with its object into a new vector.

#include "statement/TKStatement.hpp"

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace estatebook;
using platform::Date;
using platform::Decimal;
using platform::Ref;

class PlainTransaction final : public platform::Adopts<platform::Object, TKLedgerTransaction> {
public:
    PlainTransaction(const Decimal& amount, Date when, Ref<TKTagNames> tags)
        : Adopts(platform::Counting::Local), amount_(amount), when_(when), tags_(std::move(tags)) {}
    [[nodiscard]] std::optional<Decimal> amount() const override { return amount_; }
    [[nodiscard]] Ref<platform::String> what() const override { return nullptr; }
    [[nodiscard]] std::optional<Date> when() const override { return when_; }
    [[nodiscard]] Ref<TKTagNames> tagNames() const override { return tags_; }

private:
    Decimal amount_;
    Date when_;
    Ref<TKTagNames> tags_;
};

enum class Tags { None, Shared, Own };

std::vector<Ref<TKLedgerTransaction>> transactions(std::int64_t count, Tags tags) {
    const Ref<TKTagNames> shared = TKTagNames::initWithEditableString("Rent, Flat 2");
    std::vector<Ref<TKLedgerTransaction>> made;
    made.reserve(static_cast<std::size_t>(count));
    for (std::int64_t index = 0; index < count; ++index) {
        Ref<TKTagNames> names;
        if (tags == Tags::Shared) names = shared;
        if (tags == Tags::Own)
            names = TKTagNames::initWithEditableString("Rent, Flat " + std::to_string(index % 20));
        const Decimal amount = Decimal(index % 2 ? 103550 : -100000 - index % 977) / 100;
        made.push_back(platform::makeRef<PlainTransaction>(amount, Date{static_cast<double>(index) * 3600.0},
                                                           std::move(names)));
    }
    return made;
}

template <Tags tags>
void ours(benchmark::State& state) {
    const auto lines = transactions(state.range(0), tags);
    for (auto _ : state) benchmark::DoNotOptimize(TKStatement::initWithTransactionsMetadata(lines));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Tags tags>
void oursInARange(benchmark::State& state) {
    const auto lines = transactions(state.range(0), tags);
    const auto metadata = platform::Dictionary::make(
        {{"startDate", Date{0}}, {"endDate", Date{static_cast<double>(state.range(0)) * 3600.0}}});
    for (auto _ : state) benchmark::DoNotOptimize(TKStatement::initWithTransactionsMetadata(lines, metadata));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Tags tags>
void bareLoop(benchmark::State& state) {
    const auto lines = transactions(state.range(0), tags);
    for (auto _ : state) {
        std::vector<std::pair<TKLedgerTransaction*, Decimal>> balances;
        balances.reserve(lines.size());
        Decimal balance;
        for (const Ref<TKLedgerTransaction>& line : lines) {
            if (const auto amount = line->amount()) balance += *amount;
            balances.emplace_back(line.get(), balance);
        }
        benchmark::DoNotOptimize(balances.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void byPrimaryTag(benchmark::State& state) {
    const auto lines = transactions(state.range(0), Tags::Own);
    const auto statement = TKStatement::initWithTransactionsMetadata(lines);
    for (auto _ : state) benchmark::DoNotOptimize(statement->byPrimaryTag());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(ours<Tags::None>)->Name("Statement/ours")->Arg(100000)->Arg(1000000);
BENCHMARK(bareLoop<Tags::None>)->Name("Statement/peer_bare_loop")->Arg(100000)->Arg(1000000);
BENCHMARK(oursInARange<Tags::None>)->Name("StatementInARange/ours")->Arg(100000);
BENCHMARK(bareLoop<Tags::None>)->Name("StatementInARange/peer_bare_loop")->Arg(100000);
BENCHMARK(ours<Tags::Shared>)->Name("StatementOfSharedTags/ours")->Arg(100000);
BENCHMARK(bareLoop<Tags::Shared>)->Name("StatementOfSharedTags/peer_bare_loop")->Arg(100000);
BENCHMARK(ours<Tags::Own>)->Name("StatementOfOwnTags/ours")->Arg(100000);
BENCHMARK(bareLoop<Tags::Own>)->Name("StatementOfOwnTags/peer_bare_loop")->Arg(100000);
BENCHMARK(byPrimaryTag)->Name("StatementByPrimaryTag/ours")->Arg(100000);
BENCHMARK(bareLoop<Tags::Own>)->Name("StatementByPrimaryTag/peer_bare_loop")->Arg(100000);

} // namespace
