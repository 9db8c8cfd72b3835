// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/RadioMetadataSocket.h"
#include "platform/linux/RateLimit.h"
#include "platform/linux/net/CurlHandle.h"
#include "platform/linux/net/SocketInbox.h"
#include "platform/linux/net/WebSocketHandshake.h"
#include "platform/linux/net/WebSocketWire.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <utility>

namespace zofra {

class CurlWorker;

/// What a web socket bears from its peer.
struct WebSocketLimits {
    /// From `open` to the open socket. Longer than any owner waits, who gives up after a minute: it only
    /// keeps a socket that nobody owns well from staying.
    std::chrono::milliseconds handshakeTime{75'000};
    std::size_t messageBytes = 1'048'576;
    /// Messages that wait to be received.
    std::size_t waitingMessages = 1000;
    std::size_t waitingBytes = 4'194'304;
    /// Pings, pongs and parts of messages in `framesTime`.
    int frames = 4000;
    std::chrono::milliseconds framesTime{10'000};
    /// What is read in the long run and at once. The rest is left in the network: a peer that sends without
    /// end costs no more work than that.
    RateLimit::Rate bytes{262'144, 4'194'304};
    RateLimit::Rate messages{50, 500};
};

/// A web socket on the thread of a CurlWorker: libcurl makes the connection, through proxies and TLS, and
/// moves the bytes; the protocol is spoken here. Nothing is allocated from a length that the peer declares,
/// each turn of the loop reads a bounded piece, and a peer that sends frames without end is left.
class WebSocketConnection final : public std::enable_shared_from_this<WebSocketConnection> {
public:
    WebSocketConnection(QUrl url, WebSocketLimits limits);

    /// From now on no handler is called. Waits for one that is being called. Any thread, also from within a
    /// handler.
    void silence() { m_inbox.silence(); }

    // As the operations of RadioMetadataSocket; on the worker's thread, as all that follows.
    void open(CurlWorker& worker);
    void close(std::uint16_t closeCode = goingAway, const QByteArray& reason = {});
    void receive(SocketInbox::Handler handler) { m_inbox.receive(std::move(handler)); }
    /// The same where nothing is there yet, else false. Any thread.
    [[nodiscard]] bool waitFor(const SocketInbox::Handler& handler) { return m_inbox.waitFor(handler); }
    void send(const SocketMessage& message, const RadioMetadataSocket::SendHandler& handler);

    using TimePoint = std::chrono::steady_clock::time_point;
    [[nodiscard]] CURL* easy() const { return m_handle->easy(); }
    /// The connection has been made, or has failed.
    void connected(CURLcode code);
    /// What to wait for before the next step.
    struct Wait {
        /// Of the connection's descriptor, for poll; 0 for none.
        short events = 0;
        TimePoint until;
    };
    /// Reads and writes what is to be read and written now, never for long. Absent when the connection is to
    /// be closed.
    [[nodiscard]] std::optional<Wait> step(TimePoint now);
    /// The handle has left the loop.
    void released() { m_handle.reset(); }

private:
    static constexpr std::uint16_t goingAway = 1001;
    enum class State { idle, connecting, open, closing, ended };

    void readPieces(TimePoint now);
    [[nodiscard]] bool readPiece();
    void readInput(TimePoint now);
    void readHandshake();
    void handle(WebSocketEvent event, TimePoint now);
    void countFrame(TimePoint now);
    void enqueue(SocketMessage message);
    void brokenOff(const QString& description);

    void fail(const QString& description);
    void leave(std::uint16_t closeCode, const QByteArray& reason = {});
    void write(WebSocketOpcode opcode, QByteArrayView payload);
    void writePieces();

    const QUrl m_url;
    const WebSocketLimits m_limits;
    State m_state = State::idle;
    std::optional<CurlHandle> m_handle;
    bool m_isConnected = false;
    /// Of the handshake, then of the good-bye.
    TimePoint m_deadline;

    std::optional<WebSocketHandshake> m_handshake;
    WebSocketReader m_reader;
    /// What has been read and not yet been looked at.
    QByteArray m_input;
    bool m_hasMoreToRead = false;
    RateLimit m_bytes;
    RateLimit m_messages;
    int m_frames = 0;
    TimePoint m_framesSince;
    /// The newest ping not yet answered.
    std::optional<QByteArray> m_ping;

    /// Whole frames. What is being sent stays where it is: TLS demands it.
    std::deque<QByteArray> m_output;
    qsizetype m_sent = 0;
    qsizetype m_outputBytes = 0;

    SocketInbox m_inbox;
};

} // namespace zofra
