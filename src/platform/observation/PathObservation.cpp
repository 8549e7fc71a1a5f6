// SPDX-License-Identifier: MIT
#include "platform/observation/PathObservation.hpp"

#include "platform/observation/ObservationEngine.hpp"
#include "platform/values/Exception.hpp"

#include <exception>
#include <utility>

namespace estatebook::platform {

namespace {

ESTATEBOOK_QUICK_THREAD_LOCAL std::uint64_t pathsMade = 0;

Value orNullObject(Value value) {
    if (value.isAbsent()) value = NullObject{};
    return value;
}

} // namespace

PathObservation::PathObservation(ObservableObject& root, std::vector<Key> path)
    : Object(Counting::Local), number(++pathsMade), root_(root), path_(std::move(path)) {
    links_.reserve(path_.size());
    for (std::size_t step = 0; step < path_.size(); ++step) links_.push_back({this, step, {}});
}

PathObservation::~PathObservation() {
    unlinkFrom(0);
}

const void* PathObservation::told() const noexcept {
    if (callback) return callback.get();
    if (observer.block()) return observer.block();
    return this;
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
    } else if (ObservableObject* before = links_[step - 1].hop.get()) {
        const Value value = before->valueForKey(path_[step - 1]);
        if (value.isAbsent()) return;
        hop = value.as<ObservableObject>().get();
        if (!hop)
            throw InvalidArgumentException("a collection or plain value cannot be observed: \"" +
                                           std::string(path_[step - 1].name()) + "\" of " +
                                           before->description());
    }
    if (!hop) return;
    links_[step].hop = WeakReference(*hop);
    ObservationEngine::add(*hop,
                           {.target = &links_[step], .key = path_[step], .kind = Registration::Kind::Link});
    if (step + 1 < path_.size()) linkFrom(step + 1);
}

void PathObservation::unlinkFrom(std::size_t step) {
    for (; step < links_.size(); ++step) {
        PathLink& link = links_[step];
        if (ObservableObject* hop = link.hop.get())
            ObservationEngine::removeLatest(*hop, path_[step], &link,
                                            [](const Registration&) { return true; });
        link.hop = {};
    }
}

void PathObservation::stepWillChange() {
    if (dependent)
        return ObservationEngine::announceFromPath(root_, dependent,
                                                   &ObservableObject::willChangeValueForKey);
    if (!isAwaited()) return;
    const Ref<ObservableObject> held(&root_);
    if (options & ObservingOld) old_ = orNullObject(ObservationEngine::readForObserver(root_, text));
    if (options & ObservingPrior) tell({.isPrior = true, .oldValue = old_});
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
    if (!isAwaited()) return;
    const Ref<ObservableObject> held(&root_);
    KeyValueChange change{.oldValue = std::exchange(old_, Value())};
    if (options & ObservingNew)
        change.newValue = orNullObject(ObservationEngine::readForObserver(root_, text));
    tell(change);
}

void PathObservation::tell(const KeyValueChange& change) {
    if (const Ref<ObserverCallback> function = callback)
        ObservationEngine::runForObserver([&] { function->changed(root_, change); });
    else if (const Ref<ObservableObject> told(observer.get()); told)
        ObservationEngine::runForObserver(
            [&] { told->observeValueForKeyPathOfObjectChangeContext(text, root_, change, context); });
}

} // namespace estatebook::platform
