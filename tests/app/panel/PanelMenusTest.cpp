// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMenus.h"

#include "tests/app/panel/PanelWorld.h"

#include <QAction>
#include <QApplication>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

QStringList linesOf(const Menu& entries) {
    QStringList lines;
    for (const MenuItem& entry : entries) {
        if (entry.isSeparator())
            lines << u"---"_qs;
        else if (!entry.isEnabled)
            lines << u"("_qs + entry.title + u")"_qs;
        else
            lines << (entry.state == MenuItem::CheckState::on ? u"* "_qs : u"  "_qs) + entry.title;
    }
    return lines;
}

TEST(StationMenuTest, ListsEveryStationWithNameAndGenreAndMarksTheCurrentOne) {
    PanelWorld world(u"en"_qs, RadioStation::joe);
    EXPECT_EQ(linesOf(PanelMenus::stations(world.state(), world.controls)),
              (QStringList{
                  u"  Zofra – Alternative Rock & Indie"_qs, u"  Qmusic – Hits & Pop"_qs,
                  u"* JOE – 80s, 90s & Pop Classics"_qs, u"  Zofra Class X – Classics & Classic Rock"_qs,
                  u"  Radio Contact – Feel Good & Hits"_qs, u"  Bel RTL – Info, Talk & Pop"_qs,
                  u"  Inside Radio – Pop & Contemporary Hits"_qs, u"  Sud Radio Belgique – Variété & Pop"_qs,
                  u"  Sud Radio Hainaut – Regional Mons & Pop"_qs}));
}

TEST(OutputMenuTest, WithoutRoomsSaysWhyAndOffersEverythingElse) {
    PanelWorld world;
    EXPECT_EQ(linesOf(PanelMenus::outputs(world.state(), world.controls)),
              (QStringList{u"* This Mac"_qs, u"(No Sonos or Zofra devices found)"_qs,
                           u"  Everywhere (All Rooms)"_qs, u"---"_qs,
                           u"  Search for Sonos and Zofra devices..."_qs, u"  Allow Local Network …"_qs}));
}

TEST(OutputMenuTest, SaysWhatTheSpeakerManagerSaysOfItsEmptiness) {
    PanelWorld world(u"de"_qs);
    world.sonos.isScanning = true;
    EXPECT_EQ(linesOf(PanelMenus::outputs(world.state(), world.controls)).at(1), u"(Suche läuft …)"_qs);
    world.sonos.localNetworkDenied = true;
    EXPECT_EQ(linesOf(PanelMenus::outputs(world.state(), world.controls)).at(1),
              u"(Kein Zugriff aufs lokale Netzwerk)"_qs);
}

TEST(OutputMenuTest, ListsTheRoomsAndMarksTheTarget) {
    PanelWorld world;
    world.sonos.rooms =
        QList<SonosRoom>{makeRoom(u"A"_qs, u"Bath"_qs), makeRoom(u"B"_qs, u"Kitchen & <i>Bar</i>"_qs)};
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"B"_qs);
    EXPECT_EQ(linesOf(PanelMenus::outputs(world.state(), world.controls)),
              (QStringList{u"  This Mac"_qs, u"  Bath"_qs, u"* Kitchen & <i>Bar</i>"_qs,
                           u"  Everywhere (All Rooms)"_qs, u"---"_qs,
                           u"  Search for Sonos and Zofra devices..."_qs, u"  Allow Local Network …"_qs}));
    world.sonos.activeTarget = AudioOutputTarget::sonosEverywhere();
    EXPECT_EQ(linesOf(PanelMenus::outputs(world.state(), world.controls)).at(3),
              u"* Everywhere (All Rooms)"_qs);
}

TEST(OutputMenuTest, GivesRoomsOfOneNameTitlesThatTellThemApart) {
    PanelWorld world;
    SonosRoom own = makeRoom(u"B"_qs, u"Kitchen"_qs);
    own.coordinator.model = u"Zofra Pi Player"_qs;
    own.speakers = {own.coordinator};
    world.sonos.rooms = QList<SonosRoom>{makeRoom(u"A"_qs, u"Kitchen"_qs), own};
    const QStringList lines = linesOf(PanelMenus::outputs(world.state(), world.controls));
    EXPECT_EQ(lines.at(1), u"  Kitchen (Sonos)"_qs);
    EXPECT_EQ(lines.at(2), u"  Kitchen (Zofra)"_qs);
}

TEST(OutputMenuTest, ExplainsPlayingEverywhere) {
    PanelWorld world(u"fr"_qs);
    for (const MenuItem& entry : PanelMenus::outputs(world.state(), world.controls)) {
        const bool isEverywhere = entry.title == u"Partout (Toutes les pièces)"_qs;
        EXPECT_EQ(entry.toolTip.isEmpty(), !isEverywhere) << entry.title.toStdString();
    }
}

TEST(PanelMenuTest, ShowsTextAsItIs) {
    PanelWorld world;
    world.sonos.rooms = QList<SonosRoom>{makeRoom(u"A"_qs, u"R&B \u202Eroom\n"_qs)};
    const auto view = world.makeView();
    view->show();
    world.settle();
    MenuButton* button = menuButtons(*view).at(1);
    button->openMenu();
    const QAction* room = button->openedMenu()->actions().at(1);
    EXPECT_EQ(room->text(), u"R&&B room "_qs);
    EXPECT_TRUE(room->isCheckable());
    EXPECT_FALSE(room->isChecked());
    EXPECT_TRUE(button->openedMenu()->actions().at(0)->isChecked());
    EXPECT_EQ(button->openedMenu()->parentWidget(), button);
}

