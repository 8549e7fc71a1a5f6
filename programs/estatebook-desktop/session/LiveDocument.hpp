// SPDX-License-Identifier: MIT
#pragma once

/// LiveDocument: what a context holds, unsaved edits included, as the data of a document.
///
/// Identifiers are those that the objects came with; properties and tenants without one get one, since tenures refer to
/// them. The trap: a document holds no end date that is before its start date; it is left out.

#include "estatebook/document/BookDocument.hpp"

#include "platform/persistence/ManagedObjectContext.hpp"

namespace estatebook::desktop {

/// Reads every object of the context. Raises ObjectInaccessibleException when the store cannot be read.
[[nodiscard]] document::BookDocument liveDocument(platform::ManagedObjectContext& context);

} // namespace estatebook::desktop
