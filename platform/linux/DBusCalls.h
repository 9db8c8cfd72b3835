// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAnyStringView>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>

namespace zofra::dbus {

/// A call of a method.
[[nodiscard]] inline QDBusMessage methodCall(QAnyStringView service, QAnyStringView path,
                                             QAnyStringView interface, QAnyStringView method,
                                             const QVariantList& arguments = {}) {
    auto call = QDBusMessage::createMethodCall(service.toString(), path.toString(), interface.toString(),
                                               method.toString());
    call.setArguments(arguments);
    return call;
}
/// A question for a property's value, and what its answer says; invalid when that is an error.
[[nodiscard]] inline QDBusMessage propertyCall(QAnyStringView service, QAnyStringView path,
                                               QAnyStringView interface, QAnyStringView property) {
    return methodCall(service, path, "org.freedesktop.DBus.Properties", "Get",
                      {interface.toString(), property.toString()});
}
[[nodiscard]] inline QVariant propertyIn(const QDBusMessage& reply) {
    return reply.type() == QDBusMessage::ReplyMessage
               ? qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant()
               : QVariant();
}
/// A call of the bus itself.
[[nodiscard]] inline QDBusMessage busCall(const char* method, const QVariantList& arguments = {}) {
    return methodCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
                      arguments);
}

/// Longer than any bus is asked to wait for an answer.
inline constexpr auto withoutLimit = std::chrono::milliseconds::max();
/// A limit as the library takes it, for which the greatest number means none.
[[nodiscard]] inline int limitOf(std::chrono::milliseconds time) {
    return static_cast<int>(std::min<std::int64_t>(time.count(), std::numeric_limits<int>::max()));
}

/// Sends a call and returns at once. `finished` gets the answer or the error, unless `owner` has ended.
inline void callLater(const QDBusConnection& connection, const QDBusMessage& call,
                      std::chrono::milliseconds timeout, QObject* owner,
                      std::function<void(const QDBusMessage& reply)> finished) {
    auto* watcher = new QDBusPendingCallWatcher(connection.asyncCall(call, limitOf(timeout)), owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner,
                     [finished = std::move(finished)](QDBusPendingCallWatcher* done) {
                         done->deleteLater();
                         finished(done->reply());
                     });
}

enum class NameRequest { owned, taken, failed };
/// A call that asks for a well-known name, without queueing for it, and what its answer says.
[[nodiscard]] inline QDBusMessage nameRequest(const QString& name) {
    constexpr uint doNotQueue = 4;
    return busCall("RequestName", {name, doNotQueue});
}
[[nodiscard]] inline NameRequest outcomeOf(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return NameRequest::failed;
    const auto code = reply.arguments().constFirst().toUInt();
    constexpr uint primaryOwner = 1;
    constexpr uint alreadyOwner = 4;
    return code == primaryOwner || code == alreadyOwner ? NameRequest::owned : NameRequest::taken;
}

/// Asks for a well-known name without waiting. A bus that hangs may answer as late as it likes.
inline void requestName(const QDBusConnection& connection, const QString& name, QObject* owner,
                        std::function<void(NameRequest)> finished) {
    callLater(connection, nameRequest(name), withoutLimit, owner,
              [finished = std::move(finished)](const QDBusMessage& reply) { finished(outcomeOf(reply)); });
}
/// The same, waiting for the bus for at most `timeout`.
[[nodiscard]] inline NameRequest requestNameNow(const QDBusConnection& connection, const QString& name,
                                                std::chrono::milliseconds timeout) {
    return outcomeOf(connection.call(nameRequest(name), QDBus::Block, limitOf(timeout)));
}

/// Gives a name back; not waited for.
inline void releaseName(const QDBusConnection& connection, const QString& name) {
    connection.send(busCall("ReleaseName", {name}));
}

} // namespace zofra::dbus
