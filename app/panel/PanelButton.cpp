// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelButton.h"

#include "platform/ForeignText.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QPaintEvent>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace zofra {

PanelButton::PanelButton(const PanelLook& look, const Style& style, QWidget* parent)
    : QPushButton(parent)
    , m_look(look)
    , m_style(style) {
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus);
    setAutoDefault(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PanelButton::setTitle(const QString& title) {
    if (title == m_title)
        return;
    m_title = title;
    setAccessibleName(title);
    updateGeometry();
    update();
}

QFont PanelButton::textFont() const {
    return m_look.metrics.font(m_style.textSize, m_style.weight);
}

int PanelButton::titleWidth() const {
    return QFontMetrics(textFont(), this).horizontalAdvance(m_title) + 1;
}

int PanelButton::titleHeight() const {
    return std::max(QFontMetrics(textFont(), this).height(), m_look.metrics.px(m_style.textSize * 1.35));
}

void PanelButton::paintTitle(QPainter& painter, const QRect& room, Qt::Alignment alignment,
                             const QColor& color) const {
    painter.setFont(textFont());
    painter.setPen(color);
    paintLine(painter, room, alignment, m_title);
}

bool PanelButton::animates() const {
    return style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
}

QColor PanelButton::groundUnderPointer() const {
    return isDown() ? m_look.theme.pressed : m_look.theme.hover;
}

bool PanelButton::event(QEvent* event) {
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

void PanelButton::paintEvent(QPaintEvent* event) {
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

} // namespace zofra
