// SPDX-License-Identifier: MIT
#include "platform/persistence/store/InMemoryStore.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/StoreRules.hpp"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace estatebook::platform {

namespace {

using Keys = std::unordered_set<RowKey>;

template <class Changes>
Keys keysOf(const std::vector<Changes>& changes) {
    Keys keys;
    for (const auto& each : changes) keys.insert(each.key);
    return keys;
}

/// Shows the visitor those rows of the entity that match; gives their number.
template <class Rows, class Matches>
std::size_t visitMatching(const Rows& rows, const EntityDescription& entity, const Store::RowVisitor& visitor,
                          Matches matches) {
    std::size_t count = 0;
    for (const auto& [key, row] : rows) {
        if (!row.entity->isKindOfEntity(entity) || !matches(row)) continue;
        visitor(row);
        ++count;
    }
    return count;
}

} // namespace

InMemoryStore::InMemoryStore(Ref<ManagedObjectModel> model)
    : Store(std::move(model)), identifier_(detail::newStoreIdentifier()), rows_(shapes().all().size()) {}

Ref<InMemoryStore> InMemoryStore::make(Ref<ManagedObjectModel> model) {
    return Ref<InMemoryStore>(new InMemoryStore(std::move(model)));
}

const InMemoryStore::Rows& InMemoryStore::rowsOf(const EntityDescription& entity) const noexcept {
    return rows_[shapes().of(entity).root().index()];
}

InMemoryStore::Rows& InMemoryStore::rowsOf(const EntityDescription& entity) noexcept {
    return rows_[shapes().of(entity).root().index()];
}

const Row* InMemoryStore::find(const EntityDescription& entity, RowKey key) const noexcept {
    const Rows& rows = rowsOf(entity);
    const auto found = rows.find(key);
    return found == rows.end() ? nullptr : &found->second;
}

// Reading

StoreResult<std::vector<RowKey>> InMemoryStore::fetchKeys(const EntityDescription& entity,
                                                          const std::optional<Predicate>& predicate) const {
    std::vector<RowKey> keys;
    const auto fetched = fetchRows(entity, predicate, [&](const Row& row) { keys.push_back(row.key); });
    if (!fetched) return fetched.error();
    return keys;
}

StoreResult<std::size_t> InMemoryStore::fetchRows(const EntityDescription& entity,
                                                  const std::optional<Predicate>& predicate,
                                                  const RowVisitor& visitor) const {
    const Rows& rows = rowsOf(entity);
    if (!predicate) return visitMatching(rows, entity, visitor, [](const Row&) { return true; });
    const auto place = detail::storedAttribute(shapes().of(entity), predicate->key());
    if (!place)
        return failure(StoreErrorCode::Unsupported, detail::unstoredProperty(entity, predicate->key()));
    return visitMatching(rows, entity, visitor,
                         [place = *place, &wanted = predicate->value()](const Row& row) {
                             return row.values[place].isEqual(wanted);
                         });
}

StoreResult<std::size_t> InMemoryStore::visitRows(const EntityDescription& entity,
                                                  std::span<const RowKey> keys,
                                                  const RowVisitor& visitor) const {
    std::size_t count = 0;
    for (const RowKey key : keys) {
        const Row* row = find(entity, key);
        if (!row) continue;
        visitor(*row);
        ++count;
    }
    return count;
}

StoreResult<std::vector<std::vector<RowKey>>> InMemoryStore::members(const RelationshipDescription& toMany,
                                                                     std::span<const RowKey> owners) const {
    std::unordered_map<RowKey, std::vector<std::pair<std::int64_t, RowKey>>> found;
    for (const RowKey owner : owners) found.try_emplace(owner);
    const EntityDescription& entity = *toMany.destinationEntity;
    const std::size_t link = shapes().linkToOwner(toMany);
    for (const auto& [key, row] : rowsOf(entity)) {
        if (!row.entity->isKindOfEntity(entity)) continue;
        const auto owner = found.find(row.links[link].target);
        if (owner != found.end()) owner->second.emplace_back(row.links[link].place, key);
    }
    std::vector<std::vector<RowKey>> members;
    for (const RowKey owner : owners) {
        auto& placed = found[owner];
        std::ranges::sort(placed);
        auto& keys = members.emplace_back();
        for (const auto& [place, key] : placed) keys.push_back(key);
    }
    return members;
}

