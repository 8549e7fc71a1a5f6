// SPDX-License-Identifier: MIT
// Any bytes are the file of a book. It is opened or refused with one line; what is open is read, checked and written to, and each
// operation gives a result or one line. A book that the check calls sound can be read from end to end, and whatever can be salvaged
// becomes a sound book.
#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/PersistentStoreCoordinator.hpp"
#include "platform/persistence/store/sqlite/BookCopies.hpp"
#include "platform/persistence/store/sqlite/SQLiteStore.hpp"
#include "platform/values/Exception.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "support/MemoryDisk.hpp"
#include "support/StoreDescription.hpp"
#include "tags/TKTagNames.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace estatebook;
using namespace estatebook::platform;
using test::MemoryDisk;

const std::string Path = "/book.estatebook";
const std::string Salvaged = "/salvaged.estatebook";
/// A page is 512 bytes at least, so that many of them have their rows read one by one.
constexpr std::size_t MostKeys = 300;

void require(bool holds, const char* what, const std::string& text = {}) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s: %s\n", what, text.c_str());
    std::abort();
}

bool isOneLine(std::string_view text) {
    return !text.empty() &&
           std::ranges::none_of(text, [](char each) { return each == '\n' || each == '\0'; });
}

/// Whether there is a result; an error is one line about the book.
template <class Result>
bool isGiven(const Result& result) {
    if (result) return true;
    const StoreError& error = result.error();
    require(isOneLine(error.message), "an error is one line", error.message);
    require(error.message.starts_with(Path) || error.message.starts_with(Salvaged), "an error names the book",
            error.message);
    return false;
}

const Ref<ManagedObjectModel>& model() {
    static const Ref<ManagedObjectModel> model = TKManagedObjectModel::inMemoryManagedObjectContext()
                                                     ->persistentStoreCoordinator()
                                                     ->managedObjectModel();
    return model;
}

SQLiteStore::Options options(const MemoryDisk& disk, SQLiteStore::Access access) {
    return {.access = access,
            .classes = {TKTagNames::archivedClass()},
            .patience = std::chrono::milliseconds(0),
            .fileSystem = &disk};
}

/// The members, sums and journals of some rows of each entity.
void readParts(const Store& store) {
    for (const RowShape& shape : store.shapes().all()) {
        auto fetched = store.fetchKeys(shape.entity());
        if (!isGiven(fetched)) continue;
        std::vector<RowKey>& keys = *fetched;
        keys.resize(std::min(keys.size(), MostKeys));
        static_cast<void>(isGiven(store.rows(shape.entity(), keys)));
        static_cast<void>(isGiven(store.identifiers(keys)));
        if (!keys.empty()) static_cast<void>(isGiven(store.journalOfRow(shape.entity(), keys.front())));
        for (const RelationshipDescription& each : shape.entity().relationships()) {
            if (each.kind == PropertyKind::ToOne) continue;
            static_cast<void>(isGiven(store.members(each, keys)));
            for (const AttributeDescription& attribute : each.destinationEntity->attributes())
                if (!attribute.isTransient && attribute.type == AttributeType::Decimal && !keys.empty()) try {
                        static_cast<void>(isGiven(store.sum(each, keys.front(), attribute.name)));
                    } catch (const OverflowException&) { // no decimal holds it
                    }
        }
    }
}

void salvage(const MemoryDisk& disk, bool isSound) {
    disk.remove(Salvaged);
    const auto salvaged = salvageBook(Path, Salvaged, model(), options(disk, SQLiteStore::Access::Read));
    require(!isSound || isGiven(salvaged), "a sound book can be salvaged");
    if (!isGiven(salvaged)) return;
    for (const std::string& line : salvaged->lost) require(!line.empty(), "what is lost is named");
    require(!isSound || salvaged->lost.empty(), "of a sound book nothing is lost",
            salvaged->lost.empty() ? "" : salvaged->lost.front());
    const auto store = SQLiteStore::open(Salvaged, model(), options(disk, SQLiteStore::Access::Read));
    require(isGiven(store), "what was salvaged can be opened", store ? "" : store.error().message);
    const auto findings = (*store)->check();
    require(findings && findings->empty(), "what was salvaged is sound",
            findings && !findings->empty() ? findings->front() : "");
}

/// Gives whether the check calls the book sound; not when it is refused.
bool read(const MemoryDisk& disk, SQLiteStore::Access access) {
    const auto opened = SQLiteStore::open(Path, model(), options(disk, access));
    if (!isGiven(opened)) return false;
    const Ref<SQLiteStore>& store = *opened;
    readParts(*store);
    const auto findings = store->check();
    const bool isSound = isGiven(findings) && findings->empty();
    const bool isRead = isGiven(test::contentOf(*store));
    require(isRead || !isSound, "a sound book can be read");
    if (access == SQLiteStore::Access::Read) return isSound;
    StoreChanges changes{.token = CommitToken::random(), .origin = {}};
    changes.metadata = {{"fuzz", "saved"}};
    const auto saved = store->save(changes);
    require(isGiven(saved) || !isSound, "a sound book can be saved");
    const auto after = store->check();
    require(!isSound || (after && after->empty()), "a sound book stays sound");
    return isSound;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MemoryDisk disk;
    disk.load({{Path, {reinterpret_cast<const char*>(data), size}}});
    const bool isSound = read(disk, SQLiteStore::Access::Read);
    salvage(disk, isSound);
    require(read(disk, SQLiteStore::Access::Write) == isSound, "who reads and who writes find the same");
    return 0;
}
