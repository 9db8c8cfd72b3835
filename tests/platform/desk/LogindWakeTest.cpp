// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/LogindWake.h"

#include "platform/linux/DBusNameOwner.h"
#include "tests/platform/desk/BusTest.h"

namespace zofra {
namespace {

using test::pollUntil;
using test::PrivateBus;
using test::spinUntil;

class LogindWakeTest : public testing::Test {
protected:
    void SetUp() override {
        if (!PrivateBus::isAvailable())
            GTEST_SKIP() << "skipped: no dbus-daemon here";
        daemon.emplace("DBUS_SYSTEM_BUS_ADDRESS");
        bus.emplace(SessionBus::Kind::system, queue);
        startManager();
    }
    void startManager() {
        manager.emplace(*daemon, QStringLiteral("logind"));
        ASSERT_TRUE(manager->connection().registerService(QStringLiteral("org.freedesktop.login1")));
        other.emplace(*daemon, QStringLiteral("other"));
    }
    static void send(PrivateBus::Peer& from, const QVariantList& arguments,
                     const QString& member = QStringLiteral("PrepareForSleep")) {
        auto signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                                 QStringLiteral("org.freedesktop.login1.Manager"), member);
        signal.setArguments(arguments);
        EXPECT_TRUE(from.connection().send(signal));
    }
    /// True once our side knows who the manager is: this asks the same after it, on the same connection.
    bool isListening() {
        const DBusNameOwner owner(*bus->connection(), QStringLiteral("org.freedesktop.login1"));
        const auto expected = manager->connection().baseService();
        const bool isKnown = spinUntil([&] { return owner.owner() == expected; });
        QCoreApplication::processEvents();
        return isKnown;
    }
    /// True when a wake-up has arrived, and with it everything sent before it by the manager.
    bool wakeArrives() {
        const auto before = wakes;
        send(*manager, {false});
        return spinUntil([&] { return wakes > before; });
    }

    test::TestApplication application;
    test::ManualMainQueue queue;
    std::optional<PrivateBus> daemon;
    std::optional<SessionBus> bus;
    std::optional<PrivateBus::Peer> manager;
    std::optional<PrivateBus::Peer> other;
    int wakes = 0;
};

TEST_F(LogindWakeTest, tellsAWakeUpAndNothingElse) {
    LogindWake wake(*bus);
    ASSERT_TRUE(isListening());
    const auto token = wake.observeDidWake([this] { ++wakes; });
    ASSERT_TRUE(wakeArrives());
    wakes = 0;
    send(*manager, {true}); // Going to sleep.
    send(*manager, {});
    send(*manager, {QStringLiteral("false")});
    send(*manager, {false, false});
    send(*manager, {false}, QStringLiteral("PrepareForShutdown"));
    ASSERT_TRUE(wakeArrives());
    EXPECT_EQ(wakes, 1);
}

TEST_F(LogindWakeTest, believesTheLoginManagerOnly) {
    LogindWake wake(*bus);
    ASSERT_TRUE(isListening());
    const auto token = wake.observeDidWake([this] { ++wakes; });
    ASSERT_TRUE(wakeArrives());
    wakes = 0;
    send(*other, {false});
    // A call that is answered shows that what was sent before it has been through the bus.
    ASSERT_FALSE(other->connection()
                     .call(QDBusMessage::createMethodCall(
                         QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                         QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")))
                     .arguments()
                     .isEmpty());
    ASSERT_TRUE(wakeArrives());
    EXPECT_EQ(wakes, 1);
}

TEST_F(LogindWakeTest, tellsNobodyWhoHasStoppedListening) {
    LogindWake wake(*bus);
    ASSERT_TRUE(isListening());
    int ended = 0;
    auto endedToken = wake.observeDidWake([&] { ++ended; });
    const auto token = wake.observeDidWake([this] { ++wakes; });
    endedToken.reset();
    ASSERT_TRUE(wakeArrives());
    EXPECT_EQ(ended, 0);
}

TEST_F(LogindWakeTest, survivesAMissingBusAndListensWhenItIsBack) {
    manager.reset();
    other.reset();
    daemon->stop();
    ASSERT_TRUE(spinUntil([&] { return !bus->connection(); }));
    LogindWake wake(*bus);
    const auto token = wake.observeDidWake([this] { ++wakes; });
    ASSERT_TRUE(daemon->start());
    startManager();
    ASSERT_TRUE(pollUntil([&] {
        queue.advance(std::chrono::milliseconds(100));
        return bus->connection().has_value();
    }));
    ASSERT_TRUE(isListening());
    EXPECT_TRUE(wakeArrives());
}

TEST_F(LogindWakeTest, followsALoginManagerThatIsRestarted) {
    LogindWake wake(*bus);
    ASSERT_TRUE(isListening());
    const auto token = wake.observeDidWake([this] { ++wakes; });
    manager.reset();
    startManager();
    ASSERT_TRUE(isListening());
    EXPECT_TRUE(wakeArrives());
}

} // namespace
} // namespace zofra
