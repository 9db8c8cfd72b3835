// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/platform/net/TestAuthority.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

class QSslSocket;

namespace zofra::test {

/// One accepted connection, used in blocking style by the thread that serves it. Every wait ends when the
/// server does.
class ServerConnection {
public:
    ServerConnection(QSslSocket& socket, const std::atomic<bool>& stopping)
        : m_socket(socket)
        , m_stopping(stopping) {}

    /// Reads up to and including `mark`; what came so far when the peer closes first.
    QByteArray readUntil(const QByteArray& mark);
    /// Reads exactly `size` bytes, or what came when the peer closes first.
    QByteArray read(qsizetype size);
    /// False once the peer is gone.
    bool write(const QByteArray& bytes);
    /// Writes without waiting for the peer to take it; false once the peer is gone or takes nothing for
    /// `patience`.
    bool flood(const QByteArray& bytes, std::chrono::milliseconds patience);
    void pause(std::chrono::milliseconds time);
    /// Waits until the peer closes or the server ends; true if it was the peer.
    bool waitForPeerToClose();
    [[nodiscard]] bool isStopping() const { return m_stopping; }

private:
    bool waitForMore();

    QSslSocket& m_socket;
    const std::atomic<bool>& m_stopping;
    QByteArray m_buffer;
};

/// A TCP or TLS server on 127.0.0.1 that serves each connection with `handler` on a thread of its own.
class LoopbackServer {
public:
    using Handler = std::function<void(ServerConnection&)>;
    explicit LoopbackServer(Handler handler, std::optional<TlsIdentity> identity = std::nullopt);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    /// "http://127.0.0.1:PORT" + path, or with another scheme.
    [[nodiscard]] QString url(const QString& path, const QString& scheme = QStringLiteral("http")) const;
    /// Connections accepted so far, and the greatest number of them open at one time.
    [[nodiscard]] int accepted() const { return m_accepted; }
    [[nodiscard]] int mostOpen() const { return m_mostOpen; }

private:
    void acceptAll();
    void serve(int descriptor);

    Handler m_handler;
    std::optional<TlsIdentity> m_identity;
    int m_listener = -1;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stopping = false;
    std::atomic<int> m_accepted = 0;
    std::atomic<int> m_open = 0;
    std::atomic<int> m_mostOpen = 0;
    std::list<std::thread> m_connections;
    std::thread m_acceptor;
};

} // namespace zofra::test
