// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/WebSocketConnection.h"

#include "platform/ForeignText.h"
#include "platform/linux/net/CurlWorker.h"

#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <poll.h>
#include <utility>

namespace zofra {

namespace {

using namespace std::chrono_literals;

/// What one turn of the loop reads, in calls of a TLS record each.
constexpr std::size_t turnBytes = 65'536;
constexpr std::size_t callBytes = 16'384;
/// Pings are not answered while this much waits to be written, and nothing is sent while far more does.
constexpr qsizetype busyBytes = 16'384;
constexpr qsizetype stuckBytes = 1'048'576;
/// How long a peer may take to hear the good-bye.
constexpr auto goodByeTime = 2s;

constexpr std::uint16_t policyViolation = 1008;

QByteArray randomBytes() {
    std::array<quint32, 4> words{};
    QRandomGenerator::system()->fillRange(words.data(), words.size());
    return {reinterpret_cast<const char*>(words.data()), sizeof words};
}

/// The same place, as libcurl knows it; empty when `url` is not one of a web socket.
QUrl transportUrl(QUrl url) {
    const bool isSecure = url.scheme() == u"wss";
    if (url.host().isEmpty() || (!isSecure && url.scheme() != u"ws"))
        return {};
    url.setScheme(isSecure ? u"https"_qs : u"http"_qs);
    return url;
}

} // namespace

WebSocketConnection::WebSocketConnection(QUrl url, WebSocketLimits limits)
    : m_url(std::move(url))
    , m_limits(limits)
    , m_reader(limits.messageBytes)
    , m_bytes(limits.bytes)
    , m_messages(limits.messages)
    , m_inbox(limits.waitingMessages, limits.waitingBytes) {}

void WebSocketConnection::open(CurlWorker& worker) {
    if (m_state != State::idle)
        return;
    m_state = State::connecting;
    m_deadline = std::chrono::steady_clock::now() + m_limits.handshakeTime;
    const auto url = transportUrl(m_url);
    if (url.isEmpty())
        return fail(u"The address is not one of a web socket."_qs);
    m_handle.emplace(url, worker.authorities());
    if (const auto& refusal = m_handle->refusal())
        return fail(*refusal);
    m_handle->avoidOlderThan(worker.keptSince());
    m_handle->set(CURLOPT_CONNECT_ONLY, 1L);
    // Through a proxy even where it would forward a plain request.
    m_handle->set(CURLOPT_HTTPPROXYTUNNEL, 1L);
    m_handle->set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_limits.handshakeTime.count()));
    worker.adopt(shared_from_this());
}

void WebSocketConnection::connected(CURLcode code) {
    if (m_state != State::connecting)
        return;
    if (code == CURLE_OPERATION_TIMEDOUT)
        return fail(u"The connection could not be made in time."_qs);
    if (code != CURLE_OK)
        return fail(m_handle->errorText(code));
    m_isConnected = true;
    m_handshake.emplace(m_url, randomBytes());
    m_output.push_back(m_handshake->request());
    m_outputBytes += m_output.back().size();
}

std::optional<WebSocketConnection::Wait> WebSocketConnection::step(TimePoint now) {
    if (m_state == State::connecting && now >= m_deadline)
        fail(u"The connection could not be made in time."_qs);
    if (m_state == State::ended || (m_state == State::closing && now >= m_deadline))
        return std::nullopt;
    if (!m_isConnected)
        return Wait{0, m_deadline};
    readPieces(now);
    if (m_state == State::open && m_ping && m_outputBytes < busyBytes)
        write(WebSocketOpcode::pong, *std::exchange(m_ping, std::nullopt));
    writePieces();
    if (m_state == State::ended)
        return std::nullopt;

    Wait wait{static_cast<short>(m_output.empty() ? 0 : POLLOUT), TimePoint::max()};
    if (m_state != State::open)
        wait.until = m_deadline;
    if (m_state == State::open && !m_input.isEmpty() && !m_messages.hasRoom(now))
        wait.until = std::min(wait.until, m_messages.nextRoom());
    else if (!m_bytes.hasRoom(now))
        wait.until = std::min(wait.until, m_bytes.nextRoom());
    else if (m_hasMoreToRead)
        wait.until = now;
    else
        wait.events |= POLLIN;
    return wait;
}

/// Everything that is there, up to what a turn and the rates allow.
void WebSocketConnection::readPieces(TimePoint now) {
    m_hasMoreToRead = true;
    for (std::size_t read = 0; read < turnBytes && m_hasMoreToRead; read += callBytes) {
        readInput(now);
        // What cannot be looked at yet keeps more from being read.
        if (m_state == State::ended || !m_input.isEmpty() || !m_bytes.hasRoom(now))
            return;
        m_hasMoreToRead = readPiece();
    }
    readInput(now);
}

/// False when there is no more for now, or never.
bool WebSocketConnection::readPiece() {
    std::array<char, callBytes> buffer{};
    std::size_t count = 0;
    const auto code = curl().easyRecv(easy(), buffer.data(), buffer.size(), &count);
    if (code == CURLE_AGAIN)
        return false;
    if (code != CURLE_OK || count == 0) {
        brokenOff(code == CURLE_OK ? u"The server has closed the connection."_qs : m_handle->errorText(code));
        return false;
    }
    m_bytes.spend(static_cast<double>(count));
    if (m_state != State::closing)
        m_input.append(buffer.data(), static_cast<qsizetype>(count));
    return true;
}

