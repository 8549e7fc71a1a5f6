// SPDX-License-Identifier: MIT
#include "platform/observation/ObservationToken.hpp"

#include "platform/observation/ObservationEngine.hpp"

#include <utility>

namespace estatebook::platform {

ObservationToken::ObservationToken(ObservationToken&& other) noexcept
    : object_(std::exchange(other.object_, nullptr)), observer_(std::exchange(other.observer_, nullptr)),
      told_(std::move(other.told_)), context_(other.context_), key_(other.key_), options_(other.options_) {}

ObservationToken& ObservationToken::operator=(ObservationToken&& other) noexcept {
    ObservationToken taken(std::move(other));
    std::swap(object_, taken.object_);
    std::swap(observer_, taken.observer_);
    std::swap(told_, taken.told_);
    std::swap(context_, taken.context_);
    std::swap(key_, taken.key_);
    std::swap(options_, taken.options_);
    return *this;
}

ObservationToken::~ObservationToken() {
    end();
}

ObservationToken::operator bool() const noexcept {
    return object_ && object_->object;
}

void ObservationToken::end() noexcept {
    const WeakReference object = WeakReference::adopt(std::exchange(object_, nullptr));
    const WeakReference observer = WeakReference::adopt(std::exchange(observer_, nullptr));
    Ref<Object> told = std::move(told_);
    if (object.get()) takeAway(*object.get(), observer.block(), told.get());
    if (told) Announcements::endAfterCall(std::move(told));
}

void ObservationToken::takeAway(ObservableObject& object, const WeakBlock* observer, Object* told) noexcept {
    if (!key_) {
        const auto* path = static_cast<const PathObservation*>(told);
        ObservationEngine::removeLatestPath(object, path->told(),
                                            [&](const PathObservation& each) { return &each == path; });
        return;
    }
    const void* target = told ? static_cast<const void*>(static_cast<ObserverCallback*>(told)) : observer;
    // Registrations of one observer that are alike are as good as each other.
    ObservationEngine::removeLatest(object, key_, target, [&](const Registration& each) {
        return each.context == context_ && each.options == options_;
    });
}

} // namespace estatebook::platform
