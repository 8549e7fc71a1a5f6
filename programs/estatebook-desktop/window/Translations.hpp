// SPDX-License-Identifier: MIT
#pragma once

/// Translations: the texts of the program in the language of who uses it.
///
/// The program is written in English. translations/estatebook-desktop_LANGUAGE.ts holds each of its texts in another language;
/// tools/translations keeps these files up to date.

#include <QStringList>

namespace estatebook::desktop {

/// Has the application speak the first of the languages that there is, as "de-DE" or "de"; Qt's own texts as well, where they
/// are installed. Takes the place of what was installed before. REQUIRES: there is an application.
void installTranslations(const QStringList& languages);

} // namespace estatebook::desktop
