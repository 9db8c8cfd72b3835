// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelButton.h"

#include <QPaintEvent>

namespace zofra {

PanelButton::PanelButton(const PanelLook& look, QWidget* parent)
    : QPushButton(parent)
    , m_look(look) {
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus);
    setAutoDefault(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize PanelButton::sizeHint() const {
    const int bleed = m_look.metrics.bleed();
    return bodySize() + QSize(2 * bleed, 2 * bleed);
}

QRect PanelButton::bodyRect() const {
    const int bleed = m_look.metrics.bleed();
    return rect().adjusted(bleed, bleed, -bleed, -bleed);
}

bool PanelButton::event(QEvent* event) {
    const bool isHandled = QPushButton::event(event);
    stayOpaque(*this, *event);
    return isHandled;
}

void PanelButton::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), m_look.theme.window);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBody(painter, bodyRect());
    const QColor ring = hasFocus() ? m_look.theme.accentText : restingRing();
    if (ring.alpha() > 0) {
        const qreal width = m_look.metrics.scaled(m_look.theme.isHighContrast ? 3 : 2);
        const int reach = ringReach();
        strokeRounded(painter, bodyRect().adjusted(-reach, -reach, reach, reach), radius() + reach, ring,
                      width);
    }
}

} // namespace zofra
