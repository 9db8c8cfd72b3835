// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DBusExportedObject.h"

#include <QDBusMetaType>
#include <QDBusVariant>
#include <QPointer>
#include <QStringList>

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

/// The interfaces that a caller means by this name; an empty one means all.
bool isMeant(const Interface& interface, const QString& name) {
    return name.isEmpty() || name == QLatin1String(interface.name);
}

/// The first of the members with this name; null where there is none.
template<typename Member>
const Member* find(const std::vector<Interface>& interfaces, std::vector<Member> Interface::*members,
                   const QString& interface, const QString& name) {
    for (const auto& one : interfaces) {
        for (const auto& member : one.*members) {
            if (isMeant(one, interface) && name == QLatin1String(member.name))
                return &member;
        }
    }
    return nullptr;
}

QList<QStringList> argumentsOf(const char* text) {
    QList<QStringList> arguments;
    for (const QString& one : QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts))
        arguments.append(one.split(u':'));
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
    return refused("InvalidArgs", u"%1 takes \"%2\", not \"%3\""_qs.arg(what, wanted, given));
}

Answer unknown(const char* kind, const QString& name) {
    return refused((QByteArray("Unknown") + kind).constData(),
                   u"There is no %1 \"%2\" here"_qs.arg(QString::fromLatin1(kind).toLower(),
                                                        name.left(quotedCharacters)));
}

// Only constants of this program are written here, so nothing has to be escaped.
QString argumentsXml(const char* arguments, const QString& direction = {}) {
    QString xml;
    for (const QStringList& argument : argumentsOf(arguments))
        xml +=
            u"      <arg name=\"%1\" type=\"%2\"%3/>\n"_qs.arg(argument.first(), argument.last(), direction);
    return xml;
}

QString memberXml(const char* kind, const char* name, const QString& arguments) {
    return u"    <%1 name=\"%2\">\n%3    </%1>\n"_qs.arg(QLatin1String(kind), QLatin1String(name), arguments);
}

QString propertyXml(const Property& property) {
    const auto xml = u"    <property name=\"%1\" type=\"%2\" access=\"%3\""_qs.arg(
        QLatin1String(property.name), QLatin1String(property.signature),
        property.set ? u"readwrite"_qs : u"read"_qs);
    if (property.changes == Property::Changes::areTold)
        return xml + u"/>\n"_qs;
    const auto emits = property.changes == Property::Changes::never ? u"const"_qs : u"false"_qs;
    return xml + u">\n      <annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\" "
                 u"value=\"%1\"/>\n    </property>\n"_qs.arg(emits);
}

} // namespace

Answer withinLimit(RateLimit& acts, const std::function<Answer()>& act) {
    return acts.take(std::chrono::steady_clock::now())
               ? act()
               : refused("LimitsExceeded", u"Too many acts at once"_qs);
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

void ExportedObject::replaceInterfaces(std::vector<Interface> interfaces) {
    m_interfaces = std::move(interfaces);
    m_told = toldValues();
}

std::vector<QVariantMap> ExportedObject::toldValues() const {
    std::vector<QVariantMap> values;
    for (const auto& interface : m_interfaces) {
        auto& told = values.emplace_back();
        for (const auto& property : interface.properties) {
            if (property.changes == Property::Changes::areTold)
                told.insert(QLatin1String(property.name), property.get());
        }
    }
    return values;
}

void ExportedObject::tellChangedProperties() {
    if (!m_connection)
        return;
    const auto before = std::exchange(m_told, toldValues());
    for (std::size_t i = 0; i < m_interfaces.size(); ++i) {
        QVariantMap changed = m_told[i];
        changed.removeIf([&](auto told) { return before[i].value(told.key()) == told.value(); });
        if (!changed.isEmpty())
            send(propertiesInterface.data(), "PropertiesChanged",
                 {QString::fromLatin1(m_interfaces[i].name), changed, QStringList()});
    }
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
        xml += u"  <interface name=\"%1\">\n"_qs.arg(QLatin1String(interface.name));
        for (const auto& method : interface.methods)
            xml += memberXml("method", method.name,
                             argumentsXml(method.in, u" direction=\"in\""_qs) +
                                 argumentsXml(method.out, u" direction=\"out\""_qs));
        for (const auto& signal : interface.signalList)
            xml += memberXml("signal", signal.name, argumentsXml(signal.arguments));
        for (const auto& property : interface.properties)
            xml += propertyXml(property);
        xml += u"  </interface>\n"_qs;
    }
    return xml;
}

bool ExportedObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    // The library describes objects itself, with our introspect() as a part.
    const bool isStandard = message.interface().startsWith(u"org.freedesktop.DBus.");
    if ((isStandard && message.interface() != propertiesInterface) ||
        (message.interface().isEmpty() && message.member() == u"Introspect"))
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
        return refused("LimitsExceeded", u"Too many calls at once"_qs);
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
    const QString wanted = member == u"Get"      ? u"ss"_qs
                           : member == u"GetAll" ? u"s"_qs
                           : member == u"Set"    ? u"ssv"_qs
                                                 : QString();
    if (wanted.isEmpty())
        return unknown("Method", member);
    if (message.signature() != wanted)
        return wrongTypes(member, wanted, message.signature());
    const QString interface = arguments[0].toString();
    if (std::ranges::none_of(m_interfaces, [&](const Interface& one) { return isMeant(one, interface); }))
        return unknown("Interface", interface);
    if (member == u"GetAll") {
        QVariantMap all;
        for (const auto& one : m_interfaces) {
            for (const auto& property : one.properties) {
                if (isMeant(one, interface))
                    all.insert(QLatin1String(property.name), property.get());
            }
        }
        return {{all}};
    }
    const auto* property = find(m_interfaces, &Interface::properties, interface, arguments[1].toString());
    if (!property)
        return unknown("Property", arguments[1].toString());
    if (member == u"Get")
        return {{QVariant::fromValue(QDBusVariant(property->get()))}};

    const QString name = QString::fromLatin1(property->name);
    if (!property->set)
        return refused("PropertyReadOnly", u"%1 can only be read"_qs.arg(name));
    const auto value = qvariant_cast<QDBusVariant>(arguments[2]).variant();
    if (signatureOf(value) != QLatin1String(property->signature))
        return wrongTypes(name, QString::fromLatin1(property->signature), signatureOf(value));
    const auto set = property->set;
    return {{}, set(value), {}};
}

} // namespace zofra::dbus
