// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/CheckBox.h"

#include <QFontMetrics>
#include <QPaintEvent>

#include <algorithm>

namespace zofra {

namespace {

constexpr qreal boxSize = 18;
constexpr qreal gap = 9;

} // namespace

CheckBox::CheckBox(const PanelLook& look, QWidget* parent)
    : QCheckBox(parent)
    , m_look(look) {
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void CheckBox::setTitle(const QString& title) {
    if (title == m_title)
        return;
    m_title = title;
    setAccessibleName(title);
    updateGeometry();
    update();
}

QSize CheckBox::sizeHint() const {
    const PanelMetrics& metrics = m_look.metrics;
    const QFontMetrics text(metrics.font(14), this);
    const int bleed = metrics.bleed();
    return {metrics.px(boxSize) + metrics.px(gap) + text.horizontalAdvance(m_title) + 1 + 2 * bleed,
            std::max(text.height(), metrics.px(boxSize)) + 2 * bleed};
}

void CheckBox::paintBox(QPainter& painter, const QRect& box) const {
    const PanelTheme& theme = m_look.theme;
    const PanelMetrics& metrics = m_look.metrics;
    const qreal radius = metrics.scaled(5);
    if (isChecked()) {
        fillRounded(painter, box, radius, theme.accent);
        const int edge = metrics.px(13);
        const int inset = (box.width() - edge) / 2;
        paintIcon(painter, m_look, QStringLiteral("checkmark"),
                  QRect(box.topLeft() + QPoint(inset, inset), QSize(edge, edge)), theme.onAccent);
    } else {
        fillRounded(painter, box, radius, underMouse() || isDown() ? theme.hover : theme.card);
        // Stronger than the lines between things: this one shows where to click.
        strokeRounded(painter, box, radius, mixed(theme.dim, theme.window, 0.8), metrics.scaled(1.5));
    }
}

bool CheckBox::event(QEvent* event) {
    const bool isHandled = QCheckBox::event(event);
    stayOpaque(*this, *event);
    return isHandled;
}

void CheckBox::paintEvent(QPaintEvent* event) {
    const PanelTheme& theme = m_look.theme;
    const PanelMetrics& metrics = m_look.metrics;
    QPainter painter(this);
    painter.fillRect(event->rect(), theme.window);
    painter.setRenderHint(QPainter::Antialiasing);
    const int edge = metrics.px(boxSize);
    const QRect box(metrics.bleed(), (height() - edge) / 2, edge, edge);
    paintBox(painter, box);
    painter.setFont(metrics.font(14));
    painter.setPen(theme.text);
    painter.drawText(rect().adjusted(box.right() + 1 + metrics.px(gap), 0, 0, 0),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, m_title);
    if (hasFocus()) {
        const QRect ring = box.adjusted(-metrics.bleed(), -metrics.bleed(), metrics.bleed(), metrics.bleed());
        strokeRounded(painter, ring, metrics.scaled(5) + metrics.bleed(), theme.accentText,
                      metrics.scaled(theme.isHighContrast ? 3 : 2));
    }
}

} // namespace zofra
