// SPDX-License-Identifier: MIT
#pragma once

/// BookObjects: the objects of a book, each with its identifier.
///
///     const auto objects = BookObjects::ofDocument(document, *context);
///     objects.lettings.front().object->balance();
///
/// What came without an identifier has got one. Lists stand in the document's order, or else in that of creation.

#include "estatebook/document/BookDocument.hpp"

#include "platform/persistence/ManagedObjectContext.hpp"
#include "store/TKProperty.hpp"
#include "store/TKTenant.hpp"
#include "tenure/TKTenure.hpp"

#include <string>
#include <unordered_map>
#include <vector>

namespace estatebook {

class BookObjects {
public:
    template <class T>
    struct Entry {
        std::string id;
        platform::Ref<T> object;
    };

    std::vector<Entry<TKProperty>> properties;
    std::vector<Entry<TKTenant>> tenants;
    std::vector<Entry<TKTenure>> lettings;

    /// Makes all objects of the document, its settings included, in an empty context.
    [[nodiscard]] static BookObjects ofDocument(const document::BookDocument& document,
                                                platform::ManagedObjectContext& context);
    /// The same in a context that is to be saved: the identifiers that the document gives are kept, settings stand in its order,
    /// and one that it gives as null is kept as the null object, to be told from one that somebody only looked for.
    static BookObjects keptOfDocument(const document::BookDocument& document,
                                      platform::ManagedObjectContext& context);
    /// The objects that the store of a context holds. None of them wakes. Raises ObjectInaccessibleException when the
    /// store cannot be read.
    [[nodiscard]] static BookObjects ofStore(const platform::Ref<platform::ManagedObjectContext>& context);

    /// The identifier of an account, a tenure, a transaction or a note. The first call for one of a store's transactions or notes
    /// reads the identifiers of all of them, and whatever raises there.
    [[nodiscard]] const std::string& identifierOf(const platform::ManagedObject& object) const;

private:
    class Maker;

    void readIdentifiersOfParts() const;

    mutable std::unordered_map<const platform::ManagedObject*, std::string> identifiers_;
    /// Where there are more identifiers to be read; else null.
    mutable platform::Ref<platform::ManagedObjectContext> unread_;
};

} // namespace estatebook
