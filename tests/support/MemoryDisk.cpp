// SPDX-License-Identifier: MIT
#include "support/MemoryDisk.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

namespace estatebook::test {

using Call = MemoryDisk::Call;
using Fault = MemoryDisk::Fault;
using Kind = DiskOperation::Kind;

namespace {

constexpr int SectorSize = 4096;

/// Locks are of the kernel; the files that it keeps them on need no disk.
std::filesystem::path folderOfLocks() {
    const std::filesystem::path memory = "/dev/shm";
    return std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
}

/// The name of a file for its lock, which lies elsewhere.
std::string lockNameOf(const std::string& path) {
    std::string name = path.substr(1);
    std::ranges::replace(name, '/', '_');
    return name;
}
std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

} // namespace

/// What the data base calls.
struct DiskCalls {
    struct Handle {
        sqlite3_file base;
        MemoryDisk* disk = nullptr;
        std::shared_ptr<MemoryDisk::File> file;
        std::string name;
        int lock = SQLITE_LOCK_NONE;
        bool hasToSyncFolder = false;
    };

    static MemoryDisk& diskOf(sqlite3_vfs* vfs) { return *static_cast<MemoryDisk*>(vfs->pAppData); }
    static Handle& handleOf(sqlite3_file* file) { return *reinterpret_cast<Handle*>(file); }

