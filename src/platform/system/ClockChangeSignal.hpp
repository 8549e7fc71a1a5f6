// SPDX-License-Identifier: MIT
#pragma once

/// ClockChangeSignal: what tells that somebody set the clock of the system. Tests put another in the place of the system's own.

#include "EstateBook_ModelExport.hpp"

#include <memory>

namespace estatebook::platform {

class ESTATEBOOK_API ClockChangeSignal {
public:
    ClockChangeSignal() = default;
    virtual ~ClockChangeSignal();
    ClockChangeSignal(const ClockChangeSignal&) = delete;
    ClockChangeSignal& operator=(const ClockChangeSignal&) = delete;

    /// The system's: it tells of a clock that is set, and neither of one that is slowed down or sped up nor of another zone. Raises
    /// InternalInconsistencyException when the system refuses it.
    [[nodiscard]] static std::unique_ptr<ClockChangeSignal> ofSystem();

    /// Can be read when the clock was set.
    [[nodiscard]] virtual int descriptor() const noexcept = 0;
    /// Whether the clock was set since the last call; several times count as one. Never waits.
    virtual bool takeChange() = 0;
};

} // namespace estatebook::platform
