// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/AppearanceSource.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>

#include <optional>

namespace zofra {

/// Asks the desktop portal how programs should look and listens for changes. Never waits for it: until it has
/// answered, and where there is none, nothing is known. Main thread only.
class PortalAppearance final : public QObject {
    Q_OBJECT

public:
    /// `source` outlives this object.
    explicit PortalAppearance(AppearanceSource& source)
        : m_source(source) {}

    /// Asks the portal on this bus, and again whenever one appears there. Call again for a new connection.
    void attach(const QDBusConnection& bus);

    /// Lays one setting of "org.freedesktop.appearance" over `appearance`. Unknown keys, wrong types and
    /// colours outside 0..1 (which say "none") leave nothing set.
    static void apply(DesktopAppearance& appearance, const QString& key, const QVariant& value);

private Q_SLOTS:
    void ownerChanged(const QString& name, const QString& before, const QString& now);
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask();

    AppearanceSource& m_source;
    std::optional<QDBusConnection> m_connection;
};

} // namespace zofra
