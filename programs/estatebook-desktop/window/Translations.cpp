// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/Translations.hpp"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>
#include <vector>

namespace estatebook::desktop {

namespace {

std::vector<std::unique_ptr<QTranslator>>& installed() {
    static std::vector<std::unique_ptr<QTranslator>> translators;
    return translators;
}

bool install(const QLocale& language, const QString& name, const QString& folder) {
    auto translator = std::make_unique<QTranslator>();
    // Of the language alone: a locale that is loaded by itself would fall back on the system's other languages.
    const QString file = QStringLiteral("%1_%2").arg(name, language.name());
    if (!translator->load(file, folder)) return false;
    QCoreApplication::installTranslator(translator.get());
    installed().push_back(std::move(translator));
    return true;
}

} // namespace

void installTranslations(const QStringList& languages) {
    installed().clear();
    for (const QString& each : languages) {
        const QLocale language(each);
        if (language.language() == QLocale::English || language.language() == QLocale::C) return;
        if (!install(language, QStringLiteral("estatebook-desktop"), QStringLiteral(":/translations")))
            continue;
        install(language, QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
        return;
    }
}

} // namespace estatebook::desktop
