// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/CheckBox.h"
#include "app/panel/CreditLine.h"
#include "app/panel/IconLabel.h"
#include "app/panel/LanguageButton.h"
#include "app/panel/PlayButton.h"
#include "app/panel/TextButton.h"
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PanelViewTest.h"

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

TEST_F(PanelViewTest, ShowsItsElementsInEnglish) {
    world.viewModel.currentSong = u"An Artist – A Song"_qs;
    world.viewModel.nextSong = std::optional(u"Next – One"_qs);
    showPanel();
    EXPECT_EQ(shownTexts(), (QStringList{u"Version 1.0 (Build 1)"_qs, u"Station:"_qs, u"NOW PLAYING"_qs,
                                         u"An Artist – A Song"_qs, u"UP NEXT"_qs, u"Next – One"_qs,
                                         u"Output:"_qs, u"80 %"_qs}));
    EXPECT_EQ(partOf<CreditLine>(*view)->accessibleName(), u"Made with care by the Zofra Zofra team"_qs);
    EXPECT_EQ(menuButtons(*view).at(0)->title(), u"Qmusic"_qs);
    EXPECT_EQ(menuButtons(*view).at(1)->title(), u"This Mac"_qs);
    EXPECT_EQ(partOf<PlayButton>(*view)->title(), u"Play"_qs);
    EXPECT_EQ(partOf<LinkButton>(*view)->title(), u"Write to us"_qs);
    EXPECT_EQ(partOf<CheckBox>(*view)->title(), u"Start automatically"_qs);
    EXPECT_EQ(partOf<TextButton>(*view)->title(), u"Close Window"_qs);
}

TEST_F(PanelViewTest, HasAFlagForEachLanguageInTheirOrder) {
    showPanel();
    QStringList help;
    for (const LanguageButton* button : partsOf<LanguageButton>(*view)) {
        help << button->help();
        EXPECT_EQ(button->isChecked(), button->language() == AppLanguage::en);
        EXPECT_EQ(button->mark(), button->language() == AppLanguage::en ? 1 : 0);
    }
    EXPECT_EQ(help, (QStringList{u"English"_qs, u"Nederlands"_qs, u"Français"_qs, u"Deutsch"_qs}));
}

TEST(PanelLoadingTest, TheTextFollowsTheLanguageUntilSomethingIsKnown) {
    PanelWorld world(u"en"_qs, RadioStation::qmusic, PanelWorld::OnAir::loading);
    const auto view = world.makeView();
    view->show();
    const auto songs = [&] {
        QStringList found;
        for (const ElidedLabel* label : partsOf<ElidedLabel>(*view))
            found << label->content();
        return found;
    };
    EXPECT_TRUE(songs().contains(u"Loading..."_qs));
    partsOf<LanguageButton>(*view).at(3)->click();
    world.settle();
    EXPECT_TRUE(songs().contains(u"Lädt..."_qs));
}

TEST_F(PanelViewTest, AFlagChangesTheLanguageOfEverything) {
    world.viewModel.currentSong = u"A Song"_qs;
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    const QList<LanguageButton*> flags = partsOf<LanguageButton>(*view);
    flags.at(3)->click();
    world.settle();
    EXPECT_EQ(world.languages.currentLanguage(), AppLanguage::de);
    EXPECT_EQ(shownTexts(),
              (QStringList{u"Version 1.0 (Build 1)"_qs, u"Sender:"_qs, u"JETZT LÄUFT"_qs, u"A Song"_qs,
                           u"ALS NÄCHSTES"_qs, u"Next"_qs, u"Ausgabe:"_qs, u"80 %"_qs}));
    EXPECT_EQ(partOf<CreditLine>(*view)->accessibleName(), u"Mit Sorgfalt vom Zofra-Zofra-Team"_qs);
    EXPECT_EQ(menuButtons(*view).at(1)->title(), u"Dieser Mac"_qs);
    EXPECT_EQ(partOf<PlayButton>(*view)->title(), u"Musik starten"_qs);
    EXPECT_EQ(partOf<CheckBox>(*view)->title(), u"Automatisch starten"_qs);
    EXPECT_EQ(partOf<TextButton>(*view)->title(), u"Fenster schließen"_qs);
    EXPECT_EQ(partOf<VolumeSlider>(*view)->accessibleName(), u"Lautstärke"_qs);
    EXPECT_TRUE(flags.at(3)->isChecked());
    EXPECT_FALSE(flags.at(0)->isChecked());
}

TEST_F(PanelViewTest, OneLanguageIsMarkedAlsoAfterThePanelHasTakenOtherSizes) {
    world.languages.setCurrentLanguage(AppLanguage::fr);
    showPanel();
    QFont font = view->font();
    font.setPointSizeF(20);
    view->setFont(font);
    world.settle();
    for (const LanguageButton* button : partsOf<LanguageButton>(*view))
        EXPECT_EQ(button->mark(), button->language() == AppLanguage::fr ? 1 : 0);
}

TEST_F(PanelViewTest, TheMarkMovesInAHundredAndFiftyMillisecondsSlowAtBothEnds) {
    showPanel();
    LanguageButton* french = partsOf<LanguageButton>(*view).at(2);
    french->click();
    world.settle();
    EXPECT_LT(french->mark(), 1);
    EXPECT_EQ(french->fade().duration(), 150);
    const QEasingCurve curve = french->fade().easingCurve();
    EXPECT_LT(curve.valueForProgress(0.1), 0.1);
    EXPECT_NEAR(curve.valueForProgress(0.5), 0.5, 0.01);
    EXPECT_GT(curve.valueForProgress(0.9), 0.9);
}

