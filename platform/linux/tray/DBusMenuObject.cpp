// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/DBusMenuObject.h"

#include "platform/linux/DBusArguments.h"

#include <QGuiApplication>

#include <utility>

namespace zofra {

namespace {

using dbus::Answer;
using dbus::constant;

constexpr auto* menuInterfaceName = "com.canonical.dbusmenu";
constexpr auto longestShowing = std::chrono::seconds(60);
/// More numbers, and more names of properties, than any menu of ours has.
constexpr int mostItems = 1024;
constexpr int mostNames = 64;
/// More than a person does at a time.
constexpr int mostEvents = 64;

Answer unknownItem(int id) {
    return dbus::refused("InvalidArgs", u"There is no menu item %1"_qs.arg(id));
}

Answer tooMany() {
    return dbus::refused("LimitsExceeded", u"No menu has as much as that"_qs);
}

/// What a property that an item does not name has all the same; invalid for what the protocol does not know.
QVariant protocolDefault(const QString& property) {
    static const QVariantMap defaults{
        {u"type"_qs, u"standard"_qs},
        {u"label"_qs, QString()},
        {u"enabled"_qs, true},
        {u"visible"_qs, true},
        {u"icon-name"_qs, QString()},
        {u"icon-data"_qs, QByteArray()},
        {u"shortcut"_qs, QVariant::fromValue(QList<QStringList>())},
        {u"toggle-type"_qs, QString()},
        {u"toggle-state"_qs, -1},
        {u"children-display"_qs, QString()},
        {u"disposition"_qs, u"normal"_qs},
    };
    return defaults.value(property);
}

} // namespace

DBusMenuObject::DBusMenuObject(const QDBusConnection& connection, const QString& path,
                               Environment environment)
    : m_environment(std::move(environment))
    , m_tree(m_environment.iconName)
    , m_object(path, {menuInterface()}) {
    registerTrayTypes();
    m_object.exportOn(connection);
}

dbus::Interface DBusMenuObject::menuInterface() {
    const auto answering = [this](auto method) {
        return [this, method](const QVariantList& arguments) { return (this->*method)(arguments); };
    };
    const auto event = [this](const QVariantList& arguments) {
        handleEvent(arguments.at(0).toInt(), arguments.at(1).toString());
        return Answer();
    };
    const bool rightToLeft = QGuiApplication::layoutDirection() == Qt::RightToLeft;
    return {menuInterfaceName,
            {{"GetLayout", "parentId:i recursionDepth:i propertyNames:as", "revision:u layout:(ia{sv}av)",
              answering(&DBusMenuObject::getLayout)},
             {"GetGroupProperties", "ids:ai propertyNames:as", "properties:a(ia{sv})",
              answering(&DBusMenuObject::getGroupProperties)},
             {"GetProperty", "id:i name:s", "value:v", answering(&DBusMenuObject::getProperty)},
             {"Event", "id:i eventId:s data:v timestamp:u", "", event},
             {"EventGroup", "events:a(isvu)", "idErrors:ai", answering(&DBusMenuObject::eventGroup)},
             {"AboutToShow", "id:i", "needUpdate:b", answering(&DBusMenuObject::aboutToShow)},
             {"AboutToShowGroup", "ids:ai", "updatesNeeded:ai idErrors:ai",
              answering(&DBusMenuObject::aboutToShowGroup)}},
            {{"ItemsPropertiesUpdated", "updatedProps:a(ia{sv}) removedProps:a(ias)"},
             {"LayoutUpdated", "revision:u parent:i"},
             {"ItemActivationRequested", "id:i timestamp:u"}},
            {constant("Version", "u", 3U),
             constant("TextDirection", "s", rightToLeft ? u"rtl"_qs : u"ltr"_qs),
             constant("Status", "s", u"normal"_qs),
             constant("IconThemePath", "as", m_environment.iconThemePath)}};
}

void DBusMenuObject::menuDidChange() {
    // A panel that never asked has nothing to be corrected.
    if (m_fetchedRevision == 0 || std::exchange(m_isCheckPosted, true))
        return;
    m_environment.mainQueue.async(m_lifetime.guard([this] {
        m_isCheckPosted = false;
        if (!m_shown)
            rebuild();
    }));
}

bool DBusMenuObject::rebuild() {
    const auto changes = m_tree.replace(m_environment.provider ? m_environment.provider() : Menu());
    if (!changes.layouts.isEmpty())
        ++m_revision;
    // Whoever asked is not the only one who may hold a layout: another panel would never hear of the change.
    if (m_fetchedRevision != 0) {
        if (!changes.updated.isEmpty() || !changes.removed.isEmpty())
            m_object.send(menuInterfaceName, "ItemsPropertiesUpdated",
                          {QVariant::fromValue(changes.updated), QVariant::fromValue(changes.removed)});
        for (const int menu : changes.layouts)
            m_object.send(menuInterfaceName, "LayoutUpdated", {m_revision, menu});
    }
    return m_fetchedRevision != m_revision;
}

void DBusMenuObject::handleEvent(int id, const QString& eventId) {
    if (id == 0 && eventId == u"opened") {
        // Not every panel says when it closes the menu again.
        m_shown = m_environment.mainQueue.startTimer(longestShowing, MainQueue::Repeat::once, [this] {
            m_shown.reset();
            menuDidChange();
        });
    } else if (id == 0 && eventId == u"closed") {
        m_shown.reset();
        menuDidChange();
    } else if (eventId == u"clicked") {
        const MenuItem* found = m_tree.item(id);
        if (!found || !found->isEnabled || !found->action)
            return;
        // The action may rebuild the menu, or end this object.
        const MenuItem sender = *found;
        sender.action(sender);
    }
}

Answer DBusMenuObject::getLayout(const QVariantList& arguments) {
    const int id = arguments.at(0).toInt();
    const QStringList names = arguments.at(2).toStringList();
    if (names.size() > mostNames)
        return tooMany();
    // While the menu is open, a panel asking again (for a submenu, say) gets what it already shows.
    if (id == 0) {
        if (!m_shown)
            rebuild();
        m_fetchedRevision = m_revision;
    }
    const auto layout = m_tree.layout(id, arguments.at(1).toInt(), names);
    if (!layout)
        return unknownItem(id);
    if (id == 0)
        announceSubmenus(*layout);
    return {{m_revision, QVariant::fromValue(*layout)}};
}

void DBusMenuObject::announceSubmenus(const BusMenuLayout& given) {
    for (const BusMenuLayout& child : given.children) {
        if (!child.children.isEmpty() || !m_tree.hasSubmenu(child.id))
            continue;
        m_environment.mainQueue.async(m_lifetime.guard([this, id = child.id] {
            m_object.send(menuInterfaceName, "LayoutUpdated", {m_revision, id});
        }));
    }
}

Answer DBusMenuObject::getGroupProperties(const QVariantList& arguments) const {
    auto ids = dbus::boundedList<int>(arguments.at(0), mostItems);
    const QStringList names = arguments.at(1).toStringList();
    if (!ids || names.size() > mostNames)
        return tooMany();
    if (ids->isEmpty())
        ids = m_tree.ids();
    QList<BusMenuProperties> answer;
    for (const int id : std::as_const(*ids)) {
        if (const auto properties = m_tree.properties(id, names))
            answer.append({id, *properties});
    }
    return {{QVariant::fromValue(answer)}};
}

Answer DBusMenuObject::getProperty(const QVariantList& arguments) const {
    const int id = arguments.at(0).toInt();
    const QString name = arguments.at(1).toString();
    const auto properties = m_tree.properties(id, {name});
    const QVariant value = properties ? properties->value(name, protocolDefault(name)) : QVariant();
    if (!value.isValid())
        return dbus::refused("InvalidArgs", u"Menu item %1 has no such property"_qs.arg(id));
    return {{QVariant::fromValue(QDBusVariant(value))}};
}

Answer DBusMenuObject::eventGroup(const QVariantList& arguments) {
    const auto events = dbus::boundedList<BusMenuEvent>(arguments.at(0), mostEvents);
    if (!events)
        return tooMany();
    QList<int> unknown;
    for (const BusMenuEvent& one : *events) {
        if (!m_tree.contains(one.id))
            unknown.append(one.id);
    }
    if (!events->isEmpty() && unknown.size() == events->size())
        return dbus::refused("InvalidArgs", u"There is none of these menu items"_qs);
    // An event may end this object.
    auto handle =
        m_lifetime.guard([this](const BusMenuEvent& event) { handleEvent(event.id, event.eventId); });
    for (const BusMenuEvent& one : *events)
        handle(one);
    return {{QVariant::fromValue(unknown)}};
}

Answer DBusMenuObject::aboutToShow(const QVariantList& arguments) {
    const int id = arguments.at(0).toInt();
    if (id == 0)
        return {{rebuild()}};
    return m_tree.contains(id) ? Answer{{false}} : unknownItem(id);
}

Answer DBusMenuObject::aboutToShowGroup(const QVariantList& arguments) {
    const auto ids = dbus::boundedList<int>(arguments.at(0), mostItems);
    if (!ids)
        return tooMany();
    QList<int> updates;
    QList<int> unknown;
    if (ids->contains(0) && rebuild())
        updates.append(0);
    for (const int id : *ids) {
        if (!m_tree.contains(id))
            unknown.append(id);
    }
    return {{QVariant::fromValue(updates), QVariant::fromValue(unknown)}};
}

} // namespace zofra
