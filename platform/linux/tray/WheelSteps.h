// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstdlib>

namespace zofra {

/// Turns what panels report of a wheel into whole steps: some count notches, some give 120 a notch, and touch
/// pads give many small parts of it.
class WheelSteps {
public:
    [[nodiscard]] int add(int delta) {
        constexpr int smallestAngle = 8;
        constexpr int anglePerNotch = 120;
        constexpr int mostSteps = 20;
        if (std::abs(static_cast<std::int64_t>(delta)) < smallestAngle)
            return delta;
        if (delta > mostSteps * anglePerNotch || delta < -mostSteps * anglePerNotch)
            return delta > 0 ? mostSteps : -mostSteps;
        m_angle += delta;
        const int steps = m_angle / anglePerNotch;
        m_angle -= steps * anglePerNotch;
        return steps;
    }

private:
    int m_angle = 0;
};

} // namespace zofra
