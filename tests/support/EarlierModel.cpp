// SPDX-License-Identifier: MIT
#include "support/EarlierModel.hpp"

#include "support/StoreDescription.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <random>
#include <span>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace estatebook::test {

using namespace platform;

namespace {

/// The tables of classes are asked of functions, which can carry nothing with them.
constexpr std::size_t Places = 32;
std::array<std::vector<ModelledProperty>, Places> tables;

template <std::size_t Place>
std::span<const ModelledProperty> tableAt() noexcept {
    return tables[Place];
}
template <std::size_t... Index>
constexpr std::array<ManagedClass::Properties, Places> tableFunctions(std::index_sequence<Index...>) {
    return {tableAt<Index>...};
}
constexpr auto TableFunctions = tableFunctions(std::make_index_sequence<Places>());

class Resource {
public:
    void number(std::size_t value, unsigned size) {
        for (unsigned index = 0; index < size; ++index)
            bytes_.push_back(static_cast<std::byte>(value >> (8 * index)));
    }
    void text(std::string_view text) {
        number(text.size(), 2);
        for (const char each : text) bytes_.push_back(static_cast<std::byte>(each));
    }
    [[nodiscard]] std::vector<std::byte> sealed() const {
        std::uint64_t sum = 0xcbf29ce484222325u;
        for (const std::byte each : bytes_) sum = (sum ^ static_cast<std::uint8_t>(each)) * 0x100000001b3u;
        Resource whole;
        for (const char each : std::string_view("EBMODEL\n"))
            whole.number(static_cast<unsigned char>(each), 1);
        whole.number(2, 4);
        whole.number(bytes_.size(), 4);
        whole.number(sum, 8);
        whole.bytes_.insert(whole.bytes_.end(), bytes_.begin(), bytes_.end());
        return whole.bytes_;
    }

private:
    std::vector<std::byte> bytes_;
};

template <class Properties>
auto ownOf(const EntityDescription& entity, Properties properties) {
    const auto all = (entity.*properties)();
    return all.subspan(entity.superentity() ? (entity.superentity()->*properties)().size() : 0);
}

} // namespace

EarlierModel EarlierModel::any(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    EarlierModel earlier;
    for (const char* entity : {"Advertisement", "State", "PropertyNote", "TenantNote", "TenureNote",
                               "PropertyTransaction", "NoteTag", "AccountTag", "TransactionTag"})
        if (random() % 4 == 0) earlier.withoutEntities.insert(entity);
    for (const auto& entity : bookModel()->entities())
        for (const AttributeDescription& each : ownOf(*entity, &EntityDescription::attributes))
            if (random() % 4 == 0)
                earlier.withoutAttributes.insert(std::string(entity->managedObjectClassName()) + "." +
                                                 std::string(each.name.name()));
    earlier.hasIndexes = random() % 2 == 0;
    earlier.shuffledBy = random() % 2 == 0 ? 0 : random();
    return earlier;
}

