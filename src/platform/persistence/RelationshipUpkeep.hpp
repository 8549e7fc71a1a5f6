// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: how both sides of a relationship are kept in step.
///
/// Each member of a to-many relationship knows its place among the owner's members, so that joining and leaving take
/// the same time however many there are. Members that leave an unordered relationship leave a hole; holes are closed, and
/// the order of creation restored, when the members are next read.

#include "platform/persistence/ManagedObject.hpp"
#include "platform/persistence/Slots.hpp"

#include <cstddef>
#include <span>
#include <vector>

namespace estatebook::platform {

struct ToManySlot::Members {
    std::vector<ManagedObject*> objects;
    std::size_t holes = 0;
    bool isOrdered = false;
    bool inOrderOfCreation = true;
    /// Where a member keeps its place.
    ToOneSlot& (*slotOf)(ManagedObject&) noexcept = nullptr;

    void tidy();
    void renumber(std::size_t from);
};

class RelationshipUpkeep {
public:
    /// Raises InvalidArgumentException unless the relationship may lead to the target: an object of its entity in the same
    /// context.
    static void requireLinkable(const ManagedObject& object, const ModelledProperty& property,
                                const ManagedObject& target);

    /// Stores a to-one property without its inverse and without a word. The link goes with whichever of the two goes
    /// first.
    static void storeOneWay(ManagedObject& object, const ModelledProperty& toOne, ManagedObject* target);

    /// Brings the other side in step after the to-one property of `object` moved from `before` to its present target.
    static void follow(ManagedObject& object, const ModelledProperty& property, ManagedObject* before);

    /// Moves a member of an ordered relationship to a place. REQUIRES: both places exist.
    static void move(ToManySlot& slot, std::size_t from, std::size_t to);
    [[nodiscard]] static std::size_t placeOf(ManagedObject& member, const ModelledProperty& toMany);

    // What is read from a store, without a word.

    /// The members are to be read when somebody asks for them.
    static void forgetMembers(ToManySlot& slot) noexcept;
    /// These are the members, but for those that lead elsewhere by now.
    static void takeMembers(ManagedObject& owner, const ModelledProperty& toMany,
                            std::span<ManagedObject* const> members);
    /// Leads the to-one property of an object to another one, and joins it with the members there if they are known.
    static void takeLink(ManagedObject& object, const ModelledProperty& toOne, ManagedObject* target);

    /// Takes the object out of every relationship, announcing each change.
    static void unlinkAll(ManagedObject& object);
    /// Forgets all links on this side only; for objects that go together.
    static void forgetAll(ManagedObject& object) noexcept;
    /// For an object without a context that ends: nobody may lead to it any more.
    static void sever(ManagedObject& object) noexcept;

private:
    /// Where the member stands among the owner's; `NotFound` when it is none of them.
    static std::size_t find(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                            const ModelledProperty& back);
    /// The same at no cost for a newcomer, as whoever joins as a rule is.
    static bool hasJoined(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                          const ModelledProperty& back);
    // Observers may have moved the member in the meantime: a join or a parting that comes too late does nothing.
    static void join(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                     const ModelledProperty& back);
    static void part(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                     const ModelledProperty& back);
    static ToManySlot::Members& makeMembers(ToManySlot& slot, const ModelledProperty& toMany,
                                            const ModelledProperty& back);
    /// The other side of a to-one property forgets the object.
    static void letGo(ManagedObject& object, const ModelledProperty& toOne) noexcept;
    static constexpr std::size_t NotFound = static_cast<std::size_t>(-1);
    static void announceMembers(ManagedObject& owner, const ModelledProperty& toMany, ManagedObject& member,
                                bool joins, const ModelledProperty& back);
};

} // namespace estatebook::platform
