// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: the lines of a tenure's statement that nobody recorded. They belong to no context.
///
/// The texts of rent lines name ranges of days. All of a statement's are made when the first of them is read, from the
/// locale and zone that held when the statement was built. Reading them from several threads is safe; all see the same.

#include "platform/persistence/Slots.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/values/ObjectBlock.hpp"
#include "platform/values/StringBlock.hpp"
#include "store/TKTenureTransaction.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace estatebook {

/// What the texts of one statement's rent lines tell, and the texts once they are made. Counted on the statement's thread.
class RentTexts final : public platform::Object {
public:
    /// What a text says before its range of dates.
    enum class Opening : std::uint8_t { Rent, PartialRent };

    /// REQUIRES: at most `capacity` texts are added, all before one is read.
    explicit RentTexts(std::size_t capacity);
    ~RentTexts() override;

    /// Gives the place of the text.
    std::uint32_t add(Opening opening, const std::optional<platform::Date>& start,
                      const std::optional<platform::Date>& end);
    [[nodiscard]] platform::Ref<platform::String> at(std::uint32_t place) const;

private:
    struct Range {
        platform::DateSlot start;
        platform::DateSlot end;
        Opening opening;
    };
    [[nodiscard]] const platform::StringBlock& made() const;
    [[nodiscard]] std::unique_ptr<platform::StringBlock> make() const;

    platform::Ref<platform::DateFormatter> formatter_;
    std::vector<Range> ranges_;
    mutable std::atomic<platform::StringBlock*> made_ = nullptr;
};

class GeneratedLine final : public TKTenureTransaction {
public:
    using Birth = platform::ManagedObjectBirth;

    /// With a text as it is.
    GeneratedLine(const Birth& birth, const std::optional<platform::Decimal>& amount,
                  const std::optional<platform::Date>& when,
                  const platform::Ref<platform::String>& what) noexcept;
    /// With one of the rent's texts.
    GeneratedLine(const Birth& birth, const std::optional<platform::Decimal>& amount,
                  const std::optional<platform::Date>& when, const platform::Ref<RentTexts>& texts,
                  std::uint32_t place) noexcept;

    [[nodiscard]] platform::Ref<platform::String> what() const override;

private:
    ~GeneratedLine() override;
    friend class platform::ObjectBlock<GeneratedLine>;
    void dispose() const noexcept override;

    platform::Ref<RentTexts> texts_;
    std::uint32_t place_ = 0;
};

} // namespace estatebook
