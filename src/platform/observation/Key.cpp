// SPDX-License-Identifier: MIT
#include "platform/observation/Key.hpp"

#include "platform/observation/KeyVocabulary.hpp"
#include "platform/values/Exception.hpp"

#include <deque>
#include <limits>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

namespace estatebook::platform {

namespace {

class KeyTable {
public:
    static KeyTable& shared() {
        static auto* table = new KeyTable; // outlives every static object that may still name a key
        return *table;
    }

    std::optional<Key> find(std::string_view name) const {
        const std::shared_lock lock(mutex_);
        const auto found = numbers_.find(name);
        if (found == numbers_.end()) return std::nullopt;
        return Key(found->second);
    }

    Key add(std::string_view name) {
        const std::unique_lock lock(mutex_);
        const auto found = numbers_.find(name);
        if (found != numbers_.end()) return Key(found->second);
        const std::size_t number = libraryKeyCount + added_.size();
        if (number > std::numeric_limits<std::uint16_t>::max())
            throw InvalidArgumentException("there are too many keys to name \"" + std::string(name) + "\"");
        numbers_.emplace(added_.emplace_back(name), static_cast<std::uint16_t>(number));
        return Key(static_cast<std::uint16_t>(number));
    }

    std::string_view name(std::uint16_t number) const noexcept {
        if (number < libraryKeyCount) return libraryKeyNames[number];
        const std::shared_lock lock(mutex_);
        const std::size_t index = number - libraryKeyCount;
        return index < added_.size() ? std::string_view(added_[index]) : std::string_view();
    }

private:
    KeyTable() {
        for (std::size_t number = 1; number < libraryKeyCount; ++number)
            numbers_.emplace(libraryKeyNames[number], static_cast<std::uint16_t>(number));
    }

    mutable std::shared_mutex mutex_;
    std::unordered_map<std::string_view, std::uint16_t> numbers_;
    std::deque<std::string> added_; // a deque never moves what it holds, so the names stay valid
};

} // namespace

Key Key::named(std::string_view name) {
    if (const auto known = find(name)) return *known;
    if (name.empty() || name.find('.') != std::string_view::npos)
        throw InvalidArgumentException("\"" + std::string(name) +
                                       "\" is no key: it is empty or holds a point");
    return KeyTable::shared().add(name);
}

std::optional<Key> Key::find(std::string_view name) {
    return KeyTable::shared().find(name);
}

std::string_view Key::name() const noexcept {
    return KeyTable::shared().name(number_);
}

} // namespace estatebook::platform
