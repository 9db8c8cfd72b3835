// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace zofra::dbus {

/// The list that an argument of a call is, read no further than `most` entries; absent when it has more.
template<typename Value>
[[nodiscard]] std::optional<QList<Value>> boundedList(const QVariant& argument, int most) {
    if (argument.metaType() != QMetaType::fromType<QDBusArgument>())
        return argument.value<QList<Value>>();
    const auto encoded = qvariant_cast<QDBusArgument>(argument);
    QList<Value> list;
    encoded.beginArray();
    while (!encoded.atEnd()) {
        if (list.size() == most)
            return std::nullopt;
        Value value;
        encoded >> value;
        list.append(value);
    }
    encoded.endArray();
    return list;
}

/// The map (a{sv}) that an argument of a call is, its values without their wrappers; absent when it has more
/// than `most` entries.
[[nodiscard]] inline std::optional<QVariantMap> boundedMap(const QVariant& argument, int most) {
    if (argument.metaType() != QMetaType::fromType<QDBusArgument>())
        return argument.toMap();
    const auto encoded = qvariant_cast<QDBusArgument>(argument);
    QVariantMap map;
    encoded.beginMap();
    for (int entries = 0; !encoded.atEnd(); ++entries) {
        if (entries == most)
            return std::nullopt;
        QString key;
        QDBusVariant value;
        encoded.beginMapEntry();
        encoded >> key >> value;
        encoded.endMapEntry();
        map.insert(key, value.variant());
    }
    encoded.endMap();
    return map;
}

} // namespace zofra::dbus
