// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelMenu.h"
#include "speakers/SonosManager.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"

namespace zofra {

/// What a line of the output menu does; `argument` of a room's line is its id.
enum class OutputCommand { thisMac, room, everywhere, search, allowLocalNetwork };

/// Every station with name and genre; `argument` is the raw value.
[[nodiscard]] QList<PanelMenuEntry> stationMenuEntries(RadioStation current);

/// This computer, the rooms or why there are none, everywhere, and what finds more.
[[nodiscard]] QList<PanelMenuEntry> outputMenuEntries(const SonosManager& sonos, AppLanguage language);

} // namespace zofra
