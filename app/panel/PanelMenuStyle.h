// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QProxyStyle>

#include <memory>

class QStyleOptionMenuItem;

namespace zofra {

/// Draws menus in the panel's look, the same on every desktop: icons and the drawing "checkmark" in a column
/// of their own, keys and disabled lines as quiet text.
class PanelMenuStyle final : public QProxyStyle {
public:
    /// `look` outlives the style.
    explicit PanelMenuStyle(const PanelLook& look);
    /// For menus that belong to no panel.
    explicit PanelMenuStyle(std::unique_ptr<const PanelLook> look);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                         const QWidget* widget) const override;
    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option,
                                  const QWidget* widget) const override;
    /// The colours of the menu's icons.
    [[nodiscard]] QPalette standardPalette() const override;
    [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                                QStyleHintReturn* returnData) const override;

private:
    void drawSurface(QPainter& painter, const QRect& rect, const QWidget* widget) const;
    void drawItem(const QStyleOptionMenuItem& item, QPainter& painter) const;
    void drawLead(const QStyleOptionMenuItem& item, QPainter& painter) const;
    void drawText(const QStyleOptionMenuItem& item, QPainter& painter) const;
    void drawArrow(const QStyleOptionMenuItem& item, QPainter& painter) const;
    [[nodiscard]] int leadWidth(const QStyleOptionMenuItem& item) const;

    std::unique_ptr<const PanelLook> m_ownLook;
    const PanelLook& m_look;
};

} // namespace zofra
