// SPDX-License-Identifier: MIT
#include "platform/persistence/store/StoreRules.hpp"

#include "platform/persistence/ManagedObjectModel.hpp"
#include "platform/text/Text.hpp"

#include <utility>

namespace estatebook::platform::detail {

namespace {

bool fits(const AttributeDescription& attribute, const Value& value) {
    if (value.isAbsent()) return true;
    switch (attribute.type) {
    case AttributeType::String: {
        const auto text = value.string();
        return text && isWellFormedUtf8(text->view());
    }
    case AttributeType::Date:
        return value.date().has_value();
    case AttributeType::Decimal: {
        const auto number = value.number();
        return number && number->kind() == Number::Kind::Decimal;
    }
    case AttributeType::Number:
        return value.isNumber();
    case AttributeType::Any:
    case AttributeType::Object:
        return true;
    }
    return false;
}

bool fits(const StoredLink& stored, const RowLink& link) {
    if (link.target < 0 || link.place < 0) return false;
    return link.place == 0 || (stored.isPlaced && link.target != NoRow);
}

} // namespace

std::optional<std::string> ChangesExaminer::refusal() {
    if (acceptsAllButInsertions()) return std::nullopt;
    return std::move(reason_);
}

std::optional<std::string> ChangesExaminer::refusalOf(const Row& row) {
    if (accepts(row)) return std::nullopt;
    return std::move(reason_);
}

bool ChangesExaminer::acceptsAllButInsertions() {
    for (const RowUpdate& update : changes_.updates)
        if (!names(update) || !acceptsUpdate(update)) return false;
    for (const RowDeletion& deletion : changes_.deletions)
        if (!names(deletion)) return false;
    for (const RowIdentifier& each : changes_.identifiers)
        if (!isOurs(each.entity) || each.key <= NoRow) return refuse("An identifier is given to no row");
    return acceptsTexts();
}

// Keys that grow name no row twice.
bool ChangesExaminer::accepts(const Row& row) {
    if (!hasRows(row.entity)) return false;
    if (row.key <= lastKey_) return refuse(row, "has a key that is not beyond the last one given");
    lastKey_ = row.key;
    const auto attributes = row.entity->attributes();
    const auto links = shapes_.of(*row.entity).links();
    if (row.values.size() != attributes.size() || row.links.size() != links.size())
        return refuse(row, "has more or fewer values than the entity");
    for (std::size_t index = 0; index < attributes.size(); ++index)
        if (!attributes[index].isTransient && !fits(attributes[index], row.values[index]))
            return refuseValue(row, attributes[index].name);
    for (std::size_t index = 0; index < links.size(); ++index)
        if (!fits(links[index], row.links[index])) return refuseValue(row, links[index].relationship->name);
    return true;
}

bool ChangesExaminer::acceptsUpdate(const RowUpdate& update) {
    const auto attributes = update.entity->attributes();
    const auto links = shapes_.of(*update.entity).links();
    for (const ChangedValue& changed : update.values) {
        if (changed.attribute >= attributes.size() || attributes[changed.attribute].isTransient)
            return refuse(update, "is about an attribute that is not stored");
        if (!fits(attributes[changed.attribute], changed.value))
            return refuseValue(update, attributes[changed.attribute].name);
    }
    for (const ChangedLink& changed : update.links) {
        if (changed.link >= links.size()) return refuse(update, "is about a link that is not there");
        if (!fits(links[changed.link], changed.target))
            return refuseValue(update, links[changed.link].relationship->name);
    }
    return true;
}

bool ChangesExaminer::acceptsTexts() {
    const CommitOrigin& origin = changes_.origin;
    for (const std::string* text : {&origin.author, &origin.program, &origin.command})
        if (!isWellFormedUtf8(*text)) return refuse("Who makes the changes is told in no UTF-8");
    for (const RowIdentifier& each : changes_.identifiers)
        if (each.identifier && !isWellFormedUtf8(*each.identifier))
            return refuse("The identifier of " + nameOf(*each.entity, each.key) + " is not UTF-8");
    for (const MetadataChange& each : changes_.metadata)
        if (!isWellFormedUtf8(each.name) || (each.value && !isWellFormedUtf8(*each.value)))
            return refuse("An entry that is to be kept with the book is not UTF-8");
    return true;
}

bool ChangesExaminer::isOurs(const EntityDescription* entity) const {
    return entity && entity->index() < shapes_.all().size() && &shapes_.of(*entity).entity() == entity;
}

bool ChangesExaminer::hasRows(const EntityDescription* entity) {
    if (isOurs(entity) && !entity->isAbstract()) return true;
    return refuse("A change is about an entity that has no rows in this model");
}

template <class Change>
bool ChangesExaminer::names(const Change& change) {
    if (!hasRows(change.entity)) return false;
    if (change.key > NoRow && named_.insert(change.key).second && !isInserted(change.key)) return true;
    return refuse("The changes name " + nameOf(*change.entity, change.key) +
                  " twice, or no row can have this key");
}

bool ChangesExaminer::isInserted(RowKey key) const {
    if (key <= lastGiven_) return false;
    for (const Row& row : changes_.insertions)
        if (row.key == key) return true;
    return false;
}

bool ChangesExaminer::refuse(std::string reason) {
    reason_ = std::move(reason);
    return false;
}

template <class Change>
bool ChangesExaminer::refuse(const Change& change, std::string_view reason) {
    return refuse("The change of " + nameOf(*change.entity, change.key) + " " + std::string(reason));
}

template <class Change>
bool ChangesExaminer::refuseValue(const Change& change, Key property) {
    return refuse(change, "has a value that \"" + std::string(property.name()) + "\" cannot hold");
}

std::string nameOf(const EntityDescription& entity, RowKey key) {
    return "the " + std::string(entity.name()) + " " + std::to_string(key);
}

std::string unstoredProperty(const EntityDescription& entity, Key property) {
    return "No store can answer for \"" + std::string(property.name()) + "\" of \"" +
           std::string(entity.name()) + "\": it is no stored attribute of a fitting type";
}

std::string danglingLink(const EntityDescription& entity, RowKey key, RowKey target) {
    return "The changes leave " + nameOf(entity, key) + " with a link to " + std::to_string(target) +
           ", which is not there";
}

std::string identifierOfNoRow(const EntityDescription& entity, RowKey key) {
    return "An identifier is given to " + nameOf(entity, key) + ", which is not there";
}

std::string savedAlready() {
    return "The changes cannot be saved: a save of their token has landed before";
}

std::string newStoreIdentifier() {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned byte : CommitToken::random().bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::optional<std::size_t> storedAttribute(const RowShape& shape, Key name) noexcept {
    const auto place = shape.attribute(name);
    return place && !shape.entity().attributes()[*place].isTransient ? place : std::nullopt;
}

bool canBeSummed(const AttributeDescription& attribute) noexcept {
    return !attribute.isTransient &&
           (attribute.type == AttributeType::Decimal || attribute.type == AttributeType::Number);
}

std::string placeName(const StoredLink& link) {
    return std::string(link.relationship->name.name()) + ".place";
}

Value targetValue(const RowLink& link) noexcept {
    return link.target == NoRow ? Value() : Value(link.target);
}

Value placeValue(const RowLink& link) noexcept {
    return link.target == NoRow ? Value() : Value(link.place);
}

void applyUpdate(Row& row, const RowUpdate& update, const RowShape& shape, std::int64_t commit,
                 std::vector<JournalEntry>& journal) {
    const auto tell = [&](std::string property, Value former, Value current) {
        journal.push_back({commit, JournalEntry::Kind::Update, row.key, row.entity, std::move(property),
                           std::move(former), std::move(current)});
    };
    for (const ChangedValue& changed : update.values) {
        Value& value = row.values[changed.attribute];
        tell(std::string(row.entity->attributes()[changed.attribute].name.name()), value, changed.value);
        value = changed.value;
    }
    for (const ChangedLink& changed : update.links) {
        const StoredLink& stored = shape.links()[changed.link];
        RowLink& link = row.links[changed.link];
        if (link.target != changed.target.target)
            tell(std::string(stored.relationship->name.name()), targetValue(link),
                 targetValue(changed.target));
        if (stored.isPlaced && !placeValue(link).isEqual(placeValue(changed.target)))
            tell(placeName(stored), placeValue(link), placeValue(changed.target));
        link = changed.target;
    }
    ++row.version;
}

void journalDeletion(const Row& row, const RowShape& shape, std::int64_t commit,
                     std::vector<JournalEntry>& journal) {
    const std::size_t before = journal.size();
    const auto tell = [&](std::string property, Value former) {
        if (former.isAbsent()) return;
        journal.push_back({commit, JournalEntry::Kind::Deletion, row.key, row.entity, std::move(property),
                           std::move(former), Value()});
    };
    for (std::size_t index = 0; index < row.values.size(); ++index)
        tell(std::string(row.entity->attributes()[index].name.name()), row.values[index]);
    for (std::size_t index = 0; index < row.links.size(); ++index) {
        const StoredLink& stored = shape.links()[index];
        tell(std::string(stored.relationship->name.name()), targetValue(row.links[index]));
        if (stored.isPlaced) tell(placeName(stored), placeValue(row.links[index]));
    }
    if (journal.size() == before)
        journal.push_back({commit, JournalEntry::Kind::Deletion, row.key, row.entity, {}, {}, {}});
}

} // namespace estatebook::platform::detail
