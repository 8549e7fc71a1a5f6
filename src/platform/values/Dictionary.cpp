// SPDX-License-Identifier: MIT
#include "platform/values/Dictionary.hpp"

#include <algorithm>
#include <numeric>

namespace estatebook::platform {

Ref<Dictionary> Dictionary::make(std::vector<Entry> entries) {
    return Ref<Dictionary>(new Dictionary(std::move(entries)));
}

Dictionary::Dictionary(std::vector<Entry> entries) : Object(Counting::Shared) {
    // Entries of one key stand next to each other, in the order given.
    std::vector<std::size_t> order(entries.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto keyAt = [&](std::size_t place) -> const std::string& { return entries[place].first; };
    std::ranges::stable_sort(order, {}, keyAt);
    std::vector<bool> repeated(entries.size());
    for (std::size_t first = 0, next = 1; next < order.size(); ++next) {
        if (keyAt(order[next]) != keyAt(order[first])) {
            first = next;
            continue;
        }
        entries[order[first]].second = std::move(entries[order[next]].second);
        repeated[order[next]] = true;
    }
    entries_.reserve(entries.size());
    for (std::size_t place = 0; place < entries.size(); ++place)
        if (!repeated[place]) entries_.push_back(std::move(entries[place]));

    if (entries_.size() < IndexedFrom) return;
    placesByKey_.resize(entries_.size());
    std::iota(placesByKey_.begin(), placesByKey_.end(), std::size_t{0});
    std::ranges::sort(placesByKey_, {},
                      [&](std::size_t place) -> const std::string& { return entries_[place].first; });
}

const Dictionary::Entry* Dictionary::entry(std::string_view key) const noexcept {
    if (placesByKey_.empty()) {
        const auto found = std::ranges::find(entries_, key, &Entry::first);
        return found == entries_.end() ? nullptr : &*found;
    }
    const auto found = std::ranges::lower_bound(
        placesByKey_, key, {}, [&](std::size_t place) -> std::string_view { return entries_[place].first; });
    return found != placesByKey_.end() && entries_[*found].first == key ? &entries_[*found] : nullptr;
}

Value Dictionary::find(std::string_view key) const noexcept {
    const Entry* found = entry(key);
    return found ? found->second : Value();
}

bool Dictionary::isEqual(const Object& other) const noexcept {
    const auto* dictionary = dynamic_cast<const Dictionary*>(&other);
    return dictionary && dictionary->count() == count() &&
           std::ranges::all_of(entries_, [&](const Entry& mine) {
               const Entry* theirs = dictionary->entry(mine.first);
               return theirs && theirs->second == mine.second;
           });
}

std::string Dictionary::description() const {
    std::string text = "{";
    for (const auto& [key, value] : entries_) text += "\n    " + key + " = " + value.description() + ";";
    return text + "\n}";
}

} // namespace estatebook::platform
