// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PortalAppearance.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QMap>
#include <QStringList>
#include <QVariantMap>

namespace zofra {

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_qs;
const QString portalPath = u"/org/freedesktop/portal/desktop"_qs;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_qs;
const QString appearanceGroup = u"org.freedesktop.appearance"_qs;

QVariant unwrapped(QVariant value) {
    for (int depth = 0; depth < 4 && value.metaType() == QMetaType::fromType<QDBusVariant>(); ++depth)
        value = value.value<QDBusVariant>().variant();
    return value;
}

std::optional<QColor> colorOf(const QVariant& value) {
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != u"(ddd)")
        return std::nullopt;
    double red = -1;
    double green = -1;
    double blue = -1;
    argument.beginStructure();
    argument >> red >> green >> blue;
    argument.endStructure();
    const auto isShare = [](double channel) { return channel >= 0 && channel <= 1; };
    if (!isShare(red) || !isShare(green) || !isShare(blue))
        return std::nullopt;
    return QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue));
}

} // namespace

void PortalAppearance::apply(DesktopAppearance& appearance, const QString& key, const QVariant& value) {
    const QVariant plain = unwrapped(value);
    if (key == u"accent-color") {
        appearance.accent = colorOf(plain);
    } else if (key == u"color-scheme") {
        using Scheme = DesktopAppearance::ColorScheme;
        const uint scheme = plain.metaType() == QMetaType::fromType<uint>() ? plain.toUInt() : 0;
        appearance.colorScheme = scheme == 1 ? Scheme::dark : scheme == 2 ? Scheme::light : Scheme::unsaid;
    } else if (key == u"contrast") {
        const bool isHigh = plain.metaType() == QMetaType::fromType<uint>() && plain.toUInt() == 1;
        appearance.contrast =
            isHigh ? DesktopAppearance::Contrast::high : DesktopAppearance::Contrast::normal;
    }
}

void PortalAppearance::attach(const QDBusConnection& bus) {
    QDBusConnection& connection = m_connection.emplace(bus);
    // Slots whose types nobody has used before are not found.
    qRegisterMetaType<QDBusVariant>();
    // Without the sender's name, for looking up who owns it would wait for the bus.
    connection.connect(QString(), portalPath, settingsInterface, u"SettingChanged"_qs, this,
                       SLOT(settingChanged(QString, QString, QDBusVariant)));
    connection.connect(u"org.freedesktop.DBus"_qs, u"/org/freedesktop/DBus"_qs, u"org.freedesktop.DBus"_qs,
                       u"NameOwnerChanged"_qs, QStringList{portalService}, u"sss"_qs, this,
                       SLOT(ownerChanged(QString, QString, QString)));
    ask();
}

void PortalAppearance::ask() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, u"ReadAll"_qs);
    question << QStringList{appearanceGroup};
    auto* watcher = new QDBusPendingCallWatcher(m_connection->asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusMessage reply = finished->reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != u"a{sa{sv}}")
            return;
        const auto groups = qdbus_cast<QMap<QString, QVariantMap>>(reply.arguments().constFirst());
        const QVariantMap settings = groups.value(appearanceGroup);
        DesktopAppearance appearance;
        for (auto setting = settings.cbegin(); setting != settings.cend(); ++setting)
            apply(appearance, setting.key(), setting.value());
        m_source.set(appearance);
    });
}

void PortalAppearance::ownerChanged(const QString&, const QString&, const QString& now) {
    // What one that has gone said still holds.
    if (!now.isEmpty())
        ask();
}

void PortalAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group != appearanceGroup)
        return;
    DesktopAppearance appearance = m_source.current();
    apply(appearance, key, value.variant());
    m_source.set(appearance);
}

} // namespace zofra
