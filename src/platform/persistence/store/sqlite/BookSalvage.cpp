// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/BookSalvage.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/sqlite/BookCheck.hpp"
#include "platform/persistence/store/sqlite/GuardedWork.hpp"
#include "platform/persistence/store/sqlite/NewFile.hpp"
#include "platform/text/Text.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <limits>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace estatebook::platform {

namespace sqlite {

namespace {

constexpr std::int64_t GreatestNumber = std::numeric_limits<std::int64_t>::max();

/// The table's question, with the number of the row in the end.
std::string withNumber(const SealedTable& table) {
    std::string sql = table.select;
    sql.insert(sql.rfind(" FROM "), ", rowid");
    return sql + " WHERE rowid >= ?1 ORDER BY rowid";
}

/// What is short or busy now is not lost.
void requireDamage(const StoreFailure& failure) {
    if (failure.code == StoreErrorCode::OutOfMemory || failure.code == StoreErrorCode::Busy) throw failure;
}

std::string rowName(const SealedTable& table, std::int64_t number) {
    return "the row " + std::to_string(number) + " of " + table.name;
}

} // namespace

BookSalvage::BookSalvage(const FileSystem& files, const Ref<ManagedObjectModel>& model,
                         const SQLiteStore::Options& options)
    : files_(files), model_(model), options_(options), form_(BookFile::closed(model, options)),
      tables_(form_->tables()) {}

void BookSalvage::lose(std::string what) {
    if (lost_.size() < MostLines)
        lost_.push_back(std::move(what));
    else
        ++unlisted_;
}

// Reading

void BookSalvage::read(const std::string& path) {
    std::uint32_t layout = Layout;
    try {
        layout = requireHead(files_, path);
    } catch (const StoreFailure& failure) {
        if (failure.code != StoreErrorCode::Damaged) throw;
        lose("The head of the file: " + failure.reason);
    }
    Connection connection(files_, path, Connection::Access::Read, options_.patience);
    learnForm(connection, layout);
    for (const SealedTable* table : tables_.sealedTables())
        if (table != &tables_.header && table != &tables_.entities && storedAs(*table)) {
            readTable(connection, *table);
            compareCount(connection, *table);
        }
    nameLostEntries(connection);
    if (std::ranges::all_of(rows_, [](const auto& each) { return each.second.empty(); }) && !lost_.empty())
        damaged("nothing in it can be read");
}

void BookSalvage::learnForm(Connection& connection, std::uint32_t layout) {
    try {
        stored_ = std::make_unique<EarlierForm>(connection, layout, tables_, form_->shapes(), *model_,
                                                stepsOf(options_));
    } catch (const StoreFailure& failure) {
        requireDamage(failure);
        if (failure.code == StoreErrorCode::Newer) throw;
    }
}

const SealedTable* BookSalvage::storedAs(const SealedTable& table) const noexcept {
    return stored_ ? stored_->stored(table) : &table;
}

void BookSalvage::readTable(Connection& connection, const SealedTable& table) {
    rows_[&table];
    std::int64_t next = std::numeric_limits<std::int64_t>::min();
    for (;;) {
        const auto trouble = readFrom(connection, table, next);
        if (!trouble) return;
        const auto further = firstReadableFrom(connection, table, *trouble);
        const std::string from = "from " + std::to_string(std::max<std::int64_t>(*trouble, 1)) + " on";
        if (!further) return lose("The table " + table.name + ": rows numbered " + from + " cannot be read");
        lose("The table " + table.name + ": rows numbered " + from + " and below " +
             std::to_string(*further) + " cannot be read");
        next = *further;
    }
}

void BookSalvage::compareCount(Connection& connection, const SealedTable& table) {
    try {
        Statement::Use row(connection.statement("SELECT \"rows\" FROM \"book_sum\" WHERE \"name\" = ?1"));
        if (!row.bind(1, Cell::text(table.name)).next()) return;
        const std::int64_t before = row.integer(0);
        const std::int64_t read = std::ssize(rows_[&table]) + dropped_[&table];
        if (before > read)
            lose("The table " + table.name + ": " + std::to_string(before - read) + " of its " +
                 std::to_string(before) + " rows are lost");
    } catch (const StoreFailure&) {
        lose("The table " + table.name + ": how many rows it had cannot be read");
    }
}

std::optional<std::int64_t> BookSalvage::readFrom(Connection& connection, const SealedTable& table,
                                                  std::int64_t first) {
    std::int64_t next = first;
    const SealedTable& stored = *storedAs(table);
    try {
        Statement::Use rows(connection.statement(withNumber(stored)));
        rows.bind(1, first);
        while (rows.next()) {
            const std::int64_t number = rows.integer(static_cast<int>(stored.columns.size()) + 1);
            // A page that is shown twice must not lead in a circle.
            if (number < next) damaged("its rows are out of order");
            take(table, stored, number, rows);
            if (number == GreatestNumber) return std::nullopt;
            next = number + 1;
        }
        return std::nullopt;
    } catch (const StoreFailure& failure) {
        requireDamage(failure);
        return next;
    }
}

// Numbers lie on pages in their order, so that behind a page that cannot be read others may be.
std::optional<std::int64_t> BookSalvage::firstReadableFrom(Connection& connection, const SealedTable& table,
                                                           std::int64_t first) {
    const std::string sql =
        "SELECT rowid FROM " + quoted(table.name) + " WHERE rowid >= ?1 ORDER BY rowid LIMIT 1";
    const auto firstAt = [&](std::int64_t number) -> std::optional<std::int64_t> {
        try {
            Statement::Use row(connection.statement(sql));
            row.bind(1, number);
            if (row.next()) return std::max(row.integer(0), number);
        } catch (const StoreFailure& failure) {
            requireDamage(failure); // and neither here
        }
        return std::nullopt;
    };
    first = std::max<std::int64_t>(first, 0);
    std::int64_t failing = first;
    std::optional<std::int64_t> found;
    std::int64_t step = 1;
    while (!found) {
        if (first > GreatestNumber - step) return std::nullopt;
        found = firstAt(first + step);
        if (!found) failing = first + step;
        if (step > GreatestNumber / 2) break;
        step *= 2;
    }
    while (found && *found - failing > 1) {
        const std::int64_t middle = failing + (*found - failing) / 2;
        if (const auto nearer = firstAt(middle); nearer && *nearer < *found)
            found = nearer;
        else
            failing = middle;
    }
    return found;
}

void BookSalvage::take(const SealedTable& table, const SealedTable& stored, std::int64_t number,
                       const Statement::Use& row) {
    try {
        Cells cells;
        BookFile::read(row, stored, cells);
        const std::string entry(&table == &tables_.metadata ? cells.front().bytes : std::string_view());
        CellRoom room;
        if (stored_ && !stored_->bring(table, Cells(cells), cells, room)) {
            ++dropped_[&table];
            readEntries_.insert(entry);
            return;
        }
        form_->requireForm(table, cells);
        writeAnew(table, cells);
        for (Cell& cell : cells)
            if (!cell.bytes.empty()) cell.bytes = room_.keep(cell.bytes);
        rows_[&table].insert_or_assign(number, std::move(cells));
        readEntries_.insert(entry);
    } catch (const StoreFailure& failure) {
        requireDamage(failure);
        lose("The table " + table.name + ": " + rowName(table, number) + " is not sound: " + failure.reason);
    }
}

// What can be read may stand there in another form than it is written in.
void BookSalvage::writeAnew(const SealedTable& table, Cells& cells) {
    for (const EntityTable& each : tables_.entityTables()) {
        if (&table != &each) continue;
        Row row;
        form_->decode(each, cells, row);
        const auto attributes = row.entity->attributes();
        const EntityColumns& columns = tables_.columnsOf(*row.entity);
        for (std::size_t index = 0; index < attributes.size(); ++index)
            if (const auto place = columns.values[index]) {
                const Cell cell = form_->coding().encode(row.values[index], attributes[index].type, room_);
                cells[*place] = cell;
                if (!cell.bytes.empty()) cells[*place].bytes = room_.keep(cell.bytes);
            }
    }
}

// The index holds every name a second time, on pages of its own.
void BookSalvage::nameLostEntries(Connection& connection) {
    try {
        Statement::Use names(connection.statement(
            R"(SELECT "name" FROM "book_metadata" INDEXED BY "book_metadata.name" ORDER BY "name")"));
        while (names.next()) {
            const Cell name = names.cell(0);
            if (name.type != Cell::Type::Text || !isWellFormedUtf8(name.bytes) ||
                readEntries_.contains(name.bytes))
                continue;
            lose("The entry \"" + std::string(name.bytes) + "\", which was kept with the book, is lost");
            lostEntries_.emplace_back(name.bytes);
        }
    } catch (const StoreFailure& failure) {
        requireDamage(failure); // that some are lost was told
    }
}

// Making it agree

// A key names one row in a book, whatever its table.
void BookSalvage::dropDoubles() {
    std::unordered_map<std::int64_t, const SealedTable*> owners;
    for (const EntityTable& table : tables_.entityTables())
        std::erase_if(rows_[&table], [&](const auto& each) {
            const auto [owner, isFirst] = owners.emplace(each.first, &table);
            if (!isFirst)
                lose("The row " + std::to_string(each.first) + " of " + table.name +
                     ": its key is that of a row of " + owner->second->name + ", which is kept");
            return !isFirst;
        });
    // What must differ beside the rows: tokens, and the names of entries.
    for (const auto& [table, place] : {std::pair(&tables_.commits, 1), {&tables_.metadata, 0}}) {
        std::unordered_set<std::string_view> found;
        std::erase_if(rows_[table], [&](const auto& each) {
            const bool isFirst = found.insert(each.second[static_cast<std::size_t>(place)].bytes).second;
            if (!isFirst)
                lose("The table " + table->name + ": " + rowName(*table, each.first) + " is there twice");
            return !isFirst;
        });
    }
}

void BookSalvage::cutLinks() {
    std::unordered_map<std::string, const SealedTable*> byName;
    for (const SealedTable* table : tables_.sealedTables()) byName.emplace(table->name, table);
    for (const EntityTable& table : tables_.entityTables())
        for (std::size_t index = 0; index < table.properties.size(); ++index) {
            const Column& column = table.properties[index];
            if (column.kind != Column::Kind::Link) continue;
            const bool isPlaced = index + 1 < table.properties.size() &&
                                  table.properties[index + 1].kind == Column::Kind::Place;
            const Rows& targets = rows_[byName.at(column.target)];
            const std::size_t place = EntityTable::FirstProperty + index;
            for (auto& [number, cells] : rows_[&table]) {
                Cell& link = cells[place];
                if (link.type != Cell::Type::Integer || targets.contains(link.integer)) continue;
                lose("The \"" + column.name + "\" of " + rowName(table, number) + " was the row " +
                     std::to_string(link.integer) + " of " + column.target + ", which is lost");
                link = {};
                if (isPlaced) cells[place + 1] = {};
            }
        }
}

void BookSalvage::countPlaces() {
    for (const EntityTable& table : tables_.entityTables())
        for (std::size_t index = 1; index < table.properties.size(); ++index) {
            if (table.properties[index].kind != Column::Kind::Place) continue;
            const std::size_t place = EntityTable::FirstProperty + index;
            // By owner, former place and number.
            std::map<std::int64_t, std::map<std::pair<std::int64_t, std::int64_t>, Cell*>> members;
            for (auto& [number, cells] : rows_[&table])
                if (cells[place - 1].type == Cell::Type::Integer)
                    members[cells[place - 1].integer][{cells[place].integer, number}] = &cells[place];
            for (auto& [owner, ordered] : members) {
                std::int64_t next = 0;
                for (auto& [former, cell] : ordered) *cell = Cell::of(next++);
            }
        }
}

void BookSalvage::dropOrphans() {
    std::erase_if(rows_[&tables_.identifiers], [&](const auto& each) {
        const std::int64_t key = each.first;
        const bool isThere = std::ranges::any_of(
            tables_.entityTables(), [&](const EntityTable& table) { return rows_[&table].contains(key); });
        if (!isThere)
            lose("The identifier \"" + std::string(each.second[1].bytes) + "\": its row " +
                 std::to_string(key) + " is lost");
        return !isThere;
    });
}

void BookSalvage::mendHistory() {
    RowKey lastKey = NoRow;
    for (const EntityTable& table : tables_.entityTables())
        if (const Rows& rows = rows_[&table]; !rows.empty())
            lastKey = std::max(lastKey, rows.rbegin()->first);
    SalvagedHistory(*form_, options_.holder, room_, rows_[&tables_.commits], rows_[&tables_.journal],
                    [this](std::string what) { lose(std::move(what)); })
        .mend(lastKey);
}

// Writing

void BookSalvage::write(const std::string& path) {
    dropDoubles();
    cutLinks();
    countPlaces();
    dropOrphans();
    mendHistory();
    BookFile::lay(files_, path, tables_, *model_);
    Connection connection(files_, path, Connection::Access::Write, options_.patience);
    Transaction transaction(connection);
    for (const auto& [table, rows] : rows_) {
        std::uint64_t sum = 0;
        for (const auto& [number, cells] : rows) {
            insertSealed(connection, *table, cells);
            sum += static_cast<std::uint64_t>(digestOf(cells));
        }
        Statement::Use(connection.statement(
                           "UPDATE \"book_sum\" SET \"rows\" = ?2, \"digests\" = ?3 WHERE \"name\" = ?1"))
            .bind(1, Cell::text(table->name))
            .bind(2, std::ssize(rows))
            .bind(3, static_cast<std::int64_t>(sum))
            .run();
    }
    if (const int code = connection.tryRun("COMMIT"); code != SQLITE_OK) connection.fail(code);
}

Salvage BookSalvage::result(std::string path) && {
    Salvage salvage{
        .path = std::move(path), .lost = std::move(lost_), .lostEntries = std::move(lostEntries_)};
    for (const EntityTable& table : tables_.entityTables()) salvage.rows += rows_[&table].size();
    if (unlisted_ > 0) salvage.lost.push_back("and " + std::to_string(unlisted_) + " more");
    return salvage;
}

} // namespace sqlite

StoreResult<Salvage> salvageBook(const std::string& from, const std::string& to,
                                 const Ref<ManagedObjectModel>& model, const SQLiteStore::Options& options) {
    using namespace sqlite;
    return sqlite::guarded(from, [&] {
        const FileSystem& files = options.fileSystem ? *options.fileSystem : FileSystem::ofTheMachine();
        try {
            NewFile made(files, to);
            BookSalvage salvage(files, model, options);
            const std::string source = resolved(files, from);
            salvage.read(source);
            made.makeLike(source);
            salvage.write(made.draft());
            SQLiteStore::Options reading = options;
            reading.access = SQLiteStore::Access::Read;
            {
                const auto book = BookFile::open(made.draft(), model, reading);
                if (const auto findings = BookCheck(*book).findings(); !findings.empty())
                    damaged("no sound book can be made of what can be read: " + findings.front());
            }
            made.settle();
            return std::move(salvage).result(made.path());
        } catch (const StoreFailure& failure) {
            if (failure.code == StoreErrorCode::Exists) throw errorOf(failure, to);
            throw;
        }
    });
}

} // namespace estatebook::platform
