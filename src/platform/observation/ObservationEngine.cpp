// SPDX-License-Identifier: MIT
#include "platform/observation/KeyPath.hpp"
#include "platform/observation/Observation.hpp"
#include "platform/values/Exception.hpp"

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
    bool followsFromAnother = false;
    bool hasOld = false;
    Value old{};
    const KeyValueChange* mutation = nullptr;
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

/// What one outermost setter has open on this thread. An observer that changes something while it is being
/// told begins a session of its own, so that an exception reaches just the setter that caused it.
struct Session {
    std::size_t firstObject = 0;
    std::size_t openPairs = 0;
    std::exception_ptr firstException{};
    // The announcement that is about to arrive at the base because another key caused it.
    const ObservableObject* expectedObject = nullptr;
    Key expectedKey{};
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

Value orNullObject(Value value) { return value.isAbsent() ? Value(NullObject{}) : value; }

/// Leads a dependent key through the overridable pair; the base will know it by the expectation left here.
void announceDependent(ObservableObject& object, Key dependent, void (ObservableObject::*announce)(Key)) {
    Announcements& all = announcements();
    all.session.expectedObject = &object;
    all.session.expectedKey = dependent;
    try {
        (object.*announce)(dependent);
    } catch (...) {
        all.keep(std::current_exception());
    }
    all.session.expectedObject = nullptr;
}

bool takeExpected(Session& session, const ObservableObject& object, Key key) noexcept {
    if (session.expectedObject != &object || session.expectedKey != key) return false;
    session.expectedObject = nullptr;
    return true;
}

} // namespace

// WeakReference

WeakReference::WeakReference(ObservableObject& object) {
    Observation& observation = ObservationEngine::observationOf(object);
    if (!observation.weak) observation.weak = new WeakBlock{&object, 1}; // the object's own hold
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

PathObservation::PathObservation(ObservableObject& root, std::vector<Key> path) : root_(root), path_(std::move(path)) {
    links_.reserve(path_.size());
    for (std::size_t step = 0; step < path_.size(); ++step)
        links_.push_back(std::make_unique<PathLink>(PathLink{this, step, {}}));
}

PathObservation::~PathObservation() { unlinkFrom(0); }

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
                                           std::string(path_[step - 1].name()) + "\" of " + before->description());
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
    if (dependent) return root_.willChangeValueForKey(dependent);
    if (options & ObservingOld) old_ = orNullObject(ObservationEngine::readForObserver(root_, text));
    ObservableObject* told = observer.get();
    if (!told || !(options & ObservingPrior)) return;
    ObservationEngine::tellObserver(*told, text, root_, {.isPrior = true, .oldValue = old_}, context);
}

void PathObservation::stepDidChange(std::size_t step) {
    if (step + 1 < path_.size()) {
        unlinkFrom(step + 1);
        linkFrom(step + 1);
    }
    if (dependent) return root_.didChangeValueForKey(dependent);
    ObservableObject* told = observer.get();
    if (!told) return;
    KeyValueChange change{.oldValue = std::exchange(old_, Value())};
    if (options & ObservingNew) change.newValue = orNullObject(ObservationEngine::readForObserver(root_, text));
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
    if (ClassDescription::anyAdded()) unfollowDependencies(object, key);
}

void ObservationEngine::removeLink(ObservableObject& object, Key key, const PathLink& link) {
    KeyObservers* observers = object.observation_ ? object.observation_->find(key) : nullptr;
    if (!observers) return;
    for (std::size_t index = 0; index < observers->registrations.size(); ++index)
        if (observers->registrations[index].link == &link) return removeAt(object, key, index);
}

