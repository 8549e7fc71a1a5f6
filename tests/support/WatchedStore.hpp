// SPDX-License-Identifier: MIT
#pragma once

/// A store in front of another one, which counts what it is asked and fails when told to.

#include "platform/persistence/store/Store.hpp"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace estatebook::test {

class WatchedStore final : public platform::Store {
    using RowKey = platform::RowKey;
    template <class T>
    using Result = platform::StoreResult<T>;
    using Entity = platform::EntityDescription;
    using Condition = std::optional<platform::Predicate>;

public:
    explicit WatchedStore(platform::Ref<platform::Store> inner)
        : Store(platform::Ref<platform::ManagedObjectModel>(
              const_cast<platform::ManagedObjectModel*>(&inner->model()))),
          inner_(std::move(inner)) {}

    struct Reads {
        std::size_t fetches = 0;
        std::size_t batches = 0;
        std::size_t memberBatches = 0;
        std::size_t sums = 0;
        friend bool operator==(const Reads&, const Reads&) = default;
    };
    mutable Reads reads;
    /// While set, reading fails with it.
    std::optional<platform::StoreError> unreadable;
    /// Asked before each reading; null can always be read.
    std::function<bool()> isReadable;
    /// The same for reading rows by their keys alone.
    std::optional<platform::StoreError> unreadableBatches;
    /// Asked instead of the store to save; null saves.
    std::function<Result<platform::SaveOutcome>(platform::Store& inner, const platform::StoreChanges&)>
        onSave;
    /// Whether each text that is read is another object than any before, as in a file.
    bool readsTextsAnew = false;
    /// While set, nobody can be told what became of a save.
    std::optional<platform::StoreError> outcomeUnknown;

    [[nodiscard]] std::string_view type() const noexcept override { return inner_->type(); }
    [[nodiscard]] std::string_view location() const noexcept override { return inner_->location(); }
    [[nodiscard]] std::string_view identifier() const noexcept override { return inner_->identifier(); }
    [[nodiscard]] platform::StoreCapabilities capabilities() const noexcept override {
        return inner_->capabilities();
    }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "WatchedStore"; }
    [[nodiscard]] Result<RowKey> lastKey() const override { return inner_->lastKey(); }
    [[nodiscard]] Result<std::vector<RowKey>> fetchKeys(const Entity& entity,
                                                        const Condition& condition) const override {
        ++reads.fetches;
        if (const auto error = unreadableNow()) return *error;
        return inner_->fetchKeys(entity, condition);
    }
    Result<std::size_t> fetchRows(const Entity& entity, const Condition& condition,
                                  const RowVisitor& visitor) const override {
        ++reads.fetches;
        if (const auto error = unreadableNow()) return *error;
        return inner_->fetchRows(entity, condition, reading(visitor));
    }
    Result<std::size_t> visitRows(const Entity& entity, std::span<const RowKey> keys,
                                  const RowVisitor& visitor) const override {
        ++reads.batches;
        if (const auto error = unreadableNow()) return *error;
        if (unreadableBatches) return *unreadableBatches;
        return inner_->visitRows(entity, keys, reading(visitor));
    }
    [[nodiscard]] Result<std::vector<std::vector<RowKey>>>
    members(const platform::RelationshipDescription& toMany, std::span<const RowKey> owners) const override {
        ++reads.memberBatches;
        if (const auto error = unreadableNow()) return *error;
        return inner_->members(toMany, owners);
    }
    [[nodiscard]] Result<platform::Decimal> sum(const platform::RelationshipDescription& toMany, RowKey owner,
                                                platform::Key attribute,
                                                std::span<const RowKey> exceptions) const override {
        ++reads.sums;
        if (const auto error = unreadableNow()) return *error;
        return inner_->sum(toMany, owner, attribute, exceptions);
    }
    void beginReading() noexcept override { inner_->beginReading(); }
    void endReading() noexcept override { inner_->endReading(); }
    Result<platform::SaveOutcome> save(const platform::StoreChanges& changes) override {
        return onSave ? onSave(*inner_, changes) : inner_->save(changes);
    }
    [[nodiscard]] Result<bool> hasLanded(const platform::CommitToken& token) override {
        if (outcomeUnknown) return *outcomeUnknown;
        return inner_->hasLanded(token);
    }
    [[nodiscard]] Result<std::vector<std::optional<std::string>>>
    identifiers(std::span<const RowKey> keys) const override {
        return inner_->identifiers(keys);
    }
    [[nodiscard]] Result<Metadata> metadata() const override { return inner_->metadata(); }
    [[nodiscard]] Result<std::vector<platform::Commit>> commits() const override { return inner_->commits(); }
    [[nodiscard]] Result<std::vector<platform::JournalEntry>> journalOfRow(const Entity& entity,
                                                                           RowKey key) const override {
        return inner_->journalOfRow(entity, key);
    }
    [[nodiscard]] Result<std::vector<platform::JournalEntry>>
    journalOfCommit(std::int64_t number) const override {
        return inner_->journalOfCommit(number);
    }

private:
    [[nodiscard]] std::optional<platform::StoreError> unreadableNow() const {
        if (!isReadable || isReadable()) return unreadable;
        return platform::StoreError{platform::StoreErrorCode::Unreadable, "", "The store cannot be read now"};
    }
    [[nodiscard]] RowVisitor reading(const RowVisitor& visitor) const {
        if (!readsTextsAnew) return visitor;
        return [&visitor](const platform::Row& row) {
            platform::Row copy = row;
            for (platform::Value& value : copy.values)
                if (const auto text = value.string()) value = platform::String::make(text->view());
            visitor(copy);
        };
    }

    platform::Ref<platform::Store> inner_;
};

} // namespace estatebook::test
