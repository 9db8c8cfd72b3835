// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"
#include "app/panel/PanelMenu.h"
#include "platform/ForeignText.h"

#include <QAccessible>
#include <QKeyEvent>

#include <algorithm>
#include <cmath>
#include <functional>

namespace zofra {

/// A borderless button whose title is what is chosen now and which opens the menu to choose from. A long
/// title is cut with an ellipsis and shown whole on hover.
class MenuButton final : public PanelButton {
public:
    MenuButton(const PanelLook& look, QWidget* parent)
        : PanelButton(look, {.radius = 7}, parent) {
        setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
        connect(this, &QPushButton::pressed, this, &MenuButton::openMenu);
    }

    /// `label` is what stands before the button, for screen readers.
    void setContent(const QString& label, const QString& title) {
        setTitle(displayText(title));
        setAccessibleName(label + u' ' + this->title());
    }

    /// Makes the lines; asked each time the menu opens.
    std::function<Menu()> makeEntries;
    /// Brings an open menu up to date.
    void refreshMenu() {
        if (isOpen())
            m_menu->setEntries(makeEntries());
    }
    /// Opens the menu, on the line of what is chosen now.
    void openMenu() {
        if (!m_menu)
            makeMenu();
        m_menu->setEntries(makeEntries());
        m_menu->setAccessibleName(accessibleName());
        const QRect body = bodyRect();
        const int left = body.right() + 1 - m_menu->sizeHint().width();
        // Below the ring, which shows whose menu it is.
        m_menu->popup(mapToGlobal(QPoint(left, rect().bottom() + 1 + look().metrics.px(1))));
        goToChosen(*m_menu);
    }
    [[nodiscard]] bool isOpen() const { return m_menu && m_menu->isVisible(); }
    /// Null until first opened.
    [[nodiscard]] PanelMenu* openedMenu() const { return m_menu; }

    [[nodiscard]] QSize minimumSizeHint() const override {
        const QSize whole = sizeHint();
        return {std::min(whole.width(), look().metrics.px(80)), whole.height()};
    }

protected:
    [[nodiscard]] QSize bodySize() const override {
        const PanelMetrics& metrics = look().metrics;
        return {titleWidth() + static_cast<int>(std::ceil(chevronRoom())) + metrics.px(sidePadding),
                titleHeight() + 2 * metrics.px(linePadding)};
    }
    void paintBody(QPainter& painter, const QRect& body) override {
        const PanelTheme& theme = look().theme;
        if (isOpen() || isDown() || underMouse())
            fillRounded(painter, body, radius(), isOpen() ? theme.pressed : groundUnderPointer());
        paintTitle(painter, titleRect(body), Qt::AlignRight, theme.text);
        const qreal right = body.right() + 1 - look().metrics.px(sidePadding);
        paintChevron(painter, look().metrics,
                     QPointF(right - chevronSize(look().metrics).width() / 2, QRectF(body).center().y()), 0,
                     theme.dim);
    }
    [[nodiscard]] QStringList helpLines() const override {
        const bool isElided = titleWidth() - 1 > titleRect(bodyRect()).width();
        return {isElided ? title() : QString(), help()};
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Down && event->modifiers() == Qt::NoModifier)
            openMenu();
        else
            PanelButton::keyPressEvent(event);
    }

private:
    static constexpr qreal sidePadding = 8;
    static constexpr qreal linePadding = 5;
    static constexpr qreal chevronGap = 6.5;

    void makeMenu() {
        m_menu = new PanelMenu(look(), this);
        connect(m_menu, &QMenu::aboutToShow, this, &MenuButton::tellOpen);
        connect(m_menu, &QMenu::aboutToHide, this, [this] {
            setDown(false);
            update();
            tellOpen();
        });
    }
    void tellOpen() {
        QAccessible::State changed;
        changed.expanded = true;
        changed.collapsed = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
    [[nodiscard]] QRect titleRect(const QRect& body) const {
        return body.adjusted(look().metrics.px(sidePadding), 0, -static_cast<int>(std::lround(chevronRoom())),
                             0);
    }
    [[nodiscard]] qreal chevronRoom() const {
        return look().metrics.scaled(chevronGap) + chevronSize(look().metrics).width() +
               look().metrics.px(sidePadding);
    }

    PanelMenu* m_menu = nullptr;
};

} // namespace zofra
