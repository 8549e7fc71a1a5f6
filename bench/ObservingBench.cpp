// SPDX-License-Identifier: MIT

// What it costs to be observed, and not to be: a change told to a thousand observers, to one at the end of a chain of
// dependent keys, and to one of very many objects; a write that nobody observes, also by name; and the member that joins
// very many. Peers are bare callbacks, a test of a mask, and signals of Qt where there is Qt.

#include "QtPeer.hpp"
#include "model/Keys.hpp"
#include "platform/observation/ObservableObject.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKPropertyNote.hpp"
#include "store/TKTenureTransaction.hpp"
#include "tenure/TKTenure.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace estatebook;
using namespace estatebook::platform;

constexpr std::size_t Observers = 1000;
constexpr std::size_t Objects = 100000;

class Counter final : public ObservableObject {
public:
    Counter() = default;
    std::uint64_t told = 0;
    void observeValueForKeyPathOfObjectChangeContext(std::string_view, ObservableObject&,
                                                     const KeyValueChange&, const void*) override {
        ++told;
    }

private:
    ~Counter() override = default;
};

/// An object with a number, and a chain of so many keys that are derived from it one after another.
template <std::size_t Length>
class Chain final : public ObservableObject {
public:
    static constexpr Key link(std::size_t number) { return Key(static_cast<std::uint16_t>(1 + number)); }
    static constexpr std::array<DependencyRow, Length> Dependencies = [] {
        std::array<DependencyRow, Length> rows;
        for (std::size_t number = 0; number < Length; ++number)
            rows[number] = DependencyRow(link(number + 1), {link(number)});
        return rows;
    }();
    static constexpr auto DependentKeys = closureOf(Dependencies);
    static const ClassDescription Class;

    Chain() = default;
    [[nodiscard]] const ClassDescription& classDescription() const noexcept override { return Class; }
    [[nodiscard]] std::uint64_t amount() const { return amount_; }
    void setAmount(std::uint64_t amount) {
        change(link(0), [&] { amount_ = amount; });
    }

private:
    ~Chain() override = default;
    std::uint64_t amount_ = 0;
};

template <std::size_t Length>
constexpr Property ChainProperties[] = {
    writable<&Chain<Length>::amount, &Chain<Length>::setAmount>(Chain<Length>::link(0))};

template <std::size_t Length>
constinit const ClassDescription Chain<Length>::Class("Chain", nullptr, ChainProperties<Length>, Dependencies,
                                                      dependentsIn<DependentKeys>, announcing<Chain<Length>>);

using Plain = Chain<1>;

template <class Object>
void setAmounts(benchmark::State& state, Object& object) {
    std::uint64_t amount = 0;
    for (auto _ : state) {
        object.setAmount(++amount);
        benchmark::ClobberMemory();
    }
}

/// What an object does at the least that can be observed at all.
class Masked {
public:
    __attribute__((noinline)) void notify() { ++told_; }
    void setAmount(std::uint64_t amount) {
        if (mask_ & 2) notify();
        amount_ = amount;
    }

private:
    std::uint64_t mask_ = 0;
    std::uint64_t amount_ = 0;
    std::uint64_t told_ = 0;
};

/// The same with a date that may be absent, and a setter that is called in a library as ours is.
class MaskedNote {
public:
    __attribute__((noinline)) void setCreatedDate(const std::optional<Date>& date) {
        if (mask_ & 2) notify();
        date_ = date;
    }

private:
    __attribute__((noinline)) void notify() { ++told_; }
    std::uint64_t mask_ = 0;
    std::uint64_t told_ = 0;
    std::optional<Date> date_;
};

/// An object that calls whoever wants to know.
class Calling {
public:
    using Function = void (*)(void* context, const Calling& object);
    void add(Function function, void* context) { listeners_.emplace_back(function, context); }
    void setAmount(std::uint64_t amount) {
        amount_ = amount;
        for (const auto& [function, context] : listeners_) function(context, *this);
    }

private:
    std::uint64_t amount_ = 0;
    std::vector<std::pair<Function, void*>> listeners_;
};

// A thousand observers of a key

void thousandOurs(benchmark::State& state) {
    const auto object = makeRef<Plain>();
    std::vector<Ref<Counter>> counters;
    for (std::size_t number = 0; number < Observers; ++number) {
        counters.push_back(makeRef<Counter>());
        object->addObserverForKeyPathOptionsContext(*counters.back(), Plain::link(0).name(), ObservingNothing,
                                                    nullptr);
    }
    setAmounts(state, *object);
}

void thousandCallbacks(benchmark::State& state) {
    const auto object = makeRef<Plain>();
    std::vector<ObservationToken> tokens;
    std::vector<std::unique_ptr<std::uint64_t>> counters;
    for (std::size_t number = 0; number < Observers; ++number) {
        counters.push_back(std::make_unique<std::uint64_t>(0));
        tokens.push_back(object->observe(Plain::link(0).name(), [told = counters.back().get()] { ++*told; }));
    }
    setAmounts(state, *object);
}

