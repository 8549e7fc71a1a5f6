// SPDX-License-Identifier: MIT
#pragma once

/// Platter: what of the operations on a disk is safe, what is still on its way, and what a power loss may leave of both.

#include "support/MemoryDisk.hpp"

#include <cstddef>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace estatebook::test {

class Platter {
public:
    /// Begins with files that are safe.
    explicit Platter(const DiskContent& content = {});

    /// REQUIRES: the operation lives as long as this.
    void apply(const DiskOperation& operation);

    /// What is there for those who read now.
    [[nodiscard]] DiskContent content() const;
    /// What is there after a power loss now. What is not safe is kept, dropped or torn at sectors of 512 or of 4096 bytes, and
    /// a file that grew may have grown by zeros or by anything; names that are not safe are told, forgotten or both.
    [[nodiscard]] DiskContent afterPowerLoss(std::mt19937_64& random) const;

private:
    struct File {
        std::string safe{};
        std::vector<const DiskOperation*> pending{};
        /// Those before are lost for good, though a sync may still seem to save them.
        std::size_t lost = 0;
    };

    [[nodiscard]] static std::string survivor(const File& file, std::mt19937_64& random);
    static void applyName(std::map<std::string, std::size_t>& names, const DiskOperation& operation);

    std::map<std::size_t, File> files_;
    std::map<std::string, std::size_t> names_;
    std::vector<const DiskOperation*> pendingNames_;
};

} // namespace estatebook::test
