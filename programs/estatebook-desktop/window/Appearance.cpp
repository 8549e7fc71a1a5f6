// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/Appearance.hpp"

#include "estatebook-desktop/window/RoomyStyle.hpp"

#include <QApplication>
#include <QStyleFactory>

namespace estatebook::desktop {

namespace {

struct Tones {
    QColor window;
    QColor base;
    QColor alternate;
    QColor button;
    QColor text;
    QColor faded;
    QColor accent;
    QColor note;
};

QPalette paletteOf(const Tones& tones) {
    QPalette palette(tones.button, tones.window);
    palette.setColor(QPalette::Base, tones.base);
    palette.setColor(QPalette::AlternateBase, tones.alternate);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, tones.text);
    palette.setColor(QPalette::ToolTipBase, tones.note);
    palette.setColor(QPalette::PlaceholderText, tones.faded);
    palette.setColor(QPalette::Highlight, tones.accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, tones.accent);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, tones.faded);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, tones.faded);
    return palette;
}

QPalette lightPalette() {
    return paletteOf({.window = QColor(0xF3F3F1),
                      .base = QColor(0xFFFFFF),
                      .alternate = QColor(0xF8F8F6),
                      .button = QColor(0xEDEDEA),
                      .text = QColor(0x1D1D1B),
                      .faded = QColor(0x6E6E6A),
                      .accent = QColor(0x1F5FA8),
                      .note = QColor(0xFFF4D6)});
}

QPalette darkPalette() {
    return paletteOf({.window = QColor(0x262626),
                      .base = QColor(0x1C1C1C),
                      .alternate = QColor(0x222222),
                      .button = QColor(0x353535),
                      .text = QColor(0xECECEA),
                      .faded = QColor(0x9A9A96),
                      .accent = QColor(0x2F74C4),
                      .note = QColor(0x4A3D18)});
}

} // namespace

std::optional<Appearance> appearanceNamed(const QString& name) {
    if (name == QLatin1String("system")) return Appearance::System;
    if (name == QLatin1String("light")) return Appearance::Light;
    if (name == QLatin1String("dark")) return Appearance::Dark;
    return std::nullopt;
}

void applyAppearance(Appearance appearance) {
    if (appearance == Appearance::System) {
        QApplication::setStyle(new RoomyStyle);
        return;
    }
    QApplication::setStyle(new RoomyStyle(QStyleFactory::create(QStringLiteral("Fusion"))));
    QApplication::setPalette(appearance == Appearance::Dark ? darkPalette() : lightPalette());
}

} // namespace estatebook::desktop
