// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelLook.h"

#include <QFontMetrics>
#include <QPolygonF>

namespace zofra {

namespace {

constexpr qreal chevronReach = 3;
constexpr qreal chevronStroke = 1.5;

} // namespace

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

QSizeF chevronSize(const PanelMetrics& metrics) {
    return {metrics.scaled(2 * chevronReach + chevronStroke), metrics.scaled(chevronReach + chevronStroke)};
}

void paintChevron(QPainter& painter, const PanelMetrics& metrics, QPointF middle, int degrees,
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

void paintLine(QPainter& painter, const QRect& room, Qt::Alignment alignment, const QString& text) {
    const auto before = painter.layoutDirection();
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter.drawText(room,
                     static_cast<int>(alignment | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, room.width()));
    painter.setLayoutDirection(before);
}

} // namespace zofra
