// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/ElidedLabel.h"

#include "platform/ForeignText.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QPaintEvent>
#include <QToolTip>

#include <algorithm>

namespace zofra {

ElidedLabel::ElidedLabel(const PanelLook& look, const Style& style, QWidget* parent)
    : QLabel(parent)
    , m_look(look)
    , m_style(style) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(style.room == Room::insists ? QSizePolicy::Fixed : QSizePolicy::Expanding,
                  QSizePolicy::Fixed);
}

void ElidedLabel::setContent(const QString& text) {
    const QString shown = displayText(text);
    if (shown == m_text)
        return;
    m_text = shown;
    setAccessibleName(m_text);
    if (m_style.room == Room::insists)
        updateGeometry();
    update();
}

bool ElidedLabel::isElided() const {
    return QFontMetrics(textFont(), this).horizontalAdvance(m_text) > textRect().width();
}

QFont ElidedLabel::textFont() const {
    QFont font = m_look.metrics.font(m_style.size, m_style.weight);
    if (m_style.letterSpacing > 0)
        font.setLetterSpacing(QFont::PercentageSpacing, 100 + 100 * m_style.letterSpacing);
    return font;
}

QMargins ElidedLabel::margins() const {
    return m_style.bleed == Bleed::likeButtons ? m_look.metrics.bleeds() : QMargins();
}

QRect ElidedLabel::textRect() const {
    return rect() - margins();
}

QSize ElidedLabel::sizeHint() const {
    const QFontMetrics metrics(textFont(), this);
    const int line = std::max(metrics.height(), m_look.metrics.px(m_style.size * 1.35));
    return QSize(metrics.horizontalAdvance(m_text) + 1, line).grownBy(margins());
}

QSize ElidedLabel::minimumSizeHint() const {
    QSize size = sizeHint();
    if (m_style.room == Room::givesWay)
        size.setWidth(std::min(size.width(), m_look.metrics.px(24)));
    return size;
}

void ElidedLabel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), backdropColor(m_look.theme, m_style.backdrop));
    painter.setFont(textFont());
    painter.setPen(m_style.ink == Ink::dim ? m_look.theme.dim : m_look.theme.text);
    paintLine(painter, textRect(), m_style.alignment, m_text);
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       isElided() ? toolTipText(m_text) : QString(), this, rect());
    return true;
}

} // namespace zofra
