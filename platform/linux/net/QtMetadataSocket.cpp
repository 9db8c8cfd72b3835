// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/QtMetadataSocket.h"

#include "platform/ForeignText.h"
#include "platform/linux/net/ClosingConnection.h"

#include <QNetworkProxy>
#include <QRandomGenerator>
#include <QSslConfiguration>
#include <QSslSocket>

#include <array>
#include <utility>

namespace zofra {

namespace {

/// What one turn of the loop reads; the transport buffers no more than that either.
constexpr qint64 pieceBytes = 65'536;
/// Pings are not answered while this much waits to be written, and nothing is sent while far more does.
constexpr qint64 busyBytes = 16'384;
constexpr qint64 stuckBytes = 1'048'576;

constexpr std::uint16_t goingAway = 1001;
constexpr std::uint16_t policyViolation = 1008;

QByteArray randomBytes() {
    std::array<quint32, 4> words{};
    QRandomGenerator::system()->fillRange(words.data(), words.size());
    return {reinterpret_cast<const char*>(words.data()), sizeof words};
}

std::size_t sizeOf(const SocketMessage& message) {
    return std::visit(
        [](const auto& held) { return static_cast<std::size_t>(held.size()) * sizeof held.front(); },
        message);
}

} // namespace

QtMetadataSocket::QtMetadataSocket(QUrl url, std::shared_ptr<SocketTrust> trust, Limits limits)
    : m_url(std::move(url))
    , m_trust(std::move(trust))
    , m_limits(limits)
    , m_reader(limits.messageBytes)
    , m_later(std::make_unique<LaterWork>()) {}

QtMetadataSocket::~QtMetadataSocket() {
    leave(goingAway, {});
    m_later.reset();
}

void QtMetadataSocket::resume() {
    if (m_state != State::idle)
        return;
    m_state = State::connecting;
    const bool isSecure = m_url.scheme() == QLatin1String("wss");
    if (m_url.host().isEmpty() || (!isSecure && m_url.scheme() != QLatin1String("ws"))) {
        fail(QStringLiteral("The address is not one of a web socket."));
        return;
    }
    if (isSecure && m_trust->configurations().empty()) {
        fail(QStringLiteral("No certificate could be read from ") + m_trust->extraAuthorityFile());
        return;
    }
    m_handshakeTimer.setSingleShot(true);
    QObject::connect(&m_handshakeTimer, &QTimer::timeout, m_later.get(), [this] {
        if (m_state == State::connecting)
            fail(QStringLiteral("The connection could not be made in time."));
    });
    m_handshakeTimer.start(m_limits.handshakeTime);
    connectTransport();
}

void QtMetadataSocket::connectTransport() {
    m_transport = std::make_unique<QSslSocket>();
    m_transport->setProxy(QNetworkProxy::NoProxy);
    m_transport->setReadBufferSize(pieceBytes);
    connectSignals();
    if (m_url.scheme() != QLatin1String("wss")) {
        m_transport->connectToHost(m_url.host(), static_cast<quint16>(m_url.port(80)));
        return;
    }
    m_transport->setSslConfiguration(m_trust->configurations().at(m_trustTried));
    m_transport->connectToHostEncrypted(m_url.host(), static_cast<quint16>(m_url.port(443)));
}

void QtMetadataSocket::connectSignals() {
    auto* const transport = m_transport.get();
    const bool isSecure = m_url.scheme() == QLatin1String("wss");
    const auto ready = [this] { transportReady(); };
    if (isSecure)
        QObject::connect(transport, &QSslSocket::encrypted, m_later.get(), ready);
    else
        QObject::connect(transport, &QSslSocket::connected, m_later.get(), ready);
    QObject::connect(transport, &QSslSocket::readyRead, m_later.get(), [this] { readPiece(); });
    QObject::connect(transport, &QSslSocket::bytesWritten, m_later.get(), [this] { answerPing(); });
    QObject::connect(transport, &QSslSocket::errorOccurred, m_later.get(), [this] { transportFailed(); });
}

void QtMetadataSocket::transportReady() {
    if (m_state != State::connecting)
        return;
    m_transport->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_handshake.emplace(m_url, randomBytes());
    m_transport->write(m_handshake->request());
}

void QtMetadataSocket::readPiece() {
    if (!m_transport || m_state == State::ended)
        return;
    const auto bytes = m_transport->read(pieceBytes);
    if (m_state == State::connecting)
        readHandshake(bytes);
    else
        readFrames(bytes);
    // The rest in another turn of the loop, so that others have theirs.
    if (m_transport && m_transport->bytesAvailable() > 0)
        m_later->post([this] { readPiece(); });
}

void QtMetadataSocket::readHandshake(const QByteArray& bytes) {
    if (!m_handshake)
        return;
    const auto answer = m_handshake->receive(bytes);
    if (!answer)
        return;
    if (const auto* refused = std::get_if<WebSocketHandshake::Refused>(&*answer)) {
        fail(refused->reason);
        return;
    }
    m_state = State::open;
    m_handshake.reset();
    readFrames(std::get<WebSocketHandshake::Accepted>(*answer).rest);
}

void QtMetadataSocket::readFrames(QByteArrayView bytes) {
    while (m_state == State::open) {
        auto event = m_reader.next(bytes);
        if (!event)
            break;
        handle(*std::move(event));
    }
    if (m_state == State::open)
        answerPing();
}

void QtMetadataSocket::handle(WebSocketEvent event) {
    using Kind = WebSocketEvent::Kind;
    switch (event.kind) {
    case Kind::text: {
        const auto size = static_cast<std::size_t>(event.text.size()) * sizeof(QChar);
        return enqueue(std::move(event.text), size);
    }
    case Kind::binary: {
        const auto size = static_cast<std::size_t>(event.bytes.size());
        return enqueue(std::move(event.bytes), size);
    }
    case Kind::ping:
        m_ping = std::move(event.bytes);
        return countFrame();
    case Kind::pong:
    case Kind::part:
        return countFrame();
    case Kind::close:
        leave(event.closeCode == 1005 ? 1000 : event.closeCode, {});
        return fail(QStringLiteral("The server has closed the connection (%1) %2")
                        .arg(event.closeCode)
                        .arg(event.text));
    case Kind::violation:
        leave(event.closeCode, {});
        return fail(QStringLiteral("The server has sent what it may not: ") + event.text);
    }
}

/// Frames that bring no message are cheap to send and cost us time each.
void QtMetadataSocket::countFrame() {
    const auto now = std::chrono::steady_clock::now();
    if (now - m_framesSince >= m_limits.framesTime) {
        m_framesSince = now;
        m_frames = 0;
    }
    if (++m_frames <= m_limits.frames)
        return;
    leave(policyViolation, {});
    fail(QStringLiteral("The server sends frames without end."));
}

void QtMetadataSocket::enqueue(SocketMessage message, std::size_t bytes) {
    if (m_waiting.size() >= m_limits.waitingMessages || m_waitingBytes + bytes > m_limits.waitingBytes) {
        leave(policyViolation, {});
        fail(QStringLiteral("The server sends messages faster than they are read."));
        return;
    }
    m_waiting.push_back(std::move(message));
    m_waitingBytes += bytes;
    scheduleDelivery();
}

/// Only the newest ping has to be answered, and only when the peer takes answers.
void QtMetadataSocket::answerPing() {
    if (m_state == State::open && m_ping && unwrittenBytes() < busyBytes)
        write(WebSocketOpcode::pong, *std::exchange(m_ping, std::nullopt));
}

/// Only a certificate that was looked at and found wanting is worth another look.
bool QtMetadataSocket::mayTryOtherTrust() const {
    return m_state == State::connecting && m_transport->error() == QAbstractSocket::SslHandshakeFailedError &&
           !m_transport->sslHandshakeErrors().isEmpty() &&
           m_trustTried + 1 < m_trust->configurations().size();
}

void QtMetadataSocket::transportFailed() {
    if (m_state == State::ended)
        return;
    if (mayTryOtherTrust()) {
        QObject::disconnect(m_transport.get(), nullptr, m_later.get(), nullptr);
        ClosingConnection::takeOver(std::move(m_transport), false);
        ++m_trustTried;
        connectTransport();
        return;
    }
    const auto description = m_transport->errorString();
    // What came before the end still counts; it is no more than the buffer holds.
    if (m_state == State::open)
        readFrames(m_transport->readAll());
    if (m_state != State::ended)
        fail(description);
}

void QtMetadataSocket::fail(const QString& description) {
    leave(goingAway, {});
    m_state = State::ended;
    if (!m_failure)
        m_failure = SocketError{oneLine(description)};
    scheduleDelivery();
}

/// Says good-bye where there is somebody to hear it, and lets go of the connection.
void QtMetadataSocket::leave(std::uint16_t closeCode, const QByteArray& reason) {
    if (!m_transport)
        return;
    const bool wasOpen = m_state == State::open && m_transport->state() == QAbstractSocket::ConnectedState;
    m_state = State::ended;
    QObject::disconnect(m_transport.get(), nullptr, m_later.get(), nullptr);
    if (wasOpen)
        write(WebSocketOpcode::close, webSocketClosePayload(closeCode, reason));
    ClosingConnection::takeOver(std::move(m_transport), wasOpen);
}

void QtMetadataSocket::cancel(SocketCloseCode closeCode, std::optional<QByteArray> reason) {
    leave(static_cast<std::uint16_t>(closeCode), reason.value_or(QByteArray()));
    fail(QStringLiteral("The connection has been cancelled."));
}

void QtMetadataSocket::write(WebSocketOpcode opcode, QByteArrayView payload) {
    m_transport->write(webSocketFrame(opcode, payload, QRandomGenerator::system()->generate()));
}

qint64 QtMetadataSocket::unwrittenBytes() const {
    return m_transport->bytesToWrite() + m_transport->encryptedBytesToWrite();
}

void QtMetadataSocket::send(SocketMessage message, SendHandler completionHandler) {
    std::optional<SocketError> error;
    if (m_state != State::open) {
        error = SocketError{QStringLiteral("The connection is not open.")};
    } else if (unwrittenBytes() + static_cast<qint64>(sizeOf(message)) > stuckBytes) {
        error = SocketError{QStringLiteral("The server does not take what is sent.")};
    } else if (const auto* text = std::get_if<QString>(&message)) {
        write(WebSocketOpcode::text, text->toUtf8());
    } else {
        write(WebSocketOpcode::binary, std::get<QByteArray>(message));
    }
    m_later->post([handler = std::move(completionHandler), error = std::move(error)] {
        if (handler)
            handler(error);
    });
}

void QtMetadataSocket::receive(ReceiveHandler completionHandler) {
    if (m_receiver) {
        m_later->post([handler = std::move(completionHandler)] {
            handler(SocketError{QStringLiteral("Another message is being waited for already.")});
        });
        return;
    }
    m_receiver = std::move(completionHandler);
    scheduleDelivery();
}

void QtMetadataSocket::scheduleDelivery() {
    if (m_receiver && (!m_waiting.empty() || m_failure))
        m_later->post([this] { deliver(); });
}

void QtMetadataSocket::deliver() {
    if (!m_receiver || (m_waiting.empty() && !m_failure))
        return;
    const auto receiver = std::exchange(m_receiver, nullptr);
    if (m_waiting.empty()) {
        receiver(*m_failure);
        return;
    }
    auto message = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_waitingBytes -= sizeOf(message);
    // Last, because the receiver may end this socket.
    receiver(std::move(message));
}

MakeWebSocket qtWebSockets(std::optional<QString> extraAuthorityFile) {
    return [trust = std::make_shared<SocketTrust>(std::move(extraAuthorityFile))](const QUrl& url) {
        return std::make_shared<QtMetadataSocket>(url, trust);
    };
}

} // namespace zofra
