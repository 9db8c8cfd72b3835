// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RadioMetadataSocket.h"
#include "platform/linux/net/LaterWork.h"
#include "platform/linux/net/SocketTrust.h"
#include "platform/linux/net/WebSocketHandshake.h"
#include "platform/linux/net/WebSocketWire.h"

#include <QString>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <variant>

class QSslSocket;

namespace zofra {

/// A web socket on the main loop, for addresses of wss (and ws, which tests use). Main thread only; handlers
/// are called there too, never in place.
///
/// The protocol is spoken here, over Qt's TLS socket, because the web socket class of Qt 6.4 keeps a peer
/// from nothing: every ping is answered whether or not the answers are taken, and all that has arrived is
/// worked off in one go (measured: 1.2 GB and a main thread busy for 0.7 s after four seconds of pings). Here
/// every turn of the loop reads a bounded piece, messages are at most 1 MiB, and a peer that sends frames
/// without end is left.
class QtMetadataSocket final : public RadioMetadataSocket {
public:
    struct Limits {
        /// From `resume` to the open socket. Longer than any owner bears a socket that says nothing, which is
        /// a minute: when to give up a connection is theirs to say, and this only keeps one that nobody owns
        /// well from staying.
        std::chrono::milliseconds handshakeTime{75'000};
        std::size_t messageBytes = 1'048'576;
        /// Messages that wait to be received.
        std::size_t waitingMessages = 1000;
        std::size_t waitingBytes = 4'194'304;
        /// Pings, pongs and parts of messages in `framesTime`.
        int frames = 4000;
        std::chrono::milliseconds framesTime{10'000};
    };

    QtMetadataSocket(QUrl url, std::shared_ptr<SocketTrust> trust, Limits limits);
    QtMetadataSocket(QUrl url, std::shared_ptr<SocketTrust> trust)
        : QtMetadataSocket(std::move(url), std::move(trust), Limits()) {}
    ~QtMetadataSocket() override;
    QtMetadataSocket(const QtMetadataSocket&) = delete;
    QtMetadataSocket& operator=(const QtMetadataSocket&) = delete;

    void resume() override;
    void cancel(SocketCloseCode closeCode, std::optional<QByteArray> reason) override;
    /// One at a time: a second call before the first has been answered fails.
    void receive(ReceiveHandler completionHandler) override;
    /// Fails while the socket is not open. Success means handed to the operating system or about to be.
    void send(SocketMessage message, SendHandler completionHandler) override;

private:
    enum class State { idle, connecting, open, ended };

    void connectTransport();
    void connectSignals();
    [[nodiscard]] bool mayTryOtherTrust() const;
    void transportReady();
    void readPiece();
    void readHandshake(const QByteArray& bytes);
    void readFrames(QByteArrayView bytes);
    void handle(WebSocketEvent event);
    void countFrame();
    void enqueue(SocketMessage message, std::size_t bytes);
    void answerPing();
    void transportFailed();

    void fail(const QString& description);
    void leave(std::uint16_t closeCode, const QByteArray& reason);
    void write(WebSocketOpcode opcode, QByteArrayView payload);
    [[nodiscard]] qint64 unwrittenBytes() const;
    void scheduleDelivery();
    void deliver();

    const QUrl m_url;
    const std::shared_ptr<SocketTrust> m_trust;
    const Limits m_limits;
    State m_state = State::idle;
    QTimer m_handshakeTimer;
    std::unique_ptr<QSslSocket> m_transport;
    /// Which of the ways to trust is being tried.
    std::size_t m_trustTried = 0;
    std::optional<WebSocketHandshake> m_handshake;
    WebSocketReader m_reader;
    /// The newest ping not yet answered.
    std::optional<QByteArray> m_ping;
    int m_frames = 0;
    std::chrono::steady_clock::time_point m_framesSince;
    std::deque<SocketMessage> m_waiting;
    std::size_t m_waitingBytes = 0;
    std::optional<SocketError> m_failure;
    ReceiveHandler m_receiver;
    /// Whatever is still to come is bound to this, so that it does not outlive the socket.
    std::unique_ptr<LaterWork> m_later;
};

/// Makes such sockets, which all trust the system's authorities and those of the extra file.
[[nodiscard]] MakeWebSocket qtWebSockets(std::optional<QString> extraAuthorityFile);

} // namespace zofra
