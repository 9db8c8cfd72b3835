// SPDX-License-Identifier: GPL-3.0-or-later
// Any call that anybody on the bus can make, to an object made from tables. No bus is there: what counts is
// what reaches the handlers.
#include "fuzz/FuzzBytes.h"
#include "fuzz/FuzzInput.h"
#include "platform/linux/DBusExportedObject.h"

#include <QDBusObjectPath>
#include <QDBusVariant>

namespace {

using namespace zofra;

const QString path = QStringLiteral("/object");

/// What a handler must have been given.
bool isOfType(const QVariant& value, int type) {
    return value.userType() == type;
}

dbus::Interface table(double& volume) {
    const auto one = [](const char* name, const char* in, int type) {
        return dbus::Method{name, in, "", [type](const QVariantList& arguments) {
                                fuzz::require(arguments.size() == 1 && isOfType(arguments[0], type));
                                return dbus::Answer{arguments, {}, {}};
                            }};
    };
    const auto nothing = [](const QVariantList& arguments) {
        fuzz::require(arguments.isEmpty());
        return dbus::Answer();
    };
    const auto setVolume = [&volume](const QVariant& value) -> std::optional<dbus::Error> {
        fuzz::require(isOfType(value, QMetaType::Double));
        volume = value.toDouble();
        return std::nullopt;
    };
    return {
        "org.example.Player",
        {one("Take_1", "value:s", QMetaType::QString),
         one("Take_2", "value:as", QMetaType::QStringList),
         {"Nothing", "", "", nothing}},
        {},
        {{"Volume", "d", [&volume] { return QVariant(volume); }, dbus::Property::Changes::areTold, setVolume},
         dbus::constant("Fixed", "s", QStringLiteral("always"))}};
}

QVariant wrapped(fuzz::Input& input) {
    const auto value = input.value();
    return input.byte() % 2 == 0 && value.isValid() ? QVariant::fromValue(QDBusVariant(value)) : value;
}

QDBusMessage call(fuzz::Input& input) {
    const auto interface =
        input.oneOf({QStringLiteral("org.example.Player"), QStringLiteral("org.freedesktop.DBus.Properties"),
                     QString(), QStringLiteral("org.example.Unknown")});
    const auto member = input.oneOf({QStringLiteral("Take_1"), QStringLiteral("Take_2"),
                                     QStringLiteral("Nothing"), QStringLiteral("Get"), QStringLiteral("Set"),
                                     QStringLiteral("GetAll"), QStringLiteral("Unknown")});
    auto message = QDBusMessage::createMethodCall(QString(), path, interface, member);
    QVariantList arguments;
    for (auto count = input.byte() % 5; count > 0; --count) {
        arguments << (input.byte() % 3 == 0
                          ? QVariant(input.oneOf({QStringLiteral("org.example.Player"),
                                                  QStringLiteral("Volume"), QStringLiteral("Fixed")}))
                          : wrapped(input));
    }
    message.setArguments(arguments);
    return message;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    double volume = 0;
    dbus::ExportedObject object(path, {table(volume)});
    const QDBusConnection none(QStringLiteral("none"));
    for (int calls = 0; calls < 16 && !input.isEmpty(); ++calls)
        object.handleMessage(call(input), none);
    fuzz::require(object.introspect(path).contains(QStringLiteral("org.example.Player")));
    return 0;
}
