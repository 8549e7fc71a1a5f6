// SPDX-License-Identifier: MIT
#include "platform/observation/Telling.hpp"

#include "platform/observation/KeyVocabulary.hpp"
#include "platform/observation/ObservationEngine.hpp"
#include "platform/observation/ObserverCallback.hpp"

#include <algorithm>
#include <exception>

namespace estatebook::platform {

namespace {

Value orNullObject(Value value) {
    if (value.isAbsent()) value = NullObject{};
    return value;
}

} // namespace

constinit Constant<KeyValueChange> Telling::plainSetting_;

std::vector<Telling::OpenedPath> Telling::before(Value old) {
    isPrior_ = true;
    old_ = std::move(old);
    if (Observation* observation = ObservationEngine::observationIfAny(object_)) tellAll(*observation);
    return std::move(opened_);
}

void Telling::after() {
    if (Observation* observation = ObservationEngine::observationIfAny(object_)) tellAll(*observation);
}

void Telling::after(Value old, std::vector<OpenedPath> opened) {
    old_ = std::move(old);
    opened_ = std::move(opened);
    for (const auto& [path, step] : opened_) tellPath(*path, step);
    after();
}

void Telling::tellAll(Observation& observation) {
    if (const Registration* only = observation.only()) {
        if (only->key != key_) return;
        if (only->kind == Registration::Kind::Link) return tellLink(*only->link());
        Apart apart(Announcements::current());
        tellPerson(apart, *only);
    } else if (ObserverLists* lists = observation.lists()) {
        if (ObserverList* list = lists->find(key_)) tellList(*list);
    }
}

[[gnu::always_inline]] inline const KeyValueChange& Telling::changeFor(Apart& apart, unsigned options) {
    const bool isPlain = (options & (ObservingNew | ObservingOld)) == 0 && !mutation_ && !isPrior_;
    return isPlain ? plainSetting() : changeWithValues(apart, options & (ObservingNew | ObservingOld));
}

// The registration may be gone or elsewhere once foreign code has run.
[[gnu::always_inline]] inline void Telling::tellPerson(Apart& apart, const Registration& registration) {
    const std::uint8_t options = registration.options;
    if (isPrior_ && !(options & ObservingPrior)) return;
    if (registration.kind == Registration::Kind::Observer) {
        const Ref<ObservableObject> observer(registration.observer());
        if (!observer) return;
        const void* context = registration.context;
        const KeyValueChange& change = changeFor(apart, options);
        apart.run(
            [&] { observer->observeValueForKeyPathOfObjectChangeContext(name_, object_, change, context); });
    } else if (registration.kind == Registration::Kind::Callback) {
        // Reading a value for it may end its token.
        const Ref<ObserverCallback> callback(registration.callback());
        apart.call(*callback, object_, changeFor(apart, options));
    }
}

// Gives the place of the first who wants to hear more than that there was a change.
std::size_t Telling::tellPlainOnes(const ObserverList& list, std::size_t place, std::size_t count) {
    const KeyValueChange& change = plainSetting();
    Apart apart(Announcements::current());
    for (; place < count; ++place) {
        const Registration& each = list.at(place);
        if (!each.isPlain()) break;
        if (each.kind == Registration::Kind::Callback) {
            apart.call(*each.callback(), object_, change);
        } else if (const Ref<ObservableObject> observer(each.observer()); observer) {
            const void* context = each.context;
            apart.run([&] {
                observer->observeValueForKeyPathOfObjectChangeContext(name_, object_, change, context);
            });
        }
    }
    return place;
}

void Telling::tellList(ObserverList& list) {
    const std::size_t count = list.places();
    list.beginTelling();
    for (std::size_t place = 0; place < count;) {
        if (list.at(place).kind == Registration::Kind::Link) {
            tellLink(*list.at(place++).link());
            continue;
        }
        if (!isPrior_ && !mutation_) {
            place = tellPlainOnes(list, place, count);
            if (place == count) break;
        }
        Apart apart(Announcements::current());
        do tellPerson(apart, list.at(place));
        while (++place < count && list.at(place).kind != Registration::Kind::Link);
    }
    list.endTelling();
    if (list.empty()) ObservationEngine::dropEmpty(object_);
}

void Telling::tellLink(PathLink& link) {
    const Ref<PathObservation> path(link.path);
    const std::size_t step = link.step;
    if (isPrior_) {
        if (path->dependent) opened_.emplace_back(path, step);
    } else if (std::ranges::find(opened_, path, &OpenedPath::first) != opened_.end()) {
        return;
    }
    tellPath(*path, step);
}

void Telling::tellPath(PathObservation& path, std::size_t step) {
    try {
        isPrior_ ? path.stepWillChange() : path.stepDidChange(step);
    } catch (...) {
        Announcements::current().keep(std::current_exception());
    }
}

const KeyValueChange& Telling::changeWithValues(Apart& apart, unsigned options) {
    if (change_ && options_ == options) return *change_;
    options_ = static_cast<std::uint8_t>(options);
    KeyValueChange& change = change_.emplace();
    change.isPrior = isPrior_;
    if (mutation_) {
        change.kind = mutation_->kind;
        change.indexes = mutation_->indexes;
    }
    if (options & ObservingOld) change.oldValue = orNullObject(old_.value_or(Value()));
    if (!isPrior_ && (options & ObservingNew)) {
        if (!newValue_) {
            Value read;
            apart.run([&] { read = ObservationEngine::newValueOf(object_, key_, mutation_); });
            newValue_ = orNullObject(std::move(read));
        }
        change.newValue = *newValue_;
    }
    return change;
}

} // namespace estatebook::platform
