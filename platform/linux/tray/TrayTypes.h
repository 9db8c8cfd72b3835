// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusArguments.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

namespace zofra {

/// (iiay): a picture, 32 bits a pixel, alpha first.
struct BusPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;

    [[nodiscard]] static BusPixmap fromImage(const QImage& image);

    static constexpr std::tuple members{&BusPixmap::width, &BusPixmap::height, &BusPixmap::bytes};
};

/// (sa(iiay)ss): icon name, icon, title, text.
struct BusToolTip {
    QString iconName;
    QList<BusPixmap> iconPixmaps;
    QString title;
    QString text;

    static constexpr std::tuple members{&BusToolTip::iconName, &BusToolTip::iconPixmaps, &BusToolTip::title,
                                        &BusToolTip::text};
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

    static constexpr std::tuple members{&BusMenuProperties::id, &BusMenuProperties::properties};
};

/// (ias): an item of a menu and what it has no longer.
struct BusMenuRemovedProperties {
    int id = 0;
    QStringList names;

    static constexpr std::tuple members{&BusMenuRemovedProperties::id, &BusMenuRemovedProperties::names};
};

/// (isvu): something that happened to an item of a menu.
struct BusMenuEvent {
    int id = 0;
    QString eventId;
    QDBusVariant data;
    uint timestamp = 0;

    static constexpr std::tuple members{&BusMenuEvent::id, &BusMenuEvent::eventId, &BusMenuEvent::data,
                                        &BusMenuEvent::timestamp};
};

QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuLayout& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuLayout& value);

/// Makes the types known to the bus. May be called more than once.
void registerTrayTypes();

} // namespace zofra
