// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/lan/LinuxLocalNetwork.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <sys/socket.h>
#include <utility>

namespace zofra {

/// Tells when the computer's network has changed: an interface came up or went, an address or a default route
/// came or went. The kernel's news are gathered for a moment, and what leaves everything as it was (renewed
/// leases) is not told. Main thread only.
class NetworkChange final {
public:
    /// `queue` must outlive it.
    explicit NetworkChange(MainQueue& queue)
        : m_queue(queue)
        , m_socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)) {
        if (!m_socket.isOpen())
            return;
        sockaddr_nl address{};
        address.nl_family = AF_NETLINK;
        address.nl_groups =
            RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
        if (::bind(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            return;
        m_last = snapshot();
        m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                         [this] { newsArrived(); });
    }
    NetworkChange(const NetworkChange&) = delete;
    NetworkChange& operator=(const NetworkChange&) = delete;

    [[nodiscard]] ObservationToken observeChanged(std::function<void()> handler) {
        return m_observers.add(std::move(handler));
    }

    /// The present state as text, for comparison.
    [[nodiscard]] static QByteArray snapshot() {
        auto lines = defaultRoutes(contentsOf("/proc/net/route"), contentsOf("/proc/net/ipv6_route"));
        appendInterfaces(lines);
        std::ranges::sort(lines);
        // An interface stands there once for each kind of address.
        lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
        return lines.join('\n');
    }
    /// The default routes in the kernel's tables, /proc/net/route and /proc/net/ipv6_route.
    [[nodiscard]] static QList<QByteArray> defaultRoutes(const QByteArray& four, const QByteArray& six) {
        // Where the destination and its length are zero.
        QList<QByteArray> lines;
        for (const auto& line : four.split('\n')) {
            const auto fields = line.simplified().split(' ');
            if (fields.size() > 7 && fields[1] == "00000000" && fields[7] == "00000000")
                lines += "route " + fields[0] + ' ' + fields[2];
        }
        for (const auto& line : six.split('\n')) {
            const auto fields = line.simplified().split(' ');
            if (fields.size() > 9 && fields[1] == "00" && fields[0] == QByteArray(32, '0') &&
                fields[9] != "lo")
                lines += "route " + fields[9] + ' ' + fields[4];
        }
        return lines;
    }

private:
    static void appendInterfaces(QList<QByteArray>& lines) {
        for (const auto& entry : LinuxLocalNetwork().interfaceAddresses()) {
            const bool isUp = (entry.flags & InterfaceAddress::up) != 0;
            auto line = entry.name.toUtf8() + (isUp ? " up" : " down");
            line += (entry.flags & InterfaceAddress::running) != 0 ? " running" : "";
            // An interface that is down keeps its addresses, but nothing can be reached from them.
            if (isUp && !entry.ip.isEmpty())
                line += ' ' + entry.ip.toUtf8();
            lines += line;
        }
    }
    [[nodiscard]] static QByteArray contentsOf(const char* path) {
        QFile file(QString::fromLatin1(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void newsArrived() {
        // What the news say is looked up afterwards; that there are some is enough. Lost ones count as well.
        std::array<char, 8192> buffer{};
        constexpr int maxReads = 64; // More are read in a next turn.
        for (int i = 0; i < maxReads && ::recv(m_socket.get(), buffer.data(), buffer.size(), 0) >= 0; ++i) {
        }
        constexpr auto gatheringTime = std::chrono::milliseconds(300);
        if (!m_gathering)
            m_gathering = m_queue.startTimer(gatheringTime, MainQueue::Repeat::once, [this] { compare(); });
    }
    void compare() {
        m_gathering.reset();
        auto now = snapshot();
        if (now != std::exchange(m_last, now))
            m_observers.notify();
    }

    MainQueue& m_queue;
    Descriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<Timer> m_gathering;
    QByteArray m_last;
    ObserverList<> m_observers;
};

} // namespace zofra
