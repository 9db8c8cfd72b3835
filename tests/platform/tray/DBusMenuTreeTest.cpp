// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/DBusMenuTree.h"

#include "tests/support/PrintQt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>

namespace zofra {
namespace {

using Changes = DBusMenuTree::Changes;

/// An item that can be chosen.
MenuItem item(const QString& title) {
    MenuItem item;
    item.title = title;
    item.action = [](const MenuItem&) {};
    return item;
}

/// A line that can only be read, or a menu below.
MenuItem line(const QString& title, const QString& iconName = {}) {
    MenuItem item;
    item.title = title;
    item.isEnabled = false;
    item.iconName = iconName;
    return item;
}

Menu sample() {
    MenuItem parent = line(u"More"_qs);
    parent.isEnabled = true;
    parent.submenu = {item(u"One"_qs), MenuItem::separator(), item(u"Two"_qs)};
    return {item(u"First"_qs), parent};
}

DBusMenuTree tree() {
    return DBusMenuTree([](const QString& name) { return u"theme-"_qs + name; });
}

TEST(DBusMenuTreeTest, TheRootIsZeroAndHasASubmenu) {
    const DBusMenuTree empty = tree();
    const auto root = empty.layout(0, -1, {});
    ASSERT_TRUE(root);
    EXPECT_EQ(root->id, 0);
    EXPECT_EQ(root->properties, (QVariantMap{{u"children-display"_qs, u"submenu"_qs}}));
    EXPECT_TRUE(root->children.isEmpty());
    EXPECT_EQ(empty.item(0), nullptr) << "the root is no item to be chosen";
}

TEST(DBusMenuTreeTest, ItemsAreNumberedAndFound) {
    DBusMenuTree menu = tree();
    EXPECT_EQ(menu.replace(sample()).layouts, QList<int>{0});
    EXPECT_EQ(menu.ids(), (QList<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(menu.item(5)->title, u"Two"_qs);
    EXPECT_EQ(menu.item(6), nullptr);
    EXPECT_EQ(menu.item(-1), nullptr);
    EXPECT_FALSE(menu.contains(6));
}

TEST(DBusMenuTreeTest, WhatCanBeChosenAndSaysSomethingElseIsAnotherItem) {
    DBusMenuTree menu = tree();
    std::ignore = menu.replace(sample());
    Menu other = sample();
    other.front().title = u"Changed"_qs;
    EXPECT_EQ(menu.replace(other).layouts, QList<int>{0});
    EXPECT_EQ(menu.ids(), (QList<int>{0, 6, 2, 3, 4, 5})) << "and all others are who they were";
    EXPECT_EQ(menu.item(1), nullptr) << "choosing what is shown no longer does nothing";
    EXPECT_EQ(menu.replace(sample()).layouts, QList<int>{0});
    EXPECT_EQ(menu.ids(), (QList<int>{0, 7, 2, 3, 4, 5})) << "numbers are never used again";
    EXPECT_EQ(menu.replace({}).layouts, QList<int>{0});
    EXPECT_EQ(menu.ids(), QList<int>{0});
}

TEST(DBusMenuTreeTest, TheSameTextForSomethingElseIsAnotherItem) {
    DBusMenuTree menu = tree();
    Menu first = sample();
    first.front().identity = u"RINCON_1"_qs;
    std::ignore = menu.replace(first);
    Menu second = sample();
    second.front().identity = u"RINCON_2"_qs;
    EXPECT_EQ(menu.replace(second).layouts, QList<int>{0});
    EXPECT_EQ(menu.ids().at(1), 6);
    second.front().actionName = u"other"_qs;
    EXPECT_EQ(menu.replace(second).layouts, QList<int>{0});
    EXPECT_EQ(menu.ids().at(1), 7);
}

TEST(DBusMenuTreeTest, ALineThatChangesItsTextIsTheSameItem) {
    DBusMenuTree menu = tree();
    std::ignore = menu.replace({line(u"Song A"_qs, u"music.note"_qs)});
    const Changes changes = menu.replace({line(u"Song B"_qs, u"music.note"_qs)});
    EXPECT_TRUE(changes.layouts.isEmpty());
    ASSERT_EQ(changes.updated.size(), 1);
    EXPECT_EQ(changes.updated.at(0).id, 1);
    EXPECT_EQ(changes.updated.at(0).properties, (QVariantMap{{u"label"_qs, u"Song B"_qs}}));
    EXPECT_TRUE(changes.removed.isEmpty());
}

TEST(DBusMenuTreeTest, AMenuBelowKeepsItsNumberWhateverItsTitle) {
    DBusMenuTree menu = tree();
    std::ignore = menu.replace(sample());
    Menu other = sample();
    other.at(1).title = u"Less"_qs;
    other.at(1).submenu.pop_back();
    const Changes changes = menu.replace(other);
    EXPECT_EQ(changes.layouts, QList<int>{2}) << "only the menu that has other items";
    ASSERT_EQ(changes.updated.size(), 1);
    EXPECT_EQ(changes.updated.at(0).id, 2);
    EXPECT_EQ(menu.ids(), (QList<int>{0, 1, 2, 3, 4}));
}

TEST(DBusMenuTreeTest, AMarkIsTold) {
    DBusMenuTree menu = tree();
    Menu first = sample();
    first.front().state = MenuItem::CheckState::on;
    first.front().isEnabled = false;
    std::ignore = menu.replace(first);
    Menu second = sample();
    second.front().state = MenuItem::CheckState::off;
    const Changes changes = menu.replace(second);
    EXPECT_TRUE(changes.layouts.isEmpty());
    ASSERT_EQ(changes.updated.size(), 1);
    EXPECT_EQ(changes.updated.at(0).properties, (QVariantMap{{u"toggle-state"_qs, 0}}));
    ASSERT_EQ(changes.removed.size(), 1) << "what is as the protocol has it anyway";
    EXPECT_EQ(changes.removed.at(0).id, 1);
    EXPECT_EQ(changes.removed.at(0).names, QStringList{u"enabled"_qs});
}

TEST(DBusMenuTreeTest, AnotherOrderIsAnotherLayout) {
    DBusMenuTree menu = tree();
    std::ignore = menu.replace({item(u"A"_qs), item(u"B"_qs), item(u"C"_qs)});
    EXPECT_EQ(menu.replace({item(u"B"_qs), item(u"A"_qs), item(u"C"_qs)}).layouts, QList<int>{0});
    EXPECT_EQ(menu.ids(), (QList<int>{0, 2, 1, 3}));
    EXPECT_EQ(menu.replace({item(u"B"_qs), item(u"C"_qs)}).layouts, QList<int>{0});
    EXPECT_EQ(menu.replace({item(u"B"_qs), item(u"C"_qs), item(u"D"_qs)}).layouts, QList<int>{0});
    EXPECT_EQ(menu.ids(), (QList<int>{0, 2, 3, 4}));
}

TEST(DBusMenuTreeTest, WhatStaysLearnsWhatItNowStandsFor) {
    DBusMenuTree menu = tree();
    Menu first = sample();
    first.front().representedObject = 1;
    std::ignore = menu.replace(first);
    Menu second = sample();
    second.front().representedObject = 2;
    const Changes changes = menu.replace(second);
    EXPECT_TRUE(changes.layouts.isEmpty() && changes.updated.isEmpty() && changes.removed.isEmpty());
    EXPECT_EQ(menu.ids().at(1), 1);
    EXPECT_EQ(std::any_cast<int>(menu.item(1)->representedObject), 2);
}

TEST(DBusMenuTreeTest, PropertiesAreThoseOfTheProtocolWithoutItsDefaults) {
    DBusMenuTree menu = tree();
    MenuItem rich = item(u"A _b_"_qs);
    rich.isEnabled = false;
    rich.state = MenuItem::CheckState::on;
    rich.iconName = u"play.fill"_qs;
    rich.iconDescription = u"Play"_qs;
    rich.toolTip = u"Tip"_qs;
    rich.keyEquivalent = u"p"_qs;
    MenuItem off = item(u"Off"_qs);
    off.state = MenuItem::CheckState::off;
    std::ignore = menu.replace({rich, off, MenuItem::separator(), item(u"Plain"_qs)});
    EXPECT_EQ(
        *menu.properties(1, {}),
        (QVariantMap{{u"label"_qs, u"A __b__"_qs},
                     {u"enabled"_qs, false},
                     {u"toggle-type"_qs, u"radio"_qs},
                     {u"toggle-state"_qs, 1},
                     {u"icon-name"_qs, u"theme-play.fill"_qs},
                     {u"x-zofra-icon-desc"_qs, u"Play"_qs},
                     {u"x-zofra-tooltip"_qs, u"Tip"_qs},
                     {u"shortcut"_qs, QVariant::fromValue(QList<QStringList>{{u"Control"_qs, u"P"_qs}})}}));
    EXPECT_EQ(menu.properties(2, {})->value(u"toggle-state"_qs), 0);
    EXPECT_EQ(*menu.properties(3, {}), (QVariantMap{{u"type"_qs, u"separator"_qs}}));
    EXPECT_EQ(*menu.properties(4, {}), (QVariantMap{{u"label"_qs, u"Plain"_qs}}));
    EXPECT_EQ(menu.properties(99, {}), std::nullopt);
}

TEST(DBusMenuTreeTest, LayoutHasTheDepthAndThePropertiesAskedFor) {
    DBusMenuTree menu = tree();
    std::ignore = menu.replace(sample());
    EXPECT_TRUE(menu.layout(0, 0, {})->children.isEmpty());
    const auto one = menu.layout(0, 1, {u"label"_qs});
    ASSERT_EQ(one->children.size(), 2);
    EXPECT_TRUE(one->children.at(1).children.isEmpty());
    EXPECT_EQ(one->children.at(1).properties, (QVariantMap{{u"label"_qs, u"More"_qs}}));
    EXPECT_TRUE(one->properties.isEmpty()) << "the root has no label";
    EXPECT_EQ(menu.layout(0, -1, {})->children.at(1).children.size(), 3);
    EXPECT_EQ(menu.layout(0, 2, {})->children.at(1).children.size(), 3);
    EXPECT_EQ(menu.layout(2, -1, {})->children.size(), 3) << "a part of the menu";
    EXPECT_EQ(menu.layout(42, -1, {}), std::nullopt);
}

} // namespace
} // namespace zofra
