// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VolumePercent.h"

#include <algorithm>
#include <cmath>

namespace zofra {

std::optional<int> volumePercent(float volume) {
    const float percent = volume * 100.0F;
    // The largest 32-bit float below 2^31.
    constexpr float largest = 2147483520.0F;
    if (!std::isfinite(percent) || std::fabs(percent) > largest)
        return std::nullopt;
    return static_cast<int>(percent);
}

int shownVolumePercent(float volume) {
    return std::clamp(volumePercent(volume).value_or(100), 0, 100);
}

float volumeOfPercent(int percent) {
    const float volume = static_cast<float>(percent) / 100.0F;
    return volumePercent(volume) == percent ? volume : std::nextafter(volume, 1.0F);
}

} // namespace zofra
