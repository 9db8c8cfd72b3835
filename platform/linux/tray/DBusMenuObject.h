// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/MenuItem.h"
#include "platform/linux/tray/DBusMenuTree.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// The menu as an object of the bus, com.canonical.dbusmenu. It is rebuilt whenever a panel is about to show
/// it or asks for the whole of it, so that panels which do only one of the two see the current state. Main
/// thread only.
class DBusMenuObject final : public QDBusVirtualObject {
public:
    struct Environment {
        MainQueue& mainQueue;
        /// The current menu.
        std::function<Menu()> provider;
        DBusMenuTree::IconProperties iconProperties;
        /// Where theme icons of ours are found besides the usual places.
        QStringList iconThemePath;
    };
    DBusMenuObject(QDBusConnection connection, QString path, Environment environment);
    ~DBusMenuObject() override;
    DBusMenuObject(const DBusMenuObject&) = delete;
    DBusMenuObject& operator=(const DBusMenuObject&) = delete;

    /// What the provider answers may have changed: panels that hold a layout are told in a next turn, once.
    void menuDidChange();

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    /// Takes the current menu over; whether it differs from what panels were last given.
    bool rebuild();
    void checkForChange();
    void handleEvent(int id, const QString& eventId);
    void emitLayoutUpdated();

    bool handleMenuCall(const QDBusMessage& message, QDBusMessage& reply);
    bool handlePropertiesCall(const QDBusMessage& message, QDBusMessage& reply) const;
    [[nodiscard]] QDBusMessage getLayout(const QDBusMessage& message);
    [[nodiscard]] QDBusMessage getGroupProperties(const QDBusMessage& message) const;
    [[nodiscard]] QDBusMessage getProperty(const QDBusMessage& message) const;
    [[nodiscard]] QDBusMessage eventGroup(const QDBusMessage& message);
    [[nodiscard]] QDBusMessage aboutToShow(const QDBusMessage& message);
    [[nodiscard]] QDBusMessage aboutToShowGroup(const QDBusMessage& message);
    [[nodiscard]] QVariantMap objectProperties() const;

    QDBusConnection m_connection;
    QString m_path;
    Environment m_environment;
    DBusMenuTree m_tree;
    uint m_revision = 1;
    /// The revision that a panel has last been given; 0 before the first.
    uint m_fetchedRevision = 0;
    bool m_isCheckPosted = false;
    /// Set while a panel shows the menu: what a person is reading must not move.
    std::unique_ptr<Timer> m_shown;
    std::shared_ptr<char> m_alive = std::make_shared<char>();
};

} // namespace zofra
