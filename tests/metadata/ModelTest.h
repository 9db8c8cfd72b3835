// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/RadioViewModel.h"
#include "tests/metadata/Frames.h"
#include "tests/support/World.h"

#include <QUrlQuery>

#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <ostream>
#include <utility>
#include <vector>

namespace zofra::test {

using namespace std::chrono_literals;

/// Looks at what the model keeps to itself, and calls the operations that only frames, answers and timers
/// lead to.
class RadioViewModelProbe {
public:
    static bool isConnecting(const RadioViewModel& model) { return model.m_isConnecting; }
    static bool isConnected(const RadioViewModel& model) { return model.m_isConnected; }
    static bool hasTask(const RadioViewModel& model) { return model.m_webSocketTask != nullptr; }
    static bool reconnectIsPending(const RadioViewModel& model) { return model.m_reconnectTimer != nullptr; }
    static bool isPolling(const RadioViewModel& model) { return model.m_pollingTimer != nullptr; }
    static std::optional<TimePoint> lastSocketActivity(const RadioViewModel& model) {
        return model.m_lastSocketActivity;
    }
    static std::optional<TimePoint> lastLiveTrack(const RadioViewModel& model) {
        return model.m_lastLiveTrack;
    }
    static std::uint64_t counter(const RadioViewModel& model) { return model.m_metadataRequestCounter; }
    static std::uint64_t lastApplied(const RadioViewModel& model) {
        return model.m_lastAppliedMetadataRequest;
    }
    static bool hasFreshLiveTrack(const RadioViewModel& model) { return model.hasFreshLiveTrack(); }
    static void setCounter(RadioViewModel& model, std::uint64_t value) {
        model.m_metadataRequestCounter = value;
    }
    static void sendJoinSubscription(RadioViewModel& model) { model.sendJoinSubscription(); }
    static void scheduleReconnect(RadioViewModel& model) { model.scheduleReconnect(); }
};

/// The states of the socket.
enum class SocketState { idle, connecting, connected, waitingToReconnect, contradictory };

inline void PrintTo(SocketState state, std::ostream* out) {
    constexpr std::array names{"idle", "connecting", "connected", "waitingToReconnect", "contradictory"};
    *out << names.at(static_cast<std::size_t>(state));
}

struct Update {
    QString current;
    std::optional<QString> next;
    friend bool operator==(const Update&, const Update&) = default;
};

inline void PrintTo(const Update& update, std::ostream* out) {
    *out << update.current.toStdString() << " / " << update.next.value_or(u"(none)"_qs).toStdString();
}

/// A model whose socket, services and time are the test's.
class ModelTest : public testing::Test, protected World {
protected:
    using Probe = RadioViewModelProbe;

    void make(RadioStation station) {
        model = std::make_unique<RadioViewModel>(
            station, http, queue.clock(), sockets.maker(),
            RadioViewModel::Environment{
                .mainQueue = queue, .output = output, .languages = languages, .hosts = hosts});
        model->onUpdate = [this](const QString& current, const std::optional<QString>& next) {
            updates.push_back({current, next});
        };
    }

    /// As the program does it at launch.
    void start(RadioStation station) {
        make(station);
        model->startWebSocket();
        model->startPolling();
        model->fetchMetadata();
    }

    /// A model whose socket has said "o".
    void startConnected(RadioStation station) {
        start(station);
        frame(u"o"_qs);
        ASSERT_EQ(state(), SocketState::connected);
    }

    void frame(const SocketMessage& message) {
        sockets.last().deliver(message);
        queue.drain();
    }

    void failSocket(const QString& description) {
        sockets.last().fail(description);
        queue.drain();
    }

    /// Answers the oldest open request.
    void answer(int status, const QByteArray& body) {
        http.answer(status, body);
        queue.drain();
    }
    void failRequest() {
        http.fail(HttpError{HttpError::Code::timedOut, 0, u"too late"_qs});
        queue.drain();
    }
    /// Takes the oldest open request out, to be answered out of order.
    FakeHttpSession::Exchange takeRequest() {
        auto exchange = std::move(http.open.front());
        http.open.pop_front();
        return exchange;
    }
    void finish(const FakeHttpSession::Exchange& exchange, const QByteArray& body) {
        exchange.completion(HttpResponse{200, body});
        queue.drain();
    }

    [[nodiscard]] SocketState state() const {
        const bool connecting = Probe::isConnecting(*model);
        const bool connected = Probe::isConnected(*model);
        const bool task = Probe::hasTask(*model);
        const bool pending = Probe::reconnectIsPending(*model);
        if (connecting && !connected && task && !pending)
            return SocketState::connecting;
        if (!connecting && connected && task && !pending)
            return SocketState::connected;
        if (!connecting && !connected && !task)
            return pending ? SocketState::waitingToReconnect : SocketState::idle;
        return SocketState::contradictory;
    }

    /// An on-air answer with one song for `rpId`.
    static QByteArray onAir(const QString& rpId, const QString& title) {
        const QJsonObject item{{u"name"_qs, title}, {u"song"_qs, true}};
        const QJsonObject results{{rpId, QJsonArray{item}}};
        return QJsonDocument(QJsonObject{{u"results"_qs, results}}).toJson(QJsonDocument::Compact);
    }
    static QByteArray emptyOnAir(const QString& rpId) {
        return QJsonDocument(QJsonObject{{u"results"_qs, QJsonObject{{rpId, QJsonArray{}}}}}).toJson();
    }
    static QByteArray scraped(const QString& title) { return "{\"title\":\"" + title.toUtf8() + "\"}"; }

    LanguageManager languages{defaults, {}};
    std::vector<Update> updates;
    std::unique_ptr<RadioViewModel> model;
};

} // namespace zofra::test