TEST_F(PanelViewTest, UpNextIsThereOnlyWhenThereIsOne) {
    showPanel();
    EXPECT_FALSE(shownTexts().contains(u"UP NEXT"_qs));
    const int height = view->height();
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    world.settle();
    EXPECT_TRUE(shownTexts().contains(u"UP NEXT"_qs));
    EXPECT_GT(view->height(), height);
    world.viewModel.nextSong = std::nullopt;
    world.settle();
    EXPECT_FALSE(shownTexts().contains(u"UP NEXT"_qs));
    EXPECT_EQ(view->height(), height);
}

TEST_F(PanelViewTest, PlayButtonAndSpeakerFollowWhoeverPlays) {
    showPanel();
    const auto* play = partOf<PlayButton>(*view);
    const IconLabel* speaker = nullptr;
    for (const IconLabel* icon : partsOf<IconLabel>(*view)) {
        if (icon->name() == u"speaker.wave.2.fill"_qs)
            speaker = icon;
    }
    ASSERT_NE(speaker, nullptr);
    EXPECT_EQ(play->iconName(), u"play.fill"_qs);
    EXPECT_EQ(speaker->ink(), IconLabel::Ink::dim);
    world.player.isPlaying = true;
    world.settle();
    EXPECT_EQ(play->iconName(), u"stop.fill"_qs);
    EXPECT_EQ(play->title(), u"Stop"_qs);
    EXPECT_EQ(speaker->ink(), IconLabel::Ink::accent);
    world.sonos.activeTarget = AudioOutputTarget::sonosEverywhere();
    world.settle();
    EXPECT_EQ(play->title(), u"Play"_qs);
    EXPECT_EQ(speaker->ink(), IconLabel::Ink::dim);
}

TEST_F(PanelViewTest, ThePlayButtonToggles) {
    showPanel();
    partOf<PlayButton>(*view)->click();
    EXPECT_TRUE(world.player.isPlaying);
    partOf<PlayButton>(*view)->click();
    EXPECT_FALSE(world.player.isPlaying);
}

TEST_F(PanelViewTest, ReadsTheLoginItemWhenItAppearsAndNotBefore) {
    view = world.makeView();
    EXPECT_EQ(world.loginItem.reads, 0);
    EXPECT_FALSE(view->launchAtLogin());
    world.loginItem.enabled = true;
    view->show();
    EXPECT_TRUE(view->launchAtLogin());
    EXPECT_TRUE(partOf<CheckBox>(*view)->isChecked());
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
    view->hide();
    world.loginItem.enabled = false;
    view->show();
    EXPECT_FALSE(view->launchAtLogin());
    EXPECT_FALSE(partOf<CheckBox>(*view)->isChecked());
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
}

TEST_F(PanelViewTest, TheCheckBoxRegistersAndUnregisters) {
    showPanel();
    auto* box = partOf<CheckBox>(*view);
    box->click();
    EXPECT_TRUE(view->launchAtLogin());
    EXPECT_TRUE(box->isChecked());
    box->click();
    EXPECT_FALSE(view->launchAtLogin());
    EXPECT_EQ(world.loginItem.calls, (QStringList{u"register"_qs, u"unregister"_qs}));
}

TEST_F(PanelViewTest, TurningTheCheckBoxOnSendsNoRegistrationWhenThereIsOne) {
    showPanel();
    // Registered meanwhile by someone else.
    world.loginItem.enabled = true;
    partOf<CheckBox>(*view)->click();
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
    EXPECT_TRUE(view->launchAtLogin());
}

TEST_F(PanelViewTest, TurningTheCheckBoxOffSendsNothingWhenThereIsNoRegistration) {
    world.loginItem.enabled = true;
    showPanel();
    world.loginItem.enabled = false;
    partOf<CheckBox>(*view)->click();
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
    EXPECT_FALSE(view->launchAtLogin());
}

TEST_F(PanelViewTest, WritingToUsOpensAMail) {
    showPanel();
    partOf<LinkButton>(*view)->click();
    ASSERT_EQ(world.workspace.opened.size(), 1U);
    EXPECT_EQ(world.workspace.opened[0].scheme(), u"mailto"_qs);
}

TEST_F(PanelViewTest, AfterAFailureTheCheckBoxShowsWhatIsTrue) {
    showPanel();
    world.loginItem.failure = u"no room"_qs;
    partOf<CheckBox>(*view)->click();
    EXPECT_FALSE(partOf<CheckBox>(*view)->isChecked());
    EXPECT_FALSE(view->launchAtLogin());
    EXPECT_EQ(world.loginItem.calls, QStringList{u"register"_qs});
    ASSERT_EQ(world.output.lines.size(), 1U);
    EXPECT_EQ(world.output.lines[0], u"Error changing launch at login status: no room"_qs);
}

TEST_F(PanelViewTest, CanEndWithARefreshPendingAndAMenuOpen) {
    showPanel();
    menuButtons(*view).at(1)->openMenu();
    world.player.isPlaying = true;
    view.reset();
    world.settle();
    world.player.isPlaying = false;
    world.settle();
    SUCCEED();
}

} // namespace
} // namespace zofra::test
