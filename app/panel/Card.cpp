// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/Card.h"

#include <QPaintEvent>

namespace zofra {

void Card::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), m_look.theme.window);
    painter.setRenderHint(QPainter::Antialiasing);
    const int bleed = m_look.metrics.bleed();
    const QRect body = rect().adjusted(bleed, bleed, -bleed, -bleed);
    const qreal radius = m_look.metrics.scaled(10);
    fillRounded(painter, body, radius, m_look.theme.card);
    strokeRounded(painter, body, radius, m_look.theme.line, 1);
}

Separator::Separator(const PanelLook& look, QWidget* parent)
    : QWidget(parent)
    , m_look(look) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize Separator::sizeHint() const {
    const int bleed = m_look.metrics.bleed();
    return {2 * bleed + 1, 2 * bleed + 1};
}

void Separator::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), m_look.theme.window);
    const int bleed = m_look.metrics.bleed();
    painter.fillRect(rect().adjusted(bleed, bleed, -bleed, -bleed), m_look.theme.line);
}

} // namespace zofra
