// SPDX-License-Identifier: MIT
#pragma once

/// ImpliedSettings: what a book has set though the document that it was made of does not say it.
///
/// A document without a zone or a billing mode is read with those of the computer and of the rules. Its book has both as settings, so
/// that it is reckoned the same wherever it is opened, and remembers that the document did not give them: as long as they are as they
/// were made, the document comes back without them. Once somebody sets another value, it is the book's own.
///
///     if (const auto error = takeDocument(document, *context, *store, origin)) throw storeFailure(file, *error);
///     book.save();
///
/// The currency is never implied: nobody knows it but the landlord.

#include "estatebook/document/BookDocument.hpp"

#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/persistence/store/Store.hpp"

#include <optional>
#include <string_view>

namespace estatebook {

/// Makes the objects of a document, its settings and the implied ones, in a context whose store holds nothing but settings. The
/// document's settings take the place of those of the same name; one that is there and that it does not give stays. What
/// the store then remembers is saved at once; the objects are the context's to save. REQUIRES: the default zone is the one in which
/// the document was read. Raises ObjectInaccessibleException when a setting cannot be read.
[[nodiscard]] std::optional<platform::StoreError> takeDocument(const document::BookDocument& document,
                                                               platform::ManagedObjectContext& context,
                                                               platform::Store& store,
                                                               const platform::CommitOrigin& origin);

/// Which setting an entry is about that a store keeps; none for an entry of another kind.
[[nodiscard]] std::optional<std::string_view> impliedSettingOf(std::string_view entry);

/// The settings of a store that no document gave.
class ImpliedSettings {
public:
    [[nodiscard]] static platform::StoreResult<ImpliedSettings> of(const platform::Store& store);

    /// Whether the setting was implied and is as it was made.
    [[nodiscard]] bool has(std::string_view name, const document::SettingValue& value) const;

private:
    explicit ImpliedSettings(platform::Store::Metadata marks) : marks_(std::move(marks)) {}

    platform::Store::Metadata marks_;
};

} // namespace estatebook
