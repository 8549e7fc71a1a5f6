// SPDX-License-Identifier: MIT
#pragma once

/// SavedHistory: a book's making and some saves, as a disk saw them, and what the book holds after each.

#include "support/MemoryDisk.hpp"
#include "support/StoreDescription.hpp"
#include "support/StoreScript.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::test {

inline constexpr std::string_view HistoryPath = "/book.estatebook";

class SavedHistory {
public:
    /// What the book holds after a save, the first one being its making.
    struct State {
        /// The operations before the save began, and those before it was acknowledged.
        std::size_t begun = 0;
        std::size_t acknowledged = 0;
        std::string content{};
    };

    /// Throws when a save fails. `saves` may be none.
    SavedHistory(std::uint64_t seed, std::size_t saves);
    SavedHistory(const SavedHistory&) = delete;
    SavedHistory& operator=(const SavedHistory&) = delete;

    [[nodiscard]] const std::vector<DiskOperation>& operations() const noexcept { return operations_; }
    [[nodiscard]] const std::vector<State>& states() const noexcept { return states_; }
    /// The files as the last program left them.
    [[nodiscard]] const DiskContent& disk() const noexcept { return disk_; }

private:
    std::vector<DiskOperation> operations_;
    std::vector<State> states_;
    DiskContent disk_;
};

} // namespace estatebook::test
