// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/DBusMenuObject.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

const auto menuInterface = QLatin1String("com.canonical.dbusmenu");
const auto propertiesInterface = QLatin1String("org.freedesktop.DBus.Properties");
constexpr auto longestShowing = std::chrono::seconds(60);
/// More numbers than any menu of ours has.
constexpr qsizetype maxGroup = 4096;

QDBusMessage invalidArguments(const QDBusMessage& message, const QString& text) {
    return message.createErrorReply(QDBusError::InvalidArgs, text);
}

QDBusMessage unknownItem(const QDBusMessage& message, int id) {
    return invalidArguments(message, QStringLiteral("There is no menu item %1").arg(id));
}

template<typename Value>
QList<Value> listArgument(const QVariant& argument) {
    auto list = qdbus_cast<QList<Value>>(argument);
    if (list.size() > maxGroup)
        list.resize(maxGroup);
    return list;
}

/// What a property that an item does not name has all the same; invalid for what the protocol does not know.
QVariant protocolDefault(const QString& property) {
    static const QVariantMap defaults{
        {QStringLiteral("type"), QStringLiteral("standard")},
        {QStringLiteral("label"), QString()},
        {QStringLiteral("enabled"), true},
        {QStringLiteral("visible"), true},
        {QStringLiteral("icon-name"), QString()},
        {QStringLiteral("icon-data"), QByteArray()},
        {QStringLiteral("shortcut"), QVariant::fromValue(QList<QStringList>())},
        {QStringLiteral("toggle-type"), QString()},
        {QStringLiteral("toggle-state"), -1},
        {QStringLiteral("children-display"), QString()},
        {QStringLiteral("disposition"), QStringLiteral("normal")},
    };
    return defaults.value(property);
}

const char* const introspection = R"xml(
 <interface name="com.canonical.dbusmenu">
  <property name="Version" type="u" access="read"/>
  <property name="TextDirection" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="IconThemePath" type="as" access="read"/>
  <method name="GetLayout">
   <arg type="i" name="parentId" direction="in"/>
   <arg type="i" name="recursionDepth" direction="in"/>
   <arg type="as" name="propertyNames" direction="in"/>
   <arg type="u" name="revision" direction="out"/>
   <arg type="(ia{sv}av)" name="layout" direction="out"/>
  </method>
  <method name="GetGroupProperties">
   <arg type="ai" name="ids" direction="in"/>
   <arg type="as" name="propertyNames" direction="in"/>
   <arg type="a(ia{sv})" name="properties" direction="out"/>
  </method>
  <method name="GetProperty">
   <arg type="i" name="id" direction="in"/>
   <arg type="s" name="name" direction="in"/>
   <arg type="v" name="value" direction="out"/>
  </method>
  <method name="Event">
   <arg type="i" name="id" direction="in"/>
   <arg type="s" name="eventId" direction="in"/>
   <arg type="v" name="data" direction="in"/>
   <arg type="u" name="timestamp" direction="in"/>
  </method>
  <method name="EventGroup">
   <arg type="a(isvu)" name="events" direction="in"/>
   <arg type="ai" name="idErrors" direction="out"/>
  </method>
  <method name="AboutToShow">
   <arg type="i" name="id" direction="in"/>
   <arg type="b" name="needUpdate" direction="out"/>
  </method>
  <method name="AboutToShowGroup">
   <arg type="ai" name="ids" direction="in"/>
   <arg type="ai" name="updatesNeeded" direction="out"/>
   <arg type="ai" name="idErrors" direction="out"/>
  </method>
  <signal name="ItemsPropertiesUpdated">
   <arg type="a(ia{sv})" name="updatedProps"/>
   <arg type="a(ias)" name="removedProps"/>
  </signal>
  <signal name="LayoutUpdated">
   <arg type="u" name="revision"/>
   <arg type="i" name="parent"/>
  </signal>
  <signal name="ItemActivationRequested">
   <arg type="i" name="id"/>
   <arg type="u" name="timestamp"/>
  </signal>
 </interface>
)xml";

} // namespace

DBusMenuObject::DBusMenuObject(QDBusConnection connection, QString path, Environment environment)
    : m_connection(std::move(connection))
    , m_path(std::move(path))
    , m_environment(std::move(environment))
    , m_tree(m_environment.iconProperties) {
    registerTrayTypes();
    m_connection.registerVirtualObject(m_path, this);
}

DBusMenuObject::~DBusMenuObject() {
    m_connection.unregisterObject(m_path);
}

