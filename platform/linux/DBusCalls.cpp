// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DBusCalls.h"

#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>

#include <utility>

namespace zofra::dbus {
namespace {

QDBusMessage busCall(const QString& method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                          QStringLiteral("/org/freedesktop/DBus"),
                                          QStringLiteral("org.freedesktop.DBus"), method);
}

QDBusMessage nameRequest(const QString& name) {
    constexpr uint doNotQueue = 4;
    auto call = busCall(QStringLiteral("RequestName"));
    call << name << doNotQueue;
    return call;
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

void callLater(const QDBusConnection& connection, const QDBusMessage& call, std::chrono::milliseconds timeout,
               QObject* owner, std::function<void(const QDBusMessage& reply)> finished) {
    auto* watcher =
        new QDBusPendingCallWatcher(connection.asyncCall(call, static_cast<int>(timeout.count())), owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner,
                     [finished = std::move(finished)](QDBusPendingCallWatcher* done) {
                         done->deleteLater();
                         finished(done->reply());
                     });
}

void requestName(const QDBusConnection& connection, const QString& name, QObject* owner,
                 std::function<void(NameRequest)> finished) {
    callLater(connection, nameRequest(name), std::chrono::seconds(25), owner,
              [finished = std::move(finished)](const QDBusMessage& reply) { finished(outcome(reply)); });
}

NameRequest requestNameNow(const QDBusConnection& connection, const QString& name,
                           std::chrono::milliseconds timeout) {
    return outcome(connection.call(nameRequest(name), QDBus::Block, static_cast<int>(timeout.count())));
}

void releaseName(const QDBusConnection& connection, const QString& name) {
    auto call = busCall(QStringLiteral("ReleaseName"));
    call << name;
    connection.send(call);
}

} // namespace zofra::dbus
