// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace zofra {

/// (iiay): a picture, 32 bits a pixel, alpha first.
struct BusPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;

    [[nodiscard]] static BusPixmap fromImage(const QImage& image);
};

/// (sa(iiay)ss): icon name, icon, title, text.
struct BusToolTip {
    QString iconName;
    QList<BusPixmap> iconPixmaps;
    QString title;
    QString text;
};

/// (ia{sv}av): an item of a menu with what is below it.
struct BusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<BusMenuLayout> children;
};

/// (ia{sv}): an item of a menu.
struct BusMenuProperties {
    int id = 0;
    QVariantMap properties;
};

/// (ias): an item of a menu and what it has no longer.
struct BusMenuRemovedProperties {
    int id = 0;
    QStringList names;
};

/// (isvu): something that happened to an item of a menu.
struct BusMenuEvent {
    int id = 0;
    QString eventId;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const BusPixmap& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusPixmap& value);
QDBusArgument& operator<<(QDBusArgument& argument, const BusToolTip& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusToolTip& value);
QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuLayout& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuLayout& value);
QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuProperties& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuProperties& value);
QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuRemovedProperties& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuRemovedProperties& value);
QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuEvent& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuEvent& value);

/// Makes the types known to the bus. May be called more than once.
void registerTrayTypes();

} // namespace zofra

Q_DECLARE_METATYPE(zofra::BusPixmap)
Q_DECLARE_METATYPE(zofra::BusToolTip)
Q_DECLARE_METATYPE(zofra::BusMenuLayout)
Q_DECLARE_METATYPE(zofra::BusMenuProperties)
Q_DECLARE_METATYPE(zofra::BusMenuRemovedProperties)
Q_DECLARE_METATYPE(zofra::BusMenuEvent)
