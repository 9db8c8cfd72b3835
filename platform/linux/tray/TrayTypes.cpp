// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayTypes.h"

#include <QDBusMetaType>
#include <QtEndian>

namespace zofra {

BusPixmap BusPixmap::fromImage(const QImage& image) {
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    BusPixmap pixmap{argb.width(), argb.height(), {}};
    pixmap.bytes.reserve(argb.sizeInBytes());
    for (int y = 0; y < argb.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x) {
            const quint32 bigEndian = qToBigEndian<quint32>(line[x]);
            pixmap.bytes.append(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
        }
    }
    return pixmap;
}

QDBusArgument& operator<<(QDBusArgument& argument, const BusPixmap& value) {
    argument.beginStructure();
    argument << value.width << value.height << value.bytes;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusPixmap& value) {
    argument.beginStructure();
    argument >> value.width >> value.height >> value.bytes;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const BusToolTip& value) {
    argument.beginStructure();
    argument << value.iconName << value.iconPixmaps << value.title << value.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusToolTip& value) {
    argument.beginStructure();
    argument >> value.iconName >> value.iconPixmaps >> value.title >> value.text;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuLayout& value) {
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const BusMenuLayout& child : value.children)
        argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuLayout& value) {
    argument.beginStructure();
    argument >> value.id >> value.properties;
    value.children.clear();
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        value.children.append(qdbus_cast<BusMenuLayout>(child.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuProperties& value) {
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuProperties& value) {
    argument.beginStructure();
    argument >> value.id >> value.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuRemovedProperties& value) {
    argument.beginStructure();
    argument << value.id << value.names;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuRemovedProperties& value) {
    argument.beginStructure();
    argument >> value.id >> value.names;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const BusMenuEvent& value) {
    argument.beginStructure();
    argument << value.id << value.eventId << value.data << value.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, BusMenuEvent& value) {
    argument.beginStructure();
    argument >> value.id >> value.eventId >> value.data >> value.timestamp;
    argument.endStructure();
    return argument;
}

void registerTrayTypes() {
    qDBusRegisterMetaType<BusPixmap>();
    qDBusRegisterMetaType<QList<BusPixmap>>();
    qDBusRegisterMetaType<BusToolTip>();
    qDBusRegisterMetaType<BusMenuLayout>();
    qDBusRegisterMetaType<BusMenuProperties>();
    qDBusRegisterMetaType<QList<BusMenuProperties>>();
    qDBusRegisterMetaType<BusMenuRemovedProperties>();
    qDBusRegisterMetaType<QList<BusMenuRemovedProperties>>();
    qDBusRegisterMetaType<BusMenuEvent>();
    qDBusRegisterMetaType<QList<BusMenuEvent>>();
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<QList<QStringList>>();
}

} // namespace zofra
