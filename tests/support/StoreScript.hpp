// SPDX-License-Identifier: MIT
#pragma once

/// StoreScript: writes change sets by chance, sound and unsound ones; for the library's own model when no other is given.

#include "support/StoreKinds.hpp"

#include "platform/values/Array.hpp"
#include "platform/values/AttributedString.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace estatebook::test {

/// Writes change sets by chance. Most of them are sound.
class StoreScript {
public:
    enum class Manner : std::uint8_t {
        Any,   ///< also what no store takes, or what leaves gaps among ordered members
        Sound, ///< most of it is taken, and all that is taken leaves a book sound
    };

    explicit StoreScript(std::uint64_t seed, Manner manner = Manner::Any,
                         platform::Ref<platform::ManagedObjectModel> model = bookModel())
        : random_(seed), manner_(manner), model_(std::move(model)), shapes_(*model_) {}

    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }
    bool rarely() { return manner_ == Manner::Any && below(40) == 0; }

    platform::StoreChanges changes(const platform::Store& store) {
        platform::StoreChanges changes = newChanges();
        for (std::uint8_t& byte : changes.token.bytes) byte = static_cast<std::uint8_t>(random_());
        changes.origin.author = std::string(below(5), 'a');
        learn(store);
        platform::RowKey key = *store.lastKey() - (rarely() ? 1 : 0);
        const std::size_t insertions = below(6);
        for (std::size_t index = 0; index < insertions; ++index) {
            key += 1 + (rarely() ? 3 : 0);
            coming_.push_back({.key = key, .entity = concreteEntity()});
        }
        for (std::size_t index = 0; index < insertions; ++index)
            changes.insertions.push_back(insertion(coming_[index].key, *coming_[index].entity));
        std::ranges::shuffle(rows_, random_);
        const std::size_t touched = std::min(rows_.size(), below(6));
        for (std::size_t index = 0; index < touched; ++index) {
            const platform::Row& row = rows_[index];
            const std::int64_t version = row.version + (rarely() ? 1 : 0);
            if (below(3) == 0)
                changes.deletions.push_back({row.key, row.entity, version});
            else
                changes.updates.push_back(update(row, version));
        }
        if (touched < rows_.size() && below(2) == 0) {
            const platform::Row& row = rows_[touched];
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
        platform::RowKey key;
        const platform::EntityDescription* entity;
        bool hasMember = false;
    };

    void learn(const platform::Store& store) {
        rows_.clear();
        coming_.clear();
        for (const platform::RowShape& shape : store.shapes().all())
            if (!shape.entity().superentity())
                static_cast<void>(*store.fetchRows(shape.entity(), {},
                                                   [&](const platform::Row& row) { rows_.push_back(row); }));
    }

    const platform::EntityDescription* concreteEntity() {
        for (;;) {
            const auto entities = model_->entities();
            const auto& entity = entities[below(entities.size())];
            if (!entity->isAbstract()) return entity.get();
        }
    }

    platform::Value value(platform::AttributeType type) {
        if (below(4) == 0) return {};
        switch (type) {
        case platform::AttributeType::String:
            return platform::String::make(std::string(below(20), static_cast<char>('a' + below(26))));
        case platform::AttributeType::Date:
            return platform::Date{number()};
        case platform::AttributeType::Decimal:
            return decimal();
        case platform::AttributeType::Number:
            return boxed();
        default:
            return object();
        }
    }
    double number() {
        return below(2) ? static_cast<double>(below(1'000'000)) : std::bit_cast<double>(random_());
    }
    platform::Decimal decimal() {
        if (rarely()) return platform::Decimal::notANumber();
        return platform::Decimal::withMantissaExponentIsNegative(
            random_() >> below(60), static_cast<short>(-static_cast<short>(below(9))), below(2) == 0);
    }
    platform::Value boxed() {
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
    platform::Value object() {
        switch (below(4)) {
        case 0:
            return platform::String::make("text " + std::to_string(below(9)));
        case 1:
            return platform::NullObject{};
        case 2:
            return platform::Array::make({platform::String::make("a"), decimal()});
        default:
            return platform::AttributedString::make(platform::String::make("styled"));
        }
    }

    /// To a row that is there, or that comes, or (seldom) to none.
    platform::RowLink link(const platform::StoredLink& stored) {
        if (manner_ == Manner::Sound && stored.isPlaced) return onlyMember(stored);
        if (rarely()) return {platform::RowKey{100'000}, 0};
        std::vector<platform::RowKey> targets{platform::NoRow};
        const platform::EntityDescription& destination = *stored.relationship->destinationEntity;
        for (const platform::Row& row : rows_)
            if (row.entity->isKindOfEntity(destination)) targets.push_back(row.key);
        for (const Coming& each : coming_)
            if (each.entity->isKindOfEntity(destination)) targets.push_back(each.key);
        const platform::RowKey target = targets[below(targets.size())];
        return {target,
                stored.isPlaced && target != platform::NoRow ? static_cast<std::int64_t>(below(5)) : 0};
    }

    /// To a coming row that has no member yet.
    platform::RowLink onlyMember(const platform::StoredLink& stored) {
        for (Coming& each : coming_) {
            if (each.hasMember || !each.entity->isKindOfEntity(*stored.relationship->destinationEntity))
                continue;
            each.hasMember = true;
            return {each.key, 0};
        }
        return {};
    }

    platform::Row insertion(platform::RowKey key, const platform::EntityDescription& entity) {
        const platform::RowShape& shape = shapes_.of(entity);
        platform::Row row = shape.emptyRow(key);
        for (std::size_t index = 0; index < row.values.size(); ++index)
            row.values[index] = value(entity.attributes()[index].type);
        for (std::size_t index = 0; index < row.links.size(); ++index)
            row.links[index] = link(shape.links()[index]);
        return row;
    }

    platform::RowUpdate update(const platform::Row& row, std::int64_t version) {
        const platform::RowShape& shape = shapes_.of(*row.entity);
        platform::RowUpdate update{.key = row.key, .entity = row.entity, .version = version};
        const auto attributes = row.entity->attributes();
        for (std::size_t index = 0; index < attributes.size(); ++index)
            if (below(3) == 0 && (!attributes[index].isTransient || rarely()))
                update.values.push_back({index, value(attributes[index].type)});
        for (std::size_t index = 0; index < shape.links().size(); ++index)
            if (below(3) == 0 && (manner_ == Manner::Any || !shape.links()[index].isPlaced))
                update.links.push_back({index, link(shape.links()[index])});
        return update;
    }

    std::mt19937_64 random_;
    Manner manner_;
    platform::Ref<platform::ManagedObjectModel> model_;
    platform::RowShapes shapes_;
    std::vector<platform::Row> rows_;
    std::vector<Coming> coming_;
};

} // namespace estatebook::test
