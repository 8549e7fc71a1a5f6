// SPDX-License-Identifier: MIT
#pragma once

/// QBSheetDelegate: is told how a sheet ended.

#include "platform/values/Protocol.hpp"

#include <cstdint>

namespace estatebook {

class QBSheetController;

class ESTATEBOOK_API QBSheetDelegate : public platform::Protocol {
public:
    /// sheetController:didEndWithResult:
    /// The result is QBSheetController::Confirmed, QBSheetController::Cancelled, or another when something else ended the sheet.
    virtual void sheetControllerDidEndWithResult(QBSheetController& controller, std::int64_t result) = 0;

protected:
    ~QBSheetDelegate() = default;
};

} // namespace estatebook
