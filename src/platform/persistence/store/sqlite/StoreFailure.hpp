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

/// "PATH: REASON. ADVICE", on one line.
[[nodiscard]] StoreError errorOf(const StoreFailure& failure, std::string_view path);

[[noreturn]] inline void damaged(std::string reason) {
    throw StoreFailure{StoreErrorCode::Damaged, std::move(reason)};
}

} // namespace estatebook::platform::sqlite
