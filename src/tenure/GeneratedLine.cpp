// SPDX-License-Identifier: MIT
#include "tenure/GeneratedLine.hpp"

#include "tags/TKTagNames.hpp"

#include <cstring>

namespace estatebook {

using namespace platform;

GeneratedLine::GeneratedLine(const Birth& birth, const std::optional<Decimal>& amount,
                             const std::optional<Date>& when, const Ref<String>& what) noexcept
    : TKTenureTransaction(birth) {
    storeAmount(amount);
    storeWhen(when);
    storeProcessedOn(when);
    storeWhat(what);
}

GeneratedLine::GeneratedLine(const Birth& birth, const std::optional<Decimal>& amount,
                             const std::optional<Date>& when, Kind kind, const std::optional<Date>& start,
                             const std::optional<Date>& end, const Ref<GeneratedLines>& lines) noexcept
    : TKTenureTransaction(birth), lines_(lines), start_(start), end_(end), kind_(kind) {
    storeAmount(amount);
    storeWhen(when);
    storeProcessedOn(when);
}

GeneratedLine::~GeneratedLine() {
    if (String* text = text_.load(std::memory_order_acquire)) text->release();
}

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
    if (String* made = text_.load(std::memory_order_acquire)) return Ref<String>(made);
    if (!lines_) return nullptr;
    String* text = makeText().detach();
    // Of two threads that made a text at once, the first one's stays.
    String* present = nullptr;
    if (text_.compare_exchange_strong(present, text, std::memory_order_acq_rel)) return Ref<String>(text);
    text->release();
    return Ref<String>(present);
}

Ref<String> GeneratedLine::makeText() const {
    constexpr std::string_view openings[] = {"Rent (", "Partial Rent ("};
    constexpr std::string_view arrow = " → ";
    const DateFormatter& formatter = *lines_->formatter;
    char text[2 * DateFormatter::RoomNeeded + 32];
    char* end = text;
    const auto append = [&](std::string_view piece) {
        std::memcpy(end, piece.data(), piece.size());
        end += piece.size();
    };
    const auto appendDate = [&](const std::optional<Date>& date) {
        if (date)
            end = formatter.writeDate(end, *date);
        else
            append("(null)");
    };
    append(openings[static_cast<std::size_t>(kind_)]);
    appendDate(start_);
    append(arrow);
    appendDate(end_);
    append(")");
    return String::make({text, static_cast<std::size_t>(end - text)});
}

} // namespace estatebook
