// SPDX-License-Identifier: MIT
#include "tenure/GeneratedLine.hpp"

#include "tags/TKTagNames.hpp"

#include <cstring>
#include <string_view>

namespace estatebook {

using namespace platform;

// Texts

RentTexts::RentTexts(std::size_t capacity) : Object(Counting::Local), formatter_(DateFormatter::medium()) {
    ranges_.reserve(capacity);
}

RentTexts::~RentTexts() {
    delete made_.load(std::memory_order_acquire);
}

std::uint32_t RentTexts::add(Opening opening, const std::optional<Date>& start,
                             const std::optional<Date>& end) {
    Range& range = ranges_.emplace_back();
    range.start = start;
    range.end = end;
    range.opening = opening;
    return static_cast<std::uint32_t>(ranges_.size() - 1);
}

Ref<String> RentTexts::at(std::uint32_t place) const {
    return made()[place];
}

const StringBlock& RentTexts::made() const {
    if (const StringBlock* present = made_.load(std::memory_order_acquire)) return *present;
    auto fresh = make();
    // Of two threads that made the texts at once, the first one's stay.
    StringBlock* present = nullptr;
    if (made_.compare_exchange_strong(present, fresh.get(), std::memory_order_acq_rel))
        return *fresh.release();
    return *present;
}

std::unique_ptr<StringBlock> RentTexts::make() const {
    constexpr std::string_view openings[] = {"Rent (", "Partial Rent ("};
    constexpr std::string_view arrow = " → ";
    constexpr std::size_t RoomNeeded = 2 * DateFormatter::RoomNeeded + 32;
    StringBlock::Builder builder(ranges_.size());
    // Most ranges start where the one before ended, on a date whose text is there already.
    std::optional<Date> last;
    char lastText[DateFormatter::RoomNeeded];
    std::size_t lastSize = 0;
    for (const Range& range : ranges_) {
        char* const text = builder.room(RoomNeeded);
        char* end = text;
        const auto append = [&](std::string_view piece) {
            std::memcpy(end, piece.data(), piece.size());
            end += piece.size();
        };
        const auto appendDate = [&](const std::optional<Date>& date) {
            if (!date) return append("(null)");
            if (last != date) {
                lastSize = static_cast<std::size_t>(formatter_->writeDate(lastText, *date) - lastText);
                last = date;
            }
            append({lastText, lastSize});
        };
        append(openings[static_cast<std::size_t>(range.opening)]);
        appendDate(range.start.get());
        append(arrow);
        appendDate(range.end.get());
        append(")");
        builder.append(static_cast<std::size_t>(end - text));
    }
    return std::make_unique<StringBlock>(builder);
}

// Lines

GeneratedLine::GeneratedLine(const Birth& birth, const std::optional<Decimal>& amount,
                             const std::optional<Date>& when, const Ref<String>& what) noexcept
    : TKTenureTransaction(birth) {
    storeAmount(amount);
    storeWhen(when);
    storeProcessedOn(when);
    storeWhat(what);
}

GeneratedLine::GeneratedLine(const Birth& birth, const std::optional<Decimal>& amount,
                             const std::optional<Date>& when, const Ref<RentTexts>& texts,
                             std::uint32_t place) noexcept
    : TKTenureTransaction(birth), texts_(texts), place_(place) {
    storeAmount(amount);
    storeWhen(when);
    storeProcessedOn(when);
}

GeneratedLine::~GeneratedLine() = default;

void GeneratedLine::dispose() const noexcept {
    // As a rule nobody linked the line with anything, and there is nothing to take apart.
    if (tenure() || !tags().empty())
        endManaging();
    else
        endObserving();
    ObjectBlock<GeneratedLine>::dispose(this);
}

Ref<String> GeneratedLine::what() const {
    if (auto given = TKTransaction::what()) return given;
    return texts_ ? texts_->at(place_) : nullptr;
}

} // namespace estatebook
