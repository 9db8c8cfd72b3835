// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MediaControls.h"
#include "platform/Observable.h"
#include "platform/linux/MprisPlaylists.h"
#include "platform/linux/RateLimit.h"
#include "platform/linux/SessionBus.h"

#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zofra {

/// The media player on the session bus (org.mpris.MediaPlayer2.zofrazofra), for media keys, lock screens and
/// desktops. Works with and without a bus. Main thread only, callbacks included.
class MprisPlayer final : public NowPlayingInfoCenter, public RemoteCommandCenter {
public:
    /// `bus` must outlive it.
    explicit MprisPlayer(SessionBus& bus);
    ~MprisPlayer() override;

    void setNowPlayingInfo(const NowPlayingInfo& info) override;
    void setTogglePlayPauseHandler(Handler handler) override { m_toggle = std::move(handler); }
    void setPlayHandler(Handler handler) override;
    void setPauseHandler(Handler handler) override;

    enum class PlaybackState { stopped, paused, playing };
    void setPlaybackState(PlaybackState state);
    /// 0 to 1.
    void setVolume(double volume);

    /// What can be played (a key of letters, digits and underscores, and a name), in the order of Next and
    /// Previous, which go round.
    void setStations(const std::vector<MprisPlaylists::Entry>& stations);
    /// The one that plays, or would.
    void setStation(const QString& key, const QString& name);

    /// A client asks for this station, to be played if anything plays now.
    std::function<void(const QString& key)> onStationRequested;
    /// A client asks for this station to be played.
    std::function<void(const QString& key)> onPlayStationRequested;
    /// A client asks for this volume, 0 to 1. It is shown once `setVolume` says so.
    std::function<void(double)> onVolumeRequested;
    /// Absent where there is nothing to raise.
    std::function<void()> onRaise;
    std::function<void()> onQuit;

private:
    [[nodiscard]] dbus::Interface rootInterface();
    [[nodiscard]] dbus::Interface playerInterface();
    [[nodiscard]] QVariantMap metadata() const;
    [[nodiscard]] dbus::Answer skip(int distance);
    void appearOn(const QDBusConnection& connection);
    void requestName(const QDBusConnection& connection, const QString& name);

    SessionBus& m_bus;
    /// The program's own picture, as clients find it; empty where there is none.
    const QString m_icon;
    /// The name that is ours on the bus; empty when none is.
    QString m_ownedName;
    std::optional<NowPlayingInfo> m_info;
    /// Counts the songs, for their ids.
    quint64 m_track = 0;
    PlaybackState m_state = PlaybackState::stopped;
    double m_volume = 0;
    MprisPlaylists::Entry m_station;
    MprisPlaylists m_playlists;
    Handler m_toggle;
    Handler m_play;
    Handler m_pause;

    std::unique_ptr<dbus::ExportedObject> m_object;
    ObservationToken m_connected;
    ObservationToken m_disconnected;
    /// Nobody presses keys faster.
    RateLimit m_acts{{20, 50}};
};

} // namespace zofra
