// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/LogindWake.h"

#include <utility>

namespace zofra {
namespace {

const auto managerName = QStringLiteral("org.freedesktop.login1");

} // namespace

LogindWake::LogindWake(SessionBus& systemBus) {
    m_connected =
        systemBus.observeConnected([this](const QDBusConnection& connection) { listenOn(connection); });
    m_disconnected = systemBus.observeDisconnected([this] {
        m_prepareForSleep.reset();
        m_manager.reset();
    });
}

ObservationToken LogindWake::observeDidWake(std::function<void()> handler) {
    return m_observers.add(std::move(handler));
}

void LogindWake::listenOn(const QDBusConnection& connection) {
    m_manager = std::make_unique<DBusNameOwner>(connection, managerName);
    m_prepareForSleep = std::make_unique<DBusSignal>(
        connection,
        DBusSignal::Source{{},
                           QStringLiteral("/org/freedesktop/login1"),
                           QStringLiteral("org.freedesktop.login1.Manager"),
                           QStringLiteral("PrepareForSleep"),
                           {}},
        [this](const QDBusMessage& message) {
            // Anybody on the system bus may send a signal; only the login manager is believed.
            const auto arguments = message.arguments();
            const bool isTrusted = !message.service().isEmpty() && message.service() == m_manager->owner();
            const bool isWake =
                arguments.size() == 1 && arguments[0].typeId() == QMetaType::Bool && !arguments[0].toBool();
            if (isTrusted && isWake)
                m_observers.notify();
        });
}

} // namespace zofra
