// SPDX-License-Identifier: MIT
#pragma once

/// Inner header of observing: what an object remembers of its observers. An object has an Observation only once it
/// observes or is observed.

#include "platform/observation/ClassDescription.hpp"
#include "platform/observation/ObserverList.hpp"
#include "platform/observation/PathObservation.hpp"

#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

namespace estatebook::platform {

/// The registrations of an object that has more than one.
class ObserverLists {
public:
    [[nodiscard]] const KeySet& keys() const noexcept { return keys_; }
    [[nodiscard]] ObserverList* find(Key key) const noexcept {
        if (!keys_.mayContain(key)) return nullptr;
        const std::size_t place = placeOf(key);
        return place < lists_.size() ? lists_[place].get() : nullptr;
    }
    [[nodiscard]] ObserverList& findOrMake(Key key);
    /// Drops the lists that are empty, save those that are just being told.
    void dropEmpty();
    [[nodiscard]] bool empty() const noexcept { return lists_.empty() && paths.empty() && followed.empty(); }
    [[nodiscard]] const std::vector<std::unique_ptr<ObserverList>>& all() const noexcept { return lists_; }

    /// Dotted paths that somebody registered on this object, by who is told.
    std::unordered_multimap<const void*, Ref<PathObservation>> paths;

    /// A dotted dependency followed because a key that it affects is observed.
    struct Followed {
        const ClassDescription::PathDependency* dependency;
        Ref<PathObservation> path;
    };
    std::vector<Followed> followed;

private:
    [[nodiscard]] std::size_t placeOf(Key key) const noexcept {
        std::size_t place = keys_.countBelow(key);
        if (!KeySet::isExact(key))
            while (place < lists_.size() && lists_[place]->key() != key) ++place;
        return place;
    }

    // Keys with a bit of their own stand in the order of their numbers, before all others.
    KeySet keys_;
    std::vector<std::unique_ptr<ObserverList>> lists_;
};

/// Most observed objects have one observer of one key; they need no more than this.
class Observation {
public:
    Observation() = default;
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;
    ~Observation();

    [[nodiscard]] bool isEmpty() const noexcept { return one_.kind == Registration::Kind::None; }
    /// The only registration; null when there is none or more than one.
    [[nodiscard]] const Registration* only() const noexcept { return isEmpty() || lists() ? nullptr : &one_; }
    /// Whether the only registration is that of an observer who wants to hear of a change and nothing more of it.
    [[nodiscard]] bool hasOnePlainObserver() const noexcept {
        return one_.kind == Registration::Kind::Observer && one_.options == ObservingNothing;
    }
    /// Null unless there is more than one registration, or a path.
    [[nodiscard]] ObserverLists* lists() const noexcept {
        return one_.kind == Registration::Kind::Lists ? static_cast<ObserverLists*>(one_.target) : nullptr;
    }
    [[nodiscard]] ObserverLists& makeLists();

    /// The keys that somebody may be registered for.
    [[nodiscard]] KeySet keys() const noexcept {
        if (const ObserverLists* all = lists()) return all->keys();
        KeySet keys;
        if (!isEmpty()) keys.insert(one_.key);
        return keys;
    }
    [[nodiscard]] bool awaits(Key key) const noexcept {
        return anyFor(key, [](const auto&) { return true; });
    }
    /// Whether somebody wants the value before a change of the key.
    [[nodiscard]] bool awaitsOld(Key key) const noexcept {
        return anyFor(key, [](const auto& each) { return each.wantsOld(); });
    }
    /// Whether there is anything to be done for somebody before a change of the key.
    [[nodiscard]] bool awaitsBefore(Key key) const noexcept {
        return anyFor(key, [](const auto& each) { return each.wantsBefore(); });
    }

    /// Takes over the registration's hold.
    void add(const Registration& registration);
    /// Takes away the latest registration of the target for the key that matches; false when there is none.
    template <class Matches>
    bool removeLatest(Key key, const void* target, Matches matches) {
        if (ObserverLists* all = lists()) {
            ObserverList* list = all->find(key);
            if (!list || !list->removeLatest(target, matches)) return false;
            if (list->empty()) dropEmpty();
            return true;
        }
        if (isEmpty() || one_.key != key || one_.target != target || !matches(one_)) return false;
        one_.letGo();
        return true;
    }
    void dropEmpty();

    WeakBlock* weak = nullptr;

private:
    /// Asks the registration or the list of the key.
    template <class Asks>
    [[nodiscard]] bool anyFor(Key key, Asks asks) const noexcept {
        if (const ObserverLists* all = lists()) {
            const ObserverList* list = all->find(key);
            return list && asks(*list);
        }
        return !isEmpty() && one_.key == key && asks(one_);
    }

    Registration one_;
};

static_assert(sizeof(Observation) == 32);

} // namespace estatebook::platform
