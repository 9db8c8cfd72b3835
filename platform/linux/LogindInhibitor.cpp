// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/LogindInhibitor.h"

#include "platform/linux/DBusCalls.h"

namespace zofra {

namespace {

constexpr auto patience = std::chrono::seconds(5);

} // namespace

void LogindInhibitor::setInhibited(bool isInhibited) {
    if (isInhibited == (m_wish != nullptr))
        return;
    m_lock.reset();
    m_wish = isInhibited ? std::make_unique<QObject>() : nullptr;
    const auto connection = m_bus.connection();
    if (!isInhibited || !connection)
        return;
    const auto call = dbus::methodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                       "org.freedesktop.login1.Manager", "Inhibit",
                                       {QStringLiteral("idle"), QStringLiteral("Zofra Zofra"),
                                        QStringLiteral("The radio is playing"), QStringLiteral("block")});
    dbus::callLater(*connection, call, patience, m_wish.get(), [this](const QDBusMessage& reply) {
        // The descriptor is a copy of the message's, closed when the wish ends.
        if (reply.type() == QDBusMessage::ReplyMessage)
            m_lock = qvariant_cast<QDBusUnixFileDescriptor>(reply.arguments().value(0));
    });
}

} // namespace zofra
