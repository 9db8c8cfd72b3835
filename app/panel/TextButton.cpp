// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/TextButton.h"

#include <QFontMetrics>

#include <algorithm>

namespace zofra {

TextButton::TextButton(const PanelLook& look, QWidget* parent)
    : PanelButton(look, parent) {
    setDefault(true);
}

void TextButton::setTitle(const QString& title) {
    if (title == m_title)
        return;
    m_title = title;
    setAccessibleName(title);
    updateGeometry();
    update();
}

QSize TextButton::bodySize() const {
    const PanelMetrics& metrics = look().metrics;
    const QFontMetrics text(metrics.font(14, QFont::DemiBold), this);
    return {text.horizontalAdvance(m_title) + 2 * metrics.px(14),
            std::max(text.height(), metrics.px(19)) + 2 * metrics.px(7)};
}

qreal TextButton::radius() const {
    return look().metrics.scaled(8);
}

QColor TextButton::restingRing() const {
    const PanelTheme& theme = look().theme;
    return theme.isHighContrast ? theme.text : mixed(theme.accentText, theme.window, 0.55);
}

void TextButton::paintBody(QPainter& painter, const QRect& body) {
    const PanelTheme& theme = look().theme;
    fillRounded(painter, body, radius(), isDown() || underMouse() ? theme.pressed : theme.hover);
    painter.setFont(look().metrics.font(14, QFont::DemiBold));
    painter.setPen(theme.text);
    painter.drawText(body, Qt::AlignCenter | Qt::TextSingleLine, m_title);
}

LinkButton::LinkButton(const PanelLook& look, QWidget* parent)
    : PanelButton(look, parent) {
    setCursor(Qt::PointingHandCursor);
}

void LinkButton::setTitle(const QString& title) {
    if (title == m_title)
        return;
    m_title = title;
    setAccessibleName(title);
    updateGeometry();
    update();
}

QFont LinkButton::textFont() const {
    QFont font = look().metrics.font(12);
    font.setUnderline(underMouse() || look().theme.isHighContrast);
    return font;
}

QSize LinkButton::bodySize() const {
    const QFontMetrics text(look().metrics.font(12), this);
    return {text.horizontalAdvance(m_title), std::max(text.height(), look().metrics.px(16))};
}

qreal LinkButton::radius() const {
    return look().metrics.scaled(2);
}

void LinkButton::paintBody(QPainter& painter, const QRect& body) {
    painter.setFont(textFont());
    painter.setPen(look().theme.accentText);
    painter.drawText(body, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, m_title);
}

} // namespace zofra
