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

/// How this panel gives both a menu and the window: `direct` or `hostmenu`.
[[nodiscard]] StatusItemMode trayMode(const TraySession& session);
/// What this panel is to take the item's icon from: a name of a drawing in one tone, which it draws in the
/// colour of its text; a name of one in its own colours; or pictures only.
enum class TrayIconKind { symbolic, coloured, pixmaps };
[[nodiscard]] TrayIconKind trayIconKind(const TraySession& session);
/// How this panel tells of a wheel.
struct TrayWheel {
    bool isPositiveUp = true;
    /// How often it tells of one notch.
    int callsPerNotch = 1;

    friend bool operator==(const TrayWheel&, const TrayWheel&) = default;
};
[[nodiscard]] TrayWheel trayWheel(const TraySession& session);
/// How this panel reads tool tips.
[[nodiscard]] StatusNotifierObject::ToolTipText trayToolTipText(const TraySession& session);

/// The session of this process as its environment tells; `platformName` is the window system that is used.
[[nodiscard]] TraySession traySessionFromEnvironment(const QString& platformName, const QString& setting);

} // namespace zofra
