// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/BookCopies.hpp"

#include "platform/calendar/Calendar.hpp"
#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/sqlite/BookCheck.hpp"
#include "platform/persistence/store/sqlite/BookFile.hpp"
#include "platform/persistence/store/sqlite/GuardedWork.hpp"
#include "platform/persistence/store/sqlite/NewFile.hpp"
#include "platform/persistence/store/sqlite/NewFolder.hpp"
#include "platform/system/Clock.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

namespace estatebook::platform {

namespace {

using namespace sqlite;

constexpr std::string_view Suffix = ".estatebook";

const FileSystem& filesOf(const SQLiteStore::Options& options) noexcept {
    return options.fileSystem ? *options.fileSystem : FileSystem::ofTheMachine();
}

std::string wordsFor(BookCopies::Occasion occasion) {
    switch (occasion) {
    case BookCopies::Occasion::Import:
        return "before import";
    case BookCopies::Occasion::Migration:
        return "before migration";
    case BookCopies::Occasion::Day:
        break;
    }
    return {};
}

std::string textOf(CivilDay day) {
    const YearMonthDay parts = day.yearMonthDay();
    char text[64];
    std::snprintf(text, sizeof text, "%04lld-%02d-%02d", static_cast<long long>(parts.year), parts.month,
                  parts.day);
    return text;
}

/// The day that "2026-11-21" names, written just so.
std::optional<CivilDay> dayNamed(std::string_view text) {
    long long year = 0;
    int month = 0;
    int day = 0;
    int length = 0;
    const std::string copy(text);
    if (std::sscanf(copy.c_str(), "%4lld-%2d-%2d%n", &year, &month, &day, &length) != 3) return {};
    const auto found = CivilDay::ifExists(year, month, day);
    return found && textOf(*found) == text ? found : std::nullopt;
}

/// Monday begins a week.
std::int64_t weekOf(CivilDay day) noexcept {
    constexpr CivilDay someMonday = CivilDay::fromYearMonthDay(2001, 1, 1);
    const std::int64_t days = day - someMonday;
    return days >= 0 ? days / 7 : -((6 - days) / 7);
}

std::string copyChecked(const std::string& from, const std::string& to, const Ref<ManagedObjectModel>& model,
                        const SQLiteStore::Options& options) {
    const FileSystem& files = filesOf(options);
    const SQLiteStore::Options reading{.access = SQLiteStore::Access::Read,
                                       .classes = options.classes,
                                       .patience = options.patience,
                                       .fileSystem = options.fileSystem,
                                       .layoutSteps = options.layoutSteps};
    NewFile copy(files, to);
    // As a book it is looked at first: nothing else is copied.
    const std::string source = BookFile::open(from, model, reading)->path();
    copy.makeLike(source);
    {
        Connection connection(files, source, Connection::Access::Copy, options.patience);
        Statement statement(connection, "VACUUM INTO ?1");
        Statement::Use(statement).bind(1, Cell::text(copy.draft())).run();
    }
    {
        const auto made = BookFile::open(copy.draft(), model, reading);
        if (const auto findings = BookCheck(*made).findings(); !findings.empty())
            damaged("it cannot be copied as it is: " + findings.front());
    }
    copy.settle();
    return copy.path();
}

} // namespace

StoreResult<std::string> copyBook(const std::string& from, const std::string& to,
                                  const Ref<ManagedObjectModel>& model, const SQLiteStore::Options& options) {
    return sqlite::guarded(from, [&] {
        try {
            return copyChecked(from, to, model, options);
        } catch (const StoreFailure& failure) {
            // Every other failure is about the file that is read.
            if (failure.code == StoreErrorCode::Exists) throw errorOf(failure, to);
            throw;
        }
    });
}

BookCopies::BookCopies(const std::string& bookPath, Ref<ManagedObjectModel> model,
                       SQLiteStore::Options options)
    : book_(bookPath), name_(std::filesystem::path(bookPath).filename().string()), model_(std::move(model)),
      options_(std::move(options)) {
    if (name_.ends_with(Suffix)) name_.resize(name_.size() - Suffix.size());
    folder_ = (std::filesystem::path(bookPath).parent_path() / (name_ + ".copies")).string();
}

std::string BookCopies::pathOf(CivilDay day) const {
    return (std::filesystem::path(folder_) / (name_ + " " + textOf(day) + std::string(Suffix))).string();
}

std::vector<CivilDay> BookCopies::days() const {
    std::vector<CivilDay> days;
    for (const std::string& name : filesOf(options_).namesIn(folder_)) {
        std::string_view rest = name;
        if (!rest.starts_with(name_ + " ") || !rest.ends_with(Suffix)) continue;
        rest.remove_prefix(name_.size() + 1);
        rest.remove_suffix(Suffix.size());
        if (const auto day = dayNamed(rest)) days.push_back(*day);
    }
    std::ranges::sort(days);
    return days;
}

StoreResult<std::string> BookCopies::copyTo(const std::string& name) {
    const NewFolder folder(filesOf(options_), folder_);
    if (const std::error_code error = folder.make())
        return errorOf(unreadable("the folder for copies, " + folder_ + ", cannot be made", error), book_);
    return copyBook(book_, (std::filesystem::path(folder_) / name).string(), model_, options_);
}

StoreResult<std::string> BookCopies::makeBefore(Occasion occasion) {
    const Calendar calendar(TimeZone::defaultTimeZone());
    const Date now = Clock::now();
    const auto seconds = static_cast<long long>(now.secondsSinceReferenceDate -
                                                calendar.startOfDay(now).secondsSinceReferenceDate);
    char time[64];
    std::snprintf(time, sizeof time, " %02lld%02lld%02lld ", seconds / 3600, seconds / 60 % 60, seconds % 60);
    const std::string name = name_ + " " + textOf(calendar.civilDay(now)) + time + wordsFor(occasion);
    // A second one within the same second gets a number.
    for (unsigned number = 1;; ++number) {
        auto made = copyTo(name + (number == 1 ? "" : " " + std::to_string(number)) + std::string(Suffix));
        if (made || made.error().code != StoreErrorCode::Exists) return made;
    }
}

StoreResult<std::optional<std::string>> BookCopies::makeForToday() {
    const CivilDay today = Calendar(TimeZone::defaultTimeZone()).civilDay(Clock::now());
    const std::string path = pathOf(today);
    const FileSystem& files = filesOf(options_);
    if (files.isTaken(path)) return std::optional<std::string>();
    const auto made = copyTo(std::filesystem::path(path).filename().string());
    if (!made) return made.error();
    for (const CivilDay day : daysToLetGo(days())) files.remove(pathOf(day));
    return std::optional(*made);
}

std::vector<CivilDay> BookCopies::daysToLetGo(std::span<const CivilDay> days) {
    std::vector<CivilDay> latestFirst(days.begin(), days.end());
    std::ranges::sort(latestFirst, std::greater());
    std::set<std::int64_t> weeks;
    std::vector<CivilDay> gone;
    for (std::size_t index = 0; index < latestFirst.size(); ++index) {
        const bool isLastOfWeek = weeks.insert(weekOf(latestFirst[index])).second;
        const bool isKept = index < KeptDays || (isLastOfWeek && weeks.size() <= KeptWeeks);
        if (!isKept) gone.push_back(latestFirst[index]);
    }
    std::ranges::reverse(gone);
    return gone;
}

} // namespace estatebook::platform
