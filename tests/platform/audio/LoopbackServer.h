// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QUrl>

#include <arpa/inet.h>
#include <atomic>
#include <mutex>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace zofra::test {

/// An HTTP server on the loopback interface that gives every request the same answer. What the listener does
/// not take yet, the server's writes wait for, so a stream needs no pacing.
class LoopbackServer {
public:
    enum class Then { close, repeatForever };

    LoopbackServer(QByteArray contentType, QByteArray body, Then then)
        : m_head("HTTP/1.0 200 OK\r\nContent-Type: " + contentType + "\r\n\r\n")
        , m_body(std::move(body))
        , m_then(then)
        , m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(m_listener, generic, size) != 0 || ::listen(m_listener, 8) != 0 ||
            ::getsockname(m_listener, generic, &size) != 0)
            return;
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { acceptAll(); });
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer() { stop(); }

    /// Breaks every connection and refuses new ones.
    void stop() {
        if (m_listener < 0)
            return;
        ::shutdown(m_listener, SHUT_RDWR);
        if (m_thread.joinable())
            m_thread.join();
        ::close(m_listener);
        m_listener = -1;
        std::vector<std::thread> threads;
        {
            const std::scoped_lock lock(m_mutex);
            for (const int connection : m_connections)
                ::shutdown(connection, SHUT_RDWR);
            threads.swap(m_threads);
        }
        for (auto& thread : threads)
            thread.join();
        for (const int connection : m_connections)
            ::close(connection);
        m_connections.clear();
    }

    [[nodiscard]] QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/stream").arg(m_port)); }
    /// Connections so far.
    [[nodiscard]] int requests() const { return m_requests; }

private:
    void acceptAll() {
        while (true) {
            const int connection = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (connection < 0)
                return;
            ++m_requests;
            const std::scoped_lock lock(m_mutex);
            m_connections.push_back(connection);
            m_threads.emplace_back([this, connection] { serve(connection); });
        }
    }
    void serve(int connection) const {
        std::string request;
        char buffer[1024];
        while (request.find("\r\n\r\n") == std::string::npos && request.size() < 16384) {
            const auto count = ::recv(connection, buffer, sizeof buffer, 0);
            if (count <= 0)
                return;
            request.append(buffer, static_cast<std::size_t>(count));
        }
        bool isOpen = sendAll(connection, m_head);
        do
            isOpen = isOpen && sendAll(connection, m_body);
        while (isOpen && m_then == Then::repeatForever);
        ::shutdown(connection, SHUT_WR);
    }
    static bool sendAll(int connection, const QByteArray& bytes) {
        qsizetype done = 0;
        while (done < bytes.size()) {
            const auto count = ::send(connection, bytes.constData() + done,
                                      static_cast<std::size_t>(bytes.size() - done), MSG_NOSIGNAL);
            if (count <= 0)
                return false;
            done += count;
        }
        return true;
    }

    const QByteArray m_head;
    const QByteArray m_body;
    const Then m_then;
    int m_listener;
    int m_port = 0;
    std::atomic<int> m_requests{0};
    std::mutex m_mutex;
    std::vector<int> m_connections;
    std::vector<std::thread> m_threads;
    std::thread m_thread;
};

/// A second of silence as an MP3 stream of 128 kbit/s.
inline QByteArray silentMp3() {
    const QByteArray frame = QByteArray::fromHex("fffb9064") + QByteArray(413, '\0');
    return frame.repeated(38);
}

} // namespace zofra::test
