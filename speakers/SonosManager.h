// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/HttpSession.h"
#include "platform/LocalNetwork.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "platform/SystemLog.h"
#include "platform/TaskPool.h"
#include "playback/RadioPlayer.h"
#include "speakers/AudioOutputTarget.h"
#include "speakers/PlayerPlaybackGroup.h"
#include "speakers/SonosRoom.h"
#include "speakers/SonosSpeaker.h"
#include "stations/LanguageManager.h"
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// Owns everything about networked players: what was found, the rooms, where audio goes, what plays there.
/// Published fields, handlers and operations belong to the main thread; background work never outlives its
/// welcome: it holds the manager's inner state weakly.
class SonosManager final : public Observable {
public:
    /// What the manager needs from outside; all of it outlives the manager.
    struct Environment {
        HttpSession& session;
        DefaultsStore& defaults;
        MainQueue& mainQueue;
        TaskPool& tasks;
        LocalNetwork& network;
        SystemLog& systemLog;
        LanguageManager& languages;
        RadioPlayer& localPlayer;
        const ServiceHosts& hosts;
    };

    SonosManager(bool automaticallyDiscover, const Environment& environment);
    ~SonosManager();

    /// The one of the running program.
    [[nodiscard]] static SonosManager& shared();

    Published<QList<SonosRoom>> rooms;
    Published<AudioOutputTarget> activeTarget;
    Published<bool> isSonosPlaying;
    Published<bool> isScanning;
    Published<bool> localNetworkDenied;
    Published<RadioStation> currentStation;

    std::function<void(const QList<SonosRoom>&)> onRoomsUpdated;
    std::function<void(bool isPlaying)> onPlaybackStateChanged;

    [[nodiscard]] QString emptyStateMessage() const;
    [[nodiscard]] QString activeTargetTitle() const;
    [[nodiscard]] QString displayTitle(const SonosRoom& room) const;
    [[nodiscard]] std::optional<SonosRoom> room(const QString& id) const;

    void selectTarget(const AudioOutputTarget& target);
    void setStation(RadioStation station);
    void togglePlayPause();
    void playZofra(const QString& roomId);
    void pause(const SonosRoom& room);
    void stopAllSonos();
    void setVolume(int percent, const SonosRoom& room);
    void setVolumeEverywhere(int percent);
    void discoverDevices(bool forceSubnetScan);

    // The private part is the speakers folder's own business and is completed there.
};

} // namespace zofra
