// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DBusExportedObject.h"

#include <QDBusMetaType>
#include <QDBusVariant>
#include <QPointer>
#include <QStringList>
#include <QVariantMap>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

namespace zofra::dbus {
namespace {

const auto propertiesInterface = QLatin1String("org.freedesktop.DBus.Properties");
/// What a caller gets to see again of its own words.
constexpr int quotedCharacters = 100;
/// What one program may ask for, and all together: calls in one turn of the event loop (more than a panel
/// sends when it sees an item for the first time), calls a second in the long run, and seconds of processor a
/// second.
constexpr CallBudget::Limits ofOne{32, {250, 500}, {0.3, 1}};
constexpr CallBudget::Limits ofAll{96, {750, 1500}, {0.5, 2}};

/// Of this thread: what others use of a crowded machine is not the caller's fault.
std::chrono::duration<double> processorTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

bool isNamed(const char* name, const QString& wanted) {
    return wanted == QLatin1String(name);
}

/// The interfaces that a caller means by this name; an empty one means all.
bool isMeant(const Interface& interface, const QString& name) {
    return name.isEmpty() || isNamed(interface.name, name);
}

/// The first of the members with this name; null where there is none.
template<typename Member>
const Member* find(const std::vector<Interface>& interfaces, std::vector<Member> Interface::*members,
                   const QString& interface, const QString& name) {
    for (const auto& one : interfaces) {
        for (const auto& member : one.*members) {
            if (isMeant(one, interface) && isNamed(member.name, name))
                return &member;
        }
    }
    return nullptr;
}

QList<QStringList> argumentsOf(const char* text) {
    QList<QStringList> arguments;
    for (const QString& one : QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts))
        arguments.append(one.split(QLatin1Char(':')));
    return arguments;
}

QString signatureOf(const char* text) {
    QString signature;
    for (const QStringList& argument : argumentsOf(text))
        signature += argument.last();
    return signature;
}

QString signatureOf(const QVariant& value) {
    return QString::fromLatin1(QDBusMetaType::typeToSignature(value.metaType()));
}

Answer wrongTypes(const QString& what, const QString& wanted, const QString& given) {
    return refused("InvalidArgs", QStringLiteral("%1 takes \"%2\", not \"%3\"").arg(what, wanted, given));
}

Answer unknown(const char* kind, const QString& name) {
    return refused((QByteArray("Unknown") + kind).constData(),
                   QStringLiteral("There is no %1 \"%2\" here")
                       .arg(QString::fromLatin1(kind).toLower(), name.left(quotedCharacters)));
}

// Only constants of this program are written here, so nothing has to be escaped.
QString argumentsXml(const char* arguments, const char* direction) {
    QString xml;
    for (const QStringList& argument : argumentsOf(arguments)) {
        xml += QStringLiteral("      <arg name=\"%1\" type=\"%2\"").arg(argument.first(), argument.last());
        if (direction)
            xml += QStringLiteral(" direction=\"%1\"").arg(QLatin1String(direction));
        xml += QStringLiteral("/>\n");
    }
    return xml;
}

QString memberXml(const char* kind, const char* name, const QString& arguments) {
    return QStringLiteral("    <%1 name=\"%2\">\n%3    </%1>\n")
        .arg(QLatin1String(kind), QLatin1String(name), arguments);
}

QString propertyXml(const Property& property) {
    const auto xml = QStringLiteral("    <property name=\"%1\" type=\"%2\" access=\"%3\"")
                         .arg(QLatin1String(property.name), QLatin1String(property.signature),
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

Error error(const char* name, const QString& text) {
    return {QStringLiteral("org.freedesktop.DBus.Error.") + QLatin1String(name), text};
}

Answer refused(const char* name, const QString& text) {
    return {{}, error(name, text), {}};
}

Property constant(const char* name, const char* signature, const QVariant& value) {
    return {name, signature, [value] { return value; }, Property::Changes::never};
}

ExportedObject::ExportedObject(QString path, std::vector<Interface> interfaces)
    : m_path(std::move(path))
    , m_interfaces(std::move(interfaces))
    , m_all(ofAll) {}

ExportedObject::~ExportedObject() {
    if (m_connection)
        m_connection->unregisterObject(m_path);
}

bool ExportedObject::exportOn(const QDBusConnection& connection) {
    if (m_connection)
        m_connection->unregisterObject(m_path);
    m_connection = connection;
    m_told = toldValues();
    return m_connection->registerVirtualObject(m_path, this);
}

void ExportedObject::connectionLost() {
    m_connection.reset();
}

void ExportedObject::replaceInterfaces(std::vector<Interface> interfaces) {
    m_interfaces = std::move(interfaces);
    m_told = toldValues();
}

std::vector<std::vector<QVariant>> ExportedObject::toldValues() const {
    std::vector<std::vector<QVariant>> values;
    for (const auto& interface : m_interfaces) {
        auto& told = values.emplace_back();
        for (const auto& property : interface.properties)
            told.push_back(property.changes == Property::Changes::areTold ? property.get() : QVariant());
    }
    return values;
}

void ExportedObject::tellChangedProperties() {
    if (!m_connection)
        return;
    auto values = toldValues();
    for (std::size_t i = 0; i < m_interfaces.size(); ++i) {
        QVariantMap changed;
        for (std::size_t j = 0; j < values[i].size(); ++j) {
            if (values[i][j] != m_told[i][j])
                changed.insert(QLatin1String(m_interfaces[i].properties[j].name), values[i][j]);
        }
        if (!changed.isEmpty())
            send(propertiesInterface.data(), "PropertiesChanged",
                 {QString::fromLatin1(m_interfaces[i].name), changed, QStringList()});
    }
    m_told = std::move(values);
}

void ExportedObject::send(const char* interface, const char* signal, const QVariantList& arguments) const {
    if (!m_connection)
        return;
    auto message =
        QDBusMessage::createSignal(m_path, QString::fromLatin1(interface), QString::fromLatin1(signal));
    message.setArguments(arguments);
    m_connection->send(message);
}

QString ExportedObject::introspect(const QString& path) const {
    if (path != m_path)
        return {};
    QString xml;
    for (const auto& interface : m_interfaces) {
        xml += QStringLiteral("  <interface name=\"%1\">\n").arg(QLatin1String(interface.name));
        for (const auto& method : interface.methods)
            xml += memberXml("method", method.name,
                             argumentsXml(method.in, "in") + argumentsXml(method.out, "out"));
        for (const auto& signal : interface.signalList)
            xml += memberXml("signal", signal.name, argumentsXml(signal.arguments, nullptr));
        for (const auto& property : interface.properties)
            xml += propertyXml(property);
        xml += QStringLiteral("  </interface>\n");
    }
    return xml;
}

bool ExportedObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    // The library describes objects itself, with our introspect() as a part.
    const bool isStandard = message.interface().startsWith(QLatin1String("org.freedesktop.DBus."));
    if ((isStandard && message.interface() != propertiesInterface) ||
        (message.interface().isEmpty() && message.member() == QLatin1String("Introspect")))
        return false;
    // A handler may end this object: nothing of it is touched afterwards.
    const auto result = answerWithin(message);
    if (message.isReplyRequired()) {
        connection.send(result.error ? message.createErrorReply(result.error->name, result.error->text)
                                     : message.createReply(result.values));
    }
    if (result.afterwards)
        result.afterwards();
    return true;
}

Answer ExportedObject::answerWithin(const QDBusMessage& message) {
    // The turn ends when all that had arrived has been seen.
    if (!m_endOfTurn.isActive())
        m_endOfTurn.start(0, this);
    const auto now = std::chrono::steady_clock::now();
    auto caller = m_callers.find(message.service());
    if (caller == m_callers.end())
        caller = m_callers.insert(message.service(), CallBudget(ofOne));
    // What is refused to one does not count against the others.
    if (!caller->take(now) || !m_all.take(now))
        return refused("LimitsExceeded", QStringLiteral("Too many calls at once"));
    // The handler may end this object; then nobody counts any more.
    const QPointer<ExportedObject> alive(this);
    const auto before = processorTime();
    auto result = answer(message);
    if (alive) {
        const auto spent = processorTime() - before;
        m_all.spend(spent);
        if (const auto still = m_callers.find(message.service()); still != m_callers.end())
            still->spend(spent);
    }
    return result;
}

void ExportedObject::timerEvent(QTimerEvent*) {
    m_endOfTurn.stop();
    const auto now = std::chrono::steady_clock::now();
    m_all.endTurn();
    m_callers.removeIf([now](auto caller) {
        caller->endTurn();
        return caller->isUnused(now);
    });
}

Answer ExportedObject::answer(const QDBusMessage& message) const {
    if (message.interface() == propertiesInterface)
        return answerProperties(message);
    const auto* method = find(m_interfaces, &Interface::methods, message.interface(), message.member());
    if (!method)
        return unknown("Method", message.member());
    const QString wanted = signatureOf(method->in);
    if (message.signature() != wanted)
        return wrongTypes(message.member(), wanted, message.signature());
    // Copied, because the handler may end this object.
    const auto handler = method->handler;
    return handler(message.arguments());
}

Answer ExportedObject::answerProperties(const QDBusMessage& message) const {
    const auto arguments = message.arguments();
    const auto member = message.member();
    const QString wanted = member == QLatin1String("Get")      ? QStringLiteral("ss")
                           : member == QLatin1String("GetAll") ? QStringLiteral("s")
                           : member == QLatin1String("Set")    ? QStringLiteral("ssv")
                                                               : QString();
    if (wanted.isEmpty())
        return unknown("Method", member);
    if (message.signature() != wanted)
        return wrongTypes(member, wanted, message.signature());
    const QString interface = arguments[0].toString();
    if (std::none_of(m_interfaces.begin(), m_interfaces.end(),
                     [&](const Interface& one) { return isMeant(one, interface); }))
        return unknown("Interface", interface);
    if (member == QLatin1String("GetAll")) {
        QVariantMap all;
        for (const auto& one : m_interfaces) {
            for (const auto& property : one.properties) {
                if (isMeant(one, interface))
                    all.insert(QLatin1String(property.name), property.get());
            }
        }
        return {{all}, {}, {}};
    }
    const auto* property = find(m_interfaces, &Interface::properties, interface, arguments[1].toString());
    if (!property)
        return unknown("Property", arguments[1].toString());
    if (member == QLatin1String("Get"))
        return {{QVariant::fromValue(QDBusVariant(property->get()))}, {}, {}};

    const QString name = QString::fromLatin1(property->name);
    if (!property->set)
        return refused("PropertyReadOnly", QStringLiteral("%1 can only be read").arg(name));
    const auto value = qvariant_cast<QDBusVariant>(arguments[2]).variant();
    if (!isNamed(property->signature, signatureOf(value)))
        return wrongTypes(name, QString::fromLatin1(property->signature), signatureOf(value));
    const auto set = property->set;
    return {{}, set(value), {}};
}

} // namespace zofra::dbus
