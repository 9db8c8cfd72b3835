// SPDX-License-Identifier: GPL-3.0-or-later
// The live socket of the model: its life from connecting to reconnecting, and what its frames do.
#include "metadata/JsonText.h"
#include "metadata/LiveSocket.h"
#include "metadata/RadioViewModel.h"

#include <chrono>

namespace zofra {

namespace {

using namespace std::chrono_literals;

constexpr auto reconnectDelay = 5000ms;
constexpr auto pollingInterval = 15000ms;
/// Heartbeats come every 25 s or so; a socket that says nothing for this long is dead.
constexpr auto silenceLimit = 45s;
/// How long a live track keeps the HTTP sources from changing the text.
constexpr auto liveTrackFreshness = 90s;

/// The text of a message; absent for bytes that are no UTF-8.
std::optional<QString> textOf(const SocketMessage& message) {
    if (const auto* text = std::get_if<QString>(&message))
        return *text;
    return textFromUtf8(std::get<QByteArray>(message));
}

} // namespace

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

bool RadioViewModel::isCurrent(const std::weak_ptr<RadioMetadataSocket>& task) const {
    return m_webSocketTask && m_webSocketTask == task.lock();
}

void RadioViewModel::receivedFromWebSocket(const std::weak_ptr<RadioMetadataSocket>& task,
                                           const Result<SocketMessage>& result) {
    if (!isCurrent(task))
        return;
    if (!result) {
        m_environment.output.writeLine(QStringLiteral("Zofra WebSocket Verbindung unterbrochen: ") +
                                       result.error());
        scheduleReconnect();
        return;
    }
    m_lastSocketActivity = m_now();
    // What the message sets off may replace the socket, or end this model.
    auto listenAgain = m_lifetime.guard([this, task] {
        if (isCurrent(task))
            listenWebSocket(m_webSocketTask);
    });
    if (const auto text = textOf(*result))
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
    case SockJSFrameKind::heartbeat:
    case SockJSFrameKind::unknown:
        break;
    }
}

std::optional<ZofraLiveTrackData> RadioViewModel::parseSockJSMessage(const QString& text) const {
    return liveTrackInFrame(text, currentStation);
}

void RadioViewModel::applyLiveTrack(const ZofraLiveTrackData& track) {
    const auto current = track.formattedCurrent();
    std::optional<QString> next;
    if (track.next && !track.next->formatted().isEmpty())
        next = track.next->formatted();
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
        joinSubscriptionSent(weak, result);
    }));
}

void RadioViewModel::joinSubscriptionSent(const std::weak_ptr<RadioMetadataSocket>& task,
                                          const Result<void>& result) {
    if (result || !isCurrent(task))
        return;
    m_environment.output.writeLine(QStringLiteral("Fehler beim Senden des WebSocket-Abonnements: ") +
                                   result.error());
    scheduleReconnect();
    // The HTTP sources fill in at once.
    fetchMetadata();
}

void RadioViewModel::scheduleReconnect() {
    disconnectWebSocket();
    if (!currentStation.get().liveSocketId())
        return;
    m_reconnectTimer =
        m_environment.mainQueue.startTimer(reconnectDelay, MainQueue::Repeat::once, [this] { reconnect(); });
}

void RadioViewModel::reconnect() {
    m_reconnectTimer.reset();
    startWebSocket();
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

} // namespace zofra
