// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayFallback.h"

#include "platform/linux/tray/XEmbedIcon.h"

#include <utility>

namespace zofra {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 5s;
/// A panel that was there is being started anew, mostly: half a minute before a window is tried.
constexpr int waitsAfterPanel = 5;
constexpr auto answerLimit = 1s;
constexpr int mostSilences = 12;
constexpr int mostLooksForTray = 24;

} // namespace

void TrayFallback::start(Patience kind) {
    m_waitsLeft = kind == Patience::first ? 0 : waitsAfterPanel;
    wait();
    // When the bus answers this, it has said before whether somebody watches over items.
    if (kind == Patience::first && m_environment.windows == TraySession::Windows::x11)
        ask([this] {
            if (!m_environment.hasWatcher() && showIcon())
                m_waiting.reset();
        });
}

void TrayFallback::stop() {
    m_waiting.reset();
    m_question.reset();
}

void TrayFallback::wait() {
    m_question.reset();
    m_waiting = m_environment.mainQueue.startTimer(patience, MainQueue::Repeat::once, [this] {
        m_waiting.reset();
        ask([this] { show(); });
    });
}

void TrayFallback::ask(std::function<void()> answered) {
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

bool TrayFallback::showIcon() {
    if (m_environment.windows != TraySession::Windows::x11 || !XEmbedIcon::isAvailable())
        return false;
    m_environment.showIcon();
    return true;
}

void TrayFallback::show() {
    m_silences = 0;
    if (showIcon())
        return;
    if (m_waitsLeft > 0) {
        --m_waitsLeft;
        wait();
        return;
    }
    // While a person logs in, an old tray may take its time, and none of them announces itself on the bus.
    if (m_environment.windows == TraySession::Windows::x11 && m_looksForTray < mostLooksForTray) {
        ++m_looksForTray;
        wait();
    }
    m_environment.showWindow();
}

} // namespace zofra