void WebSocketConnection::brokenOff(const QString& description) {
    if (m_state != State::closing) {
        // What came before the end still counts; it is no more than a turn reads.
        m_messages = RateLimit({m_limits.messages.atOnce, m_limits.messages.atOnce});
        readInput(std::chrono::steady_clock::now());
    }
    const bool isNews = m_state == State::connecting || m_state == State::open;
    m_state = State::ended;
    if (isNews)
        fail(description);
}

void WebSocketConnection::readInput(TimePoint now) {
    if (m_state == State::connecting)
        readHandshake();
    if (m_state != State::open)
        return m_input.clear();
    QByteArrayView rest = m_input;
    while (m_state == State::open && m_messages.hasRoom(now)) {
        auto event = m_reader.next(rest);
        if (!event)
            break;
        handle(*std::move(event), now);
    }
    m_input = rest.toByteArray();
}

void WebSocketConnection::readHandshake() {
    if (!m_handshake || m_input.isEmpty())
        return;
    const auto rest = m_handshake->receive(std::exchange(m_input, {}));
    if (!rest)
        return;
    if (!*rest)
        return fail(rest->error());
    m_state = State::open;
    m_input = **rest;
    m_handshake.reset();
}

void WebSocketConnection::handle(WebSocketEvent event, TimePoint now) {
    using Kind = WebSocketEvent::Kind;
    switch (event.kind) {
    case Kind::text:
        return enqueue(std::move(event.text));
    case Kind::binary:
        return enqueue(std::move(event.bytes));
    case Kind::ping:
        m_ping = std::move(event.bytes);
        return countFrame(now);
    case Kind::pong:
    case Kind::part:
        return countFrame(now);
    case Kind::close:
        leave(event.closeCode == 1005 ? 1000 : event.closeCode);
        return fail(u"The server has closed the connection (%1) %2"_qs.arg(event.closeCode).arg(event.text));
    case Kind::violation:
        leave(event.closeCode);
        return fail(u"The server has sent what it may not: "_qs + event.text);
    }
}

/// Frames that bring no message are cheap to send and cost us time each.
void WebSocketConnection::countFrame(TimePoint now) {
    if (now - m_framesSince >= m_limits.framesTime) {
        m_framesSince = now;
        m_frames = 0;
    }
    if (++m_frames <= m_limits.frames)
        return;
    leave(policyViolation);
    fail(u"The server sends frames without end."_qs);
}

void WebSocketConnection::enqueue(SocketMessage message) {
    m_messages.spend(1);
    if (m_inbox.put(std::move(message)))
        return;
    leave(policyViolation);
    fail(u"The server sends messages faster than they are read."_qs);
}

void WebSocketConnection::fail(const QString& description) {
    leave(goingAway);
    m_inbox.end(oneLine(description));
}

/// Says good-bye where there is somebody to hear it, and lets go of the connection.
void WebSocketConnection::leave(std::uint16_t closeCode, const QByteArray& reason) {
    if (m_state == State::open) {
        write(WebSocketOpcode::close, webSocketClosePayload(closeCode, reason));
        m_state = State::closing;
        m_deadline = std::chrono::steady_clock::now() + goodByeTime;
    } else if (m_state != State::closing) {
        m_state = State::ended;
    }
}

void WebSocketConnection::close(std::uint16_t closeCode, const QByteArray& reason) {
    leave(closeCode, reason);
    fail(u"The connection has been cancelled."_qs);
}

void WebSocketConnection::write(WebSocketOpcode opcode, QByteArrayView payload) {
    m_output.push_back(webSocketFrame(opcode, payload, QRandomGenerator::system()->generate()));
    m_outputBytes += m_output.back().size();
}

void WebSocketConnection::writePieces() {
    while (m_state != State::ended && !m_output.empty()) {
        const auto& frame = m_output.front();
        std::size_t count = 0;
        const auto code = curl().easySend(easy(), frame.constData() + m_sent,
                                          static_cast<std::size_t>(frame.size() - m_sent), &count);
        if (code == CURLE_AGAIN)
            return;
        if (code != CURLE_OK)
            return brokenOff(m_handle->errorText(code));
        m_sent += static_cast<qsizetype>(count);
        m_outputBytes -= static_cast<qsizetype>(count);
        if (m_sent < frame.size())
            continue;
        m_output.pop_front();
        m_sent = 0;
    }
}

void WebSocketConnection::send(const SocketMessage& message,
                               const RadioMetadataSocket::SendHandler& handler) {
    Result<void> result;
    if (m_state != State::open) {
        result = failure(u"The connection is not open."_qs);
    } else if (m_outputBytes + static_cast<qsizetype>(sizeOf(message)) > stuckBytes) {
        result = failure(u"The server does not take what is sent."_qs);
    } else if (const auto* text = std::get_if<QString>(&message)) {
        write(WebSocketOpcode::text, text->toUtf8());
    } else {
        write(WebSocketOpcode::binary, std::get<QByteArray>(message));
    }
    if (handler)
        m_inbox.tell([&] { handler(result); });
}

} // namespace zofra
