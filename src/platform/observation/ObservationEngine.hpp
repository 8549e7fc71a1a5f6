// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: the workings behind ObservableObject's announcements.

#include "platform/observation/Announcements.hpp"
#include "platform/observation/ObservableObject.hpp"
#include "platform/observation/Observation.hpp"

#include <string_view>
#include <vector>

namespace estatebook::platform {

/// Whom a registration is for: an observer with a context, or a callback.
struct ObservationTarget {
    ObservableObject* observer = nullptr;
    const void* context = nullptr;
    Ref<ObserverCallback> callback{};
};

class ObservationEngine {
public:
    static Observation& observationOf(ObservableObject& object) {
        if (!object.observation_) object.observation_ = new Observation;
        return *object.observation_;
    }
    static Observation* observationIfAny(const ObservableObject& object) noexcept {
        return object.observation_;
    }

    /// Takes over the registration's hold.
    static void add(ObservableObject& object, const Registration& registration);
    /// Takes away the latest registration of the target for the key that matches; false when there is none.
    template <class Matches>
    static bool removeLatest(ObservableObject& object, Key key, const void* target, Matches matches) {
        Observation* observation = object.observation_;
        if (!observation || !observation->removeLatest(key, target, matches)) return false;
        afterRemoval(object);
        return true;
    }
    /// Registers for the key or, when there are several steps, for the path, which is handed back.
    static Ref<PathObservation> observe(ObservableObject& object, std::vector<Key> steps,
                                        std::string_view keyPath, const ObservationTarget& target,
                                        unsigned options);
    /// With ObservingInitial, tells what the value is.
    static void tellInitially(ObservableObject& object, std::string_view keyPath,
                              const ObservationTarget& target, unsigned options);
    /// Takes away the latest path of the target that matches; false when there is none.
    template <class Matches>
    static bool removeLatestPath(ObservableObject& object, const void* target, Matches matches) {
        ObserverLists* lists = object.observation_ ? object.observation_->lists() : nullptr;
        if (!lists) return false;
        const auto [first, last] = lists->paths.equal_range(target);
        auto latest = last;
        for (auto each = first; each != last; ++each)
            if (matches(*each->second) && (latest == last || each->second->number > latest->second->number))
                latest = each;
        if (latest == last) return false;
        const Ref<PathObservation> path = latest->second;
        lists->paths.erase(latest);
        path->unfollow();
        afterRemoval(object);
        return true;
    }

    static void will(ObservableObject& object, Key key);
    static void did(ObservableObject& object, Key key);
    static void willMutate(ObservableObject& object, Key key, const KeyValueChange& mutation);
    static void didMutate(ObservableObject& object, Key key, const KeyValueChange& mutation);

    /// Announces a key of the object that a dotted path leads to: not as an edit of the key itself.
    static void announceFromPath(ObservableObject& object, Key key, void (ObservableObject::*announce)(Key));

    /// Calls what an observer supplies; its exception is kept for the outermost setter.
    template <class Action>
    static void runForObserver(Action action) {
        Apart(Announcements::current()).run(action);
    }
    /// The value at the end of the path; absent where the last key is declared without a value.
    static Value valueAlong(const ObservableObject& object, std::string_view keyPath);
    /// The same for an observer: absent when the reading raises, which is kept likewise.
    static Value readForObserver(const ObservableObject& object, std::string_view keyPath);
    /// What observers are told as the new value of a key; the membership change may be null.
    static Value newValueOf(const ObservableObject& object, Key key, const KeyValueChange* mutation);

    /// After registrations went while they could not be dropped.
    static void dropEmpty(ObservableObject& object);
    static void objectEnds(ObservableObject& object) noexcept;

private:
    using Announcement = void (ObservableObject::*)(Key);

    /// Whether the class of the object has an announcing pair of its own.
    static bool hasOwnPair(const ObservableObject& object) noexcept {
        if (object.announcing_ == ObservableObject::Announcing::Unknown) object.findAnnouncing();
        return object.announcing_ >= ObservableObject::Announcing::Passed;
    }
    static bool isHeard(Announcements& all, const ObservableObject& object, Key dependent);
    static bool takesNotes(const ObservableObject& object) noexcept {
        return object.notes_ == ObservableObject::Notes::Taken;
    }
    static void afterRemoval(ObservableObject& object);
    static void announceDependent(ObservableObject& object, Key dependent, Announcement announce,
                                  Cause cause = Cause::Key);
    static bool isPlainlyObserved(const ObservableObject& object) noexcept;
    static bool canBeLone(const ObservableObject& object) noexcept;
    static void willWhateverHolds(Announcements& all, ObservableObject& object, Key key);
    static void didWhateverHolds(Announcements& all, ObservableObject& object, Key key);
    static void writeDownLone(Announcements& all);
    static bool reaches(const ObservableObject& object, Key key, const Registration& only);
    static void raiseKept(Announcements& all);
    static void didPlainly(Announcements& all, ObservableObject& object, Key key);
    static void didLone(Announcements& all, ObservableObject& object, Key key);
    static void openDependents(ObservableObject& object, Key key, OpenObject& opened);
    static void closeDependents(ObservableObject& object, Key key, OpenObject& opened);
    static void tellBefore(ObservableObject& object, Key key, OpenObject& opened,
                           const KeyValueChange* mutation);

    static void tellAfter(ObservableObject& object, Key key, OpenObject& opened,
                          const KeyValueChange* mutation);

    static Value valueOrNothing(const ObservableObject& object, Key key);
    static Value readForObserver(const ObservableObject& object, Key key);
    static Value oldValueOf(const ObservableObject& object, Key key, const KeyValueChange* mutation);
    static Value membersAt(const ObservableObject& object, Key key, const std::vector<std::size_t>& places);
    static void followDependencies(ObservableObject& object, Key key);
    static void unfollowDependencies(ObservableObject& object);
};

} // namespace estatebook::platform