    static int open(sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags, int* outFlags) {
        MemoryDisk& disk = diskOf(vfs);
        file->pMethods = nullptr;
        if (disk.faultOf(Call::Open) != Fault::None || !name) return SQLITE_CANTOPEN;
        auto found = disk.files_.find(name);
        const bool isNew = found == disk.files_.end();
        if (isNew) {
            if ((flags & SQLITE_OPEN_CREATE) == 0) return SQLITE_CANTOPEN;
            auto created = std::make_shared<MemoryDisk::File>();
            created->number = disk.fileCount_++;
            found = disk.files_.emplace(name, std::move(created)).first;
            disk.tell({.kind = Kind::Create, .file = found->second->number, .name = name});
        } else if ((flags & SQLITE_OPEN_EXCLUSIVE) != 0) {
            return SQLITE_CANTOPEN;
        }
        auto* handle = new (file) Handle;
        handle->disk = &disk;
        handle->file = found->second;
        handle->name = name;
        handle->hasToSyncFolder = isNew && (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0;
        handle->base.pMethods = &Methods;
        if (outFlags) *outFlags = flags;
        return SQLITE_OK;
    }
    static int close(sqlite3_file* file) {
        unlock(handleOf(file), SQLITE_LOCK_NONE);
        handleOf(file).~Handle();
        file->pMethods = nullptr;
        return SQLITE_OK;
    }

    static int read(sqlite3_file* file, void* buffer, int count, sqlite3_int64 offset) {
        Handle& handle = handleOf(file);
        if (handle.disk->faultOf(Call::Read) != Fault::None) return SQLITE_IOERR_READ;
        const std::string& bytes = handle.file->bytes;
        const auto wanted = static_cast<std::size_t>(count);
        const std::size_t place = std::min(static_cast<std::size_t>(offset), bytes.size());
        const std::size_t there = std::min(wanted, bytes.size() - place);
        std::memcpy(buffer, bytes.data() + place, there);
        if (there == wanted) return SQLITE_OK;
        std::memset(static_cast<char*>(buffer) + there, 0, wanted - there);
        return SQLITE_IOERR_SHORT_READ;
    }
    static int write(sqlite3_file* file, const void* buffer, int count, sqlite3_int64 offset) {
        Handle& handle = handleOf(file);
        const Fault fault = handle.disk->faultOf(Call::Write);
        if (fault == Fault::Full) return SQLITE_FULL;
        if (fault == Fault::Fails) return SQLITE_IOERR_WRITE;
        std::string& bytes = handle.file->bytes;
        const auto place = static_cast<std::size_t>(offset);
        auto size = static_cast<std::size_t>(count);
        if (fault == Fault::Half) size /= 2;
        if (place + size > bytes.size()) {
            if (handle.disk->used() + (place + size - bytes.size()) > handle.disk->capacity)
                return SQLITE_FULL;
            bytes.resize(place + size);
        }
        std::memcpy(bytes.data() + place, buffer, size);
        handle.disk->tell({.kind = Kind::Write,
                           .file = handle.file->number,
                           .place = place,
                           .bytes = bytes.substr(place, size)});
        return fault == Fault::Half ? SQLITE_FULL : SQLITE_OK;
    }
    static int truncate(sqlite3_file* file, sqlite3_int64 size) {
        Handle& handle = handleOf(file);
        if (handle.disk->faultOf(Call::Truncate) != Fault::None) return SQLITE_IOERR_TRUNCATE;
        const auto place = static_cast<std::size_t>(size);
        handle.file->bytes.resize(place);
        handle.disk->tell({.kind = Kind::Truncate, .file = handle.file->number, .place = place});
        return SQLITE_OK;
    }
    static int sync(sqlite3_file* file, int) {
        Handle& handle = handleOf(file);
        if (handle.disk->faultOf(Call::Sync) != Fault::None) {
            handle.disk->tell({.kind = Kind::LoseWrites, .file = handle.file->number});
            return SQLITE_IOERR_FSYNC;
        }
        handle.disk->tell({.kind = Kind::Sync, .file = handle.file->number});
        if (std::exchange(handle.hasToSyncFolder, false))
            handle.disk->tell({.kind = Kind::SyncFolder, .name = folderOf(handle.name)});
        return SQLITE_OK;
    }
    static int fileSize(sqlite3_file* file, sqlite3_int64* size) {
        Handle& handle = handleOf(file);
        if (handle.disk->faultOf(Call::Size) != Fault::None) return SQLITE_IOERR_FSTAT;
        *size = static_cast<sqlite3_int64>(handle.file->bytes.size());
        return SQLITE_OK;
    }

    static int lock(sqlite3_file* file, int wanted) {
        Handle& handle = handleOf(file);
        if (handle.lock >= wanted) return SQLITE_OK;
        if (handle.disk->faultOf(Call::Lock) != Fault::None) return SQLITE_IOERR_LOCK;
        MemoryDisk::File& target = *handle.file;
        const auto byOther = [&](const void* holder) { return holder && holder != &handle; };
        if (byOther(target.exclusive)) return SQLITE_BUSY;
        if (wanted == SQLITE_LOCK_SHARED) {
            if (target.pending) return SQLITE_BUSY;
            ++target.readers;
        } else if (wanted == SQLITE_LOCK_RESERVED) {
            if (byOther(target.reserved) || target.pending) return SQLITE_BUSY;
            target.reserved = &handle;
        } else {
            if (byOther(target.reserved) || byOther(target.pending)) return SQLITE_BUSY;
            target.pending = &handle;
            handle.lock = SQLITE_LOCK_PENDING;
            if (target.readers > 1) return SQLITE_BUSY;
            target.exclusive = &handle;
        }
        handle.lock = wanted;
        return SQLITE_OK;
    }
    static void unlock(Handle& handle, int wanted) {
        MemoryDisk::File& target = *handle.file;
        if (handle.lock <= wanted) return;
        for (const void** holder : {&target.reserved, &target.pending, &target.exclusive})
            if (*holder == &handle) *holder = nullptr;
        if (wanted == SQLITE_LOCK_NONE) --target.readers;
        handle.lock = wanted;
    }
    static int unlock(sqlite3_file* file, int wanted) {
        Handle& handle = handleOf(file);
        const Fault fault = handle.lock > wanted ? handle.disk->faultOf(Call::Unlock) : Fault::None;
        unlock(handle, wanted);
        return fault == Fault::None ? SQLITE_OK : SQLITE_IOERR_UNLOCK;
    }
    static int checkReservedLock(sqlite3_file* file, int* result) {
        Handle& handle = handleOf(file);
        if (handle.disk->faultOf(Call::Lock) != Fault::None) return SQLITE_IOERR_CHECKRESERVEDLOCK;
        *result = handle.file->reserved || handle.file->pending || handle.file->exclusive;
        return SQLITE_OK;
    }
    static int fileControl(sqlite3_file* file, int what, void* argument) {
        Handle& handle = handleOf(file);
        if (what != SQLITE_FCNTL_HAS_MOVED) return SQLITE_NOTFOUND;
        const auto found = handle.disk->files_.find(handle.name);
        *static_cast<int*>(argument) = found == handle.disk->files_.end() || found->second != handle.file;
        return SQLITE_OK;
    }
    static int sectorSize(sqlite3_file*) { return SectorSize; }
    static int deviceCharacteristics(sqlite3_file*) { return SQLITE_IOCAP_POWERSAFE_OVERWRITE; }

    static int remove(sqlite3_vfs* vfs, const char* name, int syncsFolder) {
        MemoryDisk& disk = diskOf(vfs);
        if (disk.faultOf(Call::Remove) != Fault::None) return SQLITE_IOERR_DELETE;
        if (disk.files_.erase(name) == 0) return SQLITE_IOERR_DELETE_NOENT;
        disk.tell({.kind = Kind::Remove, .name = name});
        if (syncsFolder == 0) return SQLITE_OK;
        if (disk.faultOf(Call::Sync) != Fault::None) return SQLITE_IOERR_DIR_FSYNC;
        disk.tell({.kind = Kind::SyncFolder, .name = folderOf(name)});
        return SQLITE_OK;
    }
    static int access(sqlite3_vfs* vfs, const char* name, int what, int* result) {
        MemoryDisk& disk = diskOf(vfs);
        if (disk.faultOf(Call::Look) != Fault::None) return SQLITE_IOERR_ACCESS;
        const auto found = disk.files_.find(name);
        // As the system's files do: an empty one counts as none.
        *result =
            found != disk.files_.end() && (what != SQLITE_ACCESS_EXISTS || !found->second->bytes.empty());
        return SQLITE_OK;
    }
    static int fullPathname(sqlite3_vfs*, const char* name, int size, char* result) {
        sqlite3_snprintf(size, result, "%s", name);
        return SQLITE_OK;
    }

    // What has nothing to do with files is asked of the machine.
    static sqlite3_vfs* machine() { return sqlite3_vfs_find(nullptr); }
    static int randomness(sqlite3_vfs*, int count, char* bytes) {
        return machine()->xRandomness(machine(), count, bytes);
    }
    static int sleep(sqlite3_vfs*, int) { return 0; }
    static int currentTime(sqlite3_vfs*, double* time) { return machine()->xCurrentTime(machine(), time); }
    static int lastError(sqlite3_vfs*, int, char*) { return 0; }

    static const sqlite3_io_methods Methods;
};

const sqlite3_io_methods DiskCalls::Methods = {
    .iVersion = 1,
    .xClose = close,
    .xRead = read,
    .xWrite = write,
    .xTruncate = truncate,
    .xSync = sync,
    .xFileSize = fileSize,
    .xLock = lock,
    .xUnlock = unlock,
    .xCheckReservedLock = checkReservedLock,
    .xFileControl = fileControl,
    .xSectorSize = sectorSize,
    .xDeviceCharacteristics = deviceCharacteristics,
    .xShmMap = nullptr,
    .xShmLock = nullptr,
    .xShmBarrier = nullptr,
    .xShmUnmap = nullptr,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

MemoryDisk::MemoryDisk() : vfs_(std::make_unique<sqlite3_vfs>()), locks_(folderOfLocks()) {
    static std::atomic<int> count = 0;
    name_ = "memory-disk-" + std::to_string(++count);
    *vfs_ = {.iVersion = 1,
             .szOsFile = sizeof(DiskCalls::Handle),
             .mxPathname = 512,
             .pNext = nullptr,
             .zName = name_.c_str(),
             .pAppData = this,
             .xOpen = DiskCalls::open,
             .xDelete = DiskCalls::remove,
             .xAccess = DiskCalls::access,
             .xFullPathname = DiskCalls::fullPathname,
             .xDlOpen = nullptr,
             .xDlError = nullptr,
             .xDlSym = nullptr,
             .xDlClose = nullptr,
             .xRandomness = DiskCalls::randomness,
             .xSleep = DiskCalls::sleep,
             .xCurrentTime = DiskCalls::currentTime,
             .xGetLastError = DiskCalls::lastError,
             .xCurrentTimeInt64 = nullptr,
             .xSetSystemCall = nullptr,
             .xGetSystemCall = nullptr,
             .xNextSystemCall = nullptr};
    if (sqlite3_vfs_register(vfs_.get(), 0) != SQLITE_OK) throw std::runtime_error("no memory disk");
}

MemoryDisk::~MemoryDisk() {
    sqlite3_vfs_unregister(vfs_.get());
}

DiskContent MemoryDisk::content() const {
    DiskContent content;
    for (const auto& [name, file] : files_) content.emplace(name, file->bytes);
    return content;
}

void MemoryDisk::load(DiskContent content) {
    files_.clear();
    folders_.clear();
    fileCount_ = 0;
    for (const auto& [name, bytes] : content) folders_.insert(folderOf(name));
    for (auto& [name, bytes] : content)
        files_.emplace(name, std::make_shared<File>(File{fileCount_++, std::move(bytes)}));
}

Fault MemoryDisk::faultOf(Call call) const {
    ++const_cast<MemoryDisk*>(this)->calls;
    return fault ? fault(call) : Fault::None;
}

void MemoryDisk::tell(DiskOperation operation) const {
    if (log) log->push_back(std::move(operation));
}

std::size_t MemoryDisk::used() const {
    std::size_t used = 0;
    for (const auto& [name, file] : files_) used += file->bytes.size();
    return used;
}

std::string MemoryDisk::resolved(const std::string& path, std::error_code& error) const {
    if (path != "/" && !folders_.contains(path) && !files_.contains(path))
        error = std::make_error_code(std::errc::no_such_file_or_directory);
    return path;
}

std::uintmax_t MemoryDisk::sizeOf(const std::string& path) const {
    const auto found = files_.find(path);
    return found == files_.end() ? 0 : found->second->bytes.size();
}

void MemoryDisk::remove(const std::string& path) const {
    if (faultOf(Call::Remove) != Fault::None) return;
    if (files_.erase(path) != 0) tell({.kind = Kind::Remove, .name = path});
    if (namesIn(path).empty()) folders_.erase(path);
}

std::error_code MemoryDisk::rename(const std::string& from, const std::string& to) const {
    if (faultOf(Call::Rename) != Fault::None) return std::make_error_code(std::errc::io_error);
    if (files_.contains(to)) return std::make_error_code(std::errc::file_exists);
    auto node = files_.extract(from);
    if (!node) return std::make_error_code(std::errc::no_such_file_or_directory);
    node.key() = to;
    files_.insert(std::move(node));
    tell({.kind = Kind::Rename, .name = from, .other = to});
    return {};
}

std::error_code MemoryDisk::replace(const std::string& from, const std::string& to) const {
    if (faultOf(Call::Rename) != Fault::None) return std::make_error_code(std::errc::io_error);
    const auto found = files_.find(from);
    if (found == files_.end()) return std::make_error_code(std::errc::no_such_file_or_directory);
    files_[to] = found->second;
    files_.erase(found);
    tell({.kind = Kind::Rename, .name = from, .other = to});
    return {};
}

std::error_code MemoryDisk::makeFolder(const std::string& path) const {
    if (faultOf(Call::MakeFolder) != Fault::None) return std::make_error_code(std::errc::io_error);
    folders_.insert(path);
    return {};
}

std::vector<std::string> MemoryDisk::namesIn(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& [name, file] : files_)
        if (name.starts_with(folder + "/")) names.push_back(name.substr(folder.size() + 1));
    return names;
}

std::error_code MemoryDisk::syncFile(const std::string& path) const {
    const auto file = files_.find(path);
    if (file == files_.end()) return std::make_error_code(std::errc::no_such_file_or_directory);
    if (faultOf(Call::Sync) != Fault::None) {
        tell({.kind = Kind::LoseWrites, .file = file->second->number});
        return std::make_error_code(std::errc::io_error);
    }
    tell({.kind = Kind::Sync, .file = file->second->number});
    return {};
}

std::error_code MemoryDisk::syncFolderOf(const std::string& path) const {
    if (faultOf(Call::Sync) != Fault::None) return std::make_error_code(std::errc::io_error);
    tell({.kind = Kind::SyncFolder, .name = folderOf(path)});
    return {};
}

platform::StoreResult<platform::WriterLock> MemoryDisk::lock(const std::string& path,
                                                             const platform::CommitOrigin& holder) const {
    return platform::WriterLock::take(locks_.file(lockNameOf(path)), holder);
}

} // namespace estatebook::test
