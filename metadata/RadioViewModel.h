// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/LiveTrack.h"
#include "metadata/OnAirItem.h"
#include "platform/Clock.h"
#include "platform/HttpSession.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "platform/RadioMetadataSocket.h"
#include "platform/SystemLog.h"
#include "stations/LanguageManager.h"
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// The model behind the now-playing texts: a live socket where the station has a feed, HTTP sources for all.
/// Main thread only; results of sockets and requests are carried there before they touch anything.
class RadioViewModel final : public Observable {
public:
    /// What the model needs from outside; all of it outlives the model.
    struct Environment {
        MainQueue& mainQueue;
        StandardOutput& output;
        LanguageManager& languages;
        const ServiceHosts& hosts;
    };

    /// Starts nothing by itself: call `startWebSocket`, `startPolling` and `fetchMetadata`, in this order.
    RadioViewModel(RadioStation station, HttpSession& session, Clock now, MakeWebSocket makeWebSocket,
                   const Environment& environment);
    ~RadioViewModel();

    Published<RadioStation> currentStation;
    Published<QString> currentSong;
    Published<std::optional<QString>> nextSong;
    [[nodiscard]] bool isLoading() const { return m_isLoading; }

    /// Told whenever the texts are set. Called on the main thread, in place.
    std::function<void(const QString& current, const std::optional<QString>& next)> onUpdate;

    void setStation(RadioStation station);
    void startWebSocket();
    void startPolling();
    void fetchMetadata();

    // The private part is the metadata folder's own business and is completed there.
private:
    bool m_isLoading = true;
};

} // namespace zofra
