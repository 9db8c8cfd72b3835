// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/CheckBox.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/LanguageButton.h"
#include "app/panel/PlayButton.h"
#include "app/panel/TextButton.h"
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PanelViewTest.h"

#include <QContextMenuEvent>

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
    EXPECT_FALSE(world.calls.contains(u"close"_qs));
}

TEST_F(PanelKeyboardTest, TheMouseDoesNotMoveTheKeyboardSoThatReturnStillCloses) {
    showPanel();
    EXPECT_EQ(view->focusWidget(), partOf<TextButton>(*view));
    for (const QPushButton* button : view->findChildren<QPushButton*>())
        EXPECT_FALSE(button->focusPolicy() & Qt::ClickFocus);
}

TEST_F(PanelKeyboardTest, TabGoesFromTopToBottom) {
    showPanel();
    QStringList names;
    for (int i = 0; i < 9; ++i) {
        press(QApplication::focusWidget(), Qt::Key_Tab);
        names << QApplication::focusWidget()->accessibleName();
    }
    EXPECT_EQ(names, (QStringList{u"English"_qs, u"Station: Qmusic"_qs, u"Output: This Mac"_qs, u"Play"_qs,
                                  u"Volume"_qs, u"Write to us"_qs, u"Start automatically"_qs,
                                  u"Close Window"_qs, u"English"_qs}));
}

TEST_F(PanelKeyboardTest, ArrowsChooseInTheLanguageGroup) {
    showPanel();
    press(QApplication::focusWidget(), Qt::Key_Tab);
    press(QApplication::focusWidget(), Qt::Key_Right);
    world.settle();
    EXPECT_EQ(world.languages.currentLanguage(), AppLanguage::nl);
    EXPECT_EQ(QApplication::focusWidget(), partsOf<LanguageButton>(*view).at(1));
    press(QApplication::focusWidget(), Qt::Key_Right);
    world.settle();
    press(QApplication::focusWidget(), Qt::Key_Left);
    world.settle();
    EXPECT_EQ(world.languages.currentLanguage(), AppLanguage::nl);
    // Tab leaves the group, and comes back to what is current.
    press(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), menuButtons(*view).at(0));
    press(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(QApplication::focusWidget(), partsOf<LanguageButton>(*view).at(1));
}

TEST_F(PanelKeyboardTest, TheMenusKeyForPlayingWorksInThePanelToo) {
    showPanel();
    for (QWidget* part : {static_cast<QWidget*>(partOf<TextButton>(*view)),
                          static_cast<QWidget*>(partOf<VolumeSlider>(*view)),
                          static_cast<QWidget*>(menuButtons(*view).at(0))}) {
        const bool wasPlaying = world.player.isPlaying;
        press(part, Qt::Key_P, Qt::ControlModifier);
        EXPECT_NE(world.player.isPlaying.get(), wasPlaying);
    }
}

TEST_F(PanelKeyboardTest, TheStatusBarsMenuOpensHereToo) {
    showPanel();
    QWidget* play = partOf<PlayButton>(*view);
    play->setFocus(Qt::TabFocusReason);
    press(play, Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_EQ(world.calls, QStringList{u"menu of 10"_qs});
    const QRect place(play->mapTo(view.get(), QPoint(0, 0)), play->size());
    EXPECT_EQ(world.menuPlace, place.bottomLeft()) << "at the part that has the keyboard";
    // A click with the right button, or the menu key.
    QContextMenuEvent asked(QContextMenuEvent::Mouse, QPoint(3, 4), play->mapToGlobal(QPoint(3, 4)));
    QApplication::sendEvent(play, &asked);
    EXPECT_EQ(world.calls.size(), 2);
    EXPECT_EQ(world.menuPlace, place.topLeft() + QPoint(3, 4));
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
    ASSERT_NE(menu->activeAction(), nullptr);
    EXPECT_TRUE(menu->activeAction()->text().startsWith(u"Qmusic"_qs));
    press(menu, Qt::Key_Down);
    press(menu, Qt::Key_Return);
    EXPECT_FALSE(menu->isVisible());
    EXPECT_EQ(world.player.currentStation.get(), RadioStation(RadioStation::joe));
    EXPECT_EQ(world.calls, QStringList{u"updateStatusBarButton"_qs});
}

TEST_F(PanelKeyboardTest, OnlyWhoeverHasTheKeyboardWearsARing) {
    showPanel();
    const auto* close = partOf<TextButton>(*view);
    const QRect place(close->mapTo(view.get(), QPoint(0, 0)), close->size());
    const QColor ring = view->look().theme.accentText;
    const auto hasRing = [&] {
        const QImage image = view->grab(place).toImage();
        return image.pixelColor(image.width() / 2, 1) == ring;
    };
    EXPECT_TRUE(hasRing());
    press(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_FALSE(hasRing());
}

TEST_F(PanelKeyboardTest, WhoeverHasTheKeyboardIsSeen) {
    showPanel();
    const auto look = [this] { return view->grab().toImage(); };
    QImage before = look();
    for (int i = 0; i < 8; ++i) {
        press(QApplication::focusWidget(), Qt::Key_Tab);
        const QWidget* part = QApplication::focusWidget();
        const QImage now = look();
        const QRect place(part->mapTo(view.get(), QPoint(0, 0)), part->size());
        EXPECT_NE(now.copy(place), before.copy(place)) << part->accessibleName().toStdString();
        before = now;
    }
}

} // namespace
} // namespace zofra::test
