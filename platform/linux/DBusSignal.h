// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <functional>

namespace zofra {

/// A subscription to one signal of a message bus, ended by destroying it. Nothing here waits for the bus.
/// Main thread only.
class DBusSignal final : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(const QDBusMessage&)>;

    struct Source {
        /// Unique name, or empty for any sender. A well-known name would make the library ask for its owner
        /// and wait: leave it empty and compare the message's sender with a DBusNameOwner.
        QString service;
        QString path;
        QString interface;
        QString member;
        /// First argument, when not empty.
        QString argument;
    };

    DBusSignal(const QDBusConnection& connection, Source source, Handler handler);
    ~DBusSignal() override;

private Q_SLOTS:
    void received(const QDBusMessage& message);

private:
    QDBusConnection m_connection;
    Source m_source;
    Handler m_handler;
};

} // namespace zofra
