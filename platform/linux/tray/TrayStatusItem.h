// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

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

#include <QPointer>

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
        /// Where panels find the icon theme, empty where they look anyway. Absent where there is none.
        std::optional<QString> iconFolder;
        /// The item can be seen.
        std::function<void()> shown;
        /// A panel passes on the right to the keyboard.
        std::function<void(const QByteArray& token)> activationToken;
    };
    explicit TrayStatusItem(Environment environment);
    ~TrayStatusItem() override;
    TrayStatusItem(const TrayStatusItem&) = delete;
    TrayStatusItem& operator=(const TrayStatusItem&) = delete;

    StatusItemButton* button() override { return this; }
    void menuDidChange() override;
    void flashVolume(int percent, const QString& text) override;
    void setBuffering(bool isBuffering) override;
    [[nodiscard]] StatusItemMode mode() const override { return m_mode; }

private:
    void setAction(Action action) override { m_action = std::move(action); }
    void sendActionOn(unsigned eventMask) override { m_eventMask = eventMask; }
    void setTitle(const QString& title) override;
    /// Panels that show the text at all show it after the image.
    void setImagePosition(ImagePosition) override {}
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
    void shown();
    [[nodiscard]] StatusNotifierObject::Handlers itemHandlers();

    void clicked(ButtonEvent event, QPoint at);
    void secondaryActivated();
    void scrolled(int delta);
    void publish();
    [[nodiscard]] StatusNotifierContent content() const;
    /// What the icon theme calls a drawing; empty where it is not to be used.
    [[nodiscard]] QString iconName(const QString& symbolName, TrayIconKind kind) const;
    /// The drawing that stands for the program now.
    [[nodiscard]] QString drawing() const;
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
    bool m_isBuffering = false;
    QPoint m_clickPoint;
    WheelSteps m_wheel;
    StatusItemMode m_mode = StatusItemMode::none;
    /// The one that suits the panel that is there.
    StatusItemMode m_panelMode = StatusItemMode::hostmenu;
    TrayIconKind m_iconKind = TrayIconKind::coloured;
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
};

/// Where a menu belongs, in the toolkit's pixels. Some panels tell of a click in the screen's own pixels, and
/// some from a corner of theirs: where told and pointer disagree, the pointer knows better.
[[nodiscard]] QPoint placeOfClick(QPoint told, QPoint pointer);

} // namespace zofra
