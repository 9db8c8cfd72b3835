// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/MenuItem.h"
#include "platform/linux/DBusExportedObject.h"
#include "platform/linux/tray/DBusMenuTree.h"

#include <functional>
#include <memory>

namespace zofra {

/// The menu as an object of the bus, com.canonical.dbusmenu. Looked at anew whenever a panel is about to show
/// it or asks for the whole of it, for some do only one of the two. Main thread only.
class DBusMenuObject final {
public:
    struct Environment {
        MainQueue& mainQueue;
        /// The current menu.
        std::function<Menu()> provider;
        DBusMenuTree::IconName iconName;
        /// Where icons of ours are found besides the usual places.
        QStringList iconThemePath;
    };
    DBusMenuObject(const QDBusConnection& connection, const QString& path, Environment environment);
    DBusMenuObject(const DBusMenuObject&) = delete;
    DBusMenuObject& operator=(const DBusMenuObject&) = delete;

    /// What the provider answers may have changed: panels that hold a layout are told in a next turn, once.
    void menuDidChange();

private:
    [[nodiscard]] dbus::Interface menuInterface();
    /// Takes the current menu over; whether it has other items than a panel was last given.
    bool rebuild();
    void handleEvent(int id, const QString& eventId);
    /// A panel that asks for one level only would look into a submenu when it opens it, and place it before
    /// it knows how large it is. Told that it has changed, such a panel looks at once.
    void announceSubmenus(const BusMenuLayout& given);

    [[nodiscard]] dbus::Answer getLayout(const QVariantList& arguments);
    [[nodiscard]] dbus::Answer getGroupProperties(const QVariantList& arguments) const;
    [[nodiscard]] dbus::Answer getProperty(const QVariantList& arguments) const;
    [[nodiscard]] dbus::Answer eventGroup(const QVariantList& arguments);
    [[nodiscard]] dbus::Answer aboutToShow(const QVariantList& arguments);
    [[nodiscard]] dbus::Answer aboutToShowGroup(const QVariantList& arguments);

    Environment m_environment;
    DBusMenuTree m_tree;
    dbus::ExportedObject m_object;
    uint m_revision = 1;
    /// The revision that a panel has last been given; 0 before the first.
    uint m_fetchedRevision = 0;
    bool m_isCheckPosted = false;
    /// Set while a panel shows the menu: what a person is reading must not move.
    std::unique_ptr<Timer> m_shown;
    Lifetime m_lifetime;
};

} // namespace zofra
