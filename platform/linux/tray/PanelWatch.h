// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/DBusSignal.h"

#include <QFile>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace zofra {

/// The name of a running process; empty when it cannot be read.
[[nodiscard]] inline QString processName(uint processId) {
    QFile file(u"/proc/%1/comm"_qs.arg(processId));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(256)).trimmed() : QString();
}

/// Follows the panel that shows status items on one connection. Never waits for the bus. Main thread only.
class PanelWatch final {
public:
    /// All of them are there.
    struct Handlers {
        /// A watcher has appeared, from the process `program` (if known). Answer by `registerItem`.
        std::function<void(const QString& program)> appeared;
        std::function<void()> disappeared;
        /// The watcher has taken the item, and says whether a panel is there to show it.
        std::function<void(bool hasHost)> registered;
    };

    PanelWatch(const QDBusConnection& connection, Handlers handlers)
        : m_connection(connection)
        , m_handlers(std::move(handlers))
        , m_watcher(connection, watcherName, [this](const QString& owner) { ownerChanged(owner); }) {}

    /// Whether there is a watcher of status items, so far as the bus has said.
    [[nodiscard]] bool hasWatcher() const { return !m_owner.isEmpty(); }
    void registerItem() {
        // The unique name: with a well-known one a panel may miss the menu.
        const auto call = dbus::methodCall(m_owner, watcherPath, watcherName, "RegisterStatusNotifierItem",
                                           {m_connection.baseService()});
        ask(call, [this](const QDBusMessage& reply) {
            if (reply.type() == QDBusMessage::ReplyMessage)
                askForHost();
        });
    }

private:
    static constexpr QLatin1String watcherName{"org.kde.StatusNotifierWatcher"};
    static constexpr QLatin1String watcherPath{"/StatusNotifierWatcher"};

    void ownerChanged(const QString& owner) {
        const bool wasThere = !m_owner.isEmpty();
        m_owner = owner;
        m_hostRegistered.reset();
        if (wasThere)
            m_handlers.disappeared();
        if (owner.isEmpty())
            return;
        m_hostRegistered = std::make_unique<DBusSignal>(
            m_connection,
            DBusSignal::Source{owner, watcherPath, watcherName, u"StatusNotifierHostRegistered"_qs, {}},
            [this](const QDBusMessage&) { askForHost(); });
        ask(dbus::busCall("GetConnectionUnixProcessID", {owner}), [this](const QDBusMessage& reply) {
            const uint processId = reply.arguments().value(0).toUInt();
            m_handlers.appeared(processId == 0 ? QString() : processName(processId));
        });
    }
    void askForHost() {
        const auto call =
            dbus::propertyCall(m_owner, watcherPath, watcherName, "IsStatusNotifierHostRegistered");
        ask(call, [this](const QDBusMessage& reply) {
            // A watcher that does not say is taken for a panel.
            const auto hasHost = dbus::propertyIn(reply);
            m_handlers.registered(!hasHost.isValid() || hasHost.toBool());
        });
    }
    void ask(const QDBusMessage& call, std::function<void(const QDBusMessage& reply)> answered) {
        dbus::callLater(m_connection, call, std::chrono::seconds(25), &m_calls,
                        [this, owner = m_owner, answered = std::move(answered)](const QDBusMessage& reply) {
                            // A watcher that has gone meanwhile is not meant any longer.
                            if (owner == m_owner)
                                answered(reply);
                        });
    }

    QDBusConnection m_connection;
    Handlers m_handlers;
    QString m_owner;
    std::unique_ptr<DBusSignal> m_hostRegistered;
    /// Owns what is being asked.
    QObject m_calls;
    DBusNameOwner m_watcher;
};

} // namespace zofra
