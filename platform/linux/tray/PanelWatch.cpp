// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/PanelWatch.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFile>

#include <utility>

namespace zofra {

namespace {

const auto watcherName = QLatin1String("org.kde.StatusNotifierWatcher");
const auto watcherPath = QLatin1String("/StatusNotifierWatcher");

/// Sends `call`; `answered` gets the first argument of the answer, invalid on an error.
template<typename Answered>
void ask(const QDBusConnection& connection, const QDBusMessage& call, Answered answered) {
    auto* pending = new QDBusPendingCallWatcher(connection.asyncCall(call));
    QObject::connect(pending, &QDBusPendingCallWatcher::finished, pending,
                     [pending, answered = std::move(answered)]() mutable {
                         pending->deleteLater();
                         const QDBusMessage reply = pending->reply();
                         const bool isAnswer = reply.type() == QDBusMessage::ReplyMessage;
                         answered(isAnswer, reply.arguments().value(0));
                     });
}

} // namespace

QString processName(uint processId) {
    QFile file(QStringLiteral("/proc/%1/comm").arg(processId));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(256)).trimmed() : QString();
}

PanelWatch::PanelWatch(const QDBusConnection& connection, Handlers handlers)
    : m_connection(connection)
    , m_handlers(std::move(handlers))
    , m_watcher(connection, watcherName, [this](const QString& owner) { ownerChanged(owner); }) {}

void PanelWatch::ownerChanged(const QString& owner) {
    const bool wasThere = !m_owner.isEmpty();
    m_owner = owner;
    m_hostRegistered.reset();
    if (wasThere && m_handlers.disappeared)
        m_handlers.disappeared();
    if (owner.isEmpty())
        return;
    m_hostRegistered = std::make_unique<DBusSignal>(
        m_connection,
        DBusSignal::Source{
            owner, watcherPath, watcherName, QStringLiteral("StatusNotifierHostRegistered"), {}},
        [this](const QDBusMessage&) { askForHost(); });
    askForProgram(owner);
}

void PanelWatch::askForProgram(const QString& owner) {
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
    call << owner;
    ask(m_connection, call, m_lifetime.guard([this, owner](bool isAnswer, const QVariant& processId) {
        if (owner == m_owner && m_handlers.appeared)
            m_handlers.appeared(isAnswer ? processName(processId.toUInt()) : QString());
    }));
}

void PanelWatch::registerItem() {
    auto call = QDBusMessage::createMethodCall(m_owner, watcherPath, watcherName,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    // The unique name: with a well-known one a panel may miss the menu.
    call << m_connection.baseService();
    ask(m_connection, call, m_lifetime.guard([this, owner = m_owner](bool isAnswer, const QVariant&) {
        if (isAnswer && owner == m_owner)
            askForHost();
    }));
}

void PanelWatch::askForHost() {
    auto call = QDBusMessage::createMethodCall(
        m_owner, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << QString(watcherName) << QStringLiteral("IsStatusNotifierHostRegistered");
    ask(m_connection, call, m_lifetime.guard([this, owner = m_owner](bool isAnswer, const QVariant& value) {
        if (owner != m_owner || !m_handlers.registered)
            return;
        // A watcher that does not say is taken for a panel.
        const QVariant hasHost = qvariant_cast<QDBusVariant>(value).variant();
        m_handlers.registered(!isAnswer || !hasHost.isValid() || hasHost.toBool());
    }));
}

} // namespace zofra
