// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: the lines of one statement that nobody recorded, side by side in one piece of memory behind what they
/// share. Each is counted by itself and keeps the row. Counted on the statement's thread.
///
///     const auto lines = GeneratedLines::make(entity, 2);
///     Ref<GeneratedLine> bond = lines->add(-500, when, String::make("Bond Debit"));
///     Ref<GeneratedLine> rent = lines->addRent(RentTexts::Opening::Rent, period, -1000);

#include "billing/TKPeriod.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "tenure/GeneratedLine.hpp"
#include "tenure/RentTexts.hpp"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>

namespace estatebook {

class GeneratedLines final : public platform::Object {
public:
    /// Room for that many lines of the entity "TenureTransaction".
    [[nodiscard]] static platform::Ref<GeneratedLines> make(const platform::EntityDescription& entity,
                                                            std::size_t capacity);

    /// With a text as it is. REQUIRES: no rent line was added yet.
    [[nodiscard]] platform::Ref<GeneratedLine> add(const std::optional<platform::Decimal>& amount,
                                                   const std::optional<platform::Date>& when,
                                                   const platform::Ref<platform::String>& what) {
        assert(firstRent_ == count_);
        auto line = append(amount, when);
        line->storeWhat(what);
        ++firstRent_;
        return line;
    }
    /// With a text that names the days of the period.
    [[nodiscard]] platform::Ref<GeneratedLine> addRent(RentTexts::Opening opening, const TKPeriod& period,
                                                       const std::optional<platform::Decimal>& amount) {
        texts_.add(opening, period.startDate(), period.endDate());
        return append(amount, period.billingDate());
    }

private:
    friend class GeneratedLine;
    GeneratedLines(const platform::EntityDescription& entity, std::size_t capacity);
    ~GeneratedLines() override = default;
    void dispose() const noexcept override;

    [[nodiscard]] platform::Ref<GeneratedLine> append(const std::optional<platform::Decimal>& amount,
                                                      const std::optional<platform::Date>& when) noexcept {
        assert(count_ < capacity_);
        auto* const line = new (first() + count_) GeneratedLine(birth_, count_, amount, when);
        ++count_;
        retain();
        return platform::Ref<GeneratedLine>::adopt(line);
    }
    [[nodiscard]] static const GeneratedLines& of(const GeneratedLine& line) noexcept {
        return *(reinterpret_cast<const GeneratedLines*>(&line - line.place()) - 1);
    }
    [[nodiscard]] GeneratedLine* first() noexcept { return reinterpret_cast<GeneratedLine*>(this + 1); }

    platform::Ref<const platform::ManagedObjectModel> model_; // of which the lines hold nothing themselves
    platform::ManagedObjectBirth birth_;
    RentTexts texts_;
    std::uint32_t firstRent_ = 0;
    std::uint32_t count_ = 0;
    std::size_t capacity_;
};

} // namespace estatebook
