// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayFallback.h"

#include "platform/linux/tray/XEmbedIcon.h"

#include <QDBusMessage>

#include <chrono>
#include <utility>

namespace zofra {

namespace {

constexpr auto patience = std::chrono::seconds(5);
constexpr auto answerLimit = std::chrono::milliseconds(1000);
constexpr int mostSilences = 12;
constexpr int mostLooksForTray = 24;

} // namespace

TrayFallback::TrayFallback(Environment environment)
    : m_environment(std::move(environment)) {}

void TrayFallback::start() {
    m_busAnswer.reset();
    m_waiting = m_environment.mainQueue.startTimer(patience, MainQueue::Repeat::once, [this] { timeIsUp(); });
}

void TrayFallback::stop() {
    m_waiting.reset();
    m_busAnswer.reset();
}

void TrayFallback::timeIsUp() {
    m_waiting.reset();
    // An old tray's icon and the window are both drawn by a toolkit that looks at the bus first, and waits
    // for it. One that hangs may also have a panel on it.
    if (const auto connection = m_environment.bus.connection())
        askBus(*connection);
    else if (m_environment.bus.isConnecting())
        busIsSilent();
    else
        show();
}

void TrayFallback::askBus(const QDBusConnection& connection) {
    const auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
    m_busAnswer = std::make_unique<QDBusPendingCallWatcher>(
        connection.asyncCall(question, static_cast<int>(answerLimit.count())));
    QObject::connect(m_busAnswer.get(), &QDBusPendingCallWatcher::finished, m_busAnswer.get(),
                     [this](const QDBusPendingCallWatcher* answer) {
                         const bool isSilent = answer->isError();
                         m_busAnswer.release()->deleteLater();
                         if (isSilent)
                             busIsSilent();
                         else
                             show();
                     });
}

void TrayFallback::busIsSilent() {
    if (m_silences == mostSilences) {
        show();
        return;
    }
    ++m_silences;
    start();
}

void TrayFallback::show() {
    m_silences = 0;
    const bool mayHaveTray = m_environment.windows == TraySession::Windows::x11;
    if (mayHaveTray && XEmbedIcon::isAvailable()) {
        m_environment.showIcon();
        return;
    }
    // While a person logs in, an old tray may take its time, and none of them announces itself on the bus.
    if (mayHaveTray && m_looksForTray < mostLooksForTray) {
        ++m_looksForTray;
        start();
    }
    m_environment.showWindow();
}

} // namespace zofra
