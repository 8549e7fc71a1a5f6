// SPDX-License-Identifier: MIT
#include "platform/values/Set.hpp"

#include <algorithm>
#include <utility>

namespace estatebook::platform {

DistinctValues::DistinctValues(std::vector<Value> members) : Object(Counting::Shared) {
    members_.reserve(members.size());
    for (Value& member : members) append(std::move(member));
}

void DistinctValues::append(Value member) {
    if (contains(member)) return;
    members_.push_back(std::move(member));
    if (members_.size() == IndexedFrom)
        for (std::size_t place = 0; place < IndexedFrom; ++place) addToIndex(place);
    else if (members_.size() > IndexedFrom)
        addToIndex(members_.size() - 1);
}

void DistinctValues::addToIndex(std::size_t place) {
    placesByHash_.emplace(members_[place].hash(), place);
}

std::optional<std::size_t> DistinctValues::indexOf(const Value& member) const noexcept {
    if (placesByHash_.empty()) {
        const auto found = std::find(members_.begin(), members_.end(), member);
        if (found == members_.end()) return std::nullopt;
        return static_cast<std::size_t>(found - members_.begin());
    }
    const auto [first, last] = placesByHash_.equal_range(member.hash());
    for (auto place = first; place != last; ++place)
        if (members_[place->second] == member) return place->second;
    return std::nullopt;
}

std::string DistinctValues::description() const {
    std::string text = "{(";
    for (std::size_t index = 0; index < members_.size(); ++index)
        text += (index ? ",\n    " : "\n    ") + members_[index].description();
    return text + "\n)}";
}

Ref<Set> Set::make(std::vector<Value> members) {
    return Ref<Set>(new Set(std::move(members)));
}

bool Set::isEqual(const Object& other) const noexcept {
    const auto* set = dynamic_cast<const Set*>(&other);
    return set && set->count() == count() &&
           std::ranges::all_of(members(), [&](const Value& member) { return set->contains(member); });
}

Ref<OrderedSet> OrderedSet::make(std::vector<Value> members) {
    return Ref<OrderedSet>(new OrderedSet(std::move(members)));
}

Ref<Array> OrderedSet::array() const {
    return Array::make({members().begin(), members().end()});
}

bool OrderedSet::isEqual(const Object& other) const noexcept {
    const auto* set = dynamic_cast<const OrderedSet*>(&other);
    return set && std::ranges::equal(members(), set->members());
}

} // namespace estatebook::platform
