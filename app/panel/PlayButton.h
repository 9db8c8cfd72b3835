// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"

#include <QVariantAnimation>

#include <algorithm>

namespace zofra {

/// The one prominent button: play or stop. While sound is on its way, an arc turns around its drawing.
class PlayButton final : public PanelButton {
public:
    PlayButton(const PanelLook& look, QWidget* parent)
        : PanelButton(look, {.radius = 9}, parent) {
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        m_turning.setDuration(turnMilliseconds);
        m_turning.setStartValue(0);
        m_turning.setEndValue(360);
        m_turning.setLoopCount(-1);
        connect(&m_turning, &QVariantAnimation::valueChanged, this, [this] { update(); });
    }

    /// `icon` names a drawing.
    void setContent(const QString& icon, const QString& title) {
        setTitle(title);
        if (icon == m_icon)
            return;
        m_icon = icon;
        update();
    }
    [[nodiscard]] const QString& iconName() const { return m_icon; }
    /// Shows whether sound is still being waited for; `word` says so to screen readers and on hover.
    void setWaiting(bool isWaiting, const QString& word) {
        setHelp(isWaiting ? word : QString());
        setAccessibleDescription(help());
        if (isWaiting == m_isWaiting)
            return;
        m_isWaiting = isWaiting;
        turn();
        update();
    }
    [[nodiscard]] bool isWaiting() const { return m_isWaiting; }

protected:
    [[nodiscard]] QSize bodySize() const override {
        const PanelMetrics& metrics = look().metrics;
        return {contentWidth() + 2 * metrics.px(14),
                std::max(metrics.px(38), titleHeight() + metrics.px(12))};
    }
    void paintBody(QPainter& painter, const QRect& body) override {
        const PanelTheme& theme = look().theme;
        const PanelMetrics& metrics = look().metrics;
        const double shade = isDown() ? 0.16 : underMouse() ? 0.08 : 0;
        fillRounded(painter, body, radius(), theme.shadedAccent(shade));

        const int edge = metrics.px(drawingSize);
        const QRect square(body.left() + (body.width() - contentWidth()) / 2,
                           body.top() + (body.height() - edge) / 2, edge, edge);
        paintIcon(painter, m_icon, square, theme.onAccent);
        if (m_isWaiting) {
            const qreal reach = metrics.scaled(arcReach);
            painter.setPen(QPen(theme.onAccent, metrics.scaled(2), Qt::SolidLine, Qt::RoundCap));
            painter.drawArc(QRectF(square).adjusted(-reach, -reach, reach, reach),
                            -16 * m_turning.currentValue().toInt(), 16 * 270);
        }
        paintTitle(painter, body.adjusted(square.right() + 1 + metrics.px(gap) - body.left(), 0, 0, 0),
                   Qt::AlignLeft, theme.onAccent);
    }
    void showEvent(QShowEvent* event) override {
        PanelButton::showEvent(event);
        turn();
    }
    void hideEvent(QHideEvent* event) override {
        PanelButton::hideEvent(event);
        turn();
    }

private:
    static constexpr qreal drawingSize = 14;
    static constexpr qreal gap = 8;
    static constexpr qreal arcReach = 4;
    static constexpr int turnMilliseconds = 1200;

    [[nodiscard]] int contentWidth() const {
        return look().metrics.px(drawingSize) + look().metrics.px(gap) + titleWidth();
    }
    void turn() {
        // Else the arc stands still.
        if (m_isWaiting && isVisible() && animates())
            m_turning.start();
        else
            m_turning.stop();
    }

    QString m_icon;
    bool m_isWaiting = false;
    QVariantAnimation m_turning;
};

} // namespace zofra
