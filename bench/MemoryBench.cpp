// SPDX-License-Identifier: MIT
// A saved book of 100,000 transactions of one tenure: how long it takes to make, and in the counters the bytes of one
// transaction itself and what the heap holds for each, with the lists it stands in and the allocator's own. The limit is
// a list of bare structures with the same values.

#include "platform/persistence/ManagedObjectContext.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "tenure/TKTenure.hpp"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <memory>
#include <optional>
#include <vector>

namespace {

using namespace estatebook;
using namespace estatebook::platform;

constexpr std::int64_t Transactions = 100000;

Decimal amountOf(std::int64_t number) {
    return Decimal(number) / 100;
}
Date dateOf(std::int64_t number) {
    return {static_cast<double>(number) * 3600};
}

/// Reports the bytes in use on the heap that came while `make` ran and the result lives.
template <class Make>
void measure(benchmark::State& state, std::size_t objectBytes, Make make) {
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::size_t before = mallinfo2().uordblks;
        const auto made = make();
        benchmark::DoNotOptimize(&made);
        bytes = mallinfo2().uordblks - before;
    }
    state.counters["object_bytes"] = static_cast<double>(objectBytes);
    state.counters["heap_bytes"] = static_cast<double>(bytes) / Transactions;
    state.SetItemsProcessed(state.iterations() * Transactions);
}

void transactionsOurs(benchmark::State& state) {
    measure(state, sizeof(TKTenureTransaction), [] {
        auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
        context->setUndoManager(nullptr);
        const auto tenure = context->insertNewObject<TKTenure>("Tenure");
        for (std::int64_t number = 0; number < Transactions; ++number) {
            TKTenureTransaction& transaction = *tenure->createTransaction();
            transaction.setAmount(amountOf(number));
            transaction.setWhen(dateOf(number));
        }
        context->save();
        return context;
    });
}

void transactionsLimit(benchmark::State& state) {
    struct Bare {
        std::optional<Decimal> amount;
        std::optional<Date> when;
    };
    measure(state, sizeof(Bare), [] {
        std::vector<std::unique_ptr<Bare>> all;
        for (std::int64_t number = 0; number < Transactions; ++number)
            all.push_back(std::make_unique<Bare>(amountOf(number), dateOf(number)));
        return all;
    });
}

BENCHMARK(transactionsOurs)->Name("BookOfTransactions/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(transactionsLimit)->Name("BookOfTransactions/limit")->Unit(benchmark::kMillisecond);

} // namespace
