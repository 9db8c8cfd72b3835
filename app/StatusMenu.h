// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "platform/MenuItem.h"
#include "stations/LanguageManager.h"

#include <functional>

namespace zofra {

/// What the items of the menu do. Each receives the item that was chosen.
struct StatusMenuActions {
    using Action = std::function<void(const MenuItem& sender)>;
    Action togglePlayRadio;
    /// The item stands for a RadioStation.
    Action selectStationFromMenuItem;
    Action selectOutputMac;
    /// The item stands for a SonosRoom.
    Action selectOutputSonos;
    Action selectOutputEverywhere;
    Action openLocalNetworkSettings;
    Action rescanSonos;
    /// The item stands for a float, 0 to 1.
    Action setVolumeFromMenuItem;
    Action showAboutWindow;
    Action quit;
};

/// The status-bar menu for `state`, in the language of `languages`. The same arguments give the same menu.
[[nodiscard]] Menu statusMenu(const RadioState& state, const LanguageManager& languages,
                              const StatusMenuActions& actions);

} // namespace zofra
