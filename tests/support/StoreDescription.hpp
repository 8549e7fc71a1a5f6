// SPDX-License-Identifier: MIT
#pragma once

/// All that a store can be asked, as one text: two stores that hold the same are described alike.

#include "support/StoreKinds.hpp"

#include <bit>
#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace estatebook::test {

/// Everything a value is, its kind and bits included.
inline void describe(std::ostream& text, const platform::Value& value) {
    if (const auto number = value.number(); number && number->kind() != platform::Number::Kind::Decimal) {
        text << 'n' << static_cast<int>(number->kind()) << '=';
        if (number->kind() == platform::Number::Kind::Single)
            text << std::bit_cast<std::uint32_t>(number->floatValue());
        else if (number->kind() == platform::Number::Kind::Double)
            text << std::bit_cast<std::uint64_t>(number->doubleValue());
        else
            text << *number;
    } else if (const auto date = value.date()) {
        text << '@' << std::bit_cast<std::uint64_t>(date->secondsSinceReferenceDate);
    } else {
        text << value.description();
    }
}

inline void describe(std::ostream& text, const platform::Row& row) {
    text << row.entity->name() << row.key << 'v' << row.version;
    for (const platform::Value& value : row.values) describe(text << ' ', value);
    for (const platform::RowLink& link : row.links) text << " >" << link.target << '#' << link.place;
    text << '\n';
}

inline void describe(std::ostream& text, const std::vector<platform::JournalEntry>& entries) {
    for (const platform::JournalEntry& entry : entries) {
        text << entry.commit << ':' << static_cast<int>(entry.kind) << ' '
             << (entry.entity ? entry.entity->name() : "?") << entry.key << ' ' << entry.property << ' ';
        describe(text, entry.former);
        describe(text << " > ", entry.current);
        text << '\n';
    }
}

/// All that a store can be asked, as one text.
inline std::string description(const platform::Store& store) {
    std::ostringstream text;
    const platform::RowKey last = *store.lastKey();
    text << "last " << last << '\n';
    std::vector<platform::RowKey> keys;
    for (platform::RowKey key = 1; key <= last; ++key) keys.push_back(key);
    for (const platform::RowShape& shape : store.shapes().all()) {
        text << shape.entity().name() << '\n';
        static_cast<void>(
            *store.fetchRows(shape.entity(), {}, [&](const platform::Row& row) { describe(text, row); }));
        for (const platform::RelationshipDescription& each : shape.entity().relationships()) {
            if (each.kind == platform::PropertyKind::ToOne) continue;
            const auto members = *store.members(each, keys);
            for (std::size_t index = 0; index < members.size(); ++index) {
                if (members[index].empty()) continue;
                text << each.name.name() << " of " << keys[index] << ':';
                for (const platform::RowKey member : members[index]) text << ' ' << member;
                text << '\n';
            }
        }
        if (shape.entity().superentity()) continue;
        for (const platform::Row& row : *store.rows(shape.entity(), keys)) text << row.key << ' ';
        for (const platform::RowKey key : keys) describe(text, *store.journalOfRow(shape.entity(), key));
    }
    for (const auto& identifier : *store.identifiers(keys)) text << identifier.value_or("-") << ' ';
    for (const auto& [name, value] : *store.metadata()) text << name << '=' << value << '\n';
    for (const platform::Commit& commit : *store.commits()) {
        text << commit.number << ' ' << commit.firstKey << ".." << commit.lastKey << ' '
             << commit.origin.author << *std::begin(commit.token.bytes) << '\n';
        describe(text, *store.journalOfCommit(commit.number));
    }
    return text.str();
}

/// What a store keeps, as one text or as the first error: each row, commit, change, identifier and entry once.
inline platform::StoreResult<std::string> contentOf(const platform::Store& store) {
    std::ostringstream text;
    std::vector<platform::RowKey> keys;
    for (const platform::RowShape& shape : store.shapes().all()) {
        if (shape.entity().superentity()) continue;
        const auto fetched = store.fetchRows(shape.entity(), {}, [&](const platform::Row& row) {
            describe(text, row);
            keys.push_back(row.key);
        });
        if (!fetched) return fetched.error();
    }
    const auto identifiers = store.identifiers(keys);
    if (!identifiers) return identifiers.error();
    for (const auto& identifier : *identifiers) text << identifier.value_or("-") << ' ';
    const auto metadata = store.metadata();
    if (!metadata) return metadata.error();
    for (const auto& [name, value] : *metadata) text << name << '=' << value << '\n';
    const auto commits = store.commits();
    if (!commits) return commits.error();
    for (const platform::Commit& commit : *commits) {
        text << commit.number << ' ' << commit.firstKey << ".." << commit.lastKey << ' '
             << commit.origin.author;
        for (const unsigned byte : commit.token.bytes) text << ' ' << byte;
        const auto entries = store.journalOfCommit(commit.number);
        if (!entries) return entries.error();
        describe(text << '\n', *entries);
    }
    return text.str();
}

} // namespace estatebook::test
