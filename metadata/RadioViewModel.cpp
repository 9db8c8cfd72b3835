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
    const Round round{currentStation, ++m_metadataRequestCounter};
    if (round.station.radioplayerId())
        fetchRadioplayerMetadata(round);
    else
        fetchScraperMetadata(round);
}

void RadioViewModel::startRequest(const QUrl& url, HttpSession::Completion completion) {
    m_session.start({.url = url,
                     .headers = {{"User-Agent", "Mozilla/5.0"}},
                     .timeout = requestTimeout,
                     .cachePolicy = HttpRequest::CachePolicy::ignoreLocalAndRemote},
                    std::move(completion));
}

void RadioViewModel::fetchRadioplayerMetadata(const Round& round) {
    const auto url = onAirUrl(m_environment.hosts, round.station);
    if (!url)
        return;
    auto handle = onMainThread<OnAirItems>(
        [this, round](const OnAirItems& items) { handleRadioplayerResponse(items, round); });
    // Read where it arrives: the longest answer would keep the main thread busy for several frames.
    startRequest(*url, [round, handle = std::move(handle)](const HttpResult& result) {
        handle(isSuccess(result) ? onAirItems(result->body, *round.station.radioplayerId()) : std::nullopt);
    });
}

void RadioViewModel::handleRadioplayerResponse(const OnAirItems& items, const Round& round) {
    if (!items) {
        handleRadioplayerFailure(round);
        return;
    }
    if (currentStation != round.station)
        return;
    const std::chrono::duration<double> secondsSince1970 = m_now().time_since_epoch();
    const auto text = onAirText(*items, secondsSince1970.count());
    if (hasFreshLiveTrack())
        return;
    if (text)
        applyUnlessStale(round, *text);
    else if (m_isLoading)
        applyUnlessStale(round, round.station.displayName());
}

void RadioViewModel::handleRadioplayerFailure(Round round) {
    if (currentStation != round.station || isStale(round))
        return;
    fetchScraperMetadata(round);
    if (round.isRetry)
        return;
    round.isRetry = true;
    m_environment.mainQueue.asyncAfter(retryDelay, m_lifetime.guard([this, round] {
        if (currentStation == round.station && !isStale(round))
            fetchRadioplayerMetadata(round);
    }));
}

void RadioViewModel::fetchScraperMetadata(const Round& round) {
    if (const auto url = scraperUrl(m_environment.hosts, round.station))
        startRequest(*url, onMainThread<HttpResult>([this, round](const HttpResult& result) {
            handleScraperResponse(result, round);
        }));
}

void RadioViewModel::handleScraperResponse(const HttpResult& result, const Round& round) {
    if (!isSuccess(result) || currentStation != round.station)
        return;
    const auto page = ScraperPage::fromBody(result->body);
    if (!page)
        return;
    auto text = page->text();
    if (!text && m_isLoading)
        text = round.station.displayName();
    if (text && !hasFreshLiveTrack())
        applyUnlessStale(round, *text);
}

void RadioViewModel::applyUnlessStale(const Round& round, const QString& text) {
    if (isStale(round))
        return;
    m_lastAppliedMetadataRequest = round.requestId;
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
