// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DBusNameOwner.h"

#include "platform/linux/DBusCalls.h"

#include <QDBusMessage>

#include <utility>

namespace zofra {
namespace {

const auto busName = QStringLiteral("org.freedesktop.DBus");
const auto busPath = QStringLiteral("/org/freedesktop/DBus");

} // namespace

DBusNameOwner::DBusNameOwner(const QDBusConnection& connection, QString name, Handler handler)
    : m_name(std::move(name))
    , m_handler(std::move(handler))
    , m_changed(connection, {busName, busPath, busName, QStringLiteral("NameOwnerChanged"), m_name},
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

void DBusNameOwner::setOwner(const QString& owner) {
    m_isKnown = true;
    if (owner == m_owner)
        return;
    m_owner = owner;
    // The handler may end this object.
    const auto handler = m_handler;
    if (handler)
        handler(owner);
}

} // namespace zofra
