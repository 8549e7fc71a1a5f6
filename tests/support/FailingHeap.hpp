// SPDX-License-Identifier: MIT
#pragma once

/// FailingHeap: has `new` throw std::bad_alloc when it is told to, in the whole program.
///
///     const FailingHeap heap(17, FailingHeap::Fault::Once);   // from here on
///     auto outcome = store->save(changes);                     // until the heap's end

#include <cstdint>

namespace estatebook::test {

class FailingHeap {
public:
    enum class Fault : std::uint8_t { Once, FromThenOn };

    /// Requests are counted from 1. REQUIRES: there is no other, and one thread.
    FailingHeap(std::uint64_t request, Fault fault) noexcept;
    ~FailingHeap();
    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;

    /// Whether a request was refused.
    [[nodiscard]] bool hasFailed() const noexcept;
    /// False where sanitizers own the heap; then it never fails.
    [[nodiscard]] static bool isPossible() noexcept;
};

} // namespace estatebook::test
