// SPDX-License-Identifier: MIT
#pragma once

/// MutableOrderedSet: a live view of an ordered relationship through which it is changed. Every change is announced with the
/// places it touches, and inverses are kept.
///
///     MutableOrderedSet tags = note.mutableOrderedSetValueForKey(keys::tags);
///     tags.removeAllObjects();
///     tags.addObject(*note.createTagWithName(name));

#include "platform/persistence/ManagedObject.hpp"

#include <cstddef>

namespace estatebook::platform {

class ESTATEBOOK_API MutableOrderedSet {
public:
    [[nodiscard]] std::size_t count() const;
    /// REQUIRES: index < count().
    [[nodiscard]] ManagedObject& objectAtIndex(std::size_t index) const;
    [[nodiscard]] bool containsObject(const ManagedObject& object) const;

    /// To the end; nothing happens for an object that is a member already.
    void addObject(ManagedObject& object);
    /// Nothing happens for an object that is a member already. An index beyond the end raises RangeException.
    void insertObjectAtIndex(ManagedObject& object, std::size_t index);
    /// Nothing happens for an object that is no member.
    void removeObject(ManagedObject& object);
    /// Raises RangeException for an index that no member has.
    void removeObjectAtIndex(std::size_t index);
    /// One removal of all members.
    void removeAllObjects();

private:
    friend class ManagedObject;
    MutableOrderedSet(ManagedObject& owner, const ModelledProperty& property) noexcept
        : owner_(&owner), property_(&property) {}
    [[nodiscard]] const ModelledProperty& back(ManagedObject& member) const;

    Ref<ManagedObject> owner_;
    const ModelledProperty* property_;
};

} // namespace estatebook::platform