StoreResult<Decimal> InMemoryStore::sum(const RelationshipDescription& toMany, RowKey owner, Key attribute,
                                        std::span<const RowKey> exceptions) const {
    const EntityDescription& entity = *toMany.destinationEntity;
    const auto place = shapes().of(entity).attribute(attribute);
    if (!place || !detail::canBeSummed(entity.attributes()[*place]))
        return failure(StoreErrorCode::Unsupported, detail::unstoredProperty(entity, attribute));
    const auto keys = members(toMany, {&owner, 1});
    Decimal sum;
    for (const RowKey key : keys->front()) {
        if (std::ranges::binary_search(exceptions, key)) continue;
        if (const auto value = find(entity, key)->values[*place].decimal()) sum += *value;
    }
    return sum;
}

StoreResult<std::vector<std::optional<std::string>>>
InMemoryStore::identifiers(std::span<const RowKey> keys) const {
    std::vector<std::optional<std::string>> identifiers;
    for (const RowKey key : keys) {
        const auto found = identifiers_.find(key);
        identifiers.push_back(found == identifiers_.end() ? std::nullopt : std::optional(found->second));
    }
    return identifiers;
}

StoreResult<bool> InMemoryStore::hasLanded(const CommitToken& token) {
    return std::ranges::any_of(commits_, [&](const Commit& each) { return each.token == token; });
}

StoreResult<std::vector<JournalEntry>> InMemoryStore::journalOfRow(const EntityDescription& entity,
                                                                   RowKey key) const {
    std::vector<JournalEntry> entries;
    const Row* row = find(entity, key);
    for (const Commit& commit : commits_)
        if (commit.firstKey <= key && key <= commit.lastKey)
            entries.push_back({.commit = commit.number,
                               .kind = JournalEntry::Kind::Insertion,
                               .key = key,
                               .entity = row ? row->entity : nullptr});
    std::ranges::copy_if(journal_, std::back_inserter(entries),
                         [&](const JournalEntry& each) { return each.key == key; });
    return entries;
}

StoreResult<std::vector<JournalEntry>> InMemoryStore::journalOfCommit(std::int64_t number) const {
    std::vector<JournalEntry> entries;
    std::ranges::copy_if(journal_, std::back_inserter(entries),
                         [&](const JournalEntry& each) { return each.commit == number; });
    return entries;
}

// Saving

StoreResult<SaveOutcome> InMemoryStore::save(const StoreChanges& changes) {
    if (*hasLanded(changes.token)) return failure(StoreErrorCode::InvalidChange, detail::savedAlready());
    detail::ChangesExaminer examiner(changes, shapes(), lastKey_);
    if (auto reason = examiner.refusal()) return failure(StoreErrorCode::InvalidChange, *std::move(reason));
    if (auto conflicts = conflictsOf(changes); !conflicts.empty()) return SaveOutcome{std::move(conflicts)};
    for (const Row& row : changes.insertions)
        if (auto reason = examiner.refusalOf(row))
            return failure(StoreErrorCode::InvalidChange, *std::move(reason));
    if (auto reason = brokenBy(changes)) return failure(StoreErrorCode::InvalidChange, *std::move(reason));
    apply(changes);
    return SaveOutcome{};
}

std::vector<StoreConflict> InMemoryStore::conflictsOf(const StoreChanges& changes) const {
    std::vector<StoreConflict> conflicts;
    const auto compare = [&](const auto& change) {
        const Row* stored = find(*change.entity, change.key);
        if (stored && stored->entity == change.entity && stored->version == change.version) return;
        conflicts.push_back(
            {change.key, change.entity, change.version, stored ? std::optional(*stored) : std::nullopt});
    };
    for (const RowUpdate& update : changes.updates) compare(update);
    for (const RowDeletion& deletion : changes.deletions) compare(deletion);
    return conflicts;
}

