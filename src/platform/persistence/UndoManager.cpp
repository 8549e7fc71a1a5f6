// SPDX-License-Identifier: MIT
#include "platform/persistence/UndoManager.hpp"

#include "platform/values/Exception.hpp"

namespace estatebook::platform {

void UndoManager::enableUndoRegistration() {
    if (disabled_ == 0)
        throw InternalInconsistencyException("undo registration was enabled more often than it was disabled");
    --disabled_;
}

} // namespace estatebook::platform
