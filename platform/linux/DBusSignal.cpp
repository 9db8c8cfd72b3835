// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DBusSignal.h"

#include <QStringList>

#include <utility>

namespace zofra {
namespace {

QStringList arguments(const QString& first) {
    return first.isEmpty() ? QStringList() : QStringList{first};
}

} // namespace

DBusSignal::DBusSignal(const QDBusConnection& connection, Source source, Handler handler)
    : m_connection(connection)
    , m_source(std::move(source))
    , m_handler(std::move(handler)) {
    m_connection.connect(m_source.service, m_source.path, m_source.interface, m_source.member,
                         arguments(m_source.argument), QString(), this, SLOT(received(QDBusMessage)));
}

DBusSignal::~DBusSignal() {
    m_connection.disconnect(m_source.service, m_source.path, m_source.interface, m_source.member,
                            arguments(m_source.argument), QString(), this, SLOT(received(QDBusMessage)));
}

void DBusSignal::received(const QDBusMessage& message) {
    // The handler may end this subscription.
    const auto handler = m_handler;
    handler(message);
}

} // namespace zofra
