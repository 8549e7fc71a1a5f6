// SPDX-License-Identifier: MIT
#include "estatebook-desktop/window/RoomyStyle.hpp"

#include <QPainter>
#include <QStyleOption>

namespace estatebook::desktop {

namespace {

constexpr int MarginOfItems = 7;
constexpr int MarginOfHeaders = 8;
constexpr int AlphaOfOutline = 130;

} // namespace

int RoomyStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    if (metric == PM_FocusFrameHMargin) return MarginOfItems;
    if (metric == PM_HeaderMargin) return MarginOfHeaders;
    return QProxyStyle::pixelMetric(metric, option, widget);
}

void RoomyStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (element != PE_IndicatorCheckBox && element != PE_IndicatorRadioButton) return;
    QColor outline = option->palette.color(QPalette::WindowText);
    outline.setAlpha(AlphaOfOutline);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(outline);
    painter->setBrush(Qt::NoBrush);
    const QRectF frame = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    if (element == PE_IndicatorRadioButton)
        painter->drawEllipse(frame);
    else
        painter->drawRoundedRect(frame, 2, 2);
    painter->restore();
}

} // namespace estatebook::desktop
