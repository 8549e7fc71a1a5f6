// SPDX-License-Identifier: MIT
#include "platform/persistence/store/WriterLock.hpp"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace estatebook::platform {

namespace {

/// "Ada Field with estatebook pay since 2026-05-08 22:13:20 +0000", on one line.
std::string description(const CommitOrigin& holder) {
    std::string text = (holder.author.empty() ? "somebody" : holder.author) + " with " +
                       (holder.program.empty() ? "a program" : holder.program);
    if (!holder.command.empty()) text += " " + holder.command;
    text += " since " + holder.when.description();
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
        return refusal(StoreErrorCode::Locked, bookPath,
                       "it is held by " + holderOf(descriptor) + ". Close it there first.");
    }
    tellHolder(descriptor, description(holder));
    return lock;
}

WriterLock::~WriterLock() {
    // Not removed: who has opened the file in the meantime would hold a lock that nobody else sees.
    if (descriptor_ >= 0) close(descriptor_);
}

} // namespace estatebook::platform
