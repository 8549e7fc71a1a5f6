// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/BookCheck.hpp"

#include "platform/persistence/store/StoreRules.hpp"

#include <algorithm>

namespace estatebook::platform::sqlite {

std::vector<std::string> BookCheck::findings() {
    checkPages();
    checkLinks();
    for (const SealedTable* table : file_.tables().sealedTables()) checkTable(*table);
    for (const EntityTable& table : file_.tables().entityTables()) checkPlaces(table);
    checkKeys();
    checkIdentifiers();
    checkSums();
    return std::move(findings_);
}

void BookCheck::find(std::string finding) {
    if (findings_.size() < MostFindings) findings_.push_back(std::move(finding));
}

// A page that could not be read just then, or for which there was no memory, is told as one that is damaged. Damage is what is
// found twice.
void BookCheck::checkPages() {
    const auto look = [&] {
        std::vector<std::string> found;
        Statement::Use rows(file_.connection().statement("PRAGMA integrity_check(100)"));
        while (rows.next())
            if (rows.text(0) != "ok") found.emplace_back(rows.text(0));
        return found;
    };
    if (look().empty()) return;
    for (const std::string& each : look()) find("The file: " + each);
}

void BookCheck::checkLinks() {
    Statement::Use rows(file_.connection().statement("PRAGMA foreign_key_check"));
    while (rows.next())
        find("The row " + std::to_string(rows.integer(1)) + " of " + std::string(rows.text(0)) +
             " leads to a row of " + std::string(rows.text(2)) + " that is not there");
}

// Every row is looked at, whatever is wrong with those before it. Commits come before the journal, which tells of them.
void BookCheck::checkTable(const SealedTable& table) {
    const auto& tables = file_.tables().entityTables();
    const auto place =
        static_cast<std::size_t>(std::ranges::find(tables, table.name, &SealedTable::name) - tables.begin());
    std::int64_t count = 0;
    std::uint64_t sum = 0;
    Cells cells;
    {
        Statement::Use rows(file_.connection().statement(table.select + " ORDER BY rowid"));
        while (rows.next()) {
            ++count;
            const Cell digest = rows.cell(static_cast<int>(table.columns.size()));
            sum += static_cast<std::uint64_t>(digest.integer);
            if (place < tables.size()) keys_.emplace_back(rows.integer(EntityTable::Key), place);
            try {
                BookFile::read(rows, table, cells);
                checkForm(table, cells);
            } catch (const StoreFailure& failure) {
                find("The table " + table.name + ": " + failure.reason);
                if (&table == &file_.tables().commits) passOver(cells);
            }
        }
    }
    checkSum(table, count, sum);
}

void BookCheck::checkSum(const SealedTable& table, std::int64_t count, std::uint64_t digests) {
    Statement::Use row(
        file_.connection().statement("SELECT \"rows\", \"digests\" FROM \"book_sum\" WHERE \"name\" = ?1"));
    if (!row.bind(1, Cell::text(table.name)).next()) return find("The table " + table.name + " has no sum");
    if (row.integer(0) != count)
        find("The table " + table.name + " has " + std::to_string(count) + " rows in place of " +
             std::to_string(row.integer(0)));
    if (static_cast<std::uint64_t>(row.integer(1)) != digests)
        find("The digests of the table " + table.name + " do not add up to their sum");
}

void BookCheck::checkForm(const SealedTable& table, const Cells& cells) {
    if (&table == &file_.tables().commits) return checkCommit(file_.decodeCommit(cells));
    if (&table == &file_.tables().journal) return checkEntry(cells[0].integer, file_.decodeEntry(cells));
    for (const EntityTable& each : file_.tables().entityTables()) {
        if (&table != &each) continue;
        Row row;
        file_.decode(each, cells, row);
        checkArchives(each, cells, row);
    }
    file_.requireForm(table, cells);
}

void BookCheck::checkCommit(const Commit& commit) {
    if (commit.number != lastCommit_ + 1)
        find("The save " + std::to_string(lastCommit_ + 1) + " is missing; the " +
             (lastCommit_ == 0 ? "first one" : "one after " + std::to_string(lastCommit_)) + " is numbered " +
             std::to_string(commit.number));
    if (commit.firstKey <= lastKey_ || commit.lastKey < commit.firstKey - 1)
        find("The save " + std::to_string(commit.number) + " gave the keys from " +
             std::to_string(commit.firstKey) + " to " + std::to_string(commit.lastKey) +
             ", which do not follow those of the saves before it, up to " + std::to_string(lastKey_));
    lastCommit_ = commit.number;
    lastKey_ = std::max(lastKey_, commit.lastKey);
}

void BookCheck::passOver(const Cells& commit) noexcept {
    if (commit.front().type == Cell::Type::Integer)
        lastCommit_ = std::max(lastCommit_, commit.front().integer);
    areKeysKnown_ = false;
}

void BookCheck::checkEntry(std::int64_t number, const JournalEntry& entry) {
    const std::string name = "The entry " + std::to_string(number) + " of the journal is of ";
    const std::pair place(entry.commit, entry.key);
    if (entry.commit > lastCommit_)
        find(name + "the save " + std::to_string(entry.commit) + ", which is not there");
    else if (areKeysKnown_ && entry.key > lastKey_)
        find(name + "a row " + std::to_string(entry.key) + ", and no key beyond " + std::to_string(lastKey_) +
             " was given");
    else if (place < lastEntry_)
        find(name + "the row " + std::to_string(entry.key) + " in the save " + std::to_string(entry.commit) +
             " and stands behind that of the row " + std::to_string(lastEntry_.second) + " in the save " +
             std::to_string(lastEntry_.first));
    lastEntry_ = place;
}

// What is read must be written the same again; an archive could say the same in other bytes.
void BookCheck::checkArchives(const EntityTable& table, const Cells& cells, const Row& row) {
    const auto attributes = row.entity->attributes();
    const EntityColumns& columns = file_.tables().columnsOf(*row.entity);
    CellRoom room;
    for (std::size_t index = 0; index < attributes.size(); ++index) {
        const auto place = columns.values[index];
        if (!place) continue;
        const Cell again = file_.coding().encode(row.values[index], attributes[index].type, room);
        if (again.type != cells[*place].type || again.bytes != cells[*place].bytes)
            find("The row " + std::to_string(row.key) + " of " + table.name + " holds \"" +
                 table.columns[*place] + "\" in another form than it is written in");
    }
}

void BookCheck::checkPlaces(const EntityTable& table) {
    for (std::size_t index = 0; index + 1 < table.properties.size(); ++index) {
        if (table.properties[index + 1].kind != Column::Kind::Place) continue;
        Statement::Use rows(file_.connection().statement(
            "SELECT owner FROM (SELECT " + quoted(table.properties[index].name) + " AS owner, " +
            quoted(table.properties[index + 1].name) + " AS place FROM " + quoted(table.name) +
            ") WHERE owner IS NOT NULL GROUP BY owner "
            "HAVING MIN(place) <> 0 OR MAX(place) <> COUNT(*) - 1 OR COUNT(DISTINCT place) <> COUNT(*)"));
        while (rows.next())
            find("The members of " + std::to_string(rows.integer(0)) + " in " + table.name +
                 " do not stand at places from 0 on without gaps");
    }
}

// A key that no save gave would one day be given to another row, and one that two rows have would name either.
void BookCheck::checkKeys() {
    std::ranges::sort(keys_);
    const auto nameOf = [&](std::size_t table) { return file_.tables().entityTables()[table].name; };
    for (std::size_t index = 0; index < keys_.size(); ++index) {
        const auto& [key, table] = keys_[index];
        if (areKeysKnown_ && key > lastKey_)
            find("The row " + std::to_string(key) + " of " + nameOf(table) +
                 " has a key beyond the last one given, " + std::to_string(lastKey_));
        if (index > 0 && keys_[index - 1].first == key)
            find("The key " + std::to_string(key) + " is that of a row of " +
                 nameOf(keys_[index - 1].second) + " and of a row of " + nameOf(table));
    }
}

void BookCheck::checkIdentifiers() {
    std::string query = "SELECT \"key\" FROM \"book_identifier\" WHERE 1";
    for (const EntityTable& table : file_.tables().entityTables())
        query += " AND \"key\" NOT IN (SELECT \"_key\" FROM " + quoted(table.name) + ")";
    Statement::Use rows(file_.connection().statement(query));
    while (rows.next())
        find("An identifier is that of the row " + std::to_string(rows.integer(0)) + ", which is not there");
}

void BookCheck::checkSums() {
    const auto tables = file_.tables().sealedTables();
    Statement::Use rows(file_.connection().statement("SELECT \"name\" FROM \"book_sum\""));
    while (rows.next()) {
        const std::string_view name = rows.text(0);
        if (std::ranges::find(tables, name, &SealedTable::name) == tables.end())
            find("There is a sum of \"" + std::string(name) + "\", which is no table of a book");
    }
}

} // namespace estatebook::platform::sqlite
