// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/DesktopProbe.h"

#include "platform/linux/ApplicationBus.h"
#include "platform/linux/tray/PanelWatch.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QJsonDocument>

namespace zofra::doctor {

namespace {

constexpr int patienceMilliseconds = 3000;
const auto watcher = QLatin1String("org.kde.StatusNotifierWatcher");
const auto busName = QLatin1String("org.freedesktop.DBus");

/// The first value of the answer; absent on an error.
std::optional<QVariant> answerTo(const QDBusConnection& bus, const QDBusMessage& call) {
    const auto reply = bus.call(call, QDBus::Block, patienceMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage)
        return std::nullopt;
    return reply.arguments().value(0);
}

std::optional<QVariant> askBus(const QDBusConnection& bus, const QString& method, const QString& name) {
    auto call =
        QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName, method);
    call << name;
    return answerTo(bus, call);
}

bool hasName(const QDBusConnection& bus, const QString& name) {
    return askBus(bus, QStringLiteral("NameHasOwner"), name).value_or(false).toBool();
}

uint processBehind(const QDBusConnection& bus, const QString& name) {
    return askBus(bus, QStringLiteral("GetConnectionUnixProcessID"), name).value_or(0U).toUInt();
}

/// A watcher that does not say is taken for a panel, as the status item does.
bool showsItems(const QDBusConnection& bus) {
    auto call = QDBusMessage::createMethodCall(watcher, QStringLiteral("/StatusNotifierWatcher"),
                                               QStringLiteral("org.freedesktop.DBus.Properties"),
                                               QStringLiteral("Get"));
    call.setAutoStartService(false);
    call << QString(watcher) << QStringLiteral("IsStatusNotifierHostRegistered");
    const auto value = qvariant_cast<QDBusVariant>(answerTo(bus, call).value_or(QVariant())).variant();
    return !value.isValid() || value.toBool();
}

} // namespace

void askForPanel(DesktopFacts& facts, const QDBusConnection& bus) {
    facts.hasWatcher = hasName(bus, watcher);
    if (!facts.hasWatcher)
        return;
    facts.session.panelProgram = processName(processBehind(bus, watcher));
    facts.hasPanel = showsItems(bus);
}

ProgramFacts askForProgram(const std::optional<QDBusConnection>& bus, const QString& ownVersion) {
    const QString name = QStringLiteral("be.zofra.ZofraZofra");
    ProgramFacts facts;
    facts.ownVersion = ownVersion;
    facts.busAddress = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    facts.hasBus = bus.has_value();
    if (!bus)
        return facts;
    facts.hasMediaName = hasName(*bus, QStringLiteral("org.mpris.MediaPlayer2.zofrazofra"));
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
