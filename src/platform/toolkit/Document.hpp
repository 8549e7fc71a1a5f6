// SPDX-License-Identifier: MIT
#pragma once

/// Document: what a window controller shows, and the object context behind it.
///
///     class BookDocument : public Document {
///         Ref<ManagedObjectContext> managedObjectContext() const override { return context_; }
///     };
///     controller->setDocument(document.get());

#include "platform/observation/ObservableObject.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"
#include "platform/values/Ref.hpp"

#include <string_view>
#include <vector>

namespace estatebook::platform {

class WindowController;

class ESTATEBOOK_API Document : public ObservableObject {
public:
    /// managedObjectContext: the context of the document's objects; may be null.
    [[nodiscard]] virtual Ref<ManagedObjectContext> managedObjectContext() const = 0;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "Document"; }

protected:
    Document() = default;
    /// Window controllers that show the document show none from now on.
    ~Document() override;

private:
    friend class WindowController;
    std::vector<WindowController*> controllers_;
};

} // namespace estatebook::platform
