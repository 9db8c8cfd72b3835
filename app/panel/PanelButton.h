// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QPushButton>

namespace zofra {

/// What the panel's buttons have in common: a title, a body with room around it for the focus ring, painted
/// by themselves. The mouse does not move the focus here, so that Return goes on meaning "close" while
/// someone clicks around; with the keyboard on a button, Space and Return press it.
class PanelButton : public QPushButton {
public:
    /// How a button is drawn, in pixels of the drawing.
    struct Style {
        qreal radius = 8;
        qreal textSize = 14;
        QFont::Weight weight = QFont::DemiBold;
        /// Around the title.
        qreal padding = 14;
    };

    PanelButton(const PanelLook& look, const Style& style, QWidget* parent);

    /// What stands on the button, and what screen readers call it.
    void setTitle(const QString& title);
    [[nodiscard]] const QString& title() const { return m_title; }
    /// Shown on hover. Not what screen readers add to the name: see `setAccessibleDescription`.
    void setHelp(const QString& help) { m_help = help; }
    [[nodiscard]] const QString& help() const { return m_help; }

    [[nodiscard]] QSize sizeHint() const final { return bodySize().grownBy(m_look.metrics.bleeds()); }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    /// Without the room for the ring.
    [[nodiscard]] virtual QSize bodySize() const = 0;
    virtual void paintBody(QPainter& painter, const QRect& body) = 0;
    /// What the ring goes round.
    [[nodiscard]] virtual QRect ringed() const { return bodyRect(); }
    /// How far the ring's outer edge stands off; at most the room that is kept for it.
    [[nodiscard]] virtual int ringReach() const { return m_look.metrics.bleed(); }
    /// One line each; absent lines are left out.
    [[nodiscard]] virtual QStringList helpLines() const { return {m_help}; }

    [[nodiscard]] const PanelLook& look() const { return m_look; }
    [[nodiscard]] QRect bodyRect() const { return rect() - m_look.metrics.bleeds(); }
    [[nodiscard]] qreal radius() const { return m_look.metrics.scaled(m_style.radius); }
    [[nodiscard]] virtual QFont textFont() const;
    [[nodiscard]] int titleWidth() const;
    [[nodiscard]] int titleHeight() const;
    /// The title in one line of `room`.
    void paintTitle(QPainter& painter, const QRect& room, Qt::Alignment alignment, const QColor& color) const;
    /// A desktop without animations says so through its style.
    [[nodiscard]] bool animates() const;
    /// The body's ground while the pointer is on it or it is pressed.
    [[nodiscard]] QColor groundUnderPointer() const;

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) final;

private:
    const PanelLook& m_look;
    Style m_style;
    QString m_title;
    QString m_help;
};

} // namespace zofra
