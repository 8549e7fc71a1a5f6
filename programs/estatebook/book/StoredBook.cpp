// SPDX-License-Identifier: MIT
#include "estatebook/book/StoredBook.hpp"

#include "estatebook/book/ImpliedSettings.hpp"
#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/JsonText.hpp"

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/system/Clock.hpp"
#include "platform/system/UserName.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "tags/TKTagNames.hpp"

#include <fmt/format.h>

#include <cctype>
#include <filesystem>
#include <iostream>
#include <optional>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace estatebook {

using document::forMessage;
using platform::Error;
using platform::Ref;
using platform::SQLiteStore;
using platform::Store;
using platform::StoreError;
using platform::StoreErrorCode;
using platform::StoreResult;
using platform::TimeZone;
using platform::Value;

namespace {

constexpr std::string_view BookSuffix = ".estatebook";
constexpr std::string_view DataBaseMark("SQLite format 3\0", 16);
constexpr std::size_t LongestName = 4096;
constexpr std::size_t LongestMessage = 1000;

/// The first bytes of a file; none when there is no file that can be read.
std::optional<std::string> beginningOf(const std::string& path) {
    // Whatever is no file may wait for a writer, or lose what is read from it.
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return std::nullopt;
    std::string bytes(DataBaseMark.size(), '\0');
    const ssize_t count = pread(descriptor, bytes.data(), bytes.size(), 0);
    close(descriptor);
    if (count < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

ExitCode exitCodeOf(StoreErrorCode code) noexcept {
    switch (code) {
    case StoreErrorCode::Newer:
    case StoreErrorCode::Locked:
    case StoreErrorCode::Busy:
        return ExitCode::NotNow;
    case StoreErrorCode::Foreign:
    case StoreErrorCode::Damaged:
    case StoreErrorCode::InvalidChange:
    case StoreErrorCode::Unsupported:
    case StoreErrorCode::OutOfMemory:
        return ExitCode::BadData;
    case StoreErrorCode::Missing:
    case StoreErrorCode::Exists:
    case StoreErrorCode::ReadOnly:
    case StoreErrorCode::Full:
    case StoreErrorCode::Unreadable:
    case StoreErrorCode::Moved:
    case StoreErrorCode::OutcomeUnknown:
        break;
    }
    return ExitCode::CannotRead;
}

/// What follows the path in a message of the store.
std::string lineOf(const std::string& file, std::string_view path, std::string_view message) {
    if (!path.empty() && message.starts_with(path) && message.substr(path.size()).starts_with(": "))
        message.remove_prefix(path.size() + 2);
    return fmt::format("{}: {}", file, lineOfStore(message));
}

template <class Open>
StoredBook opened(const std::string& path, std::string_view command, Open open) {
    requireModel();
    StoredBook book{forMessage(path, LongestName), nullptr,
                    TKManagedObjectModel::inMemoryManagedObjectContext()};
    const auto& coordinator = book.context->persistentStoreCoordinator();
    const SQLiteStore::Options options = bookOptions(command);
    StoreResult<Ref<SQLiteStore>> store = open(coordinator->managedObjectModel(), options);
    if (!store) throw storeFailure(book.file, store.error());
    book.store = *store;
    coordinator->addPersistentStore(book.store);
    book.context->setUndoManager(nullptr); // nothing is edited that somebody could undo
    book.context->setCommitOrigin(options.holder.author, options.holder.program, options.holder.command);
    return book;
}

} // namespace

bool isBookFile(const std::string& path) {
    if (path == "-") return false; // standard input, whatever there is of that name
    const auto beginning = beginningOf(path);
    if (beginning && beginning->starts_with(DataBaseMark)) return true;
    // One that was cut short or written over is to be told of as what it was.
    return path.ends_with(BookSuffix) && (!beginning || !beginning->starts_with('{'));
}

void requireModel() {
    if (const auto error = TKManagedObjectModel::modelError())
        throw Failure(ExitCode::CannotRead, fmt::format("{}; install the program anew",
                                                        forMessage(error->localizedDescription(), 400)));
}

Ref<platform::ManagedObjectModel> bookModel() {
    requireModel();
    return TKManagedObjectModel::inMemoryManagedObjectContext()
        ->persistentStoreCoordinator()
        ->managedObjectModel();
}

SQLiteStore::Options bookOptions(std::string_view command) {
    return {.classes = {TKTagNames::archivedClass()},
            .holder = {platform::Clock::now(), platform::fullUserName(), "estatebook", std::string(command)}};
}

std::string lineOfStore(std::string_view message) {
    std::string line(message);
    if (line.ends_with('.')) line.pop_back();
    if (const std::size_t end = line.rfind(". "); end != std::string::npos && end + 2 < line.size()) {
        line[end] = ';';
        line[end + 2] = static_cast<char>(std::tolower(static_cast<unsigned char>(line[end + 2])));
    }
    return forMessage(line, LongestMessage);
}

StoreRefusal storeFailure(const std::string& file, const StoreError& error) {
    return {exitCodeOf(error.code), lineOf(file, error.path, error.message), file, error};
}

StoreRefusal storeFailure(const std::string& file, const Store& store, const Error& error) {
    const auto code = static_cast<StoreErrorCode>(error.code());
    const bool isOfStore = error.domain() == "Persistence" && code >= StoreErrorCode::Missing &&
                           code <= StoreErrorCode::OutOfMemory;
    StoreError ofStore{isOfStore ? code : StoreErrorCode(), std::string(store.location()),
                       error.localizedDescription()};
    const std::string line = lineOf(file, ofStore.path, ofStore.message);
    return {isOfStore ? exitCodeOf(code) : ExitCode::BadData, line, file, std::move(ofStore)};
}

StoredBook StoredBook::openForReading(const std::string& path) {
    return opened(path, {}, [&](const auto& model, SQLiteStore::Options options) {
        options.access = SQLiteStore::Access::Read;
        return SQLiteStore::open(path, model, options);
    });
}

StoredBook StoredBook::openForWriting(const std::string& path, std::string_view command) {
    StoredBook book = opened(path, command, [&](const auto& model, const SQLiteStore::Options& options) {
        return SQLiteStore::open(path, model, options);
    });
    if (const auto& migration = book.store->migration())
        std::cerr << fmt::format(
            "{}: an earlier version wrote it; it is up to date now, and is kept as it was in {}\n", book.file,
            forMessage(migration->copy, LongestName));
    return book;
}

StoredBook StoredBook::create(const std::string& path, std::string_view command) {
    return opened(path, command, [&](const auto& model, const SQLiteStore::Options& options) {
        return SQLiteStore::create(path, model, options);
    });
}

// All settings are read, so that one that is damaged is told of and not taken for one that is missing.
Value StoredBook::setting(std::string_view name) const {
    const platform::EntityDescription& entity = *store->model().entityNamed("State");
    const platform::RowShape& shape = store->shapes().of(entity);
    const auto nameAt = shape.attribute(keys::name);
    const auto valueAt = shape.attribute(keys::value);
    std::optional<Value> first;
    const auto visited = store->fetchRows(entity, {}, [&](const platform::Row& row) {
        if (first || !nameAt || !valueAt) return;
        const auto text = row.values[*nameAt].string();
        if (text && text->view() == name) first = row.values[*valueAt];
    });
    if (!visited) throw storeFailure(file, visited.error());
    return first.value_or(Value());
}

Ref<TimeZone> StoredBook::timeZone() const {
    const Value value = setting(document::TimeZoneSettingName);
    if (value.isAbsent() || value.isNullObject()) return TimeZone::defaultTimeZone();
    const auto name = value.string();
    auto zone = name ? TimeZone::named(name->view()) : nullptr;
    if (!zone)
        throw Failure(
            ExitCode::BadData,
            fmt::format("{}: its time zone \"{}\" is unknown; bring the system's time zones up to date", file,
                        forMessage(value.description())));
    return zone;
}

void StoredBook::take(const document::BookDocument& document, std::string_view command) const {
    if (const auto error = takeDocument(document, *context, *store, bookOptions(command).holder))
        throw storeFailure(file, *error);
}

void StoredBook::save() const {
    Ref<Error> error;
    if (!context->save(&error)) throw storeFailure(file, *store, *error);
}

} // namespace estatebook
