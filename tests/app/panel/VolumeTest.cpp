// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PanelViewTest.h"

#include <QMouseEvent>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

class PanelVolumeTest : public PanelViewTest {};

TEST_F(PanelVolumeTest, TheSliderShowsTheVolumeWithoutSettingIt) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    EXPECT_EQ(slider->value(), 80);
    world.defaults.writes.clear();
    world.player.volume = 0.625F;
    PanelWorld::settle();
    EXPECT_EQ(slider->value(), 62);
    EXPECT_TRUE(shownTexts().contains(u"62 %"_qs));
    EXPECT_TRUE(world.defaults.writes.empty());
    EXPECT_EQ(world.player.volume.get(), 0.625F);
}

TEST_F(PanelVolumeTest, TheSlidersRightEndIsExactlyOneAndAHundred) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    const QPointF end(slider->width() - 1, slider->height() / 2.0);
    QMouseEvent down(QEvent::MouseButtonPress, end, slider->mapToGlobal(end), Qt::LeftButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(slider, &down);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    EXPECT_EQ(world.soapActions(), QStringList{u"SetVolume 100"_qs});
    const QPointF start(0, end.y());
    QMouseEvent move(QEvent::MouseMove, start, slider->mapToGlobal(start), Qt::LeftButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(slider, &move);
    QMouseEvent up(QEvent::MouseButtonRelease, start, slider->mapToGlobal(start), Qt::LeftButton,
                   Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(slider, &up);
    PanelWorld::settle();
    EXPECT_EQ(world.player.volume.get(), 0.0F);
    EXPECT_TRUE(shownTexts().contains(u"0 %"_qs));
    EXPECT_FALSE(slider->isSliderDown());
}

TEST_F(PanelVolumeTest, EveryStepOfTheSliderStaysWhereItWasPut) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    for (int percent = 0; percent <= 100; ++percent) {
        slider->setValue(percent);
        EXPECT_NEAR(world.player.volume.get(), static_cast<float>(percent) / 100.0F, 1e-6F);
        EXPECT_EQ(shownPercent(world.player.volume), percent);
        PanelWorld::settle();
        EXPECT_EQ(slider->value(), percent);
    }
    EXPECT_EQ(world.player.volume.get(), 1.0F);
}

TEST_F(PanelVolumeTest, ArrowsMoveTheSlider) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    press(slider, Qt::Key_Right);
    EXPECT_EQ(slider->value(), 82);
    EXPECT_EQ(world.player.volume.get(), 0.82F);
    press(slider, Qt::Key_Left);
    press(slider, Qt::Key_Left);
    EXPECT_EQ(slider->value(), 78);
    press(slider, Qt::Key_End);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    press(slider, Qt::Key_Home);
    EXPECT_EQ(world.player.volume.get(), 0.0F);
}

} // namespace
} // namespace zofra::test
