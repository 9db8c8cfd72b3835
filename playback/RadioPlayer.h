// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/MediaControls.h"
#include "platform/Observable.h"
#include "platform/SharedInstance.h"
#include "platform/StreamPlayer.h"
#include "platform/SystemLog.h"
#include "platform/WakeNotifier.h"
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// Plays the current station on this computer. Main thread only.
class RadioPlayer final : public Observable {
public:
    /// What the player needs from outside; all of it outlives the player.
    struct Environment {
        StreamPlayerFactory& streamPlayers;
        DefaultsStore& defaults;
        MainQueue& mainQueue;
        NowPlayingInfoCenter& nowPlaying;
        RemoteCommandCenter& remoteCommands;
        WakeNotifier& wake;
        StandardOutput& output;
        const ServiceHosts& hosts;
    };

    explicit RadioPlayer(const Environment& environment);

    /// The one of the running program.
    [[nodiscard]] static RadioPlayer& shared() { return SharedInstance<RadioPlayer>::get(); }

    /// The user wants sound and the player has been told to play.
    Published<bool> isPlaying;
    /// Playing was asked for but no sound flows yet.
    Published<bool> isBuffering;
    /// 0 to 1, linear amplitude.
    Published<float> volume;
    Published<RadioStation> currentStation;

    std::function<void(bool isPlaying)> onPlaybackStateChanged;
    std::function<void(RadioStation)> onStationChanged;

    /// Null until the first play and after `drop`.
    std::unique_ptr<StreamPlayer> player;
    std::shared_ptr<StreamItem> playerItem;

    const QString volumeDefaultsKey = u"zofra_radio_volume"_qs;

    /// Starts playback of the current station; a player still held resumes as it is.
    void play();
    /// Pauses, clears both flags, tells `onPlaybackStateChanged`.
    void stop();
    /// Stops and lets go of item and player; the next `play` opens a fresh one.
    void drop();
    void setStation(RadioStation station);
    /// Clamps to 0..1 (upper bound first; a NaN counts as missing and becomes 1), then sets `volume` and the
    /// stream player's volume and stores it.
    void applyVolume(float value);
    void updateNowPlayingInfo(const QString& title, const std::optional<QString>& artist);

private:
    void setupPlayer(const QUrl& url);
    void timeControlStatusChanged();
    void handlePlaybackStall();
    void handlePlaybackFailed();
    void handleWakeFromSleep();
    void setupRemoteCommands();

    Environment m_environment;
    ObservationToken m_timeControlObserver;
    ObservationToken m_stallObserver;
    ObservationToken m_failureObserver;
    ObservationToken m_wakeObserver;
    Lifetime m_lifetime;
};

} // namespace zofra
