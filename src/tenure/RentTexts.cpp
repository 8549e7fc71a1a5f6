// SPDX-License-Identifier: MIT
#include "tenure/RentTexts.hpp"

#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

namespace estatebook {

using namespace platform;

RentTexts::RentTexts(std::size_t capacity) : formatter_(DateFormatter::medium()) {
    ranges_.reserve(capacity);
}

RentTexts::~RentTexts() {
    delete made_.load(std::memory_order_acquire);
}

const StringBlock& RentTexts::publish() const {
    auto fresh = make();
    // Of two threads that made the texts at once, the first one's stay.
    StringBlock* present = nullptr;
    if (made_.compare_exchange_strong(present, fresh.get(), std::memory_order_acq_rel))
        return *fresh.release();
    return *present;
}

namespace {

/// Writes a text piece by piece.
class Pen {
public:
    static constexpr std::string_view LongestOpening = "Partial Rent (";
    static constexpr std::size_t RoomNeeded = LongestOpening.size() + 2 * DateFormatter::RoomNeeded + 16;

    explicit Pen(const DateFormatter& formatter) noexcept : formatter_(formatter) {}

    void begin(char* room) noexcept { end_ = room; }
    [[nodiscard]] const char* end() const noexcept { return end_; }

    // In place, since texts of a known length need no call.
    [[gnu::always_inline]] void write(std::string_view text) noexcept {
        std::memcpy(end_, text.data(), text.size());
        end_ += text.size();
    }
    /// Most ranges start where the one before ended, on a date that was looked up already.
    void write(const std::optional<Date>& date) {
        if (!date) return write("(null)");
        if (*date != lastDate_) {
            last_ = formatter_.dayText(*date);
            lastDate_ = *date;
        }
        end_ = formatter_.write(end_, last_);
    }

private:
    const DateFormatter& formatter_;
    char* end_ = nullptr;
    Date lastDate_{std::numeric_limits<double>::quiet_NaN()};
    DateFormatter::DayText last_;
};

} // namespace

std::unique_ptr<StringBlock> RentTexts::make() const {
    StringBlock::Builder builder(ranges_.size());
    Pen pen(*formatter_);
    for (const Range& range : ranges_) {
        char* const text = builder.room(Pen::RoomNeeded);
        pen.begin(text);
        if (range.opening == Opening::Rent)
            pen.write("Rent (");
        else
            pen.write(Pen::LongestOpening);
        pen.write(range.start.get());
        pen.write(" → ");
        pen.write(range.end.get());
        pen.write(")");
        builder.append(static_cast<std::size_t>(pen.end() - text));
    }
    return std::make_unique<StringBlock>(std::move(builder));
}

} // namespace estatebook
