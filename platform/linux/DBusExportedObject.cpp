// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DBusExportedObject.h"

#include <QDBusMetaType>
#include <QDBusVariant>
#include <QVariantMap>

#include <algorithm>

namespace zofra::dbus {
namespace {

const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const auto errorPrefix = QStringLiteral("org.freedesktop.DBus.Error.");

Answer failure(const QString& name, const QString& text) {
    return {{}, Error{errorPrefix + name, text}, {}};
}

Answer unknownInterface(const QString& name) {
    return failure(QStringLiteral("UnknownInterface"),
                   QStringLiteral("There is no interface \"%1\" here").arg(name));
}

template<typename Entry>
const Entry* findNamed(const std::vector<Entry>& entries, const QString& name) {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) { return entry.name == name; });
    return found == entries.end() ? nullptr : &*found;
}

QString signatureOf(const std::vector<Argument>& arguments) {
    QString signature;
    for (const auto& argument : arguments)
        signature += argument.signature;
    return signature;
}

QString signatureOf(const QVariant& value) {
    return QString::fromLatin1(QDBusMetaType::typeToSignature(value.metaType()));
}

/// Only constants of this program are written here, so nothing has to be escaped.
QString argumentXml(const Argument& argument, const char* direction) {
    QString xml = QStringLiteral("      <arg");
    if (!argument.name.isEmpty())
        xml += QStringLiteral(" name=\"%1\"").arg(argument.name);
    xml += QStringLiteral(" type=\"%1\"").arg(argument.signature);
    if (direction)
        xml += QStringLiteral(" direction=\"%1\"").arg(QLatin1String(direction));
    return xml + QStringLiteral("/>\n");
}

QString methodXml(const Method& method) {
    QString xml = QStringLiteral("    <method name=\"%1\">\n").arg(method.name);
    for (const auto& argument : method.in)
        xml += argumentXml(argument, "in");
    for (const auto& argument : method.out)
        xml += argumentXml(argument, "out");
    return xml + QStringLiteral("    </method>\n");
}

QString signalXml(const Signal& signal) {
    QString xml = QStringLiteral("    <signal name=\"%1\">\n").arg(signal.name);
    for (const auto& argument : signal.arguments)
        xml += argumentXml(argument, nullptr);
    return xml + QStringLiteral("    </signal>\n");
}

QString propertyXml(const Property& property) {
    auto xml = QStringLiteral("    <property name=\"%1\" type=\"%2\" access=\"%3\"")
                   .arg(property.name, property.signature,
                        property.set ? QStringLiteral("readwrite") : QStringLiteral("read"));
    if (property.changes == Property::Changes::areTold)
        return xml + QStringLiteral("/>\n");
    const auto emits =
        property.changes == Property::Changes::never ? QStringLiteral("const") : QStringLiteral("false");
    return xml +
           QStringLiteral(">\n      <annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\" "
                          "value=\"%1\"/>\n    </property>\n")
               .arg(emits);
}

} // namespace

ExportedObject::ExportedObject(QString path, std::vector<Interface> interfaces)
    : m_path(std::move(path))
    , m_interfaces(std::move(interfaces)) {}

ExportedObject::~ExportedObject() {
    if (m_connection)
        m_connection->unregisterObject(m_path);
}

bool ExportedObject::exportOn(const QDBusConnection& connection) {
    if (m_connection)
        m_connection->unregisterObject(m_path);
    m_connection = connection;
    m_told.clear();
    for (const auto& interface : m_interfaces) {
        auto& told = m_told.emplace_back();
        for (const auto& property : interface.properties)
            told.push_back(property.get());
    }
    return m_connection->registerVirtualObject(m_path, this);
}

void ExportedObject::connectionLost() {
    m_connection.reset();
}

void ExportedObject::tellChangedProperties() {
    if (!m_connection)
        return;
    for (std::size_t i = 0; i < m_interfaces.size(); ++i) {
        const auto& interface = m_interfaces[i];
        QVariantMap changed;
        for (std::size_t j = 0; j < interface.properties.size(); ++j) {
            const auto& property = interface.properties[j];
            if (property.changes != Property::Changes::areTold)
                continue;
            auto value = property.get();
            if (value == m_told[i][j])
                continue;
            changed.insert(property.name, value);
            m_told[i][j] = std::move(value);
        }
        if (changed.isEmpty())
            continue;
        auto signal =
            QDBusMessage::createSignal(m_path, propertiesInterface, QStringLiteral("PropertiesChanged"));
        signal << interface.name << changed << QStringList();
        m_connection->send(signal);
    }
}

