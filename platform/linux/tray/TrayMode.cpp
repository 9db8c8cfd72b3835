// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayMode.h"

#include <QStringList>
#include <QtGlobal>

namespace zofra {

namespace {

/// By program, of whose name the kernel keeps only the first fifteen letters.
struct KnownPanel {
    const char* program;
    PanelTraits traits;
};

using Text = StatusNotifierObject::ToolTipText;
constexpr TrayWheel upwards{true, 1};
constexpr TrayWheel downwards{false, 1};
constexpr KnownPanel knownPanels[] = {
    // Given a name that its theme lacks, it shows nothing, whatever pictures there are beside the name.
    {"lxqt-panel", {true, TrayIconKind::pixmaps, upwards}},
    {"plasmashell", {true, TrayIconKind::symbolic, upwards}},
    // Nor does this one, which also reads tool tips as markup.
    {"mate-panel", {true, TrayIconKind::pixmaps, upwards, Text::markup}},
    {"notification-ar", {true, TrayIconKind::pixmaps, upwards, Text::markup}},
    {"xapp-sn-watcher", {true, TrayIconKind::symbolic, downwards}},
    {"xfce4-panel", {false, TrayIconKind::symbolic, upwards}},
    {"wrapper-2.0", {false, TrayIconKind::symbolic, upwards}},
    {"gnome-shell", {false, TrayIconKind::symbolic, downwards}},
    {"ayatana-indicat", {false, TrayIconKind::symbolic, downwards}},
    {"indicator-appli", {false, TrayIconKind::symbolic, downwards}},
    // It tells of a notch as such and once more as of a smooth turn.
    {"waybar", {false, TrayIconKind::coloured, {false, 2}, Text::markup}},
};

} // namespace

PanelTraits panelTraits(const TraySession& session) {
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

StatusItemMode trayMode(const TraySession& session) {
    if (session.setting == u"direct")
        return StatusItemMode::direct;
    if (session.setting == u"hostmenu")
        return StatusItemMode::hostmenu;
    return session.windows == TraySession::Windows::x11 && panelTraits(session).passesClicksOn
               ? StatusItemMode::direct
               : StatusItemMode::hostmenu;
}

TraySession traySessionFromEnvironment(const QString& platformName, const QString& setting) {
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
