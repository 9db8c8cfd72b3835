// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayMode.h"

#include "tests/support/ScopedEnvironment.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

using Mode = StatusItemMode;
using Windows = TraySession::Windows;

TraySession session(Windows windows, const QString& program, const QString& desktop = {},
                    const QString& setting = {}) {
    return {windows, desktop, program, setting};
}

TEST(TrayModeTest, DirectOnX11WithPanelsThatPassBothClicksOn) {
    EXPECT_EQ(trayMode(session(Windows::x11, u"lxqt-panel"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, u"plasmashell"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, u"kded5"_qs, u"KDE"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, u"kded6"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, u"mate-panel"_qs, u"MATE"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, u"xapp-sn-watcher"_qs, u"X-Cinnamon"_qs)), Mode::direct);
}

TEST(TrayModeTest, HostmenuForEveryOtherPanel) {
    for (const QString& program : {u"xfce4-panel"_qs, u"gnome-shell"_qs, u"waybar"_qs, u"python3"_qs,
                                   u"ayatana-indicator-application-service"_qs})
        EXPECT_EQ(trayMode(session(Windows::x11, program, u"LXQt"_qs)), Mode::hostmenu)
            << program.toStdString();
    EXPECT_EQ(trayMode(session(Windows::x11, u"kded5"_qs, u"XFCE"_qs)), Mode::hostmenu)
        << "Plasma's watcher under another panel";
}

TEST(TrayModeTest, HostmenuOnEveryWaylandSession) {
    for (const QString& program : {u"lxqt-panel"_qs, u"plasmashell"_qs, u"kded6"_qs, QString()})
        EXPECT_EQ(trayMode(session(Windows::wayland, program, u"KDE"_qs)), Mode::hostmenu);
    EXPECT_EQ(trayMode(session(Windows::other, u"plasmashell"_qs, u"KDE"_qs)), Mode::hostmenu);
}

TEST(TrayModeTest, TheDesktopDecidesWhereTheProgramCannotBeKnown) {
    EXPECT_EQ(trayMode(session(Windows::x11, {}, u"KDE"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, {}, u"LXQt"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, {}, u"ubuntu:GNOME"_qs)), Mode::hostmenu);
    EXPECT_EQ(trayMode(session(Windows::x11, {}, {})), Mode::hostmenu);
}

TEST(TrayModeTest, TheSettingOverrules) {
    EXPECT_EQ(trayMode(session(Windows::x11, u"xfce4-panel"_qs, {}, u"direct"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, u"lxqt-panel"_qs, {}, u"hostmenu"_qs)), Mode::hostmenu);
    EXPECT_EQ(trayMode(session(Windows::x11, u"lxqt-panel"_qs, {}, u"auto"_qs)), Mode::direct);
    EXPECT_EQ(trayMode(session(Windows::x11, u"lxqt-panel"_qs, {}, u"Nonsense"_qs)), Mode::direct);
}

TEST(TrayModeTest, SomePanelsReadToolTipsAsMarkup) {
    for (const QString& program : {u"waybar"_qs, u"notification-ar"_qs})
        EXPECT_EQ(panelTraits(session(Windows::x11, program)).toolTip,
                  StatusNotifierObject::ToolTipText::markup);
    EXPECT_EQ(panelTraits(session(Windows::wayland, u"plasmashell"_qs)).toolTip,
              StatusNotifierObject::ToolTipText::plain);
}

TEST(TrayModeTest, OnlyPanelsThatColourIconsThemselvesGetOnesWithoutColours) {
    for (const QString& program : {u"lxqt-panel"_qs, u"notification-ar"_qs})
        EXPECT_EQ(panelTraits(session(Windows::x11, program)).icon, TrayIconKind::pixmaps)
            << "they show nothing for an unknown name";
    for (const QString& program :
         {u"plasmashell"_qs, u"xfce4-panel"_qs, u"gnome-shell"_qs, u"xapp-sn-watcher"_qs})
        EXPECT_EQ(panelTraits(session(Windows::x11, program)).icon, TrayIconKind::symbolic)
            << program.toStdString();
    for (const QString& program : {u"waybar"_qs, u"python3"_qs, QString()})
        EXPECT_EQ(panelTraits(session(Windows::x11, program)).icon, TrayIconKind::coloured)
            << program.toStdString();
    EXPECT_EQ(panelTraits(session(Windows::wayland, u"kded5"_qs, u"KDE"_qs)).icon, TrayIconKind::symbolic);
}

TEST(TrayModeTest, SomePanelsTellOfAWheelTurnedTowardsTheUserByAPositiveNumber) {
    for (const QString& program :
         {u"ayatana-indicat"_qs, u"gnome-shell"_qs, u"waybar"_qs, u"xapp-sn-watcher"_qs})
        EXPECT_FALSE(panelTraits(session(Windows::x11, program)).wheel.isPositiveUp) << program.toStdString();
    for (const QString& program : {u"lxqt-panel"_qs, u"plasmashell"_qs, QString()})
        EXPECT_TRUE(panelTraits(session(Windows::x11, program)).wheel.isPositiveUp) << program.toStdString();
}

TEST(TrayModeTest, TheSessionIsReadFromTheEnvironment) {
    test::ScopedEnvironment environment;
    environment.unset("WAYLAND_DISPLAY");
    environment.unset("XDG_SESSION_TYPE");
    environment.set("XDG_CURRENT_DESKTOP", "LXQt");
    EXPECT_EQ(traySessionFromEnvironment(u"xcb"_qs, {}).windows, Windows::x11);
    EXPECT_EQ(traySessionFromEnvironment(u"xcb"_qs, {}).desktop, u"LXQt"_qs);
    EXPECT_EQ(traySessionFromEnvironment(u"wayland"_qs, {}).windows, Windows::wayland);
    EXPECT_EQ(traySessionFromEnvironment(u"wayland-egl"_qs, {}).windows, Windows::wayland);
    EXPECT_EQ(traySessionFromEnvironment(u"offscreen"_qs, {}).windows, Windows::other);
    environment.set("WAYLAND_DISPLAY", "wayland-1");
    EXPECT_EQ(traySessionFromEnvironment(u"xcb"_qs, {}).windows, Windows::wayland) << "X11 inside Wayland";
    environment.unset("WAYLAND_DISPLAY");
    environment.set("XDG_SESSION_TYPE", "wayland");
    EXPECT_EQ(traySessionFromEnvironment(u"xcb"_qs, {}).windows, Windows::wayland);
}

} // namespace
} // namespace zofra
