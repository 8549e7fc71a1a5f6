// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/BookTables.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/StoreRules.hpp"

#include <algorithm>

namespace estatebook::platform::sqlite {

namespace {

constexpr std::string_view DigestColumn = "_digest";

std::string_view storageOf(const Column& column) {
    if (column.kind != Column::Kind::Attribute) return " INTEGER";
    switch (column.type) {
    case AttributeType::String:
    case AttributeType::Decimal:
        return " TEXT";
    case AttributeType::Date:
        return " REAL";
    case AttributeType::Number: // as it is given: its kind is what it is kept as
        return "";
    case AttributeType::Any:
    case AttributeType::Object:
        return " BLOB";
    }
    return "";
}

/// The entity farthest up that has the property.
const EntityDescription& declarerOf(const EntityDescription& entity, Key property) {
    const auto has = [&](const EntityDescription& each) {
        return each.relationship(property) ||
               std::ranges::find(each.attributes(), property, &AttributeDescription::name) !=
                   each.attributes().end();
    };
    const EntityDescription* declarer = &entity;
    while (declarer->superentity() && has(*declarer->superentity())) declarer = declarer->superentity();
    return *declarer;
}

SealedTable sealedTable(std::string name, std::vector<std::string> columns, std::string_view types) {
    std::string sql = "CREATE TABLE " + quoted(name) + "(" + std::string(types) + ", " +
                      quoted(DigestColumn) + " INTEGER NOT NULL)";
    SealedTable table{.name = std::move(name), .columns = std::move(columns), .sql = std::move(sql)};
    table.writeStatements();
    return table;
}

} // namespace

std::string quoted(std::string_view name) {
    return '"' + std::string(name) + '"';
}

std::string typeOf(const Column& column) {
    std::string type(storageOf(column));
    if (column.kind == Column::Kind::Link)
        type += " REFERENCES " + quoted(column.target) + " DEFERRABLE INITIALLY DEFERRED";
    return type;
}

void SealedTable::writeStatements() {
    std::string list;
    std::string parameters;
    std::string assignments;
    for (std::size_t index = 0; index < columns.size(); ++index) {
        const std::string parameter = "?" + std::to_string(index + 1);
        list += quoted(columns[index]) + ", ";
        parameters += parameter + ", ";
        if (index > 0) assignments += quoted(columns[index]) + " = " + parameter + ", ";
    }
    const std::string digest = "?" + std::to_string(columns.size() + 1);
    const std::string where = " WHERE " + quoted(columns.front()) + " = ?1";
    select = "SELECT " + list + quoted(DigestColumn) + " FROM " + quoted(name);
    find = select + where;
    insert = "INSERT INTO " + quoted(name) + " VALUES(" + parameters + digest + ")";
    update = "UPDATE " + quoted(name) + " SET " + assignments + quoted(DigestColumn) + " = " + digest + where;
    remove = "DELETE FROM " + quoted(name) + where;
}

void EntityTable::layOut() {
    columns = {"_key", "_entity", "_version"};
    sql = "CREATE TABLE " + quoted(name) +
          "(\"_key\" INTEGER PRIMARY KEY, \"_entity\" INTEGER NOT NULL, \"_version\" INTEGER NOT NULL";
    for (std::size_t index = 0; index < properties.size(); ++index) {
        const Column& column = properties[index];
        columns.push_back(column.name);
        sql += ", " + quoted(column.name) + typeOf(column);
        if (column.kind != Column::Kind::Link && !column.isIndexed) continue;
        const bool isPlaced =
            index + 1 < properties.size() && properties[index + 1].kind == Column::Kind::Place;
        auto& indexes = column.kind == Column::Kind::Link ? linkIndexes : lookupIndexes;
        indexes.push_back("CREATE INDEX " + quoted(name + "." + column.name) + " ON " + quoted(name) + "(" +
                          quoted(column.name) + (isPlaced ? ", " + quoted(properties[index + 1].name) : "") +
                          ") WHERE " + quoted(column.name) + " IS NOT NULL");
    }
    sql += ", " + quoted(DigestColumn) + " INTEGER NOT NULL)";
    writeStatements();
}

BookTables::BookTables(const ManagedObjectModel& model)
    : header(sealedTable("book_header", {"number", "identifier"},
                         "\"number\" INTEGER PRIMARY KEY, \"identifier\" TEXT NOT NULL")),
      entities(sealedTable("book_entity", {"number", "name"},
                           "\"number\" INTEGER PRIMARY KEY, \"name\" TEXT NOT NULL")),
      commits(sealedTable(
          "book_commit", {"number", "token", "when", "author", "program", "command", "first_key", "last_key"},
          "\"number\" INTEGER PRIMARY KEY, \"token\" BLOB NOT NULL, \"when\" REAL, \"author\" TEXT NOT NULL, "
          "\"program\" TEXT NOT NULL, \"command\" TEXT NOT NULL, \"first_key\" INTEGER NOT NULL, "
          "\"last_key\" INTEGER NOT NULL")),
      journal(sealedTable(
          "book_journal", {"number", "commit", "kind", "entity", "key", "property", "former", "current"},
          "\"number\" INTEGER PRIMARY KEY, \"commit\" INTEGER NOT NULL, \"kind\" INTEGER NOT NULL, "
          "\"entity\" INTEGER NOT NULL, \"key\" INTEGER NOT NULL, \"property\" TEXT NOT NULL, \"former\", "
          "\"current\"")),
      identifiers(sealedTable("book_identifier", {"key", "identifier"},
                              "\"key\" INTEGER PRIMARY KEY, \"identifier\" TEXT NOT NULL")),
      metadata(
          sealedTable("book_metadata", {"name", "value"}, "\"name\" TEXT NOT NULL, \"value\" TEXT NOT NULL")),
      model_(model), columns_(model.entities().size()) {
    const auto& shapes = model.derived<RowShapes>();
    for (const auto& entity : model.entities())
        if (!entity->superentity()) addTable(*entity, shapes);
    for (const auto& entity : model.entities()) addLookups(*entity);
    writeSchema();
}

void BookTables::addTable(const EntityDescription& root, const RowShapes& shapes) {
    EntityTable table;
    table.name = root.name();
    table.root = &root;
    for (const RowShape& shape : shapes.all())
        if (&shape.root() == &root) addColumns(table, shape, shapes);
    table.layOut();
    entityTables_.push_back(std::move(table));
}

void BookTables::addColumns(EntityTable& table, const RowShape& shape, const RowShapes& shapes) {
    EntityColumns& places = columns_[shape.entity().index()];
    places.table = entityTables_.size();
    // What an ancestor declares has a column already; what a sibling calls the same is named apart.
    const auto columnFor = [&](Key property, const std::string& name, Column column) {
        const EntityDescription& owner = declarerOf(shape.entity(), property);
        const auto sameName = [](std::string_view a, std::string_view b) {
            return std::ranges::equal(a, b, [](char one, char other) { return (one | 32) == (other | 32); });
        };
        const auto place = [&](const std::string& wanted) -> std::optional<std::size_t> {
            const auto found = std::ranges::find_if(
                table.properties, [&](const Column& each) { return sameName(each.name, wanted); });
            if (found == table.properties.end()) return std::nullopt;
            return static_cast<std::size_t>(found - table.properties.begin());
        };
        for (const std::string& wanted : {name, std::string(owner.name()) + "." + name}) {
            const auto taken = place(wanted);
            if (taken && table.properties[*taken].owner == &owner && table.properties[*taken].name == wanted)
                return EntityTable::FirstProperty + *taken;
            if (taken) continue;
            column.name = wanted;
            column.property = name;
            column.owner = &owner;
            table.properties.push_back(std::move(column));
            break;
        }
        return EntityTable::FirstProperty + table.properties.size() - 1;
    };
    for (const AttributeDescription& attribute : shape.entity().attributes()) {
        if (attribute.isTransient)
            places.values.emplace_back();
        else
            places.values.emplace_back(columnFor(attribute.name, std::string(attribute.name.name()),
                                                 {.type = attribute.type, .isIndexed = attribute.isIndexed}));
    }
    for (const StoredLink& link : shape.links()) {
        const Key name = link.relationship->name;
        EntityColumns::Link& place = places.links.emplace_back();
        const EntityDescription& target = shapes.of(*link.relationship->destinationEntity).root();
        place.target = columnFor(name, std::string(name.name()),
                                 {.kind = Column::Kind::Link, .target = std::string(target.name())});
        if (link.isPlaced)
            place.place = columnFor(name, detail::placeName(link), {.kind = Column::Kind::Place});
    }
}

void BookTables::addLookups(const EntityDescription& entity) {
    const EntityTable& table = tableOf(entity);
    EntityColumns& columns = columns_[entity.index()];
    columns.lookups.resize(columns.values.size());
    for (std::size_t index = 0; index < columns.values.size(); ++index)
        if (const auto place = columns.values[index]; place && entity.attributes()[index].isIndexed)
            columns.lookups[index] = table.select + " WHERE " + quoted(table.columns[*place]) + " = ?1" +
                                     filterFor(entity, *table.root) + " ORDER BY \"_key\"";
}

std::string BookTables::filterFor(const EntityDescription& entity, const EntityDescription& within) const {
    std::string numbers;
    bool excludes = false;
    for (const auto& each : model_.entities()) {
        if (each->isAbstract() || !each->isKindOfEntity(within)) continue;
        if (each->isKindOfEntity(entity))
            numbers += (numbers.empty() ? "" : ", ") + std::to_string(numberOf(*each));
        else
            excludes = true;
    }
    return excludes ? " AND \"_entity\" IN (" + numbers + ")" : "";
}

std::vector<const SealedTable*> BookTables::sealedTables() const {
    std::vector<const SealedTable*> tables{&header, &entities, &commits, &journal, &identifiers, &metadata};
    for (const EntityTable& table : entityTables_) tables.push_back(&table);
    return tables;
}

std::vector<std::string> BookTables::schemaBesideRows() const {
    std::vector<std::string> schema{
        "CREATE TABLE " + quoted(Sums) +
        "(\"name\" TEXT NOT NULL, \"rows\" INTEGER NOT NULL, \"digests\" INTEGER NOT NULL)"};
    for (const SealedTable* table : {&header, &entities, &commits, &journal, &identifiers, &metadata})
        schema.push_back(table->sql);
    schema.emplace_back("CREATE UNIQUE INDEX \"book_sum.name\" ON \"book_sum\"(\"name\")");
    schema.emplace_back("CREATE UNIQUE INDEX \"book_commit.token\" ON \"book_commit\"(\"token\")");
    schema.emplace_back("CREATE INDEX \"book_journal.commit\" ON \"book_journal\"(\"commit\")");
    schema.emplace_back("CREATE INDEX \"book_journal.key\" ON \"book_journal\"(\"key\")");
    schema.emplace_back("CREATE UNIQUE INDEX \"book_metadata.name\" ON \"book_metadata\"(\"name\")");
    return schema;
}

void BookTables::writeSchema() {
    schema_ = schemaBesideRows();
    for (const EntityTable& table : entityTables_) schema_.push_back(table.sql);
    for (const EntityTable& table : entityTables_)
        for (const auto* indexes : {&table.linkIndexes, &table.lookupIndexes})
            schema_.insert(schema_.end(), indexes->begin(), indexes->end());
}

} // namespace estatebook::platform::sqlite
