// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ApplicationBus.h"

#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusExportedObject.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>

#include <utility>

namespace zofra {
namespace {

using dbus::Answer;

const auto busName = QStringLiteral("be.zofra.ZofraZofra");
const auto objectPath = QStringLiteral("/be/zofra/ZofraZofra");
const auto standardInterface = QStringLiteral("org.freedesktop.Application");
const auto programInterface = QStringLiteral("be.zofra.ZofraZofra1");
const auto startupIdKey = QStringLiteral("desktop-startup-id");
const auto tokenKey = QStringLiteral("activation-token");

Answer notOffered() {
    return {{},
            dbus::Error{QStringLiteral("org.freedesktop.DBus.Error.NotSupported"),
                        QStringLiteral("The program does not offer this now")},
            {}};
}

/// A map as it comes from the bus, its values without their wrappers.
QVariantMap mapFrom(const QVariant& value) {
    auto map = value.metaType() == QMetaType::fromType<QDBusArgument>() ? qdbus_cast<QVariantMap>(value)
                                                                        : value.toMap();
    for (auto& entry : map) {
        if (entry.metaType() == QMetaType::fromType<QDBusVariant>())
            entry = qvariant_cast<QDBusVariant>(entry).variant();
    }
    return map;
}

QVariantList listFrom(const QVariant& value) {
    auto list = value.metaType() == QMetaType::fromType<QDBusArgument>() ? qdbus_cast<QVariantList>(value)
                                                                         : value.toList();
    for (auto& entry : list) {
        if (entry.metaType() == QMetaType::fromType<QDBusVariant>())
            entry = qvariant_cast<QDBusVariant>(entry).variant();
    }
    return list;
}

} // namespace

Activation Activation::fromPlatformData(const QVariantMap& data) {
    return {data.value(startupIdKey).toString(), data.value(tokenKey).toString()};
}

QVariantMap Activation::platformData() const {
    QVariantMap data;
    if (!desktopStartupId.isEmpty())
        data.insert(startupIdKey, desktopStartupId);
    if (!activationToken.isEmpty())
        data.insert(tokenKey, activationToken);
    return data;
}

Activation Activation::fromEnvironment() {
    return {qEnvironmentVariable("DESKTOP_STARTUP_ID"), qEnvironmentVariable("XDG_ACTIVATION_TOKEN")};
}

ApplicationBus::ApplicationBus(SessionBus& bus)
    : m_bus(bus)
    , m_object(std::make_unique<dbus::ExportedObject>(
          objectPath, std::vector<dbus::Interface>{applicationInterface(), ownInterface()})) {}

ApplicationBus::~ApplicationBus() {
    const auto connection = m_bus.connection();
    if (connection && m_connected)
        dbus::releaseName(*connection, busName);
}

ApplicationBus::Claim ApplicationBus::tryAcquire(std::chrono::milliseconds timeout) {
    const auto now = m_bus.connection();
    auto claim = Claim::noBus;
    if (now) {
        // First the object, so that whoever sees the name finds it.
        m_object->exportOn(*now);
        const auto result = dbus::requestNameNow(*now, busName, timeout);
        claim = result == dbus::NameRequest::owned   ? Claim::acquired
                : result == dbus::NameRequest::taken ? Claim::anotherIsRunning
                                                     : Claim::noBus;
    }
    if (claim == Claim::anotherIsRunning)
        return claim;
    m_connected = m_bus.observeConnected([this, served = now](const QDBusConnection& connection) {
        if (served && served->name() == connection.name())
            return;
        m_object->exportOn(connection);
        dbus::requestName(connection, busName, m_object.get(), [](dbus::NameRequest) {});
    });
    m_disconnected = m_bus.observeDisconnected([this] { m_object->connectionLost(); });
    return claim;
}

dbus::Interface ApplicationBus::applicationInterface() {
    const dbus::Argument platformData{QStringLiteral("platform_data"), QStringLiteral("a{sv}")};
    const auto activate = [this](const QVariantList& arguments) {
        if (!onActivate)
            return notOffered();
        onActivate(Activation::fromPlatformData(mapFrom(arguments[0])));
        return Answer();
    };
    const auto open = [this](const QVariantList& arguments) {
        if (!onOpen)
            return notOffered();
        onOpen(arguments[0].toStringList(), Activation::fromPlatformData(mapFrom(arguments[1])));
        return Answer();
    };
    const auto action = [this](const QVariantList& arguments) {
        if (!onActivateAction)
            return notOffered();
        onActivateAction(arguments[0].toString(), listFrom(arguments[1]),
                         Activation::fromPlatformData(mapFrom(arguments[2])));
        return Answer();
    };
    return {
        standardInterface,
        {{QStringLiteral("Activate"), {platformData}, {}, activate},
         {QStringLiteral("Open"), {{QStringLiteral("uris"), QStringLiteral("as")}, platformData}, {}, open},
         {QStringLiteral("ActivateAction"),
          {{QStringLiteral("action_name"), QStringLiteral("s")},
           {QStringLiteral("parameter"), QStringLiteral("av")},
           platformData},
          {},
          action}},
        {},
        {}};
}

dbus::Interface ApplicationBus::ownInterface() {
    const auto run = [this](const QVariantList& arguments) {
        if (!onRun)
            return notOffered();
        const auto reply = onRun(mapFrom(arguments[0]));
        return Answer{{reply.exitStatus, reply.line}, {}, {}};
    };
    const auto status = [this](const QVariantList&) {
        return onStatus ? Answer{{onStatus()}, {}, {}} : notOffered();
    };
    return {programInterface,
            {{QStringLiteral("Run"),
              {{QStringLiteral("options"), QStringLiteral("a{sv}")}},
              {{QStringLiteral("exit_status"), QStringLiteral("i")},
               {QStringLiteral("line"), QStringLiteral("s")}},
              run},
             {QStringLiteral("Status"), {}, {{QStringLiteral("json"), QStringLiteral("s")}}, status}},
            {},
            {}};
}

RunningApplication::RunningApplication(const QDBusConnection& connection, std::chrono::milliseconds timeout)
    : m_connection(connection)
    , m_timeout(timeout) {}

std::optional<QVariantList> RunningApplication::call(const QString& interface, const QString& method,
                                                     const QVariantList& arguments) const {
    auto message = QDBusMessage::createMethodCall(busName, objectPath, interface, method);
    message.setArguments(arguments);
    // It is running or it is not; starting it is not what was asked for.
    message.setAutoStartService(false);
    const auto reply = m_connection.call(message, QDBus::Block, static_cast<int>(m_timeout.count()));
    return reply.type() == QDBusMessage::ReplyMessage ? std::optional(reply.arguments()) : std::nullopt;
}

std::optional<RunReply> RunningApplication::run(const QVariantMap& options) const {
    const auto values = call(programInterface, QStringLiteral("Run"), {options});
    if (!values || values->size() != 2)
        return std::nullopt;
    return RunReply{values->at(0).toInt(), values->at(1).toString()};
}

std::optional<QString> RunningApplication::status() const {
    const auto values = call(programInterface, QStringLiteral("Status"), {});
    return values && values->size() == 1 ? std::optional(values->at(0).toString()) : std::nullopt;
}

bool RunningApplication::activate(const Activation& activation) const {
    return call(standardInterface, QStringLiteral("Activate"), {activation.platformData()}).has_value();
}

} // namespace zofra
