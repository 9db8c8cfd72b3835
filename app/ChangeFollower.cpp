// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ChangeFollower.h"

#include "app/StatusReport.h"
#include "app/Terminal.h"
#include "platform/JsonRecord.h"
#include "platform/linux/ApplicationBus.h"
#include "platform/linux/DBusCalls.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusVariant>
#include <QJsonDocument>

namespace zofra {

namespace {

constexpr auto patience = std::chrono::seconds(5);

const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

DBusSignal::Source changes() {
    return {{},
            ApplicationBus::path,
            propertiesInterface,
            QStringLiteral("PropertiesChanged"),
            ApplicationBus::ownInterfaceName};
}

} // namespace

ChangeFollower::ChangeFollower(const QDBusConnection& bus, Form form)
    : m_bus(bus)
    , m_form(form)
    , m_owner(bus, ApplicationBus::name, [this](const QString& owner) { ownerChanged(owner); })
    , m_changed(bus, changes(),
                [this](const QDBusMessage& message) {
                    const auto values = qdbus_cast<QVariantMap>(message.arguments().value(1));
                    const QString line = values.value(ApplicationBus::barLineName).toString();
                    // Anybody may send such a signal.
                    if (message.service() == m_owner.owner() && !line.isEmpty())
                        show(line);
                })
    , m_ended(bus,
              {{},
               QStringLiteral("/org/freedesktop/DBus/Local"),
               QStringLiteral("org.freedesktop.DBus.Local"),
               QStringLiteral("Disconnected"),
               {}},
              [](const QDBusMessage&) { QCoreApplication::exit(failed); }) {}

int ChangeFollower::run() {
    if (!m_bus.interface()->isServiceRegistered(ApplicationBus::name))
        show(compactJson(emptyBarLine()));
    return QCoreApplication::exec();
}

void ChangeFollower::ownerChanged(const QString& owner) {
    if (owner.isEmpty()) {
        show(compactJson(emptyBarLine()));
        return;
    }
    auto call = QDBusMessage::createMethodCall(owner, ApplicationBus::path, propertiesInterface,
                                               QStringLiteral("Get"));
    call.setArguments({ApplicationBus::ownInterfaceName, ApplicationBus::barLineName});
    dbus::callLater(m_bus, call, patience, &m_context, [this](const QDBusMessage& reply) {
        const auto value = qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant().toString();
        if (reply.type() == QDBusMessage::ReplyMessage && !value.isEmpty())
            show(value);
    });
}

void ChangeFollower::show(const QString& json) {
    const QString line =
        m_form == Form::json ? json : plainBarLine(QJsonDocument::fromJson(json.toUtf8()).object());
    if (line == m_line && !m_line.isNull())
        return;
    m_line = line.isNull() ? QStringLiteral("") : line;
    if (print(m_line) != fine)
        QCoreApplication::exit(fine);
}

} // namespace zofra
