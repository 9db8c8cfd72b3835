// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/tray/DBusMenuObject.h"
#include "platform/linux/tray/IconProvider.h"
#include "platform/linux/tray/PanelWatch.h"
#include "platform/linux/tray/StatusNotifierObject.h"
#include "platform/linux/tray/TrayFallback.h"
#include "platform/linux/tray/TrayMode.h"
#include "platform/linux/tray/WheelSteps.h"
#include "platform/linux/tray/WidgetMenu.h"
#include "platform/linux/tray/XEmbedIcon.h"

#include <QPoint>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

namespace zofra {

/// The status item of this program: registered with whatever panel is there, comes or comes back, in the way
/// that suits it; in the old tray where there is no such panel for five seconds. Main thread only.
class TrayStatusItem final : public StatusItem, private StatusItemButton {
public:
    struct Environment {
        SessionBus& bus;
        MainQueue& mainQueue;
        const IconProvider& icons;
        TraySession session;
        /// The item has been taken by a panel.
        std::function<void()> registered;
        /// A panel passes on the right to the keyboard.
        std::function<void(const QByteArray& token)> activationToken;
    };
    explicit TrayStatusItem(Environment environment);
    ~TrayStatusItem() override;
    TrayStatusItem(const TrayStatusItem&) = delete;
    TrayStatusItem& operator=(const TrayStatusItem&) = delete;

    StatusItemButton* button() override { return this; }
    void menuDidChange() override;
    void flash(const QString& text) override;
    [[nodiscard]] StatusItemMode mode() const override { return m_mode; }

private:
    void setAction(Action action) override { m_action = std::move(action); }
    void sendActionOn(unsigned eventMask) override { m_eventMask = eventMask; }
    void setTitle(const QString& title) override;
    void setImagePosition(ImagePosition position) override;
    void setImage(const QString& symbolName, const QString& accessibilityDescription) override;
    void setToolTip(const QString& toolTip) override;
    [[nodiscard]] double height() const override;
    void popUpMenu(const Menu& menu, QPointF location) override;

    void busConnected(const QDBusConnection& connection);
    void busDisconnected();
    void panelAppeared(const QString& program);
    void panelDisappeared();
    void panelRegistered(bool hasHost);
    void showWindow();
    void showXEmbedIcon();
    [[nodiscard]] StatusNotifierObject::Handlers itemHandlers();

    void clicked(ButtonEvent event, QPoint at);
    void scrolled(int delta);
    void publish();
    [[nodiscard]] StatusNotifierContent content() const;
    [[nodiscard]] QString themeIconName(const QString& symbolName) const;
    [[nodiscard]] QVariantMap iconProperties(const QString& symbolName) const;
    [[nodiscard]] QList<BusPixmap> pixmaps(const QString& symbolName);

    Environment m_environment;
    TrayFallback m_fallback;
    Action m_action;
    unsigned m_eventMask = 0;
    QString m_title;
    QString m_symbolName;
    QString m_description;
    QString m_toolTip;
    QString m_flash;
    QPoint m_clickPoint;
    WheelSteps m_wheel;
    StatusItemMode m_mode = StatusItemMode::none;
    StatusNotifierObject::Way m_way = StatusNotifierObject::Way::hostmenu;
    TrayWheel m_wheelSign = TrayWheel::positiveIsUp;
    TrayIconSource m_iconSource = TrayIconSource::themeOrPixmaps;
    bool m_toldUnavailable = false;
    QString m_pixmapsSymbol;
    QList<BusPixmap> m_pixmaps;

    std::unique_ptr<Timer> m_flashing;
    std::optional<QDBusConnection> m_connection;
    std::unique_ptr<StatusNotifierObject> m_item;
    std::unique_ptr<DBusMenuObject> m_menu;
    std::unique_ptr<PanelWatch> m_panel;
    std::unique_ptr<XEmbedIcon> m_xembed;
    /// The menu that is open, of our own drawing.
    QPointer<WidgetMenu> m_openMenu;
    ObservationToken m_connected;
    ObservationToken m_disconnected;
    Lifetime m_lifetime;
};

} // namespace zofra
