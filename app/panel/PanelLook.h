// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/icons/IconSet.h"
#include "app/panel/PanelMetrics.h"
#include "app/panel/PanelTheme.h"

#include <QEvent>
#include <QPaintEngine>
#include <QPainter>
#include <QPolygonF>
#include <QWidget>

namespace zofra {

/// What every part of the panel paints and measures with. Owned by the panel, which changes it and repaints;
/// parts keep a reference and read it anew each time.
struct PanelLook {
    PanelTheme theme;
    PanelMetrics metrics;
};

/// What a part stands on. Parts paint it themselves, so that repainting one repaints nothing behind it.
enum class Backdrop { window, card };

[[nodiscard]] inline QColor backdropColor(const PanelTheme& theme, Backdrop backdrop) {
    return backdrop == Backdrop::card ? theme.card : theme.window;
}

/// Keeps a part opaque: called with each of its events. Styles take that attribute from buttons and sliders
/// when they adopt them, and then every repaint would reach through to whatever lies behind.
inline void stayOpaque(QWidget& part, const QEvent& event) {
    if (event.type() == QEvent::Polish || event.type() == QEvent::StyleChange)
        part.setAttribute(Qt::WA_OpaquePaintEvent);
}

/// Draws the drawing `name` into `square`, sharp at the painter's device ratio.
inline void paintIcon(QPainter& painter, const QString& name, const QRect& square, const QColor& color) {
    // The device that is really painted on; a widget being rendered elsewhere would name itself.
    const qreal ratio = painter.paintEngine()->paintDevice()->devicePixelRatioF();
    painter.drawPixmap(square.topLeft(), IconSet::pixmap(name, square.size(), ratio, color));
}

/// Fills a rounded rectangle.
inline void fillRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(rect, radius, radius);
}

/// Draws a rounded line of `width` lying inside `rect`.
inline void strokeRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color,
                          qreal width) {
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    const qreal half = width / 2;
    painter.drawRoundedRect(rect.adjusted(half, half, -half, -half), radius - half, radius - half);
}

/// A chevron as drawn: half of its width, and its line.
inline constexpr qreal chevronReach = 3;
inline constexpr qreal chevronStroke = 1.5;

/// The room that a chevron drawn downwards takes.
[[nodiscard]] inline QSizeF chevronSize(const PanelMetrics& metrics) {
    return {metrics.scaled(2 * chevronReach + chevronStroke), metrics.scaled(chevronReach + chevronStroke)};
}

/// Draws a chevron around `middle`, turned clockwise by `degrees` from pointing downwards.
inline void paintChevron(QPainter& painter, const PanelMetrics& metrics, QPointF middle, int degrees,
                         const QColor& color) {
    const qreal reach = metrics.scaled(chevronReach);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(middle);
    painter.rotate(degrees);
    painter.setPen(QPen(color, metrics.scaled(chevronStroke), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({{-reach, -reach / 2}, {0, reach / 2}, {reach, -reach / 2}}));
    painter.restore();
}

/// Draws one line of text, cut with an ellipsis where it does not fit: at the end of the text, which is on
/// the left of one that is written from right to left. With the painter's font and pen.
inline void paintLine(QPainter& painter, const QRect& room, Qt::Alignment alignment, const QString& text) {
    const auto before = painter.layoutDirection();
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter.drawText(room,
                     static_cast<int>(alignment | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, room.width()));
    painter.setLayoutDirection(before);
}

} // namespace zofra
