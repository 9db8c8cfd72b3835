// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/VolumeSlider.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QRadialGradient>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>

namespace zofra {

namespace {

constexpr qreal knobSize = 18;
constexpr qreal trackHeight = 4;
constexpr int fullPercent = 100;

// The volume of a step: the nearest one whose percentage, cut as it is everywhere, is that step again. 0.53
// itself would come back as 52.
float volumeAt(int percent) {
    const float full = fullPercent;
    const float volume = static_cast<float>(percent) / full;
    return volume * full < static_cast<float>(percent) ? std::nextafter(volume, 1.0F) : volume;
}

} // namespace

VolumeSlider::VolumeSlider(const PanelLook& look, QWidget* parent)
    : QSlider(Qt::Horizontal, parent)
    , m_look(look) {
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setRange(0, fullPercent);
    setSingleStep(2);
    setPageStep(10);
    connect(this, &QSlider::valueChanged, this, [this](int percent) {
        if (onMoved)
            onMoved(volumeAt(percent));
    });
}

void VolumeSlider::show(int percent) {
    const QSignalBlocker quiet(this);
    setValue(percent);
}

QSize VolumeSlider::sizeHint() const {
    const int bleed = m_look.metrics.bleed();
    return {m_look.metrics.px(120), m_look.metrics.px(knobSize + 2) + 2 * bleed};
}

QRectF VolumeSlider::travel() const {
    const qreal inset = m_look.metrics.bleed() + m_look.metrics.scaled(knobSize) / 2;
    return QRectF(rect()).adjusted(inset, 0, -inset, 0);
}

void VolumeSlider::moveTo(qreal x) {
    const QRectF room = travel();
    const qreal share = room.width() > 0 ? (x - room.left()) / room.width() : 0;
    setValue(static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * fullPercent)));
}

void VolumeSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    setSliderDown(true);
    moveTo(event->position().x());
}

void VolumeSlider::mouseMoveEvent(QMouseEvent* event) {
    if (isSliderDown())
        moveTo(event->position().x());
}

void VolumeSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        setSliderDown(false);
}

bool VolumeSlider::event(QEvent* event) {
    const bool isHandled = QSlider::event(event);
    stayOpaque(*this, *event);
    return isHandled;
}

void VolumeSlider::paintEvent(QPaintEvent* event) {
    const PanelTheme& theme = m_look.theme;
    const PanelMetrics& metrics = m_look.metrics;
    QPainter painter(this);
    painter.fillRect(event->rect(), theme.window);
    painter.setRenderHint(QPainter::Antialiasing);

    const qreal bleed = metrics.bleed();
    const qreal thickness = metrics.px(trackHeight);
    const qreal middle = std::floor(height() / 2.0);
    const QRectF track(bleed, middle - thickness / 2, width() - 2 * bleed, thickness);
    const QRectF room = travel();
    const qreal knobX = room.left() + room.width() * value() / fullPercent;
    fillRounded(painter, track, thickness / 2, theme.line);
    QRectF filled = track;
    filled.setRight(knobX);
    fillRounded(painter, filled, thickness / 2, theme.accentText);

    const qreal edge = metrics.scaled(knobSize);
    const QRectF knob(knobX - edge / 2, middle - edge / 2, edge, edge);
    QRadialGradient shadow(QPointF(knobX, middle + 1), edge / 2 + metrics.scaled(2.5));
    shadow.setColorAt(0, QColor(0, 0, 0, 90));
    shadow.setColorAt(0.7, QColor(0, 0, 0, 60));
    shadow.setColorAt(1, Qt::transparent);
    painter.setPen(Qt::NoPen);
    painter.setBrush(shadow);
    painter.drawEllipse(QPointF(knobX, middle + 1), edge / 2 + metrics.scaled(2.5),
                        edge / 2 + metrics.scaled(2.5));
    painter.setBrush(isSliderDown() ? QColor(0xf0f0f2) : QColor(Qt::white));
    painter.setPen(
        QPen(theme.isHighContrast ? theme.text : QColor(0, 0, 0, 51), theme.isHighContrast ? 2 : 1));
    painter.drawEllipse(knob.adjusted(0.5, 0.5, -0.5, -0.5));
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(theme.accentText, metrics.scaled(2)));
        painter.drawEllipse(knob.adjusted(-1.5, -1.5, 1.5, 1.5));
    }
}

} // namespace zofra
