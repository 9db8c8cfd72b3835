// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/Observable.h"
#include "platform/SharedInstance.h"
#include "playback/RadioPlayer.h"
#include "speakers/AudioOutputTarget.h"
#include "speakers/GroupPlayback.h"
#include "speakers/SonosRoom.h"
#include "speakers/SonosSpeaker.h"
#include "speakers/SpeakerBackground.h"
#include "stations/LanguageManager.h"
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// Owns everything about networked players: what was found, the rooms, where audio goes, what plays there.
/// Main thread only. Its end waits for nothing; background work ends by itself soon after.
class SonosManager final : public Observable {
public:
    /// What the manager needs from outside; all of it outlives the manager and its background work.
    struct Environment : SpeakerBackground::Outside {
        DefaultsStore& defaults;
        LanguageManager& languages;
        RadioPlayer& localPlayer;
        const ServiceHosts& hosts;
    };

    /// With `automaticallyDiscover`, shows the rooms kept from the last run, searches at once and every
    /// minute, and keeps what it finds; without, searches only when asked and reads and writes no settings.
    SonosManager(bool automaticallyDiscover, const Environment& environment);
    ~SonosManager() { m_background->end(); }

    /// The one of the running program.
    [[nodiscard]] static SonosManager& shared() { return SharedInstance<SonosManager>::get(); }

    Published<QList<SonosRoom>> rooms;
    Published<AudioOutputTarget> activeTarget;
    Published<bool> isSonosPlaying;
    Published<bool> isScanning;
    Published<bool> localNetworkDenied;
    Published<RadioStation> currentStation;

    std::function<void(const QList<SonosRoom>&)> onRoomsUpdated;
    std::function<void(bool isPlaying)> onPlaybackStateChanged;

    /// What to show in the place of rooms while there are none.
    [[nodiscard]] QString emptyStateMessage() const;
    /// A room that has disappeared keeps the title it had last.
    [[nodiscard]] QString activeTargetTitle() const;
    /// The room's name, and what tells it from others of that name. Data from the network, not markup.
    [[nodiscard]] QString displayTitle(const SonosRoom& room) const { return roomTitle(room, rooms); }
    [[nodiscard]] std::optional<SonosRoom> room(const QString& id) const;

    /// This computer: the players are stopped. Else: the local player is silenced, they play. Everywhere with
    /// no player known waits for the end of the search, unless something else is chosen.
    void selectTarget(const AudioOutputTarget& target);
    /// Players that are playing, or being started, are given the new station.
    void setStation(RadioStation station);
    void togglePlayPause();
    /// Plays the current station in a room; an unknown id does nothing.
    void playZofra(const QString& roomId);
    void pause(const SonosRoom& room);
    /// Stops every player that was found, and every one that was started.
    void stopAllSonos();
    /// Whether a player may begin to play although it has been stopped: it is stopped again once it answers.
    [[nodiscard]] bool mayStillStart() const { return m_playback.mayStillStart(); }
    /// Clamped to 0...100.
    void setVolume(int percent, const SonosRoom& room) { m_playback.setVolume(room.speakers, percent); }
    void setVolumeEverywhere(int percent) { m_playback.setVolume(controllableSpeakers(), percent); }
    /// Starts a search in the background, unless one is going on already.
    void discoverDevices(bool forceSubnetScan);

    /// Settings key of the rooms kept between runs.
    const QString cacheKey = u"cached_sonos_rooms"_qs;

private:
    void roomsFound(const QList<SonosRoom>& newRooms);
    void rememberTitles();
    void followTarget();
    void setLocalNetworkDenied(bool denied);
    void runEnded();
    /// Those that may be sent commands.
    [[nodiscard]] QList<SonosSpeaker> controllableSpeakers() const;
    [[nodiscard]] SonosSpeaker asLastFound(const SonosSpeaker& speaker) const;

    void playTarget();
    void playEverywhere();
    void play(const QList<PlayerPlaybackGroup>& groups, RadioStation station,
              const std::optional<QString>& roomId);
    void pauseTarget(const QString& roomId);
    void pausePlayers(const QList<SonosSpeaker>& players);
    void setSonosPlaying(bool playing);

    Environment m_environment;
    bool m_automaticallyDiscover;
    std::shared_ptr<SpeakerBackground> m_background;
    GroupPlayback m_playback;
    /// Where the last play was, when it was one room.
    std::optional<QString> m_playedRoom;
    /// Titles of rooms that may be gone, by id: of those before the last change, and of the active target.
    QHash<QString, QString> m_formerTitles;
    std::unique_ptr<Timer> m_scanTimer;
    /// Runs while "everywhere" waits for the search to end.
    std::unique_ptr<Timer> m_everywhereLater;
};

} // namespace zofra
