// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

namespace zofra {

/// A volume as a whole percentage, the fraction cut off; absent when it is not finite or no integer holds it.
/// The product is a 32-bit one, as everywhere volumes are handled, so that 0.29 is 29 and not 28.
[[nodiscard]] std::optional<int> volumePercent(float volume);

/// The same for showing: between 0 and 100 whatever the settings hold.
[[nodiscard]] int shownVolumePercent(float volume);

/// The smallest volume near `percent` hundredths whose percentage is `percent`, which lies between 0 and 100:
/// the nearest one to 53 hundredths, for example, is cut to 52.
[[nodiscard]] float volumeOfPercent(int percent);

} // namespace zofra
