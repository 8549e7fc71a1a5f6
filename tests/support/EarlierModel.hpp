// SPDX-License-Identifier: MIT
#pragma once

/// EarlierModel: the library's own model as an earlier program may have known it, without some entities and properties.

#include "support/StoreKinds.hpp"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace estatebook::test {

struct EarlierModel {
    /// By their names. Whatever leads to them is left out, too. REQUIRES: nothing has them as parents.
    std::set<std::string, std::less<>> withoutEntities{};
    /// As "TKProperty.sublease": a class, and an attribute that it declares.
    std::set<std::string, std::less<>> withoutAttributes{};
    bool hasIndexes = true;
    /// Whether entities stand in another order; 0 leaves them in theirs.
    std::uint64_t shuffledBy = 0;

    /// Something of all that by chance.
    [[nodiscard]] static EarlierModel any(std::uint64_t seed);

    /// Good for stores, but not for contexts: its classes are not those of the library any more. Throws when there is no such model.
    [[nodiscard]] platform::Ref<platform::ManagedObjectModel> make() const;
};

/// What a store keeps, as the text that a store of the earlier model gives for it: each row with the properties that the model
/// knows and how many others are set, and all commits, changes, identifiers and entries. Throws when it cannot be read.
[[nodiscard]] std::string contentAs(const platform::ManagedObjectModel& earlier,
                                    const platform::Store& store);

} // namespace estatebook::test
