// SPDX-License-Identifier: MIT
#pragma once

/// Dictionary: an immutable, counted table from text keys to values, in the order of first insertion.
///
///     Ref<Dictionary> metadata = Dictionary::make({{"what", String::make("Rent")}});
///     metadata->find("what").string();
///     metadata->find("other").isAbsent();

#include "platform/values/Value.hpp"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace estatebook::platform {

class ESTATEBOOK_API Dictionary final : public Object {
public:
    using Entry = std::pair<std::string, Value>;

    /// Of entries with one key the last value holds, at the first one's place.
    [[nodiscard]] static Ref<Dictionary> make(std::vector<Entry> entries);

    [[nodiscard]] std::size_t count() const noexcept { return entries_.size(); }
    [[nodiscard]] std::span<const Entry> entries() const noexcept { return entries_; }
    /// The value of the key; absent when there is none. Logarithmic in the number of entries.
    [[nodiscard]] Value find(std::string_view key) const noexcept;

    [[nodiscard]] bool isEqual(const Object& other) const noexcept override;
    [[nodiscard]] std::size_t hash() const noexcept override { return count(); }
    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Dictionary"; }

private:
    explicit Dictionary(std::vector<Entry> entries);
    [[nodiscard]] const Entry* entry(std::string_view key) const noexcept;

    // Few entries are searched in line; the places in the order of their keys are kept for more only.
    static constexpr std::size_t IndexedFrom = 9;
    std::vector<Entry> entries_;
    std::vector<std::size_t> placesByKey_;
};

} // namespace estatebook::platform
