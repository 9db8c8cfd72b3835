// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/StatusNotifierObject.h"

#include <QDBusError>
#include <QDBusObjectPath>

#include <type_traits>
#include <utility>

namespace zofra {

namespace {

const auto itemInterface = QLatin1String("org.kde.StatusNotifierItem");
const auto propertiesInterface = QLatin1String("org.freedesktop.DBus.Properties");

const char* const commonIntrospection = R"xml(
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="IconAccessibleDesc" type="s" access="read"/>
  <property name="OverlayIconName" type="s" access="read"/>
  <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionIconName" type="s" access="read"/>
  <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionAccessibleDesc" type="s" access="read"/>
  <property name="AttentionMovieName" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="XAyatanaLabel" type="s" access="read"/>
  <property name="XAyatanaLabelGuide" type="s" access="read"/>
  <property name="XAyatanaIconAccessibleDesc" type="s" access="read"/>
  <property name="XAyatanaOrderingIndex" type="u" access="read"/>
  <method name="ContextMenu">
   <arg type="i" name="x" direction="in"/>
   <arg type="i" name="y" direction="in"/>
  </method>
  <method name="SecondaryActivate">
   <arg type="i" name="x" direction="in"/>
   <arg type="i" name="y" direction="in"/>
  </method>
  <method name="XAyatanaSecondaryActivate">
   <arg type="u" name="timestamp" direction="in"/>
  </method>
  <method name="Scroll">
   <arg type="i" name="delta" direction="in"/>
   <arg type="s" name="orientation" direction="in"/>
  </method>
  <method name="ProvideXdgActivationToken">
   <arg type="s" name="token" direction="in"/>
  </method>
  <signal name="NewTitle"/>
  <signal name="NewIcon"/>
  <signal name="NewAttentionIcon"/>
  <signal name="NewOverlayIcon"/>
  <signal name="NewToolTip"/>
  <signal name="NewStatus">
   <arg type="s" name="status"/>
  </signal>
  <signal name="XAyatanaNewLabel">
   <arg type="s" name="label"/>
   <arg type="s" name="guide"/>
  </signal>
)xml";

const char* const directIntrospection = R"xml(
  <method name="Activate">
   <arg type="i" name="x" direction="in"/>
   <arg type="i" name="y" direction="in"/>
  </method>
)xml";

const char* const hostmenuIntrospection = R"xml(
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
)xml";

template<typename... Arguments>
void call(const std::function<void(Arguments...)>& handler, std::type_identity_t<Arguments>... arguments) {
    // The handler may end the object that holds it.
    const auto copy = handler;
    if (copy)
        copy(arguments...);
}

} // namespace

StatusNotifierObject::StatusNotifierObject(QDBusConnection connection, QString path, QString menuPath,
                                           Handlers handlers)
    : m_connection(std::move(connection))
    , m_path(std::move(path))
    , m_menuPath(std::move(menuPath))
    , m_handlers(std::move(handlers)) {
    registerTrayTypes();
    m_connection.registerVirtualObject(m_path, this);
}

StatusNotifierObject::~StatusNotifierObject() {
    m_connection.unregisterObject(m_path);
}

void StatusNotifierObject::setWay(Way way, ToolTipText toolTipText) {
    m_way = way;
    m_toolTipText = toolTipText;
}

void StatusNotifierObject::setContent(StatusNotifierContent content) {
    const StatusNotifierContent before = std::exchange(m_content, std::move(content));
    if (before.title != m_content.title)
        emitSignal("NewTitle");
    if (before.iconName != m_content.iconName || before.symbolName != m_content.symbolName ||
        before.iconAccessibleDescription != m_content.iconAccessibleDescription)
        emitSignal("NewIcon");
    if (before.toolTip != m_content.toolTip)
        emitSignal("NewToolTip");
    if (before.label != m_content.label)
        emitSignal("XAyatanaNewLabel", {m_content.label, m_content.label});
}

void StatusNotifierObject::emitSignal(const char* name, const QVariantList& arguments) {
    auto signal = QDBusMessage::createSignal(m_path, itemInterface, QString::fromLatin1(name));
    signal.setArguments(arguments);
    m_connection.send(signal);
}

QString StatusNotifierObject::introspect(const QString& path) const {
    if (path != m_path)
        return {};
    return QStringLiteral(" <interface name=\"%1\">").arg(itemInterface) +
           QString::fromLatin1(commonIntrospection) +
           QString::fromLatin1(m_way == Way::direct ? directIntrospection : hostmenuIntrospection) +
           QStringLiteral(" </interface>\n");
}

bool StatusNotifierObject::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const QString interface = message.interface();
    QDBusMessage reply;
    if (interface == propertiesInterface) {
        if (!handlePropertiesCall(message, reply))
            reply = message.createErrorReply(QDBusError::UnknownMethod, message.member());
    } else if (interface.startsWith(QLatin1String("org.freedesktop.DBus."))) {
        return false;
    } else if ((interface == itemInterface || interface.isEmpty()) && handleItemCall(message)) {
        reply = message.createReply();
    } else {
        // Panels take this answer, and no other, as "show the menu instead".
        reply = message.createErrorReply(
            QDBusError::UnknownMethod,
            QStringLiteral("The status item has no method %1").arg(message.member()));
    }
    // Also after a click that has ended this object: message and connection are the caller's.
    if (message.isReplyRequired())
        connection.send(reply);
    return true;
}