TEST(PanelMenuTest, FollowsTheStateWhileItIsOpen) {
    PanelWorld world;
    const auto view = world.makeView();
    view->show();
    world.settle();
    MenuButton* button = menuButtons(*view).at(1);
    button->openMenu();
    PanelMenu* menu = button->openedMenu();
    ASSERT_TRUE(menu->isVisible());
    menu->setActiveAction(menu->actions().at(4));
    const QString active = menu->activeAction()->text();
    world.sonos.rooms = QList<SonosRoom>{makeRoom(u"A"_qs, u"Bath"_qs), makeRoom(u"B"_qs, u"Kitchen"_qs)};
    world.settle();
    EXPECT_EQ(menu->actions().at(1)->text(), u"Bath"_qs);
    EXPECT_EQ(menu->actions().size(), 7);
    // Whoever was about to search still is.
    ASSERT_NE(menu->activeAction(), nullptr);
    EXPECT_EQ(menu->activeAction()->text(), active);
}

TEST(PanelMenuTest, LeavesEqualLinesAlone) {
    PanelWorld world;
    const auto view = world.makeView();
    view->show();
    MenuButton* button = menuButtons(*view).at(0);
    button->openMenu();
    const QList<QAction*> before = button->openedMenu()->actions();
    world.viewModel.currentSong = u"Another"_qs;
    world.settle();
    EXPECT_EQ(button->openedMenu()->actions(), before);
}

TEST(PanelMenuTest, ChoosingALineDoesWhatItSays) {
    PanelWorld world;
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    const auto view = world.makeView();
    view->show();
    world.settle();
    const QList<MenuButton*> buttons = menuButtons(*view);

    buttons.at(0)->openMenu();
    buttons.at(0)->openedMenu()->actions().at(2)->trigger();
    EXPECT_EQ(world.player.currentStation.get(), RadioStation::joe);

    const auto choose = [&](int line) {
        buttons.at(1)->openMenu();
        buttons.at(1)->openedMenu()->actions().at(line)->trigger();
        buttons.at(1)->openedMenu()->close();
        world.settle();
    };
    EXPECT_TRUE(world.soapActions().isEmpty());
    choose(1);
    EXPECT_FALSE(world.soapActions().isEmpty());
    EXPECT_EQ(buttons.at(1)->title(), u"Kitchen"_qs);
    choose(2);
    EXPECT_EQ(world.sonos.activeTarget.get(), AudioOutputTarget::sonosEverywhere());
    choose(0);
    EXPECT_EQ(world.sonos.activeTarget.get(), AudioOutputTarget::localMac());
    EXPECT_EQ(buttons.at(1)->title(), u"This Mac"_qs);
    const int listings = world.network.listings();
    world.http.automatic = [](const HttpRequest&) {
        return HttpResult(failure(HttpError{HttpError::Code::timedOut, 0, u"no answer"_qs}));
    };
    choose(4);
    EXPECT_GT(world.network.listings(), listings);
    choose(5);
    ASSERT_EQ(world.workspace.opened.size(), 1U);
    EXPECT_EQ(world.workspace.opened[0].scheme(), u"x-apple.systempreferences"_qs);
}

/// A menu as it is painted, with where its lines are.
struct PaintedMenu {
    explicit PaintedMenu(const PanelWorld& world)
        : look{PanelTheme::make(world.appearance.current(), QApplication::palette()),
               PanelMetrics(QApplication::font(), 96, 800)}
        , menu(look, nullptr) {}
    void paint() {
        menu.ensurePolished();
        menu.adjustSize();
        image = menu.grab().toImage();
    }
    /// Whether there is ink of this colour in the line, left of where its text begins.
    bool hasLead(int line, const QColor& color) const {
        const QRect row = menu.actionGeometry(menu.actions().at(line)).adjusted(2, 2, 0, -2);
        for (int y = row.top(); y <= row.bottom(); ++y) {
            for (int x = row.left(); x < row.left() + 26; ++x) {
                if (image.pixelColor(x, y) == color)
                    return true;
            }
        }
        return false;
    }

    PanelLook look;
    PanelMenu menu;
    QImage image;
};

TEST(PanelMenuTest, OnlyTheCurrentLineCarriesTheCheckMark) {
    PanelWorld world(u"en"_qs, RadioStation::joe);
    PaintedMenu painted(world);
    painted.menu.setEntries(PanelMenus::stations(world.state(), world.controls));
    painted.paint();
    for (int line = 0; line < 9; ++line)
        EXPECT_EQ(painted.hasLead(line, painted.look.theme.accentText), line == 2) << line;
}

TEST(PanelMenuTest, TheLineUnderThePointerIsMarkedAndNoOther) {
    PanelWorld world(u"en"_qs, RadioStation::joe);
    PaintedMenu painted(world);
    painted.menu.setEntries(PanelMenus::stations(world.state(), world.controls));
    painted.menu.setActiveAction(painted.menu.actions().at(5));
    painted.paint();
    const QColor mark = mixed(painted.look.theme.accentText, painted.look.theme.card, 0.14);
    EXPECT_GT(contrastRatio(painted.look.theme.text, mark), 4.5);
    for (int line = 0; line < 9; ++line)
        EXPECT_EQ(painted.hasLead(line, mark), line == 5) << line;
}

TEST(PanelMenuTest, SaysWhyThereAreNoRoomsInSmallPrintThatCannotBeChosen) {
    PanelWorld world;
    PaintedMenu painted(world);
    painted.menu.setEntries(PanelMenus::outputs(world.state(), world.controls));
    const QList<QAction*> lines = painted.menu.actions();
    EXPECT_FALSE(lines.at(1)->isEnabled());
    EXPECT_EQ(lines.at(1)->font(), painted.look.metrics.font(11));
    painted.menu.ensurePolished();
    EXPECT_EQ(painted.menu.font(), painted.look.metrics.font(14));
}

} // namespace
} // namespace zofra::test
