// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/RoomyStyle.hpp"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>

#include <algorithm>
#include <cmath>

namespace estatebook::desktop {

namespace {

constexpr int MarginOfItems = 7;
constexpr int MarginOfHeaders = 8;
constexpr int AlphaOfOutline = 130;
constexpr double CornerOfOutline = 2;
/// From which contrast on a palette is one of high contrast; black and white have 21, and usual ones less than 19.
constexpr double HighContrast = 19;

/// As light as people see it, from 0 to 1.
double luminanceOf(const QColor& colour) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

bool isOfHighContrast(const QPalette& palette) {
    const double one = luminanceOf(palette.color(QPalette::Active, QPalette::Window));
    const double other = luminanceOf(palette.color(QPalette::Active, QPalette::WindowText));
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05) >= HighContrast;
}

void drawOutline(QPainter& painter, const QRect& around, const QColor& colour, bool isRound = false) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colour);
    painter.setBrush(Qt::NoBrush);
    const QRectF frame = QRectF(around).adjusted(0.5, 0.5, -0.5, -0.5);
    if (isRound)
        painter.drawEllipse(frame);
    else
        painter.drawRoundedRect(frame, CornerOfOutline, CornerOfOutline);
    painter.restore();
}

/// The colour of texts, and another one of what has the keyboard and of the button that the return key presses.
QColor outlineOf(const QStyleOption& option) {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(&option);
    const bool isDefault = button && button->features.testFlag(QStyleOptionButton::DefaultButton);
    const bool isInFront = isDefault || option.state.testFlag(QStyle::State_HasFocus);
    return option.palette.color(isInFront ? QPalette::Highlight : QPalette::WindowText);
}

} // namespace

void RoomyStyle::giveToApplication() {
    QApplication::setStyle(this);
}

int RoomyStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    if (metric == PM_FocusFrameHMargin) return MarginOfItems;
    if (metric == PM_HeaderMargin) return MarginOfHeaders;
    return QProxyStyle::pixelMetric(metric, option, widget);
}

void RoomyStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isRound = element == PE_IndicatorRadioButton;
    const bool isMark = isRound || element == PE_IndicatorCheckBox;
    if (isOfHighContrast(option->palette)) {
        const bool isFrame = element == PE_Frame || element == PE_FrameLineEdit || element == PE_FrameMenu;
        if (isMark || isFrame || element == PE_PanelButtonCommand)
            drawOutline(*painter, option->rect, outlineOf(*option), isRound);
    } else if (isMark) {
        QColor outline = option->palette.color(QPalette::WindowText);
        outline.setAlpha(AlphaOfOutline);
        drawOutline(*painter, option->rect, outline, isRound);
    }
}

void RoomyStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (!isOfHighContrast(option->palette)) return;
    if (control == CC_ComboBox || control == CC_SpinBox)
        drawOutline(*painter, option->rect, outlineOf(*option));
    if (control == CC_ScrollBar)
        drawOutline(*painter, subControlRect(control, option, SC_ScrollBarSlider, widget),
                    option->palette.color(QPalette::WindowText));
}

} // namespace estatebook::desktop
