// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VolumePercent.h"
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PanelViewTest.h"

#include <QMouseEvent>
#include <QWheelEvent>

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
    world.settle();
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
    world.settle();
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
        EXPECT_EQ(volumePercent(world.player.volume), percent);
        world.settle();
        EXPECT_EQ(slider->value(), percent);
    }
    EXPECT_EQ(world.player.volume.get(), 1.0F);
}

TEST_F(PanelVolumeTest, ArrowsMoveTheSlider) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    press(slider, Qt::Key_Right);
    EXPECT_EQ(slider->value(), 85);
    EXPECT_EQ(world.player.volume.get(), 0.85F);
    press(slider, Qt::Key_Left);
    press(slider, Qt::Key_Left);
    EXPECT_EQ(slider->value(), 75);
    press(slider, Qt::Key_End);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    press(slider, Qt::Key_Home);
    EXPECT_EQ(world.player.volume.get(), 0.0F);
}

void sendMouse(QWidget* target, QEvent::Type type, QPointF at) {
    const auto held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, target->mapToGlobal(at), Qt::LeftButton, held, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

TEST_F(PanelVolumeTest, TheKnobIsHeldWhereItWasTouched) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    const int bleed = view->look().metrics.bleed();
    const qreal room = slider->width() - 2 * bleed - 18;
    const QPointF knob(bleed + 9 + room * 0.8, slider->height() / 2.0);
    for (const qreal off : {-8.0, 0.0, 8.0}) {
        sendMouse(slider, QEvent::MouseButtonPress, knob + QPointF(off, 0));
        EXPECT_EQ(slider->value(), 80) << off;
        sendMouse(slider, QEvent::MouseMove, knob + QPointF(off - room * 0.3, 0));
        EXPECT_EQ(slider->value(), 50) << off;
        sendMouse(slider, QEvent::MouseMove, knob + QPointF(off, 0));
        sendMouse(slider, QEvent::MouseButtonRelease, knob + QPointF(off, 0));
        EXPECT_EQ(slider->value(), 80) << off;
    }
    EXPECT_EQ(world.player.volume.get(), 0.8F);
}

void turnWheel(QWidget* target, int units) {
    const QPointF at(target->width() / 2.0, target->height() / 2.0);
    QWheelEvent event(at, target->mapToGlobal(at), QPoint(), QPoint(0, units), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &event);
}

TEST_F(PanelVolumeTest, ANotchOfTheWheelIsTheSameStepAsInTheStatusBar) {
    showPanel();
    auto* slider = partOf<VolumeSlider>(*view);
    turnWheel(slider, 120);
    const float here = world.player.volume;
    world.player.volume = 0.8F;
    EXPECT_EQ(world.controls.changeVolume(RadioControls::volumeStep), 85);
    EXPECT_EQ(here, world.player.volume.get());
    world.settle();
    turnWheel(slider, -240);
    EXPECT_EQ(slider->value(), 75);
    // A touch pad tells small parts of a notch.
    for (int i = 0; i < 4; ++i)
        turnWheel(slider, 30);
    EXPECT_EQ(slider->value(), 80);
}

} // namespace
} // namespace zofra::test
