// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DesktopNotifications.h"

#include "platform/linux/DBusCalls.h"

namespace zofra {

namespace {

constexpr auto patience = std::chrono::seconds(5);
constexpr int serversOwnTime = -1;
constexpr quint8 lowUrgency = 0;

} // namespace

void DesktopNotifications::show(const QString& title, const QString& text) {
    const auto connection = m_bus.connection();
    if (!connection)
        return;
    const auto id = QStringLiteral("be.zofra.ZofraZofra");
    const QVariantMap hints{{QStringLiteral("desktop-entry"), id},
                            {QStringLiteral("urgency"), QVariant::fromValue(lowUrgency)},
                            {QStringLiteral("transient"), true}};
    // Many servers read markup in the text, none in the title.
    const auto call = dbus::methodCall("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                       "org.freedesktop.Notifications", "Notify",
                                       {QStringLiteral("Zofra Zofra"), m_shown, id, title,
                                        text.toHtmlEscaped(), QStringList(), hints, serversOwnTime});
    dbus::callLater(*connection, call, patience, &m_context, [this](const QDBusMessage& reply) {
        m_shown = reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0).toUInt() : 0;
    });
}

} // namespace zofra
