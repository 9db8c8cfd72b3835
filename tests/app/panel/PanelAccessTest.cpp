// SPDX-License-Identifier: GPL-3.0-or-later
// What screen readers are told.
#include "app/panel/CheckBox.h"
#include "app/panel/LanguageButton.h"
#include "app/panel/PlayButton.h"
#include "app/panel/TextButton.h"
#include "app/panel/VolumeSlider.h"
#include "tests/app/panel/PanelViewTest.h"

#include <QAccessible>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

QAccessibleInterface& accessOf(QWidget* widget) {
    return *QAccessible::queryAccessibleInterface(widget);
}

/// It and all below it.
QList<QAccessibleInterface*> everything(QAccessibleInterface* root) {
    QList<QAccessibleInterface*> found{root};
    for (int i = 0; i < root->childCount(); ++i)
        found += everything(root->child(i));
    return found;
}

class PanelAccessTest : public PanelViewTest {};

TEST_F(PanelAccessTest, SaysWhatThingsAre) {
    world.player.isPlaying = true;
    world.loginItem.enabled = true;
    showPanel();
    EXPECT_EQ(accessOf(view.get()).role(), QAccessible::Window);
    EXPECT_EQ(accessOf(partOf<PlayButton>(*view)).role(), QAccessible::PushButton);
    EXPECT_EQ(accessOf(partOf<VolumeSlider>(*view)).role(), QAccessible::Slider);
    EXPECT_EQ(accessOf(partOf<CheckBox>(*view)).role(), QAccessible::CheckBox);
    EXPECT_TRUE(accessOf(partOf<CheckBox>(*view)).state().checked);
    EXPECT_EQ(accessOf(partOf<VolumeSlider>(*view)).valueInterface()->currentValue().toInt(), 80);
    for (ElidedLabel* label : partsOf<ElidedLabel>(*view)) {
        EXPECT_EQ(accessOf(label).role(), QAccessible::StaticText);
        EXPECT_EQ(accessOf(label).text(QAccessible::Name), label->content());
    }
    EXPECT_EQ(accessOf(menuButtons(*view).at(1)).text(QAccessible::Description),
              u"Zofra plays independently; synchronization with Sonos is not guaranteed."_qs);
}

TEST_F(PanelAccessTest, EverythingThatIsToldHasANameAndSaysItOnce) {
    world.viewModel.nextSong = std::optional(u"Next"_qs);
    showPanel();
    const auto all = everything(&accessOf(view.get()));
    EXPECT_GE(all.size(), 18);
    for (QAccessibleInterface* part : all) {
        const QString name = part->text(QAccessible::Name);
        EXPECT_FALSE(name.isEmpty()) << part->role();
        EXPECT_NE(part->text(QAccessible::Description), name);
        EXPECT_NE(part->role(), QAccessible::Client) << name.toStdString();
        if (part->object() != view.get()) {
            EXPECT_EQ(part->parent()->child(part->parent()->indexOfChild(part)), part) << name.toStdString();
        }
    }
}

TEST_F(PanelAccessTest, LanguagesAreOneGroupOfWhichOneIsChosen) {
    showPanel();
    for (LanguageButton* button : partsOf<LanguageButton>(*view)) {
        EXPECT_EQ(accessOf(button).role(), QAccessible::RadioButton);
        EXPECT_EQ(accessOf(button).state().checked, button->language() == AppLanguage::en);
    }
}

TEST_F(PanelAccessTest, MenuButtonsSayThatTheyOpenAMenuAndWhetherItIsOpen) {
    showPanel();
    MenuButton* station = menuButtons(*view).at(0);
    QAccessibleInterface& access = accessOf(station);
    EXPECT_EQ(access.role(), QAccessible::ButtonMenu);
    EXPECT_TRUE(access.state().hasPopup);
    EXPECT_TRUE(access.state().collapsed);
    access.actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
    EXPECT_TRUE(station->isOpen());
    EXPECT_TRUE(access.state().expanded);
    EXPECT_FALSE(access.state().collapsed);
    station->openedMenu()->close();
    EXPECT_TRUE(access.state().collapsed);
}

TEST_F(PanelAccessTest, TheKeyboardIsOnAControlWhenThePanelOpens) {
    showPanel();
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    EXPECT_EQ(QApplication::focusWidget()->accessibleName(), u"Close Window"_qs);
}

TEST_F(PanelAccessTest, WaitingForSoundIsSaidAndSeen) {
    showPanel();
    auto* play = partOf<PlayButton>(*view);
    const QImage quiet = play->grab().toImage();
    play->setWaiting(true, u"Loading..."_qs);
    EXPECT_EQ(accessOf(play).text(QAccessible::Description), u"Loading..."_qs);
    EXPECT_NE(play->grab().toImage(), quiet);
    play->setWaiting(false, u"Loading..."_qs);
    EXPECT_TRUE(accessOf(play).text(QAccessible::Description).isEmpty());
    EXPECT_EQ(play->grab().toImage(), quiet);
}

} // namespace
} // namespace zofra::test
