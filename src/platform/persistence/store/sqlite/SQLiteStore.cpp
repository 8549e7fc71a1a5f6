// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/SQLiteStore.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/StoreRules.hpp"
#include "platform/persistence/store/sqlite/BookCheck.hpp"
#include "platform/persistence/store/sqlite/BookFile.hpp"
#include "platform/persistence/store/sqlite/BookWriter.hpp"
#include "platform/persistence/store/sqlite/GuardedWork.hpp"

#include <algorithm>
#include <utility>

namespace estatebook::platform {

namespace {

using namespace sqlite;

/// Hands all rows of a statement, in the order of their keys, to a visitor, those that match.
std::size_t visit(BookFile& file, const EntityTable& table, Statement::Use& rows,
                  const Store::RowVisitor& visitor, const std::function<bool(const Row&)>& matches = {}) {
    Cells cells;
    Row row;
    std::size_t count = 0;
    while (rows.next()) {
        BookFile::read(rows, table, cells);
        const RowKey last = row.key;
        file.decode(table, cells, row);
        // A damaged index may lead to one row twice.
        if (row.key <= last) damaged("the rows of its table \"" + table.name + "\" are out of order");
        if (matches && !matches(row)) continue;
        visitor(row);
        ++count;
    }
    return count;
}

/// What the data base can compare a value of the type with, so that just equal values match; none when it cannot.
std::optional<Cell> comparable(const Value& value, AttributeType type, const CellCoding& coding,
                               CellRoom& room) {
    if (type == AttributeType::String && value.string()) return Cell::text(value.string()->view());
    const auto number = value.number();
    if (type == AttributeType::Decimal && number && number->kind() != Number::Kind::Single &&
        number->kind() != Number::Kind::Double)
        return coding.encode(number->decimalValue(), type, room);
    return std::nullopt;
}

/// Whether so many keys are better read in one go from the first to the last.
bool areNeighbours(std::span<const RowKey> keys) {
    constexpr RowKey WorthSkipping = 4;
    if (keys.size() < 2 || !std::ranges::is_sorted(keys, std::ranges::less_equal())) return false;
    return keys.front() > NoRow && (keys.back() - keys.front()) / WorthSkipping <= std::ssize(keys);
}

} // namespace

SQLiteStore::SQLiteStore(Ref<ManagedObjectModel> model, std::unique_ptr<BookFile> file)
    : Store(std::move(model)), file_(std::move(file)) {}

SQLiteStore::~SQLiteStore() = default;

StoreResult<Ref<SQLiteStore>> SQLiteStore::create(const std::string& path, Ref<ManagedObjectModel> model,
                                                  const Options& options) {
    return sqlite::guarded(path, [&] {
        auto file = BookFile::create(path, model, options);
        return Ref<SQLiteStore>(new SQLiteStore(model, std::move(file)));
    });
}

StoreResult<Ref<SQLiteStore>> SQLiteStore::open(const std::string& path, Ref<ManagedObjectModel> model,
                                                const Options& options) {
    return sqlite::guarded(path, [&] {
        auto file = BookFile::open(path, model, options);
        return Ref<SQLiteStore>(new SQLiteStore(model, std::move(file)));
    });
}

template <class Work>
auto SQLiteStore::guarded(Work work) const -> StoreResult<decltype(work())> {
    return sqlite::guarded(file_->path(), std::move(work));
}

std::string_view SQLiteStore::location() const noexcept {
    return file_->path();
}

std::string_view SQLiteStore::identifier() const noexcept {
    return file_->identifier();
}

const std::optional<SQLiteStore::Migration>& SQLiteStore::migration() const noexcept {
    return file_->migration();
}

StoreCapabilities SQLiteStore::capabilities() const noexcept {
    // A read takes and drops the file's lock, which costs as much as a dozen rows; a letting of many years fits in.
    return {.isPersistent = true, .isWritable = file_->isWritable(), .batchSize = 256};
}

StoreResult<RowKey> SQLiteStore::lastKey() const {
    return guarded([&] { return file_->lastKey(); });
}

// Reading

StoreResult<std::vector<RowKey>> SQLiteStore::fetchKeys(const EntityDescription& entity,
                                                        const std::optional<Predicate>& predicate) const {
    std::vector<RowKey> keys;
    if (predicate) {
        const auto fetched = fetchRows(entity, predicate, [&](const Row& row) { keys.push_back(row.key); });
        if (!fetched) return fetched.error();
        return keys;
    }
    return guarded([&] {
        const EntityTable& table = file_->tables().tableOf(entity);
        Statement::Use rows(file_->connection().statement(
            "SELECT \"_key\" FROM " + quoted(table.name) + " WHERE 1" +
            file_->tables().filterFor(entity, *table.root) + " ORDER BY \"_key\""));
        while (rows.next()) keys.push_back(rows.integer(0));
        return keys;
    });
}

StoreResult<std::size_t> SQLiteStore::fetchRows(const EntityDescription& entity,
                                                const std::optional<Predicate>& predicate,
                                                const RowVisitor& visitor) const {
    std::optional<std::size_t> attribute;
    if (predicate) {
        attribute = detail::storedAttribute(shapes().of(entity), predicate->key());
        if (!attribute)
            return failure(StoreErrorCode::Unsupported, detail::unstoredProperty(entity, predicate->key()));
    }
    return guarded([&] {
        const BookTables& tables = file_->tables();
        const EntityTable& table = tables.tableOf(entity);
        const EntityColumns& columns = tables.columnsOf(entity);
        CellRoom room;
        std::optional<Cell> wanted;
        if (attribute)
            wanted =
                comparable(predicate->value(), entity.attributes()[*attribute].type, file_->coding(), room);
        const auto question = [&] {
            std::string condition = " WHERE 1" + tables.filterFor(entity, *table.root);
            if (attribute) {
                const std::string column = quoted(table.columns[*columns.values[*attribute]]);
                if (predicate->value().isAbsent())
                    condition += " AND " + column + " IS NULL";
                else
                    condition += wanted ? " AND " + column + " = ?1" : " AND " + column + " IS NOT NULL";
            }
            return table.select + condition + " ORDER BY \"_key\"";
        };
        const bool isLookup = wanted && !columns.lookups[*attribute].empty();
        Statement::Use rows(
            file_->connection().statement(isLookup ? columns.lookups[*attribute] : question()));
        if (wanted) rows.bind(1, *wanted);
        if (!attribute) return visit(*file_, table, rows, visitor);
        return visit(*file_, table, rows, visitor,
                     [&](const Row& row) { return row.values[*attribute].isEqual(predicate->value()); });
    });
}

StoreResult<std::size_t> SQLiteStore::visitRows(const EntityDescription& entity, std::span<const RowKey> keys,
                                                const RowVisitor& visitor) const {
    return guarded([&] {
        const EntityTable& table = file_->tables().tableOf(entity);
        if (areNeighbours(keys)) {
            Statement::Use rows(file_->connection().statement(
                table.select + " WHERE \"_key\" BETWEEN ?1 AND ?2 ORDER BY \"_key\""));
            rows.bind(1, keys.front()).bind(2, keys.back());
            auto wanted = keys.begin();
            return visit(*file_, table, rows, visitor, [&](const Row& row) {
                while (wanted != keys.end() && *wanted < row.key) ++wanted;
                return wanted != keys.end() && *wanted == row.key;
            });
        }
        std::size_t count = 0;
        for (const RowKey key : keys) {
            Statement::Use rows(file_->connection().statement(table.find));
            rows.bind(1, key);
            count += visit(*file_, table, rows, visitor);
        }
        return count;
    });
}

namespace {

/// How the members of a relationship are found by their owners.
struct MembersQuery {
    std::string owner;
    std::string filter;
    std::string order;

