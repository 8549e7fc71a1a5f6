// SPDX-License-Identifier: MIT
#pragma once

/// Identifiers: names for objects that came without one, the first of KIND-1, KIND-2 … that is free.
///
///     Identifiers ids("tenure");
///     for (const auto& tenure : document.tenures) ids.take(tenure.id);
///     for (const auto& tenure : document.tenures) show(ids.of(tenure.id));
///
/// The same objects in the same order always get the same names. REQUIRES: what is taken outlives it.

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace estatebook {

class Identifiers {
public:
    explicit Identifiers(std::string_view kind) : kind_(kind) {}

    /// False when another object has it already.
    bool take(const std::optional<std::string>& own) { return !own || taken_.insert(*own).second; }
    /// The object's own one, or a new one.
    [[nodiscard]] std::string of(const std::optional<std::string>& own) {
        if (own) return *own;
        std::string made;
        do made = std::string(kind_) + "-" + std::to_string(++last_);
        while (taken_.contains(made));
        return made;
    }

private:
    std::string_view kind_;
    std::unordered_set<std::string_view> taken_;
    std::size_t last_ = 0;
};

} // namespace estatebook
