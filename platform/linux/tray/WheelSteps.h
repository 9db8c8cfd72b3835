// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/tray/TrayMode.h"

#include <algorithm>
#include <cstdlib>

namespace zofra {

/// Turns what panels report of a wheel (notches, 120 a notch, parts) into whole notches, positive is away.
class WheelSteps {
public:
    /// Begins anew, with a panel that tells of wheels in this way.
    void setPanel(TrayWheel panel) {
        m_panel = panel;
        m_angle = 0;
    }

    [[nodiscard]] int add(int delta) {
        constexpr int smallestAngle = 8;
        constexpr int anglePerNotch = 120;
        constexpr int mostSteps = 20;
        // The least number there is has no opposite.
        delta = std::clamp(delta, -mostSteps * anglePerNotch, mostSteps * anglePerNotch);
        const int angle = std::abs(delta) < smallestAngle ? delta * anglePerNotch : delta;
        m_angle += m_panel.isPositiveUp ? angle : -angle;
        const int notch = anglePerNotch * m_panel.callsPerNotch;
        const int steps = m_angle / notch;
        m_angle -= steps * notch;
        return steps;
    }

private:
    TrayWheel m_panel;
    int m_angle = 0;
};

} // namespace zofra
