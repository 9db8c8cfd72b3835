// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/ElidedLabel.h"
#include "app/panel/PlayButton.h"
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PaintCounter.h"
#include "tests/app/panel/PanelViewTest.h"

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

class PanelRepaintTest : public PanelViewTest {};

TEST_F(PanelRepaintTest, ManyChangesOfOneTurnAreOneRefresh) {
    showPanel();
    const int before = view->refreshCount();
    world.player.isPlaying = true;
    world.player.volume = 0.4F;
    world.viewModel.currentSong = u"A"_qs;
    world.viewModel.nextSong = std::optional(u"B"_qs);
    world.sonos.rooms = QList<SonosRoom>{makeRoom(u"A"_qs, u"Bath"_qs)};
    world.languages.setCurrentLanguage(AppLanguage::nl);
    EXPECT_EQ(view->refreshCount(), before);
    world.settle();
    EXPECT_EQ(view->refreshCount(), before + 1);
    EXPECT_TRUE(shownTexts().contains(u"NU BEZIG"_qs));
    world.settle();
    EXPECT_EQ(view->refreshCount(), before + 1);
}

TEST_F(PanelRepaintTest, AChangeOfSongRepaintsTheSongAndNothingElse) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    PaintCounter paints;
    world.viewModel.currentSong = u"Quite Another Song"_qs;
    world.settle();
    const ElidedLabel* song = nullptr;
    for (const ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
        if (label->content() == u"Quite Another Song"_qs)
            song = label;
    }
    ASSERT_NE(song, nullptr);
    EXPECT_EQ(paints.of(song), 1);
    EXPECT_EQ(paints.all(), 1) << paints.names().toStdString();
}

TEST_F(PanelRepaintTest, EveryPartRepaintsByItself) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    int parts = 0;
    for (QWidget* part : view->findChildren<QWidget*>()) {
        if (!part->findChildren<QWidget*>().isEmpty())
            continue;
        ++parts;
        PaintCounter paints;
        part->update();
        world.settle();
        EXPECT_EQ(paints.of(part), 1) << paints.names().toStdString();
        EXPECT_EQ(paints.all(), 1) << paints.names().toStdString();
    }
    EXPECT_GE(parts, 24);
}

TEST_F(PanelRepaintTest, NothingIsRepaintedWhenNothingDiffers) {
    showPanel();
    PaintCounter paints;
    world.viewModel.currentSong = world.viewModel.currentSong.get();
    world.player.volume = world.player.volume.get();
    world.sonos.isScanning = true;
    world.settle();
    EXPECT_EQ(paints.all(), 0);
}

TEST_F(PanelRepaintTest, AChangeOfVolumeRepaintsSliderAndPercentageOnly) {
    showPanel();
    PaintCounter paints;
    world.player.volume = 0.4F;
    world.settle();
    EXPECT_EQ(paints.of(partOf<VolumeSlider>(*view)), 1);
    EXPECT_EQ(paints.all(), 2) << paints.names().toStdString();
}

TEST_F(PanelRepaintTest, FollowsTheDesktopsAppearance) {
    showPanel();
    EXPECT_FALSE(view->look().theme.isDark);
    PaintCounter paints;
    DesktopAppearance appearance;
    appearance.colorScheme = DesktopAppearance::ColorScheme::dark;
    appearance.accent = QColor(0x3584e4);
    world.appearance.set(appearance);
    world.settle();
    EXPECT_TRUE(view->look().theme.isDark);
    EXPECT_GT(paints.of(partOf<PlayButton>(*view)), 0);
    paints.forget();
    world.appearance.set(appearance);
    world.settle();
    EXPECT_EQ(paints.all(), 0);
}

TEST_F(PanelRepaintTest, ANewAppearanceRepaintsEveryPart) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    PaintCounter paints;
    DesktopAppearance appearance;
    appearance.colorScheme = DesktopAppearance::ColorScheme::dark;
    world.appearance.set(appearance);
    world.settle();
    EXPECT_GT(paints.of(view.get()), 0);
    for (QWidget* part : view->findChildren<QWidget*>()) {
        if (part->isVisible() && part->findChildren<QWidget*>().isEmpty()) {
            EXPECT_GT(paints.of(part), 0) << part->accessibleName().toStdString();
        }
    }
}

} // namespace
} // namespace zofra::test
