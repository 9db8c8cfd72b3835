// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace zofra {

/// What the system's media display shows.
struct NowPlayingInfo {
    QString title;
    std::optional<QString> artist;
    bool isLiveStream = true;

    friend bool operator==(const NowPlayingInfo&, const NowPlayingInfo&) = default;
};

/// The system's now-playing display. Main thread only.
class NowPlayingInfoCenter {
public:
    virtual ~NowPlayingInfoCenter() = default;
    /// Replaces what is shown.
    virtual void setNowPlayingInfo(const NowPlayingInfo& info) = 0;
};

enum class RemoteCommandStatus { success, commandFailed };

/// Commands of media keys and media displays. Main thread only, handlers included.
class RemoteCommandCenter {
public:
    using Handler = std::function<RemoteCommandStatus()>;
    virtual ~RemoteCommandCenter() = default;
    /// Enables the command and sets what it does.
    virtual void setTogglePlayPauseHandler(Handler handler) = 0;
    virtual void setPlayHandler(Handler handler) = 0;
    virtual void setPauseHandler(Handler handler) = 0;
};

} // namespace zofra
