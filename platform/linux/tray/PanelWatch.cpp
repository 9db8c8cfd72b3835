// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/PanelWatch.h"

#include "platform/linux/DBusCalls.h"

#include <QFile>

#include <chrono>
#include <utility>

namespace zofra {

namespace {

const auto watcherName = QLatin1String("org.kde.StatusNotifierWatcher");
const auto watcherPath = QLatin1String("/StatusNotifierWatcher");
constexpr auto answerLimit = std::chrono::seconds(25);

} // namespace

QString processName(uint processId) {
    QFile file(u"/proc/%1/comm"_qs.arg(processId));
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
    if (wasThere)
        m_handlers.disappeared();
    if (owner.isEmpty())
        return;
    m_hostRegistered = std::make_unique<DBusSignal>(
        m_connection,
        DBusSignal::Source{owner, watcherPath, watcherName, u"StatusNotifierHostRegistered"_qs, {}},
        [this](const QDBusMessage&) { askForHost(); });
    ask(dbus::busCall("GetConnectionUnixProcessID", {owner}), [this](const QDBusMessage& reply) {
        const uint processId = reply.arguments().value(0).toUInt();
        m_handlers.appeared(processId == 0 ? QString() : processName(processId));
    });
}

void PanelWatch::registerItem() {
    // The unique name: with a well-known one a panel may miss the menu.
    const auto call = dbus::methodCall(m_owner, watcherPath, watcherName, "RegisterStatusNotifierItem",
                                       {m_connection.baseService()});
    ask(call, [this](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ReplyMessage)
            askForHost();
    });
}

void PanelWatch::askForHost() {
    const auto call = dbus::propertyCall(m_owner, watcherPath, watcherName, "IsStatusNotifierHostRegistered");
    ask(call, [this](const QDBusMessage& reply) {
        // A watcher that does not say is taken for a panel.
        const auto hasHost = dbus::propertyIn(reply);
        m_handlers.registered(!hasHost.isValid() || hasHost.toBool());
    });
}

void PanelWatch::ask(const QDBusMessage& call, std::function<void(const QDBusMessage& reply)> answered) {
    dbus::callLater(m_connection, call, answerLimit, &m_calls,
                    [this, owner = m_owner, answered = std::move(answered)](const QDBusMessage& reply) {
                        // A watcher that has gone meanwhile is not meant any longer.
                        if (owner == m_owner)
                            answered(reply);
                    });
}

} // namespace zofra
