// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SessionBus.h"

#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/QtMainQueue.h"
#include "tests/support/EventLoop.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"
#include "tests/support/PrivateBus.h"

#include <csignal>
#include <gtest/gtest.h>

namespace zofra {
namespace {

using namespace std::chrono_literals;
using test::pollUntil;
using test::PrivateBus;
using test::spinUntil;

class SessionBusTest : public testing::Test {
protected:
    void SetUp() override {
        if (!PrivateBus::isAvailable())
            GTEST_SKIP() << "skipped: no dbus-daemon here";
    }
    /// Moves the manual clock until `condition` holds; the bus is looked for on a thread of its own.
    bool advanceUntil(const std::function<bool()>& condition) {
        return pollUntil([&] {
            if (condition())
                return true;
            queue.advance(20ms);
            return false;
        });
    }

    test::TestApplication application;
    QObject context;
    test::ManualMainQueue queue;
};

TEST_F(SessionBusTest, isConnectedFromTheStartWhenThereIsABus) {
    PrivateBus daemon;
    const SessionBus bus(SessionBus::Kind::session, queue);
    ASSERT_TRUE(bus.connection());
    EXPECT_TRUE(bus.connection()->isConnected());
    EXPECT_FALSE(bus.connection()->baseService().isEmpty());
}

TEST_F(SessionBusTest, tellsALateObserverAtOnce) {
    PrivateBus daemon;
    SessionBus bus(SessionBus::Kind::session, queue);
    int told = 0;
    const auto token = bus.observeConnected([&](const QDBusConnection& connection) {
        ++told;
        EXPECT_TRUE(connection.isConnected());
    });
    EXPECT_EQ(told, 1);
}

TEST_F(SessionBusTest, goesOnWhenTheBusDiesAndFindsItAgain) {
    PrivateBus daemon;
    SessionBus bus(SessionBus::Kind::session, queue);
    std::vector<QString> names;
    int lost = 0;
    const auto up =
        bus.observeConnected([&](const QDBusConnection& connection) { names.push_back(connection.name()); });
    const auto down = bus.observeDisconnected([&] {
        ++lost;
        EXPECT_FALSE(bus.connection());
    });

    daemon.stop();
    ASSERT_TRUE(spinUntil([&] { return lost == 1; }));
    EXPECT_FALSE(bus.connection());

    // Nothing to be found yet: it goes on looking.
    queue.advance(3s);
    EXPECT_EQ(names.size(), 1U);

    ASSERT_TRUE(daemon.start());
    ASSERT_TRUE(advanceUntil([&] { return names.size() == 2; }));
    EXPECT_NE(names[0], names[1]);
    ASSERT_TRUE(bus.connection());
    EXPECT_TRUE(bus.connection()->isConnected());

    daemon.stop();
    ASSERT_TRUE(spinUntil([&] { return lost == 2; }));
    ASSERT_TRUE(daemon.start());
    ASSERT_TRUE(advanceUntil([&] { return names.size() == 3; }));
}

TEST_F(SessionBusTest, looksForAMissingBusEveryThreeSeconds) {
    PrivateBus daemon;
    daemon.stop();
    SessionBus bus(SessionBus::Kind::session, queue);
    EXPECT_FALSE(bus.connection());
    int told = 0;
    const auto token = bus.observeConnected([&](const QDBusConnection&) { ++told; });
    EXPECT_EQ(told, 0);
    EXPECT_EQ(queue.startedTimers().back(), 3s);
    ASSERT_TRUE(daemon.start());
    ASSERT_TRUE(advanceUntil([&] { return told == 1; }));
}

TEST_F(SessionBusTest, startsNoBusWhereThereIsNone) {
    PrivateBus daemon;
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    QTemporaryDir empty;
    qputenv("XDG_RUNTIME_DIR", empty.path().toUtf8());
    const SessionBus bus(SessionBus::Kind::session, queue);
    EXPECT_FALSE(bus.connection());
    queue.advance(30s);
    EXPECT_FALSE(bus.connection());
    EXPECT_EQ(queue.startedTimers(), std::vector<std::chrono::milliseconds>(11, 3s));
    qunsetenv("XDG_RUNTIME_DIR");
}

TEST_F(SessionBusTest, usesTheBusInTheRuntimeFolderWhenNoAddressIsSet) {
    PrivateBus daemon;
    QTemporaryDir runtime;
    const auto socket = daemon.address().mid(QStringLiteral("unix:path=").size());
    ASSERT_TRUE(QFile::link(socket, runtime.filePath(QStringLiteral("bus"))));
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    const SessionBus bus(SessionBus::Kind::session, queue);
    EXPECT_TRUE(bus.connection());
    qunsetenv("XDG_RUNTIME_DIR");
}

TEST_F(SessionBusTest, keepsTheSystemBusApartFromTheSessionBus) {
    PrivateBus system("DBUS_SYSTEM_BUS_ADDRESS");
    PrivateBus session;
    const SessionBus systemBus(SessionBus::Kind::system, queue);
    session.stop();
    const SessionBus sessionBus(SessionBus::Kind::session, queue);
    EXPECT_TRUE(systemBus.connection());
    EXPECT_FALSE(sessionBus.connection());
}

TEST_F(SessionBusTest, doesNotWaitForABusThatDoesNotAnswer) {
    PrivateBus daemon;
    ASSERT_EQ(kill(daemon.processId(), SIGSTOP), 0);
    const SessionBus bus(SessionBus::Kind::session, queue, 20ms);
    EXPECT_FALSE(bus.connection());
    ASSERT_EQ(kill(daemon.processId(), SIGCONT), 0);
    EXPECT_TRUE(advanceUntil([&] { return bus.connection().has_value(); }));
}

TEST_F(SessionBusTest, subscribesWithoutWaitingForTheBus) {
    PrivateBus daemon;
    const SessionBus bus(SessionBus::Kind::session, queue);
    ASSERT_EQ(kill(daemon.processId(), SIGSTOP), 0);
    // A call that waited would do so for 25 seconds.
    const auto start = std::chrono::steady_clock::now();
    {
        const DBusNameOwner owner(*bus.connection(), QStringLiteral("be.zofra.Test"));
        const DBusSignal anySender(*bus.connection(),
                                   {{}, QStringLiteral("/a"), QStringLiteral("a.b"), QStringLiteral("C"), {}},
                                   [](const QDBusMessage&) {});
        EXPECT_TRUE(owner.owner().isEmpty());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    ASSERT_EQ(kill(daemon.processId(), SIGCONT), 0);
}

TEST_F(SessionBusTest, mayEndWhileItIsLookingForTheBus) {
    PrivateBus daemon;
    ASSERT_EQ(kill(daemon.processId(), SIGSTOP), 0);
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    {
        SessionBus bus(SessionBus::Kind::session, queue);
        qputenv("DBUS_SESSION_BUS_ADDRESS", daemon.address().toUtf8());
        queue.advance(3s); // Now a thread waits for the greeting of a bus that does not answer.
        EXPECT_FALSE(bus.connection());
    }
    ASSERT_EQ(kill(daemon.processId(), SIGCONT), 0);
    // A new one is served as if nothing had been.
    const SessionBus again(SessionBus::Kind::session, queue);
    EXPECT_TRUE(again.connection());
}

TEST_F(SessionBusTest, followsTheOwnerOfAName) {
    PrivateBus daemon;
    const SessionBus bus(SessionBus::Kind::session, queue);
    const auto name = QStringLiteral("be.zofra.Test");
    std::vector<QString> owners;
    const DBusNameOwner owner(*bus.connection(), name, [&](const QString& now) { owners.push_back(now); });
    EXPECT_TRUE(owner.owner().isEmpty());
    QString first;
    {
        PrivateBus::Peer peer(daemon, QStringLiteral("peer"));
        first = peer.connection().baseService();
        ASSERT_TRUE(peer.connection().registerService(name));
        ASSERT_TRUE(spinUntil([&] { return owners.size() == 1; }));
        EXPECT_EQ(owners[0], first);

        // Who comes later asks and finds it.
        const DBusNameOwner late(*bus.connection(), name);
        ASSERT_TRUE(spinUntil([&] { return late.owner() == first; }));
    }
    ASSERT_TRUE(spinUntil([&] { return owners.size() == 2; }));
    EXPECT_TRUE(owners[1].isEmpty());
}

} // namespace
} // namespace zofra
