// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/MenuButton.h"

#include "platform/ForeignText.h"

#include <QAccessible>
#include <QKeyEvent>

#include <algorithm>
#include <cmath>

namespace zofra {

namespace {

constexpr qreal sidePadding = 8;
constexpr qreal linePadding = 5;
constexpr qreal chevronGap = 6.5;

} // namespace

MenuButton::MenuButton(const PanelLook& look, QWidget* parent)
    : PanelButton(look, {.radius = 7}, parent) {
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    connect(this, &QPushButton::pressed, this, &MenuButton::openMenu);
}

void MenuButton::setContent(const QString& label, const QString& title) {
    setTitle(displayText(title));
    setAccessibleName(label + QLatin1Char(' ') + this->title());
}

void MenuButton::refreshMenu() {
    if (isOpen())
        m_menu->setEntries(makeEntries());
}

void MenuButton::makeMenu() {
    m_menu = new PanelMenu(look(), this);
    connect(m_menu, &QMenu::aboutToShow, this, &MenuButton::tellOpen);
    connect(m_menu, &QMenu::aboutToHide, this, [this] {
        setDown(false);
        update();
        tellOpen();
    });
}

void MenuButton::tellOpen() {
    QAccessible::State changed;
    changed.expanded = true;
    changed.collapsed = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void MenuButton::openMenu() {
    if (!m_menu)
        makeMenu();
    m_menu->setEntries(makeEntries());
    m_menu->setAccessibleName(accessibleName());
    const QRect body = bodyRect();
    const int left = body.right() + 1 - m_menu->sizeHint().width();
    // Below the ring, which shows whose menu it is.
    m_menu->popup(mapToGlobal(QPoint(left, rect().bottom() + 1 + look().metrics.px(1))));
    m_menu->goToCurrent();
}

qreal MenuButton::chevronRoom() const {
    return look().metrics.scaled(chevronGap) + chevronSize(look().metrics).width() +
           look().metrics.px(sidePadding);
}

QSize MenuButton::bodySize() const {
    const PanelMetrics& metrics = look().metrics;
    return {titleWidth() + static_cast<int>(std::ceil(chevronRoom())) + metrics.px(sidePadding),
            titleHeight() + 2 * metrics.px(linePadding)};
}

QSize MenuButton::minimumSizeHint() const {
    const QSize whole = sizeHint();
    return {std::min(whole.width(), look().metrics.px(80)), whole.height()};
}

QRect MenuButton::titleRect(const QRect& body) const {
    return body.adjusted(look().metrics.px(sidePadding), 0, -static_cast<int>(std::lround(chevronRoom())), 0);
}

void MenuButton::paintBody(QPainter& painter, const QRect& body) {
    const PanelTheme& theme = look().theme;
    if (isOpen() || isDown() || underMouse())
        fillRounded(painter, body, radius(), isOpen() ? theme.pressed : groundUnderPointer());
    paintTitle(painter, titleRect(body), Qt::AlignRight, theme.text);
    const qreal right = body.right() + 1 - look().metrics.px(sidePadding);
    paintChevron(painter, look().metrics,
                 QPointF(right - chevronSize(look().metrics).width() / 2, QRectF(body).center().y()), 0,
                 theme.dim);
}

void MenuButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Down && event->modifiers() == Qt::NoModifier)
        openMenu();
    else
        PanelButton::keyPressEvent(event);
}

QStringList MenuButton::helpLines() const {
    const bool isElided = titleWidth() - 1 > titleRect(bodyRect()).width();
    return {isElided ? title() : QString(), help()};
}

} // namespace zofra