void thousandFunctions(benchmark::State& state) {
    Calling object;
    std::vector<std::unique_ptr<std::uint64_t>> counters;
    for (std::size_t number = 0; number < Observers; ++number) {
        counters.push_back(std::make_unique<std::uint64_t>(0));
        object.add([](void* context, const Calling&) { ++*static_cast<std::uint64_t*>(context); },
                   counters.back().get());
    }
    setAmounts(state, object);
}

// One observer at the end of a chain

template <std::size_t Length>
void chainOurs(benchmark::State& state) {
    const auto object = makeRef<Chain<Length>>();
    const auto counter = makeRef<Counter>();
    object->addObserverForKeyPathOptionsContext(*counter, Chain<Length>::link(Length).name(),
                                                ObservingNothing, nullptr);
    setAmounts(state, *object);
}

// One of very many objects

/// The objects in an order that no cache foresees.
std::vector<std::size_t> shuffled() {
    std::vector<std::size_t> order(Objects);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::shuffle(order, std::mt19937(1));
    return order;
}

std::vector<std::size_t> inTurn() {
    std::vector<std::size_t> order(Objects);
    std::iota(order.begin(), order.end(), std::size_t{0});
    return order;
}

template <class Handles>
void setOneOfMany(benchmark::State& state, const Handles& objects) {
    const std::vector<std::size_t> order = state.range(0) ? inTurn() : shuffled();
    std::size_t next = 0;
    std::uint64_t amount = 0;
    for (auto _ : state) {
        objects[order[next]]->setAmount(++amount);
        next = next + 1 == Objects ? 0 : next + 1;
    }
}

/// An object that holds one function to call, elsewhere: two places of memory, as few as there can be.
class Bare {
public:
    explicit Bare(std::uint64_t& told)
        : listener_(std::make_unique<Listener>(
              Listener{[](void* context) { ++*static_cast<std::uint64_t*>(context); }, &told})) {}
    void setAmount(std::uint64_t amount) {
        amount_ = amount;
        listener_->function(listener_->context);
    }

private:
    struct Listener {
        void (*function)(void* context);
        void* context;
    };
    std::uint64_t amount_ = 0;
    std::unique_ptr<Listener> listener_;
};

void oneOfManyBare(benchmark::State& state) {
    std::uint64_t told = 0;
    std::vector<std::unique_ptr<Bare>> objects;
    for (std::size_t number = 0; number < Objects; ++number) objects.push_back(std::make_unique<Bare>(told));
    setOneOfMany(state, objects);
}

void oneOfManyOurs(benchmark::State& state) {
    std::vector<Ref<Plain>> objects;
    const auto counter = makeRef<Counter>();
    for (std::size_t number = 0; number < Objects; ++number) {
        objects.push_back(makeRef<Plain>());
        objects.back()->addObserverForKeyPathOptionsContext(*counter, Plain::link(0).name(), ObservingNothing,
                                                            nullptr);
    }
    setOneOfMany(state, objects);
}

// A write that nobody observes

void unobservedOurs(benchmark::State& state) {
    const auto object = makeRef<Plain>();
    setAmounts(state, *object);
}

void unobservedMasked(benchmark::State& state) {
    Masked object;
    setAmounts(state, object);
}

template <class Note>
void setCreatedDates(benchmark::State& state, Note& note) {
    double seconds = 0;
    for (auto _ : state) {
        note.setCreatedDate(Date{++seconds});
        benchmark::ClobberMemory();
    }
}

void unobservedManaged(benchmark::State& state) {
    const auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
    context->setUndoManager(nullptr);
    const auto note = context->insertNewObject<TKPropertyNote>("PropertyNote");
    static_cast<void>(context->save());
    setCreatedDates(state, *note);
}

void unobservedMaskedNote(benchmark::State& state) {
    MaskedNote note;
    setCreatedDates(state, note);
}

// By name

void writeByNameOurs(benchmark::State& state) {
    const auto object = makeRef<Plain>();
    const std::string name(Plain::link(0).name());
    std::uint64_t amount = 0;
    for (auto _ : state) object->setValueForKey(Value(++amount), name);
}

void readByNameOurs(benchmark::State& state) {
    const auto object = makeRef<Plain>();
    const std::string name(Plain::link(0).name());
    for (auto _ : state) benchmark::DoNotOptimize(object->valueForKey(name));
}

// The next member of an owner that has so many

class Owners {
public:
    Owners() : context_(TKManagedObjectModel::inMemoryManagedObjectContext()) {
        context_->setUndoManager(nullptr);
    }
    /// A tenure with so many transactions.
    Ref<TKTenure> withMembers(std::size_t count) {
        auto tenure = context_->insertNewObject<TKTenure>("Tenure");
        for (std::size_t number = 0; number < count; ++number) static_cast<void>(tenure->createTransaction());
        return tenure;
    }

private:
    Ref<ManagedObjectContext> context_;
};

