// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RadioMetadataSocket.h"
#include "platform/linux/net/WebSocketConnection.h"

#include <QUrl>

#include <memory>

namespace zofra {

class CurlWorker;

/// A web socket for addresses of wss (and ws, which tests use), spoken on the thread of an HTTP session; it
/// sees nothing more once that session has ended. Handlers are called on that thread, never in place.
class CurlMetadataSocket final : public RadioMetadataSocket {
public:
    CurlMetadataSocket(std::shared_ptr<CurlWorker> worker, QUrl url, const WebSocketLimits& limits = {});
    ~CurlMetadataSocket() override;
    CurlMetadataSocket(const CurlMetadataSocket&) = delete;
    CurlMetadataSocket& operator=(const CurlMetadataSocket&) = delete;

    void resume() override;
    void cancel(SocketCloseCode closeCode, std::optional<QByteArray> reason) override;
    /// One at a time: a second call before the first has been answered fails.
    void receive(ReceiveHandler completionHandler) override;
    /// Fails while the socket is not open. Success means handed to the operating system or about to be.
    void send(SocketMessage message, SendHandler completionHandler) override;

private:
    const std::shared_ptr<CurlWorker> m_worker;
    const std::shared_ptr<WebSocketConnection> m_connection;
};

} // namespace zofra
