// SPDX-License-Identifier: MIT
#pragma once

/// Screenshots: a picture of each window with the example book, light and dark, at once and twice the size.
///
///     estatebook-desktop --screenshots build/screenshots

#include <QString>

namespace estatebook::desktop {

/// Has other processes of this program make the pictures, one for each appearance and size. Gives an exit code.
[[nodiscard]] int makeScreenshots(const QString& folder);
/// Makes those of this process's appearance and size; their names end in `suffix`. Gives an exit code.
[[nodiscard]] int makeScreenshotsHere(const QString& folder, const QString& suffix);

} // namespace estatebook::desktop
