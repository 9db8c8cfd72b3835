// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMenuStyle.h"

#include "platform/linux/x11/XServer.h"

#include <QApplication>
#include <QFontMetrics>
#include <QMenu>
#include <QStyleOption>

#include <algorithm>

namespace zofra {

namespace {

constexpr qreal itemPadding = 8;
constexpr qreal checkColumn = 22;
constexpr qreal checkSize = 13;
constexpr qreal iconColumn = 25;
constexpr qreal iconSize = 16;
constexpr qreal arrowColumn = 20;
constexpr qreal keyGap = 28;
constexpr qreal linePadding = 5;
constexpr qreal separatorHeight = 9;
constexpr qreal surfaceRadius = 10;
constexpr qreal textSize = 14;

/// Begins a menu text that searches. Fonts may lack it, so it is drawn; the text stays what it is.
const QString searchSign = u"\U0001F504"_qs;

/// Rounded corners show what is below a menu.
bool canShowWhatIsBelow() {
    if (QGuiApplication::platformName() == QLatin1String("wayland"))
        return true;
    const auto server = XServer::ofToolkit();
    return server && server->hasCompositor();
}

int searchSignWidth(const QStyleOptionMenuItem& item) {
    return QFontMetrics(item.font).ascent();
}

} // namespace

PanelMenuStyle::PanelMenuStyle(const PanelLook& look)
    : QProxyStyle(u"fusion"_qs)
    , m_look(look) {}

PanelMenuStyle::PanelMenuStyle(const PanelMetrics& metrics, AppearanceSource& appearance)
    : QProxyStyle(u"fusion"_qs)
    , m_ownLook{PanelTheme::make(appearance.current(), QGuiApplication::palette()), metrics}
    , m_look(m_ownLook)
    , m_followed(appearance.observeChanged([this, &appearance] { take(appearance.current()); })) {}

void PanelMenuStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (!qobject_cast<QMenu*>(widget))
        return;
    if (canShowWhatIsBelow())
        widget->setAttribute(Qt::WA_TranslucentBackground);
    // The same type size in all of them, whatever the desktop gives its own menus.
    widget->setFont(m_look.metrics.font(textSize));
    widget->installEventFilter(&m_keys);
}

void PanelMenuStyle::unpolish(QWidget* widget) {
    widget->removeEventFilter(&m_keys);
    QProxyStyle::unpolish(widget);
}

void PanelMenuStyle::take(const DesktopAppearance& appearance) {
    m_ownLook.theme = PanelTheme::make(appearance, QGuiApplication::palette());
    const auto all = QApplication::allWidgets();
    for (QWidget* widget : all) {
        if (widget->style() == this)
            widget->update();
    }
}

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
        painter.fillRect(QRect(item.rect.left() + metrics.px(itemPadding), item.rect.center().y(),
                               item.rect.width() - 2 * metrics.px(itemPadding), 1),
                         theme.line);
        return;
    }
    if (item.state.testFlag(State_Selected)) {
        // Like the mark of the current language: whoever walks through with the keyboard must see the place.
        if (item.state.testFlag(State_Enabled))
            fillRounded(painter, item.rect, metrics.scaled(6),
                        theme.menuMark(item.state.testFlag(State_Sunken)));
        // A line that is only read is framed.
        if (theme.isHighContrast || !item.state.testFlag(State_Enabled))
            strokeRounded(painter, item.rect, metrics.scaled(6),
                          theme.isHighContrast ? theme.text : theme.mark, theme.isHighContrast ? 2 : 1);
    }
    drawLead(item, painter);
    drawText(item, painter);
    if (item.menuItemType == QStyleOptionMenuItem::SubMenu)
        paintChevron(
            painter, metrics,
            QPointF(item.rect.right() + 1 - metrics.px(itemPadding) - chevronSize(metrics).height() / 2,
                    QRectF(item.rect).center().y()),
            -90, item.state.testFlag(State_Selected) ? theme.text : theme.dim);
}

int PanelMenuStyle::leadWidth(const QStyleOptionMenuItem& item) const {
    return m_look.metrics.px(item.maxIconWidth > 0 ? iconColumn : checkColumn);
}

void PanelMenuStyle::drawLead(const QStyleOptionMenuItem& item, QPainter& painter) const {
    const PanelMetrics& metrics = m_look.metrics;
    const auto square = [&](int edge) {
        return QRect(item.rect.left() + metrics.px(itemPadding),
                     item.rect.top() + (item.rect.height() - edge) / 2, edge, edge);
    };
    if (item.checkType != QStyleOptionMenuItem::NotCheckable && item.checked)
        paintIcon(painter, u"checkmark"_qs, square(metrics.px(checkSize)), m_look.theme.accentText);
    else if (!item.icon.isNull())
        item.icon.paint(&painter, square(metrics.px(iconSize)));
}

void PanelMenuStyle::drawText(const QStyleOptionMenuItem& item, QPainter& painter) const {
    const PanelTheme& theme = m_look.theme;
    const int side = m_look.metrics.px(itemPadding);
    QRect room = item.rect.adjusted(side + leadWidth(item), 0, -side, 0);
    const QColor& ink = item.state.testFlag(State_Enabled) ? theme.text : theme.dim;
    QString text = item.text.section(u'\t', 0, 0);
    text.replace(QLatin1String("&&"), QLatin1String("&"));
    if (text.startsWith(searchSign)) {
        const int edge = searchSignWidth(item);
        paintIcon(painter, u"arrow.clockwise"_qs,
                  QRect(room.left(), room.top() + (room.height() - edge) / 2, edge, edge), ink);
        room.setLeft(room.left() + edge);
        text.remove(0, searchSign.size());
    }
    painter.setFont(item.font);
    painter.setPen(ink);
    paintLine(painter, room, Qt::AlignLeft, text);
    if (!item.text.contains(u'\t'))
        return;
    painter.setPen(item.state.testFlag(State_Selected) ? ink : theme.dim);
    paintLine(painter, room, Qt::AlignRight, item.text.section(u'\t', 1));
}

void PanelMenuStyle::drawScroller(const QStyleOptionMenuItem& item, QPainter& painter) const {
    painter.fillRect(item.rect, m_look.theme.card);
    paintChevron(painter, m_look.metrics, QRectF(item.rect).center(),
                 item.state.testFlag(State_DownArrow) ? 0 : 180, m_look.theme.text);
}

void PanelMenuStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    if (element == CE_MenuItem || element == CE_MenuScroller) {
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing);
            if (element == CE_MenuScroller)
                drawScroller(*item, *painter);
            else
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
    const int behind = item->text.contains(u'\t')                            ? metrics.px(keyGap)
                       : item->menuItemType == QStyleOptionMenuItem::SubMenu ? metrics.px(arrowColumn)
                                                                             : 0;
    const int sign = item->text.startsWith(searchSign)
                         ? searchSignWidth(*item) - QFontMetrics(item->font).horizontalAdvance(searchSign)
                         : 0;
    return {size.width() + 2 * metrics.px(itemPadding) + leadWidth(*item) + behind + sign + 2,
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
    case PM_MenuScrollerHeight:
        return m_look.metrics.px(20);
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
    case SH_Menu_AllowActiveAndDisabled:
    case SH_Menu_SpaceActivatesItem:
        return 1;
    case SH_Menu_Mask:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

} // namespace zofra
