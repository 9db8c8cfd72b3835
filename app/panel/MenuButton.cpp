// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/MenuButton.h"

#include "platform/ForeignText.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolTip>

#include <algorithm>

namespace zofra {

namespace {

constexpr qreal sidePadding = 8;
constexpr qreal linePadding = 5;
constexpr qreal chevronSize = 12;
constexpr qreal chevronGap = 6;
constexpr qreal textSize = 14;

} // namespace

MenuButton::MenuButton(const PanelLook& look, QWidget* parent)
    : PanelButton(look, parent) {
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    connect(this, &QPushButton::pressed, this, &MenuButton::openMenu);
}

void MenuButton::setContent(const QString& label, const QString& title) {
    setAccessibleName(label + QLatin1Char(' ') + displayText(title));
    const QString shown = displayText(title);
    if (shown == m_title)
        return;
    m_title = shown;
    updateGeometry();
    update();
}

void MenuButton::setHelp(const QString& help) {
    m_help = help;
    setAccessibleDescription(help);
}

void MenuButton::refreshMenu() {
    if (m_menu && m_menu->isVisible() && makeEntries)
        m_menu->setEntries(makeEntries());
}

void MenuButton::openMenu() {
    if (!m_menu) {
        m_menu = new PanelMenu(look(), this);
        m_menu->onChosen = [this](const PanelMenuEntry& entry) {
            if (onChosen)
                onChosen(entry);
        };
        connect(m_menu, &QMenu::aboutToHide, this, [this] {
            setDown(false);
            update();
        });
    }
    if (makeEntries)
        m_menu->setEntries(makeEntries());
    m_menu->setAccessibleName(accessibleName());
    const QRect body = bodyRect();
    const int left = body.right() + 1 - m_menu->sizeHint().width();
    // Below the ring, which shows whose menu it is.
    m_menu->popup(mapToGlobal(QPoint(left, rect().bottom() + 1 + look().metrics.px(1))));
}

QSize MenuButton::bodySize() const {
    const PanelMetrics& metrics = look().metrics;
    const QFontMetrics text(metrics.font(textSize, QFont::DemiBold), this);
    return {text.horizontalAdvance(m_title) + 1 + metrics.px(chevronGap) + metrics.px(chevronSize) +
                2 * metrics.px(sidePadding),
            std::max(text.height(), metrics.px(19)) + 2 * metrics.px(linePadding)};
}

QSize MenuButton::minimumSizeHint() const {
    const QSize whole = sizeHint();
    return {std::min(whole.width(), look().metrics.px(80)), whole.height()};
}

qreal MenuButton::radius() const {
    return look().metrics.scaled(7);
}

QRect MenuButton::titleRect(const QRect& body) const {
    const PanelMetrics& metrics = look().metrics;
    return body.adjusted(metrics.px(sidePadding), 0,
                         -metrics.px(sidePadding) - metrics.px(chevronSize) - metrics.px(chevronGap), 0);
}

bool MenuButton::isElided() const {
    const QFontMetrics text(look().metrics.font(textSize, QFont::DemiBold), this);
    return text.horizontalAdvance(m_title) > titleRect(bodyRect()).width();
}

void MenuButton::paintBody(QPainter& painter, const QRect& body) {
    const PanelTheme& theme = look().theme;
    const PanelMetrics& metrics = look().metrics;
    const bool isOpen = m_menu && m_menu->isVisible();
    if (isOpen || isDown() || underMouse())
        fillRounded(painter, body, radius(), isOpen || isDown() ? theme.pressed : theme.hover);
    const QRect room = titleRect(body);
    painter.setFont(metrics.font(textSize, QFont::DemiBold));
    painter.setPen(theme.text);
    painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                     QFontMetrics(painter.font(), this).elidedText(m_title, Qt::ElideRight, room.width()));
    const int edge = metrics.px(chevronSize);
    paintIcon(painter, look(), QStringLiteral("chevron.down"),
              QRect(body.right() + 1 - metrics.px(sidePadding) - edge,
                    body.top() + (body.height() - edge) / 2, edge, edge),
              theme.dim);
}

void MenuButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Down && event->modifiers() == Qt::NoModifier)
        openMenu();
    else
        PanelButton::keyPressEvent(event);
}

bool MenuButton::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return PanelButton::event(event);
    QStringList lines;
    if (isElided())
        lines += toolTipText(m_title);
    if (!m_help.isEmpty())
        lines += toolTipText(m_help);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), lines.join(QString()), this);
    return true;
}

} // namespace zofra
