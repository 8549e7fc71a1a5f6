// SPDX-License-Identifier: MIT
#pragma once

/// RoomyStyle: the style of the desktop with more room around the texts of lists, and check boxes that can be told from a dark
/// window. With a palette of high contrast, whatever can be written into or pressed has an outline in the colour of texts: the
/// styles reckon outlines from the colour of windows, so that black windows have none.

#include <QProxyStyle>

namespace estatebook::desktop {

class RoomyStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    /// Has everything drawn by it. The application owns it from then on.
    void giveToApplication();

    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option,
                                  const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
};

} // namespace estatebook::desktop
