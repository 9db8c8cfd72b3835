// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/tray/StatusNotifierObject.h"

#include <QString>

#include <optional>

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

/// Which way this panel gives both a menu and the window.
[[nodiscard]] StatusNotifierObject::Way trayWay(const TraySession& session);
/// Where this panel is to take the item's icon from.
enum class TrayIconSource { themeOrPixmaps, pixmaps };
[[nodiscard]] TrayIconSource trayIconSource(const TraySession& session);
/// Which way a wheel was turned that this panel tells of by a positive number.
enum class TrayWheel { positiveIsUp, positiveIsDown };
[[nodiscard]] TrayWheel trayWheel(const TraySession& session);
/// How this panel reads tool tips.
[[nodiscard]] StatusNotifierObject::ToolTipText trayToolTipText(const TraySession& session);

/// The session of this process as its environment tells; `platformName` is the window system that is used.
[[nodiscard]] TraySession traySessionFromEnvironment(const QString& platformName, const QString& setting);

} // namespace zofra
