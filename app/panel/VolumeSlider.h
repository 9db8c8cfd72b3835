// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QSlider>

#include <functional>

namespace zofra {

/// A volume in whole percent, as a slider from 0 to 1. Pressing the track goes there at once, pressing the
/// knob holds it there; arrows and the wheel's notches move by 5 %, page keys by 10 %.
class VolumeSlider final : public QSlider {
public:
    VolumeSlider(const PanelLook& look, QWidget* parent);

    /// Told each change that the user makes, with the new volume, 0 to 1; never what `show` sets.
    std::function<void(float volume)> onMoved;
    /// Shows a volume in percent.
    void show(int percent);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    /// Where the middle of the knob can be.
    [[nodiscard]] QRectF travel() const;
    [[nodiscard]] qreal knobX() const;
    void moveTo(qreal x);

    const PanelLook& m_look;
    /// Where the knob is held, from its middle.
    qreal m_grip = 0;
    /// What the wheel has turned since the last whole notch.
    int m_wheelUnits = 0;
};

} // namespace zofra
