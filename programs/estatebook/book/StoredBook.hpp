// SPDX-License-Identifier: MIT
#pragma once

/// StoredBook: a book file, opened by the program.
///
///     if (!isBookFile(file)) return readDocument(file);
///     const StoredBook book = StoredBook::openForReading(file);
///     TimeZone::setDefaultTimeZone(book.timeZone());
///     for (const auto& tenure : book.context->fetchAll<TKTenure>("Tenure")) …
///
/// The trap: objects reckon in the default zone from the moment on that they are first read. Set it to the book's before.

#include "estatebook/Failure.hpp"
#include "estatebook/document/BookDocument.hpp"

#include "platform/calendar/TimeZone.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/store/sqlite/SQLiteStore.hpp"

#include <string>
#include <string_view>
#include <utility>

namespace estatebook {

/// Whether the file is a data base, or is called like a book file and no document either. Whatever cannot be read, or is
/// no file, is told by its name. The file is closed again.
[[nodiscard]] bool isBookFile(const std::string& path);

/// Throws Failure when the model of books is not there.
void requireModel();
/// Throws Failure when it is not there.
[[nodiscard]] platform::Ref<platform::ManagedObjectModel> bookModel();
/// Of every book that the program opens; others are told of the command.
[[nodiscard]] platform::SQLiteStore::Options bookOptions(std::string_view command);

/// What a store refused, with the error for whoever tells of it in words of their own.
class StoreRefusal : public Failure {
public:
    StoreRefusal(ExitCode code, const std::string& text, std::string file, platform::StoreError error)
        : Failure(code, text), file_(std::move(file)), error_(std::move(error)) {}

    /// As the text shows it.
    [[nodiscard]] const std::string& file() const noexcept { return file_; }
    /// Its code is none of StoreErrorCode when a context cannot be saved for a reason of its own.
    [[nodiscard]] const platform::StoreError& error() const noexcept { return error_; }

private:
    std::string file_;
    platform::StoreError error_;
};

/// A message of a store, "It is so. Do that.", as the lines of this program read: "It is so; do that".
[[nodiscard]] std::string lineOfStore(std::string_view message);
/// What to throw when a store failed. Messages name the file as `file` does.
[[nodiscard]] StoreRefusal storeFailure(const std::string& file, const platform::StoreError& error);
/// The same for a context that cannot be saved.
[[nodiscard]] StoreRefusal storeFailure(const std::string& file, const platform::Store& store,
                                        const platform::Error& error);

struct StoredBook {
    /// As messages show it.
    std::string file;
    platform::Ref<platform::SQLiteStore> store;
    platform::Ref<platform::ManagedObjectContext> context;

    /// As it is now, however long it is read. Throws Failure.
    [[nodiscard]] static StoredBook openForReading(const std::string& path);
    /// Nobody else may write it meanwhile; they are told the command. Saves of the context go under the command, too. A book of an
    /// earlier version is brought up to date, which is told on standard error. Throws Failure.
    [[nodiscard]] static StoredBook openForWriting(const std::string& path, std::string_view command);
    /// A new one, to be written. Throws Failure.
    [[nodiscard]] static StoredBook create(const std::string& path, std::string_view command);

    /// What a setting of the book holds, without waking any object. Throws Failure.
    [[nodiscard]] platform::Value setting(std::string_view name) const;
    /// The zone in which the book is reckoned; the process's where it names none. Throws Failure for a zone that there is not.
    [[nodiscard]] platform::Ref<platform::TimeZone> timeZone() const;
    /// Makes the objects of a document and the settings that it implies (ImpliedSettings), to be saved. Throws Failure.
    void take(const document::BookDocument& document, std::string_view command) const;
    /// Throws Failure when nothing was saved.
    void save() const;
};

} // namespace estatebook
