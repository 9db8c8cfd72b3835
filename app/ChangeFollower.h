// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/StatusReport.h"
#include "app/Terminal.h"
#include "platform/JsonRecord.h"
#include "platform/linux/ApplicationBus.h"
#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/DBusSignal.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QJsonDocument>
#include <QObject>
#include <QString>

namespace zofra {

/// `--follow`: prints a line whenever what a status bar shows of the running program changes, and goes on
/// when that ends and starts again. Main thread, with an application object and no running event loop.
class ChangeFollower {
public:
    enum class Form { text, json };

    ChangeFollower(const QDBusConnection& bus, Form form)
        : m_bus(bus)
        , m_form(form)
        , m_owner(bus, ApplicationBus::name, [this](const QString& owner) { ownerChanged(owner); })
        , m_changed(bus,
                    {.path = ApplicationBus::path,
                     .interface = u"org.freedesktop.DBus.Properties"_qs,
                     .member = u"PropertiesChanged"_qs,
                     .argument = ApplicationBus::ownInterfaceName},
                    [this](const QDBusMessage& message) {
                        const auto values = qdbus_cast<QVariantMap>(message.arguments().value(1));
                        const QString line = values.value(ApplicationBus::barLineName).toString();
                        // Anybody may send such a signal.
                        if (message.service() == m_owner.owner() && !line.isEmpty())
                            show(line);
                    })
        , m_ended(bus, DBusSignal::disconnected(),
                  [](const QDBusMessage&) { QCoreApplication::exit(failed); }) {}

    /// Until nobody reads any more, or the bus is gone. Answers the exit status.
    [[nodiscard]] int run() {
        if (!m_bus.interface()->isServiceRegistered(ApplicationBus::name))
            show(compactJson(emptyBarLine()));
        return QCoreApplication::exec();
    }

private:
    void ownerChanged(const QString& owner) {
        if (owner.isEmpty()) {
            show(compactJson(emptyBarLine()));
            return;
        }
        const auto call = dbus::propertyCall(owner, ApplicationBus::path, ApplicationBus::ownInterfaceName,
                                             ApplicationBus::barLineName);
        dbus::callLater(m_bus, call, std::chrono::seconds(5), &m_context, [this](const QDBusMessage& reply) {
            const QString value = dbus::propertyIn(reply).toString();
            if (!value.isEmpty())
                show(value);
        });
    }
    void show(const QString& json) {
        const QString line =
            m_form == Form::json ? json : plainBarLine(QJsonDocument::fromJson(json.toUtf8()).object());
        if (line == m_line && !m_line.isNull())
            return;
        m_line = line.isNull() ? u""_qs : line;
        if (print(m_line) != fine)
            QCoreApplication::exit(fine);
    }

    QDBusConnection m_bus;
    Form m_form;
    /// What was printed last.
    QString m_line;
    /// Ends what was asked for when it ends.
    QObject m_context;
    DBusNameOwner m_owner;
    DBusSignal m_changed;
    DBusSignal m_ended;
};

} // namespace zofra
