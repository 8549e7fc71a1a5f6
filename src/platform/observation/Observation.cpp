// SPDX-License-Identifier: MIT
#include "platform/observation/Observation.hpp"

#include "platform/observation/ObservationEngine.hpp"

#include <algorithm>
#include <utility>

namespace estatebook::platform {

WeakReference::WeakReference(ObservableObject& object) {
    Observation& observation = ObservationEngine::observationOf(object);
    if (!observation.weak) observation.weak = new WeakBlock(object);
    block_ = observation.weak;
    block_->hold();
}

// ObserverLists

ObserverList& ObserverLists::findOrMake(Key key) {
    if (ObserverList* known = find(key)) return *known;
    const auto place = static_cast<std::ptrdiff_t>(placeOf(key));
    auto& made = **lists_.insert(lists_.begin() + place, std::make_unique<ObserverList>(key));
    keys_.insert(key);
    return made;
}

void ObserverLists::dropEmpty() {
    std::erase_if(lists_, [](const auto& list) { return list->empty() && !list->isTelling(); });
    keys_ = {};
    for (const auto& list : lists_) keys_.insert(list->key());
}

// Observation

Observation::~Observation() {
    if (const ObserverLists* const all = lists())
        delete all;
    else
        one_.letGo();
    if (weak) weak->letGo();
}

ObserverLists& Observation::makeLists() {
    if (ObserverLists* known = lists()) return *known;
    auto made = std::make_unique<ObserverLists>();
    if (!isEmpty()) made->findOrMake(one_.key).add(one_);
    one_ = {};
    one_.kind = Registration::Kind::Lists;
    one_.target = made.get();
    return *made.release();
}

void Observation::add(const Registration& registration) {
    if (isEmpty())
        one_ = registration;
    else
        makeLists().findOrMake(registration.key).add(registration);
}

void Observation::dropEmpty() {
    ObserverLists* const all = lists();
    if (!all) return;
    all->dropEmpty();
    if (!all->empty()) return;
    delete all;
    one_ = {};
}

} // namespace estatebook::platform
