// SPDX-License-Identifier: MIT
#pragma once

/// Inner header: how trouble travels within this folder. It leaves it as a StoreError.

#include "platform/persistence/store/StoreError.hpp"

#include <string>
#include <string_view>
#include <utility>

namespace estatebook::platform::sqlite {

struct StoreFailure {
    StoreErrorCode code{};
    std::string reason;
};

/// "PATH: REASON. ADVICE", on one line. Where there is not even memory for that, the code alone.
[[nodiscard]] StoreError errorOf(const StoreFailure& failure, std::string_view path) noexcept;
[[nodiscard]] StoreError errorWithoutMemory(std::string_view path) noexcept;

[[noreturn]] inline void damaged(std::string reason) {
    throw StoreFailure{StoreErrorCode::Damaged, std::move(reason)};
}

} // namespace estatebook::platform::sqlite
