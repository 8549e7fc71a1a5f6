// SPDX-License-Identifier: MIT

// Random change sets, sound and unsound, given to a book file and to its plain twin in memory. Both must take or refuse them
// alike, and hold the same afterwards, also when the file was closed in between.

#include "support/StoreKinds.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace estatebook::platform {
namespace {

/// Everything a value is, its kind and bits included.
void describe(std::ostream& text, const Value& value) {
    if (const auto number = value.number(); number && number->kind() != Number::Kind::Decimal) {
        text << 'n' << static_cast<int>(number->kind()) << '=';
        if (number->kind() == Number::Kind::Single)
            text << std::bit_cast<std::uint32_t>(number->floatValue());
        else if (number->kind() == Number::Kind::Double)
            text << std::bit_cast<std::uint64_t>(number->doubleValue());
        else
            text << *number;
    } else if (const auto date = value.date()) {
        text << '@' << std::bit_cast<std::uint64_t>(date->secondsSinceReferenceDate);
    } else {
        text << value.description();
    }
}

void describe(std::ostream& text, const Row& row) {
    text << row.entity->name() << row.key << 'v' << row.version;
    for (const Value& value : row.values) describe(text << ' ', value);
    for (const RowLink& link : row.links) text << " >" << link.target << '#' << link.place;
    text << '\n';
}

void describe(std::ostream& text, const std::vector<JournalEntry>& entries) {
    for (const JournalEntry& entry : entries) {
        text << entry.commit << ':' << static_cast<int>(entry.kind) << ' '
             << (entry.entity ? entry.entity->name() : "?") << entry.key << ' ' << entry.property << ' ';
        describe(text, entry.former);
        describe(text << " > ", entry.current);
        text << '\n';
    }
}

/// All that a store can be asked, as one text.
std::string description(const Store& store) {
    std::ostringstream text;
    const RowKey last = *store.lastKey();
    text << "last " << last << '\n';
    std::vector<RowKey> keys;
    for (RowKey key = 1; key <= last; ++key) keys.push_back(key);
    for (const RowShape& shape : store.shapes().all()) {
        text << shape.entity().name() << '\n';
        static_cast<void>(*store.fetchRows(shape.entity(), {}, [&](const Row& row) { describe(text, row); }));
        for (const RelationshipDescription& each : shape.entity().relationships()) {
            if (each.kind == PropertyKind::ToOne) continue;
            const auto members = *store.members(each, keys);
            for (std::size_t index = 0; index < members.size(); ++index) {
                if (members[index].empty()) continue;
                text << each.name.name() << " of " << keys[index] << ':';
                for (const RowKey member : members[index]) text << ' ' << member;
                text << '\n';
            }
        }
        if (shape.entity().superentity()) continue;
        for (const Row& row : *store.rows(shape.entity(), keys)) text << row.key << ' ';
        for (const RowKey key : keys) describe(text, *store.journalOfRow(shape.entity(), key));
    }
    for (const auto& identifier : *store.identifiers(keys)) text << identifier.value_or("-") << ' ';
    for (const auto& [name, value] : *store.metadata()) text << name << '=' << value << '\n';
    for (const Commit& commit : *store.commits()) {
        text << commit.number << ' ' << commit.firstKey << ".." << commit.lastKey << ' '
             << commit.origin.author << *std::begin(commit.token.bytes) << '\n';
        describe(text, *store.journalOfCommit(commit.number));
    }
    return text.str();
}

/// Writes change sets by chance. Most of them are sound.
class Script {
public:
    explicit Script(std::uint64_t seed) : random_(seed) {}

    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }
    bool rarely() { return below(40) == 0; }

    StoreChanges changes(const Store& store) {
        StoreChanges changes = test::newChanges();
        changes.origin.author = std::string(below(5), 'a');
        learn(store);
        RowKey key = *store.lastKey() - (rarely() ? 1 : 0);
        const std::size_t insertions = below(6);
        for (std::size_t index = 0; index < insertions; ++index) {
            key += 1 + (rarely() ? 3 : 0);
            coming_.push_back({key, concreteEntity()});
        }
        for (const auto& [name, entity] : coming_) changes.insertions.push_back(insertion(name, *entity));
        std::ranges::shuffle(rows_, random_);
        const std::size_t touched = std::min(rows_.size(), below(6));
        for (std::size_t index = 0; index < touched; ++index) {
            const Row& row = rows_[index];
            const std::int64_t version = row.version + (rarely() ? 1 : 0);
            if (below(3) == 0)
                changes.deletions.push_back({row.key, row.entity, version});
            else
                changes.updates.push_back(update(row, version));
        }
        if (touched < rows_.size() && below(2) == 0) {
            const Row& row = rows_[touched];
            changes.identifiers.push_back(
                {row.key, row.entity,
                 below(4) ? std::optional("id" + std::to_string(below(9))) : std::nullopt});
        }
        if (below(3) == 0)
            changes.metadata.push_back({"m" + std::to_string(below(3)),
                                        below(3) ? std::optional(std::string(below(9), 'x')) : std::nullopt});
        return changes;
    }

private:
    struct Coming {
        RowKey key;
        const EntityDescription* entity;
    };

    void learn(const Store& store) {
        rows_.clear();
        coming_.clear();
        for (const RowShape& shape : store.shapes().all())
            if (!shape.entity().superentity())
                static_cast<void>(
                    *store.fetchRows(shape.entity(), {}, [&](const Row& row) { rows_.push_back(row); }));
    }

