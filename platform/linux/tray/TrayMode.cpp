// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayMode.h"

#include <QStringList>
#include <QtGlobal>

namespace zofra {

namespace {

/// Panels that pass left and right clicks on when there is no menu, and show the item all the same.
bool passesClicksOn(const TraySession& session) {
    const QString& program = session.panelProgram;
    if (program == QLatin1String("lxqt-panel") || program == QLatin1String("plasmashell"))
        return true;
    const QStringList desktops = session.desktop.toUpper().split(QLatin1Char(':'));
    const bool isPlasma = desktops.contains(QLatin1String("KDE"));
    // The watcher of Plasma serves other panels' hosts as well.
    if (program == QLatin1String("kded5") || program == QLatin1String("kded6"))
        return isPlasma || session.desktop.isEmpty();
    return program.isEmpty() && (isPlasma || desktops.contains(QLatin1String("LXQT")));
}

} // namespace

StatusNotifierObject::Way trayWay(const TraySession& session) {
    using Way = StatusNotifierObject::Way;
    if (session.setting == QLatin1String("direct"))
        return Way::direct;
    if (session.setting == QLatin1String("hostmenu"))
        return Way::hostmenu;
    return session.windows == TraySession::Windows::x11 && passesClicksOn(session) ? Way::direct
                                                                                   : Way::hostmenu;
}

TrayIconSource trayIconSource(const TraySession& session) {
    // Given a name that its theme lacks, this one shows nothing, whatever pictures there are beside the name.
    return session.panelProgram == QLatin1String("lxqt-panel") ? TrayIconSource::pixmaps
                                                               : TrayIconSource::themeOrPixmaps;
}

TrayWheel trayWheel(const TraySession& session) {
    // The kernel keeps only the first fifteen letters of a program's name.
    for (const auto& program : {QLatin1String("ayatana-indicat"), QLatin1String("indicator-appli"),
                                QLatin1String("gnome-shell"), QLatin1String("waybar")}) {
        if (session.panelProgram.startsWith(program))
            return TrayWheel::positiveIsDown;
    }
    return TrayWheel::positiveIsUp;
}

StatusNotifierObject::ToolTipText trayToolTipText(const TraySession& session) {
    using Text = StatusNotifierObject::ToolTipText;
    return session.panelProgram == QLatin1String("waybar") ? Text::markup : Text::plain;
}

TraySession traySessionFromEnvironment(const QString& platformName, const QString& setting) {
    TraySession session;
    session.desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    session.setting = setting;
    // A program of the X11 kind inside a Wayland session is placed by rules of neither.
    const bool isWaylandSession = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
                                  qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland");
    if (platformName.startsWith(QLatin1String("wayland")) ||
        (platformName == QLatin1String("xcb") && isWaylandSession))
        session.windows = TraySession::Windows::wayland;
    else if (platformName == QLatin1String("xcb"))
        session.windows = TraySession::Windows::x11;
    return session;
}

} // namespace zofra
