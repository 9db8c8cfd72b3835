// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusCalls.h"
#include "platform/linux/SessionBus.h"

#include <QDBusUnixFileDescriptor>
#include <QObject>

#include <memory>
#include <optional>

namespace zofra {

/// Keeps a computer that nobody touches from going to sleep, by the login manager's inhibitor, which ends
/// with the descriptor that it gives. Without a login manager nothing is kept. Main thread only.
class LogindInhibitor {
public:
    /// `systemBus` outlives it.
    explicit LogindInhibitor(SessionBus& systemBus)
        : m_bus(systemBus) {}

    /// Cheap; may be called often.
    void setInhibited(bool isInhibited) {
        if (isInhibited == (m_wish != nullptr))
            return;
        m_lock.reset();
        m_wish = isInhibited ? std::make_unique<QObject>() : nullptr;
        const auto connection = m_bus.connection();
        if (!isInhibited || !connection)
            return;
        const auto call = dbus::methodCall(
            "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "Inhibit",
            {u"idle"_qs, u"Zofra Zofra"_qs, u"The radio is playing"_qs, u"block"_qs});
        dbus::callLater(*connection, call, std::chrono::seconds(5), m_wish.get(),
                        [this](const QDBusMessage& reply) {
                            // The descriptor is a copy of the message's, closed when the wish ends.
                            if (reply.type() == QDBusMessage::ReplyMessage)
                                m_lock = qvariant_cast<QDBusUnixFileDescriptor>(reply.arguments().value(0));
                        });
    }

private:
    SessionBus& m_bus;
    /// There while it is wanted; ends what was asked for when it ends.
    std::unique_ptr<QObject> m_wish;
    std::optional<QDBusUnixFileDescriptor> m_lock;
};

} // namespace zofra
