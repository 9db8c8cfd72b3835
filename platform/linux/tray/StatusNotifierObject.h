// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/tray/TrayTypes.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QPoint>
#include <QString>
#include <QVariantMap>

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
class StatusNotifierObject final : public QDBusVirtualObject {
public:
    /// `direct`: the panel passes clicks on, and there is no word of a menu. `hostmenu`: the panel draws the
    /// menu, and there is no Activate, for a panel that finds it calls it in place of the menu.
    enum class Way { direct, hostmenu };
    /// Texts are plain; one panel reads tool tips as markup nevertheless.
    enum class ToolTipText { plain, markup };

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

    StatusNotifierObject(QDBusConnection connection, QString path, QString menuPath, Handlers handlers);
    ~StatusNotifierObject() override;
    StatusNotifierObject(const StatusNotifierObject&) = delete;
    StatusNotifierObject& operator=(const StatusNotifierObject&) = delete;

    void setWay(Way way, ToolTipText toolTipText);
    /// Shows `content` and tells panels what differs from before.
    void setContent(StatusNotifierContent content);

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    bool handleItemCall(const QDBusMessage& message);
    bool handlePropertiesCall(const QDBusMessage& message, QDBusMessage& reply) const;
    [[nodiscard]] QVariantMap properties() const;
    [[nodiscard]] BusToolTip toolTip() const;
    void emitSignal(const char* name, const QVariantList& arguments = {});

    QDBusConnection m_connection;
    QString m_path;
    QString m_menuPath;
    Handlers m_handlers;
    Way m_way = Way::hostmenu;
    ToolTipText m_toolTipText = ToolTipText::plain;
    StatusNotifierContent m_content;
};

} // namespace zofra
