// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "platform/linux/net/CurlMetadataSocket.h"
#include "platform/linux/net/CurlWorker.h"

#include <QString>

#include <memory>
#include <optional>
#include <utility>

namespace zofra {

/// HTTP over libcurl, on one thread named "zofra-http" that starts with the first request.
///
/// At most 64 requests are under way at a time, 48 of them to local hosts, so that a search for speakers does
/// not keep the others waiting; further ones wait their turn, and a request's timeout runs from its turn on.
/// Nothing is cached, no cookie kept, no body decompressed; for the rest the rules of `CurlHandle` hold.
///
/// Destroying the session gives up in the background what is under way, and no completion is called any more.
/// It waits only for one that the session's thread is calling at that moment.
class CurlHttpSession final : public HttpSession {
public:
    explicit CurlHttpSession(std::optional<QString> extraAuthorityFile = std::nullopt)
        : m_worker(std::make_shared<CurlWorker>(std::move(extraAuthorityFile))) {}
    ~CurlHttpSession() override { m_worker->stop(); }
    CurlHttpSession(const CurlHttpSession&) = delete;
    CurlHttpSession& operator=(const CurlHttpSession&) = delete;

    void start(HttpRequest request, Completion completion) override {
        m_worker->submit(std::move(request), std::move(completion));
    }

    /// The network is another one, or the computer has slept: connections kept for a next request, and
    /// addresses looked up, are used no more. Any thread.
    void dropKeptConnections() { m_worker->dropKept(); }

    /// Makes web sockets that live on the session's thread, under the rules of its requests.
    [[nodiscard]] MakeWebSocket webSockets() {
        return [worker = m_worker](const QUrl& url) {
            return std::make_shared<CurlMetadataSocket>(worker, url);
        };
    }
    [[nodiscard]] const std::shared_ptr<CurlWorker>& worker() const { return m_worker; }

private:
    std::shared_ptr<CurlWorker> m_worker;
};

} // namespace zofra
