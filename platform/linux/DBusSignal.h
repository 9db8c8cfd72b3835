// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>

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
        QString service{};
        QString path{};
        QString interface {};
        QString member{};
        /// First argument, when not empty.
        QString argument{};
    };

    /// What the library itself tells of a connection that has gone.
    [[nodiscard]] static Source disconnected() {
        return {.path = u"/org/freedesktop/DBus/Local"_qs,
                .interface = u"org.freedesktop.DBus.Local"_qs,
                .member = u"Disconnected"_qs};
    }

    DBusSignal(const QDBusConnection& connection, Source source, Handler handler)
        : m_connection(connection)
        , m_source(std::move(source))
        , m_handler(std::move(handler)) {
        m_connection.connect(m_source.service, m_source.path, m_source.interface, m_source.member,
                             arguments(), QString(), this, SLOT(received(QDBusMessage)));
    }
    ~DBusSignal() override {
        m_connection.disconnect(m_source.service, m_source.path, m_source.interface, m_source.member,
                                arguments(), QString(), this, SLOT(received(QDBusMessage)));
    }

private Q_SLOTS:
    void received(const QDBusMessage& message) {
        // The handler may end this subscription.
        const auto handler = m_handler;
        handler(message);
    }

private:
    [[nodiscard]] QStringList arguments() const {
        return m_source.argument.isEmpty() ? QStringList() : QStringList{m_source.argument};
    }

    QDBusConnection m_connection;
    Source m_source;
    Handler m_handler;
};

} // namespace zofra
