// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace zofra {

/// A volume as a whole percentage, the fraction cut off. The product is a 32-bit one, as everywhere volumes
/// are handled, so that 0.29 is 29 and not 28. `volume` must be finite and its percentage representable.
[[nodiscard]] int volumePercent(float volume);

} // namespace zofra