// Observing a key means to follow every dotted dependency that leads to it.
void ObservationEngine::followDependencies(ObservableObject& object, Key key) {
    const ClassDescription& description = object.classDescription();
    for (const auto* dependency : description.pathDependencies()) {
        if (dependency->dependent != key) {
            const auto dependents = description.dependentsOf(dependency->dependent);
            if (std::ranges::find(dependents, key) == dependents.end()) continue;
        }
        auto& followed = observationOf(object).followed;
        const auto known = std::ranges::find(followed, dependency, &Observation::Followed::dependency);
        if (known != followed.end()) {
            ++known->uses;
            continue;
        }
        auto path = std::make_shared<PathObservation>(object, dependency->path);
        path->dependent = dependency->dependent;
        followed.push_back({dependency, 1, path});
        path->follow();
    }
}

void ObservationEngine::unfollowDependencies(ObservableObject& object, Key key) {
    const ClassDescription& description = object.classDescription();
    for (const auto* dependency : description.pathDependencies()) {
        if (dependency->dependent != key) {
            const auto dependents = description.dependentsOf(dependency->dependent);
            if (std::ranges::find(dependents, key) == dependents.end()) continue;
        }
        auto& followed = object.observation_->followed;
        const auto known = std::ranges::find(followed, dependency, &Observation::Followed::dependency);
        if (known == followed.end() || --known->uses > 0) continue;
        const auto path = known->path;
        followed.erase(known);
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
    const bool follows = takeExpected(all.session, object, key);
    if (!follows) object.noteWillChange(key);

    OpenObject& opened = all.open(object);
    ++all.session.openPairs;
    if (OpenKey* known = opened.find(key)) {
        ++known->inner;
        return;
    }
    OpenKey open{.key = key, .followsFromAnother = follows};
    if (all.session.mutatedObject == &object) {
        open.mutation = all.session.mutation;
        all.session.mutatedObject = nullptr;
    }
    if (isObserved(object)) {
        if (const KeyObservers* observers = object.observation_->find(key)) {
            for (const Registration& each : observers->registrations)
                open.hasOld = open.hasOld || (each.options & ObservingOld);
            if (open.hasOld && object.hasValueForKey(key)) open.old = readForObserver(object, key.name());
        }
    }
    opened.set.insert(key);
    opened.keys.push_back(open);
    tell(object, key, open, true);

    if (follows) return;
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
    const bool follows = takeExpected(all.session, object, key);
    const Ref<ObservableObject> held(&object);
    if (!follows) {
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
        OpenKey closing = std::move(*open);
        if (all.session.mutatedObject == &object) {
            closing.mutation = all.session.mutation;
            all.session.mutatedObject = nullptr;
        }
        tell(object, key, closing, false);
        if (!follows) {
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

void ObservationEngine::tell(ObservableObject& object, Key key, const OpenKey& open, bool isPrior) {
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
            const PathLink* link = registration.link;
            const auto path = link->path->shared_from_this();
            try {
                isPrior ? path->stepWillChange() : path->stepDidChange(link->step);
            } catch (...) {
                announcements().keep(std::current_exception());
            }
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
            if (options & ObservingOld) change.oldValue = open.mutation->oldValue;
            if (!isPrior && (options & ObservingNew)) change.newValue = open.mutation->newValue;
        } else {
            if (options & ObservingOld) change.oldValue = orNullObject(open.old);
            if (!isPrior && (options & ObservingNew)) {
                if (!newValue)
                    newValue = orNullObject(object.hasValueForKey(key) ? readForObserver(object, key.name()) : Value());
                change.newValue = *newValue;
            }
        }
        change.isPrior = isPrior;
        tellObserver(*observer, key.name(), object, change, context);
    }
    current().endTelling();
}

void ObservationEngine::tellObserver(ObservableObject& observer, std::string_view keyPath, ObservableObject& object,
                                     const KeyValueChange& change, const void* context) {
    runApart([&] { observer.observeValueForKeyPathOfObjectChangeContext(keyPath, object, change, context); });
}

Value ObservationEngine::readForObserver(const ObservableObject& object, std::string_view keyPath) {
    Value value;
    runApart([&] { value = object.valueForKeyPath(keyPath); });
    return value;
}

} // namespace estatebook::platform
