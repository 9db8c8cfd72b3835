// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioControls.h"
#include "app/VolumePercent.h"
#include "app/panel/PanelLook.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QSignalBlocker>
#include <QSlider>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <functional>

namespace zofra {

/// A volume in whole percent, as a slider from 0 to 1. Pressing the track goes there at once, pressing the
/// knob holds it there; arrows and the wheel's notches move by 5 %, page keys by 10 %.
class VolumeSlider final : public QSlider {
public:
    VolumeSlider(const PanelLook& look, QWidget* parent)
        : QSlider(Qt::Horizontal, parent)
        , m_look(look) {
        setAttribute(Qt::WA_Hover);
        setFocusPolicy(Qt::TabFocus);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setRange(0, fullPercent);
        setSingleStep(RadioControls::volumeStep);
        setPageStep(2 * RadioControls::volumeStep);
        connect(this, &QSlider::valueChanged, this, [this](int percent) {
            if (onMoved)
                onMoved(volumeOfPercent(percent));
        });
    }

    /// Told each change that the user makes, with the new volume, 0 to 1; never what `show` sets.
    std::function<void(float volume)> onMoved;
    /// Shows a volume in percent.
    void show(int percent) {
        const QSignalBlocker quiet(this);
        setValue(percent);
    }

    [[nodiscard]] QSize sizeHint() const override {
        const int bleed = m_look.metrics.bleed();
        return {m_look.metrics.px(120), m_look.metrics.px(knobSize + 2) + 2 * bleed};
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override {
        const bool isHandled = QSlider::event(event);
        stayOpaque(*this, *event);
        return isHandled;
    }
    void paintEvent(QPaintEvent* event) override {
        const PanelTheme& theme = m_look.theme;
        const PanelMetrics& metrics = m_look.metrics;
        QPainter painter(this);
        painter.fillRect(event->rect(), theme.window);
        painter.setRenderHint(QPainter::Antialiasing);

        const qreal bleed = metrics.bleed();
        const qreal thickness = metrics.px(trackHeight);
        const qreal middle = std::floor(height() / 2.0);
        const QRectF track(bleed, middle - thickness / 2, width() - 2 * bleed, thickness);
        const qreal x = knobX();
        fillRounded(painter, track, thickness / 2, theme.mark);
        QRectF filled = track;
        filled.setRight(x);
        fillRounded(painter, filled, thickness / 2, theme.accentText);

        const qreal edge = metrics.scaled(knobSize);
        const QRectF knob(x - edge / 2, middle - edge / 2, edge, edge);
        painter.setBrush(isSliderDown() ? QColor(0xf0f0f2) : QColor(Qt::white));
        painter.setPen(QPen(theme.isHighContrast ? theme.text : theme.mark, theme.isHighContrast ? 2 : 1));
        painter.drawEllipse(knob.adjusted(0.5, 0.5, -0.5, -0.5));
        if (hasFocus()) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(theme.accentText, metrics.scaled(2)));
            painter.drawEllipse(knob.adjusted(-1.5, -1.5, 1.5, 1.5));
        }
    }
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton) {
            event->ignore();
            return;
        }
        setSliderDown(true);
        // The knob is held where it was touched; elsewhere its middle comes to the pointer.
        const qreal offKnob = event->position().x() - knobX();
        const bool isOnKnob = std::fabs(offKnob) <= m_look.metrics.scaled(knobSize) / 2;
        m_grip = isOnKnob ? offKnob : 0;
        moveTo(event->position().x() - m_grip);
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        if (isSliderDown())
            moveTo(event->position().x() - m_grip);
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton)
            setSliderDown(false);
    }
    void wheelEvent(QWheelEvent* event) override {
        // Fine wheels and touch pads tell parts of a notch.
        const QPoint turned = event->angleDelta();
        m_wheelUnits += turned.y() != 0 ? turned.y() : turned.x();
        const int steps = m_wheelUnits / wheelUnitsPerStep;
        m_wheelUnits -= steps * wheelUnitsPerStep;
        setValue(value() + steps * RadioControls::volumeStep);
        event->accept();
    }

private:
    static constexpr qreal knobSize = 18;
    static constexpr qreal trackHeight = 4;
    static constexpr int fullPercent = 100;
    static constexpr int wheelUnitsPerStep = 120;

    /// Where the middle of the knob can be.
    [[nodiscard]] QRectF travel() const {
        const qreal inset = m_look.metrics.bleed() + m_look.metrics.scaled(knobSize) / 2;
        return QRectF(rect()).adjusted(inset, 0, -inset, 0);
    }
    [[nodiscard]] qreal knobX() const {
        const QRectF room = travel();
        return room.left() + room.width() * value() / fullPercent;
    }
    void moveTo(qreal x) {
        const QRectF room = travel();
        const qreal share = room.width() > 0 ? (x - room.left()) / room.width() : 0;
        setValue(static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * fullPercent)));
    }

    const PanelLook& m_look;
    /// Where the knob is held, from its middle.
    qreal m_grip = 0;
    /// What the wheel has turned since the last whole notch.
    int m_wheelUnits = 0;
};

} // namespace zofra
