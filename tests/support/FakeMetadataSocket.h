// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RadioMetadataSocket.h"

#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zofra::test {

/// A web socket whose other end is the test. Used by one thread. Handlers are called in place.
class FakeMetadataSocket final : public RadioMetadataSocket {
public:
    struct Cancel {
        SocketCloseCode closeCode;
        std::optional<QByteArray> reason;
    };

    explicit FakeMetadataSocket(QUrl address)
        : url(std::move(address)) {}

    void resume() override { ++resumes; }
    void cancel(SocketCloseCode closeCode, std::optional<QByteArray> reason) override {
        cancels.push_back({closeCode, std::move(reason)});
    }
    void receive(ReceiveHandler completionHandler) override {
        receivers.push_back(std::move(completionHandler));
    }
    void send(SocketMessage message, SendHandler completionHandler) override {
        sent.push_back(std::move(message));
        sendHandlers.push_back(std::move(completionHandler));
    }

    /// Hands the message to the oldest waiting receiver; there must be one.
    void deliver(SocketMessage message) { answer(std::move(message)); }
    void fail(const QString& description) { answer(failure(description)); }
    /// Ends the oldest send that has not been told yet.
    void finishSend(Result<void> result) {
        const auto handler = std::move(sendHandlers.front());
        sendHandlers.pop_front();
        handler(std::move(result));
    }
    /// What was sent, as text.
    [[nodiscard]] QString sentText(std::size_t index) const { return std::get<QString>(sent.at(index)); }

    const QUrl url;
    int resumes = 0;
    std::vector<Cancel> cancels;
    std::deque<ReceiveHandler> receivers;
    std::vector<SocketMessage> sent;
    std::deque<SendHandler> sendHandlers;

private:
    void answer(Result<SocketMessage> result) {
        const auto handler = std::move(receivers.front());
        receivers.pop_front();
        handler(std::move(result));
    }
};

/// Makes fake sockets and keeps every one of them.
class FakeSocketFactory {
public:
    [[nodiscard]] MakeWebSocket maker() {
        return [this](const QUrl& url) {
            sockets.push_back(std::make_shared<FakeMetadataSocket>(url));
            return sockets.back();
        };
    }
    [[nodiscard]] FakeMetadataSocket& last() { return *sockets.back(); }

    std::vector<std::shared_ptr<FakeMetadataSocket>> sockets;
};

} // namespace zofra::test
