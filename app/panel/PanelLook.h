// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/icons/IconSet.h"
#include "app/panel/PanelMetrics.h"
#include "app/panel/PanelTheme.h"

#include <QEvent>
#include <QPaintEngine>
#include <QPainter>
#include <QRectF>
#include <QWidget>

namespace zofra {

/// What every part of the panel paints and measures with. Owned by the panel, which changes it and repaints;
/// parts keep a reference and read it anew each time.
struct PanelLook {
    PanelTheme theme;
    PanelMetrics metrics;
    const IconSet& icons;
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
void paintIcon(QPainter& painter, const PanelLook& look, const QString& name, const QRect& square,
               const QColor& color);

/// Fills a rounded rectangle.
void fillRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color);

/// Draws a rounded line of `width` lying inside `rect`.
void strokeRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color, qreal width);

/// The room that a chevron drawn downwards takes.
[[nodiscard]] QSizeF chevronSize(const PanelMetrics& metrics);

/// Draws a chevron around `middle`, turned clockwise by `degrees` from pointing downwards.
void paintChevron(QPainter& painter, const PanelMetrics& metrics, QPointF middle, int degrees,
                  const QColor& color);

/// Draws one line of text, cut with an ellipsis where it does not fit: at the end of the text, which is on
/// the left of one that is written from right to left. With the painter's font and pen.
void paintLine(QPainter& painter, const QRect& room, Qt::Alignment alignment, const QString& text);

} // namespace zofra
