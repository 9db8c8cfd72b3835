// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <optional>

namespace zofra {

/// A volume as a whole percentage, the fraction cut off; absent when it is not finite or no integer holds it.
/// The product is a 32-bit one, as everywhere volumes are handled, so that 0.29 is 29 and not 28.
[[nodiscard]] inline std::optional<int> volumePercent(float volume) {
    const float percent = volume * 100.0F;
    // The largest 32-bit float below 2^31.
    constexpr float largest = 2147483520.0F;
    if (!std::isfinite(percent) || std::fabs(percent) > largest)
        return std::nullopt;
    return static_cast<int>(percent);
}

/// The same for showing: between 0 and 100 whatever the settings hold.
[[nodiscard]] inline int shownVolumePercent(float volume) {
    return std::clamp(volumePercent(volume).value_or(100), 0, 100);
}

/// The smallest volume near `percent` hundredths whose percentage is `percent`, which lies between 0 and 100:
/// the nearest one to 53 hundredths, for example, is cut to 52.
[[nodiscard]] inline float volumeOfPercent(int percent) {
    const float volume = static_cast<float>(percent) / 100.0F;
    return volumePercent(volume) == percent ? volume : std::nextafter(volume, 1.0F);
}

} // namespace zofra