Ref<ManagedObjectModel> EarlierModel::make() const {
    const auto isGone = [&](std::string_view className, Key property) {
        return withoutAttributes.contains(std::string(className) + "." + std::string(property.name()));
    };
    std::vector<const EntityDescription*> entities;
    for (const auto& entity : bookModel()->entities())
        if (!withoutEntities.contains(entity->name())) entities.push_back(entity.get());
    if (shuffledBy != 0) {
        std::mt19937_64 random(shuffledBy);
        std::ranges::shuffle(entities, random);
    }

    Resource resource;
    resource.text(bookModel()->name());
    resource.number(entities.size(), 2);
    // By class, which relationships are left.
    std::set<std::pair<std::string, std::string>> kept;
    for (const EntityDescription* entity : entities) {
        const std::string_view className = entity->managedObjectClassName();
        resource.text(entity->name());
        resource.text(className);
        resource.text(entity->superentity() ? entity->superentity()->name() : "");
        resource.number(entity->isAbstract() ? 1 : 0, 1);
        std::vector<AttributeDescription> attributes;
        for (const AttributeDescription& each : ownOf(*entity, &EntityDescription::attributes))
            if (!isGone(className, each.name)) attributes.push_back(each);
        resource.number(attributes.size(), 2);
        for (const AttributeDescription& each : attributes) {
            resource.text(each.name.name());
            resource.number(static_cast<std::size_t>(each.type), 1);
            resource.number(each.isTransient ? 1 : 0, 1);
            resource.number(each.isWrittenBySystem ? 1 : 0, 1);
            resource.number(each.isIndexed && hasIndexes ? 1 : 0, 1);
        }
        std::vector<const RelationshipDescription*> relationships;
        for (const RelationshipDescription& each : ownOf(*entity, &EntityDescription::relationships))
            if (!withoutEntities.contains(each.destination)) relationships.push_back(&each);
        resource.number(relationships.size(), 2);
        for (const RelationshipDescription* each : relationships) {
            kept.emplace(className, each->name.name());
            resource.text(each->name.name());
            resource.text(each->destination);
            resource.text(each->inverse.name());
            resource.number(static_cast<std::size_t>(each->kind) - 1, 1);
            resource.number(static_cast<std::size_t>(each->deleteRule), 1);
        }
    }

    std::map<ManagedClass::Properties, std::size_t> places;
    std::vector<ManagedClass> classes(modelClasses().begin(), modelClasses().end());
    for (ManagedClass& each : classes)
        for (ManagedClass::Properties& table : each.properties) {
            if (!table) continue;
            const auto [place, isNew] = places.try_emplace(table, places.size());
            if (isNew) {
                auto& own = tables.at(place->second);
                own.clear();
                for (const ModelledProperty& property : table()) {
                    // The class itself is the last one of its line.
                    const auto declarer =
                        std::ranges::find_if(modelClasses(), [&](const ManagedClass& other) {
                            const auto end = std::ranges::find(other.properties, nullptr);
                            return end != other.properties.begin() && *std::prev(end) == table;
                        });
                    const std::string_view className = declarer->name;
                    const bool isLeft =
                        property.isRelationship()
                            ? kept.contains({std::string(className), std::string(property.key.name())})
                            : !isGone(className, property.key);
                    if (isLeft) own.push_back(property);
                }
            }
            table = TableFunctions[place->second];
        }

    Ref<Error> error;
    auto model = ManagedObjectModel::modelWithBytes(resource.sealed(), classes, &error);
    if (!model) throw std::runtime_error(std::string(error->localizedDescription()));
    return model;
}

std::string contentAs(const ManagedObjectModel& earlier, const Store& store) {
    const auto demand = [](auto result) {
        if (!result) throw std::runtime_error(result.error().message);
        return *std::move(result);
    };
    const RowShapes shapes(earlier);
    std::map<RowKey, std::string> rows;
    std::vector<RowKey> keys;
    for (const RowShape& shape : store.shapes().all()) {
        if (shape.entity().superentity()) continue;
        static_cast<void>(demand(store.fetchRows(shape.entity(), {}, [&](const Row& row) {
            std::ostringstream text;
            const RowShape& own = store.shapes().of(*row.entity);
            const EntityDescription* entity = earlier.entityNamed(row.entity->name());
            std::size_t others = 0;
            for (const Value& value : row.values) others += value.isAbsent() ? 0 : 1;
            for (const RowLink& link : row.links) others += link.target == NoRow ? 0 : 1;
            text << row.entity->name() << row.key << 'v' << row.version;
            if (entity) {
                for (const AttributeDescription& attribute : entity->attributes()) {
                    const Value& value = row.values[own.attribute(attribute.name).value()];
                    others -= value.isAbsent() ? 0 : 1;
                    describe(text << ' ' << attribute.name.name() << ' ', value);
                }
                for (const StoredLink& link : shapes.of(*entity).links()) {
                    const RowLink& led = row.links[own.link(link.relationship->name).value()];
                    others -= led.target == NoRow ? 0 : 1;
                    text << " >" << led.target << '#' << led.place;
                }
            }
            text << " and " << others << '\n';
            rows[row.key] = text.str();
            keys.push_back(row.key);
        })));
    }
    std::ostringstream text;
    text << store.identifier() << " last " << demand(store.lastKey()) << '\n';
    for (const auto& [key, row] : rows) text << row;
    std::ranges::sort(keys);
    for (const auto& identifier : demand(store.identifiers(keys))) text << identifier.value_or("-") << ' ';
    const auto metadata = demand(store.metadata());
    for (const auto& [name, value] : metadata) text << name << '=' << value << '\n';
    const auto commits = demand(store.commits());
    for (const Commit& commit : commits) {
        text << commit.number << ' ' << commit.firstKey << ".." << commit.lastKey << ' '
             << commit.origin.author << commit.origin.program << commit.origin.command << ' ';
        describe(text, commit.origin.when);
        for (const unsigned byte : commit.token.bytes) text << ' ' << byte;
        describe(text << '\n', demand(store.journalOfCommit(commit.number)));
    }
    return text.str();
}

} // namespace estatebook::test
