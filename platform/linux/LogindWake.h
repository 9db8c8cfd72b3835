// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observable.h"
#include "platform/WakeNotifier.h"
#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/DBusSignal.h"
#include "platform/linux/SessionBus.h"

#include <memory>

namespace zofra {

/// Wake-ups as the login manager tells them on the system bus. Silent where there is none. Main thread only.
class LogindWake final : public WakeNotifier {
public:
    /// `systemBus` must outlive it.
    explicit LogindWake(SessionBus& systemBus);

    [[nodiscard]] ObservationToken observeDidWake(std::function<void()> handler) override;

private:
    void listenOn(const QDBusConnection& connection);

    ObserverList<> m_observers;
    std::unique_ptr<DBusNameOwner> m_manager;
    std::unique_ptr<DBusSignal> m_prepareForSleep;
    ObservationToken m_connected;
    ObservationToken m_disconnected;
};

} // namespace zofra
