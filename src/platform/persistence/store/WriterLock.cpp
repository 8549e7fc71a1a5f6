// SPDX-License-Identifier: MIT
#include "platform/persistence/store/WriterLock.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/file.h>
#include <unistd.h>

namespace estatebook::platform {

namespace {

constexpr std::string_view Somebody = "somebody";
constexpr std::string_view SomeProgram = "a program";
constexpr std::string_view With = " with ";
constexpr std::string_view Since = " since ";

/// "Ada Field with estatebook pay since 2026-05-08 22:13:20 +0000", on one line.
std::string description(const CommitOrigin& holder) {
    std::string text(holder.author.empty() ? Somebody : holder.author);
    text += With;
    text += holder.program.empty() ? SomeProgram : holder.program;
    if (!holder.command.empty()) text += " " + holder.command;
    text += Since;
    text += holder.when.description();
    for (char& each : text)
        if (static_cast<unsigned char>(each) < ' ') each = ' ';
    return text;
}

/// What the present holder wrote on the first line, which may be nothing yet.
std::string holderOf(int descriptor) {
    std::array<char, 512> bytes{};
    const ssize_t count = pread(descriptor, bytes.data(), bytes.size(), 0);
    const std::string_view text(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    const std::string_view line = text.substr(0, text.find('\n'));
    return line.empty() ? "another program" : std::string(line);
}

/// "2026-05-08 22:13:20 +0000", as Date describes itself.
std::optional<Date> instantIn(std::string_view text) {
    constexpr std::string_view form = "0000-00-00 00:00:00 +0000";
    if (text.size() != form.size() || !text.ends_with(" +0000")) return std::nullopt;
    std::array<int, 6> numbers{};
    std::size_t number = 0;
    for (std::size_t place = 0; place + 6 < text.size(); ++place) {
        const bool isDigit = text[place] >= '0' && text[place] <= '9';
        if (isDigit != (form[place] == '0') || (!isDigit && text[place] != form[place])) return std::nullopt;
        if (isDigit)
            numbers[number] = numbers[number] * 10 + (text[place] - '0');
        else
            ++number;
    }
    const std::chrono::year_month_day day{std::chrono::year(numbers[0]),
                                          std::chrono::month(static_cast<unsigned>(numbers[1])),
                                          std::chrono::day(static_cast<unsigned>(numbers[2]))};
    if (!day.ok() || numbers[3] > 23 || numbers[4] > 59 || numbers[5] > 59) return std::nullopt;
    const auto seconds = std::chrono::sys_days(day).time_since_epoch() + std::chrono::hours(numbers[3]) +
                         std::chrono::minutes(numbers[4]) + std::chrono::seconds(numbers[5]);
    return Date::fromUnixSeconds(static_cast<double>(std::chrono::seconds(seconds).count()));
}

/// None when whoever holds it wrote something else, or nothing yet.
std::optional<StoreHolder> holderIn(std::string_view line) {
    const std::size_t since = line.rfind(Since);
    if (since == std::string_view::npos) return std::nullopt;
    const std::size_t with = line.substr(0, since).rfind(With);
    const auto instant = instantIn(line.substr(since + Since.size()));
    if (with == std::string_view::npos || !instant) return std::nullopt;
    const std::string_view author = line.substr(0, with);
    const std::string_view program = line.substr(with + With.size(), since - with - With.size());
    return StoreHolder{std::string(author == Somebody ? "" : author),
                       std::string(program == SomeProgram ? "" : program), *instant};
}

void tellHolder(int descriptor, const std::string& text) {
    // Only for the eyes of others: without it the lock holds as well. Written over what is there, as a file that is emptied
    // first has to go to the disk when it is closed.
    const std::string line = text + '\n';
    if (pwrite(descriptor, line.data(), line.size(), 0) == static_cast<ssize_t>(line.size()))
        static_cast<void>(!ftruncate(descriptor, static_cast<off_t>(line.size())));
}

StoreError refusal(StoreErrorCode code, const std::string& path, const std::string& reason) {
    return {code, path, path + ": it cannot be opened for writing: " + reason};
}

} // namespace

StoreResult<WriterLock> WriterLock::take(const std::string& bookPath, const CommitOrigin& holder) {
    const std::string path = bookPath + ".lock";
    const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (descriptor < 0) {
        const bool isForbidden = errno == EACCES || errno == EROFS || errno == EPERM;
        return refusal(isForbidden ? StoreErrorCode::ReadOnly : StoreErrorCode::Unreadable, bookPath,
                       "its lock " + path + " cannot be made (" + std::strerror(errno) +
                           "). Ask for the right to write its folder, or open it for reading.");
    }
    WriterLock lock(descriptor);
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK)
            return refusal(StoreErrorCode::Unreadable, bookPath,
                           "the system cannot lock " + path + " (" + std::strerror(errno) +
                               "). Keep the book on another disk.");
        const std::string told = holderOf(descriptor);
        StoreError error =
            refusal(StoreErrorCode::Locked, bookPath, "it is held by " + told + ". Close it there first.");
        error.holder = holderIn(told);
        return error;
    }
    tellHolder(descriptor, description(holder));
    return lock;
}

WriterLock::~WriterLock() {
    // Not removed: who has opened the file in the meantime would hold a lock that nobody else sees.
    if (descriptor_ >= 0) close(descriptor_);
}

} // namespace estatebook::platform
