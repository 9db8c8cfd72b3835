// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusSignal.h"

#include <QDBusConnection>
#include <QString>

#include <functional>

namespace zofra {

/// Follows who owns a well-known name on one connection, without ever waiting for the bus. Main thread only.
class DBusNameOwner final {
public:
    /// The new owner's unique name, empty when there is none.
    using Handler = std::function<void(const QString& owner)>;

    /// Asks for the owner; `handler` is called later with the first owner found and then at each change.
    DBusNameOwner(const QDBusConnection& connection, QString name, Handler handler = {});

    /// The owner's unique name; empty when there is none or it is not yet known.
    [[nodiscard]] QString owner() const { return m_owner; }

private:
    void setOwner(const QString& owner);

    QString m_name;
    Handler m_handler;
    QString m_owner;
    bool m_isKnown = false;
    DBusSignal m_changed;
};

} // namespace zofra
