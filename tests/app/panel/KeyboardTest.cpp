// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/CheckBox.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/LanguageButton.h"
#include "app/panel/PlayButton.h"
#include "app/panel/TextButton.h"
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PanelViewTest.h"

#include <QAccessible>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

class PanelKeyboardTest : public PanelViewTest {};

TEST_F(PanelKeyboardTest, ClosesByButtonReturnAndEscape) {
    showPanel();
    partOf<TextButton>(*view)->click();
    EXPECT_EQ(world.calls.size(), 1);
    press(view.get(), Qt::Key_Return);
    EXPECT_EQ(world.calls.size(), 2);
    press(view.get(), Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(world.calls.size(), 3);
    press(view.get(), Qt::Key_Escape);
    EXPECT_EQ(world.calls, (QStringList{u"close"_qs, u"close"_qs, u"close"_qs, u"close"_qs}));
}

TEST_F(PanelKeyboardTest, ReturnClosesFromSliderAndCheckBox) {
    showPanel();
    press(partOf<VolumeSlider>(*view), Qt::Key_Return);
    press(partOf<CheckBox>(*view), Qt::Key_Return);
    EXPECT_EQ(world.calls, (QStringList{u"close"_qs, u"close"_qs}));
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
}

TEST_F(PanelKeyboardTest, ReturnAndSpacePressTheButtonThatHasTheKeyboard) {
    showPanel();
    auto* play = partOf<PlayButton>(*view);
    play->setFocus(Qt::TabFocusReason);
    press(play, Qt::Key_Return);
    EXPECT_TRUE(world.player.isPlaying);
    press(play, Qt::Key_Space);
    EXPECT_FALSE(world.player.isPlaying);
    EXPECT_TRUE(world.calls.isEmpty());
}

TEST_F(PanelKeyboardTest, TheMouseDoesNotMoveTheKeyboardSoThatReturnStillCloses) {
    showPanel();
    EXPECT_EQ(view->focusWidget(), view.get());
    for (const QPushButton* button : view->findChildren<QPushButton*>())
        EXPECT_EQ(button->focusPolicy(), Qt::TabFocus);
}

TEST_F(PanelKeyboardTest, TabGoesFromTopToBottom) {
    showPanel();
    QStringList names;
    for (int i = 0; i < 12; ++i) {
        press(QApplication::focusWidget(), Qt::Key_Tab);
        names << QApplication::focusWidget()->accessibleName();
    }
    EXPECT_EQ(names,
              (QStringList{u"English"_qs, u"Nederlands"_qs, u"Français"_qs, u"Deutsch"_qs,
                           u"Station: Qmusic"_qs, u"Output: This Mac"_qs, u"Play"_qs, u"Volume"_qs,
                           u"Write to us"_qs, u"Start automatically"_qs, u"Close Window"_qs, u"English"_qs}));
}

TEST_F(PanelKeyboardTest, MenusOpenWithTheKeyboard) {
    showPanel();
    MenuButton* station = menuButtons(*view).at(0);
    for (const int key : {int(Qt::Key_Space), int(Qt::Key_Return), int(Qt::Key_Down)}) {
        press(station, key);
        ASSERT_NE(station->openedMenu(), nullptr);
        EXPECT_TRUE(station->openedMenu()->isVisible()) << key;
        station->openedMenu()->close();
        EXPECT_FALSE(station->isDown());
    }
    EXPECT_TRUE(world.calls.isEmpty());
}

TEST_F(PanelKeyboardTest, SpaceTurnsTheCheckBox) {
    showPanel();
    auto* box = partOf<CheckBox>(*view);
    box->setFocus(Qt::TabFocusReason);
    press(box, Qt::Key_Space);
    EXPECT_TRUE(box->isChecked());
    press(box, Qt::Key_Space);
    EXPECT_FALSE(box->isChecked());
    EXPECT_EQ(world.loginItem.calls, (QStringList{u"register"_qs, u"unregister"_qs}));
}

TEST_F(PanelKeyboardTest, MenusAreLeftAndChosenFromWithTheKeyboard) {
    showPanel();
    MenuButton* station = menuButtons(*view).at(0);
    station->setFocus(Qt::TabFocusReason);
    press(station, Qt::Key_Space);
    PanelMenu* menu = station->openedMenu();
    ASSERT_TRUE(menu->isVisible());
    press(menu, Qt::Key_Escape);
    EXPECT_FALSE(menu->isVisible());
    EXPECT_TRUE(world.calls.isEmpty()) << "Escape closes the menu, not the panel";
    EXPECT_EQ(view->focusWidget(), station);
    press(station, Qt::Key_Space);
    press(menu, Qt::Key_Down);
    press(menu, Qt::Key_Return);
    EXPECT_FALSE(menu->isVisible());
    EXPECT_EQ(world.player.currentStation.get(), RadioStation(RadioStation::zofra));
    EXPECT_EQ(world.calls, QStringList{u"updateStatusBarButton"_qs});
}

TEST_F(PanelKeyboardTest, WhoeverHasTheKeyboardIsSeen) {
    showPanel();
    const auto look = [this] { return view->grab().toImage(); };
    QImage before = look();
    for (int i = 0; i < 11; ++i) {
        press(QApplication::focusWidget(), Qt::Key_Tab);
        const QWidget* part = QApplication::focusWidget();
        const QImage now = look();
        const QRect place(part->mapTo(view.get(), QPoint(0, 0)), part->size());
        EXPECT_NE(now.copy(place), before.copy(place)) << part->accessibleName().toStdString();
        before = now;
    }
}

TEST_F(PanelKeyboardTest, TellsScreenReadersWhatThingsAre) {
    world.player.isPlaying = true;
    world.loginItem.enabled = true;
    showPanel();
    const auto roleOf = [](QWidget* widget) { return QAccessible::queryAccessibleInterface(widget)->role(); };
    EXPECT_EQ(roleOf(partOf<PlayButton>(*view)), QAccessible::PushButton);
    EXPECT_EQ(roleOf(partOf<VolumeSlider>(*view)), QAccessible::Slider);
    EXPECT_EQ(roleOf(partOf<CheckBox>(*view)), QAccessible::CheckBox);
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(partOf<CheckBox>(*view))->state().checked);
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(partsOf<LanguageButton>(*view).at(0))->state().checked);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(partOf<VolumeSlider>(*view))
                  ->valueInterface()
                  ->currentValue()
                  .toInt(),
              80);
    for (ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
        EXPECT_EQ(roleOf(label), QAccessible::StaticText);
        EXPECT_EQ(QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name), label->content());
    }
    EXPECT_EQ(menuButtons(*view).at(1)->accessibleDescription(),
              u"Zofra plays independently; synchronization with Sonos is not guaranteed."_qs);
}

} // namespace
} // namespace zofra::test
