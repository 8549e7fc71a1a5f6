// SPDX-License-Identifier: MIT
#include "support/FailingHeap.hpp"

#include <cstdlib>
#include <new>

namespace estatebook::test {

namespace {

struct State {
    bool isArmed = false;
    bool hasFailed = false;
    FailingHeap::Fault fault{};
    std::uint64_t wanted = 0;
    std::uint64_t requests = 0;
};

constinit State state;

} // namespace

FailingHeap::FailingHeap(std::uint64_t request, Fault fault) noexcept {
    state = {.isArmed = true, .fault = fault, .wanted = request};
}

FailingHeap::~FailingHeap() {
    state.isArmed = false;
}

bool FailingHeap::hasFailed() const noexcept {
    return state.hasFailed;
}

#ifdef __SANITIZE_ADDRESS__

bool FailingHeap::isPossible() noexcept {
    return false;
}

#else

bool FailingHeap::isPossible() noexcept {
    return true;
}

namespace {

void* request(std::size_t size) {
    if (state.isArmed) {
        ++state.requests;
        if (state.fault == FailingHeap::Fault::Once ? state.requests == state.wanted
                                                    : state.requests >= state.wanted) {
            state.hasFailed = true;
            throw std::bad_alloc();
        }
    }
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (!memory) throw std::bad_alloc();
    return memory;
}

} // namespace

#endif

} // namespace estatebook::test

#ifndef __SANITIZE_ADDRESS__

void* operator new(std::size_t size) {
    return estatebook::test::request(size);
}

void* operator new[](std::size_t size) {
    return estatebook::test::request(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

#endif
