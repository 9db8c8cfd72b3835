// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/QtMetadataSocket.h"
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

/// A socket, and all that it delivers.
class Listener {
public:
    explicit Listener(std::shared_ptr<RadioMetadataSocket> given)
        : socket(std::move(given)) {}

    void resumeAndListen() {
        socket->resume();
        listen();
    }
    void listen() {
        socket->receive([this](const std::variant<SocketMessage, SocketError>& result) {
            if (const auto* failure = std::get_if<SocketError>(&result)) {
                error = failure->localizedDescription;
                return;
            }
            messages.push_back(std::get<SocketMessage>(result));
            listen();
        });
    }
    bool waitForMessages(std::size_t count) {
        return waitUntil([&] { return messages.size() >= count || error; }) && messages.size() >= count;
    }
    bool waitForError() {
        return waitUntil([&] { return error.has_value(); });
    }
    [[nodiscard]] QString text(std::size_t index) const { return std::get<QString>(messages.at(index)); }

    std::shared_ptr<RadioMetadataSocket> socket;
    std::vector<SocketMessage> messages;
    std::optional<QString> error;
};

inline std::shared_ptr<SocketTrust>
trusting(const std::optional<QString>& extraAuthorityFile = std::nullopt) {
    return std::make_shared<SocketTrust>(extraAuthorityFile);
}

/// A socket for a test's own server.
inline std::shared_ptr<QtMetadataSocket> plainSocket(const LoopbackServer& server,
                                                     const QtMetadataSocket::Limits& limits = {}) {
    return std::make_shared<QtMetadataSocket>(QUrl(server.url(u"/x"_qs, u"ws"_qs)), trusting(), limits);
}

} // namespace zofra::test
