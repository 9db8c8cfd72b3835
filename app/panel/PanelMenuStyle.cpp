// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMenuStyle.h"

#include <QPolygonF>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>

namespace zofra {

namespace {

constexpr qreal sidePadding = 8;
constexpr qreal checkColumn = 22;
constexpr qreal checkSize = 13;
constexpr qreal iconColumn = 25;
constexpr qreal iconSize = 16;
constexpr qreal arrowColumn = 20;
constexpr qreal keyGap = 28;
constexpr qreal linePadding = 5;
constexpr qreal separatorHeight = 9;
constexpr qreal surfaceRadius = 10;

} // namespace

PanelMenuStyle::PanelMenuStyle(const PanelLook& look)
    : QProxyStyle(QStringLiteral("fusion"))
    , m_look(look) {}

PanelMenuStyle::PanelMenuStyle(std::unique_ptr<const PanelLook> look)
    : QProxyStyle(QStringLiteral("fusion"))
    , m_ownLook(std::move(look))
    , m_look(*m_ownLook) {}

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
    if (item.state.testFlag(State_Enabled) && item.state.testFlag(State_Selected)) {
        // Like the mark of the current language: whoever walks through with the keyboard must see the place.
        fillRounded(painter, item.rect, metrics.scaled(6),
                    mixed(theme.accentText, theme.card, item.state.testFlag(State_Sunken) ? 0.24 : 0.14));
        if (theme.isHighContrast)
            strokeRounded(painter, item.rect, metrics.scaled(6), theme.text, 2);
    }
    drawLead(item, painter);
    drawText(item, painter);
    if (item.menuItemType == QStyleOptionMenuItem::SubMenu)
        drawArrow(item, painter);
}

int PanelMenuStyle::leadWidth(const QStyleOptionMenuItem& item) const {
    return m_look.metrics.px(item.maxIconWidth > 0 ? iconColumn : checkColumn);
}

void PanelMenuStyle::drawLead(const QStyleOptionMenuItem& item, QPainter& painter) const {
    const PanelMetrics& metrics = m_look.metrics;
    const auto square = [&](int edge) {
        return QRect(item.rect.left() + metrics.px(sidePadding),
                     item.rect.top() + (item.rect.height() - edge) / 2, edge, edge);
    };
    if (item.checkType != QStyleOptionMenuItem::NotCheckable && item.checked)
        paintIcon(painter, m_look, QStringLiteral("checkmark"), square(metrics.px(checkSize)),
                  m_look.theme.accentText);
    else if (!item.icon.isNull())
        item.icon.paint(&painter, square(metrics.px(iconSize)));
}

void PanelMenuStyle::drawText(const QStyleOptionMenuItem& item, QPainter& painter) const {
    const PanelTheme& theme = m_look.theme;
    const int side = m_look.metrics.px(sidePadding);
    const int flags = Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic;
    const QRect room = item.rect.adjusted(side + leadWidth(item), 0, -side, 0);
    const qsizetype tab = item.text.indexOf(QLatin1Char('\t'));
    painter.setFont(item.font);
    painter.setPen(item.state.testFlag(State_Enabled) ? theme.text : theme.dim);
    painter.drawText(room, flags | Qt::AlignLeft, tab < 0 ? item.text : item.text.left(tab));
    if (tab < 0)
        return;
    painter.setPen(theme.dim);
    painter.drawText(room, flags | Qt::AlignRight, item.text.mid(tab + 1));
}

void PanelMenuStyle::drawArrow(const QStyleOptionMenuItem& item, QPainter& painter) const {
    const PanelMetrics& metrics = m_look.metrics;
    const qreal reach = metrics.scaled(3.5);
    const QPointF tip(item.rect.right() + 1 - metrics.px(sidePadding) - metrics.scaled(2),
                      item.rect.top() + item.rect.height() / 2.0);
    painter.setPen(QPen(m_look.theme.dim, metrics.scaled(1.5), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({tip + QPointF(-reach, -reach), tip, tip + QPointF(-reach, reach)}));
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
    // The keys themselves are counted by the menu, for they stand in a column.
    const int behind = item->text.contains(QLatin1Char('\t'))                ? metrics.px(keyGap)
                       : item->menuItemType == QStyleOptionMenuItem::SubMenu ? metrics.px(arrowColumn)
                                                                             : 0;
    return {size.width() + 2 * metrics.px(sidePadding) + leadWidth(*item) + behind + 2,
            line + 2 * metrics.px(linePadding)};
}

int PanelMenuStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
    // Beside the menu, not over its margin; the two frames fall together.
    case PM_SubMenuOverlap:
        return m_look.metrics.px(4);
    case PM_MenuDesktopFrameWidth:
        return 0;
    case PM_SmallIconSize:
        return m_look.metrics.px(iconSize);
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QPalette PanelMenuStyle::standardPalette() const {
    QPalette palette = QProxyStyle::standardPalette();
    palette.setColor(QPalette::WindowText, m_look.theme.dim);
    palette.setColor(QPalette::HighlightedText, m_look.theme.text);
    return palette;
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
