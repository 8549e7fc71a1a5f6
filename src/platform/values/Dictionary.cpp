// SPDX-License-Identifier: MIT
#include "platform/values/Dictionary.hpp"

#include <algorithm>

namespace estatebook::platform {

Ref<Dictionary> Dictionary::make(std::vector<Entry> entries) {
    return Ref<Dictionary>(new Dictionary(std::move(entries)));
}

Dictionary::Dictionary(std::vector<Entry> entries) : Object(Counting::Shared) {
    for (Entry& entry : entries) {
        const auto known = std::ranges::find(entries_, entry.first, &Entry::first);
        if (known == entries_.end())
            entries_.push_back(std::move(entry));
        else
            known->second = std::move(entry.second);
    }
}

Value Dictionary::find(std::string_view key) const noexcept {
    const auto found = std::ranges::find(entries_, key, &Entry::first);
    return found == entries_.end() ? Value() : found->second;
}

bool Dictionary::isEqual(const Object& other) const noexcept {
    const auto* dictionary = dynamic_cast<const Dictionary*>(&other);
    return dictionary && dictionary->count() == count() &&
           std::ranges::all_of(entries_, [&](const Entry& entry) {
               return std::ranges::any_of(dictionary->entries_,
                                          [&](const Entry& theirs) { return theirs == entry; });
           });
}

std::string Dictionary::description() const {
    std::string text = "{";
    for (const auto& [key, value] : entries_) text += "\n    " + key + " = " + value.description() + ";";
    return text + "\n}";
}

} // namespace estatebook::platform
