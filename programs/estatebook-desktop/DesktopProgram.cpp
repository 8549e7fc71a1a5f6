// SPDX-License-Identifier: MIT
#include "estatebook-desktop/DesktopProgram.hpp"

#include "estatebook-desktop/screenshots/Screenshots.hpp"
#include "estatebook-desktop/window/Appearance.hpp"
#include "estatebook-desktop/window/DesktopApplication.hpp"
#include "estatebook-desktop/window/MainWindow.hpp"
#include "estatebook-desktop/window/Translations.hpp"

#include "platform/toolkit/qt/QtToolkit.hpp"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextStream>

namespace estatebook::desktop {

int runDesktop(int argumentCount, char** arguments) {
    const DesktopApplication application(argumentCount, arguments);
    QApplication::setOrganizationName(QStringLiteral("EstateBook"));
    QApplication::setApplicationName(QStringLiteral("estatebook-desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("EstateBook"));
    QApplication::setApplicationVersion(QStringLiteral(ESTATEBOOK_VERSION));

    installTranslations(QLocale().uiLanguages());

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QCoreApplication::translate("Program", "Keeps the books of rental properties."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("book"),
                                 QCoreApplication::translate("Program", "The book to open."),
                                 QStringLiteral("[book]"));
    const QCommandLineOption appearanceOption(
        QStringLiteral("appearance"),
        QCoreApplication::translate("Program",
                                    "system, light, dark or contrast; else what the desktop says."),
        QStringLiteral("name"), QStringLiteral("system"));
    const QCommandLineOption exampleOption(
        QStringLiteral("example"),
        QCoreApplication::translate("Program", "Open the example book; make it there when it is not."),
        QStringLiteral("file"));
    const QCommandLineOption picturesOption(
        QStringLiteral("screenshots"),
        QCoreApplication::translate("Program", "Make a picture of each window in the folder, and end."),
        QStringLiteral("folder"));
    QCommandLineOption hereOption(QStringLiteral("screenshots-here"), {}, QStringLiteral("folder"));
    QCommandLineOption suffixOption(QStringLiteral("suffix"), {}, QStringLiteral("suffix"));
    hereOption.setFlags(QCommandLineOption::HiddenFromHelp);
    suffixOption.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({appearanceOption, exampleOption, picturesOption, hereOption, suffixOption});
    parser.process(application);

    const auto appearance = appearanceNamed(parser.value(appearanceOption));
    if (!appearance) {
        QTextStream(stderr) << QCoreApplication::translate(
                                   "Program", "--appearance: give system, light, dark or contrast")
                            << '\n';
        return 2;
    }
    if (parser.isSet(picturesOption)) return makeScreenshots(parser.value(picturesOption));
    applyAppearance(*appearance);
    platform::QtToolkit toolkit;
    platform::Toolkit::setCurrent(&toolkit);
    if (parser.isSet(hereOption)) {
        // Nothing of it is remembered.
        const QTemporaryDir settings;
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
        return makeScreenshotsHere(parser.value(hereOption), parser.value(suffixOption));
    }

    DesktopLoop loop;
    MainWindow window(loop);
    const QStringList books = parser.positionalArguments();
    if (parser.isSet(exampleOption))
        window.openExample(QFileInfo(parser.value(exampleOption)).absoluteFilePath());
    else if (!books.isEmpty())
        window.openBook(books.front());
    else if (const QString last = QSettings().value(QStringLiteral("book")).toString();
             QFileInfo::exists(last))
        window.openBook(last);
    window.show();
    return QApplication::exec();
}

} // namespace estatebook::desktop
