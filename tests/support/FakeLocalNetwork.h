// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LocalNetwork.h"

#include <QMap>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <net/if.h>
#include <optional>
#include <utility>
#include <vector>

namespace zofra::test {

/// A network of scripted interfaces. Set it up before anyone uses it; then callable from any thread. A
/// socket's time stands still while datagrams come and moves on by a quarter of a second each time none does.
class FakeLocalNetwork final : public LocalNetwork {
public:
    struct Sent {
        QString fromIp;
        QString address;
        std::uint16_t port;
        QByteArray datagram;
    };
    /// What happens on the socket of one local address.
    struct Script {
        bool opens = true;
        /// The errno of sending to an address; what is not named succeeds.
        QMap<QString, int> sendErrno;
        std::deque<QByteArray> datagrams;
        /// Called at each receive, on the search's thread.
        std::function<void()> onReceive;
    };

    std::vector<InterfaceAddress> interfaceAddresses() const override {
        const std::scoped_lock lock(m_mutex);
        ++m_listings;
        return addresses;
    }

    std::unique_ptr<UdpSearchSocket> openSearchSocket(const QString& ip) override {
        const std::scoped_lock lock(m_mutex);
        opened.push_back(ip);
        const auto script = scripts.value(ip);
        return script.opens ? std::make_unique<Socket>(*this, ip, script) : nullptr;
    }

    /// Adds an interface that is up and running, with a broadcast address unless that is empty.
    void addInterface(const QString& name, const QString& ip, const QString& broadcast) {
        constexpr unsigned int usable = IFF_UP | IFF_RUNNING;
        const unsigned int flags = broadcast.isEmpty() ? usable : usable | IFF_BROADCAST;
        addresses.push_back(
            {name, AF_INET, flags, ip, broadcast.isEmpty() ? std::nullopt : std::optional(broadcast)});
    }

    [[nodiscard]] std::vector<Sent> sent() const {
        const std::scoped_lock lock(m_mutex);
        return m_sent;
    }
    [[nodiscard]] int receives() const {
        const std::scoped_lock lock(m_mutex);
        return m_receives;
    }
    [[nodiscard]] int openSockets() const {
        const std::scoped_lock lock(m_mutex);
        return m_openSockets;
    }
    [[nodiscard]] int listings() const {
        const std::scoped_lock lock(m_mutex);
        return m_listings;
    }

    std::vector<InterfaceAddress> addresses;
    QMap<QString, Script> scripts;
    std::vector<QString> opened;

private:
    class Socket final : public UdpSearchSocket {
    public:
        Socket(FakeLocalNetwork& network, QString ip, Script script)
            : m_network(network)
            , m_ip(std::move(ip))
            , m_script(std::move(script)) {
            ++m_network.m_openSockets;
        }
        Socket(const Socket&) = delete;
        Socket& operator=(const Socket&) = delete;
        ~Socket() override {
            const std::scoped_lock lock(m_network.m_mutex);
            --m_network.m_openSockets;
        }
        int send(const QString& address, std::uint16_t port, const QByteArray& datagram) override {
            const std::scoped_lock lock(m_network.m_mutex);
            m_network.m_sent.push_back({m_ip, address, port, datagram});
            return m_script.sendErrno.value(address, 0);
        }
        std::optional<QByteArray> receive() override {
            if (m_script.onReceive)
                m_script.onReceive();
            {
                const std::scoped_lock lock(m_network.m_mutex);
                ++m_network.m_receives;
            }
            if (m_script.datagrams.empty()) {
                m_now += std::chrono::milliseconds(250);
                return std::nullopt;
            }
            auto datagram = std::move(m_script.datagrams.front());
            m_script.datagrams.pop_front();
            return datagram;
        }
        [[nodiscard]] std::chrono::steady_clock::time_point now() const override { return m_now; }

    private:
        FakeLocalNetwork& m_network;
        QString m_ip;
        Script m_script;
        std::chrono::steady_clock::time_point m_now;
    };

    mutable std::mutex m_mutex;
    std::vector<Sent> m_sent;
    int m_receives = 0;
    int m_openSockets = 0;
    mutable int m_listings = 0;
};

} // namespace zofra::test
