// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/tray/StatusNotifierObject.h"

#include <QStringList>

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

[[nodiscard]] inline PanelTraits panelTraits(const TraySession& session) {
    /// By program, of whose name the kernel keeps only the first fifteen letters.
    struct KnownPanel {
        const char* program;
        PanelTraits traits;
    };
    constexpr auto markup = StatusNotifierObject::ToolTipText::markup;
    constexpr TrayWheel upwards{true, 1};
    constexpr TrayWheel downwards{false, 1};
    static constexpr KnownPanel knownPanels[] = {
        // Given a name that its theme lacks, it shows nothing, whatever pictures there are beside the name.
        {"lxqt-panel", {true, TrayIconKind::pixmaps, upwards}},
        {"plasmashell", {true, TrayIconKind::symbolic, upwards}},
        // Nor does this one, which also reads tool tips as markup.
        {"mate-panel", {true, TrayIconKind::pixmaps, upwards, markup}},
        {"notification-ar", {true, TrayIconKind::pixmaps, upwards, markup}},
        {"xapp-sn-watcher", {true, TrayIconKind::symbolic, downwards}},
        {"xfce4-panel", {false, TrayIconKind::symbolic, upwards}},
        {"wrapper-2.0", {false, TrayIconKind::symbolic, upwards}},
        {"gnome-shell", {false, TrayIconKind::symbolic, downwards}},
        {"ayatana-indicat", {false, TrayIconKind::symbolic, downwards}},
        {"indicator-appli", {false, TrayIconKind::symbolic, downwards}},
        // It tells of a notch as such and once more as of a smooth turn.
        {"waybar", {false, TrayIconKind::coloured, {false, 2}, markup}},
    };
    const QString& program = session.panelProgram;
    for (const auto& [name, traits] : knownPanels) {
        if (program.startsWith(QLatin1String(name)))
            return traits;
    }
    PanelTraits traits;
    const QStringList desktops = session.desktop.toUpper().split(u':');
    const bool isPlasma = desktops.contains(u"KDE");
    // The watcher of Plasma serves other panels' hosts as well.
    if (program == u"kded5" || program == u"kded6")
        traits.passesClicksOn = isPlasma || session.desktop.isEmpty();
    else
        traits.passesClicksOn = program.isEmpty() && (isPlasma || desktops.contains(u"LXQT"));
    if (isPlasma)
        traits.icon = TrayIconKind::symbolic;
    return traits;
}

/// How this panel gives both a menu and the window: `direct` or `hostmenu`.
[[nodiscard]] inline StatusItemMode trayMode(const TraySession& session) {
    if (session.setting == u"direct")
        return StatusItemMode::direct;
    if (session.setting == u"hostmenu")
        return StatusItemMode::hostmenu;
    return session.windows == TraySession::Windows::x11 && panelTraits(session).passesClicksOn
               ? StatusItemMode::direct
               : StatusItemMode::hostmenu;
}

/// The session of this process as its environment tells; `platformName` is the window system that is used.
[[nodiscard]] inline TraySession traySessionFromEnvironment(const QString& platformName,
                                                            const QString& setting) {
    TraySession session;
    session.desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    session.setting = setting;
    // A program of the X11 kind inside a Wayland session is placed by rules of neither.
    const bool isWaylandSession = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
                                  qEnvironmentVariable("XDG_SESSION_TYPE") == u"wayland";
    if (platformName.startsWith(u"wayland") || (platformName == u"xcb" && isWaylandSession))
        session.windows = TraySession::Windows::wayland;
    else if (platformName == u"xcb")
        session.windows = TraySession::Windows::x11;
    return session;
}

} // namespace zofra
