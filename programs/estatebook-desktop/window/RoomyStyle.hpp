// SPDX-License-Identifier: MIT
#pragma once

/// RoomyStyle: the style of the desktop with more room around the texts of lists, and check boxes that can be told from a dark
/// window.

#include <QProxyStyle>

namespace estatebook::desktop {

class RoomyStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option,
                                  const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
};

} // namespace estatebook::desktop
