// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: what a context remembers of its objects' changes, so that they can be taken back.
///
/// An object that is about to change keeps what it held before: once since the last save, for rollback, and once since
/// changes were last processed, for undo. Members of unordered relationships are not kept: they follow from
/// the other side.

#include "platform/persistence/ManagedObject.hpp"

#include <vector>

namespace estatebook::platform {

struct FormerValue {
    const ModelledProperty* property;
    /// Of a relationship: the object, or the ordered set of objects.
    Value value;
};

/// The values that an object's changed properties had before.
class FormerValues {
public:
    [[nodiscard]] bool has(Key key) const noexcept { return keys_.mayContain(key); }
    /// Null when the property was not changed.
    [[nodiscard]] const Value* find(Key key) const noexcept {
        if (!has(key)) return nullptr;
        for (const FormerValue& each : values_)
            if (each.property->key == key) return &each.value;
        return nullptr;
    }
    void keep(const ModelledProperty& property, Value value) {
        values_.push_back({&property, std::move(value)});
        keys_.insert(property.key);
    }
    [[nodiscard]] const std::vector<FormerValue>& all() const noexcept { return values_; }
    [[nodiscard]] std::vector<FormerValue> take() noexcept {
        keys_ = {};
        return std::exchange(values_, {});
    }

private:
    KeySet keys_;
    std::vector<FormerValue> values_;
};

struct ObjectJournal {
    FormerValues sinceSave;
    FormerValues sinceProcessing;
};

/// One object's part in a set of changes that is taken back as a whole.
struct ObjectChange {
    enum class Kind : std::uint8_t { Insertion, Update, Deletion };
    Kind kind;
    Ref<ManagedObject> object;
    /// The changed values of an update, all values of a deletion.
    std::vector<FormerValue> former{};
};

struct ChangeSet {
    std::vector<ObjectChange> changes;
};

} // namespace estatebook::platform
