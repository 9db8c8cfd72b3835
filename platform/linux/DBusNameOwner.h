// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

#include <functional>
#include <utility>

namespace zofra {

/// Follows who owns a well-known name on one connection, without ever waiting for the bus. Main thread only.
class DBusNameOwner final {
public:
    /// The new owner's unique name, empty when there is none.
    using Handler = std::function<void(const QString& owner)>;

    /// Asks for the owner; `handler` is called later with the first owner found and then at each change.
    DBusNameOwner(const QDBusConnection& connection, QString name, Handler handler = {})
        : m_name(std::move(name))
        , m_handler(std::move(handler))
        , m_changed(connection,
                    {u"org.freedesktop.DBus"_qs, u"/org/freedesktop/DBus"_qs, u"org.freedesktop.DBus"_qs,
                     u"NameOwnerChanged"_qs, m_name},
                    [this](const QDBusMessage& message) {
                        const auto arguments = message.arguments();
                        if (arguments.size() == 3 && arguments[0].toString() == m_name)
                            setOwner(arguments[2].toString());
                    }) {
        dbus::callLater(connection, dbus::busCall("GetNameOwner", {m_name}), dbus::withoutLimit, &m_changed,
                        [this](const QDBusMessage& reply) {
                            // A change that was told meanwhile is newer than this answer.
                            if (!m_isKnown && reply.type() == QDBusMessage::ReplyMessage)
                                setOwner(reply.arguments().value(0).toString());
                        });
    }

    /// The owner's unique name; empty when there is none or it is not yet known.
    [[nodiscard]] QString owner() const { return m_owner; }

private:
    void setOwner(const QString& owner) {
        m_isKnown = true;
        if (owner == std::exchange(m_owner, owner))
            return;
        // The handler may end this object.
        const auto handler = m_handler;
        if (handler)
            handler(owner);
    }

    QString m_name;
    Handler m_handler;
    QString m_owner;
    bool m_isKnown = false;
    DBusSignal m_changed;
};

} // namespace zofra
