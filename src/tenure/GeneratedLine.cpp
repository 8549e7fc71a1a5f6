// SPDX-License-Identifier: MIT
#include "tenure/GeneratedLine.hpp"

#include "tags/TKTagNames.hpp"

#include <cstring>
#include <string_view>
#include <utility>

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

namespace {

/// Writes texts piece by piece. Short pieces are copied whole with what stands behind them, which costs less than to ask
/// how long they are; so there must be room for that.
class Pen {
public:
    static constexpr std::size_t Whole = 32;
    static constexpr std::size_t RoomNeeded = 2 * DateFormatter::RoomNeeded + 3 * Whole;

    struct Word {
        char text[Whole];
        std::size_t size;
        consteval Word(std::string_view word) : text{}, size(word.size()) { // NOLINT: a text is a word
            for (std::size_t place = 0; place < size; ++place) text[place] = word[place];
        }
    };

    explicit Pen(const DateFormatter& formatter) noexcept : formatter_(formatter) {}

    void begin(char* room) noexcept { end_ = room; }
    [[nodiscard]] const char* end() const noexcept { return end_; }

    void write(const Word& word) noexcept { copy(word.text, word.size); }
    /// Most ranges start where the one before ended, on a date whose text is there already.
    void write(const std::optional<Date>& date) {
        static constexpr Word absent{"(null)"};
        if (!date) return write(absent);
        if (date == last_) return copy(lastText_, lastSize_);
        char* const start = end_;
        end_ = formatter_.writeDate(start, *date);
        last_ = date;
        lastSize_ = static_cast<std::size_t>(end_ - start);
        std::memcpy(lastText_, start, lastSize_ <= Whole ? Whole : lastSize_);
    }

private:
    void copy(const char* source, std::size_t size) noexcept {
        if (size <= Whole) [[likely]]
            std::memcpy(end_, source, Whole);
        else
            std::memcpy(end_, source, size);
        end_ += size;
    }

    const DateFormatter& formatter_;
    char* end_ = nullptr;
    std::optional<Date> last_;
    std::size_t lastSize_ = 0;
    char lastText_[DateFormatter::RoomNeeded] = {};
};

constexpr Pen::Word openings[] = {Pen::Word("Rent ("), Pen::Word("Partial Rent (")};
constexpr Pen::Word arrow(" → ");
constexpr Pen::Word closing(")");

} // namespace

std::unique_ptr<StringBlock> RentTexts::make() const {
    StringBlock::Builder builder(ranges_.size());
    Pen pen(*formatter_);
    for (const Range& range : ranges_) {
        char* const text = builder.room(Pen::RoomNeeded);
        pen.begin(text);
        pen.write(openings[static_cast<std::size_t>(range.opening)]);
        pen.write(range.start.get());
        pen.write(arrow);
        pen.write(range.end.get());
        pen.write(closing);
        builder.append(static_cast<std::size_t>(pen.end() - text));
    }
    return std::make_unique<StringBlock>(std::move(builder));
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
