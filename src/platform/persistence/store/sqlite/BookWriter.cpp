// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/BookWriter.hpp"

#include "platform/persistence/store/StoreRules.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <new>
#include <string_view>

namespace estatebook::platform::sqlite {

namespace {

StoreFailure invalid(std::string reason) {
    return {StoreErrorCode::InvalidChange, std::move(reason)};
}

StoreFailure unknown(const StoreFailure& failure, std::string_view silence) noexcept {
    try {
        return {StoreErrorCode::OutcomeUnknown, "a save failed (" + failure.reason +
                                                    "), and the book cannot be opened again (" +
                                                    std::string(silence) + ")"};
    } catch (const std::bad_alloc&) {
        return {StoreErrorCode::OutcomeUnknown, {}};
    }
}

/// Drops a connection whose transaction could not even be taken back.
class Attempt {
public:
    explicit Attempt(BookFile& file) : file_(file), connection_(file.connectionForWriting()) {}
    ~Attempt() {
        if (connection_.isInTransaction()) file_.giveUp();
    }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;
    [[nodiscard]] Connection& connection() noexcept { return connection_; }

private:
    BookFile& file_;
    Connection& connection_;
};

} // namespace

SaveOutcome BookWriter::save() {
    StoreFailure failure;
    {
        Attempt attempt(file_);
        SaveOutcome outcome;
        Transaction transaction(attempt.connection());
        if (!prepare(outcome)) return outcome;
        const int code = attempt.connection().tryRun("COMMIT");
        if (code == SQLITE_OK) {
            file_.beSure();
            return outcome;
        }
        if (code == SQLITE_CONSTRAINT_FOREIGNKEY) throw danglingLink();
        failure = attempt.connection().failureOf(code);
    }
    return settle(failure);
}

// What an error of a commit left, only the file can tell.
SaveOutcome BookWriter::settle(const StoreFailure& failure) {
    file_.giveUp();
    bool hasLanded = false;
    try {
        hasLanded = file_.hasLanded(changes_.token);
    } catch (const StoreFailure& silence) {
        throw unknown(failure, silence.reason);
    } catch (const std::bad_alloc&) {
        throw unknown(failure, "there is no memory left");
    }
    if (!hasLanded) throw failure;
    return {};
}

bool BookWriter::prepare(SaveOutcome& outcome) {
    if (file_.holds(changes_.token)) throw invalid(detail::savedAlready());
    lastKey_ = file_.lastKey();
    number_ = file_.lastCommit() + 1;
    detail::ChangesExaminer examiner(changes_, file_.shapes(), lastKey_);
    if (auto reason = examiner.refusal()) throw invalid(*std::move(reason));
    outcome.conflicts = conflicts();
    if (!outcome.landed()) return false;
    RowKey lastKey = lastKey_;
    for (const Row& row : changes_.insertions) {
        if (auto reason = examiner.refusalOf(row)) throw invalid(*std::move(reason));
        insert(row);
        lastKey = row.key;
    }
    for (const RowUpdate& each : changes_.updates) update(each);
    for (const RowDeletion& deletion : changes_.deletions) remove(deletion);
    for (const RowIdentifier& identifier : changes_.identifiers) identify(identifier);
    for (const MetadataChange& metadata : changes_.metadata) describe(metadata);
    writeJournal();
    writeCommit(lastKey);
    writeSums();
    return true;
}

std::vector<StoreConflict> BookWriter::conflicts() {
    std::vector<StoreConflict> conflicts;
    const auto compare = [&](const auto& change) {
        auto stored = storedRow(*change.entity, change.key);
        if (stored && stored->entity == change.entity && stored->version == change.version) return;
        conflicts.push_back({change.key, change.entity, change.version, std::move(stored)});
    };
    for (const RowUpdate& update : changes_.updates) compare(update);
    for (const RowDeletion& deletion : changes_.deletions) compare(deletion);
    return conflicts;
}

std::optional<Row> BookWriter::storedRow(const EntityDescription& entity, RowKey key) {
    const EntityTable& table = file_.tables().tableOf(entity);
    room_.clear();
    const auto cells = file_.find(table, Cell::of(key), room_);
    if (!cells) return std::nullopt;
    Row row;
    file_.decode(table, *cells, row);
    return row;
}

// Rows

Cells BookWriter::presentCells(const EntityTable& table, RowKey key) {
    room_.clear();
    auto cells = file_.find(table, Cell::of(key), room_);
    if (!cells) damaged("a row of its table \"" + table.name + "\" cannot be found again");
    return *std::move(cells);
}

void BookWriter::set(const EntityDescription& entity, std::size_t attribute, const Value& value) {
    if (const auto place = file_.tables().columnsOf(entity).values[attribute])
        cells_[*place] = file_.coding().encode(value, entity.attributes()[attribute].type, room_);
}

void BookWriter::link(const EntityColumns::Link& place, const RowLink& link) {
    cells_[place.target] = link.target == NoRow ? Cell() : Cell::of(link.target);
    if (place.place) cells_[*place.place] = link.target == NoRow ? Cell() : Cell::of(link.place);
}

void BookWriter::insert(const Row& row) {
    const EntityTable& table = file_.tables().tableOf(*row.entity);
    const EntityColumns& columns = file_.tables().columnsOf(*row.entity);
    room_.clear();
    cells_.assign(table.columns.size(), Cell());
    cells_[EntityTable::Key] = Cell::of(row.key);
    cells_[EntityTable::Entity] = Cell::of(BookTables::numberOf(*row.entity));
    cells_[EntityTable::Version] = Cell::of(std::int64_t{1});
    for (std::size_t index = 0; index < row.values.size(); ++index)
        if (!row.values[index].isAbsent()) set(*row.entity, index, row.values[index]);
    for (std::size_t index = 0; index < columns.links.size(); ++index)
        link(columns.links[index], row.links[index]);
    insertCells(table, cells_);
}

void BookWriter::update(const RowUpdate& update) {
    const EntityTable& table = file_.tables().tableOf(*update.entity);
    const EntityColumns& columns = file_.tables().columnsOf(*update.entity);
    const Cells former = presentCells(table, update.key);
    Row row;
    file_.decode(table, former, row);
    detail::applyUpdate(row, update, file_.shapes().of(*update.entity), number_, journal_);
    cells_ = former;
    cells_[EntityTable::Version] = Cell::of(row.version);
    for (const ChangedValue& changed : update.values) set(*update.entity, changed.attribute, changed.value);
    for (const ChangedLink& changed : update.links) link(columns.links[changed.link], changed.target);
    replaceCells(table, former, cells_);
}

void BookWriter::remove(const RowDeletion& deletion) {
    const EntityTable& table = file_.tables().tableOf(*deletion.entity);
    const Cells former = presentCells(table, deletion.key);
    Row row;
    file_.decode(table, former, row);
    detail::journalDeletion(row, file_.shapes().of(*deletion.entity), number_, journal_);
    removeCells(table, former);
    const SealedTable& identifiers = file_.tables().identifiers;
    if (const auto identifier = file_.find(identifiers, Cell::of(deletion.key), room_))
        removeCells(identifiers, *identifier);
}

// Beside the rows

void BookWriter::identify(const RowIdentifier& identifier) {
    room_.clear();
    const Cell key = Cell::of(identifier.key);
    if (!file_.find(file_.tables().tableOf(*identifier.entity), key, room_))
        throw invalid(detail::identifierOfNoRow(*identifier.entity, identifier.key));
    const SealedTable& table = file_.tables().identifiers;
    if (const auto former = file_.find(table, key, room_)) removeCells(table, *former);
    if (identifier.identifier) insertCells(table, {key, Cell::text(*identifier.identifier)});
}

void BookWriter::describe(const MetadataChange& metadata) {
    room_.clear();
    const SealedTable& table = file_.tables().metadata;
    const Cell name = Cell::text(metadata.name);
    if (const auto former = file_.find(table, name, room_)) removeCells(table, *former);
    if (metadata.value) insertCells(table, {name, Cell::text(*metadata.value)});
}

void BookWriter::writeJournal() {
    std::ranges::stable_sort(journal_, {}, &JournalEntry::key);
    std::int64_t number = 0;
    {
        Statement::Use last(file_.connection().statement("SELECT MAX(\"number\") FROM \"book_journal\""));
        if (last.next() && last.cell(0).type == Cell::Type::Integer) number = last.integer(0);
    }
    if (number < 0 || number > GreatestGiven)
        damaged("an entry of its journal has a number that nobody gives");
    for (const JournalEntry& entry : journal_) {
        room_.clear();
        const auto type = file_.typeOf(*entry.entity, entry.property).value_or(AttributeType::Any);
        insertCells(file_.tables().journal,
                    {Cell::of(++number), Cell::of(entry.commit),
                     Cell::of(static_cast<std::int64_t>(entry.kind)),
                     Cell::of(BookTables::numberOf(*entry.entity)), Cell::of(entry.key),
                     Cell::text(entry.property), file_.coding().encode(entry.former, type, room_),
                     file_.coding().encode(entry.current, type, room_)});
    }
}

void BookWriter::writeCommit(RowKey lastKey) {
    room_.clear();
    const auto& token = changes_.token.bytes;
    const auto& insertions = changes_.insertions;
    const RowKey firstKey = insertions.empty() ? lastKey_ + 1 : (*insertions.begin()).key;
    insertCells(file_.tables().commits,
                {Cell::of(number_), Cell::blob({reinterpret_cast<const char*>(token.data()), token.size()}),
                 encodeDate(changes_.origin.when, room_), Cell::text(changes_.origin.author),
                 Cell::text(changes_.origin.program), Cell::text(changes_.origin.command), Cell::of(firstKey),
                 Cell::of(lastKey)});
}

void BookWriter::writeSums() {
    Connection& connection = file_.connection();
    for (const auto& [table, change] : sums_) {
        Change sum;
        {
            Statement::Use row(
                connection.statement("SELECT \"rows\", \"digests\" FROM \"book_sum\" WHERE \"name\" = ?1"));
            if (!row.bind(1, Cell::text(table->name)).next()) damaged("a sum of its tables is missing");
            sum = {row.integer(0), static_cast<std::uint64_t>(row.integer(1))};
            if (sum.rows < 0 || sum.rows > GreatestGiven) damaged("a sum of its tables is that of none");
        }
        Statement::Use(connection.statement(
                           "UPDATE \"book_sum\" SET \"rows\" = ?2, \"digests\" = ?3 WHERE \"name\" = ?1"))
            .bind(1, Cell::text(table->name))
            .bind(2, sum.rows + change.rows)
            .bind(3, static_cast<std::int64_t>(sum.digests + change.digests))
            .run();
    }
}

// Cells

void BookWriter::insertCells(const SealedTable& table, const Cells& cells) {
    Statement::Use use(file_.connection().statement(table.insert));
    const std::int64_t digest = digestOf(cells);
    int parameter = 0;
    for (const Cell& cell : cells) use.bind(++parameter, cell);
    use.bind(++parameter, digest).run();
    Change& change = sums_[&table];
    ++change.rows;
    change.digests += static_cast<std::uint64_t>(digest);
}

void BookWriter::replaceCells(const SealedTable& table, const Cells& former, const Cells& cells) {
    Statement::Use use(file_.connection().statement(table.update));
    const std::int64_t digest = digestOf(cells);
    int parameter = 0;
    for (const Cell& cell : cells) use.bind(++parameter, cell);
    use.bind(++parameter, digest).run();
    sums_[&table].digests +=
        static_cast<std::uint64_t>(digest) - static_cast<std::uint64_t>(digestOf(former));
}

void BookWriter::removeCells(const SealedTable& table, const Cells& former) {
    Statement::Use(file_.connection().statement(table.remove)).bind(1, former.front()).run();
    Change& change = sums_[&table];
    --change.rows;
    change.digests -= static_cast<std::uint64_t>(digestOf(former));
}

StoreFailure BookWriter::danglingLink() {
    std::string name;
    RowKey key = NoRow;
    {
        Statement::Use found(file_.connection().statement("PRAGMA foreign_key_check"));
        if (found.next()) {
            name = found.text(0);
            key = found.integer(1);
        }
    }
    for (const EntityTable& table : file_.tables().entityTables()) {
        if (table.name != name) continue;
        if (const auto row = storedRow(*table.root, key)) return danglingLinkOf(*row);
    }
    return invalid("The changes leave a link that leads nowhere");
}

StoreFailure BookWriter::danglingLinkOf(const Row& row) {
    const auto links = file_.shapes().of(*row.entity).links();
    for (std::size_t index = 0; index < links.size(); ++index) {
        const RowKey target = row.links[index].target;
        if (target != NoRow && !storedRow(*links[index].relationship->destinationEntity, target))
            return invalid(detail::danglingLink(*row.entity, row.key, target));
    }
    return invalid("The changes leave " + detail::nameOf(*row.entity, row.key) +
                   " with a link that leads nowhere");
}

} // namespace estatebook::platform::sqlite
