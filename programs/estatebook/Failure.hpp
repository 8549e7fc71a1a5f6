// SPDX-License-Identifier: MIT
#pragma once

/// Failure: why a command ends without having done its work, and the number the program then ends with.
///
///     throw Failure(ExitCode::NothingMatched, "book.json: no tenure is called \"X\"");

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace estatebook {

enum class ExitCode : int {
    Good = 0,
    NothingMatched = 1, ///< nothing, or not just one thing, is so called
    WrongUsage = 2,     ///< the command line makes no sense
    BadData = 3,        ///< the book is refused, or what is asked for cannot be reckoned
    NotNow = 4,         ///< another program has the book, or it takes a newer one to read it
    CannotRead = 5,     ///< a file cannot be read, or what is to be written cannot be
};

class Failure : public std::runtime_error {
public:
    /// The text is one line for the reader, or several when it lists choices. It begins with the name of the file,
    /// unless it is about usage.
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    [[nodiscard]] ExitCode code() const noexcept { return code_; }
    /// Whether the text begins with the name of a file.
    [[nodiscard]] bool isAboutFile() const noexcept { return code_ != ExitCode::WrongUsage; }

private:
    ExitCode code_;
};

/// A file that cannot be made or written.
class FileFailure : public Failure {
public:
    enum class Why : std::uint8_t {
        NoFolder,
        /// There is something of that name.
        Exists,
        /// Beside it lies the unfinished save of a book that is gone.
        JournalLeft,
        NoPlainFile,
        /// It is a book's file, which nothing else replaces.
        IsBook,
        /// The system says so; `error` is its number.
        System,
    };

    FileFailure(Why why, std::string file, const std::string& text, int error = 0)
        : Failure(ExitCode::CannotRead, text), why_(why), file_(std::move(file)), error_(error) {}

    [[nodiscard]] Why why() const noexcept { return why_; }
    /// As the text shows it.
    [[nodiscard]] const std::string& file() const noexcept { return file_; }
    [[nodiscard]] int error() const noexcept { return error_; }

private:
    Why why_;
    std::string file_;
    int error_;
};

} // namespace estatebook
