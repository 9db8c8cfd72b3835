// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QList>
#include <QVariant>
#include <QVariantMap>

#include <optional>
#include <tuple>

namespace zofra {

/// A value that travels on a bus as a structure: `members` is a tuple of pointers to its members, in order.
template<typename Value>
concept BusStructure = requires {
    Value::members;
};

template<BusStructure Value>
QDBusArgument& operator<<(QDBusArgument& argument, const Value& value) {
    argument.beginStructure();
    std::apply([&](auto... member) { (argument << ... << (value.*member)); }, Value::members);
    argument.endStructure();
    return argument;
}

template<BusStructure Value>
const QDBusArgument& operator>>(const QDBusArgument& argument, Value& value) {
    argument.beginStructure();
    std::apply([&](auto... member) { (argument >> ... >> (value.*member)); }, Value::members);
    argument.endStructure();
    return argument;
}

namespace dbus {

/// Makes these types known to the bus. May be called more than once.
template<typename... Values>
void registerTypes() {
    (qDBusRegisterMetaType<Values>(), ...);
}

/// The list that an argument of a call is, read no further than `most` entries; absent when it has more.
template<typename Value>
[[nodiscard]] std::optional<QList<Value>> boundedList(const QVariant& argument, int most) {
    if (argument.metaType() != QMetaType::fromType<QDBusArgument>())
        return argument.value<QList<Value>>();
    const auto encoded = qvariant_cast<QDBusArgument>(argument);
    QList<Value> list;
    encoded.beginArray();
    while (!encoded.atEnd() && list.size() <= most) {
        Value value;
        encoded >> value;
        list.append(value);
    }
    // Without this the library would never free the message.
    encoded.endArray();
    return list.size() <= most ? std::optional(list) : std::nullopt;
}

/// The map (a{sv}) that an argument of a call is, its values without their wrappers; absent when it has more
/// than `most` entries.
[[nodiscard]] inline std::optional<QVariantMap> boundedMap(const QVariant& argument, int most) {
    if (argument.metaType() != QMetaType::fromType<QDBusArgument>())
        return argument.toMap();
    const auto encoded = qvariant_cast<QDBusArgument>(argument);
    QVariantMap map;
    encoded.beginMap();
    int entries = 0;
    for (; !encoded.atEnd() && entries <= most; ++entries) {
        QString key;
        QDBusVariant value;
        encoded.beginMapEntry();
        encoded >> key >> value;
        encoded.endMapEntry();
        map.insert(key, value.variant());
    }
    encoded.endMap();
    return entries <= most ? std::optional(map) : std::nullopt;
}

} // namespace dbus
} // namespace zofra
