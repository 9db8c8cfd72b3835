// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RadioViewModel.h"

#include "metadata/ScraperPage.h"
#include "stations/texts/InterfaceTexts.h"

#include <chrono>
#include <limits>

namespace zofra {

namespace {

using namespace std::chrono_literals;

constexpr auto reconnectDelay = 5000ms;
constexpr auto pollingInterval = 15000ms;
constexpr auto requestTimeout = 6000ms;
constexpr auto retryDelay = 2000ms;
/// Heartbeats come every 25 s or so; a socket that says nothing for this long is dead.
constexpr auto silenceLimit = 45s;
/// How long a live track keeps the HTTP sources from changing the text.
constexpr auto liveTrackFreshness = 90s;

bool isSuccess(const HttpResult& result) {
    return result && result->status >= 200 && result->status <= 299;
}

} // namespace

RadioViewModel::RadioViewModel(RadioStation station, HttpSession& session, Clock now,
                               MakeWebSocket makeWebSocket, const Environment& environment)
    : currentStation(*this, station)
    , currentSong(*this, texts::loading.in(environment.languages.currentLanguage()))
    , nextSong(*this, std::nullopt)
    , m_session(session)
    , m_makeWebSocket(std::move(makeWebSocket))
    , m_now(std::move(now))
    , m_environment(environment) {}

void RadioViewModel::setStation(RadioStation station) {
    if (station == currentStation)
        return;
    disconnectWebSocket();
    currentStation = station;
    m_isLoading = true;
    currentSong = texts::loading.in(m_environment.languages.currentLanguage());
    nextSong = std::nullopt;
    m_lastLiveTrack.reset();
    // Whatever is still under way belongs to the old station.
    m_lastAppliedMetadataRequest = m_metadataRequestCounter;
    auto start = m_lifetime.guard([this] {
        startWebSocket();
        startPolling();
        fetchMetadata();
    });
    tellUpdate(currentSong, std::nullopt);
    start();
}

void RadioViewModel::tellUpdate(const QString& current, const std::optional<QString>& next) const {
    if (!onUpdate)
        return;
    // Holds copies, because the listener may replace itself, set a station or end this model.
    const auto tell = [update = onUpdate, current, next] { update(current, next); };
    tell();
}

void RadioViewModel::startWebSocket() {
    if (!currentStation.get().liveSocketId() || m_isConnecting || m_isConnected)
        return;
    disconnectWebSocket();
    m_isConnecting = true;
    m_lastSocketActivity = m_now();
    const auto url = liveSocketUrl(m_environment.hosts.liveSocketHost());
    if (!url)
        return;
    const auto task = m_makeWebSocket(*url);
    if (!task)
        return;
    m_webSocketTask = task;
    task->resume();
    listenWebSocket(task);
}

void RadioViewModel::listenWebSocket(const std::shared_ptr<RadioMetadataSocket>& task) {
    // Weakly, because the socket keeps the handler.
    task->receive(onMainThread<Result<SocketMessage>>(
        [this, weak = std::weak_ptr(task)](const Result<SocketMessage>& result) {
            receivedFromWebSocket(weak, result);
        }));
}

void RadioViewModel::receivedFromWebSocket(const std::weak_ptr<RadioMetadataSocket>& task,
                                           const Result<SocketMessage>& result) {
    if (!isCurrent(task))
        return;
    if (!result) {
        m_environment.output.writeLine(u"Zofra WebSocket Verbindung unterbrochen: "_qs + result.error());
        scheduleReconnect();
        return;
    }
    m_lastSocketActivity = m_now();
    // What the message sets off may replace the socket, or end this model.
    auto listenAgain = m_lifetime.guard([this, task] {
        if (isCurrent(task))
            listenWebSocket(m_webSocketTask);
    });
    if (const auto text = textIn(*result))
        handleWebSocketMessage(*text);
    listenAgain();
}

void RadioViewModel::handleWebSocketMessage(const QString& text) {
    switch (sockJSFrameKind(text)) {
    case SockJSFrameKind::open:
        m_isConnected = true;
        m_isConnecting = false;
        sendJoinSubscription();
        break;
    case SockJSFrameKind::close:
        scheduleReconnect();
        break;
    case SockJSFrameKind::array:
        if (const auto track = parseSockJSMessage(text))
            applyLiveTrack(*track);
        break;
    default:
        break;
    }
}

void RadioViewModel::applyLiveTrack(const ZofraLiveTrackData& track) {
    const auto current = track.formattedCurrent();
    const auto next = track.formattedNext();
    // Every HTTP round already started knows less than this.
    m_lastAppliedMetadataRequest = m_metadataRequestCounter;
    m_lastLiveTrack = m_now();
    m_isLoading = false;
    currentSong = current;
    nextSong = next;
    tellUpdate(current, next);
}

void RadioViewModel::sendJoinSubscription() {
    const auto message = joinMessage(currentStation);
    if (!message || !m_webSocketTask)
        return;
    m_webSocketTask->send(*message, onMainThread<Result<void>>([this, weak = std::weak_ptr(m_webSocketTask)](
                                                                   const Result<void>& result) {
        if (result || !isCurrent(weak))
            return;
        m_environment.output.writeLine(u"Fehler beim Senden des WebSocket-Abonnements: "_qs + result.error());
        scheduleReconnect();
        // The HTTP sources fill in at once.
        fetchMetadata();
    }));
}

void RadioViewModel::scheduleReconnect() {
    disconnectWebSocket();
    if (!currentStation.get().liveSocketId())
        return;
    m_reconnectTimer = m_environment.mainQueue.startTimer(reconnectDelay, MainQueue::Repeat::once, [this] {
        m_reconnectTimer.reset();
        startWebSocket();
    });
}

void RadioViewModel::startPolling() {
    m_pollingTimer = m_environment.mainQueue.startTimer(pollingInterval, MainQueue::Repeat::forever, [this] {
        checkWebSocketHealth();
        fetchMetadata();
    });
}

void RadioViewModel::checkWebSocketHealth() {
    if (!currentStation.get().liveSocketId())
        return;
    if (m_lastSocketActivity && m_now() - *m_lastSocketActivity >= silenceLimit)
        disconnectWebSocket();
    if (!m_isConnected && !m_isConnecting && !m_reconnectTimer)
        startWebSocket();
}

bool RadioViewModel::hasFreshLiveTrack() const {
    return m_isConnected && m_lastLiveTrack && m_now() - *m_lastLiveTrack < liveTrackFreshness;
}

void RadioViewModel::disconnectWebSocket() {
    m_reconnectTimer.reset();
    m_isConnecting = false;
    m_isConnected = false;
    m_lastSocketActivity.reset();
    // Taken out first: whatever closing it sets off finds no socket any more.
    if (const auto task = std::exchange(m_webSocketTask, nullptr))
        task->cancel(SocketCloseCode::normalClosure, std::nullopt);
}

void RadioViewModel::fetchMetadata() {
    if (m_metadataRequestCounter == std::numeric_limits<std::uint64_t>::max())
        qFatal("No number is left for a further metadata request.");
    const RadioStation station = currentStation;
    const auto requestId = ++m_metadataRequestCounter;
    if (const auto rpId = station.radioplayerId())
        fetchRadioplayerMetadata(*rpId, station, requestId, 0);
    else if (const auto url = scraperUrl(m_environment.hosts, station))
        fetchScraperMetadata(*url, station, requestId);
}

void RadioViewModel::startRequest(const QUrl& url, HttpSession::Completion completion) {
    m_session.start({.url = url,
                     .headers = {{"User-Agent", "Mozilla/5.0"}},
                     .timeout = requestTimeout,
                     .cachePolicy = HttpRequest::CachePolicy::ignoreLocalAndRemote},
                    std::move(completion));
}

void RadioViewModel::fetchRadioplayerMetadata(const QString& rpId, RadioStation station,
                                              std::uint64_t requestId, int attempt) {
    const auto url = onAirUrl(m_environment.hosts, rpId);
    if (!url)
        return;
    auto handle =
        onMainThread<OnAirItems>([this, rpId, station, requestId, attempt](const OnAirItems& items) {
            if (items)
                handleRadioplayerItems(*items, station, requestId);
            else
                handleRadioplayerFailure(rpId, station, requestId, attempt);
        });
    // Read where it arrives: the longest answer would keep the main thread busy for several frames.
    startRequest(*url, [rpId, handle = std::move(handle)](const HttpResult& result) {
        handle(isSuccess(result) ? onAirItems(result->body, rpId) : std::nullopt);
    });
}

void RadioViewModel::handleRadioplayerItems(const std::vector<OnAirItem>& items, RadioStation station,
                                            std::uint64_t requestId) {
    if (currentStation != station || hasFreshLiveTrack())
        return;
    const std::chrono::duration<double> secondsSince1970 = m_now().time_since_epoch();
    if (const auto text = onAirText(items, secondsSince1970.count()))
        applyUnlessStale(requestId, *text);
    else if (m_isLoading)
        applyUnlessStale(requestId, station.displayName());
}

void RadioViewModel::handleRadioplayerFailure(const QString& rpId, RadioStation station,
                                              std::uint64_t requestId, int attempt) {
    if (currentStation != station || isStale(requestId))
        return;
    if (const auto url = scraperUrl(m_environment.hosts, station))
        fetchScraperMetadata(*url, station, requestId);
    if (attempt >= 1)
        return;
    m_environment.mainQueue.asyncAfter(
        retryDelay, m_lifetime.guard([this, rpId, station, requestId, attempt] {
            if (currentStation == station && !isStale(requestId))
                fetchRadioplayerMetadata(rpId, station, requestId, attempt + 1);
        }));
}

void RadioViewModel::fetchScraperMetadata(const QUrl& url, RadioStation station, std::uint64_t requestId) {
    startRequest(url, onMainThread<HttpResult>([this, station, requestId](const HttpResult& result) {
                     handleScraperResponse(result, station, requestId);
                 }));
}

void RadioViewModel::handleScraperResponse(const HttpResult& result, RadioStation station,
                                           std::uint64_t requestId) {
    if (!isSuccess(result) || currentStation != station)
        return;
    const auto page = ScraperPage::fromBody(result->body);
    if (!page)
        return;
    auto text = page->text();
    if (!text && m_isLoading)
        text = station.displayName();
    if (text && !hasFreshLiveTrack())
        applyUnlessStale(requestId, *text);
}

void RadioViewModel::applyUnlessStale(std::uint64_t requestId, const QString& text) {
    if (isStale(requestId))
        return;
    m_lastAppliedMetadataRequest = requestId;
    applyMetadata(text);
}

void RadioViewModel::applyMetadata(const QString& text) {
    m_isLoading = false;
    // The HTTP sources know no next song; the one of the live feed stays as long as its current one does.
    if (text != currentSong.get())
        nextSong = std::nullopt;
    currentSong = text;
    tellUpdate(text, nextSong);
}

} // namespace zofra