template <std::size_t Members>
void joinOwner(benchmark::State& state) {
    Owners owners;
    const auto tenure = owners.withMembers(Members);
    const auto other = owners.withMembers(0);
    const auto joining = Ref<TKTenureTransaction>(other->createTransaction());
    for (auto _ : state) {
        joining->setTenure(tenure.get());
        joining->setTenure(other.get());
    }
}

constexpr int Created = 20000;

void createUnderOwnerOfMany(benchmark::State& state) {
    Owners owners;
    const auto tenure = owners.withMembers(Objects);
    for (auto _ : state) benchmark::DoNotOptimize(tenure->createTransaction());
}

void createUnderOwnersOfFew(benchmark::State& state) {
    Owners owners;
    constexpr std::size_t Few = 10;
    std::vector<Ref<TKTenure>> tenures;
    for (std::size_t number = 0; number < Created / Few; ++number) tenures.push_back(owners.withMembers(0));
    std::size_t next = 0;
    for (auto _ : state) benchmark::DoNotOptimize(tenures[next++ / Few]->createTransaction());
}

#if ESTATEBOOK_BENCH_QT

void thousandQt(benchmark::State& state) {
    bench::QtObject object;
    std::vector<std::unique_ptr<bench::QtCounter>> counters;
    for (std::size_t number = 0; number < Observers; ++number) {
        counters.push_back(std::make_unique<bench::QtCounter>());
        QObject::connect(&object, &bench::QtObject::amountChanged, counters.back().get(),
                         &bench::QtCounter::tell);
    }
    setAmounts(state, object);
}

void chainQt(benchmark::State& state) {
    bench::QtObject object;
    bench::QtCounter counter;
    object.chain(&counter);
    setAmounts(state, object);
}

void oneOfManyQt(benchmark::State& state) {
    std::vector<std::unique_ptr<bench::QtObject>> objects;
    bench::QtCounter counter;
    for (std::size_t number = 0; number < Objects; ++number) {
        objects.push_back(std::make_unique<bench::QtObject>());
        QObject::connect(objects.back().get(), &bench::QtObject::amountChanged, &counter,
                         &bench::QtCounter::tell);
    }
    setOneOfMany(state, objects);
}

void writeByNameQt(benchmark::State& state) {
    bench::QtObject object;
    std::uint64_t amount = 0;
    for (auto _ : state) object.setProperty("amount", QVariant::fromValue<qulonglong>(++amount));
}

void readByNameQt(benchmark::State& state) {
    bench::QtObject object;
    for (auto _ : state) benchmark::DoNotOptimize(object.property("amount"));
}

BENCHMARK(thousandQt)->Name("ThousandObservers/peer_qt");
BENCHMARK(thousandQt)->Name("ThousandCallbacks/peer_qt");
BENCHMARK(chainQt)->Name("ChainOfFive/peer_qt");
BENCHMARK(oneOfManyQt)->Arg(0)->Arg(1)->Name("OneOfManyObjects/peer_qt");
BENCHMARK(writeByNameQt)->Name("WriteByName/peer_qt");
BENCHMARK(readByNameQt)->Name("ReadByName/peer_qt");

#endif

} // namespace

BENCHMARK(thousandOurs)->Name("ThousandObservers/ours");
BENCHMARK(thousandFunctions)->Name("ThousandObservers/peer_functions");
BENCHMARK(thousandCallbacks)->Name("ThousandCallbacks/ours");
BENCHMARK(thousandFunctions)->Name("ThousandCallbacks/peer_functions");
BENCHMARK(chainOurs<5>)->Name("ChainOfFive/ours");
BENCHMARK(chainOurs<20>)->Name("ChainOfTwenty/ours");
BENCHMARK(chainOurs<1>)->Name("ChainOfTwenty/peer_chain_of_one");
BENCHMARK(oneOfManyOurs)->Arg(0)->Arg(1)->Name("OneOfManyObjects/ours");
BENCHMARK(oneOfManyBare)->Arg(0)->Arg(1)->Name("OneOfManyObjects/limit");
BENCHMARK(unobservedOurs)->Name("WriteUnobserved/ours");
BENCHMARK(unobservedMasked)->Name("WriteUnobserved/peer_mask");
BENCHMARK(unobservedManaged)->Name("WriteUnobservedManaged/ours");
BENCHMARK(unobservedMaskedNote)->Name("WriteUnobservedManaged/peer_mask");
BENCHMARK(writeByNameOurs)->Name("WriteByName/ours");
BENCHMARK(readByNameOurs)->Name("ReadByName/ours");
BENCHMARK(joinOwner<Objects>)->Name("JoinOwner/ours");
BENCHMARK(joinOwner<10>)->Name("JoinOwner/peer_small_owner");
BENCHMARK(createUnderOwnerOfMany)->Name("CreateUnderOwner/ours")->Iterations(Created);
BENCHMARK(createUnderOwnersOfFew)->Name("CreateUnderOwner/peer_small_owner")->Iterations(Created);
