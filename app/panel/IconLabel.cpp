// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/IconLabel.h"

#include <QPaintEvent>

namespace zofra {

IconLabel::IconLabel(const PanelLook& look, QString name, const Style& style, QWidget* parent)
    : QWidget(parent)
    , m_look(look)
    , m_name(std::move(name))
    , m_style(style) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void IconLabel::setInk(Ink ink) {
    if (ink == m_style.ink)
        return;
    m_style.ink = ink;
    update();
}

QSize IconLabel::sizeHint() const {
    const int bleed = m_style.bleeds * m_look.metrics.bleed();
    return {m_look.metrics.px(m_style.cellWidth) + 2 * bleed,
            m_look.metrics.px(m_style.cellHeight) + 2 * bleed};
}

void IconLabel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), backdropColor(m_look.theme, m_style.backdrop));
    const int edge = m_look.metrics.px(m_style.size);
    const int bleed = m_style.bleeds * m_look.metrics.bleed();
    const int spare = width() - 2 * bleed - edge;
    const int left = m_style.alignment.testFlag(Qt::AlignLeft)    ? 0
                     : m_style.alignment.testFlag(Qt::AlignRight) ? spare
                                                                  : spare / 2;
    const QRect square(bleed + left, (height() - edge) / 2, edge, edge);
    paintIcon(painter, m_look, m_name, square,
              m_style.ink == Ink::accent ? m_look.theme.accentText : m_look.theme.dim);
}

} // namespace zofra
