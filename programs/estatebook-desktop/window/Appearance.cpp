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
    QColor onAccent;
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
    palette.setColor(QPalette::HighlightedText, tones.onAccent);
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
                      .onAccent = QColor(0xFFFFFF),
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
                      .onAccent = QColor(0xFFFFFF),
                      .note = QColor(0x4A3D18)});
}

// Each text at 7 to 1 at least, also of what is disabled.
QPalette contrastPalette() {
    return paletteOf({.window = QColor(Qt::black),
                      .base = QColor(Qt::black),
                      .alternate = QColor(0x141414),
                      .button = QColor(0x1E1E1E),
                      .text = QColor(0xFFFFFF),
                      .faded = QColor(0xBEBEBE),
                      .accent = QColor(0xFFE000),
                      .onAccent = QColor(Qt::black),
                      .note = QColor(0x00004A)});
}

QPalette paletteOf(Appearance appearance) {
    switch (appearance) {
    case Appearance::Dark:
        return darkPalette();
    case Appearance::Contrast:
        return contrastPalette();
    case Appearance::Light:
    case Appearance::System:
        break;
    }
    return lightPalette();
}

} // namespace

std::optional<Appearance> appearanceNamed(const QString& name) {
    if (name == QLatin1String("system")) return Appearance::System;
    if (name == QLatin1String("light")) return Appearance::Light;
    if (name == QLatin1String("dark")) return Appearance::Dark;
    if (name == QLatin1String("contrast")) return Appearance::Contrast;
    return std::nullopt;
}

void applyAppearance(Appearance appearance) {
    const bool isSystem = appearance == Appearance::System;
    auto* style = new RoomyStyle(isSystem ? nullptr : QStyleFactory::create(QStringLiteral("Fusion")));
    style->giveToApplication();
    if (!isSystem) QApplication::setPalette(paletteOf(appearance));
}

} // namespace estatebook::desktop
