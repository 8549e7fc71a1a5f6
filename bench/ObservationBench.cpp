// SPDX-License-Identifier: MIT

// What a change of a stored value costs: on an object that nobody observes, with one observer of the key, and with
// one observer of a key at the end of a chain. Peers are a plain member and a callback held by the object.

#include "platform/observation/ObservableObject.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKPropertyTransaction.hpp"
#include "store/TKTenureTransaction.hpp"
#include "tenure/TKTenure.hpp"

#include <benchmark/benchmark.h>

#include <functional>
#include <optional>
#include <vector>

namespace {

using namespace estatebook;
using namespace estatebook::platform;

class Counter final : public ObservableObject {
public:
    Counter() = default;
    std::size_t told = 0;
    void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject&,
                                                     const KeyValueChange&, const void*) override {
        ++told;
    }

private:
    ~Counter() override = default;
};

/// An optional decimal, a mark that it was changed, and whoever wants to know.
struct PlainPayment {
    std::optional<Decimal> amount;
    bool isChanged = false;
    std::vector<std::function<void()>> listeners;

    void setAmount(const std::optional<Decimal>& value) {
        amount = value;
        isChanged = true;
        for (const auto& each : listeners) each();
    }
};

template <class Payment>
void setAmounts(benchmark::State& state, Payment& payment) {
    const std::optional<Decimal> amounts[] = {Decimal(1), Decimal(2)};
    std::size_t next = 0;
    for (auto _ : state) {
        payment.setAmount(amounts[next ^= 1]);
        benchmark::ClobberMemory();
    }
}

void unobservedOurs(benchmark::State& state) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    const auto payment = context->insertNewObject<TKPropertyTransaction>("PropertyTransaction");
    setAmounts(state, *payment);
}

void unobservedPeer(benchmark::State& state) {
    PlainPayment payment;
    setAmounts(state, payment);
}

void observedOurs(benchmark::State& state) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    const auto payment = context->insertNewObject<TKPropertyTransaction>("PropertyTransaction");
    const auto counter = makeRef<Counter>();
    payment->addObserverForKeyPathOptionsContext(*counter, "amount", ObservingNothing, nullptr);
    setAmounts(state, *payment);
}

void observedPeer(benchmark::State& state) {
    PlainPayment payment;
    std::size_t told = 0;
    payment.listeners.emplace_back([&told] { ++told; });
    setAmounts(state, payment);
    benchmark::DoNotOptimize(told);
}

// amount -> the tenure's totals -> its balance.
void chainOurs(benchmark::State& state) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    const auto tenure = context->insertNewObject<TKTenure>("Tenure");
    auto* const payment = tenure->createTransaction();
    const auto counter = makeRef<Counter>();
    tenure->addObserverForKeyPathOptionsContext(*counter, "balance", ObservingNothing, nullptr);
    setAmounts(state, *payment);
}

} // namespace

BENCHMARK(unobservedOurs)->Name("SetUnobserved/ours");
BENCHMARK(unobservedPeer)->Name("SetUnobserved/peer_member");
BENCHMARK(observedOurs)->Name("SetObserved/ours");
BENCHMARK(observedPeer)->Name("SetObserved/peer_callback");
BENCHMARK(chainOurs)->Name("SetObservedThroughOwner/ours");
BENCHMARK(observedPeer)->Name("SetObservedThroughOwner/peer_callback");
