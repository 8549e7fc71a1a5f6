// SPDX-License-Identifier: MIT
#include "support/FailingAllocator.hpp"

#include <sqlite3.h>

#include <stdexcept>

namespace estatebook::test {

namespace {

/// The data base calls plain functions, so this is one for all.
struct State {
    sqlite3_mem_methods usual{};
    bool isArmed = false;
    bool hasFailed = false;
    FailingAllocator::Fault fault{};
    std::uint64_t wanted = 0;
    std::uint64_t requests = 0;

    bool refuses() noexcept {
        if (!isArmed) return false;
        ++requests;
        const bool refused = fault == FailingAllocator::Fault::Once ? requests == wanted : requests >= wanted;
        hasFailed = hasFailed || refused;
        return refused;
    }
};

State state;

void* allocate(int size) {
    return state.refuses() ? nullptr : state.usual.xMalloc(size);
}

void* reallocate(void* memory, int size) {
    return state.refuses() ? nullptr : state.usual.xRealloc(memory, size);
}

void configure(const sqlite3_mem_methods& methods, int lookasideSize, int lookasideCount) {
    // Small pieces, too, are to be asked for one by one.
    if (sqlite3_shutdown() != SQLITE_OK || sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) != SQLITE_OK ||
        sqlite3_config(SQLITE_CONFIG_LOOKASIDE, lookasideSize, lookasideCount) != SQLITE_OK ||
        sqlite3_initialize() != SQLITE_OK)
        throw std::runtime_error("the data base's memory cannot be configured");
}

} // namespace

FailingAllocator::FailingAllocator() {
    state = {};
    sqlite3_shutdown();
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &state.usual);
    sqlite3_mem_methods methods = state.usual;
    methods.xMalloc = allocate;
    methods.xRealloc = reallocate;
    configure(methods, 0, 0);
}

FailingAllocator::~FailingAllocator() {
    recover();
    // What the data base is built with.
    configure(state.usual, 1200, 40);
}

void FailingAllocator::failAt(std::uint64_t request, Fault fault) noexcept {
    state.fault = fault;
    state.wanted = request;
    state.requests = 0;
    state.hasFailed = false;
    state.isArmed = true;
}

void FailingAllocator::recover() noexcept {
    state.isArmed = false;
}

bool FailingAllocator::hasFailed() const noexcept {
    return state.hasFailed;
}

} // namespace estatebook::test
