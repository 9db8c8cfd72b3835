// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Notifications.h"
#include "platform/linux/DBusCalls.h"
#include "platform/linux/SessionBus.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace zofra {

/// Messages through the session's notification server (org.freedesktop.Notifications). Nothing waits for it.
class DesktopNotifications final : public Notifications {
public:
    /// `sessionBus` outlives it.
    explicit DesktopNotifications(SessionBus& sessionBus)
        : m_bus(sessionBus) {}

    void show(const QString& title, const QString& text) override {
        const auto connection = m_bus.connection();
        if (!connection)
            return;
        constexpr int serversOwnTime = -1;
        constexpr quint8 lowUrgency = 0;
        const auto id = u"be.zofra.ZofraZofra"_qs;
        const QVariantMap hints{{u"desktop-entry"_qs, id},
                                {u"urgency"_qs, QVariant::fromValue(lowUrgency)},
                                {u"transient"_qs, true}};
        // Many servers read markup in the text, none in the title.
        const auto call = dbus::methodCall("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                           "org.freedesktop.Notifications", "Notify",
                                           {u"Zofra Zofra"_qs, m_shown, id, title, text.toHtmlEscaped(),
                                            QStringList(), hints, serversOwnTime});
        dbus::callLater(*connection, call, std::chrono::seconds(5), &m_context,
                        [this](const QDBusMessage& reply) {
                            const bool isShown = reply.type() == QDBusMessage::ReplyMessage;
                            m_shown = isShown ? reply.arguments().value(0).toUInt() : 0;
                        });
    }

private:
    SessionBus& m_bus;
    /// The message that is shown, as the server calls it; 0 is none.
    quint32 m_shown = 0;
    /// Ends what was asked for when it ends.
    QObject m_context;
};

} // namespace zofra
