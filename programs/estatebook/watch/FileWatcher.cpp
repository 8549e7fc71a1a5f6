// SPDX-License-Identifier: MIT
#include "estatebook/watch/FileWatcher.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <system_error>

#include <sys/inotify.h>
#include <unistd.h>

namespace estatebook {

namespace {

constexpr std::uint32_t Changes = IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                  IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

/// Many events, or one with the longest name.
constexpr std::size_t BufferSize = 16384;

std::string wordsOf(int error) {
    return std::generic_category().message(error);
}

} // namespace

FileWatcher::FileWatcher(platform::RunLoop& loop, std::filesystem::path file, std::function<void()> changed,
                         std::function<bool()> isKeptOpen)
    : loop_(loop), file_(std::move(file)), changed_(std::move(changed)), isKeptOpen_(std::move(isKeptOpen)),
      descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (descriptor_ < 0) {
        fault_ = wordsOf(errno);
        return;
    }
    watch();
    loop_.addDescriptor(descriptor_, [this] { takeEvents(); });
}

FileWatcher::~FileWatcher() {
    if (descriptor_ < 0) return;
    loop_.removeDescriptor(descriptor_);
    close(descriptor_);
}

/// A folder that is watched already keeps its number.
void FileWatcher::watch() {
    names_.clear();
    fault_.clear();
    watchFolderOf(file_);
    std::error_code error;
    const auto target = std::filesystem::canonical(file_, error);
    if (!error) watchFolderOf(target);
}

void FileWatcher::watchFolderOf(const std::filesystem::path& path) {
    const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    const int number = inotify_add_watch(descriptor_, folder.c_str(), Changes);
    if (number < 0)
        fault_ = wordsOf(errno);
    else
        names_.emplace(number, path.filename());
}

void FileWatcher::takeEvents() {
    alignas(inotify_event) std::array<char, BufferSize> buffer{};
    std::uint32_t ours = 0;
    for (ssize_t size = 0; (size = read(descriptor_, buffer.data(), buffer.size())) > 0;)
        for (const char* place = buffer.data(); place < buffer.data() + size;) {
            inotify_event event{};
            std::memcpy(&event, place, offsetof(inotify_event, name));
            const std::string_view name = event.len > 0 ? place + offsetof(inotify_event, name) : "";
            const auto [first, last] = names_.equal_range(event.wd);
            // Without a name it is about the folder itself, or some events were lost.
            if ((name.empty() && (event.mask & IN_IGNORED) == 0) ||
                std::any_of(first, last, [&](const auto& each) { return each.second == name; }))
                ours |= event.mask;
            place += offsetof(inotify_event, name) + event.len;
        }
    if (ours == 0) return;
    const std::uint32_t idle = isKeptOpen_ && isKeptOpen_() ? IN_CLOSE_WRITE : IN_MODIFY;
    if ((ours & ~idle) == 0) return;
    watch(); // what the name leads to may be elsewhere now
    changed_();
}

} // namespace estatebook
