// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/DBusSignal.h"

#include <functional>
#include <memory>

namespace zofra {

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

    PanelWatch(const QDBusConnection& connection, Handlers handlers);

    /// Whether there is a watcher of status items, so far as the bus has said.
    [[nodiscard]] bool hasWatcher() const { return !m_owner.isEmpty(); }
    void registerItem();

private:
    void ownerChanged(const QString& owner);
    void askForHost();
    void ask(const QDBusMessage& call, std::function<void(const QDBusMessage& reply)> answered);

    QDBusConnection m_connection;
    Handlers m_handlers;
    QString m_owner;
    std::unique_ptr<DBusSignal> m_hostRegistered;
    /// Owns what is being asked.
    QObject m_calls;
    DBusNameOwner m_watcher;
};

/// The name of a running process; empty when it cannot be read.
[[nodiscard]] QString processName(uint processId);

} // namespace zofra
