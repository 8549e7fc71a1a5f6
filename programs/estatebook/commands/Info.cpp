// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/TextTable.hpp"
#include "estatebook/book/StoredBook.hpp"
#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "store/TKState.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <system_error>
#include <utility>

namespace estatebook {

using document::forMessage;
using platform::Commit;
using platform::Date;
using platform::Value;

namespace {

constexpr std::size_t SavesShown = 5;

std::string countOf(const StoredBook& book, std::string_view entity, std::string_view one,
                    std::string_view many) {
    const auto keys = book.store->fetchKeys(*book.store->model().entityNamed(entity));
    if (!keys) throw storeFailure(book.file, keys.error());
    return fmt::format("{} {}", keys->size(), keys->size() == 1 ? one : many);
}

std::string contents(const StoredBook& book) {
    return countOf(book, "Property", "property", "properties") + ", " +
           countOf(book, "Tenant", "tenant", "tenants") + ", " +
           countOf(book, "Tenure", "tenure", "tenures") + ", " +
           countOf(book, "Transaction", "transaction", "transactions") + ", " +
           countOf(book, "Note", "note", "notes");
}

std::string setting(const StoredBook& book, std::string_view name) {
    const Value value = book.setting(name);
    return value.isAbsent() || value.isNullObject() ? "not set" : forMessage(value.description());
}

/// "236 KiB"; the file is not opened, which would take our hold on it away.
std::string sizeOf(const StoredBook& book) {
    std::error_code error;
    const auto size = std::filesystem::file_size(std::filesystem::path(book.store->location()), error);
    if (error) return "unknown";
    constexpr std::uintmax_t Kibi = 1024;
    if (size < 10 * Kibi * Kibi) return fmt::format("{} KiB", (size + Kibi - 1) / Kibi);
    return fmt::format("{} MiB", (size + Kibi * Kibi - 1) / (Kibi * Kibi));
}

/// "2026-05-08 22:13:20" on the book's walls.
std::string momentText(Date date, const platform::Calendar& calendar) {
    using platform::CalendarUnit;
    const auto parts =
        calendar.componentsFromDate(CalendarUnit::Year | CalendarUnit::Month | CalendarUnit::Day |
                                        CalendarUnit::Hour | CalendarUnit::Minute | CalendarUnit::Second,
                                    date);
    const auto shown = [](const auto& part) { return part.value_or(0); };
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", shown(parts.year), shown(parts.month),
                       shown(parts.day), shown(parts.hour), shown(parts.minute), shown(parts.second));
}

std::string orUnknown(const std::string& text) {
    return text.empty() ? "unknown" : forMessage(text);
}

void printSaves(const std::vector<Commit>& commits, const platform::Calendar& calendar, std::ostream& out) {
    if (commits.empty()) {
        out << "Nothing was saved yet.\n";
        return;
    }
    TextTable table({{"Save", TextTable::Align::Right},
                     {"When"},
                     {"Program"},
                     {"Rows added", TextTable::Align::Right},
                     {"Who", TextTable::Align::Flexible}});
    const std::size_t shown = std::min(SavesShown, commits.size());
    for (auto commit = commits.rbegin(); commit != commits.rbegin() + static_cast<std::ptrdiff_t>(shown);
         ++commit)
        table.addRow({std::to_string(commit->number), momentText(commit->origin.when, calendar),
                      forMessage(commit->origin.program + " " + commit->origin.command),
                      std::to_string(commit->lastKey - commit->firstKey + 1),
                      orUnknown(commit->origin.author)});
    table.print(out, TextTable::widthOfOutput());
    if (commits.size() > shown) out << fmt::format("and {} before\n", commits.size() - shown);
}

} // namespace

void printInfo(const std::string& file, std::ostream& out) {
    const StoredBook book = StoredBook::openForReading(file);
    const platform::Calendar calendar(book.timeZone());
    const auto commits = book.store->commits();
    if (!commits) throw storeFailure(book.file, commits.error());

    const std::pair<std::string_view, std::string> facts[] = {
        {"Holds", contents(book)},
        {"Time zone", setting(book, document::TimeZoneSettingName)},
        {"Currency", setting(book, TKCurrencyCodeStateName->view())},
        {"Billing mode", setting(book, TKBillingModeStateName->view())},
        {"Identifier", std::string(book.store->identifier())},
        {"Size", sizeOf(book)},
    };
    out << book.file << "\n\n";
    TextTable table({{"Book"}, {"", TextTable::Align::Flexible}});
    for (const auto& [title, text] : facts) table.addRow({title, text});
    table.print(out, TextTable::widthOfOutput());
    out << '\n';
    printSaves(*commits, calendar, out);
}

} // namespace estatebook
