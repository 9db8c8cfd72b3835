// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/StatusItem.h"
#include "speakers/AudioOutputTarget.h"
#include "speakers/SonosRoom.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"

#include <QString>

#include <optional>
#include <vector>

namespace zofra {

/// All that any face of the program shows: menu, panel, status item, media display, command line and change
/// lines are functions of this value. Equal states look the same.
struct RadioState {
    struct Room {
        SonosRoom room;
        /// What tells it from the others. Data from the network, not markup.
        QString title;
        friend bool operator==(const Room&, const Room&) = default;
    };
    /// What the player of this computer does, wherever the sound goes.
    enum class LocalPlayback {
        stopped,
        /// A stream is held, but does not play.
        paused,
        playing
    };

    RadioStation station = RadioStation::zofra;
    AppLanguage language = AppLanguage::en;

    /// Whether the current output plays, whatever it is.
    bool isPlaying = false;
    /// It is to play on this computer, and no sound flows yet.
    bool isBuffering = false;
    LocalPlayback localPlayback = LocalPlayback::stopped;
    /// The local player's, 0 to 1; what is stored may lie outside.
    float volume = 0.8F;

    /// Nothing is known yet of what the station plays; `currentSong` says so.
    bool isLoading = true;
    QString currentSong;
    /// May be present and empty.
    std::optional<QString> nextSong;

    AudioOutputTarget target = AudioOutputTarget::localMac();
    QString targetTitle;
    /// In the order in which they are shown.
    std::vector<Room> rooms;
    /// What stands in the place of rooms while there are none.
    QString emptyStateMessage;
    bool isScanning = false;
    bool isLocalNetworkDenied = false;

    /// When the music will be stopped by itself; absent when it will not.
    std::optional<TimePoint> stopsAt;
    StatusItemMode tray = StatusItemMode::none;

    /// The next song, unless there is nothing to show of it.
    [[nodiscard]] std::optional<QString> upNext() const {
        return nextSong && !nextSong->isEmpty() ? nextSong : std::nullopt;
    }

    friend bool operator==(const RadioState&, const RadioState&) = default;
};

} // namespace zofra
