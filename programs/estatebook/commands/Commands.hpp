// SPDX-License-Identifier: MIT
#pragma once

/// Commands: what the program can be asked to do. Each prints to the stream and throws Failure when it cannot.

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

namespace estatebook {

struct BookOptions {
    /// The book document; "-" is standard input.
    std::string file;
    /// A date as documents write it; empty means now.
    std::string asOf;
};

struct StatementOptions {
    BookOptions book;
    std::string tenure;
    /// "text", "csv" or "json".
    std::string format = "text";
    /// All digits, and no rounding.
    bool exact = false;
};

struct ScheduleOptions {
    BookOptions book;
    std::string tenure;
    /// How many periods from the start of the tenure; absent: those that are charged by now.
    std::optional<std::uint64_t> count;
};

void printStatement(const StatementOptions& options, std::ostream& out);
void printTenures(const BookOptions& options, std::ostream& out);
void printDue(const BookOptions& options, std::ostream& out);
void printSchedule(const ScheduleOptions& options, std::ostream& out);
void printValues(const BookOptions& options, std::ostream& out);

} // namespace estatebook
