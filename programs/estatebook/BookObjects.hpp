// SPDX-License-Identifier: MIT
#pragma once

/// BookObjects: the objects of a book document, each with its identifier.
///
///     const auto objects = BookObjects::ofDocument(document, *context);
///     objects.lettings.front().object->balance();
///
/// What came without an identifier has got one. Lists stand in the document's order.

#include "estatebook/document/BookDocument.hpp"

#include "platform/persistence/ManagedObjectContext.hpp"
#include "store/TKProperty.hpp"
#include "store/TKTenant.hpp"
#include "tenure/TKTenure.hpp"

#include <string>
#include <unordered_map>
#include <vector>

namespace estatebook {

struct BookObjects {
    template <class T>
    struct Entry {
        std::string id;
        platform::Ref<T> object;
    };

    std::vector<Entry<TKProperty>> properties;
    std::vector<Entry<TKTenant>> tenants;
    std::vector<Entry<TKTenure>> lettings;
    /// Of these, and of transactions and notes.
    std::unordered_map<const platform::ManagedObject*, std::string> identifiers;

    /// Makes all objects of the document, its settings included, in an empty context.
    [[nodiscard]] static BookObjects ofDocument(const document::BookDocument& document,
                                                platform::ManagedObjectContext& context);
};

} // namespace estatebook
