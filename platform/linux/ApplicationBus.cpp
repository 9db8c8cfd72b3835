// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ApplicationBus.h"

#include "platform/linux/DBusArguments.h"
#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusExportedObject.h"

#include <QDBusMessage>
#include <QDBusVariant>

#include <utility>

namespace zofra {
namespace {

using dbus::Answer;

constexpr auto* standardInterface = "org.freedesktop.Application";
constexpr auto* programInterface = ApplicationBus::ownInterfaceName.data();
const auto startupIdKey = u"desktop-startup-id"_qs;
const auto tokenKey = u"activation-token"_qs;
constexpr auto answerLimit = std::chrono::seconds(5);

/// A call of the running program.
QDBusMessage callOf(const char* interface, const char* method, const QVariantList& arguments) {
    auto message = dbus::methodCall(ApplicationBus::name, ApplicationBus::path, interface, method, arguments);
    // It is running or it is not; starting it is not what was asked for.
    message.setAutoStartService(false);
    return message;
}

Answer notOffered() {
    return dbus::refused("NotSupported", u"The program does not offer this now"_qs);
}

/// More than any request of ours, or of a desktop, has.
constexpr int mostEntries = 64;

Answer tooMuch() {
    return dbus::refused("LimitsExceeded", u"No request has as much as that"_qs);
}

std::optional<Activation> activationFrom(const QVariant& platformData) {
    const auto map = dbus::boundedMap(platformData, mostEntries);
    return map ? std::optional(Activation::fromPlatformData(*map)) : std::nullopt;
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

Activation Activation::takeFromEnvironment() {
    Activation activation{qEnvironmentVariable("DESKTOP_STARTUP_ID"),
                          qEnvironmentVariable("XDG_ACTIVATION_TOKEN")};
    qunsetenv("DESKTOP_STARTUP_ID");
    qunsetenv("XDG_ACTIVATION_TOKEN");
    return activation;
}

ApplicationBus::ApplicationBus(SessionBus& bus)
    : m_bus(bus)
    , m_object(std::make_unique<dbus::ExportedObject>(
          path, std::vector<dbus::Interface>{applicationInterface(), ownInterface()})) {}

ApplicationBus::~ApplicationBus() {
    const auto connection = m_bus.connection();
    if (connection && m_connected)
        dbus::releaseName(*connection, name);
}

ApplicationBus::Claim ApplicationBus::tryAcquire(std::chrono::milliseconds timeout) {
    const auto now = m_bus.connection();
    auto claim = Claim::noBus;
    if (now) {
        // First the object, so that whoever sees the name finds it.
        m_object->exportOn(*now);
        const auto result = dbus::requestNameNow(*now, name, timeout);
        claim = result == dbus::NameRequest::owned   ? Claim::acquired
                : result == dbus::NameRequest::taken ? Claim::anotherIsRunning
                                                     : Claim::noBus;
    }
    if (claim == Claim::anotherIsRunning)
        return claim;
    m_hasBeenRunning = claim == Claim::acquired;
    m_connected = m_bus.observeConnected(
        [this, owned = claim == Claim::acquired ? now : std::nullopt](const QDBusConnection& connection) {
            if (!owned || owned->name() != connection.name())
                this->claim(connection);
        });
    m_disconnected = m_bus.observeDisconnected([this] { m_object->connectionLost(); });
    return claim;
}

void ApplicationBus::claim(const QDBusConnection& connection) {
    m_object->exportOn(connection);
    dbus::requestName(connection, name, m_object.get(), [this](dbus::NameRequest result) {
        if (result == dbus::NameRequest::owned)
            m_hasBeenRunning = true;
        else if (result == dbus::NameRequest::taken && onAnotherIsRunning)
            onAnotherIsRunning();
    });
}

void ApplicationBus::handOver(const QVariantMap& options, const Activation& activation,
                              std::function<void()> taken) {
    const auto connection = m_bus.connection();
    if (!connection)
        return;
    const bool isNewcomer = options.isEmpty() && !m_hasBeenRunning;
    const auto message = isNewcomer ? callOf(standardInterface, "Activate", {activation.platformData()})
                                    : callOf(programInterface, "Run", {options});
    dbus::callLater(*connection, message, answerLimit, m_object.get(),
                    [this, taken = std::move(taken)](const QDBusMessage& reply) {
                        const auto now = m_bus.connection();
                        const bool isAnswer = reply.type() == QDBusMessage::ReplyMessage;
                        if (isAnswer && taken)
                            taken();
                        else if (!isAnswer && now)
                            claim(*now);
                    });
}

dbus::Interface ApplicationBus::applicationInterface() {
    const auto activate = [this](const QVariantList& arguments) {
        const auto activation = activationFrom(arguments[0]);
        if (!activation)
            return tooMuch();
        if (!onActivate)
            return notOffered();
        onActivate(*activation);
        return Answer();
    };
    const auto open = [this](const QVariantList& arguments) {
        const auto activation = activationFrom(arguments[1]);
        if (!activation || arguments[0].toStringList().size() > mostEntries)
            return tooMuch();
        if (!onOpen)
            return notOffered();
        onOpen(arguments[0].toStringList(), *activation);
        return Answer();
    };
    const auto action = [this](const QVariantList& arguments) {
        const auto parameter = dbus::boundedList<QDBusVariant>(arguments[1], mostEntries);
        const auto activation = activationFrom(arguments[2]);
        if (!parameter || !activation)
            return tooMuch();
        if (!onActivateAction)
            return notOffered();
        QVariantList values;
        for (const QDBusVariant& value : *parameter)
            values.append(value.variant());
        onActivateAction(arguments[0].toString(), values, *activation);
        return Answer();
    };
    return {standardInterface,
            {{"Activate", "platform_data:a{sv}", "", activate},
             {"Open", "uris:as platform_data:a{sv}", "", open},
             {"ActivateAction", "action_name:s parameter:av platform_data:a{sv}", "", action}}};
}

dbus::Interface ApplicationBus::ownInterface() {
    const auto run = [this](const QVariantList& arguments) {
        const auto options = dbus::boundedMap(arguments[0], mostEntries);
        if (!options)
            return tooMuch();
        if (!onRun)
            return notOffered();
        return dbus::withinLimit(m_acts, [&] {
            const auto reply = onRun(*options);
            return Answer{{reply.exitStatus, reply.line}};
        });
    };
    const auto status = [this](const QVariantList&) {
        return onStatus ? Answer{{onStatus()}} : notOffered();
    };
    return {programInterface,
            {{"Run", "options:a{sv}", "exit_status:i line:s", run}, {"Status", "", "json:s", status}},
            {},
            {{barLineName.data(), "s", [this] { return QVariant(onBarLine ? onBarLine() : QString()); }}}};
}

void ApplicationBus::tellChanges() {
    m_object->tellChangedProperties();
}

RunningApplication::RunningApplication(const QDBusConnection& connection, std::chrono::milliseconds timeout)
    : m_connection(connection)
    , m_timeout(timeout) {}

std::optional<QVariantList> RunningApplication::call(const char* interface, const char* method,
                                                     const QVariantList& arguments) const {
    const auto reply = m_connection.call(callOf(interface, method, arguments), QDBus::Block,
                                         static_cast<int>(m_timeout.count()));
    return reply.type() == QDBusMessage::ReplyMessage ? std::optional(reply.arguments()) : std::nullopt;
}

std::optional<RunReply> RunningApplication::run(const QVariantMap& options) const {
    const auto values = call(programInterface, "Run", {options});
    if (!values || values->size() != 2)
        return std::nullopt;
    return RunReply{values->at(0).toInt(), values->at(1).toString()};
}

std::optional<QString> RunningApplication::status() const {
    const auto values = call(programInterface, "Status", {});
    return values && values->size() == 1 ? std::optional(values->at(0).toString()) : std::nullopt;
}

bool RunningApplication::activate(const Activation& activation) const {
    return call(standardInterface, "Activate", {activation.platformData()}).has_value();
}

} // namespace zofra
