// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayTypes.h"

#include <QtEndian>

namespace zofra {

BusPixmap BusPixmap::fromImage(const QImage& image) {
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    BusPixmap pixmap{argb.width(), argb.height(), QByteArray(argb.sizeInBytes(), Qt::Uninitialized)};
    qToBigEndian<quint32>(argb.constBits(), argb.sizeInBytes() / qsizetype{sizeof(quint32)},
                          pixmap.bytes.data());
    return pixmap;
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

void registerTrayTypes() {
    dbus::registerTypes<BusPixmap, QList<BusPixmap>, BusToolTip, BusMenuLayout, BusMenuProperties,
                        QList<BusMenuProperties>, BusMenuRemovedProperties, QList<BusMenuRemovedProperties>,
                        BusMenuEvent, QList<BusMenuEvent>, QList<int>, QList<QStringList>>();
}

} // namespace zofra
