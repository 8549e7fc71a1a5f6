// SPDX-License-Identifier: MIT
#pragma once

/// MediumDateTable: the medium date pattern of one locale, compiled. For the sources of this folder only.
///
/// A date text is a row of cells, each the finished text of one field value with the literals around it: "Mar", " 1",
/// ", 20", "24". Writing a date copies these cells and formats nothing. In years that are written every day, fields
/// that stand side by side share their cells: "Mar 1", ", 2024".
///
/// What cannot be laid out like that (a calendar that counts other months, numbers that are not digits, years
/// of more or less than four digits) is written by ICU, one date at a time under a lock. Either way the text
/// is ICU's own, byte for byte.

#include "platform/calendar/CivilDay.hpp"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace estatebook::platform {

class MediumDateTable {
public:
    /// No text is longer, in bytes. The longest that ICU 72 writes for these years has 75.
    static constexpr std::size_t MaximalTextLength = 128;
    /// What must stand free at `out`: cells are copied whole, so that the last one runs over the end.
    static constexpr std::size_t RoomNeeded = MaximalTextLength + 16;

    /// Compiles the pattern of a canonical locale name.
    explicit MediumDateTable(const std::string& localeName);
    ~MediumDateTable();

    /// Which cells the text of the day is made of, or that it has none. Of use to this table only.
    [[nodiscard]] std::uint64_t choicesFor(CivilDay day) const noexcept;
    /// Writes the text of the day that the choices were made for and returns its end. REQUIRES: RoomNeeded bytes at `out`.
    char* write(char* out, std::uint64_t choices) const;
    char* write(char* out, CivilDay day) const { return write(out, choicesFor(day)); }

    /// Whether days of ordinary years are written from cells.
    [[nodiscard]] bool isCompiled() const noexcept { return dayCount_ != 0; }

private:
    struct Cell {
        char text[15];
        std::uint8_t length;
    };
    static_assert(sizeof(Cell) == 16);

    /// Where among the bits of a day's choices the number of a step's cell stands.
    struct Field {
        std::uint8_t shift;
        std::uint16_t mask;

        [[nodiscard]] constexpr std::uint64_t holding(std::uint64_t number) const noexcept {
            return number << shift;
        }
        [[nodiscard]] constexpr std::uint64_t of(std::uint64_t choices) const noexcept {
            return (choices >> shift) & mask;
        }
        friend constexpr bool operator==(Field, Field) noexcept = default;
    };
    static constexpr Field Always{0, 0};
    static constexpr Field Day{0, 31};
    static constexpr Field Month{5, 15};
    static constexpr Field DayAndMonth{0, 511};
    static constexpr Field Century{9, 127};
    static constexpr Field YearOfCentury{16, 127};
    static constexpr Field UsualYear{23, 255};
    /// Set when the year is a usual one: the steps that share cells may be taken.
    static constexpr std::uint64_t IsUsual = std::uint64_t{1} << 31;
    /// Set when there are no cells; the other bits are the number of the day.
    static constexpr std::uint64_t HasNone = std::uint64_t{1} << 63;
    static constexpr std::int64_t FirstUsualYear = 1900;
    static constexpr std::int64_t FirstUsualDay = CivilDay::fromYearMonthDay(FirstUsualYear, 1, 1).number;

    /// A month of a usual year: its first day, counted from FirstUsualDay, and that day's choices.
    struct UsualMonth {
        std::uint32_t firstDay;
        std::uint32_t choices;
    };

    struct Step {
        Field field;
        std::uint16_t firstCell;
    };

    class Compiler;
    class Fallback;

    /// Whether the shown year has four digits, as cells have them.
    [[nodiscard]] bool hasCellsFor(CivilDay day) const noexcept {
        return static_cast<std::uint64_t>(day.number) - static_cast<std::uint64_t>(firstDay_) < dayCount_;
    }
    [[nodiscard]] std::uint64_t cellsOf(CivilDay day) const noexcept;
    [[nodiscard]] std::uint64_t cellsOfUsual(std::uint64_t days) const noexcept;
    char* writeCells(char* out, std::uint64_t choices) const noexcept;
    char* writeWithFallback(char* out, CivilDay day) const;
    [[nodiscard]] bool agreesWithFallback() const;

    std::vector<Step> steps_;
    std::vector<Step> usualSteps_;
    std::vector<Cell> cells_;
    /// Those of all usual years, and one more.
    std::vector<UsualMonth> usualMonths_;
    std::uint64_t usualDayCount_ = 0;
    int yearOffset_ = 0;
    std::int64_t firstDay_ = 0;
    std::uint64_t dayCount_ = 0;
    std::unique_ptr<Fallback> fallback_;
};

inline std::uint64_t MediumDateTable::cellsOf(CivilDay day) const noexcept {
    const YearMonthDay parts = day.yearMonthDay();
    const auto shown = static_cast<std::uint32_t>(parts.year + yearOffset_);
    return Day.holding(static_cast<std::uint32_t>(parts.day - 1)) |
           Month.holding(static_cast<std::uint32_t>(parts.month - 1)) | Century.holding(shown / 100) |
           YearOfCentury.holding(shown % 100);
}

// To count 30.436875 days a month, and that from 25 days before the first, leads to a day's month or to the next. That
// is far shorter than to reckon year, month and day. (bench/DateTextBench.cpp)
inline std::uint64_t MediumDateTable::cellsOfUsual(std::uint64_t days) const noexcept {
    constexpr std::uint64_t MonthsPerDay = 141110653; // of 2^32
    const UsualMonth* month = usualMonths_.data() + ((days + 25) * MonthsPerDay >> 32);
    month -= days < month->firstDay ? 1 : 0;
    return month->choices + Day.holding(days - month->firstDay);
}

inline std::uint64_t MediumDateTable::choicesFor(CivilDay day) const noexcept {
    const std::uint64_t days =
        static_cast<std::uint64_t>(day.number) - static_cast<std::uint64_t>(FirstUsualDay);
    if (days < usualDayCount_) [[likely]]
        return cellsOfUsual(days);
    return hasCellsFor(day) ? cellsOf(day) : static_cast<std::uint64_t>(day.number) | HasNone;
}

inline char* MediumDateTable::writeCells(char* out, std::uint64_t choices) const noexcept {
    const Cell* cells = cells_.data();
    for (const Step& step : choices& IsUsual ? usualSteps_ : steps_) {
        const Cell& cell = cells[step.firstCell + step.field.of(choices)];
        std::memcpy(out, &cell, sizeof cell);
        out += cell.length;
    }
    return out;
}

inline char* MediumDateTable::write(char* out, std::uint64_t choices) const {
    if (!(choices & HasNone)) [[likely]]
        return writeCells(out, choices);
    // The days that have a calendar are far from needing the sign's neighbour.
    return writeWithFallback(out, CivilDay{static_cast<std::int64_t>(choices << 1) >> 1});
}

} // namespace estatebook::platform