QString ExportedObject::introspect(const QString& /*path*/) const {
    QString xml;
    for (const auto& interface : m_interfaces) {
        xml += QStringLiteral("  <interface name=\"%1\">\n").arg(interface.name);
        for (const auto& method : interface.methods)
            xml += methodXml(method);
        for (const auto& signal : interface.signalList)
            xml += signalXml(signal);
        for (const auto& property : interface.properties)
            xml += propertyXml(property);
        xml += QStringLiteral("  </interface>\n");
    }
    return xml;
}

bool ExportedObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    // The library describes objects itself, with our introspect() as a part.
    if (message.interface() == QStringLiteral("org.freedesktop.DBus.Introspectable") ||
        (message.interface().isEmpty() && message.member() == QStringLiteral("Introspect")))
        return false;
    // A handler may end this object: nothing of it is touched afterwards.
    const auto result = answer(message);
    if (message.isReplyRequired()) {
        connection.send(result.error ? message.createErrorReply(result.error->name, result.error->text)
                                     : message.createReply(result.values));
    }
    if (result.afterwards)
        result.afterwards();
    return true;
}

Answer ExportedObject::answer(const QDBusMessage& message) const {
    const auto name = message.interface();
    if (name == propertiesInterface)
        return answerProperties(message);
    const Method* method = nullptr;
    if (name.isEmpty()) {
        for (const auto& interface : m_interfaces) {
            if (!method)
                method = findNamed(interface.methods, message.member());
        }
    } else if (const auto* interface = findInterface(name)) {
        method = findNamed(interface->methods, message.member());
    } else {
        return unknownInterface(name);
    }
    if (!method)
        return failure(QStringLiteral("UnknownMethod"),
                       QStringLiteral("There is no method \"%1\" here").arg(message.member()));
    if (message.signature() != signatureOf(method->in))
        return failure(QStringLiteral("InvalidArgs"),
                       QStringLiteral("%1 takes \"%2\", not \"%3\"")
                           .arg(method->name, signatureOf(method->in), message.signature()));
    // Copied, because the handler may end this object.
    const auto handler = method->handler;
    return handler(message.arguments());
}

Answer ExportedObject::answerProperties(const QDBusMessage& message) const {
    const auto arguments = message.arguments();
    const auto member = message.member();
    const QString expected = member == QStringLiteral("Get")      ? QStringLiteral("ss")
                             : member == QStringLiteral("GetAll") ? QStringLiteral("s")
                             : member == QStringLiteral("Set")    ? QStringLiteral("ssv")
                                                                  : QString();
    if (expected.isEmpty())
        return failure(QStringLiteral("UnknownMethod"),
                       QStringLiteral("There is no method \"%1\" here").arg(member));
    if (message.signature() != expected)
        return failure(
            QStringLiteral("InvalidArgs"),
            QStringLiteral("%1 takes \"%2\", not \"%3\"").arg(member, expected, message.signature()));
    const auto* interface = findInterface(arguments[0].toString());
    if (!interface)
        return unknownInterface(arguments[0].toString());
    if (expected.size() == 1)
        return getAll(*interface);
    const auto* property = findNamed(interface->properties, arguments[1].toString());
    if (!property)
        return failure(QStringLiteral("UnknownProperty"),
                       QStringLiteral("There is no property \"%1\" here").arg(arguments[1].toString()));
    if (expected.size() == 2)
        return {{QVariant::fromValue(QDBusVariant(property->get()))}, {}, {}};

    if (!property->set)
        return failure(QStringLiteral("PropertyReadOnly"),
                       QStringLiteral("%1 can only be read").arg(property->name));
    const auto value = qvariant_cast<QDBusVariant>(arguments[2]).variant();
    if (signatureOf(value) != property->signature)
        return failure(QStringLiteral("InvalidArgs"),
                       QStringLiteral("%1 is \"%2\", not \"%3\"")
                           .arg(property->name, property->signature, signatureOf(value)));
    const auto set = property->set;
    return {{}, set(value), {}};
}

Answer ExportedObject::getAll(const Interface& interface) const {
    QVariantMap all;
    for (const auto& property : interface.properties)
        all.insert(property.name, property.get());
    return {{all}, {}, {}};
}

const Interface* ExportedObject::findInterface(const QString& name) const {
    return findNamed(m_interfaces, name);
}

} // namespace zofra::dbus
