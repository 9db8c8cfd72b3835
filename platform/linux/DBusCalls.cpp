// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DBusCalls.h"

#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace zofra::dbus {
namespace {

QDBusMessage nameRequest(const QString& name) {
    constexpr uint doNotQueue = 4;
    return busCall("RequestName", {name, doNotQueue});
}

int milliseconds(std::chrono::milliseconds time) {
    // The greatest number means no limit.
    return static_cast<int>(std::min<std::int64_t>(time.count(), std::numeric_limits<int>::max()));
}

NameRequest outcome(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return NameRequest::failed;
    const auto code = reply.arguments().constFirst().toUInt();
    constexpr uint primaryOwner = 1;
    constexpr uint alreadyOwner = 4;
    return code == primaryOwner || code == alreadyOwner ? NameRequest::owned : NameRequest::taken;
}

} // namespace

QDBusMessage methodCall(QAnyStringView service, QAnyStringView path, QAnyStringView interface,
                        QAnyStringView method, const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(service.toString(), path.toString(), interface.toString(),
                                               method.toString());
    call.setArguments(arguments);
    return call;
}

QDBusMessage propertyCall(QAnyStringView service, QAnyStringView path, QAnyStringView interface,
                          QAnyStringView property) {
    return methodCall(service, path, "org.freedesktop.DBus.Properties", "Get",
                      {interface.toString(), property.toString()});
}

QVariant propertyIn(const QDBusMessage& reply) {
    return reply.type() == QDBusMessage::ReplyMessage
               ? qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant()
               : QVariant();
}

QDBusMessage busCall(const char* method, const QVariantList& arguments) {
    return methodCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
                      arguments);
}

void callLater(const QDBusConnection& connection, const QDBusMessage& call, std::chrono::milliseconds timeout,
               QObject* owner, std::function<void(const QDBusMessage& reply)> finished) {
    auto* watcher = new QDBusPendingCallWatcher(connection.asyncCall(call, milliseconds(timeout)), owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner,
                     [finished = std::move(finished)](QDBusPendingCallWatcher* done) {
                         done->deleteLater();
                         finished(done->reply());
                     });
}

void requestName(const QDBusConnection& connection, const QString& name, QObject* owner,
                 std::function<void(NameRequest)> finished) {
    callLater(connection, nameRequest(name), withoutLimit, owner,
              [finished = std::move(finished)](const QDBusMessage& reply) { finished(outcome(reply)); });
}

NameRequest requestNameNow(const QDBusConnection& connection, const QString& name,
                           std::chrono::milliseconds timeout) {
    return outcome(connection.call(nameRequest(name), QDBus::Block, milliseconds(timeout)));
}

void releaseName(const QDBusConnection& connection, const QString& name) {
    connection.send(busCall("ReleaseName", {name}));
}

} // namespace zofra::dbus
