// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RadioMetadataSocket.h"
#include "platform/linux/net/CurlWorker.h"
#include "platform/linux/net/WebSocketConnection.h"

#include <QUrl>

#include <memory>
#include <utility>

namespace zofra {

/// A web socket for addresses of wss (and ws, which tests use), spoken on the thread of an HTTP session; it
/// sees nothing more once that session has ended. Handlers are called on that thread, never in place.
class CurlMetadataSocket final : public RadioMetadataSocket {
public:
    CurlMetadataSocket(std::shared_ptr<CurlWorker> worker, QUrl url, const WebSocketLimits& limits = {})
        : m_worker(std::move(worker))
        , m_connection(std::make_shared<WebSocketConnection>(std::move(url), limits)) {}
    ~CurlMetadataSocket() override {
        m_connection->silence();
        m_worker->post([connection = m_connection] { connection->close(); });
    }
    CurlMetadataSocket(const CurlMetadataSocket&) = delete;
    CurlMetadataSocket& operator=(const CurlMetadataSocket&) = delete;

    void resume() override {
        m_worker->post([connection = m_connection, &worker = *m_worker] { connection->open(worker); });
    }
    void cancel(SocketCloseCode closeCode, std::optional<QByteArray> reason) override {
        m_worker->post([connection = m_connection, code = static_cast<std::uint16_t>(closeCode),
                        reason = reason.value_or(QByteArray())] { connection->close(code, reason); });
    }
    /// One at a time: a second call before the first has been answered fails.
    void receive(ReceiveHandler completionHandler) override {
        // Mostly there is nothing yet: the thread need not be woken for that.
        if (m_connection->waitFor(completionHandler))
            return;
        m_worker->post([connection = m_connection, handler = std::move(completionHandler)] {
            connection->receive(handler);
        });
    }
    /// Fails while the socket is not open. Success means handed to the operating system or about to be.
    void send(SocketMessage message, SendHandler completionHandler) override {
        m_worker->post([connection = m_connection, message = std::move(message),
                        handler = std::move(completionHandler)] { connection->send(message, handler); });
    }

private:
    const std::shared_ptr<CurlWorker> m_worker;
    const std::shared_ptr<WebSocketConnection> m_connection;
};

} // namespace zofra
