// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VolumePercent.h"

#include <QtGlobal>

#include <cmath>

namespace zofra {

int volumePercent(float volume) {
    const float percent = volume * 100.0F;
    // The largest 32-bit float below 2^31.
    constexpr float largest = 2147483520.0F;
    if (!std::isfinite(percent) || std::fabs(percent) > largest)
        qFatal("A volume of %f has no percentage", static_cast<double>(volume));
    return static_cast<int>(percent);
}

} // namespace zofra
