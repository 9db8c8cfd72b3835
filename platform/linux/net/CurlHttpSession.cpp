// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlHttpSession.h"

#include "platform/linux/net/CurlMetadataSocket.h"
#include "platform/linux/net/CurlWorker.h"

#include <utility>

namespace zofra {

CurlHttpSession::CurlHttpSession(std::optional<QString> extraAuthorityFile)
    : m_worker(std::make_shared<CurlWorker>(std::move(extraAuthorityFile))) {}

CurlHttpSession::~CurlHttpSession() {
    m_worker->stop();
}

void CurlHttpSession::start(HttpRequest request, Completion completion) {
    m_worker->submit(std::move(request), std::move(completion));
}

void CurlHttpSession::dropKeptConnections() {
    m_worker->dropKept();
}

MakeWebSocket CurlHttpSession::webSockets() {
    return [worker = m_worker](const QUrl& url) { return std::make_shared<CurlMetadataSocket>(worker, url); };
}

} // namespace zofra
