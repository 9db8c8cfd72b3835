// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/tray/IconProvider.h"
#include "platform/linux/tray/TrayTypes.h"
#include "tests/support/EventLoop.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"
#include "tests/support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVirtualObject>
#include <QDebug>

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace zofra::test {

/// Draws every symbol as a square of its colour.
class SquareIcons final : public IconProvider {
public:
    QImage image(const QString& symbolName, int pixels, const QColor& color) const override {
        asked << symbolName;
        QImage image(pixels, pixels, QImage::Format_ARGB32);
        image.fill(color);
        return image;
    }
    mutable QStringList asked;
};

/// A test with a message bus of its own and a client on it; skipped where there is no bus daemon.
class TrayBusTest : public testing::Test {
protected:
    void SetUp() override {
        if (!PrivateBus::isAvailable())
            GTEST_SKIP() << "skipped: no dbus-daemon here";
        registerTrayTypes();
        startBus();
    }
    void TearDown() override {
        client.reset();
        bus.reset();
    }
    void startBus() {
        bus = std::make_unique<PrivateBus>();
        ASSERT_TRUE(bus->isUp());
        client = std::make_unique<PrivateBus::Peer>(*bus, QStringLiteral("client%1").arg(++s_peers));
        ASSERT_TRUE(client->connection().isConnected());
    }

    /// Calls a method the way another process would, while this one answers.
    QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                      const QString& member, const QVariantList& arguments = {}) {
        auto message = QDBusMessage::createMethodCall(service, path, interface, member);
        message.setArguments(arguments);
        QDBusPendingCall pending = client->connection().asyncCall(message, 5000);
        QDBusPendingCallWatcher watcher(pending);
        spinUntil([&] { return watcher.isFinished(); });
        return watcher.reply();
    }
    /// Lets everything that is under way on the bus arrive.
    void settle() {
        static_cast<void>(call(QStringLiteral("org.freedesktop.DBus"),
                               QStringLiteral("/org/freedesktop/DBus"),
                               QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
        QCoreApplication::processEvents();
    }

    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<PrivateBus::Peer> client;
    ManualMainQueue queue;
    static inline int s_peers = 0;
};

} // namespace zofra::test
