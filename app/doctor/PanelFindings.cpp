// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/PanelFindings.h"

namespace zofra::doctor {

namespace {

QString area() {
    return QStringLiteral("panel");
}

QString windowsName(TraySession::Windows windows) {
    switch (windows) {
    case TraySession::Windows::x11:
        return QStringLiteral("X11");
    case TraySession::Windows::wayland:
        return QStringLiteral("Wayland");
    case TraySession::Windows::other:
        break;
    }
    return QStringLiteral("another window system");
}

QString panelName(const DesktopFacts& facts) {
    return facts.session.panelProgram.isEmpty() ? QStringLiteral("a panel of unknown name")
                                                : facts.session.panelProgram;
}

bool isChosenByUser(const QString& setting) {
    return setting == QLatin1String("direct") || setting == QLatin1String("hostmenu");
}

QString reasonFor(const DesktopFacts& facts, StatusItemMode mode) {
    if (isChosenByUser(facts.session.setting))
        return QStringLiteral("as the setting tray/mode says");
    if (mode == StatusItemMode::direct)
        return QStringLiteral("for it passes both clicks on");
    return facts.session.windows == TraySession::Windows::wayland
               ? QStringLiteral("for on Wayland only the panel can place a menu")
               : QStringLiteral("for it draws the menu itself");
}

Finding shown(const DesktopFacts& facts) {
    const auto mode = trayMode(facts.session);
    const QString name = statusItemModeName(mode);
    return fine(area(),
                panelName(facts) + QStringLiteral(" shows the button; mode ") + name + QStringLiteral(", ") +
                    reasonFor(facts, mode),
                {{QStringLiteral("panel"), facts.session.panelProgram}, {QStringLiteral("mode"), name}});
}

Finding notShown(const DesktopFacts& facts) {
    const bool isGnome = facts.session.desktop.contains(QLatin1String("GNOME"), Qt::CaseInsensitive);
    const QString cure =
        isGnome ? QStringLiteral("install and enable the AppIndicator extension (Debian: "
                                 "gnome-shell-extension-appindicator), then log in again.")
        : facts.hasWatcher
            ? QStringLiteral(
                  "add a status tray (\"Status Notifier\", \"System Tray\") to your panel, or start the "
                  "panel again.")
            : QStringLiteral(
                  "start a panel with a status tray, or add one to yours: \"System Tray\" in Plasma, "
                  "\"Status Notifier\" in LXQt, \"Status Tray\" in Xfce, \"tray\" in waybar.");
    const QString found =
        facts.hasWatcher
            ? panelName(facts) + QStringLiteral(" watches over status items, but no panel shows any")
            : QStringLiteral("no panel takes status items");
    return problem(
        area(), found + QStringLiteral("; the radio is an ordinary window instead (mode window)"), cure,
        {{QStringLiteral("panel"), QJsonValue()}, {QStringLiteral("mode"), QStringLiteral("window")}});
}

} // namespace

Finding judgeSession(const DesktopFacts& facts) {
    const QString area = QStringLiteral("session");
    const QJsonObject details{{QStringLiteral("platform"), facts.platform},
                              {QStringLiteral("desktop"), facts.session.desktop}};
    if (facts.isHeadless)
        return fine(area, QStringLiteral("no display is needed with --headless"), details);
    if (facts.platform.isEmpty())
        return problem(
            area,
            facts.variables.isEmpty()
                ? QStringLiteral("no display: neither DISPLAY nor WAYLAND_DISPLAY is set")
                : QStringLiteral("no display answers (") + facts.variables + u')',
            QStringLiteral("start it in your desktop session, or without a display by --headless."), details);
    const QString desktop = facts.session.desktop.isEmpty()
                                ? QStringLiteral("desktop unknown (XDG_CURRENT_DESKTOP is not set)")
                                : facts.session.desktop;
    return fine(area, windowsName(facts.session.windows) + QStringLiteral(", ") + desktop, details);
}

Finding judgePanel(const DesktopFacts& facts) {
    if (facts.isHeadless)
        return skipped(area(), QStringLiteral("not looked for: --headless shows no button"));
    if (facts.platform.isEmpty())
        return skipped(area(), QStringLiteral("not looked for: there is no display"));
    if (facts.hasWatcher && facts.hasPanel)
        return shown(facts);
    if (facts.hasOldTray && facts.session.windows == TraySession::Windows::x11)
        return fine(
            area(),
            QStringLiteral(
                "a tray of the old kind shows the button; mode xembed, for no panel takes status items"),
            {{QStringLiteral("panel"), QJsonValue()}, {QStringLiteral("mode"), QStringLiteral("xembed")}});
    return notShown(facts);
}

} // namespace zofra::doctor
