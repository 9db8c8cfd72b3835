// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/DelegateTest.h"

#include <array>

namespace zofra::test {
namespace {

class AppDelegateButtonTest : public DelegateTest {};

TEST_F(AppDelegateButtonTest, TheRightButtonOpensTheWindowAnythingElseTheMenu) {
    launch();
    item().action(ButtonEvent::rightMouseUp);
    EXPECT_EQ(windows.made, 0) << "the window comes in a later turn";
    queue.drain();
    EXPECT_EQ(windows.made, 1);
    EXPECT_TRUE(item().shownMenus.empty());
    item().action(ButtonEvent::leftMouseUp);
    EXPECT_EQ(item().shownMenus.size(), 1U);
    item().action(std::nullopt);
    EXPECT_EQ(item().shownMenus.size(), 2U);
    queue.drain();
    EXPECT_EQ(windows.made, 1);
}

TEST_F(AppDelegateButtonTest, TheMenuPopsUpFourBelowTheButton) {
    launch();
    item().buttonHeight = 30;
    item().action(ButtonEvent::leftMouseUp);
    EXPECT_EQ(recorded({u"popUpMenu"_qs}), QStringList{u"popUpMenu 0,34"_qs});
}

TEST_F(AppDelegateButtonTest, EveryClickShowsAFreshMenu) {
    launch();
    item().action(ButtonEvent::leftMouseUp);
    player->setStation(RadioStation::joe);
    item().action(ButtonEvent::leftMouseUp);
    ASSERT_EQ(item().shownMenus.size(), 2U);
    EXPECT_EQ(item().shownMenus[0][1].title, u"Station (Zofra)"_qs);
    EXPECT_EQ(item().shownMenus[1][1].title, u"Station (JOE)"_qs);
}

TEST_F(AppDelegateButtonTest, TitleIsStationColonSongWithTheImageBefore) {
    launch();
    delegate->viewModel().onUpdate(u"A & B <b> _x_"_qs, std::nullopt);
    EXPECT_EQ(item().title, u"Zofra: A & B <b> _x_"_qs);
    EXPECT_EQ(item().imagePosition, ImagePosition::leading);
}

TEST_F(AppDelegateButtonTest, RedrawsTitlePositionImageAndToolTipInThisOrder) {
    launch();
    delegate->updateStatusBarButton();
    EXPECT_EQ(record,
              (QStringList{u"setTitle"_qs, u"setImagePosition"_qs, u"setImage"_qs, u"setToolTip"_qs}));
}

struct StatusWords {
    AppLanguage language;
    QString playing;
    QString paused;
};

TEST_F(AppDelegateButtonTest, ImageAndItsWordFollowTheStateInFourLanguages) {
    launch();
    const std::array<StatusWords, 4> table{{{AppLanguage::en, u"Playing"_qs, u"Paused"_qs},
                                            {AppLanguage::nl, u"Afspelen"_qs, u"Gepauzeerd"_qs},
                                            {AppLanguage::fr, u"Lecture en cours"_qs, u"En pause"_qs},
                                            {AppLanguage::de, u"Wiedergabe läuft"_qs, u"Pausiert"_qs}}};
    for (const auto& [language, playing, paused] : table) {
        languages->setCurrentLanguage(language);
        player->isPlaying = false;
        delegate->updateStatusBarButton();
        EXPECT_EQ(item().symbol, u"play.fill"_qs);
        EXPECT_EQ(item().description, paused);
        player->isPlaying = true;
        delegate->updateStatusBarButton();
        EXPECT_EQ(item().symbol, u"speaker.wave.2.fill"_qs);
        EXPECT_EQ(item().description, playing);
    }
}

TEST_F(AppDelegateButtonTest, PlayingIsThatOfTheCurrentOutput) {
    launch();
    player->isPlaying = true;
    EXPECT_TRUE(delegate->isPlaying());
    sonos->activeTarget = AudioOutputTarget::sonosEverywhere();
    EXPECT_FALSE(delegate->isPlaying());
    sonos->isSonosPlaying = true;
    player->isPlaying = false;
    EXPECT_TRUE(delegate->isPlaying());
    sonos->activeTarget = AudioOutputTarget::sonos(u"gone"_qs);
    EXPECT_TRUE(delegate->isPlaying());
    sonos->activeTarget = AudioOutputTarget::localMac();
    EXPECT_FALSE(delegate->isPlaying());
}

TEST_F(AppDelegateButtonTest, ToolTipHasFourLinesWithoutANextSong) {
    launch();
    for (const std::optional<QString>& next : {std::optional<QString>(), std::optional<QString>(QString())}) {
        delegate->viewModel().onUpdate(u"Artist – Song"_qs, next);
        EXPECT_EQ(item().toolTip, u"Station: Zofra (Alternative Rock & Indie)\nNow Playing: Artist – Song\n"
                                  "Output: This Mac\nStatus: Paused"_qs);
    }
}

TEST_F(AppDelegateButtonTest, ToolTipHasFiveLinesWithOne) {
    launch();
    languages->setCurrentLanguage(AppLanguage::fr);
    player->isPlaying = true;
    delegate->viewModel().onUpdate(u"Artist – Song"_qs, u"Other – Tune"_qs);
    EXPECT_EQ(
        item().toolTip,
        u"Station : Zofra (Alternative Rock & Indie)\nEn cours : Artist – Song\nÀ suivre : Other – Tune\n"
        "Sortie : Ce Mac\nStatus: Lecture en cours"_qs);
}

TEST_F(AppDelegateButtonTest, TheItemAsksForTheMenuAndOpensTheWindowByOtherWaysToo) {
    launch();
    EXPECT_EQ(item().menuProvider().size(), delegate->contextMenu().size());
    item().onSecondaryActivate();
    queue.drain();
    EXPECT_EQ(windows.made, 1);
    windows.last->closeByButton();
    item().onUnavailable();
    queue.drain();
    EXPECT_EQ(windows.made, 2);
}

TEST_F(AppDelegateButtonTest, AWindowThatNobodyAskedForLeavesTheKeyboardAndGoesWhenTheStatusBarComes) {
    launch();
    record.clear();
    item().onUnavailable();
    queue.drain();
    EXPECT_TRUE(record.contains(u"window front without keyboard"_qs));
    EXPECT_FALSE(record.contains(u"window front"_qs));
    item().onAvailable();
    queue.drain();
    EXPECT_TRUE(record.contains(u"window close"_qs));
    EXPECT_EQ(delegate->aboutWindow(), nullptr);
}

TEST_F(AppDelegateButtonTest, AWindowThatAPersonTurnedToStays) {
    launch();
    item().onUnavailable();
    queue.drain();
    windows.last->used = true;
    item().onAvailable();
    queue.drain();
    EXPECT_NE(delegate->aboutWindow(), nullptr);
    windows.last->closeByButton();
    queue.drain();
    item().onUnavailable();
    queue.drain();
    delegate->showAboutWindow();
    queue.drain();
    item().onAvailable();
    queue.drain();
    EXPECT_NE(delegate->aboutWindow(), nullptr) << "asked for meanwhile";
    delegate->showAboutWindow();
    item().onUnavailable();
    queue.drain();
    item().onAvailable();
    queue.drain();
    EXPECT_NE(delegate->aboutWindow(), nullptr) << "it had been asked for before";
}

} // namespace
} // namespace zofra::test
