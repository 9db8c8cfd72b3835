// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/PanelFindings.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra::doctor {
namespace {

using Windows = TraySession::Windows;

DesktopFacts desktop(Windows windows, const QString& desktopName, const QString& panelProgram) {
    DesktopFacts facts;
    facts.platform = windows == Windows::wayland ? u"wayland"_qs : u"xcb"_qs;
    facts.session.windows = windows;
    facts.session.desktop = desktopName;
    facts.session.panelProgram = panelProgram;
    facts.hasWatcher = !panelProgram.isEmpty();
    facts.hasPanel = facts.hasWatcher;
    return facts;
}

QString modeOf(const Finding& finding) {
    return finding.details.value(u"mode"_qs).toString();
}

TEST(TraySessionTest, NamesWindowsAndDesktop) {
    const auto finding = judgeSession(desktop(Windows::wayland, u"sway"_qs, {}));
    EXPECT_EQ(finding.verdict, Verdict::ok);
    EXPECT_EQ(finding.text, u"Wayland, sway"_qs);
    EXPECT_TRUE(judgeSession(desktop(Windows::x11, {}, {})).text.startsWith(u"X11, desktop unknown"_qs));
}

TEST(TraySessionTest, IsAProblemWithoutADisplay) {
    DesktopFacts facts;
    EXPECT_EQ(judgeSession(facts).verdict, Verdict::problem);
    EXPECT_TRUE(judgeSession(facts).cure.contains(u"--headless"_qs));
    facts.variables = u"DISPLAY=:7"_qs;
    EXPECT_TRUE(judgeSession(facts).text.contains(u"DISPLAY=:7"_qs));
    EXPECT_EQ(judgePanel(facts).verdict, Verdict::skipped);
    facts.isHeadless = true;
    EXPECT_EQ(judgeSession(facts).verdict, Verdict::ok);
    EXPECT_EQ(judgePanel(facts).verdict, Verdict::skipped);
}

TEST(PanelFindingsTest, SaysWhichModeAndWhy) {
    const auto lxqt = judgePanel(desktop(Windows::x11, u"LXQt"_qs, u"lxqt-panel"_qs));
    EXPECT_EQ(modeOf(lxqt), u"direct"_qs);
    EXPECT_EQ(lxqt.text, u"lxqt-panel shows the button; mode direct, for it passes both clicks on"_qs);
    const auto xfce = judgePanel(desktop(Windows::x11, u"XFCE"_qs, u"xfce4-panel"_qs));
    EXPECT_EQ(modeOf(xfce), u"hostmenu"_qs);
    EXPECT_TRUE(xfce.text.contains(u"draws the menu itself"_qs));
    const auto waybar = judgePanel(desktop(Windows::wayland, u"sway"_qs, u"waybar"_qs));
    EXPECT_EQ(modeOf(waybar), u"hostmenu"_qs);
    EXPECT_TRUE(waybar.text.contains(u"on Wayland"_qs));
}

TEST(PanelFindingsTest, RespectsTheSetting) {
    auto facts = desktop(Windows::x11, u"XFCE"_qs, u"xfce4-panel"_qs);
    facts.session.setting = u"direct"_qs;
    EXPECT_EQ(modeOf(judgePanel(facts)), u"direct"_qs);
    EXPECT_TRUE(judgePanel(facts).text.contains(u"tray/mode"_qs));
    facts.session.setting = u"auto"_qs;
    EXPECT_EQ(modeOf(judgePanel(facts)), u"hostmenu"_qs);
    EXPECT_FALSE(judgePanel(facts).text.contains(u"tray/mode"_qs));
}

TEST(PanelFindingsTest, TakesATrayOfTheOldKindOnX11Only) {
    auto facts = desktop(Windows::x11, {}, {});
    facts.hasOldTray = true;
    EXPECT_EQ(modeOf(judgePanel(facts)), u"xembed"_qs);
    facts.session.windows = Windows::wayland;
    EXPECT_EQ(modeOf(judgePanel(facts)), u"window"_qs);
}

TEST(PanelFindingsTest, WithoutOneTellsHowToGetOne) {
    const auto none = judgePanel(desktop(Windows::x11, u"LXQt"_qs, {}));
    EXPECT_EQ(none.verdict, Verdict::problem);
    EXPECT_EQ(modeOf(none), u"window"_qs);
    EXPECT_TRUE(none.cure.contains(u"Status Notifier"_qs));
    EXPECT_TRUE(
        judgePanel(desktop(Windows::wayland, u"ubuntu:GNOME"_qs, {})).cure.contains(u"AppIndicator"_qs));
    auto hostless = desktop(Windows::x11, u"KDE"_qs, u"kded5"_qs);
    hostless.hasPanel = false;
    EXPECT_TRUE(judgePanel(hostless).text.startsWith(u"kded5 watches over status items"_qs));
}

} // namespace
} // namespace zofra::doctor
