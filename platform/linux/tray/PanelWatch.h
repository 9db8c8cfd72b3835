// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/DBusSignal.h"

#include <QDBusConnection>
#include <QString>

#include <functional>
#include <memory>

namespace zofra {

/// Follows the panel that shows status items on one connection: there, gone, started anew. Nothing here waits
/// for the bus. Main thread only.
class PanelWatch final {
public:
    struct Handlers {
        /// A watcher of status items has appeared; `program` is the name of its process, empty when unknown.
        /// Answer by `registerItem`.
        std::function<void(const QString& program)> appeared;
        std::function<void()> disappeared;
        /// The watcher has taken the item, and says whether a panel is there to show it.
        std::function<void(bool hasHost)> registered;
    };

    PanelWatch(const QDBusConnection& connection, Handlers handlers);

    void registerItem();

private:
    void ownerChanged(const QString& owner);
    void askForProgram(const QString& owner);
    void askForHost();

    QDBusConnection m_connection;
    Handlers m_handlers;
    QString m_owner;
    std::unique_ptr<DBusSignal> m_hostRegistered;
    Lifetime m_lifetime;
    DBusNameOwner m_watcher;
};

/// The name of a running process; empty when it cannot be read.
[[nodiscard]] QString processName(uint processId);

} // namespace zofra
