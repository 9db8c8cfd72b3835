// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/DBusExportedObject.h"
#include "platform/linux/tray/TrayTypes.h"

#include <QPoint>

#include <functional>

namespace zofra {

/// What a status item shows, ready to be shown.
struct StatusNotifierContent {
    QString title;
    QString label;
    QString iconName;
    /// Name of the program's own drawing, from which pictures are made when a panel asks for them.
    QString symbolName;
    QString iconAccessibleDescription;
    /// Lines separated by line feeds.
    QString toolTip;
};

/// The status item as an object of the bus, org.kde.StatusNotifierItem. Main thread only.
class StatusNotifierObject final {
public:
    /// Texts are plain; one panel reads tool tips as markup nevertheless.
    enum class ToolTipText { plain, markup };

    /// All of them are there.
    struct Handlers {
        std::function<void(QPoint)> activate;
        std::function<void(QPoint)> contextMenu;
        std::function<void()> secondaryActivate;
        /// Signed distance as the panel gives it.
        std::function<void(int delta)> scroll;
        std::function<void(const QString& token)> activationToken;
        /// Pictures of a drawing, for panels whose theme lacks the named icon.
        std::function<QList<BusPixmap>(const QString& symbolName)> pixmaps;
    };

    struct Paths {
        QString item;
        QString menu;
        /// Of the icon theme; empty where panels look there anyway.
        QString icons;
    };

    StatusNotifierObject(const QDBusConnection& connection, Paths paths, Handlers handlers);
    StatusNotifierObject(const StatusNotifierObject&) = delete;
    StatusNotifierObject& operator=(const StatusNotifierObject&) = delete;

    /// `direct`: the panel passes clicks on, and there is no word of a menu. `hostmenu`: the panel draws the
    /// menu, and there is no Activate, for a panel that finds it calls it in place of the menu.
    void setMode(StatusItemMode mode, ToolTipText toolTipText);
    /// Shows `content` and tells panels what differs from before.
    void setContent(StatusNotifierContent content);

private:
    [[nodiscard]] dbus::Interface itemInterface();
    [[nodiscard]] std::vector<dbus::Property> properties() const;
    [[nodiscard]] BusToolTip toolTip() const;

    Paths m_paths;
    Handlers m_handlers;
    StatusItemMode m_mode = StatusItemMode::hostmenu;
    ToolTipText m_toolTipText = ToolTipText::plain;
    StatusNotifierContent m_content;
    dbus::ExportedObject m_object;
};

} // namespace zofra
