// SPDX-License-Identifier: MIT
#pragma once

/// The classes that stand behind the entities of the model. The table itself is generated.

#include "EstateBook_ModelExport.hpp"
#include "platform/persistence/ManagedClass.hpp"

#include <span>

namespace estatebook {

[[nodiscard]] ESTATEBOOK_API std::span<const platform::ManagedClass> modelClasses() noexcept;

} // namespace estatebook
