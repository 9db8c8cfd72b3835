// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/QtMainQueue.h"
#include "platform/linux/SessionBus.h"
#include "tests/support/EventLoop.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"
#include "tests/support/PrivateBus.h"

#include <QDBusMessage>
#include <QDBusVariant>

#include <atomic>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

namespace zofra::test {

/// A test with an event loop, a private session bus, our connection to it, and another program on it.
class BusTest : public testing::Test {
protected:
    void SetUp() override {
        if (!PrivateBus::isAvailable())
            GTEST_SKIP() << "skipped: no dbus-daemon here";
        daemon.emplace();
        ASSERT_TRUE(daemon->isUp());
        bus.emplace(SessionBus::Kind::session, queue);
        peer.emplace(*daemon, QStringLiteral("peer"));
    }

    /// Runs `work` on another thread while this one serves its event loop.
    template<typename Work>
    auto meanwhile(Work work) {
        std::optional<decltype(work())> result;
        std::atomic<bool> isDone = false;
        QObject here;
        std::thread thread([&] {
            result = work();
            isDone = true;
            QMetaObject::invokeMethod(
                &here, [] {}, Qt::QueuedConnection);
        });
        EXPECT_TRUE(spinUntil([&] { return isDone.load(); }, std::chrono::seconds(60)));
        thread.join();
        return *result;
    }

    /// What the object answers to the other program.
    QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                      const QString& method, const QVariantList& arguments = {}) {
        auto message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        return meanwhile([&] { return peer->connection().call(message, QDBus::Block, 30000); });
    }

    /// Kills the bus and waits until it is noticed.
    void loseBus() {
        peer.reset();
        daemon->stop();
        ASSERT_TRUE(spinUntil([&] { return !bus->connection(); }));
    }
    /// Starts it again and waits until our connection is back.
    void bringBusBack() {
        ASSERT_TRUE(daemon->start());
        peer.emplace(*daemon, QStringLiteral("peer"));
        ASSERT_TRUE(pollUntil([&] {
            queue.advance(std::chrono::milliseconds(100));
            return bus->connection().has_value();
        }));
    }

    TestApplication application;
    ManualMainQueue queue;
    std::optional<PrivateBus> daemon;
    std::optional<SessionBus> bus;
    std::optional<PrivateBus::Peer> peer;
};

/// The name of the error, or "answered".
inline QString errorOf(const QDBusMessage& reply) {
    return reply.type() == QDBusMessage::ErrorMessage ? reply.errorName() : QStringLiteral("answered");
}

} // namespace zofra::test
