// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/WidgetMenu.h"

#include "tests/platform/tray/TrayBusTest.h"

#include <QAction>
#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QProxyStyle>
#include <QToolTip>

#include <algorithm>
#include <ctime>
#include <gmock/gmock.h>
#include <memory>

namespace zofra::test {
namespace {

class WidgetMenuTest : public testing::Test {
protected:
    MenuItem item(const QString& title) {
        MenuItem item;
        item.title = title;
        item.action = [this](const MenuItem& sender) { chosen << sender.title; };
        return item;
    }
    SquareIcons icons;
    QStringList chosen;
};

TEST_F(WidgetMenuTest, ShowsTextsAsTexts) {
    WidgetMenu menu({item(u"A & B _c_ <b>"_qs), item(u"x\ny"_qs), item(QString(500, u'z'))}, icons);
    EXPECT_EQ(menu.actions().at(0)->text(), u"A && B _c_ <b>"_qs);
    EXPECT_EQ(menu.actions().at(1)->text(), u"x y"_qs);
    EXPECT_TRUE(menu.actions().at(2)->text().endsWith(QChar(0x2026)));
    EXPECT_LE(menu.sizeHint().width(), 480);
}

TEST_F(WidgetMenuTest, ChoosingAnItemCallsItsActionWithTheUnalteredItem) {
    MenuItem parent = item(u"Parent"_qs);
    parent.submenu = {item(u"Below & behind"_qs)};
    const WidgetMenu menu({item(u"First"_qs), parent}, icons);
    menu.actions().at(0)->trigger();
    menu.actions().at(1)->menu<QMenu*>()->actions().at(0)->trigger();
    EXPECT_EQ(chosen, (QStringList{u"First"_qs, u"Below & behind"_qs}));
}

TEST_F(WidgetMenuTest, ADisabledItemCannotBeChosen) {
    MenuItem disabled = item(u"Now Playing"_qs);
    disabled.isEnabled = false;
    const WidgetMenu menu({disabled}, icons);
    menu.actions().at(0)->trigger();
    EXPECT_EQ(chosen, QStringList());
}

TEST_F(WidgetMenuTest, IconsAreDrawnInTheColoursOfTheMenu) {
    MenuItem one = item(u"One"_qs);
    one.iconName = u"power"_qs;
    one.iconDescription = u"Off"_qs;
    const WidgetMenu menu({one, item(u"Two"_qs)}, icons);
    EXPECT_FALSE(menu.actions().at(0)->icon().isNull());
    EXPECT_TRUE(menu.actions().at(1)->icon().isNull());
    const QImage drawn = menu.actions().at(0)->icon().pixmap(16, 16).toImage();
    EXPECT_THAT(icons.asked, testing::Contains(u"power"_qs));
    EXPECT_EQ(menu.actions().at(0)->iconText(), u"Off"_qs);
    EXPECT_EQ(drawn.pixelColor(8, 8), menu.palette().color(QPalette::Active, QPalette::WindowText));
}

TEST_F(WidgetMenuTest, AskedMenusAndSubmenusAreDrawnInOneStyleThatEndsWithThem) {
    class RedStyle final : public QProxyStyle {
    public:
        RedStyle()
            : QProxyStyle(u"fusion"_qs) {}
        QPalette standardPalette() const override { return QPalette(Qt::red); }
    };
    class StyledIcons final : public IconProvider {
    public:
        QImage image(const QString&, int, const QColor&) const override { return {}; }
        std::shared_ptr<QStyle> menuStyle() const override {
            ++asked;
            const auto made = std::make_shared<RedStyle>();
            style = made;
            return made;
        }
        mutable int asked = 0;
        mutable std::weak_ptr<QStyle> style;
    };
    const StyledIcons styled;
    MenuItem parent = item(u"Parent"_qs);
    parent.submenu = {item(u"Below"_qs)};
    auto menu = std::make_unique<WidgetMenu>(Menu{parent}, styled);
    const auto* submenu = menu->actions().at(0)->menu<QMenu*>();
    EXPECT_EQ(styled.asked, 1);
    EXPECT_EQ(menu->style(), styled.style.lock().get());
    EXPECT_EQ(submenu->style(), styled.style.lock().get());
    menu->popup(QPoint(10, 10));
    menu.reset();
    EXPECT_TRUE(styled.style.expired());
}

TEST_F(WidgetMenuTest, WithoutAStyleOfTheirOwnTheyAreTheDesktops) {
    const WidgetMenu menu({item(u"One"_qs)}, icons);
    EXPECT_EQ(menu.style(), QApplication::style());
}

TEST_F(WidgetMenuTest, TheKeyOfAnItemWorksWhileTheMenuIsOpen) {
    MenuItem play = item(u"Play"_qs);
    play.keyEquivalent = u"p"_qs;
    WidgetMenu menu({play}, icons);
    EXPECT_EQ(menu.actions().at(0)->shortcut(), QKeySequence(u"Ctrl+P"_qs));
    menu.popup(QPoint(10, 10));
    QKeyEvent letter(QEvent::KeyPress, Qt::Key_P, Qt::ControlModifier);
    QCoreApplication::sendEvent(&menu, &letter);
    EXPECT_EQ(chosen, QStringList{u"Play"_qs});
    EXPECT_FALSE(menu.isVisible());
}

TEST_F(WidgetMenuTest, TheKeyOfAnItemWorksWhileASubmenuIsOpen) {
    MenuItem play = item(u"Play"_qs);
    play.keyEquivalent = u"p"_qs;
    MenuItem parent = item(u"Parent"_qs);
    parent.submenu = {item(u"Below"_qs)};
    WidgetMenu menu({play, parent}, icons);
    menu.popup(QPoint(10, 10));
    menu.setActiveAction(menu.actions().at(1));
    auto* submenu = menu.actions().at(1)->menu<QMenu*>();
    submenu->popup(QPoint(60, 10));
    QKeyEvent letter(QEvent::KeyPress, Qt::Key_P, Qt::ControlModifier);
    QCoreApplication::sendEvent(submenu, &letter);
    EXPECT_EQ(chosen, QStringList{u"Play"_qs});
    EXPECT_FALSE(menu.isVisible());
    EXPECT_FALSE(submenu->isVisible());
}

TEST_F(WidgetMenuTest, TheKeyboardOpensAMenuOfChoicesOnWhatIsChosen) {
    MenuItem parent = item(u"Parent"_qs);
    for (const QString& title : {u"One"_qs, u"Two"_qs, u"Three"_qs}) {
        parent.submenu.push_back(item(title));
        parent.submenu.back().state =
            title == u"Two"_qs ? MenuItem::CheckState::on : MenuItem::CheckState::off;
    }
    WidgetMenu menu({parent}, icons);
    menu.popup(QPoint(10, 10));
    menu.setActiveAction(menu.actions().at(0));
    QKeyEvent right(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
    QCoreApplication::sendEvent(&menu, &right);
    const auto* submenu = menu.actions().at(0)->menu<QMenu*>();
    ASSERT_TRUE(submenu->isVisible());
    ASSERT_NE(submenu->activeAction(), nullptr);
    EXPECT_EQ(submenu->activeAction()->text(), u"Two"_qs);
}

TEST_F(WidgetMenuTest, OnlyItemsWithAToolTipShowOne) {
    MenuItem tip = item(u"Everywhere"_qs);
    tip.toolTip = u"a <b> & c"_qs;
    WidgetMenu menu({tip, item(u"Plain"_qs), item(QString(300, u'w'))}, icons);
    menu.popup(QPoint(10, 10));
    const auto hover = [&menu](int index) {
        const QPoint at = menu.actionGeometry(menu.actions().at(index)).center();
        QHelpEvent help(QEvent::ToolTip, at, menu.mapToGlobal(at));
        QCoreApplication::sendEvent(&menu, &help);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    };
    EXPECT_EQ(hover(0), u"<p>a &lt;b&gt; &amp; c</p>"_qs) << "text, not markup";
    EXPECT_EQ(menu.actions().at(1)->property("zofraToolTip").toString(), QString());
    EXPECT_TRUE(hover(2).contains(QString(300, u'w'))) << "the whole of an elided text";
    menu.close();
}

TEST_F(WidgetMenuTest, DeletesItselfOnceClosedButNotBeforeTheChoiceIsMade) {
    QPointer<WidgetMenu> menu = new WidgetMenu({item(u"One"_qs)}, icons);
    menu->popUpAndForget(QPoint(20, 20));
    ASSERT_TRUE(menu->isVisible());
    QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
    QCoreApplication::sendEvent(menu, &down);
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(menu, &enter);
    EXPECT_EQ(chosen, QStringList{u"One"_qs});
    EXPECT_TRUE(spinUntil([&] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return menu.isNull();
    }));
}

TEST_F(WidgetMenuTest, OpeningCostsLessThanAFrame) {
    const auto worked = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    Menu menu;
    for (int i = 0; i < 10; ++i) {
        menu.push_back(item(u"Item %1"_qs.arg(i)));
        menu.back().iconName = u"symbol"_qs;
        for (int j = 0; j < 9; ++j)
            menu.back().submenu.push_back(item(u"Below %1"_qs.arg(j)));
    }
    std::vector<double> costs;
    for (int i = 0; i < 21; ++i) {
        const double begin = worked();
        auto opened = std::make_unique<WidgetMenu>(menu, icons);
        opened->popup(QPoint(10, 10));
        costs.push_back(worked() - begin);
        EXPECT_TRUE(opened->isVisible());
    }
    std::nth_element(costs.begin(), costs.begin() + 10, costs.end());
    EXPECT_LT(costs[10], 16.0) << "milliseconds of work";
}

TEST(MenuCornerTest, IsBelowTheAnchorOrAboveItAndAlwaysInside) {
    const QRect free(0, 30, 1000, 700);
    const QSize size(200, 300);
    EXPECT_EQ(menuCorner({500, 10}, size, free), QPoint(500, 30)) << "a panel at the top";
    EXPECT_EQ(menuCorner({500, 104}, size, free), QPoint(500, 104));
    EXPECT_EQ(menuCorner({500, 745}, size, free), QPoint(500, 430)) << "a panel at the bottom";
    EXPECT_EQ(menuCorner({500, 604}, size, free), QPoint(500, 296)) << "no room below";
    EXPECT_EQ(menuCorner({990, 10}, size, free), QPoint(800, 30));
    EXPECT_EQ(menuCorner({-5, 10}, size, free), QPoint(0, 30));
    EXPECT_EQ(menuCorner({10, 745}, QSize(200, 2000), free), QPoint(10, 30)) << "taller than the screen";
}

} // namespace
} // namespace zofra::test
