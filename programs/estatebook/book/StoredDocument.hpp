// SPDX-License-Identifier: MIT
#pragma once

/// StoredDocument: what a store holds, as the data of a document.
///
///     const auto stored = StoredDocument::of(*store);
///     if (!stored) throw storeFailure(file, stored.error());
///     std::cout << document::BookWriter::write(stored->document).text;
///
/// Rows are read as they are and no object wakes, so that neither the day nor the zone matters. Lists stand in the order in
/// which their objects were made. An object has the identifier that it came with. One that came without gets a new one only
/// where something in the document refers to it, the same that lists show.
///
/// The trap: a store can hold what a document cannot, such as an archived object in a setting, or a payment that belongs
/// to nothing. That is left out and named. (What cannot stand in a document's text is not looked for; BookWriter names it.)

#include "estatebook/document/BookDocument.hpp"
#include "estatebook/document/BookWriter.hpp"

#include "platform/persistence/store/Store.hpp"

#include <vector>

namespace estatebook {

struct StoredDocument {
    document::BookDocument document;
    std::vector<document::LeftOut> leftOut;
    /// Whether the document names no zone because the book got its own only when it was made (ImpliedSettings). The document is to be
    /// written with the book's zone as the default one.
    bool isZoneImplied = false;

    [[nodiscard]] static platform::StoreResult<StoredDocument> of(const platform::Store& store);
};

} // namespace estatebook
