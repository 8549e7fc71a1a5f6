// SPDX-License-Identifier: MIT
#pragma once

/// A whole book as one text: each object with its values, its relationships in their order and what it derives from them. An
/// object is called by its rank among those of its family in the order of creation, so that books with other numbers can be
/// compared.

#include "model/Keys.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"
#include "statement/TKStatement.hpp"
#include "store/TKState.hpp"
#include "tags/TKTagNames.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace estatebook::test {

class BookDescription {
    using ManagedObject = platform::ManagedObject;
    using ManagedObjectContext = platform::ManagedObjectContext;
    using Key = platform::Key;
    using Value = platform::Value;

public:
    enum class Part {
        /// What a store keeps.
        Stored,
        /// That and what is derived from it.
        Lasting,
        /// That and the tag names, which may be ahead of the tags.
        Everything,
    };

    /// Reads the objects first, whose awakening may make settings and may raise.
    BookDescription(ManagedObjectContext& context, Part part) : part_(part) {
        for (platform::String* name : {TKCurrencyCodeStateName, TKBillingModeStateName})
            static_cast<void>(
                TKState::stateForKeyInManagedObjectContext(platform::Ref<platform::String>(name), context));
        std::vector<std::vector<platform::Ref<ManagedObject>>> all;
        for (const std::string_view entity : Families) {
            all.push_back(context.executeFetchRequest({std::string(entity)}).value());
            for (std::size_t rank = 0; rank < all.back().size(); ++rank)
                ranks_.emplace(all.back()[rank].get(), std::string(entity) + std::to_string(rank));
            for (const auto& object : all.back()) awake(*object);
        }
        for (const auto& family : all)
            for (const auto& object : family) describe(*object);
        describeSettings(context);
    }

    [[nodiscard]] const std::string& text() const noexcept { return text_; }
    /// The object's name in the text.
    [[nodiscard]] std::string nameOf(const ManagedObject& object) const {
        const auto found = ranks_.find(&object);
        return found == ranks_.end() ? "gone" : found->second;
    }

    static void awake(const ManagedObject& object) {
        try {
            object.forEachModelledProperty([&](const platform::ModelledProperty& property) {
                if (property.kind == platform::PropertyKind::Attribute)
                    static_cast<void>(object.valueForKey(property.key));
            });
        } catch (const platform::Exception&) {
            // With terms that cannot be reckoned with; it is awake all the same.
        }
    }

private:
    static constexpr std::array<std::string_view, 8> Families{
        "Account",       "Tenure",     "Transaction",    "Note",
        "Advertisement", "AccountTag", "TransactionTag", "NoteTag"};

    std::string shown(const Value& value) const {
        if (const auto object = value.as<ManagedObject>()) return nameOf(*object);
        if (const auto names = value.as<TKTagNames>()) return "(" + names->editableString() + ")";
        if (const auto members = value.as<platform::DistinctValues>()) {
            std::string all = "{";
            for (const Value& each : members->members()) all += shown(each) + " ";
            return all + "}";
        }
        if (const auto statement = value.as<TKStatement>()) {
            std::string all = "{";
            for (const TKStatementItem& line : *statement->items())
                all += Value(line.transaction()->when()).description() + " " +
                       Value(line.transaction()->amount()).description() + " " +
                       Value(line.balance()).description() + ", ";
            return all + "}";
        }
        if (const auto number = value.number())
            return std::to_string(static_cast<int>(number->kind())) + ":" + value.description();
        return value.description();
    }
    std::string shown(const ManagedObject& object, Key key) const {
        try {
            return shown(object.valueForKey(key));
        } catch (const platform::Exception& exception) {
            return std::string(exception.name());
        }
    }
    void describe(const ManagedObject& object) {
        text_ += std::string(object.entity().name()) + " " + nameOf(object);
        // With terms that cannot be reckoned with, the schedule stays as it last was.
        const bool hasSchedule = !object.hasValueForKey(platform::Key(keys::chargablePeriods)) ||
                                 !shown(object, keys::chargablePeriods).starts_with("NS");
        object.forEachModelledProperty([&](const platform::ModelledProperty& property) {
            if (property.key == keys::tagNames
                    ? part_ != Part::Everything
                    : (property.flags & platform::PropertyTransient) && part_ == Part::Stored)
                return;
            if (property.key == keys::periods && !hasSchedule) return;
            add(object, property.key);
        });
        if (part_ != Part::Stored)
            for (const Key key : Derived)
                if (object.hasValueForKey(key) && !object.modelledProperty(key)) add(object, key);
        text_ += "\n";
    }
    void add(const ManagedObject& object, Key key) {
        text_ += " " + std::string(key.name()) + "=" + shown(object, key);
    }
    /// Those with a value, by name: the others are made where they are looked for.
    void describeSettings(ManagedObjectContext& context) {
        std::vector<std::string> settings;
        for (const auto& state : context.fetchAll<TKState>("State"))
            if (!state->value().isAbsent())
                settings.push_back(Value(state->name()).description() + " = " + shown(state->value()) + "\n");
        std::ranges::sort(settings);
        for (const std::string& setting : settings) text_ += setting;
    }

    static const std::vector<Key> Derived;
    Part part_;
    std::unordered_map<const ManagedObject*, std::string> ranks_;
    std::string text_;
};

inline const std::vector<platform::Key> BookDescription::Derived{keys::accountBalance,
                                                                 keys::isBalanced,
                                                                 keys::isActive,
                                                                 keys::fullName,
                                                                 keys::currentTenures,
                                                                 keys::currentTenuresNames,
                                                                 keys::tenureIncome,
                                                                 keys::tenureBalance,
                                                                 keys::totalIncome,
                                                                 keys::balance,
                                                                 keys::aggregateTransactions,
                                                                 keys::totalCost,
                                                                 keys::name,
                                                                 keys::currencyCode,
                                                                 keys::billingMode,
                                                                 keys::chargableDays,
                                                                 keys::chargablePeriods,
                                                                 keys::numberOfDays,
                                                                 keys::numberOfPeriods,
                                                                 keys::totalAdjustment,
                                                                 keys::statement,
                                                                 keys::categoryName,
                                                                 keys::details,
                                                                 keys::regarding,
                                                                 keys::property,
                                                                 keys::transactions};

} // namespace estatebook::test
