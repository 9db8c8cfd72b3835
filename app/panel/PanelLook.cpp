// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelLook.h"

namespace zofra {

void paintIcon(QPainter& painter, const PanelLook& look, const QString& name, const QRect& square,
               const QColor& color) {
    // The device that is really painted on; a widget being rendered elsewhere would name itself.
    const qreal ratio = painter.paintEngine()->paintDevice()->devicePixelRatioF();
    painter.drawPixmap(square.topLeft(), look.icons.pixmap(name, square.size(), ratio, color));
}

void fillRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(rect, radius, radius);
}

void strokeRounded(QPainter& painter, const QRectF& rect, qreal radius, const QColor& color, qreal width) {
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    const qreal half = width / 2;
    painter.drawRoundedRect(rect.adjusted(half, half, -half, -half), radius - half, radius - half);
}

} // namespace zofra
