// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMenuStyle.h"

#include <QStyleOption>
#include <QWidget>

#include <algorithm>

namespace zofra {

namespace {

constexpr qreal sidePadding = 8;
constexpr qreal checkColumn = 22;
constexpr qreal checkSize = 13;
constexpr qreal linePadding = 5;
constexpr qreal separatorHeight = 9;
constexpr qreal surfaceRadius = 10;

} // namespace

PanelMenuStyle::PanelMenuStyle(const PanelLook& look)
    : QProxyStyle(QStringLiteral("fusion"))
    , m_look(look) {}

void PanelMenuStyle::drawSurface(QPainter& painter, const QRect& rect, const QWidget* widget) const {
    const PanelTheme& theme = m_look.theme;
    painter.save();
    if (widget && widget->testAttribute(Qt::WA_TranslucentBackground)) {
        painter.setRenderHint(QPainter::Antialiasing);
        fillRounded(painter, rect, m_look.metrics.scaled(surfaceRadius), theme.card);
        strokeRounded(painter, rect, m_look.metrics.scaled(surfaceRadius), theme.line, 1);
    } else {
        painter.fillRect(rect, theme.card);
        strokeRounded(painter, rect, 0.5, theme.line, 1);
    }
    painter.restore();
}

void PanelMenuStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                   const QWidget* widget) const {
    if (element == PE_PanelMenu)
        drawSurface(*painter, option->rect, widget);
    else if (element != PE_FrameMenu)
        QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void PanelMenuStyle::drawItem(const QStyleOptionMenuItem& item, QPainter& painter) const {
    const PanelTheme& theme = m_look.theme;
    const PanelMetrics& metrics = m_look.metrics;
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        painter.fillRect(QRect(item.rect.left() + metrics.px(sidePadding), item.rect.center().y(),
                               item.rect.width() - 2 * metrics.px(sidePadding), 1),
                         theme.line);
        return;
    }
    const bool enabled = item.state.testFlag(State_Enabled);
    const bool selected = enabled && item.state.testFlag(State_Selected);
    if (selected) {
        fillRounded(painter, item.rect, metrics.scaled(6),
                    item.state.testFlag(State_Sunken) ? theme.pressed : theme.hover);
        if (theme.isHighContrast)
            strokeRounded(painter, item.rect, metrics.scaled(6), theme.text, 2);
    }
    if (item.checkType != QStyleOptionMenuItem::NotCheckable && item.checked) {
        const int edge = metrics.px(checkSize);
        paintIcon(painter, m_look, QStringLiteral("checkmark"),
                  QRect(item.rect.left() + metrics.px(sidePadding),
                        item.rect.top() + (item.rect.height() - edge) / 2, edge, edge),
                  theme.accentText);
    }
    painter.setFont(item.font);
    painter.setPen(enabled ? theme.text : theme.dim);
    painter.drawText(
        item.rect.adjusted(metrics.px(sidePadding + checkColumn), 0, -metrics.px(sidePadding), 0),
        Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic, item.text);
}

void PanelMenuStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    if (element == CE_MenuItem) {
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing);
            drawItem(*item, *painter);
            painter->restore();
        }
        return;
    }
    // Empty areas and margins are part of the surface, which is already there.
    if (element != CE_MenuEmptyArea && element != CE_MenuHMargin && element != CE_MenuVMargin)
        QProxyStyle::drawControl(element, option, painter, widget);
}

QSize PanelMenuStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                       const QWidget* widget) const {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (type != CT_MenuItem || !item)
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    const PanelMetrics& metrics = m_look.metrics;
    if (item->menuItemType == QStyleOptionMenuItem::Separator)
        return {size.width(), metrics.px(separatorHeight)};
    const int line = std::max(QFontMetrics(item->font).height(), metrics.px(19));
    return {size.width() + metrics.px(2 * sidePadding + checkColumn) + 2, line + 2 * metrics.px(linePadding)};
}

int PanelMenuStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return m_look.metrics.px(4);
    case PM_MenuDesktopFrameWidth:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int PanelMenuStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                              QStyleHintReturn* returnData) const {
    switch (hint) {
    case SH_Menu_Scrollable:
    case SH_Menu_MouseTracking:
        return 1;
    case SH_Menu_Mask:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

} // namespace zofra
