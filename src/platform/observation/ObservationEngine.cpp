// SPDX-License-Identifier: MIT
#include "platform/observation/ObservationEngine.hpp"

#include "platform/observation/KeyVocabulary.hpp"
#include "platform/observation/Telling.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Set.hpp"

#include <algorithm>
#include <exception>
#include <utility>

namespace estatebook::platform {

// Registrations

void ObservationEngine::add(ObservableObject& object, const Registration& registration) {
    observationOf(object).add(registration);
    object.observationBegins();
    if (ClassDescription::anyAdded()) followDependencies(object, registration.key);
}

void ObservationEngine::afterRemoval(ObservableObject& object) {
    if (ClassDescription::anyAdded()) unfollowDependencies(object);
    Observation* const left = object.observation_;
    if (!left || !left->isEmpty()) return;
    object.observationEnds();
    if (!left->weak) delete std::exchange(object.observation_, nullptr);
}

void ObservationEngine::dropEmpty(ObservableObject& object) {
    if (!object.observation_) return;
    object.observation_->dropEmpty();
    afterRemoval(object);
}

Ref<PathObservation> ObservationEngine::observe(ObservableObject& object, std::vector<Key> steps,
                                                std::string_view keyPath, const ObservationTarget& target,
                                                unsigned options) {
    const auto bits = static_cast<std::uint8_t>(options);
    if (steps.size() > 1) {
        auto path = makeRef<PathObservation>(object, std::move(steps));
        if (target.observer) path->observer = WeakReference(*target.observer);
        path->context = target.context;
        path->callback = target.callback;
        path->options = bits;
        path->text = keyPath;
        path->follow();
        observationOf(object).makeLists().paths.emplace(path->told(), path);
        return path;
    }
    Registration registration{.context = target.context, .key = steps.front(), .options = bits};
    if (target.callback) {
        registration.target = target.callback.get();
        registration.kind = Registration::Kind::Callback;
    } else {
        registration.target = WeakReference(*target.observer).detach();
        registration.kind = Registration::Kind::Observer;
    }
    add(object, registration);
    return nullptr;
}

void ObservationEngine::tellInitially(ObservableObject& object, std::string_view keyPath,
                                      const ObservationTarget& target, unsigned options) {
    if (!(options & ObservingInitial)) return;
    KeyValueChange change;
    if (options & ObservingNew) {
        change.newValue = valueAlong(object, keyPath);
        if (change.newValue.isAbsent()) change.newValue = NullObject{};
    }
    if (target.callback)
        target.callback->changed(object, change);
    else
        target.observer->observeValueForKeyPathOfObjectChangeContext(keyPath, object, change, target.context);
}

namespace {

bool leadsTo(const ClassDescription& description, const ClassDescription::PathDependency& dependency,
             Key key) {
    if (dependency.dependent == key) return true;
    const auto dependents = description.dependentsOf(dependency.dependent);
    return std::ranges::find(dependents, key) != dependents.end();
}

} // namespace

// Observing a key means to follow every dotted dependency that leads to it.
void ObservationEngine::followDependencies(ObservableObject& object, Key key) {
    const ClassDescription& description = object.classDescription();
    for (const auto* dependency : description.pathDependencies()) {
        if (!leadsTo(description, *dependency, key)) continue;
        auto& followed = observationOf(object).makeLists().followed;
        if (std::ranges::find(followed, dependency, &ObserverLists::Followed::dependency) != followed.end())
            continue;
        auto path = makeRef<PathObservation>(object, dependency->path);
        path->dependent = dependency->dependent;
        followed.push_back({dependency, path});
        path->follow();
    }
}

void ObservationEngine::unfollowDependencies(ObservableObject& object) {
    const ClassDescription& description = object.classDescription();
    const auto lists = [&] { return object.observation_ ? object.observation_->lists() : nullptr; };
    // Unfollowing takes registrations away and so may come back here.
    for (std::size_t index = lists() ? lists()->followed.size() : 0; index-- > 0;) {
        if (!lists()) return;
        auto& followed = lists()->followed;
        if (index >= followed.size()) continue;
        const auto& dependency = *followed[index].dependency;
        const bool isNeeded = std::ranges::any_of(lists()->all(), [&](const auto& each) {
            return !each->empty() && leadsTo(description, dependency, each->key());
        });
        if (isNeeded) continue;
        const auto path = followed[index].path;
        followed.erase(followed.begin() + static_cast<std::ptrdiff_t>(index));
        path->unfollow();
    }
    if (lists()) object.observation_->dropEmpty();
}

void ObservationEngine::objectEnds(ObservableObject& object) noexcept {
    Observation* observation = std::exchange(object.observation_, nullptr);
    if (!observation) return;
    if (observation->weak) observation->weak->object = nullptr;
    delete observation;
}

// Announcements

/// Whether all there is to a change of the object is that one observer is told of it, perhaps.
inline bool ObservationEngine::isPlainlyObserved(const ObservableObject& object) noexcept {
    return object.announcing_ == ObservableObject::Announcing::Observed && !takesNotes(object) &&
           object.observation_ && object.observation_->hasOnePlainObserver();
}

void ObservationEngine::will(ObservableObject& object, Key key) {
    Announcements& all = Announcements::current();
    if (isPlainlyObserved(object) && all.isQuiet()) return all.openLone(object, key);
    willWhateverHolds(all, object, key);
}

void ObservationEngine::willWhateverHolds(Announcements& all, ObservableObject& object, Key key) {
    const Cause cause = all.takeExpected(object, key);
    if (cause == Cause::Itself && takesNotes(object)) object.noteWillChange(key);

    if (all.session->openPairs == 0 && !all.session->mutatedObject && canBeLone(object))
        return all.openLone(object, key);
    if (all.hasLone()) writeDownLone(all);
    OpenObject& opened = all.open(object);
    ++all.session->openPairs;
    if (opened.isOpen(key)) {
        ++opened.details(key).inner;
        return;
    }
    const KeyValueChange* mutation = all.takeMutation(object);
    opened.open(key);
    if (object.observation_ && object.observation_->awaitsBefore(key))
        tellBefore(object, key, opened, mutation);
    if (cause != Cause::Key) openDependents(object, key, opened);
}

// Of a plain pair there is nothing to remember between will and did, as long as nothing happens in between.
inline bool ObservationEngine::canBeLone(const ObservableObject& object) noexcept {
    if (hasOwnPair(object) || !object.observation_) return false;
    const Registration* only = object.observation_->only();
    return only && !only->wantsBefore();
}

void ObservationEngine::writeDownLone(Announcements& all) {
    const auto [object, key] = all.takeLone();
    OpenObject& opened = all.open(*object);
    opened.open(key);
    openDependents(*object, key, opened);
}

/// Whether the registration, the only one, hears of the key: at once, however long the way from the one to the other.
inline bool ObservationEngine::reaches(const ObservableObject& object, Key key, const Registration& only) {
    return only.key == key || object.classDescription().dependentKeys(key).contains(only.key);
}

inline void ObservationEngine::raiseKept(Announcements& all) {
    if (all.session->firstException) [[unlikely]]
        std::rethrow_exception(std::exchange(all.session->firstException, nullptr));
}

// The observer needs no session apart: nothing is open in this one any more, and what he throws leaves the setter.
void ObservationEngine::didPlainly(Announcements& all, ObservableObject& object, Key key) {
    const auto held = all.takeLone();
    all.session->openPairs = 0;
    const Registration& only = *object.observation_->only();
    if (!reaches(object, key, only)) return;
    const Ref<ObservableObject> observer(only.observer());
    if (!observer) return;
    try {
        observer->observeValueForKeyPathOfObjectChangeContext(nameOf(only.key), object,
                                                              Telling::plainSetting(), only.context);
    } catch (...) {
        all.forgetSession();
        throw;
    }
    if (all.session->openPairs != 0) [[unlikely]]
        all.forgetSession();
    raiseKept(all);
}

void ObservationEngine::didLone(Announcements& all, ObservableObject& object, Key key) {
    const auto held = all.takeLone();
    const Registration& only = *object.observation_->only();
    if (reaches(object, key, only)) Telling(object, only.key, nullptr).after();
    all.session->openPairs = 0;
    raiseKept(all);
}

void ObservationEngine::tellBefore(ObservableObject& object, Key key, OpenObject& opened,
                                   const KeyValueChange* mutation) {
    Value old;
    if (object.observation_->awaitsOld(key)) {
        old = oldValueOf(object, key, mutation);
        opened.details(key).old = old;
    }
    auto paths = Telling(object, key, mutation).before(std::move(old));
    if (!paths.empty()) opened.details(key).opened = std::move(paths);
}

/// Whether there is anything to be announced of a key that depends on a changed one.
inline bool ObservationEngine::isHeard(Announcements& all, const ObservableObject& object, Key dependent) {
    if (object.announcing_ == ObservableObject::Announcing::Always) return true;
    if (object.observation_ && object.observation_->awaits(dependent)) return true;
    try {
        return object.passesOn(KeySet::of(dependent));
    } catch (...) {
        all.keep(std::current_exception());
        return false;
    }
}

void ObservationEngine::openDependents(ObservableObject& object, Key key, OpenObject& opened) {
    Announcements& all = Announcements::current();
    const DependentKeys dependents = object.classDescription().dependentKeys(key);
    if (dependents.keys.empty()) return;
    const auto openOne = [&](Key dependent) {
        if (opened.isOpen(dependent)) {
            ++opened.details(dependent).inner;
            ++all.session->openPairs;
        } else if (hasOwnPair(object)) {
            if (isHeard(all, object, dependent))
                announceDependent(object, dependent, &ObservableObject::willChangeValueForKey);
        } else {
            ++all.session->openPairs;
            opened.open(dependent);
            if (object.observation_ && object.observation_->awaitsBefore(dependent))
                tellBefore(object, dependent, opened, nullptr);
        }
    };
    // Where nobody passes announcements on, those that nobody awaits can be left out.
    if (hasOwnPair(object)) {
        std::ranges::for_each(dependents.keys, openOne);
    } else if (const Observation* observation = object.observation_) {
        const Registration* only = observation->only();
        if (only && !dependents.set.mayContain(only->key)) return;
        for (const Key dependent : dependents.keys)
            if (object.observation_ && object.observation_->awaits(dependent)) openOne(dependent);
    }
}

void ObservationEngine::did(ObservableObject& object, Key key) {
    Announcements& all = Announcements::current();
    if (all.isLone(object, key) && isPlainlyObserved(object) && !all.session->expectedObject)
        return didPlainly(all, object, key);
    didWhateverHolds(all, object, key);
}

void ObservationEngine::didWhateverHolds(Announcements& all, ObservableObject& object, Key key) {
    const Cause cause = all.takeExpected(object, key);
    if (cause == Cause::Itself && takesNotes(object)) {
        try {
            object.noteDidChange(key);
        } catch (...) {
            all.keep(std::current_exception());
        }
    }

    if (all.hasLone()) {
        if (all.isLone(object, key) && canBeLone(object)) return didLone(all, object, key);
        writeDownLone(all);
    }
    OpenObject* opened = all.find(object);
    if (!opened || !opened->isOpen(key)) return;
    Ref<ObservableObject> held;
    if (!opened->closeInner(key)) {
        tellAfter(object, key, *opened, all.takeMutation(object));
        if (cause != Cause::Key && opened->count() > 1) closeDependents(object, key, *opened);
        opened->close(key);
        if (opened->count() == 0) {
            held = opened->end();
            all.dropClosed();
        }
    }
    if (--all.session->openPairs == 0) raiseKept(all);
}

void ObservationEngine::closeDependents(ObservableObject& object, Key key, OpenObject& opened) {
    Announcements& all = Announcements::current();
    const auto closeOne = [&](Key dependent) {
        if (opened.closeInner(dependent)) {
            --all.session->openPairs;
        } else if (hasOwnPair(object)) {
            announceDependent(object, dependent, &ObservableObject::didChangeValueForKey);
        } else {
            tellAfter(object, dependent, opened, nullptr);
            opened.close(dependent);
            --all.session->openPairs;
        }
    };
    for (const Key dependent : object.classDescription().dependentsOf(key))
        if (opened.isOpen(dependent)) closeOne(dependent);
}

void ObservationEngine::tellAfter(ObservableObject& object, Key key, OpenObject& opened,
                                  const KeyValueChange* mutation) {
    OpenKey* details = opened.find(key);
    const bool isAwaited = object.observation_ && object.observation_->awaits(key);
    if (!isAwaited && !(details && !details->opened.empty())) return;
    Telling telling(object, key, mutation);
    if (details)
        telling.after(std::move(details->old), std::move(details->opened));
    else
        telling.after();
}

void ObservationEngine::announceDependent(ObservableObject& object, Key dependent, Announcement announce,
                                          Cause cause) {
    Announcements& all = Announcements::current();
    all.session->expectedObject = &object;
    all.session->expectedKey = dependent;
    all.session->expectedCause = cause;
    try {
        (object.*announce)(dependent);
    } catch (...) {
        all.keep(std::current_exception());
    }
    all.session->expectedObject = nullptr;
}

void ObservationEngine::announceFromPath(ObservableObject& object, Key key, Announcement announce) {
    announceDependent(object, key, announce, Cause::Path);
}

void ObservationEngine::willMutate(ObservableObject& object, Key key, const KeyValueChange& mutation) {
    Announcements& all = Announcements::current();
    all.session->mutatedObject = &object;
    all.session->mutation = &mutation;
    object.willChangeValueForKey(key);
    all.session->mutatedObject = nullptr;
}

void ObservationEngine::didMutate(ObservableObject& object, Key key, const KeyValueChange& mutation) {
    Announcements& all = Announcements::current();
    all.session->mutatedObject = &object;
    all.session->mutation = &mutation;
    object.didChangeValueForKey(key);
    all.session->mutatedObject = nullptr;
}

// Values for observers

Value ObservationEngine::oldValueOf(const ObservableObject& object, Key key, const KeyValueChange* mutation) {
    if (!mutation) return readForObserver(object, key);
    if (mutation->indexes.empty()) return mutation->oldValue;
    if (mutation->kind == ChangeKind::Insertion) return {};
    Value members;
    runForObserver([&] { members = membersAt(object, key, mutation->indexes); });
    return members;
}

Value ObservationEngine::newValueOf(const ObservableObject& object, Key key, const KeyValueChange* mutation) {
    if (!mutation) return valueOrNothing(object, key);
    if (mutation->indexes.empty()) return mutation->newValue;
    return mutation->kind == ChangeKind::Removal ? Value() : membersAt(object, key, mutation->indexes);
}

Value ObservationEngine::valueOrNothing(const ObservableObject& object, Key key) {
    return object.hasValueForKey(key) ? object.valueForKey(key) : Value();
}

Value ObservationEngine::membersAt(const ObservableObject& object, Key key,
                                   const std::vector<std::size_t>& places) {
    const Value all = valueOrNothing(object, key);
    std::vector<Value> members;
    for (const std::size_t place : places) {
        if (const auto set = all.as<OrderedSet>(); set && place < set->count())
            members.push_back(set->at(place));
        if (const auto list = all.as<Array>(); list && place < list->count())
            members.push_back(list->at(place));
    }
    return Array::make(std::move(members));
}

Value ObservationEngine::valueAlong(const ObservableObject& object, std::string_view keyPath) {
    const std::size_t point = keyPath.rfind('.');
    if (point == std::string_view::npos) return valueOrNothing(object, Key::named(keyPath));
    const auto owner = object.valueForKeyPath(keyPath.substr(0, point));
    const auto last = owner.as<ObservableObject>();
    return last ? valueOrNothing(*last, Key::named(keyPath.substr(point + 1)))
                : object.valueForKeyPath(keyPath);
}

Value ObservationEngine::readForObserver(const ObservableObject& object, Key key) {
    Value value;
    runForObserver([&] { value = valueOrNothing(object, key); });
    return value;
}

Value ObservationEngine::readForObserver(const ObservableObject& object, std::string_view keyPath) {
    Value value;
    runForObserver([&] { value = valueAlong(object, keyPath); });
    return value;
}

} // namespace estatebook::platform