std::optional<std::string> InMemoryStore::brokenBy(const StoreChanges& changes) const {
    std::unordered_map<RowKey, const EntityDescription*> inserted;
    for (const Row& row : changes.insertions) inserted.emplace(row.key, row.entity);
    const Keys deleted = keysOf(changes.deletions);
    const auto remains = [&](const EntityDescription& entity, RowKey key) {
        if (const auto found = inserted.find(key); found != inserted.end())
            return &shapes().of(*found->second).root() == &shapes().of(entity).root();
        return find(entity, key) && !deleted.contains(key);
    };
    const auto dangling = [&](const Row& row) -> std::optional<std::string> {
        const auto links = shapes().of(*row.entity).links();
        for (std::size_t index = 0; index < links.size(); ++index) {
            const RowKey target = row.links[index].target;
            if (target != NoRow && !remains(*links[index].relationship->destinationEntity, target))
                return detail::danglingLink(*row.entity, row.key, target);
        }
        return std::nullopt;
    };
    for (const Row& row : changes.insertions)
        if (auto reason = dangling(row)) return reason;
    Keys updated;
    std::vector<JournalEntry> unused;
    for (const RowUpdate& update : changes.updates) {
        Row row = *find(*update.entity, update.key);
        detail::applyUpdate(row, update, shapes().of(*row.entity), 0, unused);
        if (auto reason = dangling(row)) return reason;
        updated.insert(update.key);
    }
    if (!deleted.empty())
        for (const Rows& rows : rows_)
            for (const auto& [key, row] : rows)
                if (!deleted.contains(key) && !updated.contains(key))
                    if (auto reason = dangling(row)) return reason;
    for (const RowIdentifier& each : changes.identifiers)
        if (!remains(*each.entity, each.key)) return detail::identifierOfNoRow(*each.entity, each.key);
    return std::nullopt;
}

void InMemoryStore::apply(const StoreChanges& changes) {
    const auto number = static_cast<std::int64_t>(commits_.size()) + 1;
    const RowKey firstKey = changes.insertions.empty() ? lastKey_ + 1 : (*changes.insertions.begin()).key;
    for (const Row& row : changes.insertions) {
        Row& stored = rowsOf(*row.entity).emplace(row.key, row).first->second;
        stored.version = 1;
        const auto attributes = row.entity->attributes();
        for (std::size_t index = 0; index < attributes.size(); ++index)
            if (attributes[index].isTransient) stored.values[index] = Value();
        lastKey_ = row.key;
    }
    const std::size_t first = journal_.size();
    for (const RowUpdate& update : changes.updates)
        detail::applyUpdate(rowsOf(*update.entity).at(update.key), update, shapes().of(*update.entity),
                            number, journal_);
    for (const RowDeletion& deletion : changes.deletions) {
        Rows& rows = rowsOf(*deletion.entity);
        detail::journalDeletion(rows.at(deletion.key), shapes().of(*deletion.entity), number, journal_);
        rows.erase(deletion.key);
        identifiers_.erase(deletion.key);
    }
    std::ranges::stable_sort(journal_.begin() + static_cast<std::ptrdiff_t>(first), journal_.end(), {},
                             &JournalEntry::key);
    for (const RowIdentifier& each : changes.identifiers) {
        if (each.identifier)
            identifiers_.insert_or_assign(each.key, *each.identifier);
        else
            identifiers_.erase(each.key);
    }
    for (const MetadataChange& each : changes.metadata) {
        if (each.value)
            metadata_.insert_or_assign(each.name, *each.value);
        else
            metadata_.erase(each.name);
    }
    commits_.push_back({number, changes.token, changes.origin, firstKey, lastKey_});
}

} // namespace estatebook::platform
