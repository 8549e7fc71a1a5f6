// SPDX-License-Identifier: MIT
#pragma once

/// MediumDateTable: the medium date pattern of one locale, compiled. For the sources of this folder only.
///
/// A date text is a row of cells, each the finished text of one field value with the literals around it: "Mar", " 1",
/// ", 20", "24". Writing a date copies these cells and formats nothing. In years that are written every day, fields
/// that stand side by side share their cells, "Mar 1" and ", 2024", and a table of the months tells which these are.
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

    /// What the text of the day is made of; of use to this table only.
    [[nodiscard]] std::uint64_t cellsFor(CivilDay day) const noexcept;
    /// Writes the text and returns its end. REQUIRES: RoomNeeded bytes at `out`.
    char* write(char* out, std::uint64_t cells) const;
    char* write(char* out, CivilDay day) const { return write(out, cellsFor(day)); }

    /// Whether days of ordinary years are written from cells.
    [[nodiscard]] bool isCompiled() const noexcept { return dayCount_ != 0; }

private:
    struct Cell {
        char text[15];
        std::uint8_t length;
    };
    static_assert(sizeof(Cell) == 16);

    /// Where among the bits of a day's fields the number stands that chooses a step's cell.
    struct Field {
        std::uint8_t shift;
        std::uint16_t mask;

        [[nodiscard]] constexpr std::uint32_t holding(std::uint32_t number) const noexcept {
            return number << shift;
        }
        [[nodiscard]] constexpr std::uint32_t of(std::uint32_t fields) const noexcept {
            return (fields >> shift) & mask;
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

    static constexpr std::int64_t FirstUsualYear = 1900;
    static constexpr std::int64_t FirstUsualDay = CivilDay::fromYearMonthDay(FirstUsualYear, 1, 1).number;

    // The cells of a day of a usual year: up to four numbers, the first in the lowest bits; 0 is none.
    static constexpr unsigned BitsPerCell = 15;
    static constexpr std::size_t MostCells = 4;
    /// Set for a day of another year; the other bits are the day's number.
    static constexpr std::uint64_t IsDay = std::uint64_t{1} << 63;

    /// A month of a usual year: the cells of its first day, and which day that is, counted from FirstUsualDay.
    struct UsualMonth {
        std::uint64_t cells;
        std::uint32_t firstDay;
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
    /// All but UsualYear.
    [[nodiscard]] std::uint32_t fieldsOf(CivilDay day) const noexcept;
    char* writeUnusual(char* out, CivilDay day) const;
    char* writeWithFallback(char* out, CivilDay day) const;
    [[nodiscard]] bool agreesWithFallback() const;

    std::vector<Step> steps_;
    std::vector<Cell> cells_;
    /// Those of all usual years, and more.
    std::vector<UsualMonth> usualMonths_;
    std::uint64_t usualDayCount_ = 0;
    /// By how much a day's cells differ from those of the day before in the same month.
    std::uint64_t cellsPerDay_ = 0;
    int yearOffset_ = 0;
    std::int64_t firstDay_ = 0;
    std::uint64_t dayCount_ = 0;
    std::unique_ptr<Fallback> fallback_;
};

// To count 30.436875 days a month, and that from 25 days before the first, leads to a day's month or to the next. That
// is far shorter than to reckon year, month and day. (bench/DateTextBench.cpp)
inline std::uint64_t MediumDateTable::cellsFor(CivilDay day) const noexcept {
    constexpr std::uint64_t MonthsPerDay = 141110653; // of 2^32
    const std::uint64_t days =
        static_cast<std::uint64_t>(day.number) - static_cast<std::uint64_t>(FirstUsualDay);
    if (days >= usualDayCount_) [[unlikely]]
        return static_cast<std::uint64_t>(day.number) | IsDay;
    std::size_t place = (days + 25) * MonthsPerDay >> 32;
    place -= static_cast<std::size_t>(days < usualMonths_[place].firstDay);
    const UsualMonth& month = usualMonths_[place];
    return month.cells + (days - month.firstDay) * cellsPerDay_;
}

inline char* MediumDateTable::write(char* out, std::uint64_t cells) const {
    if (cells & IsDay) [[unlikely]] // whose sign is that of the bit below
        return writeUnusual(out, CivilDay{static_cast<std::int64_t>(cells << 1) >> 1});
    do {
        const Cell& cell = cells_[cells % (1u << BitsPerCell)];
        std::memcpy(out, &cell, sizeof cell);
        out += cell.length;
        cells >>= BitsPerCell;
    } while (cells != 0);
    return out;
}

} // namespace estatebook::platform
