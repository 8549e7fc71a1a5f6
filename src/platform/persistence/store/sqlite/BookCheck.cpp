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

// Every row is looked at, whatever is wrong with those before it.
void BookCheck::checkTable(const SealedTable& table) {
    std::int64_t count = 0;
    std::uint64_t sum = 0;
    Cells cells;
    {
        Statement::Use rows(file_.connection().statement(table.select));
        while (rows.next()) {
            ++count;
            const Cell digest = rows.cell(static_cast<int>(table.columns.size()));
            sum += static_cast<std::uint64_t>(digest.integer);
            try {
                BookFile::read(rows, table, cells);
                checkForm(table, cells);
            } catch (const StoreFailure& failure) {
                find("The table " + table.name + ": " + failure.reason);
            }
        }
    }
    Statement::Use row(
        file_.connection().statement("SELECT \"rows\", \"digests\" FROM \"book_sum\" WHERE \"name\" = ?1"));
    if (!row.bind(1, Cell::text(table.name)).next()) return find("The table " + table.name + " has no sum");
    if (row.integer(0) != count)
        find("The table " + table.name + " has " + std::to_string(count) + " rows in place of " +
             std::to_string(row.integer(0)));
    if (static_cast<std::uint64_t>(row.integer(1)) != sum)
        find("The digests of the table " + table.name + " do not add up to their sum");
}

void BookCheck::checkForm(const SealedTable& table, const Cells& cells) {
    if (&table == &file_.tables().commits) static_cast<void>(file_.decodeCommit(cells));
    if (&table == &file_.tables().journal) static_cast<void>(file_.decodeEntry(cells));
    for (const EntityTable& each : file_.tables().entityTables()) {
        if (&table != &each) continue;
        Row row;
        file_.decode(each, cells, row);
        checkArchives(each, cells, row);
    }
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

// A key that no save gave would one day be given to another row.
void BookCheck::checkKeys() {
    RowKey last = NoRow;
    try {
        last = file_.lastKey();
    } catch (const StoreFailure&) {
        return; // told of its table
    }
    for (const EntityTable& table : file_.tables().entityTables()) {
        Statement::Use row(file_.connection().statement("SELECT MAX(\"_key\") FROM " + quoted(table.name)));
        if (row.next() && row.cell(0).type == Cell::Type::Integer && row.integer(0) > last)
            find("The row " + std::to_string(row.integer(0)) + " of " + table.name +
                 " has a key beyond the last one given, " + std::to_string(last));
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

} // namespace estatebook::platform::sqlite
