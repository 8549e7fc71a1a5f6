// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: the texts of a statement's rent lines, which name ranges of days.
///
/// All of them are made when the first is read, from the locale and zone that held when the statement was built. Reading
/// them from several threads is safe; all see the same.

#include "platform/persistence/Slots.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/values/StringBlock.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace estatebook {

class RentTexts {
public:
    /// What a text says before its range of dates.
    enum class Opening : std::uint8_t { Rent, PartialRent };

    /// REQUIRES: at most `capacity` texts are added, all before one is read.
    explicit RentTexts(std::size_t capacity);
    RentTexts(const RentTexts&) = delete;
    RentTexts& operator=(const RentTexts&) = delete;
    ~RentTexts();

    void add(Opening opening, const std::optional<platform::Date>& start,
             const std::optional<platform::Date>& end) {
        ranges_.push_back({platform::DateSlot(start), platform::DateSlot(end), opening});
    }
    [[nodiscard]] platform::Ref<platform::String> operator[](std::size_t place) const {
        const platform::StringBlock* made = made_.load(std::memory_order_acquire);
        return (made ? *made : publish())[place];
    }

private:
    struct Range {
        platform::DateSlot start;
        platform::DateSlot end;
        Opening opening;
    };
    [[nodiscard]] const platform::StringBlock& publish() const;
    [[nodiscard]] std::unique_ptr<platform::StringBlock> make() const;

    platform::Ref<platform::DateFormatter> formatter_;
    std::vector<Range> ranges_;
    mutable std::atomic<platform::StringBlock*> made_ = nullptr;
};

} // namespace estatebook
