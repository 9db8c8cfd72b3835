// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAnyStringView>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <chrono>
#include <functional>

namespace zofra::dbus {

/// A call of a method.
[[nodiscard]] QDBusMessage methodCall(QAnyStringView service, QAnyStringView path, QAnyStringView interface,
                                      QAnyStringView method, const QVariantList& arguments = {});
/// A question for a property's value, and what its answer says; invalid when that is an error.
[[nodiscard]] QDBusMessage propertyCall(QAnyStringView service, QAnyStringView path, QAnyStringView interface,
                                        QAnyStringView property);
[[nodiscard]] QVariant propertyIn(const QDBusMessage& reply);
/// A call of the bus itself.
[[nodiscard]] QDBusMessage busCall(const char* method, const QVariantList& arguments = {});

/// Longer than any bus is asked to wait for an answer.
inline constexpr auto withoutLimit = std::chrono::milliseconds::max();

/// Sends a call and returns at once. `finished` gets the answer or the error, unless `owner` has ended.
void callLater(const QDBusConnection& connection, const QDBusMessage& call, std::chrono::milliseconds timeout,
               QObject* owner, std::function<void(const QDBusMessage& reply)> finished);

enum class NameRequest { owned, taken, failed };

/// Asks for a well-known name, without queueing for it and without waiting. A bus that hangs may answer as
/// late as it likes.
void requestName(const QDBusConnection& connection, const QString& name, QObject* owner,
                 std::function<void(NameRequest)> finished);
/// The same, waiting for the bus for at most `timeout`.
[[nodiscard]] NameRequest requestNameNow(const QDBusConnection& connection, const QString& name,
                                         std::chrono::milliseconds timeout);

/// Gives a name back; not waited for.
void releaseName(const QDBusConnection& connection, const QString& name);

} // namespace zofra::dbus
