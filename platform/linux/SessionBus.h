// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/Observable.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace zofra {

class DBusSignal;

/// A connection to a message bus that comes back: when the bus is missing or goes away it is looked for again
/// every few seconds, and whoever observes it registers anew. Main thread only.
class SessionBus final : public QObject {
public:
    enum class Kind { session, system };
    /// Waits at most `patience` for the first connection; a bus that answers later is used when it does.
    SessionBus(Kind kind, MainQueue& mainQueue, std::chrono::milliseconds patience = std::chrono::seconds(2));
    ~SessionBus() override;

    /// Absent while there is no bus.
    [[nodiscard]] std::optional<QDBusConnection> connection() const;
    enum class Health { absent, silent, answers };
    /// Finds out whether the bus answers: once all that was sent before is out, within `limit`. `told` is
    /// called once, in place where there is nothing to ask.
    void askHealth(std::chrono::milliseconds limit, std::function<void(Health)> told);

    /// Calls `handler` with each new connection until the token ends; at once, in place, when there is one
    /// now.
    [[nodiscard]] ObservationToken observeConnected(std::function<void(QDBusConnection)> handler);
    /// Calls `handler` each time the bus has gone away.
    [[nodiscard]] ObservationToken observeDisconnected(std::function<void()> handler) {
        return m_disconnectedObservers.add(std::move(handler));
    }

private:
    struct Attempt;
    void connectNow();
    void lookAtAttempt();
    void connected(const QString& name);
    void disconnected();
    void scheduleRetry();

    Kind m_kind;
    MainQueue& m_mainQueue;
    QString m_name;
    bool m_connected = false;
    std::unique_ptr<DBusSignal> m_lost;
    std::shared_ptr<Attempt> m_attempt;
    std::unique_ptr<Timer> m_retry;
    ObserverList<QDBusConnection> m_connectedObservers;
    ObserverList<> m_disconnectedObservers;
};

} // namespace zofra
