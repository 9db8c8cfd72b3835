// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QProxyStyle>

class QStyleOptionMenuItem;

namespace zofra {

/// Draws menus in the panel's look, the same on every desktop: the check mark as the drawing "checkmark" in a
/// column of its own, disabled lines as quiet text.
class PanelMenuStyle final : public QProxyStyle {
public:
    explicit PanelMenuStyle(const PanelLook& look);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                         const QWidget* widget) const override;
    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option,
                                  const QWidget* widget) const override;
    [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                                QStyleHintReturn* returnData) const override;

private:
    void drawSurface(QPainter& painter, const QRect& rect, const QWidget* widget) const;
    void drawItem(const QStyleOptionMenuItem& item, QPainter& painter) const;

    const PanelLook& m_look;
};

} // namespace zofra
