// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/AppearanceSource.h"
#include "platform/linux/DBusCalls.h"
#include "platform/linux/DBusSignal.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QMap>
#include <QVariantMap>

#include <algorithm>
#include <array>
#include <optional>

namespace zofra {

/// Asks the desktop portal how programs should look and listens for changes. Never waits for it: until it has
/// answered, and where there is none, nothing is known. Main thread only.
class PortalAppearance {
public:
    /// `source` outlives this object.
    explicit PortalAppearance(AppearanceSource& source)
        : m_source(source) {}

    /// Asks the portal on this bus, and again whenever one appears there. Call again for a new connection.
    void attach(const QDBusConnection& bus) {
        m_changed.emplace(bus,
                          DBusSignal::Source{.path = path,
                                             .interface = settingsInterface,
                                             .member = u"SettingChanged"_qs,
                                             .argument = group},
                          [this](const QDBusMessage& signal) { settingChanged(signal); });
        m_ownerChanged.emplace(bus,
                               DBusSignal::Source{u"org.freedesktop.DBus"_qs, u"/org/freedesktop/DBus"_qs,
                                                  u"org.freedesktop.DBus"_qs, u"NameOwnerChanged"_qs,
                                                  service},
                               [this, bus](const QDBusMessage& signal) {
                                   // What one that has gone said still holds.
                                   if (!signal.arguments().value(2).toString().isEmpty())
                                       ask(bus);
                               });
        ask(bus);
    }

private:
    static inline const QString service = u"org.freedesktop.portal.Desktop"_qs;
    static inline const QString path = u"/org/freedesktop/portal/desktop"_qs;
    static inline const QString settingsInterface = u"org.freedesktop.portal.Settings"_qs;
    static inline const QString group = u"org.freedesktop.appearance"_qs;

    void ask(const QDBusConnection& bus) {
        const auto question =
            dbus::methodCall(service, path, settingsInterface, "ReadAll", {QStringList{group}});
        dbus::callLater(bus, question, std::chrono::seconds(25), &*m_changed, [this](const auto& reply) {
            if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != u"a{sa{sv}}")
                return;
            const auto groups = qdbus_cast<QMap<QString, QVariantMap>>(reply.arguments().constFirst());
            const QVariantMap settings = groups.value(group);
            DesktopAppearance appearance;
            for (auto setting = settings.cbegin(); setting != settings.cend(); ++setting)
                apply(appearance, setting.key(), setting.value());
            m_source.set(appearance);
        });
    }

    void settingChanged(const QDBusMessage& signal) {
        if (signal.signature() != u"ssv")
            return;
        const auto arguments = signal.arguments();
        DesktopAppearance appearance = m_source.current();
        apply(appearance, arguments[1].toString(), arguments[2].value<QDBusVariant>().variant());
        m_source.set(appearance);
    }

    /// Lays one setting over `appearance`. Unknown keys, wrong types and colours outside 0..1 (which say
    /// "none") leave nothing set.
    static void apply(DesktopAppearance& appearance, const QString& key, QVariant value) {
        for (int depth = 0; depth < 4 && value.metaType() == QMetaType::fromType<QDBusVariant>(); ++depth)
            value = value.value<QDBusVariant>().variant();
        const uint number = value.metaType() == QMetaType::fromType<uint>() ? value.toUInt() : 0;
        if (key == u"accent-color") {
            appearance.accent = colorOf(value);
        } else if (key == u"color-scheme") {
            using Scheme = DesktopAppearance::ColorScheme;
            appearance.colorScheme = number == 1   ? Scheme::dark
                                     : number == 2 ? Scheme::light
                                                   : Scheme::unsaid;
        } else if (key == u"contrast") {
            using Contrast = DesktopAppearance::Contrast;
            appearance.contrast = number == 1 ? Contrast::high : Contrast::normal;
        }
    }

    static std::optional<QColor> colorOf(const QVariant& value) {
        if (value.metaType() != QMetaType::fromType<QDBusArgument>())
            return std::nullopt;
        const auto argument = value.value<QDBusArgument>();
        if (argument.currentSignature() != u"(ddd)")
            return std::nullopt;
        std::array<double, 3> shares{};
        argument.beginStructure();
        argument >> shares[0] >> shares[1] >> shares[2];
        argument.endStructure();
        if (!std::ranges::all_of(shares, [](double share) { return share >= 0 && share <= 1; }))
            return std::nullopt;
        return QColor::fromRgbF(static_cast<float>(shares[0]), static_cast<float>(shares[1]),
                                static_cast<float>(shares[2]));
    }

    AppearanceSource& m_source;
    std::optional<DBusSignal> m_changed;
    std::optional<DBusSignal> m_ownerChanged;
};

} // namespace zofra
