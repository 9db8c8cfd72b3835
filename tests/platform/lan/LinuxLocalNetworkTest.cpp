// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/lan/LinuxLocalNetwork.h"

#include "tests/platform/lan/Namespaces.h"
#include "tests/support/PrintQt.h"

#include <QDir>

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace zofra {
namespace {

using test::command;
using test::ip;

const QString multicast = QStringLiteral("239.255.255.250");
const QString broadcast = QStringLiteral("10.77.0.255");
const QString nearIp = QStringLiteral("10.77.0.1");
const QByteArray hello = "hello";

sockaddr_in address(const char* text, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    ::inet_pton(AF_INET, text, &result.sin_addr);
    return result;
}

/// A plain socket at the far end that hears multicast and broadcast on port 1900.
class FarSocket {
public:
    FarSocket()
        : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        const auto any = address("0.0.0.0", 1900);
        m_isBound = ::bind(m_socket, reinterpret_cast<const sockaddr*>(&any), sizeof any) == 0;
        const ip_mreq group{address("239.255.255.250", 0).sin_addr, address("10.77.0.2", 0).sin_addr};
        ::setsockopt(m_socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, &group, sizeof group);
        const timeval patience{10, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    FarSocket(const FarSocket&) = delete;
    FarSocket& operator=(const FarSocket&) = delete;
    ~FarSocket() { ::close(m_socket); }

    [[nodiscard]] bool isBound() const { return m_isBound; }
    QByteArray receive() {
        QByteArray buffer(8192, 0);
        socklen_t length = sizeof m_from;
        const auto count = ::recvfrom(m_socket, buffer.data(), static_cast<std::size_t>(buffer.size()), 0,
                                      reinterpret_cast<sockaddr*>(&m_from), &length);
        buffer.truncate(std::max(count, ssize_t{0}));
        return buffer;
    }
    /// Answers whoever was received from last.
    void answer(const QByteArray& datagram) {
        ::sendto(m_socket, datagram.constData(), static_cast<std::size_t>(datagram.size()), 0,
                 reinterpret_cast<const sockaddr*>(&m_from), sizeof m_from);
    }
    [[nodiscard]] QString sender() const { return QString::fromLatin1(::inet_ntoa(m_from.sin_addr)); }

private:
    int m_socket;
    bool m_isBound = false;
    sockaddr_in m_from{};
};

/// A deadline that is further away than a receive waits.
std::chrono::steady_clock::time_point later(const UdpSearchSocket& socket) {
    return socket.now() + std::chrono::seconds(60);
}

/// The entries of one interface and family.
std::vector<InterfaceAddress> entriesOf(const QString& name, int family) {
    auto all = LinuxLocalNetwork().interfaceAddresses();
    std::erase_if(all, [&](const auto& entry) { return entry.name != name || entry.family != family; });
    return all;
}

#define IN_NAMESPACES(far, work)                                                                             \
    if (!test::inNamespaces(far, work))                                                                      \
    GTEST_SKIP() << "skipped: no network namespaces here"

TEST(LinuxLocalNetworkTest, ListsInterfacesWithFlagsAndAddresses) {
    IN_NAMESPACES([] {},
                  [] {
                      const auto near = entriesOf(QStringLiteral("near"), AF_INET);
                      ASSERT_EQ(near.size(), 1U);
                      EXPECT_EQ(near[0].ip, nearIp);
                      EXPECT_EQ(near[0].broadcast, broadcast);
                      EXPECT_EQ(near[0].flags &
                                    (IFF_UP | IFF_RUNNING | IFF_LOOPBACK | IFF_POINTOPOINT | IFF_BROADCAST),
                                unsigned{IFF_UP | IFF_RUNNING | IFF_BROADCAST});
                      const auto lo = entriesOf(QStringLiteral("lo"), AF_INET);
                      ASSERT_EQ(lo.size(), 1U);
                      EXPECT_EQ(lo[0].ip, QStringLiteral("127.0.0.1"));
                      EXPECT_TRUE(lo[0].flags & IFF_LOOPBACK);
                      EXPECT_FALSE(lo[0].broadcast);
                      EXPECT_FALSE(entriesOf(QStringLiteral("lo"), AF_INET6).empty());
                      EXPECT_FALSE(entriesOf(QStringLiteral("near"), AF_PACKET).empty());
                      EXPECT_TRUE(entriesOf(QStringLiteral("near"), AF_PACKET)[0].ip.isEmpty());
                  });
}

TEST(LinuxLocalNetworkTest, ListsEveryAddressOfAnInterface) {
    IN_NAMESPACES([] {},
                  [] {
                      ASSERT_TRUE(ip("address add 10.78.0.1/24 dev near"));
                      ASSERT_TRUE(ip("address add 10.79.0.1/16 brd + dev near"));
                      const auto near = entriesOf(QStringLiteral("near"), AF_INET);
                      ASSERT_EQ(near.size(), 3U);
                      EXPECT_EQ(near[1].ip, QStringLiteral("10.78.0.1"));
                      EXPECT_FALSE(near[1].broadcast) << "none was given";
                      EXPECT_EQ(near[2].broadcast, QStringLiteral("10.79.255.255"));
                  });
}

TEST(LinuxLocalNetworkTest, ADownInterfaceIsNotRunning) {
    IN_NAMESPACES([] {},
                  [] {
                      ASSERT_TRUE(ip("link set near down"));
                      const auto near = entriesOf(QStringLiteral("near"), AF_INET);
                      ASSERT_EQ(near.size(), 1U);
                      EXPECT_EQ(near[0].flags & (IFF_UP | IFF_RUNNING), 0U);
                  });
}

TEST(LinuxLocalNetworkTest, SearchesByMulticastWithoutARouteAndHearsAnswers) {
    std::unique_ptr<FarSocket> far;
    IN_NAMESPACES([&] { far = std::make_unique<FarSocket>(); },
                  [&] {
                      ASSERT_TRUE(far->isBound());
                      LinuxLocalNetwork network;
                      const auto socket = network.openSearchSocket(nearIp);
                      ASSERT_TRUE(socket);
                      ASSERT_EQ(socket->send(multicast, 1900, hello), 0);
                      EXPECT_EQ(far->receive(), hello);
                      EXPECT_EQ(far->sender(), nearIp);
                      far->answer("answer");
                      EXPECT_EQ(socket->receive(later(*socket)), QByteArray("answer"));
                  });
}

TEST(LinuxLocalNetworkTest, SearchesByBroadcast) {
    std::unique_ptr<FarSocket> far;
    IN_NAMESPACES([&] { far = std::make_unique<FarSocket>(); },
                  [&] {
                      const auto socket = LinuxLocalNetwork().openSearchSocket(nearIp);
                      ASSERT_TRUE(socket);
                      ASSERT_EQ(socket->send(broadcast, 1900, hello), 0);
                      EXPECT_EQ(far->receive(), hello);
                  });
}

TEST(LinuxLocalNetworkTest, MulticastLeavesThroughTheSocketsInterface) {
    std::unique_ptr<FarSocket> far;
    IN_NAMESPACES([&] { far = std::make_unique<FarSocket>(); },
                  [&] {
                      // Another interface, to which the routing table would send it.
                      ASSERT_TRUE(ip("link add other type veth peer name nobody"));
                      ASSERT_TRUE(ip("link set other up"));
                      ASSERT_TRUE(ip("address add 10.80.0.1/24 brd + dev other"));
                      ASSERT_TRUE(ip("route add 224.0.0.0/4 dev other"));
                      const auto socket = LinuxLocalNetwork().openSearchSocket(nearIp);
                      ASSERT_TRUE(socket);
                      ASSERT_EQ(socket->send(multicast, 1900, hello), 0);
                      EXPECT_EQ(far->receive(), hello);
                  });
}

TEST(LinuxLocalNetworkTest, CutsADatagramAt4096Bytes) {
    std::unique_ptr<FarSocket> far;
    IN_NAMESPACES([&] { far = std::make_unique<FarSocket>(); },
                  [&] {
                      const auto socket = LinuxLocalNetwork().openSearchSocket(nearIp);
                      ASSERT_TRUE(socket);
                      ASSERT_EQ(socket->send(multicast, 1900, hello), 0);
                      far->receive();
                      far->answer(QByteArray(6000, 'x'));
                      EXPECT_EQ(socket->receive(later(*socket)), QByteArray(4096, 'x'));
                  });
}

TEST(LinuxLocalNetworkTest, WaitsAQuarterOfASecondForADatagram) {
    IN_NAMESPACES([] {},
                  [] {
                      const auto socket = LinuxLocalNetwork().openSearchSocket(nearIp);
                      ASSERT_TRUE(socket);
                      const auto before = socket->now();
                      EXPECT_FALSE(socket->receive(later(*socket)));
                      EXPECT_GE(socket->now() - before, std::chrono::milliseconds(200));
                  });
}

TEST(LinuxLocalNetworkTest, WaitsNoLongerThanToTheDeadline) {
    std::unique_ptr<FarSocket> far;
    IN_NAMESPACES([&] { far = std::make_unique<FarSocket>(); },
                  [&] {
                      const auto socket = LinuxLocalNetwork().openSearchSocket(nearIp);
                      ASSERT_TRUE(socket);
                      // The fastest of several: one alone may be delayed by whoever else runs.
                      auto fastest = std::chrono::steady_clock::duration::max();
                      for (int i = 0; i < 20; ++i) {
                          const auto before = socket->now();
                          EXPECT_FALSE(socket->receive(before + std::chrono::milliseconds(10)));
                          EXPECT_GE(socket->now() - before, std::chrono::milliseconds(10));
                          fastest = std::min(fastest, socket->now() - before);
                      }
                      EXPECT_LT(fastest, std::chrono::milliseconds(150));
                      EXPECT_FALSE(socket->receive(socket->now() - std::chrono::seconds(1)));
                      // What comes before the deadline is heard.
                      ASSERT_EQ(socket->send(multicast, 1900, hello), 0);
                      EXPECT_EQ(far->receive(), hello);
                      far->answer("answer");
                      EXPECT_EQ(socket->receive(socket->now() + std::chrono::milliseconds(200)),
                                QByteArray("answer"));
                  });
}

TEST(LinuxLocalNetworkTest, SaysWhyASendFailed) {
    IN_NAMESPACES([] {},
                  [] {
                      const auto socket = LinuxLocalNetwork().openSearchSocket(nearIp);
                      ASSERT_TRUE(socket);
                      EXPECT_EQ(socket->send(QStringLiteral("192.0.2.1"), 1900, hello), ENETUNREACH);
                      EXPECT_EQ(socket->send(QStringLiteral("not an address"), 1900, hello), EINVAL);
                      ASSERT_TRUE(ip("route add prohibit 192.0.2.0/24"));
                      EXPECT_EQ(socket->send(QStringLiteral("192.0.2.1"), 1900, hello), EACCES);
                      ASSERT_TRUE(ip("route add unreachable 198.51.100.0/24"));
                      EXPECT_EQ(socket->send(QStringLiteral("198.51.100.1"), 1900, hello), EHOSTUNREACH);
                  });
}

TEST(LinuxLocalNetworkTest, APacketFilterThatDropsIsSeenAsRefusal) {
    bool hasFilter = true;
    IN_NAMESPACES([] {},
                  [&] {
                      hasFilter = command("iptables -A OUTPUT -p udp -j DROP");
                      if (!hasFilter)
                          return;
                      const auto socket = LinuxLocalNetwork().openSearchSocket(nearIp);
                      ASSERT_TRUE(socket);
                      EXPECT_EQ(socket->send(multicast, 1900, hello), EPERM);
                      EXPECT_EQ(socket->send(broadcast, 1900, hello), EPERM);
                  });
    if (!hasFilter)
        GTEST_SKIP() << "skipped: no packet filter here";
}

TEST(LinuxLocalNetworkTest, OpensNoSocketOnAnAddressThatIsNotOurs) {
    LinuxLocalNetwork network;
    EXPECT_FALSE(network.openSearchSocket(QStringLiteral("192.0.2.1")));
    EXPECT_FALSE(network.openSearchSocket(QStringLiteral("fe80::1")));
    EXPECT_FALSE(network.openSearchSocket(QString()));
}

TEST(LinuxLocalNetworkTest, ASocketIsClosedWithItsOwner) {
    const auto descriptors = [] {
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries).size();
    };
    LinuxLocalNetwork network;
    const auto before = descriptors();
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(network.openSearchSocket(QStringLiteral("127.0.0.1")));
        EXPECT_FALSE(network.openSearchSocket(QStringLiteral("192.0.2.1")));
        EXPECT_FALSE(network.interfaceAddresses().empty());
    }
    EXPECT_EQ(descriptors(), before);
}

} // namespace
} // namespace zofra
