// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/tray/TrayMode.h"
#include "platform/linux/tray/XEmbedIcon.h"

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
    void start(Patience kind = Patience::first) {
        m_waitsLeft = kind == Patience::first ? 0 : waitsAfterPanel;
        wait();
        // When the bus answers this, it has said before whether somebody watches over items.
        if (kind == Patience::first && m_environment.windows == TraySession::Windows::x11)
            ask([this] {
                if (!m_environment.hasWatcher() && showIcon())
                    m_waiting.reset();
            });
    }
    /// A panel has taken the item.
    void stop() {
        m_waiting.reset();
        m_question.reset();
    }

private:
    static constexpr std::chrono::seconds patience{5};
    /// A panel that was there is being started anew, mostly: half a minute before a window is tried.
    static constexpr int waitsAfterPanel = 5;
    static constexpr std::chrono::seconds answerLimit{1};
    static constexpr int mostSilences = 12;
    static constexpr int mostLooksForTray = 24;

    void wait() {
        m_question.reset();
        m_waiting = m_environment.mainQueue.startTimer(patience, MainQueue::Repeat::once, [this] {
            m_waiting.reset();
            ask([this] { show(); });
        });
    }
    void ask(std::function<void()> answered) {
        m_question = std::make_unique<Lifetime>();
        // Icon and window are drawn by a toolkit that looks at the bus first and waits for it.
        const auto told = [this, answered = std::move(answered)](SessionBus::Health health) {
            if (health != SessionBus::Health::silent || m_silences == mostSilences) {
                answered();
            } else if (!m_waiting) {
                ++m_silences;
                wait();
            }
        };
        m_environment.bus.askHealth(answerLimit, m_question->guard(told));
    }
    [[nodiscard]] bool showIcon() {
        if (m_environment.windows != TraySession::Windows::x11 || !XEmbedIcon::isAvailable())
            return false;
        m_environment.showIcon();
        return true;
    }
    void show() {
        m_silences = 0;
        if (showIcon())
            return;
        if (m_waitsLeft > 0) {
            --m_waitsLeft;
            return wait();
        }
        // While a person logs in, an old tray may take its time, and none of them announces itself on the
        // bus.
        if (m_environment.windows == TraySession::Windows::x11 && m_looksForTray < mostLooksForTray) {
            ++m_looksForTray;
            wait();
        }
        m_environment.showWindow();
    }

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
