// SPDX-License-Identifier: MIT
#include "platform/observation/KeyPath.hpp"
#include "platform/observation/Observation.hpp"
#include "platform/values/Array.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"

#include <algorithm>
#include <deque>
#include <exception>
#include <optional>
#include <utility>

namespace estatebook::platform {

/// A key between its will and its did.
struct OpenKey {
    Key key;
    /// Pairs of the key that stand open within the outermost.
    std::uint32_t inner = 0;
    Value old{};
    /// The membership change that is being told, while it is.
    const KeyValueChange* mutation = nullptr;
    /// Dotted dependencies whose dependent was opened along with this key, and at which step. They are closed with
    /// it even when nobody follows them any more.
    std::vector<std::pair<std::shared_ptr<PathObservation>, std::size_t>> opened{};
};

namespace {

struct OpenObject {
    Ref<ObservableObject> object; // null: closed, the place is free
    KeySet set;
    std::vector<OpenKey> keys;

    OpenKey* find(Key key) noexcept {
        if (!set.mayContain(key)) return nullptr;
        for (OpenKey& open : keys)
            if (open.key == key) return &open;
        return nullptr;
    }
    void close(Key key) noexcept {
        const auto place = std::ranges::find(keys, key, &OpenKey::key);
        keys.erase(place);
        if (KeySet::isExact(key)) set.remove(key);
        if (keys.empty()) {
            object = nullptr;
            set = {};
        }
    }
};

/// Why a key is announced.
enum class Cause : std::uint8_t {
    Itself,
    /// Another key of the object, which announces all that follow from it.
    Key,
    /// A path that leads to another object.
    Path,
};

/// What one outermost setter has open on this thread. An observer that changes something while it is being
/// told begins a session of its own, so that an exception reaches just the setter that caused it.
struct Session {
    std::size_t firstObject = 0;
    std::size_t openPairs = 0;
    std::exception_ptr firstException{};
    // The announcement that is about to arrive at the base because another key caused it.
    const ObservableObject* expectedObject = nullptr;
    Key expectedKey{};
    Cause expectedCause = Cause::Itself;
    // The membership change that the next announcement is about.
    const ObservableObject* mutatedObject = nullptr;
    const KeyValueChange* mutation = nullptr;
};

struct Announcements {
    std::deque<OpenObject> objects; // grows without moving what is open
    std::size_t top = 0;
    Session session;

