// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/tray/TrayMode.h"

#include <QDBusPendingCallWatcher>

#include <functional>
#include <memory>

namespace zofra {

/// Decides how the program is seen where no panel takes its item for five seconds: by an icon in an old tray
/// if there is one, else by a window. Main thread only; nothing here waits for the bus.
class TrayFallback final {
public:
    struct Environment {
        SessionBus& bus;
        MainQueue& mainQueue;
        TraySession::Windows windows;
        std::function<void()> showIcon;
        /// May be called again while an old tray that is late is looked for.
        std::function<void()> showWindow;
    };
    explicit TrayFallback(Environment environment);
    TrayFallback(const TrayFallback&) = delete;
    TrayFallback& operator=(const TrayFallback&) = delete;

    /// Begins to wait for a panel, from now on.
    void start();
    /// A panel has taken the item.
    void stop();

private:
    void timeIsUp();
    void askBus(const QDBusConnection& connection);
    void busIsSilent();
    void show();

    Environment m_environment;
    std::unique_ptr<Timer> m_waiting;
    std::unique_ptr<QDBusPendingCallWatcher> m_busAnswer;
    /// How often the bus was asked in vain.
    int m_silences = 0;
    /// How often a tray of the old kind was looked for since there was none.
    int m_looksForTray = 0;
};

} // namespace zofra
