// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observable.h"
#include "platform/WakeNotifier.h"
#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/DBusSignal.h"
#include "platform/linux/SessionBus.h"

#include <functional>
#include <memory>
#include <utility>

namespace zofra {

/// Wake-ups as the login manager tells them on the system bus. Silent where there is none. Main thread only.
class LogindWake final : public WakeNotifier {
public:
    /// `systemBus` must outlive it.
    explicit LogindWake(SessionBus& systemBus) {
        m_connected =
            systemBus.observeConnected([this](const QDBusConnection& connection) { listenOn(connection); });
        m_disconnected = systemBus.observeDisconnected([this] {
            m_prepareForSleep.reset();
            m_manager.reset();
        });
    }

    [[nodiscard]] ObservationToken observeDidWake(std::function<void()> handler) override {
        return m_observers.add(std::move(handler));
    }

private:
    void listenOn(const QDBusConnection& connection) {
        m_manager = std::make_unique<DBusNameOwner>(connection, u"org.freedesktop.login1"_qs);
        m_prepareForSleep =
            std::make_unique<DBusSignal>(connection,
                                         DBusSignal::Source{.path = u"/org/freedesktop/login1"_qs,
                                                            .interface = u"org.freedesktop.login1.Manager"_qs,
                                                            .member = u"PrepareForSleep"_qs},
                                         [this](const QDBusMessage& message) { heard(message); });
    }
    void heard(const QDBusMessage& message) {
        // Anybody on the system bus may send a signal; only the login manager is believed.
        const auto arguments = message.arguments();
        const bool isTrusted = !message.service().isEmpty() && message.service() == m_manager->owner();
        const bool isWake =
            arguments.size() == 1 && arguments[0].typeId() == QMetaType::Bool && !arguments[0].toBool();
        if (isTrusted && isWake)
            m_observers.notify();
    }

    ObserverList<> m_observers;
    std::unique_ptr<DBusNameOwner> m_manager;
    std::unique_ptr<DBusSignal> m_prepareForSleep;
    ObservationToken m_connected;
    ObservationToken m_disconnected;
};

} // namespace zofra