    OpenObject* find(const ObservableObject& object) noexcept {
        for (std::size_t index = top; index-- > session.firstObject;)
            if (objects[index].object.get() == &object) return &objects[index];
        return nullptr;
    }
    OpenObject& open(ObservableObject& object) {
        if (OpenObject* found = find(object)) return *found;
        if (top == objects.size()) objects.emplace_back();
        OpenObject& made = objects[top++];
        made.object = Ref<ObservableObject>(&object);
        return made;
    }
    void dropClosed() noexcept {
        while (top > session.firstObject && !objects[top - 1].object) --top;
    }
    void keep(std::exception_ptr exception) noexcept {
        if (!session.firstException) session.firstException = std::move(exception);
    }
};

Announcements& announcements() noexcept {
    thread_local Announcements instance;
    return instance;
}

/// Runs foreign code in a session of its own; what it throws is kept for the outer one's setter.
template <class Action>
void runApart(Action action) noexcept {
    Announcements& all = announcements();
    const Session outer = std::exchange(all.session, Session{.firstObject = all.top});
    std::exception_ptr thrown;
    try {
        action();
    } catch (...) {
        thrown = std::current_exception();
    }
    // Pairs that the action left open are forgotten.
    while (all.top > all.session.firstObject) {
        OpenObject& left = all.objects[--all.top];
        left.keys.clear();
        left.set = {};
        left.object = nullptr;
    }
    all.session = outer;
    if (thrown) all.keep(std::move(thrown));
}

Value orNullObject(Value value) {
    if (value.isAbsent()) value = NullObject{};
    return value;
}

/// Leads a dependent key through the overridable pair; the base will know it by the expectation left here.
void announceDependent(ObservableObject& object, Key dependent, void (ObservableObject::*announce)(Key),
                       Cause cause = Cause::Key) {
    Announcements& all = announcements();
    all.session.expectedObject = &object;
    all.session.expectedKey = dependent;
    all.session.expectedCause = cause;
    try {
        (object.*announce)(dependent);
    } catch (...) {
        all.keep(std::current_exception());
    }
    all.session.expectedObject = nullptr;
}

Cause takeExpected(Session& session, const ObservableObject& object, Key key) noexcept {
    if (session.expectedObject != &object || session.expectedKey != key) return Cause::Itself;
    session.expectedObject = nullptr;
    return session.expectedCause;
}

const KeyValueChange* takeMutation(Session& session, const ObservableObject& object) noexcept {
    if (session.mutatedObject != &object) return nullptr;
    session.mutatedObject = nullptr;
    return session.mutation;
}

} // namespace

// WeakReference

WeakReference::WeakReference(ObservableObject& object) {
    Observation& observation = ObservationEngine::observationOf(object);
    if (!observation.weak) observation.weak = new WeakBlock(object);
    block_ = observation.weak;
    hold();
}

WeakReference::~WeakReference() {
    if (block_ && --block_->holders == 0) delete block_;
}

// KeyObservers and Observation

void KeyObservers::remove(std::size_t index) {
    if (telling > 0) {
        registrations[index] = Registration();
        hasRemoved = true;
    } else {
        registrations.erase(registrations.begin() + static_cast<std::ptrdiff_t>(index));
    }
}

void KeyObservers::endTelling() {
    if (--telling > 0 || !hasRemoved) return;
    std::erase_if(registrations, [](const Registration& each) { return each.isRemoved(); });
    hasRemoved = false;
}

KeyObservers* Observation::find(Key key) noexcept {
    if (!observedKeys.mayContain(key)) return nullptr;
    const auto found = std::ranges::find(keys, key, &KeyObservers::key);
    return found == keys.end() ? nullptr : &*found;
}

// PathObservation

PathObservation::PathObservation(ObservableObject& root, std::vector<Key> path)
    : root_(root), path_(std::move(path)) {
    links_.reserve(path_.size());
    for (std::size_t step = 0; step < path_.size(); ++step)
        links_.push_back(std::make_unique<PathLink>(PathLink{this, step, {}}));
}

PathObservation::~PathObservation() {
    unlinkFrom(0);
}

void PathObservation::follow() {
    isFollowing_ = true;
    linkFrom(0);
}

void PathObservation::unfollow() {
    isFollowing_ = false;
    unlinkFrom(0);
}

void PathObservation::linkFrom(std::size_t step) {
    ObservableObject* hop = nullptr;
    if (step == 0) {
        hop = &root_;
    } else if (ObservableObject* before = links_[step - 1]->hop.get()) {
        const Value value = before->valueForKey(path_[step - 1]);
        if (value.isAbsent()) return;
        hop = value.as<ObservableObject>().get();
        if (!hop)
            throw InvalidArgumentException("a collection or plain value cannot be observed: \"" +
                                           std::string(path_[step - 1].name()) + "\" of " +
                                           before->description());
    }
    if (!hop) return;
    links_[step]->hop = WeakReference(*hop);
    ObservationEngine::add(*hop, path_[step], {{}, nullptr, links_[step].get(), 0});
    if (step + 1 < path_.size()) linkFrom(step + 1);
}

void PathObservation::unlinkFrom(std::size_t step) {
    for (; step < links_.size(); ++step) {
        PathLink& link = *links_[step];
        if (ObservableObject* hop = link.hop.get()) ObservationEngine::removeLink(*hop, path_[step], link);
        link.hop = {};
    }
}

void PathObservation::stepWillChange() {
    if (dependent)
        return ObservationEngine::announceFromPath(root_, dependent,
                                                   &ObservableObject::willChangeValueForKey);
    const Ref<ObservableObject> told(observer.get());
    if (!told) return;
    const Ref<ObservableObject> held(&root_);
    if (options & ObservingOld) old_ = orNullObject(ObservationEngine::readForObserver(root_, text));
    if (!(options & ObservingPrior)) return;
    ObservationEngine::tellObserver(*told, text, root_, {.isPrior = true, .oldValue = old_}, context);
}

void PathObservation::stepDidChange(std::size_t step) {
    std::exception_ptr unlinkable;
    if (isFollowing_ && step + 1 < path_.size()) {
        unlinkFrom(step + 1);
        try {
            linkFrom(step + 1);
        } catch (...) {
            unlinkable = std::current_exception();
        }
    }
    if (dependent) {
        ObservationEngine::announceFromPath(root_, dependent, &ObservableObject::didChangeValueForKey);
        if (unlinkable) std::rethrow_exception(unlinkable);
        return;
    }
    if (unlinkable) std::rethrow_exception(unlinkable);
    const Ref<ObservableObject> told(observer.get());
    if (!told) return;
    const Ref<ObservableObject> held(&root_);
    KeyValueChange change{.oldValue = std::exchange(old_, Value())};
    if (options & ObservingNew)
        change.newValue = orNullObject(ObservationEngine::readForObserver(root_, text));
    ObservationEngine::tellObserver(*told, text, root_, change, context);
}

// ObservationEngine: registrations

Observation& ObservationEngine::observationOf(ObservableObject& object) {
    if (!object.observation_) object.observation_ = new Observation;
    return *object.observation_;
}

void ObservationEngine::add(ObservableObject& object, Key key, Registration registration) {
    Observation& observation = observationOf(object);
    KeyObservers* observers = observation.find(key);
    if (!observers) {
        observation.observedKeys.insert(key);
        observers = &observation.keys.emplace_back(KeyObservers{key, {}});
    }
    observers->registrations.push_back(std::move(registration));
    if (ClassDescription::anyAdded()) followDependencies(object, key);
}

void ObservationEngine::removeAt(ObservableObject& object, Key key, std::size_t index) {
    object.observation_->find(key)->remove(index);
    if (ClassDescription::anyAdded()) unfollowDependencies(object);
}

void ObservationEngine::removeLink(ObservableObject& object, Key key, const PathLink& link) {
    KeyObservers* observers = object.observation_ ? object.observation_->find(key) : nullptr;
    if (!observers) return;
    for (std::size_t index = 0; index < observers->registrations.size(); ++index)
        if (observers->registrations[index].link == &link) return removeAt(object, key, index);
}

namespace {

bool leadsTo(const ClassDescription& description, const ClassDescription::PathDependency& dependency,
             Key key) {
    if (dependency.dependent == key) return true;
    const auto dependents = description.dependentsOf(dependency.dependent);
    return std::ranges::find(dependents, key) != dependents.end();
}

bool isAwaited(const KeyObservers& observers) {
    return !std::ranges::all_of(observers.registrations, &Registration::isRemoved);
}

} // namespace

// Observing a key means to follow every dotted dependency that leads to it.
void ObservationEngine::followDependencies(ObservableObject& object, Key key) {
    const ClassDescription& description = object.classDescription();
    for (const auto* dependency : description.pathDependencies()) {
        if (!leadsTo(description, *dependency, key)) continue;
        auto& followed = observationOf(object).followed;
        if (std::ranges::find(followed, dependency, &Observation::Followed::dependency) != followed.end())
            continue;
        auto path = std::make_shared<PathObservation>(object, dependency->path);
        path->dependent = dependency->dependent;
        followed.push_back({dependency, path});
        path->follow();
    }
}

void ObservationEngine::unfollowDependencies(ObservableObject& object) {
    const ClassDescription& description = object.classDescription();
    auto& followed = object.observation_->followed;
    // Unfollowing takes registrations away and so may come back here.
    for (std::size_t index = followed.size(); index-- > 0;) {
        if (index >= followed.size()) continue;
        const auto& dependency = *followed[index].dependency;
        const bool isNeeded = std::ranges::any_of(object.observation_->keys, [&](const KeyObservers& each) {
            return leadsTo(description, dependency, each.key) && isAwaited(each);
        });
        if (isNeeded) continue;
        const auto path = followed[index].path;
        followed.erase(followed.begin() + static_cast<std::ptrdiff_t>(index));
        path->unfollow();
    }
}

void ObservationEngine::objectEnds(ObservableObject& object) noexcept {
    Observation* observation = std::exchange(object.observation_, nullptr);
    if (!observation) return;
    if (WeakBlock* weak = observation->weak) {
        weak->object = nullptr;
        if (--weak->holders == 0) delete weak;
    }
    delete observation;
}

// ObservationEngine: announcements

void ObservationEngine::will(ObservableObject& object, Key key) {
    Announcements& all = announcements();
    const Cause cause = takeExpected(all.session, object, key);
    if (cause == Cause::Itself) object.noteWillChange(key);

    OpenObject& opened = all.open(object);
    ++all.session.openPairs;
    if (OpenKey* known = opened.find(key)) {
        ++known->inner;
        return;
    }
    const KeyValueChange* mutation = takeMutation(all.session, object);
    opened.set.insert(key);
    const KeyObservers* observers = isObserved(object) ? object.observation_->find(key) : nullptr;
    if (!observers) {
        opened.keys.push_back(OpenKey{.key = key});
    } else {
        OpenKey open{.key = key, .mutation = mutation};
        const auto wantsOld = [](const Registration& each) { return (each.options & ObservingOld) != 0; };
        if (std::ranges::any_of(observers->registrations, wantsOld)) {
            if (!mutation)
                open.old = readForObserver(object, key);
            else if (mutation->indexes.empty())
                open.old = mutation->oldValue;
            else if (mutation->kind != ChangeKind::Insertion)
                open.old = membersForObserver(object, key, mutation->indexes);
        }
        opened.keys.push_back(OpenKey{.key = key, .old = open.old});
        tell(object, key, open, true);
        if (!open.opened.empty())
            if (OpenObject* scope = all.find(object))
                if (OpenKey* known = scope->find(key)) known->opened = std::move(open.opened);
    }

    if (cause == Cause::Key) return;
    for (const Key dependent : object.classDescription().dependentsOf(key)) {
        OpenObject& scope = all.open(object);
        if (OpenKey* known = scope.find(dependent)) {
            ++known->inner;
            ++all.session.openPairs;
            continue;
        }
        announceDependent(object, dependent, &ObservableObject::willChangeValueForKey);
    }
}

void ObservationEngine::did(ObservableObject& object, Key key) {
    Announcements& all = announcements();
    const Cause cause = takeExpected(all.session, object, key);
    const Ref<ObservableObject> held(&object);
    if (cause == Cause::Itself) {
        try {
            object.noteDidChange(key);
        } catch (...) {
            all.keep(std::current_exception());
        }
    }

    OpenObject* opened = all.find(object);
    OpenKey* open = opened ? opened->find(key) : nullptr;
    if (!open) return;
    if (open->inner > 0) {
        --open->inner;
    } else {
        const KeyValueChange* mutation = takeMutation(all.session, object);
        if (!open->opened.empty() || (isObserved(object) && object.observation_->find(key))) {
            OpenKey closing = std::move(*open);
            closing.mutation = mutation;
            tell(object, key, closing, false);
        }
        if (cause != Cause::Key) {
            for (const Key dependent : object.classDescription().dependentsOf(key)) {
                OpenObject* scope = all.find(object);
                OpenKey* known = scope ? scope->find(dependent) : nullptr;
                if (!known) continue;
                if (known->inner > 0) {
                    --known->inner;
                    --all.session.openPairs;
                    continue;
                }
                announceDependent(object, dependent, &ObservableObject::didChangeValueForKey);
            }
        }
        if (OpenObject* scope = all.find(object)) {
            scope->close(key);
            all.dropClosed();
        }
    }
    if (--all.session.openPairs == 0 && all.session.firstException)
        std::rethrow_exception(std::exchange(all.session.firstException, nullptr));
}

void ObservationEngine::willMutate(ObservableObject& object, Key key, const KeyValueChange& mutation) {
    Session& session = announcements().session;
    session.mutatedObject = &object;
    session.mutation = &mutation;
    object.willChangeValueForKey(key);
    announcements().session.mutatedObject = nullptr;
}

void ObservationEngine::didMutate(ObservableObject& object, Key key, const KeyValueChange& mutation) {
    Session& session = announcements().session;
    session.mutatedObject = &object;
    session.mutation = &mutation;
    object.didChangeValueForKey(key);
    announcements().session.mutatedObject = nullptr;
}

void ObservationEngine::tell(ObservableObject& object, Key key, OpenKey& open, bool isPrior) {
    const auto tellPath = [&](const std::shared_ptr<PathObservation>& path, std::size_t step) {
        try {
            isPrior ? path->stepWillChange() : path->stepDidChange(step);
        } catch (...) {
            announcements().keep(std::current_exception());
        }
    };
    const auto isOpened = [&](const PathObservation* path) {
        return std::ranges::any_of(open.opened, [&](const auto& each) { return each.first.get() == path; });
    };
    if (!isPrior)
        for (const auto& [path, step] : open.opened) tellPath(path, step);

    if (!isObserved(object)) return;
    KeyObservers* observers = object.observation_->find(key);
    if (!observers) return;
    // Observers may register more keys and so move the lists: they are found anew by their places.
    const auto place = static_cast<std::size_t>(observers - object.observation_->keys.data());
    const auto current = [&]() -> KeyObservers& { return object.observation_->keys[place]; };
    const std::size_t count = observers->registrations.size();
    ++observers->telling;

    std::optional<Value> newValue;
    for (std::size_t index = 0; index < count; ++index) {
        const Registration& registration = current().registrations[index];
        if (registration.isRemoved()) continue;
        if (registration.link) {
            const auto path = registration.link->path->shared_from_this();
            const std::size_t step = registration.link->step;
            if (!isPrior && isOpened(path.get())) continue;
            if (isPrior && path->dependent) open.opened.emplace_back(path, step);
            tellPath(path, step);
            continue;
        }
        const std::uint8_t options = registration.options;
        const void* context = registration.context;
        const Ref<ObservableObject> observer(registration.observer.get());
        if (!observer || (isPrior && !(options & ObservingPrior))) continue;

        KeyValueChange change;
        if (open.mutation) {
            change.kind = open.mutation->kind;
            change.indexes = open.mutation->indexes;
        }
        if (options & ObservingOld) change.oldValue = orNullObject(open.old);
        if (!isPrior && (options & ObservingNew)) {
            if (!newValue) newValue = orNullObject(newValueOf(object, key, open.mutation));
            change.newValue = *newValue;
        }
        change.isPrior = isPrior;
        tellObserver(*observer, key.name(), object, change, context);
    }
    current().endTelling();
}

Value ObservationEngine::newValueOf(const ObservableObject& object, Key key, const KeyValueChange* mutation) {
    if (!mutation) return readForObserver(object, key);
    if (mutation->indexes.empty()) return mutation->newValue;
    return mutation->kind == ChangeKind::Removal ? Value()
                                                 : membersForObserver(object, key, mutation->indexes);
}

Value ObservationEngine::valueOrNothing(const ObservableObject& object, Key key) {
    return object.hasValueForKey(key) ? object.valueForKey(key) : Value();
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
    runApart([&] { value = valueOrNothing(object, key); });
    return value;
}

Value ObservationEngine::membersForObserver(const ObservableObject& object, Key key,
                                            const std::vector<std::size_t>& places) {
    const Value all = readForObserver(object, key);
    std::vector<Value> members;
    for (const std::size_t place : places) {
        if (const auto set = all.as<OrderedSet>(); set && place < set->count())
            members.push_back(set->at(place));
        if (const auto list = all.as<Array>(); list && place < list->count())
            members.push_back(list->at(place));
    }
    return Array::make(std::move(members));
}

void ObservationEngine::announceFromPath(ObservableObject& object, Key key,
                                         void (ObservableObject::*announce)(Key)) {
    announceDependent(object, key, announce, Cause::Path);
}

void ObservationEngine::tellObserver(ObservableObject& observer, std::string_view keyPath,
                                     ObservableObject& object, const KeyValueChange& change,
                                     const void* context) {
    runApart([&] { observer.observeValueForKeyPathOfObjectChangeContext(keyPath, object, change, context); });
}

Value ObservationEngine::readForObserver(const ObservableObject& object, std::string_view keyPath) {
    Value value;
    runApart([&] { value = valueAlong(object, keyPath); });
    return value;
}

} // namespace estatebook::platform
