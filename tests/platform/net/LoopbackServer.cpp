// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/net/LoopbackServer.h"

#include <QSslConfiguration>
#include <QSslSocket>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace zofra::test {

using namespace std::chrono_literals;

namespace {
constexpr int slice = 20; // milliseconds between two looks at the stop flag
}

bool ServerConnection::waitForMore() {
    while (!m_stopping && m_socket.bytesAvailable() == 0) {
        if (m_socket.state() != QAbstractSocket::ConnectedState)
            return false;
        m_socket.waitForReadyRead(slice);
    }
    return m_socket.bytesAvailable() > 0;
}

QByteArray ServerConnection::readUntil(const QByteArray& mark) {
    while (!m_buffer.contains(mark)) {
        if (!waitForMore())
            return std::exchange(m_buffer, {});
        m_buffer += m_socket.readAll();
    }
    const auto end = m_buffer.indexOf(mark) + mark.size();
    const auto found = m_buffer.first(end);
    m_buffer.remove(0, end);
    return found;
}

QByteArray ServerConnection::read(qsizetype size) {
    while (m_buffer.size() < size && waitForMore())
        m_buffer += m_socket.readAll();
    const auto found = m_buffer.first(std::min(size, m_buffer.size()));
    m_buffer.remove(0, found.size());
    return found;
}

bool ServerConnection::write(const QByteArray& bytes) {
    m_socket.write(bytes);
    while (!m_stopping && m_socket.bytesToWrite() + m_socket.encryptedBytesToWrite() > 0) {
        if (m_socket.state() != QAbstractSocket::ConnectedState)
            return false;
        m_socket.waitForBytesWritten(slice);
    }
    return !m_stopping && m_socket.state() == QAbstractSocket::ConnectedState;
}

bool ServerConnection::flood(const QByteArray& bytes, std::chrono::milliseconds patience) {
    m_socket.write(bytes);
    const auto limit = std::chrono::steady_clock::now() + patience;
    while (!m_stopping && m_socket.bytesToWrite() + m_socket.encryptedBytesToWrite() > 0) {
        if (m_socket.state() != QAbstractSocket::ConnectedState || std::chrono::steady_clock::now() > limit)
            return false;
        m_socket.waitForBytesWritten(slice);
    }
    return !m_stopping && m_socket.state() == QAbstractSocket::ConnectedState;
}

void ServerConnection::pause(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!m_stopping && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::min<std::chrono::milliseconds>(time, 5ms));
}

bool ServerConnection::waitForPeerToClose() {
    while (!m_stopping && m_socket.state() == QAbstractSocket::ConnectedState) {
        m_socket.waitForReadyRead(slice);
        m_socket.readAll();
    }
    return m_socket.state() != QAbstractSocket::ConnectedState;
}

LoopbackServer::LoopbackServer(Handler handler, std::optional<TlsIdentity> identity)
    : m_handler(std::move(handler))
    , m_identity(std::move(identity))
    , m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (m_listener < 0 || bind(m_listener, generic, size) != 0 || listen(m_listener, 512) != 0 ||
        getsockname(m_listener, generic, &size) != 0)
        throw std::runtime_error("cannot listen");
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptAll(); });
}

LoopbackServer::~LoopbackServer() {
    m_stopping = true;
    m_acceptor.join();
    for (auto& connection : m_connections)
        connection.join();
    close(m_listener);
}

QString LoopbackServer::url(const QString& path, const QString& scheme) const {
    return scheme + u"://127.0.0.1:"_qs + QString::number(m_port) + path;
}

void LoopbackServer::acceptAll() {
    while (!m_stopping) {
        pollfd waiting{m_listener, POLLIN, 0};
        if (poll(&waiting, 1, slice) <= 0)
            continue;
        const int descriptor = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0)
            continue;
        ++m_accepted;
        const int open = ++m_open;
        if (open > m_mostOpen)
            m_mostOpen = open;
        m_connections.emplace_back([this, descriptor] { serve(descriptor); });
    }
}

void LoopbackServer::serve(int descriptor) {
    QSslSocket socket;
    socket.setSocketDescriptor(descriptor);
    bool usable = true;
    if (m_identity) {
        socket.setLocalCertificate(m_identity->certificateFile);
        socket.setPrivateKey(m_identity->keyFile, QSsl::Ec);
        socket.setPeerVerifyMode(QSslSocket::VerifyNone);
        socket.startServerEncryption();
        usable = socket.waitForEncrypted(10'000);
    }
    if (usable) {
        ServerConnection connection(socket, m_stopping);
        m_handler(connection);
    }
    socket.disconnectFromHost();
    if (socket.state() != QAbstractSocket::UnconnectedState && !m_stopping)
        socket.waitForDisconnected(1000);
    --m_open;
}

} // namespace zofra::test
