// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>

namespace zofra::dbus {

/// Sends a call and returns at once. `finished` gets the answer or the error, unless `owner` has ended.
void callLater(const QDBusConnection& connection, const QDBusMessage& call, std::chrono::milliseconds timeout,
               QObject* owner, std::function<void(const QDBusMessage& reply)> finished);

enum class NameRequest { owned, taken, failed };

/// Asks for a well-known name, without queueing for it and without waiting.
void requestName(const QDBusConnection& connection, const QString& name, QObject* owner,
                 std::function<void(NameRequest)> finished);
/// The same, waiting for the bus for at most `timeout`.
[[nodiscard]] NameRequest requestNameNow(const QDBusConnection& connection, const QString& name,
                                         std::chrono::milliseconds timeout);

/// Gives a name back; not waited for.
void releaseName(const QDBusConnection& connection, const QString& name);

} // namespace zofra::dbus
