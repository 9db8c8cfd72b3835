// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/StatusNotifierObject.h"

#include <QDBusObjectPath>

#include <utility>

namespace zofra {

namespace {

using dbus::Answer;
using dbus::constant;
using dbus::Method;
using dbus::Property;

constexpr auto* itemInterfaceName = "org.kde.StatusNotifierItem";

/// A method without an answer.
template<typename Handler>
Method method(const char* name, const char* in, Handler handler) {
    return {name, in, "", [handler](const QVariantList& arguments) {
                handler(arguments);
                return Answer();
            }};
}

Method clickMethod(const char* name, const std::function<void(QPoint)>& handler) {
    return method(name, "x:i y:i", [handler](const QVariantList& arguments) {
        handler(QPoint(arguments.at(0).toInt(), arguments.at(1).toInt()));
    });
}

} // namespace

StatusNotifierObject::StatusNotifierObject(const QDBusConnection& connection, Paths paths, Handlers handlers)
    : m_paths(std::move(paths))
    , m_handlers(std::move(handlers))
    , m_object(m_paths.item, {itemInterface()}) {
    registerTrayTypes();
    m_object.exportOn(connection);
}

void StatusNotifierObject::setMode(StatusItemMode mode, ToolTipText toolTipText) {
    m_mode = mode;
    m_toolTipText = toolTipText;
    m_object.replaceInterfaces({itemInterface()});
}

void StatusNotifierObject::setContent(StatusNotifierContent content) {
    const StatusNotifierContent before = std::exchange(m_content, std::move(content));
    if (before.title != m_content.title)
        m_object.send(itemInterfaceName, "NewTitle");
    if (before.iconName != m_content.iconName || before.symbolName != m_content.symbolName ||
        before.iconAccessibleDescription != m_content.iconAccessibleDescription)
        m_object.send(itemInterfaceName, "NewIcon");
    if (before.toolTip != m_content.toolTip)
        m_object.send(itemInterfaceName, "NewToolTip");
    if (before.label != m_content.label)
        m_object.send(itemInterfaceName, "XAyatanaNewLabel", {m_content.label, m_content.label});
}

dbus::Interface StatusNotifierObject::itemInterface() {
    const auto secondary = [this](const QVariantList&) { m_handlers.secondaryActivate(); };
    const auto scroll = [this](const QVariantList& arguments) {
        // Wheels that tilt have no meaning here.
        if (arguments.at(1).toString().compare(u"horizontal", Qt::CaseInsensitive) != 0)
            m_handlers.scroll(arguments.at(0).toInt());
    };
    const auto token = [this](const QVariantList& arguments) {
        m_handlers.activationToken(arguments.at(0).toString());
    };
    std::vector<Method> methods{
        clickMethod("ContextMenu", m_handlers.contextMenu),
        method("SecondaryActivate", "x:i y:i", secondary),
        method("XAyatanaSecondaryActivate", "timestamp:u", secondary),
        method("Scroll", "delta:i orientation:s", scroll),
        method("ProvideXdgActivationToken", "token:s", token),
    };
    if (m_mode == StatusItemMode::direct)
        methods.push_back(clickMethod("Activate", m_handlers.activate));
    return {itemInterfaceName,
            std::move(methods),
            {{"NewTitle", ""},
             {"NewIcon", ""},
             {"NewAttentionIcon", ""},
             {"NewOverlayIcon", ""},
             {"NewToolTip", ""},
             {"NewStatus", "status:s"},
             {"XAyatanaNewLabel", "label:s guide:s"}},
            properties()};
}

std::vector<Property> StatusNotifierObject::properties() const {
    // Changes are told by the protocol's own signals.
    const auto current = [](const char* name, const char* signature, std::function<QVariant()> get) {
        return Property{name, signature, std::move(get), Property::Changes::areNotTold};
    };
    const auto text = [this, &current](const char* name, QString StatusNotifierContent::*field) {
        return current(name, "s", [this, field] { return QVariant(m_content.*field); });
    };
    const auto pixmaps = [this] { return QVariant::fromValue(m_handlers.pixmaps(m_content.symbolName)); };
    const auto noPixmaps = QVariant::fromValue(QList<BusPixmap>());
    using Content = StatusNotifierContent;
    std::vector<Property> properties{
        constant("Category", "s", u"ApplicationStatus"_qs),
        constant("Id", "s", u"zofrazofra"_qs),
        text("Title", &Content::title),
        constant("Status", "s", u"Active"_qs),
        constant("WindowId", "i", 0),
        constant("IconThemePath", "s", m_paths.icons),
        text("IconName", &Content::iconName),
        current("IconPixmap", "a(iiay)", pixmaps),
        text("IconAccessibleDesc", &Content::iconAccessibleDescription),
        constant("OverlayIconName", "s", QString()),
        constant("OverlayIconPixmap", "a(iiay)", noPixmaps),
        constant("AttentionIconName", "s", QString()),
        constant("AttentionIconPixmap", "a(iiay)", noPixmaps),
        constant("AttentionAccessibleDesc", "s", QString()),
        constant("AttentionMovieName", "s", QString()),
        current("ToolTip", "(sa(iiay)ss)", [this] { return QVariant::fromValue(toolTip()); }),
        text("XAyatanaLabel", &Content::label),
        text("XAyatanaLabelGuide", &Content::label),
        text("XAyatanaIconAccessibleDesc", &Content::iconAccessibleDescription),
        constant("XAyatanaOrderingIndex", "u", 0U),
    };
    if (m_mode == StatusItemMode::hostmenu) {
        properties.push_back(constant("ItemIsMenu", "b", true));
        properties.push_back(constant("Menu", "o", QVariant::fromValue(QDBusObjectPath(m_paths.menu))));
    }
    return properties;
}

BusToolTip StatusNotifierObject::toolTip() const {
    // All lines in the title: most panels read the text below it as markup.
    return {{},
            {},
            m_toolTipText == ToolTipText::markup ? m_content.toolTip.toHtmlEscaped() : m_content.toolTip,
            {}};
}

} // namespace zofra
