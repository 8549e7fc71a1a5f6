// SPDX-License-Identifier: MIT
#pragma once

/// Appearance: light, dark or of high contrast, for who does not want what the desktop says.
///
/// Nothing in the program names a colour but these palettes: everything else is drawn with the palette there is, so that any
/// other works as well.

#include <QPalette>
#include <QString>

#include <optional>

namespace estatebook::desktop {

enum class Appearance { System, Light, Dark, Contrast };

/// None for another word than "system", "light", "dark" or "contrast".
[[nodiscard]] std::optional<Appearance> appearanceNamed(const QString& name);
/// REQUIRES: there is an application, and no window yet.
void applyAppearance(Appearance appearance);

} // namespace estatebook::desktop
