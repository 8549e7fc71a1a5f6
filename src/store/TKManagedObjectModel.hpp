// SPDX-License-Identifier: MIT
#pragma once

/// TKManagedObjectModel: where a book begins.
///
///     auto context = TKManagedObjectModel::inMemoryManagedObjectContext();
///     auto flat = context->insertNewObject<TKProperty>("Property");
///     flat->setName(String::make("Flat 2"));
///
/// The trap: making the context reports nothing. When the model resource is missing or damaged, the context has no
/// entities and every insertion raises; `modelError` tells why.

#include "platform/persistence/ManagedObjectContext.hpp"

namespace estatebook {

class ESTATEBOOK_API TKManagedObjectModel final {
public:
    TKManagedObjectModel() = delete;

    /// inMemoryManagedObjectContext
    /// A new context over the model resource "EstateBook", bound to the main queue, without a store: its
    /// objects live in memory only and vanish with it. Two contexts share nothing.
    [[nodiscard]] static platform::Ref<platform::ManagedObjectContext> inMemoryManagedObjectContext();

    /// Why the model resource cannot be used: the domain "Persistence" and a platform::ModelErrorCode. Null when it can be.
    [[nodiscard]] static platform::Ref<platform::Error> modelError();
};

} // namespace estatebook
