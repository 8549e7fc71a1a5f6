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

/// Disables registration for as long as it lives, also when it is left by an exception. Null is no undo manager.
class UndoRegistrationPause {
public:
    explicit UndoRegistrationPause(UndoManager* manager) noexcept : manager_(manager) {
        if (manager_) manager_->disableUndoRegistration();
    }
    ~UndoRegistrationPause() {
        if (manager_ && !manager_->isUndoRegistrationEnabled()) manager_->enableUndoRegistration();
    }
    UndoRegistrationPause(const UndoRegistrationPause&) = delete;
    UndoRegistrationPause& operator=(const UndoRegistrationPause&) = delete;

private:
    UndoManager* manager_;
};

} // namespace estatebook::platform
