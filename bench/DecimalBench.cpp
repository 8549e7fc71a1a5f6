// SPDX-License-Identifier: MIT
// Decimal arithmetic over amounts of money with two fraction digits, each operation beside its peer:
//   - a running sum beside a chain of 64-bit additions that test for overflow: at most 10 times its time;
//   - a product and a quotient beside a 50-digit decimal floating-point type: 5 and 8 times faster at least;
//   - the same with parts of a period, which have 38 digits, so that no long operand falls far behind.
// No operation allocates; the counter "allocations" shows it.
#include "platform/values/Decimal.hpp"

#include <benchmark/benchmark.h>
#include <boost/multiprecision/cpp_dec_float.hpp>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <random>
#include <vector>

namespace {

std::uint64_t allocations = 0;

} // namespace

// Not in line: the compiler would see through one of the pair and not through the other.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++allocations;
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using boost::multiprecision::cpp_dec_float_50;
using estatebook::platform::Decimal;

constexpr std::size_t Count = 4096;

/// Amounts between −5,000.00 and 5,000.00, in cents.
const std::vector<std::int64_t>& cents() {
    static const std::vector<std::int64_t> amounts = [] {
        std::mt19937_64 random(20240229);
        std::uniform_int_distribution<std::int64_t> amount(-500000, 500000);
        std::vector<std::int64_t> made(Count);
        for (std::int64_t& each : made) do
                each = amount(random);
            while (each == 0);
        return made;
    }();
    return amounts;
}

const std::vector<Decimal>& decimals() {
    static const std::vector<Decimal> amounts = [] {
        std::vector<Decimal> made;
        for (const std::int64_t each : cents())
            made.push_back(Decimal::withMantissaExponentIsNegative(static_cast<std::uint64_t>(std::abs(each)),
                                                                   -2, each < 0));
        return made;
    }();
    return amounts;
}

const std::vector<cpp_dec_float_50>& floats() {
    static const std::vector<cpp_dec_float_50> amounts = [] {
        std::vector<cpp_dec_float_50> made;
        for (const std::int64_t each : cents()) made.push_back(cpp_dec_float_50(each) / 100);
        return made;
    }();
    return amounts;
}

/// Parts of a period of 31 days: all 38 digits are taken.
const std::vector<Decimal>& parts() {
    static const std::vector<Decimal> numbers = [] {
        std::vector<Decimal> made;
        for (const std::int64_t each : cents()) made.push_back(Decimal(each) / 31);
        return made;
    }();
    return numbers;
}

const std::vector<cpp_dec_float_50>& floatParts() {
    static const std::vector<cpp_dec_float_50> numbers = [] {
        std::vector<cpp_dec_float_50> made;
        for (const std::int64_t each : cents()) made.push_back(cpp_dec_float_50(each) / 31);
        return made;
    }();
    return numbers;
}

/// Runs the operation over pairs of neighbours and reports the time of one operation.
template <class Number, class Operation>
void overNeighbours(benchmark::State& state, const std::vector<Number>& numbers, Operation operation) {
    const std::uint64_t before = allocations;
    for (auto _ : state)
        for (std::size_t i = 0; i + 1 < numbers.size(); ++i)
            benchmark::DoNotOptimize(operation(numbers[i], numbers[i + 1]));
    state.counters["allocations"] = static_cast<double>(allocations - before);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numbers.size() - 1));
}

void sumOurs(benchmark::State& state) {
    const std::vector<Decimal>& amounts = decimals();
    const std::uint64_t before = allocations;
    for (auto _ : state) {
        Decimal sum;
        for (const Decimal& amount : amounts) sum += amount;
        benchmark::DoNotOptimize(sum);
    }
    state.counters["allocations"] = static_cast<double>(allocations - before);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(amounts.size()));
}

void sumChecked(benchmark::State& state) {
    const std::vector<std::int64_t>& amounts = cents();
    for (auto _ : state) {
        std::int64_t sum = 0;
        for (const std::int64_t amount : amounts)
            if (__builtin_add_overflow(sum, amount, &sum)) std::abort();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(amounts.size()));
}

void sumFloat(benchmark::State& state) {
    const std::vector<cpp_dec_float_50>& amounts = floats();
    for (auto _ : state) {
        cpp_dec_float_50 sum;
        for (const cpp_dec_float_50& amount : amounts) sum += amount;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(amounts.size()));
}

const auto product = [](const auto& a, const auto& b) { return std::decay_t<decltype(a)>(a * b); };
const auto quotient = [](const auto& a, const auto& b) { return std::decay_t<decltype(a)>(a / b); };

void multiplyOurs(benchmark::State& state) {
    overNeighbours(state, decimals(), product);
}
void multiplyFloat(benchmark::State& state) {
    overNeighbours(state, floats(), product);
}
void divideOurs(benchmark::State& state) {
    overNeighbours(state, decimals(), quotient);
}
void divideFloat(benchmark::State& state) {
    overNeighbours(state, floats(), quotient);
}

void multiplyPartsOurs(benchmark::State& state) {
    overNeighbours(state, parts(), product);
}
void multiplyPartsFloat(benchmark::State& state) {
    overNeighbours(state, floatParts(), product);
}
void dividePartsOurs(benchmark::State& state) {
    overNeighbours(state, parts(), quotient);
}
void dividePartsFloat(benchmark::State& state) {
    overNeighbours(state, floatParts(), quotient);
}

BENCHMARK(sumOurs)->Name("DecimalRunningSum/ours");
BENCHMARK(sumChecked)->Name("DecimalRunningSum/peer_checked_int64");
BENCHMARK(sumFloat)->Name("DecimalRunningSum/peer_cpp_dec_float_50");
BENCHMARK(multiplyOurs)->Name("DecimalProduct/ours");
BENCHMARK(multiplyFloat)->Name("DecimalProduct/peer_cpp_dec_float_50");
BENCHMARK(divideOurs)->Name("DecimalQuotient/ours");
BENCHMARK(divideFloat)->Name("DecimalQuotient/peer_cpp_dec_float_50");
BENCHMARK(multiplyPartsOurs)->Name("DecimalLongProduct/ours");
BENCHMARK(multiplyPartsFloat)->Name("DecimalLongProduct/peer_cpp_dec_float_50");
BENCHMARK(dividePartsOurs)->Name("DecimalLongQuotient/ours");
BENCHMARK(dividePartsFloat)->Name("DecimalLongQuotient/peer_cpp_dec_float_50");

} // namespace
