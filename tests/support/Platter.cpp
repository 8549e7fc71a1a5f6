// SPDX-License-Identifier: MIT
#include "support/Platter.hpp"

#include <algorithm>
#include <cstring>

namespace estatebook::test {

using Kind = DiskOperation::Kind;

namespace {

void applyWhole(std::string& bytes, const DiskOperation& operation) {
    if (operation.kind == Kind::Truncate) {
        bytes.resize(operation.place);
        return;
    }
    bytes.resize(std::max(bytes.size(), operation.place + operation.bytes.size()));
    std::memcpy(bytes.data() + operation.place, operation.bytes.data(), operation.bytes.size());
}

/// How a file's share of a power loss goes.
struct Manner {
    enum class Kept : std::uint8_t { All, None, First, Some };
    Kept kept{};
    std::size_t sector = 512;
    /// What stands where a file grew and nothing was written.
    bool isFilledWithAnything = false;
};

Manner anyManner(std::mt19937_64& random) {
    return {.kept = static_cast<Manner::Kept>(random() % 4),
            .sector = random() % 2 == 0 ? 512u : 4096u,
            .isFilledWithAnything = random() % 2 == 0};
}

void grow(std::string& bytes, std::size_t size, const Manner& manner, std::mt19937_64& random) {
    while (bytes.size() < size)
        bytes.push_back(manner.isFilledWithAnything ? static_cast<char>(random()) : '\0');
}

/// Each sector of a write is there or not.
void applyTorn(std::string& bytes, const DiskOperation& write, const Manner& manner,
               std::mt19937_64& random) {
    const std::size_t end = write.place + write.bytes.size();
    for (std::size_t first = write.place; first < end;) {
        const std::size_t next = std::min(end, (first / manner.sector + 1) * manner.sector);
        const bool isKept = random() % 2 == 0;
        if (isKept || random() % 2 == 0) grow(bytes, next, manner, random);
        if (isKept)
            std::memcpy(bytes.data() + first, write.bytes.data() + (first - write.place), next - first);
        first = next;
    }
}

} // namespace

Platter::Platter(const DiskContent& content) {
    std::size_t number = 0;
    for (const auto& [name, bytes] : content) {
        files_[number].safe = bytes;
        names_[name] = number++;
    }
}

void Platter::apply(const DiskOperation& operation) {
    switch (operation.kind) {
    case Kind::Write:
    case Kind::Truncate:
        files_[operation.file].pending.push_back(&operation);
        break;
    case Kind::Sync: {
        File& file = files_[operation.file];
        for (std::size_t index = file.lost; index < file.pending.size(); ++index)
            applyWhole(file.safe, *file.pending[index]);
        file.pending.clear();
        file.lost = 0;
        break;
    }
    case Kind::LoseWrites: {
        File& file = files_[operation.file];
        file.lost = file.pending.size();
        break;
    }
    case Kind::Create:
    case Kind::Remove:
    case Kind::Rename:
        pendingNames_.push_back(&operation);
        break;
    case Kind::SyncFolder:
        std::erase_if(pendingNames_, [&](const DiskOperation* pending) {
            const bool isThere = pending->name.substr(0, pending->name.rfind('/')) == operation.name;
            if (isThere) applyName(names_, *pending);
            return isThere;
        });
        break;
    }
}

void Platter::applyName(std::map<std::string, std::size_t>& names, const DiskOperation& operation) {
    if (operation.kind == Kind::Create) {
        names[operation.name] = operation.file;
    } else if (auto node = names.extract(operation.name); node && operation.kind == Kind::Rename) {
        names[operation.other] = node.mapped();
    }
}

std::string Platter::survivor(const File& file, std::mt19937_64& random) {
    using Kept = Manner::Kept;
    const Manner manner = anyManner(random);
    std::string bytes = file.safe;
    if (manner.kept == Kept::None || file.pending.empty()) return bytes;
    const std::size_t first =
        manner.kept == Kept::First ? random() % file.pending.size() : file.pending.size();
    for (std::size_t index = 0; index < file.pending.size(); ++index) {
        const DiskOperation& operation = *file.pending[index];
        if (manner.kept == Kept::All || (manner.kept == Kept::First && index < first))
            applyWhole(bytes, operation);
        else if (operation.kind == Kind::Write && (manner.kept == Kept::Some || index == first))
            applyTorn(bytes, operation, manner, random);
        else if (operation.kind == Kind::Truncate && random() % 2 == 0)
            applyWhole(bytes, operation);
        if (manner.kept == Kept::First && index == first) break;
    }
    return bytes;
}

DiskContent Platter::content() const {
    auto names = names_;
    for (const DiskOperation* pending : pendingNames_) applyName(names, *pending);
    DiskContent content;
    for (const auto& [name, number] : names) {
        std::string& bytes = content[name];
        const auto file = files_.find(number);
        if (file == files_.end()) continue;
        bytes = file->second.safe;
        for (const DiskOperation* pending : file->second.pending) applyWhole(bytes, *pending);
    }
    return content;
}

DiskContent Platter::afterPowerLoss(std::mt19937_64& random) const {
    auto names = names_;
    const bool isInOrder = random() % 2 == 0;
    const std::size_t kept = pendingNames_.empty() ? 0 : random() % (pendingNames_.size() + 1);
    for (std::size_t index = 0; index < pendingNames_.size(); ++index)
        if (isInOrder ? index < kept : random() % 2 == 0) applyName(names, *pendingNames_[index]);
    DiskContent content;
    for (const auto& [name, number] : names) {
        const auto file = files_.find(number);
        content.emplace(name, file == files_.end() ? std::string() : survivor(file->second, random));
    }
    return content;
}

} // namespace estatebook::test
