// SPDX-License-Identifier: MIT
#pragma once

/// UndoManager: whether what happens now is to be remembered for undoing. Disabling is counted.

#include "platform/values/Object.hpp"

#include <cstddef>

namespace estatebook::platform {

class ESTATEBOOK_API UndoManager final : public Object {
public:
    UndoManager() noexcept : Object(Counting::Local) {}

    void disableUndoRegistration() noexcept { ++disabled_; }
    /// Raises InternalInconsistencyException when registration is not disabled.
    void enableUndoRegistration();
    [[nodiscard]] bool isUndoRegistrationEnabled() const noexcept { return disabled_ == 0; }

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "UndoManager"; }

private:
    std::size_t disabled_ = 0;
};

} // namespace estatebook::platform
