// SPDX-License-Identifier: MIT
#pragma once

/// Commands: what the program can be asked to do. Each prints to the stream and throws Failure when it cannot.

#include "estatebook/Format.hpp"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

namespace estatebook {

struct BookOptions {
    /// The book, a document or a book file; "-" is a document on standard input.
    std::string file;
    /// A date as documents write it; empty means now.
    std::string asOf;
};

struct ListOptions {
    BookOptions book;
    Format format = Format::Text;
};

struct StatementOptions {
    ListOptions list;
    std::string tenure;
    /// All digits, and no rounding.
    bool exact = false;
    /// Only the lines since the balance last was zero or more.
    bool outstanding = false;
    /// A part for each primary tag.
    bool byTag = false;
    /// The file to write; absent: the stream.
    std::optional<std::string> output;
};

struct ScheduleOptions {
    BookOptions book;
    std::string tenure;
    /// How many periods from the start of the tenure; absent: those that are charged by now.
    std::optional<std::uint64_t> count;
};

struct IncomeOptions {
    ListOptions list;
    /// The property by its identifier or its name; absent: all.
    std::optional<std::string> property;
    /// How many months up to now; absent: all, and what has no date.
    std::optional<std::uint64_t> months;
};

struct BondOptions {
    ListOptions list;
    /// What adjustments of bonds are tagged with; empty: every adjustment is one.
    std::string tag = "Bond";
};

struct InitOptions {
    std::string file;
    /// Empty: the zone of the process.
    std::string timeZone;
    /// Empty: none is set.
    std::string currency;
    bool billsAtEnd = false;
};

struct ImportOptions {
    /// "-" is standard input.
    std::string document;
    std::string file;
};

struct ExportOptions {
    /// A document or a book file; "-" is a document on standard input.
    std::string file;
    /// Whether what a document cannot carry may be left out.
    bool isPartial = false;
};

struct CheckOptions {
    std::string file;
    /// Where to put what can be read of a damaged book; absent: nowhere.
    std::optional<std::string> salvage;
};

struct BackupOptions {
    std::string file;
    /// Absent: the copy of the day, beside the book.
    std::optional<std::string> copy;
};

struct RestoreOptions {
    std::string copy;
    /// The new book.
    std::string file;
};

void printStatement(const StatementOptions& options, std::ostream& out);
/// Those of all tenures, one after another, as text or as records; the tenure and the output of the options count nothing.
void printStatements(const StatementOptions& options, std::ostream& out);
void printTenures(const ListOptions& options, std::ostream& out);
void printProperties(const ListOptions& options, std::ostream& out);
void printTenants(const ListOptions& options, std::ostream& out);
void printDue(const ListOptions& options, std::ostream& out);
void printArrears(const ListOptions& options, std::ostream& out);
void printRentRoll(const ListOptions& options, std::ostream& out);
void printIncome(const IncomeOptions& options, std::ostream& out);
void printBonds(const BondOptions& options, std::ostream& out);
void printNotes(const ListOptions& options, std::ostream& out);
void printSchedule(const ScheduleOptions& options, std::ostream& out);
void printValues(const BookOptions& options, std::ostream& out);
/// Prints the arrears again and again, until a signal ends it.
void watchArrears(const BookOptions& options, std::ostream& out);

/// Makes a new, empty book.
void initBook(const InitOptions& options);
/// Takes a document into a new book, or into an empty one.
void importBook(const ImportOptions& options);
/// Brings a book file of an earlier version up to date.
void migrateBook(const std::string& file, std::ostream& out);
/// Prints a book as a document.
void exportBook(const ExportOptions& options, std::ostream& out);
/// Prints a line for each thing that is wrong with a book file, or that nothing is.
void checkBook(const CheckOptions& options, std::ostream& out);
/// Makes a checked copy of a book file.
void backUpBook(const BackupOptions& options, std::ostream& out);
/// Makes a new book of a copy.
void restoreBook(const RestoreOptions& options, std::ostream& out);
/// Prints what a book file is and holds, and who saved it last.
void printInfo(const std::string& file, std::ostream& out);

} // namespace estatebook
