// SPDX-License-Identifier: MIT
#include "platform/observation/ObservableObject.hpp"

#include "platform/observation/KeyPath.hpp"
#include "platform/observation/ObservationEngine.hpp"
#include "platform/values/Exception.hpp"
#include "platform/values/Set.hpp"

#include <string>

namespace estatebook::platform {

namespace {

std::vector<Key> stepsOf(std::string_view keyPath) {
    std::vector<Key> steps;
    for (std::string_view rest = keyPath;;) {
        const std::size_t point = rest.find('.');
        steps.push_back(Key::named(rest.substr(0, point)));
        if (point == std::string_view::npos) return steps;
        rest.remove_prefix(point + 1);
    }
}

} // namespace

void ObservableObject::dispose() const noexcept {
    endObserving();
    Object::dispose();
}

void ObservableObject::forgetObservers() const noexcept {
    ObservationEngine::objectEnds(const_cast<ObservableObject&>(*this));
}

void ObservableObject::findAnnouncing() const noexcept {
    switch (classDescription().announces()) {
    case Announces::ToObservers:
        announcing_ = Announcing::WhenObserved;
        break;
    case Announces::AsItSays:
        announcing_ = Announcing::Passed;
        break;
    case Announces::Always:
        announcing_ = Announcing::Always;
    }
}

bool ObservableObject::findHearer(std::span<const Key> keys) const {
    if (announcing_ == Announcing::Unknown) findAnnouncing();
    if (announcing_ != Announcing::Passed) return announcing_ != Announcing::WhenObserved;
    KeySet reached;
    for (const Key key : keys) {
        reached.insert(key);
        reached.insert(classDescription().dependentKeys(key).set);
    }
    return (observation_ && !(observation_->keys() & reached).empty()) || passesOn(reached);
}

void ObservableObject::observationBegins() noexcept {
    if (announcing_ == Announcing::Unknown) findAnnouncing();
    if (announcing_ == Announcing::WhenObserved) announcing_ = Announcing::Observed;
}

void ObservableObject::observationEnds() noexcept {
    if (announcing_ == Announcing::Observed) announcing_ = Announcing::WhenObserved;
}

Value ObservableObject::valueForKey(Key key) const {
    const Property* property = classDescription().property(key);
    return property && property->get ? property->get(*this) : valueForUndefinedKey(key);
}

bool ObservableObject::hasValueForKey(Key key) const {
    const Property* property = classDescription().property(key);
    return property && property->get;
}

void ObservableObject::setValueForKey(const Value& value, Key key) {
    const Property* property = classDescription().property(key);
    if (!property || !property->set) [[unlikely]]
        return setValueForUndefinedKey(value, key);
    if (property->isScalar && (value.isAbsent() || value.isNullObject())) [[unlikely]]
        return setNilValueForKey(key);
    property->set(*this, value);
}

Value ObservableObject::valueForUndefinedKey(Key key) const {
    throw UndefinedKeyException("[" + description() +
                                " valueForUndefinedKey:]: there is no value for the key \"" +
                                std::string(key.name()) + "\"");
}

void ObservableObject::setValueForUndefinedKey(const Value&, Key key) {
    throw UndefinedKeyException("[" + description() + " setValue:forUndefinedKey:]: the key \"" +
                                std::string(key.name()) + "\" cannot be written");
}

void ObservableObject::setNilValueForKey(Key key) {
    throw InvalidArgumentException("[" + description() + " setNilValueForKey:]: the key \"" +
                                   std::string(key.name()) + "\" holds a plain number and cannot be empty");
}

Value ObservableObject::valueForKeyPath(std::string_view keyPath) const {
    return valueForKeyPathOfValue(Value(Ref<Object>(const_cast<ObservableObject*>(this))), keyPath);
}

std::optional<Decimal> ObservableObject::sumOfMembers(Key, Key) const {
    return std::nullopt;
}

void ObservableObject::setValueForKeyPath(const Value& value, std::string_view keyPath) {
    const std::size_t point = keyPath.rfind('.');
    if (point == std::string_view::npos) return setValueForKey(value, keyPath);
    const Value owner = valueForKeyPath(keyPath.substr(0, point));
    if (owner.isAbsent()) return;
    const auto object = owner.as<ObservableObject>();
    if (!object)
        throw InvalidArgumentException("\"" + std::string(keyPath) +
                                       "\" cannot be written: it leads through " + owner.description());
    object->setValueForKey(value, keyPath.substr(point + 1));
}

void ObservableObject::willChangeValueForKey(Key key) {
    ObservationEngine::will(*this, key);
}

void ObservableObject::didChangeValueForKey(Key key) {
    ObservationEngine::did(*this, key);
}

void ObservableObject::closeAfterFailure(Key key) noexcept {
    try {
        didChangeValueForKey(key);
    } catch (...) {
        // The failed store was first.
    }
}

void ObservableObject::willChangeValueForKeyWithSetMutationUsingObjects(Key key, ChangeKind kind,
                                                                        const Ref<Set>& objects) {
    KeyValueChange mutation{.kind = kind};
    (kind == ChangeKind::Removal ? mutation.oldValue : mutation.newValue) = Value(Ref<Object>(objects));
    ObservationEngine::willMutate(*this, key, mutation);
}

void ObservableObject::didChangeValueForKeyWithSetMutationUsingObjects(Key key, ChangeKind kind,
                                                                       const Ref<Set>& objects) {
    KeyValueChange mutation{.kind = kind};
    (kind == ChangeKind::Removal ? mutation.oldValue : mutation.newValue) = Value(Ref<Object>(objects));
    ObservationEngine::didMutate(*this, key, mutation);
}

void ObservableObject::willChangeValuesAtIndexesForKey(ChangeKind kind, std::vector<std::size_t> indexes,
                                                       Key key) {
    ObservationEngine::willMutate(*this, key, {.kind = kind, .indexes = std::move(indexes)});
}

void ObservableObject::didChangeValuesAtIndexesForKey(ChangeKind kind, std::vector<std::size_t> indexes,
                                                      Key key) {
    ObservationEngine::didMutate(*this, key, {.kind = kind, .indexes = std::move(indexes)});
}

void ObservableObject::addObserverForKeyPathOptionsContext(ObservableObject& observer,
                                                           std::string_view keyPath, unsigned options,
                                                           const void* context) {
    const ObservationTarget target{&observer, context};
    ObservationEngine::observe(*this, stepsOf(keyPath), keyPath, target, options);
    ObservationEngine::tellInitially(*this, keyPath, target, options);
}

ObservationToken ObservableObject::observe(std::string_view keyPath, ObservableObject& observer,
                                           unsigned options, const void* context) {
    return observeFor({&observer, context}, keyPath, options);
}

ObservationToken ObservableObject::observeWithCallback(std::string_view keyPath,
                                                       Ref<ObserverCallback> callback, unsigned options) {
    return observeFor({.callback = std::move(callback)}, keyPath, options);
}

ObservationToken ObservableObject::observeFor(const ObservationTarget& target, std::string_view keyPath,
                                              unsigned options) {
    const std::vector<Key> steps = stepsOf(keyPath);
    const auto path = ObservationEngine::observe(*this, steps, keyPath, target, options);
    ObservationToken token;
    token.object_ = WeakReference(*this).detach();
    token.context_ = target.context;
    token.options_ = static_cast<std::uint8_t>(options);
    if (path) {
        token.told_ = path;
    } else {
        token.key_ = steps.front();
        token.told_ = target.callback;
        if (target.observer) token.observer_ = WeakReference(*target.observer).detach();
    }
    ObservationEngine::tellInitially(*this, keyPath, target, options);
    return token;
}

namespace {

template <class MatchesContext>
void removeLatestObserver(ObservableObject& object, ObservableObject& observer, std::string_view keyPath,
                          MatchesContext matchesContext) {
    const std::vector<Key> steps = stepsOf(keyPath);
    Observation* known = ObservationEngine::observationIfAny(observer);
    if (const void* target = known ? known->weak : nullptr) {
        const bool isRemoved =
            steps.size() == 1
                ? ObservationEngine::removeLatest(
                      object, steps.front(), target,
                      [&](const Registration& each) { return matchesContext(each.context); })
                : ObservationEngine::removeLatestPath(object, target, [&](const PathObservation& each) {
                      return each.text == keyPath && matchesContext(each.context);
                  });
        if (isRemoved) return;
    }
    throw RangeException("Cannot remove an observer " + observer.description() + " for the key path \"" +
                         std::string(keyPath) + "\" from " + object.description() +
                         " because it is not registered as an observer.");
}

} // namespace

void ObservableObject::removeObserverForKeyPathContext(ObservableObject& observer, std::string_view keyPath,
                                                       const void* context) {
    removeLatestObserver(*this, observer, keyPath, [&](const void* theirs) { return theirs == context; });
}

void ObservableObject::removeObserverForKeyPath(ObservableObject& observer, std::string_view keyPath) {
    removeLatestObserver(*this, observer, keyPath, [](const void*) { return true; });
}

void ObservableObject::observeValueForKeyPathOfObjectChangeContext(std::string_view keyPath,
                                                                   ObservableObject& object,
                                                                   const KeyValueChange&, const void*) {
    throw InternalInconsistencyException(description() + ": a change of the key path \"" +
                                         std::string(keyPath) + "\" of " + object.description() +
                                         " was received but not handled");
}

} // namespace estatebook::platform
