// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/tray/TrayMode.h"

#include <functional>
#include <memory>
#include <utility>

namespace zofra {

/// Decides how the program is seen where no panel takes its item: by an icon in an old tray, at once where
/// nobody watches over items; else, after a while, by a window. Main thread only; never waits for the bus.
class TrayFallback final {
public:
    struct Environment {
        SessionBus& bus;
        MainQueue& mainQueue;
        TraySession::Windows windows;
        /// Whether somebody watches over status items, who may yet take ours.
        std::function<bool()> hasWatcher;
        std::function<void()> showIcon;
        /// May be called again while an old tray that is late is looked for.
        std::function<void()> showWindow;
    };
    explicit TrayFallback(Environment environment)
        : m_environment(std::move(environment)) {}
    TrayFallback(const TrayFallback&) = delete;
    TrayFallback& operator=(const TrayFallback&) = delete;

    /// How long a panel is waited for.
    enum class Patience { first, afterPanel };
    /// Begins to wait for a panel, from now on.
    void start(Patience patience = Patience::first);
    /// A panel has taken the item.
    void stop();

private:
    void wait();
    void ask(std::function<void()> answered);
    [[nodiscard]] bool showIcon();
    void show();

    Environment m_environment;
    std::unique_ptr<Timer> m_waiting;
    /// What the bus is being asked; without it an answer comes too late.
    std::unique_ptr<Lifetime> m_question;
    /// How often to wait once more before there is a window.
    int m_waitsLeft = 0;
    /// How often the bus was asked in vain.
    int m_silences = 0;
    /// How often a tray of the old kind was looked for since there was none.
    int m_looksForTray = 0;
};

} // namespace zofra