    const EntityDescription* concreteEntity() {
        for (;;) {
            const auto entities = test::bookModel()->entities();
            const auto& entity = entities[below(entities.size())];
            if (!entity->isAbstract()) return entity.get();
        }
    }

    Value value(AttributeType type) {
        if (below(4) == 0) return {};
        switch (type) {
        case AttributeType::String:
            return String::make(std::string(below(20), static_cast<char>('a' + below(26))));
        case AttributeType::Date:
            return Date{number()};
        case AttributeType::Decimal:
            return decimal();
        case AttributeType::Number:
            return boxed();
        default:
            return object();
        }
    }
    double number() {
        return below(2) ? static_cast<double>(below(1'000'000)) : std::bit_cast<double>(random_());
    }
    Decimal decimal() {
        if (rarely()) return Decimal::notANumber();
        return Decimal::withMantissaExponentIsNegative(
            random_() >> below(60), static_cast<short>(-static_cast<short>(below(9))), below(2) == 0);
    }
    Value boxed() {
        switch (below(6)) {
        case 0:
            return below(2) == 0;
        case 1:
            return static_cast<std::int64_t>(random_());
        case 2:
            return random_();
        case 3:
            return std::bit_cast<float>(static_cast<std::uint32_t>(random_()));
        case 4:
            return number();
        default:
            return decimal();
        }
    }
    Value object() {
        switch (below(4)) {
        case 0:
            return String::make("text " + std::to_string(below(9)));
        case 1:
            return NullObject{};
        case 2:
            return Array::make({String::make("a"), decimal()});
        default:
            return AttributedString::make(String::make("styled"));
        }
    }

    /// To a row that is there, or that comes, or (seldom) to none.
    RowLink link(const StoredLink& stored) {
        if (rarely()) return {RowKey{100'000}, 0};
        std::vector<RowKey> targets{NoRow};
        const EntityDescription& destination = *stored.relationship->destinationEntity;
        for (const Row& row : rows_)
            if (row.entity->isKindOfEntity(destination)) targets.push_back(row.key);
        for (const Coming& each : coming_)
            if (each.entity->isKindOfEntity(destination)) targets.push_back(each.key);
        const RowKey target = targets[below(targets.size())];
        return {target, stored.isPlaced && target != NoRow ? static_cast<std::int64_t>(below(5)) : 0};
    }

    Row insertion(RowKey key, const EntityDescription& entity) {
        const RowShape& shape = test::shapeOf(entity);
        Row row = shape.emptyRow(key);
        for (std::size_t index = 0; index < row.values.size(); ++index)
            row.values[index] = value(entity.attributes()[index].type);
        for (std::size_t index = 0; index < row.links.size(); ++index)
            row.links[index] = link(shape.links()[index]);
        return row;
    }

    RowUpdate update(const Row& row, std::int64_t version) {
        const RowShape& shape = test::shapeOf(*row.entity);
        RowUpdate update{.key = row.key, .entity = row.entity, .version = version};
        const auto attributes = row.entity->attributes();
        for (std::size_t index = 0; index < attributes.size(); ++index)
            if (below(3) == 0 && (!attributes[index].isTransient || rarely()))
                update.values.push_back({index, value(attributes[index].type)});
        for (std::size_t index = 0; index < shape.links().size(); ++index)
            if (below(3) == 0) update.links.push_back({index, link(shape.links()[index])});
        return update;
    }

    std::mt19937_64 random_;
    std::vector<Row> rows_;
    std::vector<Coming> coming_;
};

struct Tally {
    int landed = 0;
    int conflicts = 0;
    int refused = 0;
};

void drive(std::uint64_t seed, int steps, Tally& tally) {
    Script script(seed);
    test::SQLitePlace place;
    const auto twin = InMemoryStore::make(test::bookModel());
    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
        const StoreChanges changes = script.changes(*twin);
        const auto expected = twin->save(changes);
        const auto outcome = place.store().save(changes);
        ASSERT_EQ(static_cast<bool>(expected), static_cast<bool>(outcome))
            << (expected ? outcome.error().message : expected.error().message);
        if (!expected) {
            ++tally.refused;
            ASSERT_EQ(expected.error().code, outcome.error().code) << outcome.error().message;
        } else {
            ++(expected->landed() ? tally.landed : tally.conflicts);
            ASSERT_EQ(expected->conflicts.size(), outcome->conflicts.size());
            for (std::size_t index = 0; index < expected->conflicts.size(); ++index) {
                ASSERT_EQ(expected->conflicts[index].key, outcome->conflicts[index].key);
                std::ostringstream mine;
                std::ostringstream theirs;
                describe(mine, expected->conflicts[index].stored.value());
                describe(theirs, outcome->conflicts[index].stored.value());
                ASSERT_EQ(mine.str(), theirs.str());
            }
        }
        if (script.below(6) == 0) place.reopen();
        if (step % 4 == 3) {
            ASSERT_EQ(description(*twin), description(place.store()));
        }
    }
    place.reopen();
    ASSERT_EQ(description(*twin), description(place.store()));
}

TEST(StoreTwinTest, ABookFileHoldsWhatItsTwinInMemoryHolds) {
    Tally tally;
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        ASSERT_NO_FATAL_FAILURE(drive(seed, 60, tally));
        ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
    }
    EXPECT_GT(tally.landed, 100);
    EXPECT_GT(tally.conflicts, 5);
    EXPECT_GT(tally.refused, 5);
}

} // namespace
} // namespace estatebook::platform
