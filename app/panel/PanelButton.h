// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"
#include "platform/ForeignText.h"

#include <QHelpEvent>
#include <QPaintEvent>
#include <QPushButton>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

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
    };

    PanelButton(const PanelLook& look, const Style& style, QWidget* parent)
        : QPushButton(parent)
        , m_look(look)
        , m_style(style) {
        setAttribute(Qt::WA_Hover);
        setFocusPolicy(Qt::TabFocus);
        setAutoDefault(true);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }

    /// What stands on the button, and what screen readers call it.
    void setTitle(const QString& title) {
        if (title == m_title)
            return;
        m_title = title;
        setAccessibleName(title);
        updateGeometry();
        update();
    }
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
    [[nodiscard]] virtual QFont textFont() const {
        return m_look.metrics.font(m_style.textSize, m_style.weight);
    }
    [[nodiscard]] int titleWidth() const {
        return QFontMetrics(textFont(), this).horizontalAdvance(m_title) + 1;
    }
    [[nodiscard]] int titleHeight() const {
        return std::max(QFontMetrics(textFont(), this).height(), m_look.metrics.px(m_style.textSize * 1.35));
    }
    /// The title in one line of `room`.
    void paintTitle(QPainter& painter, const QRect& room, Qt::Alignment alignment,
                    const QColor& color) const {
        painter.setFont(textFont());
        painter.setPen(color);
        paintLine(painter, room, alignment, m_title);
    }
    /// A desktop without animations says so through its style.
    [[nodiscard]] bool animates() const {
        return style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    }
    /// The body's ground while the pointer is on it or it is pressed.
    [[nodiscard]] QColor groundUnderPointer() const {
        return isDown() ? m_look.theme.pressed : m_look.theme.hover;
    }

    bool event(QEvent* event) override {
        if (event->type() == QEvent::ToolTip) {
            QString text;
            for (const QString& line : helpLines()) {
                if (!line.isEmpty())
                    text += toolTipText(line);
            }
            QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text, this);
            return true;
        }
        const bool isHandled = QPushButton::event(event);
        stayOpaque(*this, *event);
        return isHandled;
    }
    void paintEvent(QPaintEvent* event) final {
        QPainter painter(this);
        painter.fillRect(event->rect(), m_look.theme.window);
        painter.setRenderHint(QPainter::Antialiasing);
        paintBody(painter, bodyRect());
        if (!hasFocus())
            return;
        const int reach = ringReach();
        strokeRounded(painter, ringed().adjusted(-reach, -reach, reach, reach), radius() + reach,
                      m_look.theme.accentText, m_look.metrics.scaled(m_look.theme.isHighContrast ? 3 : 2));
    }

private:
    const PanelLook& m_look;
    Style m_style;
    QString m_title;
    QString m_help;
};

} // namespace zofra