void DBusMenuObject::menuDidChange() {
    // A panel that never asked has nothing to be corrected.
    if (m_isCheckPosted || m_fetchedRevision == 0)
        return;
    m_isCheckPosted = true;
    m_environment.mainQueue.async([this, alive = std::weak_ptr(m_alive)] {
        if (!alive.expired())
            checkForChange();
    });
}

void DBusMenuObject::checkForChange() {
    m_isCheckPosted = false;
    if (!m_shown)
        rebuild();
}

bool DBusMenuObject::rebuild() {
    const Menu menu = m_environment.provider ? m_environment.provider() : Menu();
    if (m_tree.replace(menu) == DBusMenuTree::Change::content) {
        ++m_revision;
        // Whoever asked is not the only one who may hold a layout: another panel would never hear of the
        // change.
        if (m_fetchedRevision != 0)
            emitLayoutUpdated();
    }
    return m_fetchedRevision != m_revision;
}

void DBusMenuObject::emitLayoutUpdated() {
    auto signal = QDBusMessage::createSignal(m_path, menuInterface, QStringLiteral("LayoutUpdated"));
    signal << m_revision << 0;
    m_connection.send(signal);
}

void DBusMenuObject::handleEvent(int id, const QString& eventId) {
    if (id == 0 && eventId == QLatin1String("opened")) {
        m_tree.forgetMenuBefore();
        // Not every panel says when it closes the menu again.
        m_shown = m_environment.mainQueue.startTimer(longestShowing, MainQueue::Repeat::once, [this] {
            m_shown.reset();
            menuDidChange();
        });
    } else if (id == 0 && eventId == QLatin1String("closed")) {
        m_shown.reset();
        menuDidChange();
    } else if (eventId == QLatin1String("clicked")) {
        const MenuItem* found = m_tree.meantBy(id);
        if (!found || !found->isEnabled || !found->action)
            return;
        // The action may rebuild the menu, or end this object.
        const MenuItem sender = *found;
        sender.action(sender);
    }
}

QString DBusMenuObject::introspect(const QString& path) const {
    return path == m_path ? QString::fromLatin1(introspection) : QString();
}

bool DBusMenuObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const QString interface = message.interface();
    QDBusMessage reply;
    bool isKnown = false;
    if (interface == propertiesInterface)
        isKnown = handlePropertiesCall(message, reply);
    else if (interface == menuInterface || interface.isEmpty())
        isKnown = handleMenuCall(message, reply);
    else if (interface.startsWith(QLatin1String("org.freedesktop.DBus.")))
        return false;
    if (!isKnown)
        reply = message.createErrorReply(QDBusError::UnknownMethod,
                                         QStringLiteral("The menu has no method %1").arg(message.member()));
    if (message.isReplyRequired())
        connection.send(reply);
    return true;
}

bool DBusMenuObject::handleMenuCall(const QDBusMessage& message, QDBusMessage& reply) {
    const QString call = message.member() + QLatin1Char(':') + message.signature();
    if (call == QLatin1String("GetLayout:iias")) {
        reply = getLayout(message);
    } else if (call == QLatin1String("GetGroupProperties:aias")) {
        reply = getGroupProperties(message);
    } else if (call == QLatin1String("GetProperty:is")) {
        reply = getProperty(message);
    } else if (call == QLatin1String("Event:isvu")) {
        const int id = message.arguments().at(0).toInt();
        reply = message.createReply();
        handleEvent(id, message.arguments().at(1).toString());
    } else if (call == QLatin1String("EventGroup:a(isvu)")) {
        reply = eventGroup(message);
    } else if (call == QLatin1String("AboutToShow:i")) {
        reply = aboutToShow(message);
    } else if (call == QLatin1String("AboutToShowGroup:ai")) {
        reply = aboutToShowGroup(message);
    } else {
        return false;
    }
    return true;
}

QDBusMessage DBusMenuObject::getLayout(const QDBusMessage& message) {
    const int id = message.arguments().at(0).toInt();
    // While the menu is open, a panel asking again (for a submenu, say) gets what it already shows.
    if (id == 0) {
        if (!m_shown)
            rebuild();
        m_fetchedRevision = m_revision;
    }
    const auto layout =
        m_tree.layout(id, message.arguments().at(1).toInt(), message.arguments().at(2).toStringList());
    if (!layout)
        return unknownItem(message, id);
    return message.createReply({QVariant::fromValue(m_revision), QVariant::fromValue(*layout)});
}

