// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/AppearanceSource.h"
#include "app/panel/MenuKeys.h"
#include "app/panel/PanelLook.h"

#include <QProxyStyle>

class QStyleOptionMenuItem;

namespace zofra {

/// Draws menus in the panel's look, the same on every desktop: icons and the drawing "checkmark" in a column
/// of their own, keys and disabled lines as quiet text. Makes them go to the line whose first letters are
/// typed, and lets disabled lines be walked to and read.
class PanelMenuStyle final : public QProxyStyle {
public:
    /// `look` outlives the style.
    explicit PanelMenuStyle(const PanelLook& look);
    /// For menus that belong to no panel; open ones follow the desktop, too. `appearance` outlives the style.
    PanelMenuStyle(const PanelMetrics& metrics, AppearanceSource& appearance);

    void polish(QWidget* widget) override;
    void unpolish(QWidget* widget) override;

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
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;
    void take(const DesktopAppearance& appearance);
    void drawSurface(QPainter& painter, const QRect& rect, const QWidget* widget) const;
    void drawItem(const QStyleOptionMenuItem& item, QPainter& painter) const;
    void drawLead(const QStyleOptionMenuItem& item, QPainter& painter) const;
    void drawText(const QStyleOptionMenuItem& item, QPainter& painter) const;
    void drawScroller(const QStyleOptionMenuItem& item, QPainter& painter) const;
    [[nodiscard]] int leadWidth(const QStyleOptionMenuItem& item) const;

    PanelLook m_ownLook;
    const PanelLook& m_look;
    ObservationToken m_followed;
    MenuKeys m_keys;
};

} // namespace zofra
