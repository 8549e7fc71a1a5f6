// SPDX-License-Identifier: MIT
#include "estatebook/Reckoned.hpp"

namespace estatebook {

ReckoningError reckoningError(const platform::Exception& exception) noexcept {
    if (dynamic_cast<const platform::DivideByZeroException*>(&exception))
        return {"divisionByZero", "division by zero"};
    if (dynamic_cast<const platform::OverflowException*>(&exception)) return {"overflow", "overflow"};
    if (dynamic_cast<const platform::UnderflowException*>(&exception)) return {"underflow", "underflow"};
    return {"invalidArgument", "invalid argument"};
}

} // namespace estatebook
