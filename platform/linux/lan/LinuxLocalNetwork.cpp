// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/lan/LinuxLocalNetwork.h"

#include "platform/linux/Descriptor.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <bit>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <utility>

namespace zofra {

namespace {

constexpr std::size_t maxDatagramBytes = 4096;
constexpr int receiveTimeoutMicroseconds = 250'000;

socklen_t lengthOf(const sockaddr& address) {
    return address.sa_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
}

/// An address as numeric text; empty when it has no such form.
QString numericText(const sockaddr& address) {
    std::array<char, NI_MAXHOST> text{};
    const bool isInternet = address.sa_family == AF_INET || address.sa_family == AF_INET6;
    if (!isInternet || ::getnameinfo(&address, lengthOf(address), text.data(), socklen_t{text.size()},
                                     nullptr, 0, NI_NUMERICHOST) != 0)
        return {};
    return QString::fromUtf8(text.data());
}

std::optional<sockaddr_in> internetAddress(const QString& ip, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (::inet_pton(AF_INET, ip.toUtf8().constData(), &address.sin_addr) != 1)
        return std::nullopt;
    return address;
}

/// The socket calls take every kind of address by the same pointer type.
const sockaddr* generic(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address); // NOLINT(cppcoreguidelines-pro-type-reinterpret-cast)
}

template<typename Value>
void setOption(const Descriptor& socket, int level, int option, const Value& value) {
    ::setsockopt(socket.get(), level, option, &value, socklen_t{sizeof(value)});
}

class LinuxUdpSearchSocket final : public UdpSearchSocket {
public:
    explicit LinuxUdpSearchSocket(Descriptor socket)
        : m_socket(std::move(socket)) {}

    int send(const QString& address, std::uint16_t port, const QByteArray& datagram) override {
        const auto target = internetAddress(address, port);
        if (!target)
            return EINVAL;
        const auto sent =
            ::sendto(m_socket.get(), datagram.constData(), static_cast<std::size_t>(datagram.size()), 0,
                     generic(*target), socklen_t{sizeof(*target)});
        return sent < 0 ? errno : 0;
    }

    std::optional<QByteArray> receive(std::chrono::steady_clock::time_point deadline) override {
        // The socket's own timeout would overshoot a deadline that is nearer.
        const auto left = deadline - now();
        const bool isShort = left < std::chrono::microseconds(receiveTimeoutMicroseconds);
        if (isShort && !hasDatagramWithin(left))
            return std::nullopt;
        std::array<char, maxDatagramBytes> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init)
        const auto length = ::recvfrom(m_socket.get(), buffer.data(), buffer.size(),
                                       isShort ? MSG_DONTWAIT : 0, nullptr, nullptr);
        if (length < 0)
            return std::nullopt;
        return QByteArray(buffer.data(), length);
    }

    [[nodiscard]] std::chrono::steady_clock::time_point now() const override {
        return std::chrono::steady_clock::now();
    }

private:
    [[nodiscard]] bool hasDatagramWithin(std::chrono::nanoseconds time) const {
        const auto wait =
            std::max<std::int64_t>(0, std::chrono::ceil<std::chrono::milliseconds>(time).count());
        pollfd waiting{m_socket.get(), POLLIN, 0};
        return ::poll(&waiting, 1, static_cast<int>(wait)) > 0;
    }

    Descriptor m_socket;
};

int prefixLength(const sockaddr& netmask) {
    sockaddr_in mask{};
    std::memcpy(&mask, &netmask, sizeof(mask));
    return std::popcount(mask.sin_addr.s_addr);
}

static_assert(InterfaceAddress::ipv4 == AF_INET && InterfaceAddress::up == IFF_UP &&
              InterfaceAddress::canBroadcast == IFF_BROADCAST && InterfaceAddress::loopback == IFF_LOOPBACK &&
              InterfaceAddress::pointToPoint == IFF_POINTOPOINT && InterfaceAddress::running == IFF_RUNNING);

InterfaceAddress describe(const ifaddrs& entry) {
    InterfaceAddress address;
    address.name = QString::fromUtf8(entry.ifa_name);
    address.flags = entry.ifa_flags;
    if (entry.ifa_addr == nullptr)
        return address;
    address.family = entry.ifa_addr->sa_family;
    address.ip = numericText(*entry.ifa_addr);
    if (address.family == AF_INET && entry.ifa_netmask != nullptr)
        address.prefixLength = prefixLength(*entry.ifa_netmask);
    // The same field holds the other end of a point-to-point link, or once more the address itself where
    // there is no broadcast address.
    if ((entry.ifa_flags & IFF_BROADCAST) != 0 && entry.ifa_broadaddr != nullptr) {
        const auto broadcast = numericText(*entry.ifa_broadaddr);
        if (!broadcast.isEmpty() && broadcast != address.ip)
            address.broadcast = broadcast;
    }
    return address;
}

} // namespace

std::vector<InterfaceAddress> LinuxLocalNetwork::interfaceAddresses() const {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0)
        return {};
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> list(first, ::freeifaddrs);
    std::vector<InterfaceAddress> addresses;
    for (const auto* entry = first; entry != nullptr; entry = entry->ifa_next)
        addresses.push_back(describe(*entry));
    return addresses;
}

std::unique_ptr<UdpSearchSocket> LinuxLocalNetwork::openSearchSocket(const QString& ip) {
    const auto local = internetAddress(ip, 0);
    Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!local || !socket.isOpen())
        return nullptr;
    setOption(socket, SOL_SOCKET, SO_RCVTIMEO, timeval{0, receiveTimeoutMicroseconds});
    setOption(socket, SOL_SOCKET, SO_BROADCAST, int{1});
    if (::bind(socket.get(), generic(*local), socklen_t{sizeof(*local)}) != 0)
        return nullptr;
    // Multicast has to leave here, whatever the routing table says.
    setOption(socket, IPPROTO_IP, IP_MULTICAST_IF, local->sin_addr);
    return std::make_unique<LinuxUdpSearchSocket>(std::move(socket));
}

} // namespace zofra
