// SPDX-License-Identifier: MIT
#pragma once

/// FailingAllocator: gives the data base its memory, and none when it is told to.
///
///     FailingAllocator memory;       // before anything is opened
///     memory.failAt(17, FailingAllocator::Fault::Once);
///     auto outcome = store->save(changes);
///     memory.recover();

#include <cstdint>

namespace estatebook::test {

class FailingAllocator {
public:
    enum class Fault : std::uint8_t { Once, FromThenOn };

    /// REQUIRES: there is no other, and no data base is open; also at its end.
    FailingAllocator();
    ~FailingAllocator();
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;

    /// Counted from 1, from now on.
    void failAt(std::uint64_t request, Fault fault) noexcept;
    void recover() noexcept;
    /// Whether a request was refused since `failAt`.
    [[nodiscard]] bool hasFailed() const noexcept;
};

} // namespace estatebook::test
