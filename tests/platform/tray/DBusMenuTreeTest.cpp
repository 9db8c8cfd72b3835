// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/DBusMenuTree.h"

#include "tests/support/PrintQt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zofra {
namespace {

using Change = DBusMenuTree::Change;

MenuItem item(const QString& title) {
    MenuItem item;
    item.title = title;
    return item;
}

Menu sample() {
    MenuItem parent = item(u"More"_qs);
    parent.submenu = {item(u"One"_qs), MenuItem::separator(), item(u"Two"_qs)};
    return {item(u"First"_qs), parent};
}

DBusMenuTree tree() {
    return DBusMenuTree([](const QString& name) {
        return QVariantMap{{u"icon-name"_qs, u"theme-"_qs + name}};
    });
}

TEST(DBusMenuTree, TheRootIsZeroAndHasASubmenu) {
    const DBusMenuTree empty = tree();
    const auto root = empty.layout(0, -1, {});
    ASSERT_TRUE(root);
    EXPECT_EQ(root->id, 0);
    EXPECT_EQ(root->properties, (QVariantMap{{u"children-display"_qs, u"submenu"_qs}}));
    EXPECT_TRUE(root->children.isEmpty());
    EXPECT_EQ(empty.item(0), nullptr) << "the root is no item to be chosen";
}

TEST(DBusMenuTree, ItemsAreNumberedAndFound) {
    DBusMenuTree menu = tree();
    EXPECT_EQ(menu.replace(sample()), Change::content);
    EXPECT_EQ(menu.ids(), (QList<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(menu.item(5)->title, u"Two"_qs);
    EXPECT_EQ(menu.item(6), nullptr);
    EXPECT_EQ(menu.item(-1), nullptr);
    EXPECT_FALSE(menu.contains(6));
}

TEST(DBusMenuTree, NumbersAreNeverUsedAgain) {
    DBusMenuTree menu = tree();
    menu.replace(sample());
    Menu other = sample();
    other.front().title = u"Changed"_qs;
    EXPECT_EQ(menu.replace(other), Change::content);
    EXPECT_EQ(menu.ids(), (QList<int>{0, 6, 7, 8, 9, 10}));
    EXPECT_EQ(menu.replace(sample()), Change::content) << "an older state is a new menu, too";
    EXPECT_EQ(menu.ids().at(1), 11);
    EXPECT_EQ(menu.replace({}), Change::content);
    EXPECT_EQ(menu.ids(), QList<int>{0});
}

TEST(DBusMenuTree, WhatLooksTheSameKeepsItsNumbersButLearnsWhatItStandsFor) {
    DBusMenuTree menu = tree();
    Menu first = sample();
    first.front().representedObject = 1;
    menu.replace(first);
    Menu second = sample();
    second.front().representedObject = 2;
    EXPECT_EQ(menu.replace(second), Change::nothing);
    EXPECT_EQ(menu.ids().at(1), 1);
    EXPECT_EQ(std::any_cast<int>(menu.item(1)->representedObject), 2);
}

TEST(DBusMenuTree, TheSameTextForSomethingElseIsAChange) {
    DBusMenuTree menu = tree();
    Menu first = sample();
    first.front().identity = u"RINCON_1"_qs;
    menu.replace(first);
    Menu second = sample();
    second.front().identity = u"RINCON_2"_qs;
    EXPECT_EQ(menu.replace(second), Change::content);
    second.front().actionName = u"other"_qs;
    EXPECT_EQ(menu.replace(second), Change::content);
}

TEST(DBusMenuTree, ANumberOfTheMenuBeforeMeansTheSameItemOfThisOne) {
    DBusMenuTree menu = tree();
    Menu first = sample();
    first.at(1).submenu.at(0).representedObject = 1;
    menu.replace(first);
    Menu second = sample();
    second.front().title = u"Stop"_qs;
    second.at(1).submenu.at(0).representedObject = 2;
    menu.replace(second);
    EXPECT_EQ(menu.item(3), nullptr);
    ASSERT_NE(menu.meantBy(3), nullptr);
    EXPECT_EQ(std::any_cast<int>(menu.meantBy(3)->representedObject), 2) << "as it is now";
    EXPECT_EQ(menu.meantBy(1), nullptr) << "what has another text by now is not what was meant";
    second.at(1).submenu.at(0).identity = u"other"_qs;
    menu.replace(second);
    EXPECT_EQ(menu.meantBy(8), nullptr) << "the same text for something else";
    EXPECT_EQ(menu.meantBy(3), nullptr) << "two menus ago";
    EXPECT_EQ(menu.meantBy(0), nullptr);
    EXPECT_EQ(menu.meantBy(4711), nullptr);
}

TEST(DBusMenuTree, PropertiesAreThoseOfTheProtocolWithoutItsDefaults) {
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
    menu.replace({rich, off, MenuItem::separator(), item(u"Plain"_qs)});
    EXPECT_EQ(
        *menu.properties(1, {}),
        (QVariantMap{{u"label"_qs, u"A __b__"_qs},
                     {u"enabled"_qs, false},
                     {u"toggle-type"_qs, u"checkmark"_qs},
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

TEST(DBusMenuTree, LayoutHasTheDepthAndThePropertiesAskedFor) {
    DBusMenuTree menu = tree();
    menu.replace(sample());
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
