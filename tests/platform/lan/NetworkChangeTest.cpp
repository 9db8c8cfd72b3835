// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/lan/NetworkChange.h"

#include "tests/support/EventLoop.h"
#include "tests/support/ManualMainQueue.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zofra {
namespace {

using namespace std::chrono_literals;
using test::spinUntil;

/// This thread in an empty network of its own, where only a loopback interface is, and that is down.
class OwnNetwork {
public:
    OwnNetwork()
        : m_before(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC))
        , m_isOwn(m_before >= 0 && ::unshare(CLONE_NEWNET) == 0) {}
    ~OwnNetwork() {
        if (m_isOwn) {
            EXPECT_EQ(::setns(m_before, CLONE_NEWNET), 0);
        }
        ::close(m_before);
    }
    OwnNetwork(const OwnNetwork&) = delete;
    OwnNetwork& operator=(const OwnNetwork&) = delete;
    [[nodiscard]] bool isOwn() const { return m_isOwn; }

    enum class Loopback { up, down };
    static void setLoopback(Loopback state) {
        const int control = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ifreq request{};
        std::strcpy(request.ifr_name, "lo");
        EXPECT_EQ(::ioctl(control, SIOCGIFFLAGS, &request), 0);
        const auto up = static_cast<short>(IFF_UP);
        request.ifr_flags =
            static_cast<short>(state == Loopback::up ? request.ifr_flags | up : request.ifr_flags & ~up);
        EXPECT_EQ(::ioctl(control, SIOCSIFFLAGS, &request), 0) << std::strerror(errno);
        ::close(control);
    }

private:
    int m_before;
    bool m_isOwn;
};

class NetworkChangeTest : public testing::Test {
protected:
    void SetUp() override {
        if (!network.isOwn())
            GTEST_SKIP() << "skipped: no right to make a network namespace";
    }

    /// Watches the own network from now on.
    void observe() {
        change = std::make_unique<NetworkChange>(queue);
        token = change->observeChanged([this] { ++told; });
    }

    const test::TestApplication application;
    const OwnNetwork network;
    test::ManualMainQueue queue;
    int told = 0;
    std::unique_ptr<NetworkChange> change;
    ObservationToken token;
};

TEST_F(NetworkChangeTest, tellsWhenAnInterfaceComesAndGoes) {
    observe();
    EXPECT_EQ(queue.pendingTimers(), 0U) << "nothing is due while nothing happens";

    OwnNetwork::setLoopback(OwnNetwork::Loopback::up);
    ASSERT_TRUE(spinUntil([this] { return queue.pendingTimers() == 1; }));
    EXPECT_EQ(told, 0) << "the news are gathered first";
    queue.advance(300ms);
    EXPECT_EQ(told, 1);

    OwnNetwork::setLoopback(OwnNetwork::Loopback::down);
    ASSERT_TRUE(spinUntil([this] { return queue.pendingTimers() == 1; }));
    queue.advance(300ms);
    EXPECT_EQ(told, 2);
}

TEST_F(NetworkChangeTest, doesNotTellWhatChangesBackAtOnce) {
    observe();
    OwnNetwork::setLoopback(OwnNetwork::Loopback::up);
    OwnNetwork::setLoopback(OwnNetwork::Loopback::down);
    ASSERT_TRUE(spinUntil([this] { return queue.pendingTimers() == 1; }));
    queue.advance(300ms);
    EXPECT_EQ(told, 0);
}

TEST_F(NetworkChangeTest, seesInterfacesInItsSnapshot) {
    EXPECT_EQ(NetworkChange::snapshot(), QByteArray("lo down"));
    OwnNetwork::setLoopback(OwnNetwork::Loopback::up);
    EXPECT_TRUE(NetworkChange::snapshot().contains("lo up running 127.0.0.1"));
}

TEST(DefaultRoutesTest, ofTheKernelsTablesOnlyDefaultRoutesCount) {
    const QByteArray four =
        "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\tWindow\tIRTT\n"
        "wlan0\t00000000\t0101A8C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n"
        "wlan0\t0001A8C0\t00000000\t0001\t0\t0\t600\t00FFFFFF\t0\t0\t0\n";
    const QByteArray all(32, '0');
    const QByteArray gateway = "fe80" + QByteArray(27, '0') + "1";
    const auto row = [&](const QByteArray& length, const QByteArray& interface) {
        return all + ' ' + length + ' ' + all + " 00 " + gateway +
               " 00000400 00000001 00000000 00000003    " + interface + '\n';
    };
    // Of the loopback interface the kernel has one that leads nowhere.
    const QByteArray six = row("00", "wlan0") + row("40", "eth0") + row("00", "lo");
    EXPECT_EQ(NetworkChange::defaultRoutes(four, six),
              (QList<QByteArray>{"route wlan0 0101A8C0", "route wlan0 " + gateway}));
    EXPECT_TRUE(NetworkChange::defaultRoutes({}, "nonsense\n\n").isEmpty());
}

} // namespace
} // namespace zofra
