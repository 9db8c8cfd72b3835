// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/tray/StatusNotifierObject.h"

namespace zofra {

/// What there is to know about the session and its panel.
struct TraySession {
    enum class Windows { x11, wayland, other };
    Windows windows = Windows::other;
    /// $XDG_CURRENT_DESKTOP.
    QString desktop;
    /// Name of the program that watches over status items; empty when it cannot be known.
    QString panelProgram;
    /// The setting tray/mode: "auto", "direct" or "hostmenu"; anything else counts as "auto".
    QString setting;
};

/// What a panel takes the icon from: a drawing in one tone, one in its own colours, or pictures only.
enum class TrayIconKind { symbolic, coloured, pixmaps };

/// How a panel tells of a wheel.
struct TrayWheel {
    bool isPositiveUp = true;
    /// How often it tells of one notch.
    int callsPerNotch = 1;
};

/// What is special about a panel. The defaults can be seen on any of them.
struct PanelTraits {
    /// Passes left and right clicks on when there is no menu, and shows the item all the same.
    bool passesClicksOn = false;
    TrayIconKind icon = TrayIconKind::coloured;
    TrayWheel wheel = {};
    StatusNotifierObject::ToolTipText toolTip = StatusNotifierObject::ToolTipText::plain;
};
[[nodiscard]] PanelTraits panelTraits(const TraySession& session);
/// How this panel gives both a menu and the window: `direct` or `hostmenu`.
[[nodiscard]] StatusItemMode trayMode(const TraySession& session);

/// The session of this process as its environment tells; `platformName` is the window system that is used.
[[nodiscard]] TraySession traySessionFromEnvironment(const QString& platformName, const QString& setting);

} // namespace zofra
