// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PlayButton.h"

#include <QFontMetrics>

#include <algorithm>

namespace zofra {

namespace {

constexpr qreal stopSize = 14;
constexpr qreal gap = 8;
constexpr qreal textSize = 14;

} // namespace

PlayButton::PlayButton(const PanelLook& look, QWidget* parent)
    : PanelButton(look, parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void PlayButton::setContent(const QString& icon, const QString& title) {
    if (icon == m_icon && title == m_title)
        return;
    m_icon = icon;
    m_title = title;
    setAccessibleName(title);
    updateGeometry();
    update();
}

int PlayButton::contentWidth() const {
    const PanelMetrics& metrics = look().metrics;
    const QFontMetrics text(metrics.font(textSize, QFont::DemiBold), this);
    return metrics.px(stopSize) + metrics.px(gap) + text.horizontalAdvance(m_title);
}

QSize PlayButton::bodySize() const {
    const PanelMetrics& metrics = look().metrics;
    const QFontMetrics text(metrics.font(textSize, QFont::DemiBold), this);
    return {contentWidth() + 2 * metrics.px(14), std::max(metrics.px(38), text.height() + metrics.px(12))};
}

qreal PlayButton::radius() const {
    return look().metrics.scaled(9);
}

void PlayButton::paintBody(QPainter& painter, const QRect& body) {
    const PanelTheme& theme = look().theme;
    const PanelMetrics& metrics = look().metrics;
    // Towards the ground rather than the ink, so that the title keeps its contrast.
    const QColor away = contrastRatio(theme.onAccent, Qt::black) > contrastRatio(theme.onAccent, Qt::white)
                            ? Qt::black
                            : Qt::white;
    const double shade = isDown() ? 0.16 : underMouse() ? 0.08 : 0;
    fillRounded(painter, body, radius(), mixed(away, theme.accent, shade));

    const int edge = metrics.px(stopSize);
    const int left = body.left() + (body.width() - contentWidth()) / 2;
    paintIcon(painter, look(), m_icon, QRect(left, body.top() + (body.height() - edge) / 2, edge, edge),
              theme.onAccent);
    painter.setFont(metrics.font(textSize, QFont::DemiBold));
    painter.setPen(theme.onAccent);
    painter.drawText(body.adjusted(left - body.left() + edge + metrics.px(gap), 0, 0, 0),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, m_title);
}

} // namespace zofra
