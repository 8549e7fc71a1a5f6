// SPDX-License-Identifier: MIT
#include "platform/persistence/store/StoreError.hpp"

namespace estatebook::platform {

Ref<Error> StoreError::asError() const {
    return Error::make("Persistence", static_cast<std::int64_t>(code), message);
}

} // namespace estatebook::platform
