// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/LiveSocket.h"
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
#include <QUrl>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zofra {

namespace test {
class RadioViewModelProbe;
}

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

    /// Told whenever the texts are set. Called on the main thread, in place.
    std::function<void(const QString& current, const std::optional<QString>& next)> onUpdate;

    Published<RadioStation> currentStation;
    Published<QString> currentSong;
    Published<std::optional<QString>> nextSong;
    /// Until a first text has been applied for the current station.
    [[nodiscard]] bool isLoading() const { return m_isLoading; }

    /// Turns to another station: the old one's texts are gone at once, whatever is still under way for it.
    void setStation(RadioStation station);
    /// Opens the live socket, unless the station has no live feed or a socket is already open.
    void startWebSocket();
    /// Polls every 15 s from now on; a running poll is replaced.
    void startPolling();
    /// Starts one round of HTTP requests for the current station.
    void fetchMetadata();

    /// The last usable track for the current station in a SockJS array frame, if any.
    [[nodiscard]] std::optional<ZofraLiveTrackData> parseSockJSMessage(const QString& text) const {
        return liveTrackInFrame(text, currentStation);
    }

private:
    friend class test::RadioViewModelProbe;

    // The live socket.
    void listenWebSocket(const std::shared_ptr<RadioMetadataSocket>& task);
    void receivedFromWebSocket(const std::weak_ptr<RadioMetadataSocket>& task,
                               const Result<SocketMessage>& result);
    void handleWebSocketMessage(const QString& text);
    void applyLiveTrack(const ZofraLiveTrackData& track);
    void sendJoinSubscription();
    void scheduleReconnect();
    void checkWebSocketHealth();
    [[nodiscard]] bool hasFreshLiveTrack() const;
    void disconnectWebSocket();
    [[nodiscard]] bool isCurrent(const std::weak_ptr<RadioMetadataSocket>& task) const {
        return m_webSocketTask && m_webSocketTask == task.lock();
    }

    // The HTTP sources. Every result carries the number of its round.
    void fetchRadioplayerMetadata(const QString& rpId, RadioStation station, std::uint64_t requestId,
                                  int attempt);
    /// Absent when the request failed, in whatever way.
    using OnAirItems = std::optional<std::vector<OnAirItem>>;
    void handleRadioplayerFailure(const QString& rpId, RadioStation station, std::uint64_t requestId,
                                  int attempt);
    void handleRadioplayerItems(const std::vector<OnAirItem>& items, RadioStation station,
                                std::uint64_t requestId);
    void fetchScraperMetadata(const QUrl& url, RadioStation station, std::uint64_t requestId);
    void handleScraperResponse(const HttpResult& result, RadioStation station, std::uint64_t requestId);
    void startRequest(const QUrl& url, HttpSession::Completion completion);
    [[nodiscard]] bool isStale(std::uint64_t requestId) const {
        return requestId <= m_lastAppliedMetadataRequest;
    }
    void applyUnlessStale(std::uint64_t requestId, const QString& text);
    void applyMetadata(const QString& text);

    void tellUpdate(const QString& current, const std::optional<QString>& next) const;

    /// A function for any thread that runs `handler` on the main one, later, if this model is still there.
    template<typename... Arguments, typename Handler>
    [[nodiscard]] std::function<void(Arguments...)> onMainThread(Handler handler) const {
        return [&queue = m_environment.mainQueue,
                guarded = m_lifetime.guard(std::move(handler))](Arguments... arguments) {
            queue.async([guarded, ... held = std::move(arguments)]() mutable { guarded(held...); });
        };
    }

    bool m_isLoading = true;
    std::shared_ptr<RadioMetadataSocket> m_webSocketTask;
    HttpSession& m_session;
    MakeWebSocket m_makeWebSocket;
    Clock m_now;
    /// A socket has been opened and has not yet said "o".
    bool m_isConnecting = false;
    std::unique_ptr<Timer> m_reconnectTimer;
    std::unique_ptr<Timer> m_pollingTimer;
    /// The current socket has said "o".
    bool m_isConnected = false;
    /// The last frame, or the attempt to connect.
    std::optional<TimePoint> m_lastSocketActivity;
    std::optional<TimePoint> m_lastLiveTrack;
    /// Rounds of HTTP requests started.
    std::uint64_t m_metadataRequestCounter = 0;
    /// Results of this round and of older ones are not applied any more.
    std::uint64_t m_lastAppliedMetadataRequest = 0;
    Environment m_environment;
    Lifetime m_lifetime;
};

} // namespace zofra
