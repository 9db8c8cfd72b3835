// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MenuItem.h"
#include "speakers/AudioOutputTarget.h"
#include "speakers/SonosRoom.h"
#include "stations/LanguageManager.h"
#include "stations/RadioStation.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace zofra {

/// What the status-bar menu is made of.
struct StatusMenuState {
    struct Room {
        SonosRoom room;
        QString title;
    };

    bool isPlaying = false;
    RadioStation currentStation = RadioStation::zofra;
    QString currentSongText;
    std::optional<QString> nextSongText;
    AudioOutputTarget activeTarget = AudioOutputTarget::localMac();
    QString activeTargetTitle;
    /// In the order in which they are shown.
    std::vector<Room> rooms;
    QString emptyStateMessage;
    bool localNetworkDenied = false;
    /// The local player's, 0 to 1.
    float volume = 0.8F;
};

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
[[nodiscard]] Menu statusMenu(const StatusMenuState& state, const LanguageManager& languages,
                              const StatusMenuActions& actions);

} // namespace zofra
