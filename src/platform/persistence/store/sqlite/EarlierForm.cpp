// SPDX-License-Identifier: MIT
#include "platform/persistence/store/sqlite/EarlierForm.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/persistence/store/StoreRules.hpp"

#include <algorithm>
#include <utility>

namespace estatebook::platform::sqlite {

namespace {

[[noreturn]] void foreignTables(std::uint32_t layout) {
    damaged("its tables are not those of a book of layout " + std::to_string(layout));
}

[[noreturn]] void newer(const std::string& what) {
    throw StoreFailure{StoreErrorCode::Newer, "it holds " + what + ", which this program does not know yet"};
}

[[noreturn]] void misplaced(const SealedTable& table) {
    damaged("a row of its table \"" + table.name + "\" is of an entity that does not belong there");
}

[[noreturn]] void superfluous(const SealedTable& table) {
    damaged("a row of its table \"" + table.name + "\" holds what its entity does not have");
}

/// Where an entry of the journal names the entity of its row.
constexpr std::size_t EntityOfEntry = 3;

struct Definition {
    std::string_view name;
    std::string_view type;
};

/// The properties of which a table of rows is made; none when no program writes tables so.
std::optional<std::vector<Definition>> definitionsIn(std::string_view sql, std::string_view table) {
    EntityTable empty;
    empty.name = table;
    empty.layOut();
    constexpr std::string_view Between = ", \"";
    // What stands before and behind the properties.
    const std::size_t split = empty.sql.rfind(Between);
    const std::string_view head = std::string_view(empty.sql).substr(0, split);
    const std::string_view tail = std::string_view(empty.sql).substr(split);
    if (sql.size() < empty.sql.size() || !sql.starts_with(head) || !sql.ends_with(tail)) return std::nullopt;
    sql.remove_prefix(head.size());
    sql.remove_suffix(tail.size());
    std::vector<Definition> definitions;
    while (!sql.empty()) {
        if (!sql.starts_with(Between)) return std::nullopt;
        sql.remove_prefix(Between.size());
        const std::size_t end = sql.find('"');
        if (end == 0 || end == std::string_view::npos) return std::nullopt;
        const std::string_view name = sql.substr(0, end);
        sql.remove_prefix(end + 1);
        const std::string_view type = sql.substr(0, sql.find(Between));
        definitions.push_back({name, type});
        sql.remove_prefix(type.size());
    }
    return definitions;
}

/// Where the properties of an entity stand in its table, by their names.
std::map<std::string, std::size_t, std::less<>>
placesOf(const EntityDescription& entity, const EntityColumns& columns, const RowShape& shape) {
    std::map<std::string, std::size_t, std::less<>> places;
    for (std::size_t index = 0; index < columns.values.size(); ++index)
        if (const auto place = columns.values[index])
            places.emplace(entity.attributes()[index].name.name(), *place);
    for (std::size_t index = 0; index < columns.links.size(); ++index) {
        const StoredLink& link = shape.links()[index];
        places.emplace(link.relationship->name.name(), columns.links[index].target);
        if (const auto place = columns.links[index].place) places.emplace(detail::placeName(link), *place);
    }
    return places;
}

} // namespace

EarlierForm::EarlierForm(Connection& connection, std::uint32_t layout, const BookTables& tables,
                         const RowShapes& shapes, const ManagedObjectModel& model, LayoutSteps steps)
    : layout_(layout), tables_(tables) {
    for (const LayoutStep& step : steps.steps)
        if (step.from >= layout) steps_.push_back(step);
    const Schema schema = schemaOf(connection);
    for (const std::string& sql : tables.schemaBesideRows())
        if (std::ranges::none_of(schema, [&](const auto& each) { return each.second == sql; }))
            foreignTables(layout);
    learnEntities(connection, model);
    for (const EntityTable& today : tables.entityTables())
        if (const auto found = schema.find(today.name); found != schema.end())
            learnTable(today, found->second, shapes);
    for (const EntityDescription* entity : entities_)
        if (!rows_.contains(&tables.tableOf(*entity))) foreignTables(layout);
    requireNothingElse(schema);
}

EarlierForm::Schema EarlierForm::schemaOf(Connection& connection) {
    Schema schema;
    Statement::Use rows(connection.statement("SELECT name, sql FROM sqlite_schema"));
    while (rows.next()) {
        const Cell sql = rows.cell(1);
        schema.emplace(rows.text(0), sql.type == Cell::Type::Text ? sql.bytes : std::string_view());
    }
    return schema;
}

void EarlierForm::learnEntities(Connection& connection, const ManagedObjectModel& model) {
    Cells cells;
    Statement::Use rows(connection.statement(tables_.entities.select + " ORDER BY \"number\""));
    while (rows.next()) {
        BookFile::read(rows, tables_.entities, cells);
        if (cells[0].integer != std::ssize(entities_) + 1) damaged("its entities are not those of a book");
        const EntityDescription* entity = model.entityNamed(textOf(cells[1]));
        if (!entity) newer("\"" + std::string(cells[1].bytes) + "\"");
        if (std::ranges::find(entities_, entity) != entities_.end())
            damaged("its entities are not those of a book");
        entities_.push_back(entity);
    }
}

std::optional<Column> EarlierForm::columnOf(const EntityTable& today, std::string_view name,
                                            std::string_view type, const RowShapes& shapes) const {
    const auto isNamed = [&](const Column& column) {
        if (name == column.property) return true;
        return name.ends_with("." + column.property) &&
               std::ranges::any_of(shapes.all(), [&](const RowShape& shape) {
                   return &shape.root() == today.root &&
                          name.size() == shape.entity().name().size() + 1 + column.property.size() &&
                          name.starts_with(shape.entity().name());
               });
    };
    for (Column column : today.properties) {
        if (!isNamed(column) || typeOf(column) != type) continue;
        column.name = name;
        return column;
    }
    for (const LayoutStep& step : steps_)
        for (const FormerAttribute& former : step.attributes) {
            Column column{
                .name = std::string(name), .property = std::string(former.name), .type = former.type};
            if (former.table == today.name && former.name == name && typeOf(column) == type) return column;
        }
    return std::nullopt;
}

void EarlierForm::learnTable(const EntityTable& today, const std::string& sql, const RowShapes& shapes) {
    const auto definitions = definitionsIn(sql, today.name);
    if (!definitions) foreignTables(layout_);
    StoredRows& rows = rows_[&today];
    rows.table.name = today.name;
    rows.table.root = today.root;
    for (const auto& [name, type] : *definitions) {
        auto column = columnOf(today, name, type, shapes);
        if (!column) newer("\"" + std::string(name) + "\" in \"" + today.name + "\"");
        rows.table.properties.push_back(*std::move(column));
    }
    rows.table.layOut();
    if (rows.table.sql != sql) foreignTables(layout_);
    for (const EntityDescription* entity : entities_) {
        if (&tables_.tableOf(*entity) != &today) continue;
        const auto& places = rows.names[entity] =
            placesOf(*entity, tables_.columnsOf(*entity), shapes.of(*entity));
        auto& ofEntity = rows.places[entity];
        for (const Column& column : rows.table.properties) {
            const auto place = places.find(column.property);
            const bool isThere =
                place != places.end() &&
                typeOf(today.properties[place->second - EntityTable::FirstProperty]) == typeOf(column);
            ofEntity.push_back(isThere ? std::optional(place->second) : std::nullopt);
        }
    }
    if (rows.places.empty()) foreignTables(layout_);
}

// Each index over links is there; one over an attribute may have come later.
void EarlierForm::requireNothingElse(const Schema& schema) const {
    std::vector<std::string> needed = tables_.schemaBesideRows();
    std::vector<std::string> allowed;
    for (const auto& [today, rows] : rows_) {
        needed.push_back(rows.table.sql);
        needed.insert(needed.end(), rows.table.linkIndexes.begin(), rows.table.linkIndexes.end());
        allowed.insert(allowed.end(), rows.table.lookupIndexes.begin(), rows.table.lookupIndexes.end());
    }
    std::size_t found = 0;
    for (const auto& [name, sql] : schema) {
        if (std::ranges::find(needed, sql) != needed.end())
            ++found;
        else if (std::ranges::find(allowed, sql) == allowed.end())
            foreignTables(layout_);
    }
    if (found != needed.size()) foreignTables(layout_);
}

const SealedTable* EarlierForm::stored(const SealedTable& today) const noexcept {
    if (const auto rows = rows_.find(&today); rows != rows_.end()) return &rows->second.table;
    const bool isOfRows =
        std::ranges::any_of(tables_.entityTables(), [&](const EntityTable& each) { return &each == &today; });
    return isOfRows ? nullptr : &today;
}

const EntityDescription& EarlierForm::entityOf(std::int64_t stored) const {
    if (stored < 1 || stored > std::ssize(entities_)) damaged("it names an entity that there is not");
    return *entities_[static_cast<std::size_t>(stored) - 1];
}

bool EarlierForm::bring(const SealedTable& today, const Cells& stored, Cells& cells, CellRoom& room) const {
    if (std::ranges::any_of(steps_, [](const LayoutStep& each) { return each.bring != nullptr; }))
        return step(today, stored, cells, room);
    if (const auto rows = rows_.find(&today); rows != rows_.end()) {
        bringRow(today, rows->second, stored, cells);
        return true;
    }
    cells = stored;
    if (&today == &tables_.journal)
        cells[EntityOfEntry] = Cell::of(BookTables::numberOf(entityOf(stored[EntityOfEntry].integer)));
    return true;
}

void EarlierForm::bringRow(const SealedTable& today, const StoredRows& rows, const Cells& stored,
                           Cells& cells) const {
    const EntityDescription& entity = entityOf(stored[EntityTable::Entity].integer);
    const auto places = rows.places.find(&entity);
    if (places == rows.places.end()) misplaced(today);
    cells.assign(today.columns.size(), Cell());
    std::copy_n(stored.begin(), EntityTable::FirstProperty, cells.begin());
    cells[EntityTable::Entity] = Cell::of(BookTables::numberOf(entity));
    for (std::size_t index = 0; index < places->second.size(); ++index) {
        const Cell& cell = stored[EntityTable::FirstProperty + index];
        if (cell.type == Cell::Type::Null) continue;
        if (!places->second[index]) superfluous(today);
        cells[*places->second[index]] = cell;
    }
}

bool EarlierForm::step(const SealedTable& today, const Cells& stored, Cells& cells, CellRoom& room) const {
    const auto rows = rows_.find(&today);
    const bool isOfRows = rows != rows_.end();
    const EntityDescription* entity = nullptr;
    if (isOfRows) entity = &entityOf(stored[EntityTable::Entity].integer);
    if (&today == &tables_.journal) entity = &entityOf(stored[EntityOfEntry].integer);
    SteppedRow::CellsByName named;
    const std::size_t first = isOfRows ? EntityTable::FirstProperty : 0;
    for (std::size_t place = first; place < stored.size(); ++place)
        if (stored[place].type != Cell::Type::Null)
            named.emplace(isOfRows ? rows->second.table.properties[place - first].property
                                   : today.columns[place],
                          stored[place]);
    SteppedRow row(today.name, entity ? entity->name() : std::string_view(), named, room);
    for (const LayoutStep& each : steps_) {
        if (each.bring) each.bring(row);
        if (row.isDropped()) return false;
    }
    cells.assign(today.columns.size(), Cell());
    std::copy_n(stored.begin(), first, cells.begin());
    if (isOfRows) {
        const auto names = rows->second.names.find(entity);
        if (names == rows->second.names.end()) misplaced(today);
        cells[EntityTable::Entity] = Cell::of(BookTables::numberOf(*entity));
        for (const auto& [name, cell] : named) {
            const auto place = names->second.find(name);
            if (place == names->second.end()) superfluous(today);
            cells[place->second] = cell;
        }
        return true;
    }
    for (const auto& [name, cell] : named) {
        const auto place = std::ranges::find(today.columns, name);
        if (place == today.columns.end()) superfluous(today);
        cells[static_cast<std::size_t>(place - today.columns.begin())] = cell;
    }
    if (&today == &tables_.journal) cells[EntityOfEntry] = Cell::of(BookTables::numberOf(*entity));
    return true;
}

} // namespace estatebook::platform::sqlite
