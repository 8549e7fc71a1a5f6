// SPDX-License-Identifier: MIT
#pragma once

/// MediumDateTable: the medium date pattern of one locale, compiled. For the sources of this folder only.
///
/// A date text is a row of at most a dozen cells, each the finished text of one field value with the literals
/// around it: "Mar ", "1, ", "20", "24". Writing a date copies these cells and formats nothing.
///
/// What cannot be laid out like that (a calendar that counts other months, numbers that are not digits, years
/// of more or less than four digits) is written by ICU, one date at a time under a lock. Either way the text
/// is ICU's own, byte for byte.

#include "platform/calendar/CivilDay.hpp"

#include <array>
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
    static constexpr std::size_t RoomNeeded = MaximalTextLength + 32;

    /// Compiles the pattern of a canonical locale name.
    explicit MediumDateTable(const std::string& localeName);
    ~MediumDateTable();

    /// Writes the text of a day and returns its end. REQUIRES: RoomNeeded bytes at `out`.
    char* write(char* out, CivilDay day) const {
        return hasCellsFor(day) ? writeCells(out, day) : writeWithFallback(out, day);
    }

    /// Whether days of ordinary years are written from cells.
    [[nodiscard]] bool isCompiled() const noexcept { return dayCount_ != 0; }

private:
    struct Cell {
        char text[31];
        std::uint8_t length;
    };
    static_assert(sizeof(Cell) == 32);

    /// What chooses the cell of a step.
    enum Source : std::uint8_t { Always, Day, Month, Century, YearOfCentury };
    static constexpr std::size_t SourceCount = 5;

    struct Step {
        Source source;
        std::uint16_t firstCell;
    };

    class Compiler;
    class Fallback;

    /// Whether the shown year has four digits, as cells have them.
    [[nodiscard]] bool hasCellsFor(CivilDay day) const noexcept {
        return static_cast<std::uint64_t>(day.number) - static_cast<std::uint64_t>(firstDay_) < dayCount_;
    }
    char* writeCells(char* out, CivilDay day) const noexcept;
    char* writeWithFallback(char* out, CivilDay day) const;
    [[nodiscard]] bool agreesWithFallback() const;

    std::vector<Step> steps_;
    std::vector<Cell> cells_;
    int yearOffset_ = 0;
    std::int64_t firstDay_ = 0;
    std::uint64_t dayCount_ = 0;
    std::unique_ptr<Fallback> fallback_;
};

inline char* MediumDateTable::writeCells(char* out, CivilDay day) const noexcept {
    const YearMonthDay parts = day.yearMonthDay();
    const auto year = static_cast<unsigned>(parts.year + yearOffset_);
    // As the sources stand.
    const std::array<unsigned, SourceCount> index{0, static_cast<unsigned>(parts.day - 1),
                                                  static_cast<unsigned>(parts.month - 1), year / 100,
                                                  year % 100};
    const Cell* cells = cells_.data();
    for (const Step step : steps_) {
        const Cell& cell = cells[step.firstCell + index[step.source]];
        std::memcpy(out, &cell, sizeof cell);
        out += cell.length;
    }
    return out;
}

} // namespace estatebook::platform
