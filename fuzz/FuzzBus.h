// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fuzz/FuzzBytes.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/SessionBus.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QList>

#include <chrono>
#include <memory>
#include <vector>

namespace zofra::fuzz {

/// A message bus with this program on it and a stranger, for the whole run: what is sent is what a handler
/// gets from the wire.
class Bus {
public:
    static Bus& instance() {
        static Bus bus;
        return bus;
    }

    /// The program's.
    [[nodiscard]] SessionBus& session() { return m_session; }
    [[nodiscard]] QDBusConnection own() const { return *m_session.connection(); }
    [[nodiscard]] QDBusConnection& stranger() { return m_stranger.connection(); }

    /// What the stranger is answered, in the calls' order. Every call is answered.
    [[nodiscard]] QList<QDBusMessage> answers(const QList<QDBusMessage>& calls) {
        std::vector<std::unique_ptr<QDBusPendingCallWatcher>> watchers;
        for (const auto& call : calls) {
            watchers.push_back(std::make_unique<QDBusPendingCallWatcher>(
                stranger().asyncCall(call, static_cast<int>(patience.count()))));
        }
        QList<QDBusMessage> answers;
        for (const auto& watcher : watchers) {
            require(test::spinUntil([&] { return watcher->isFinished(); }, patience));
            answers << watcher->reply();
        }
        return answers;
    }
    /// Returns once everything that the stranger has sent so far has been looked at.
    void settle() {
        const auto ping = QDBusMessage::createMethodCall(own().baseService(), QStringLiteral("/"),
                                                         QStringLiteral("org.freedesktop.DBus.Peer"),
                                                         QStringLiteral("Ping"));
        require(answers({ping})[0].type() == QDBusMessage::ReplyMessage);
        QCoreApplication::processEvents();
    }

private:
    Bus()
        : m_session(SessionBus::Kind::session, m_queue, patience)
        , m_stranger(m_daemon, QStringLiteral("stranger")) {
        require(m_session.connection().has_value() && stranger().isConnected());
    }

    static constexpr std::chrono::milliseconds patience{30000};
    test::TestApplication m_application;
    QtMainQueue m_queue;
    test::PrivateBus m_daemon;
    SessionBus m_session;
    test::PrivateBus::Peer m_stranger;
};

} // namespace zofra::fuzz