bool StatusNotifierObject::handleItemCall(const QDBusMessage& message) {
    const QString name = message.member();
    const QString signature = message.signature();
    const auto arguments = message.arguments();
    if (signature == QLatin1String("ii")) {
        const QPoint point(arguments.at(0).toInt(), arguments.at(1).toInt());
        if (name == QLatin1String("Activate") && m_way == Way::direct)
            call(m_handlers.activate, point);
        else if (name == QLatin1String("ContextMenu"))
            call(m_handlers.contextMenu, point);
        else if (name == QLatin1String("SecondaryActivate"))
            call(m_handlers.secondaryActivate);
        else
            return false;
        return true;
    }
    if (name == QLatin1String("XAyatanaSecondaryActivate") && signature == QLatin1String("u")) {
        call(m_handlers.secondaryActivate);
    } else if (name == QLatin1String("Scroll") && signature == QLatin1String("is")) {
        // Wheels that tilt have no meaning here.
        if (arguments.at(1).toString().compare(QLatin1String("horizontal"), Qt::CaseInsensitive) != 0)
            call(m_handlers.scroll, arguments.at(0).toInt());
    } else if (name == QLatin1String("ProvideXdgActivationToken") && signature == QLatin1String("s")) {
        call(m_handlers.activationToken, arguments.at(0).toString());
    } else {
        return false;
    }
    return true;
}

BusToolTip StatusNotifierObject::toolTip() const {
    // All lines in the title: most panels read the text below it as markup.
    return {{},
            {},
            m_toolTipText == ToolTipText::markup ? m_content.toolTip.toHtmlEscaped() : m_content.toolTip,
            {}};
}

QVariantMap StatusNotifierObject::properties() const {
    const auto noPixmaps = QVariant::fromValue(QList<BusPixmap>());
    const auto pixmaps = m_handlers.pixmaps ? m_handlers.pixmaps(m_content.symbolName) : QList<BusPixmap>();
    QVariantMap map{
        {QStringLiteral("Category"), QStringLiteral("ApplicationStatus")},
        {QStringLiteral("Id"), QStringLiteral("zofrazofra")},
        {QStringLiteral("Title"), m_content.title},
        {QStringLiteral("Status"), QStringLiteral("Active")},
        {QStringLiteral("WindowId"), 0},
        {QStringLiteral("IconThemePath"), QString()},
        {QStringLiteral("IconName"), m_content.iconName},
        {QStringLiteral("IconPixmap"), QVariant::fromValue(pixmaps)},
        {QStringLiteral("IconAccessibleDesc"), m_content.iconAccessibleDescription},
        {QStringLiteral("OverlayIconName"), QString()},
        {QStringLiteral("OverlayIconPixmap"), noPixmaps},
        {QStringLiteral("AttentionIconName"), QString()},
        {QStringLiteral("AttentionIconPixmap"), noPixmaps},
        {QStringLiteral("AttentionAccessibleDesc"), QString()},
        {QStringLiteral("AttentionMovieName"), QString()},
        {QStringLiteral("ToolTip"), QVariant::fromValue(toolTip())},
        {QStringLiteral("XAyatanaLabel"), m_content.label},
        {QStringLiteral("XAyatanaLabelGuide"), m_content.label},
        {QStringLiteral("XAyatanaIconAccessibleDesc"), m_content.iconAccessibleDescription},
        {QStringLiteral("XAyatanaOrderingIndex"), 0U},
    };
    if (m_way == Way::hostmenu) {
        map.insert(QStringLiteral("ItemIsMenu"), true);
        map.insert(QStringLiteral("Menu"), QVariant::fromValue(QDBusObjectPath(m_menuPath)));
    }
    return map;
}

bool StatusNotifierObject::handlePropertiesCall(const QDBusMessage& message, QDBusMessage& reply) const {
    const auto arguments = message.arguments();
    const QString interface = arguments.value(0).toString();
    const bool isOurs = interface.isEmpty() || interface == itemInterface;
    if (message.member() == QLatin1String("GetAll") && message.signature() == QLatin1String("s")) {
        reply = message.createReply(isOurs ? properties() : QVariantMap());
        return true;
    }
    if (message.member() == QLatin1String("Get") && message.signature() == QLatin1String("ss")) {
        const auto map = properties();
        const QString name = arguments.at(1).toString();
        reply =
            isOurs && map.contains(name)
                ? message.createReply(QVariant::fromValue(QDBusVariant(map.value(name))))
                : message.createErrorReply(QDBusError::UnknownProperty,
                                           QStringLiteral("The status item has no property %1").arg(name));
        return true;
    }
    if (message.member() == QLatin1String("Set") && message.signature() == QLatin1String("ssv")) {
        reply = message.createErrorReply(QDBusError::PropertyReadOnly,
                                         QStringLiteral("The status item's properties can only be read"));
        return true;
    }
    return false;
}

} // namespace zofra
