// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlMetadataSocket.h"

#include "platform/linux/net/CurlWorker.h"

#include <utility>

namespace zofra {

CurlMetadataSocket::CurlMetadataSocket(std::shared_ptr<CurlWorker> worker, QUrl url,
                                       const WebSocketLimits& limits)
    : m_worker(std::move(worker))
    , m_connection(std::make_shared<WebSocketConnection>(std::move(url), limits)) {}

CurlMetadataSocket::~CurlMetadataSocket() {
    m_connection->silence();
    m_worker->post([connection = m_connection] { connection->close(); });
}

void CurlMetadataSocket::resume() {
    m_worker->post([connection = m_connection, &worker = *m_worker] { connection->open(worker); });
}

void CurlMetadataSocket::cancel(SocketCloseCode closeCode, std::optional<QByteArray> reason) {
    m_worker->post([connection = m_connection, code = static_cast<std::uint16_t>(closeCode),
                    reason = reason.value_or(QByteArray())] { connection->close(code, reason); });
}

void CurlMetadataSocket::receive(ReceiveHandler completionHandler) {
    m_worker->post([connection = m_connection, handler = std::move(completionHandler)] {
        connection->receive(handler);
    });
}

void CurlMetadataSocket::send(SocketMessage message, SendHandler completionHandler) {
    m_worker->post([connection = m_connection, message = std::move(message),
                    handler = std::move(completionHandler)] { connection->send(message, handler); });
}

} // namespace zofra
