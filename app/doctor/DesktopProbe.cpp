// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/DesktopProbe.h"

#include "platform/linux/ApplicationBus.h"
#include "platform/linux/DBusCalls.h"
#include "platform/linux/tray/PanelWatch.h"

#include <QJsonDocument>

namespace zofra::doctor {

namespace {

constexpr int patienceMilliseconds = 3000;
constexpr auto* watcher = "org.kde.StatusNotifierWatcher";

QDBusMessage replyTo(const QDBusConnection& bus, const QDBusMessage& call) {
    return bus.call(call, QDBus::Block, patienceMilliseconds);
}

/// What the bus itself answers; invalid on an error.
QVariant askBus(const QDBusConnection& bus, const char* method, const QString& name) {
    const auto reply = replyTo(bus, dbus::busCall(method, {name}));
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

bool hasName(const QDBusConnection& bus, const QString& name) {
    return askBus(bus, "NameHasOwner", name).toBool();
}

uint processBehind(const QDBusConnection& bus, const QString& name) {
    return askBus(bus, "GetConnectionUnixProcessID", name).toUInt();
}

/// A watcher that does not say is taken for a panel, as the status item does.
bool showsItems(const QDBusConnection& bus) {
    auto call =
        dbus::propertyCall(watcher, "/StatusNotifierWatcher", watcher, "IsStatusNotifierHostRegistered");
    call.setAutoStartService(false);
    const auto value = dbus::propertyIn(replyTo(bus, call));
    return !value.isValid() || value.toBool();
}

} // namespace

void askForPanel(DesktopFacts& facts, const QDBusConnection& bus) {
    facts.hasWatcher = hasName(bus, QLatin1String(watcher));
    if (!facts.hasWatcher)
        return;
    facts.session.panelProgram = processName(processBehind(bus, QLatin1String(watcher)));
    facts.hasPanel = showsItems(bus);
}

ProgramFacts askForProgram(const std::optional<QDBusConnection>& bus, const QString& ownVersion) {
    const QString name = ApplicationBus::name;
    ProgramFacts facts;
    facts.ownVersion = ownVersion;
    facts.busAddress = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    facts.hasBus = bus.has_value();
    if (!bus)
        return facts;
    facts.hasMediaName = hasName(*bus, u"org.mpris.MediaPlayer2.zofrazofra"_qs);
    facts.isRunning = hasName(*bus, name);
    if (!facts.isRunning)
        return facts;
    facts.processId = processBehind(*bus, name);
    const auto text = RunningApplication(*bus).status();
    const auto document = text ? QJsonDocument::fromJson(text->toUtf8()) : QJsonDocument();
    if (document.isObject())
        facts.status = document.object();
    return facts;
}

} // namespace zofra::doctor
