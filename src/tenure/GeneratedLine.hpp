// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: a line of a tenure's statement that nobody recorded. It belongs to no context and stands in a row with
/// the statement's others (GeneratedLines.hpp), which makes it.

#include "store/TKTenureTransaction.hpp"

#include <cstdint>

namespace estatebook {

class GeneratedLine final : public TKTenureTransaction {
public:
    /// The text that was set, else the row's for this line.
    [[nodiscard]] platform::Ref<platform::String> what() const override;

private:
    friend class GeneratedLines;
    GeneratedLine(const platform::ManagedObjectBirth& birth, std::uint32_t place,
                  const std::optional<platform::Decimal>& amount,
                  const std::optional<platform::Date>& when) noexcept
        : TKTenureTransaction(birth) {
        standInBlock(place + 1);
        storeAmount(amount);
        storeWhen(when);
        storeProcessedOn(when);
    }
    ~GeneratedLine() override = default;
    void dispose() const noexcept override;
    /// Its place in the row.
    [[nodiscard]] std::uint32_t place() const noexcept { return placeInBlock() - 1; }
};

} // namespace estatebook
