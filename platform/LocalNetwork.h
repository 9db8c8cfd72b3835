// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace zofra {

/// One address of one network interface, as the system lists it.
struct InterfaceAddress {
    /// The system's numbers.
    static constexpr int ipv4 = 2;
    static constexpr unsigned int up = 0x1;
    static constexpr unsigned int canBroadcast = 0x2;
    static constexpr unsigned int loopback = 0x8;
    static constexpr unsigned int pointToPoint = 0x10;
    static constexpr unsigned int running = 0x40;

    QString name;
    /// `ipv4` and so on; absent when the entry has no address.
    std::optional<int> family;
    /// `up`, `running` and so on.
    unsigned int flags = 0;
    /// Numeric text.
    QString ip;
    /// Numeric text; absent when the entry has none.
    std::optional<QString> broadcast;
    /// Of an IPv4 address: the bits that its network's addresses have in common.
    int prefixLength = 24;
};

/// A UDP socket bound to one local address. Used by one thread at a time. Destroying it closes it.
class UdpSearchSocket {
public:
    virtual ~UdpSearchSocket() = default;
    /// Sends one datagram. Returns 0, or the errno of the failed send.
    virtual int send(const QString& address, std::uint16_t port, const QByteArray& datagram) = 0;
    /// Waits for one datagram, up to a quarter of a second and not beyond `deadline`, and returns its first
    /// 4096 bytes; absent when none came.
    virtual std::optional<QByteArray> receive(std::chrono::steady_clock::time_point deadline) = 0;
    /// Steady time, for the receive window.
    [[nodiscard]] virtual std::chrono::steady_clock::time_point now() const = 0;
};

/// The local IPv4 network: interfaces and searches. Callable from any thread.
class LocalNetwork {
public:
    virtual ~LocalNetwork() = default;
    /// Every entry in the system's order; empty when the system refuses.
    [[nodiscard]] virtual std::vector<InterfaceAddress> interfaceAddresses() const = 0;
    /// A socket bound to `ip` on any port, multicast leaving there, broadcast allowed, or null.
    [[nodiscard]] virtual std::unique_ptr<UdpSearchSocket> openSearchSocket(const QString& ip) = 0;
};

} // namespace zofra
