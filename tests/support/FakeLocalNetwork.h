// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LocalNetwork.h"

#include <QMap>

#include <algorithm>
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
/// socket's time stands still while datagrams come and moves on by the interface's quiet time, or to the
/// deadline when that is nearer, each time none does.
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
        std::chrono::milliseconds quietTime{250};
        /// Called at each receive, on the search's thread.
        std::function<void()> onReceive;
    };

    std::vector<InterfaceAddress> interfaceAddresses() const override {
        const std::scoped_lock lock(m_records->mutex);
        ++m_records->listings;
        return addresses;
    }

    std::unique_ptr<UdpSearchSocket> openSearchSocket(const QString& ip) override {
        const auto script = scripts.value(ip);
        {
            const std::scoped_lock lock(m_records->mutex);
            m_records->opened.push_back(ip);
        }
        return script.opens ? std::make_unique<Socket>(m_records, ip, script) : nullptr;
    }

    /// Adds an interface that is up and running, with a broadcast address unless that is empty.
    void addInterface(const QString& name, const QString& ip, const QString& broadcast) {
        constexpr unsigned int usable = IFF_UP | IFF_RUNNING;
        const unsigned int flags = broadcast.isEmpty() ? usable : usable | IFF_BROADCAST;
        addresses.push_back(
            {name, AF_INET, flags, ip, broadcast.isEmpty() ? std::nullopt : std::optional(broadcast)});
    }

    [[nodiscard]] std::vector<Sent> sent() const { return read(&Records::sent); }
    /// Local addresses of the sockets asked for, in order.
    [[nodiscard]] std::vector<QString> opened() const { return read(&Records::opened); }
    [[nodiscard]] int receives() const { return read(&Records::receives); }
    /// How long all sockets together waited in vain.
    [[nodiscard]] std::chrono::steady_clock::duration waited() const { return read(&Records::waited); }
    [[nodiscard]] int openSockets() const { return read(&Records::openSockets); }
    [[nodiscard]] int listings() const { return read(&Records::listings); }

    std::vector<InterfaceAddress> addresses;
    QMap<QString, Script> scripts;

private:
    /// Outlives the network, as sockets do.
    struct Records {
        std::mutex mutex;
        std::vector<Sent> sent;
        std::vector<QString> opened;
        int receives = 0;
        std::chrono::steady_clock::duration waited{0};
        int openSockets = 0;
        int listings = 0;
    };

    class Socket final : public UdpSearchSocket {
    public:
        Socket(std::shared_ptr<Records> records, QString ip, Script script)
            : m_records(std::move(records))
            , m_ip(std::move(ip))
            , m_script(std::move(script)) {
            const std::scoped_lock lock(m_records->mutex);
            ++m_records->openSockets;
        }
        Socket(const Socket&) = delete;
        Socket& operator=(const Socket&) = delete;
        ~Socket() override {
            const std::scoped_lock lock(m_records->mutex);
            --m_records->openSockets;
        }
        int send(const QString& address, std::uint16_t port, const QByteArray& datagram) override {
            const std::scoped_lock lock(m_records->mutex);
            m_records->sent.push_back({m_ip, address, port, datagram});
            return m_script.sendErrno.value(address, 0);
        }
        std::optional<QByteArray> receive(std::chrono::steady_clock::time_point deadline) override {
            if (m_script.onReceive)
                m_script.onReceive();
            {
                const std::scoped_lock lock(m_records->mutex);
                ++m_records->receives;
            }
            if (m_script.datagrams.empty()) {
                const auto before = std::exchange(m_now, std::min(m_now + m_script.quietTime, deadline));
                const std::scoped_lock lock(m_records->mutex);
                m_records->waited += m_now - before;
                return std::nullopt;
            }
            auto datagram = std::move(m_script.datagrams.front());
            m_script.datagrams.pop_front();
            return datagram;
        }
        [[nodiscard]] std::chrono::steady_clock::time_point now() const override { return m_now; }

    private:
        std::shared_ptr<Records> m_records;
        QString m_ip;
        Script m_script;
        std::chrono::steady_clock::time_point m_now;
    };

    template<typename Value>
    Value read(Value Records::*field) const {
        const std::scoped_lock lock(m_records->mutex);
        return (*m_records).*field;
    }

    std::shared_ptr<Records> m_records = std::make_shared<Records>();
};

} // namespace zofra::test
