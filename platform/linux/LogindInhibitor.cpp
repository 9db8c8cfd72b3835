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
    m_wish.reset();
    if (isInhibited) {
        m_wish = std::make_unique<QObject>();
        ask();
    }
}

void LogindInhibitor::ask() {
    const auto connection = m_bus.connection();
    if (!connection)
        return;
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call.setArguments({QStringLiteral("idle"), QStringLiteral("Zofra Zofra"),
                       QStringLiteral("The radio is playing"), QStringLiteral("block")});
    dbus::callLater(*connection, call, patience, m_wish.get(), [this](const QDBusMessage& reply) {
        // The descriptor is a copy of the message's, closed when the wish ends.
        if (reply.type() == QDBusMessage::ReplyMessage)
            m_lock = qvariant_cast<QDBusUnixFileDescriptor>(reply.arguments().value(0));
    });
}

} // namespace zofra