QDBusMessage DBusMenuObject::getGroupProperties(const QDBusMessage& message) const {
    QList<int> ids = listArgument<int>(message.arguments().at(0));
    const QStringList names = message.arguments().at(1).toStringList();
    if (ids.isEmpty())
        ids = m_tree.ids();
    QList<BusMenuProperties> answer;
    for (const int id : std::as_const(ids)) {
        if (const auto properties = m_tree.properties(id, names))
            answer.append({id, *properties});
    }
    return message.createReply(QVariant::fromValue(answer));
}

QDBusMessage DBusMenuObject::getProperty(const QDBusMessage& message) const {
    const int id = message.arguments().at(0).toInt();
    const QString name = message.arguments().at(1).toString();
    const auto properties = m_tree.properties(id, {name});
    const QVariant value = properties ? properties->value(name, protocolDefault(name)) : QVariant();
    if (!value.isValid())
        return invalidArguments(message, QStringLiteral("Menu item %1 has no such property").arg(id));
    return message.createReply(QVariant::fromValue(QDBusVariant(value)));
}

QDBusMessage DBusMenuObject::eventGroup(const QDBusMessage& message) {
    const auto events = listArgument<BusMenuEvent>(message.arguments().at(0));
    QList<int> unknown;
    for (const BusMenuEvent& one : events) {
        if (!m_tree.contains(one.id))
            unknown.append(one.id);
    }
    if (!events.isEmpty() && unknown.size() == events.size())
        return invalidArguments(message, QStringLiteral("There is none of these menu items"));
    const auto reply = message.createReply(QVariant::fromValue(unknown));
    const auto alive = std::weak_ptr(m_alive);
    for (const BusMenuEvent& one : events) {
        if (alive.expired())
            break;
        handleEvent(one.id, one.eventId);
    }
    return reply;
}

QDBusMessage DBusMenuObject::aboutToShow(const QDBusMessage& message) {
    const int id = message.arguments().at(0).toInt();
    if (id == 0) {
        const bool needsUpdate = rebuild();
        m_tree.forgetMenuBefore();
        return message.createReply(QVariant::fromValue(needsUpdate));
    }
    return m_tree.contains(id) ? message.createReply(QVariant::fromValue(false)) : unknownItem(message, id);
}

QDBusMessage DBusMenuObject::aboutToShowGroup(const QDBusMessage& message) {
    const auto ids = listArgument<int>(message.arguments().at(0));
    QList<int> updates;
    QList<int> unknown;
    for (const int id : ids) {
        if (id == 0 && rebuild())
            updates.append(id);
        else if (!m_tree.contains(id))
            unknown.append(id);
    }
    return message.createReply({QVariant::fromValue(updates), QVariant::fromValue(unknown)});
}

QVariantMap DBusMenuObject::objectProperties() const {
    const bool rightToLeft = QGuiApplication::layoutDirection() == Qt::RightToLeft;
    return {{QStringLiteral("Version"), 3U},
            {QStringLiteral("TextDirection"), rightToLeft ? QStringLiteral("rtl") : QStringLiteral("ltr")},
            {QStringLiteral("Status"), QStringLiteral("normal")},
            {QStringLiteral("IconThemePath"), m_environment.iconThemePath}};
}

bool DBusMenuObject::handlePropertiesCall(const QDBusMessage& message, QDBusMessage& reply) const {
    const auto properties = objectProperties();
    const auto arguments = message.arguments();
    if (message.member() == QLatin1String("GetAll") && message.signature() == QLatin1String("s")) {
        const bool isOurs =
            arguments.at(0).toString().isEmpty() || arguments.at(0).toString() == menuInterface;
        reply = message.createReply(isOurs ? properties : QVariantMap());
        return true;
    }
    if (message.member() == QLatin1String("Get") && message.signature() == QLatin1String("ss")) {
        const QString name = arguments.at(1).toString();
        const bool isOurs =
            arguments.at(0).toString().isEmpty() || arguments.at(0).toString() == menuInterface;
        reply = isOurs && properties.contains(name)
                    ? message.createReply(QVariant::fromValue(QDBusVariant(properties.value(name))))
                    : message.createErrorReply(QDBusError::UnknownProperty,
                                               QStringLiteral("The menu has no property %1").arg(name));
        return true;
    }
    if (message.member() == QLatin1String("Set") && message.signature() == QLatin1String("ssv")) {
        reply = message.createErrorReply(QDBusError::PropertyReadOnly,
                                         QStringLiteral("The menu's properties can only be read"));
        return true;
    }
    return false;
}

} // namespace zofra
