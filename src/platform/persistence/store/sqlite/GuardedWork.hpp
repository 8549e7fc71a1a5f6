// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: what the failures within this folder are for those outside.

#include "platform/persistence/store/StoreError.hpp"
#include "platform/persistence/store/sqlite/StoreFailure.hpp"

#include <new>
#include <string>

namespace estatebook::platform::sqlite {

/// What the work on a file gives, or the error that came of it.
template <class Work>
auto guarded(const std::string& path, Work work) -> StoreResult<decltype(work())> {
    try {
        return work();
    } catch (const StoreError& error) {
        return error;
    } catch (const StoreFailure& failure) {
        return errorOf(failure, path);
    } catch (const std::bad_alloc&) {
        return errorWithoutMemory(path);
    }
}

} // namespace estatebook::platform::sqlite
