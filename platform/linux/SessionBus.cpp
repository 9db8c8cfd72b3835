// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SessionBus.h"

#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusSignal.h"
#include "platform/linux/DetachedThread.h"

#include <QFileInfo>

#include <atomic>
#include <semaphore>
#include <utility>

namespace zofra {
namespace {

using namespace std::chrono_literals;
constexpr auto retryInterval = 3s;
constexpr auto lookInterval = 20ms;

/// Where the bus is, empty when nowhere. Deliberately never starts one: a bus that only this program is on
/// helps nobody and would be left behind.
QString busAddress(SessionBus::Kind kind) {
    if (kind == SessionBus::Kind::system) {
        auto set = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
        return set.isEmpty() ? u"unix:path=/run/dbus/system_bus_socket"_qs : set;
    }
    auto set = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!set.isEmpty())
        return set;
    const auto folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const auto path = folder + u"/bus"_qs;
    return !folder.isEmpty() && QFileInfo::exists(path) ? u"unix:path="_qs + path : QString();
}

/// Names inside the library; a name can only be used again once everything that holds its connection is gone.
QString freshName() {
    static std::atomic<int> next = 0;
    return u"zofra-bus-"_qs + QString::number(++next);
}

} // namespace

/// One try at connecting, shared with the thread that makes it.
struct SessionBus::Attempt {
    enum class State { running, connected, failed, abandoned };
    const QString name = freshName();
    std::atomic<State> state = State::running;
    /// Released when `state` is no longer running.
    std::binary_semaphore finished{0};
};

SessionBus::SessionBus(Kind kind, MainQueue& mainQueue, std::chrono::milliseconds patience)
    : m_kind(kind)
    , m_mainQueue(mainQueue) {
    connectNow();
    if (m_attempt && m_attempt->finished.try_acquire_for(patience))
        lookAtAttempt();
}

SessionBus::~SessionBus() {
    m_lost.reset();
    // A connection that is still being made is closed by whoever finishes last.
    if (m_attempt && m_attempt->state.exchange(Attempt::State::abandoned) == Attempt::State::connected)
        QDBusConnection::disconnectFromBus(m_attempt->name);
    if (m_connected)
        QDBusConnection::disconnectFromBus(m_name);
}

std::optional<QDBusConnection> SessionBus::connection() const {
    if (!m_connected)
        return std::nullopt;
    return QDBusConnection(m_name);
}

void SessionBus::askHealth(std::chrono::milliseconds limit, std::function<void(Health)> told) {
    if (!m_connected) {
        // One that is being connected to may never answer.
        told(m_attempt ? Health::silent : Health::absent);
        return;
    }
    dbus::callLater(QDBusConnection(m_name), dbus::busCall("GetId"), limit, this,
                    [told = std::move(told)](const QDBusMessage& reply) {
                        told(reply.type() == QDBusMessage::ReplyMessage ? Health::answers : Health::silent);
                    });
}

ObservationToken SessionBus::observeConnected(std::function<void(QDBusConnection)> handler) {
    if (m_connected)
        handler(QDBusConnection(m_name));
    return m_connectedObservers.add(std::move(handler));
}

void SessionBus::connectNow() {
    const auto address = busAddress(m_kind);
    if (address.isEmpty()) {
        scheduleRetry();
        return;
    }
    // Greeting a bus that accepts but never answers takes long, so it is done aside; this thread only looks
    // in.
    m_attempt = std::make_shared<Attempt>();
    const bool isStarted = startDetachedThread([address, attempt = m_attempt] {
        const bool isConnected = QDBusConnection::connectToBus(address, attempt->name).isConnected();
        const auto outcome = isConnected ? Attempt::State::connected : Attempt::State::failed;
        if (attempt->state.exchange(outcome) == Attempt::State::abandoned)
            QDBusConnection::disconnectFromBus(attempt->name);
        attempt->finished.release();
    });
    if (!isStarted) {
        m_attempt.reset();
        scheduleRetry();
        return;
    }
    m_retry = m_mainQueue.startTimer(lookInterval, MainQueue::Repeat::forever, [this] { lookAtAttempt(); });
}

void SessionBus::lookAtAttempt() {
    const auto state = m_attempt->state.load();
    if (state == Attempt::State::running)
        return;
    const auto name = m_attempt->name;
    m_attempt.reset();
    m_retry.reset();
    if (state == Attempt::State::connected) {
        connected(name);
    } else {
        QDBusConnection::disconnectFromBus(name);
        scheduleRetry();
    }
}

void SessionBus::connected(const QString& name) {
    m_name = name;
    m_connected = true;
    const QDBusConnection connection(name);
    m_lost = std::make_unique<DBusSignal>(connection, DBusSignal::disconnected(),
                                          [this](const QDBusMessage&) { disconnected(); });
    // It may have gone before anybody listened.
    if (!connection.isConnected()) {
        disconnected();
        return;
    }
    m_connectedObservers.notify(connection);
}

void SessionBus::disconnected() {
    if (!m_connected)
        return;
    m_connected = false;
    m_lost.reset();
    m_disconnectedObservers.notify();
    QDBusConnection::disconnectFromBus(m_name);
    scheduleRetry();
}

void SessionBus::scheduleRetry() {
    m_retry = m_mainQueue.startTimer(retryInterval, MainQueue::Repeat::once, [this] { connectNow(); });
}

} // namespace zofra
