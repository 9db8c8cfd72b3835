// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/CurlHttpSession.h"
#include "platform/linux/net/CurlMetadataSocket.h"
#include "tests/platform/net/WebSocketBytes.h"
#include "tests/support/PrintQt.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace zofra::test {

using namespace std::chrono_literals;

/// Runs the event loop until `condition` holds; false after 20 s.
inline bool waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > 20'000)
            return false;
        QEventLoop loop;
        QTimer::singleShot(1, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

/// Runs the event loop for a while, for things that must not happen.
inline void runFor(std::chrono::milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

/// A socket, and the session whose thread it lives on.
struct TestSocket {
    explicit TestSocket(const QUrl& url, const std::optional<QString>& extraAuthorityFile = std::nullopt,
                        const WebSocketLimits& limits = {})
        : session(std::make_shared<CurlHttpSession>(extraAuthorityFile))
        , socket(std::make_shared<CurlMetadataSocket>(session->worker(), url, limits)) {}

    std::shared_ptr<CurlHttpSession> session;
    std::shared_ptr<RadioMetadataSocket> socket;
};

/// A socket, and all that it delivers, carried to the test's thread.
class Listener {
public:
    explicit Listener(const TestSocket& given)
        : session(given.session)
        , socket(given.socket) {}

    void resumeAndListen() {
        socket->resume();
        listen();
    }
    void listen() {
        socket->receive([this](const Result<SocketMessage>& result) {
            QMetaObject::invokeMethod(context.get(), [this, result] { received(result); });
        });
    }
    void received(const Result<SocketMessage>& result) {
        if (!result) {
            error = result.error();
            return;
        }
        messages.push_back(*result);
        if (socket)
            listen();
    }
    void send(const SocketMessage& message) {
        socket->send(message, [this](const Result<void>& result) {
            QMetaObject::invokeMethod(context.get(), [this, result] { sent.push_back(result); });
        });
    }
    bool waitForMessages(std::size_t count) {
        return waitUntil([&] { return messages.size() >= count || error; }) && messages.size() >= count;
    }
    bool waitForError() {
        return waitUntil([&] { return error.has_value(); });
    }
    [[nodiscard]] QString text(std::size_t index) const { return std::get<QString>(messages.at(index)); }

    std::unique_ptr<QObject> context = std::make_unique<QObject>();
    std::vector<SocketMessage> messages;
    std::optional<QString> error;
    std::vector<Result<void>> sent;
    std::shared_ptr<CurlHttpSession> session;
    std::shared_ptr<RadioMetadataSocket> socket; // last: no handler is called once it has ended
};

/// A socket for a test's own server.
inline TestSocket plainSocket(const LoopbackServer& server, const WebSocketLimits& limits = {}) {
    return TestSocket(QUrl(server.url(u"/x"_qs, u"ws"_qs)), std::nullopt, limits);
}

} // namespace zofra::test
