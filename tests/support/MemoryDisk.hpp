// SPDX-License-Identifier: MIT
#pragma once

/// MemoryDisk: a disk for book files that lies in memory, writes down what is done to it, and fails when it is told to.
///
///     MemoryDisk disk;
///     auto store = SQLiteStore::create("/book.estatebook", bookModel(), {.fileSystem = &disk});
///     disk.fault = [&](MemoryDisk::Call call) { return call == MemoryDisk::Call::Sync ? Fault::Fails : Fault::None; };
///
/// It answers the data base as the system's own files do: what is written is there for all who read at once, and is safe once
/// the file was synced; a name is safe once its folder was. What a power loss leaves of it, Platter tells.

#include "platform/persistence/store/sqlite/FileSystem.hpp"
#include "support/TestFolder.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

struct sqlite3_vfs;

namespace estatebook::test {

/// Files by their names.
using DiskContent = std::map<std::string, std::string>;

/// Something that was done to a disk.
struct DiskOperation {
    enum class Kind : std::uint8_t {
        Create,   ///< `name` became that of the new file `file`
        Write,    ///< of `bytes` at `place`
        Truncate, ///< to the size `place`
        Sync,     ///< what was done to the file is safe
        LoseWrites, ///< a sync failed: what was done since the last one stays to be read, and never becomes safe
        Remove,     ///< of `name`
        Rename,     ///< of `name` to `other`, in place of what bore that name
        SyncFolder, ///< the names in the folder `name` are safe
    };
    Kind kind{};
    /// Numbered in the order of their creation.
    std::size_t file = 0;
    std::size_t place = 0;
    std::string bytes{};
    std::string name{};
    std::string other{};
};

class MemoryDisk final : public platform::sqlite::FileSystem {
public:
    enum class Call : std::uint8_t {
        Open,
        Read,
        Write,
        Truncate,
        Sync,
        Size,
        Lock,
        Unlock,
        Remove,
        Look,
        Rename,
        MakeFolder
    };
    enum class Fault : std::uint8_t {
        None,
        Fails, ///< an error, and nothing was done
        Half,  ///< half of what was to be written is
        Full,  ///< no room
    };

    MemoryDisk();
    ~MemoryDisk() override;

    /// Asked before each call.
    std::function<Fault(Call)> fault;
    /// What was done, when it is asked for.
    std::vector<DiskOperation>* log = nullptr;
    /// How many bytes all files may have together.
    std::size_t capacity = SIZE_MAX;
    /// How often it was called.
    std::uint64_t calls = 0;

    [[nodiscard]] DiskContent content() const;
    /// REQUIRES: no file is open. Files are numbered from 0 in the order of their names.
    void load(DiskContent content);

    [[nodiscard]] const char* name() const noexcept override { return name_.c_str(); }
    [[nodiscard]] std::string resolved(const std::string& path, std::error_code& error) const override;
    [[nodiscard]] bool isFile(const std::string& path) const override { return files_.contains(path); }
    [[nodiscard]] bool isTaken(const std::string& path) const override {
        return files_.contains(path) || folders_.contains(path);
    }
    [[nodiscard]] bool isWritable(const std::string&) const override { return true; }
    [[nodiscard]] std::uintmax_t sizeOf(const std::string& path) const override;
    void remove(const std::string& path) const override;
    [[nodiscard]] std::error_code makeLike(const std::string&, const std::string&) const override {
        return {};
    }
    [[nodiscard]] std::error_code rename(const std::string& from, const std::string& to) const override;
    [[nodiscard]] std::error_code replace(const std::string& from, const std::string& to) const override;
    /// A folder is there for good as soon as it is made.
    [[nodiscard]] std::error_code makeFolder(const std::string& path) const override;
    [[nodiscard]] std::vector<std::string> namesIn(const std::string& folder) const override;
    [[nodiscard]] std::error_code syncFile(const std::string& path) const override;
    [[nodiscard]] std::error_code syncFolderOf(const std::string& path) const override;
    [[nodiscard]] platform::StoreResult<platform::WriterLock>
    lock(const std::string& path, const platform::CommitOrigin& holder) const override;

private:
    friend struct DiskCalls;

    struct File {
        std::size_t number = 0;
        std::string bytes{};
        // Who holds which of the data base's locks.
        int readers = 0;
        const void* reserved = nullptr;
        const void* pending = nullptr;
        const void* exclusive = nullptr;
    };

    Fault faultOf(Call call) const;
    void tell(DiskOperation operation) const;
    [[nodiscard]] std::size_t used() const;

    // A file system is const for those who use it, whatever they do to the files.
    mutable std::map<std::string, std::shared_ptr<File>> files_;
    mutable std::set<std::string> folders_;
    std::size_t fileCount_ = 0;
    std::string name_;
    std::unique_ptr<sqlite3_vfs> vfs_;
    TestFolder locks_;
};

} // namespace estatebook::test
