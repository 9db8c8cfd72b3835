// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioControls.h"
#include "app/RadioState.h"
#include "platform/MenuItem.h"

namespace zofra {

// The lines of the panel's menus. What choosing one does goes to `controls`, which outlives them.

/// Every station with name and genre.
[[nodiscard]] Menu stationMenuEntries(const RadioState& state, RadioControls& controls);

/// This computer, the rooms or why there are none, everywhere, and what finds more.
[[nodiscard]] Menu outputMenuEntries(const RadioState& state, RadioControls& controls);

} // namespace zofra