    MembersQuery(const BookTables& tables, const RowShapes& shapes, const RelationshipDescription& toMany) {
        const EntityDescription& entity = *toMany.destinationEntity;
        const EntityTable& table = tables.tableOf(entity);
        const EntityColumns::Link& link = tables.columnsOf(entity).links[shapes.linkToOwner(toMany)];
        const Column& column = table.properties[link.target - EntityTable::FirstProperty];
        owner = quoted(column.name);
        filter = tables.filterFor(entity, *column.owner);
        order = (link.place ? quoted(table.columns[*link.place]) + ", " : "") + "\"_key\"";
    }
    /// Of the owner that is bound to ?1.
    [[nodiscard]] std::string ofOne(const std::string& select) const {
        return select + " WHERE " + owner + " = ?1" + filter + " ORDER BY " + order;
    }
    /// Of the owners from ?1 to ?2.
    [[nodiscard]] std::string ofRange(const std::string& select) const {
        return select + " WHERE " + owner + " BETWEEN ?1 AND ?2" + filter + " ORDER BY " + owner + ", " +
               order;
    }
};

} // namespace

StoreResult<std::vector<std::vector<RowKey>>> SQLiteStore::members(const RelationshipDescription& toMany,
                                                                   std::span<const RowKey> owners) const {
    return guarded([&] {
        const std::string from = " FROM " + quoted(file_->tables().tableOf(*toMany.destinationEntity).name);
        const MembersQuery query(file_->tables(), shapes(), toMany);
        Connection& connection = file_->connection();
        std::vector<std::vector<RowKey>> members(owners.size());
        if (areNeighbours(owners)) {
            Statement::Use rows(
                connection.statement(query.ofRange("SELECT " + query.owner + ", \"_key\"" + from)));
            rows.bind(1, owners.front()).bind(2, owners.back());
            auto owner = owners.begin();
            while (rows.next()) {
                const RowKey key = rows.integer(0);
                while (*owner < key) ++owner; // the last one is the greatest
                if (*owner == key)
                    members[static_cast<std::size_t>(owner - owners.begin())].push_back(rows.integer(1));
            }
            return members;
        }
        Statement& statement = connection.statement(query.ofOne("SELECT \"_key\"" + from));
        for (std::size_t index = 0; index < owners.size(); ++index) {
            Statement::Use rows(statement);
            rows.bind(1, owners[index]);
            while (rows.next()) members[index].push_back(rows.integer(0));
        }
        return members;
    });
}

StoreResult<Decimal> SQLiteStore::sum(const RelationshipDescription& toMany, RowKey owner, Key attribute,
                                      std::span<const RowKey> exceptions) const {
    const EntityDescription& entity = *toMany.destinationEntity;
    const auto place = shapes().of(entity).attribute(attribute);
    if (!place || !detail::canBeSummed(entity.attributes()[*place]))
        return failure(StoreErrorCode::Unsupported, detail::unstoredProperty(entity, attribute));
    return guarded([&] {
        const EntityTable& table = file_->tables().tableOf(entity);
        const std::size_t column = *file_->tables().columnsOf(entity).values[*place];
        Statement::Use rows(file_->connection().statement(
            MembersQuery(file_->tables(), shapes(), toMany).ofOne(table.select)));
        rows.bind(1, owner);
        Cells cells;
        Decimal sum;
        while (rows.next()) {
            BookFile::read(rows, table, cells);
            if (std::ranges::binary_search(exceptions, cells[EntityTable::Key].integer)) continue;
            const Value value = file_->coding().decode(cells[column], entity.attributes()[*place].type);
            if (const auto decimal = value.decimal()) sum += *decimal;
        }
        return sum;
    });
}

void SQLiteStore::beginReading() noexcept {
    file_->beginReading();
}

void SQLiteStore::endReading() noexcept {
    file_->endReading();
}

// Saving

StoreResult<SaveOutcome> SQLiteStore::save(const StoreChanges& changes) {
    return guarded([&] {
        if (!file_->isWritable())
            throw StoreFailure{StoreErrorCode::ReadOnly, "it was opened for reading only"};
        return BookWriter(*file_, changes).save();
    });
}

StoreResult<bool> SQLiteStore::hasLanded(const CommitToken& token) {
    return guarded([&] { return file_->hasLanded(token); });
}

// Beside the rows

StoreResult<std::vector<std::optional<std::string>>>
SQLiteStore::identifiers(std::span<const RowKey> keys) const {
    return guarded([&] {
        std::vector<std::optional<std::string>> identifiers;
        CellRoom room;
        for (const RowKey key : keys) {
            const auto cells = file_->find(file_->tables().identifiers, Cell::of(key), room);
            if (cells) file_->requireForm(file_->tables().identifiers, *cells);
            identifiers.push_back(cells ? std::optional(std::string(cells->at(1).bytes)) : std::nullopt);
        }
        return identifiers;
    });
}

StoreResult<Store::Metadata> SQLiteStore::metadata() const {
    return guarded([&] {
        const SealedTable& table = file_->tables().metadata;
        Statement::Use rows(file_->connection().statement(table.select));
        Metadata metadata;
        Cells cells;
        while (rows.next()) {
            BookFile::read(rows, table, cells);
            file_->requireForm(table, cells);
            metadata.emplace(cells[0].bytes, cells[1].bytes);
        }
        return metadata;
    });
}

StoreResult<std::vector<Commit>> SQLiteStore::commits() const {
    return guarded([&] {
        const SealedTable& table = file_->tables().commits;
        Statement::Use rows(file_->connection().statement(table.select + " ORDER BY \"number\""));
        std::vector<Commit> commits;
        Cells cells;
        while (rows.next()) {
            BookFile::read(rows, table, cells);
            commits.push_back(file_->decodeCommit(cells));
        }
        return commits;
    });
}

StoreResult<std::vector<JournalEntry>> SQLiteStore::journalOfRow(const EntityDescription& entity,
                                                                 RowKey key) const {
    return guarded([&] {
        std::vector<JournalEntry> entries;
        Cells cells;
        CellRoom room;
        const SealedTable& commits = file_->tables().commits;
        {
            Statement::Use rows(file_->connection().statement(
                commits.select + " WHERE \"first_key\" <= ?1 AND ?1 <= \"last_key\""));
            rows.bind(1, key);
            while (rows.next()) {
                BookFile::read(rows, commits, cells);
                entries.push_back({.commit = file_->decodeCommit(cells).number,
                                   .kind = JournalEntry::Kind::Insertion,
                                   .key = key});
            }
        }
        const EntityTable& table = file_->tables().tableOf(entity);
        if (const auto row = file_->find(table, Cell::of(key), room); row && !entries.empty())
            entries.front().entity = &file_->entityOf(row->at(EntityTable::Entity).integer, &table);
        const SealedTable& journal = file_->tables().journal;
        Statement::Use rows(
            file_->connection().statement(journal.select + " WHERE \"key\" = ?1 ORDER BY \"number\""));
        rows.bind(1, key);
        while (rows.next()) {
            BookFile::read(rows, journal, cells);
            entries.push_back(file_->decodeEntry(cells));
        }
        return entries;
    });
}

StoreResult<std::vector<JournalEntry>> SQLiteStore::journalOfCommit(std::int64_t number) const {
    return guarded([&] {
        const SealedTable& table = file_->tables().journal;
        Statement::Use rows(
            file_->connection().statement(table.select + " WHERE \"commit\" = ?1 ORDER BY \"number\""));
        rows.bind(1, number);
        std::vector<JournalEntry> entries;
        Cells cells;
        while (rows.next()) {
            BookFile::read(rows, table, cells);
            entries.push_back(file_->decodeEntry(cells));
        }
        return entries;
    });
}

StoreResult<std::vector<std::string>> SQLiteStore::check() const {
    return guarded([&] { return BookCheck(*file_).findings(); });
}

} // namespace estatebook::platform
